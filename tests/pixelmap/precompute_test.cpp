// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/pixelmap/pixel_map_bench.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const Words kRedGreen{0xFFFF0000, 0xFF00FF00};
const Words kBlue{0xFF0000FF};

class Precompute : public testing::Test {
 protected:
  /// What was reported since it was last asked.
  std::vector<std::string> reports() {
    bench_.turn();
    return bench_.log.drain();
  }
  void putThreeMaps() {
    bench_.putMap("1", kRedGreen);
    bench_.putMap("2", kBlue);
    bench_.putMap("10", kRedGreen);
  }

  PixelMapBench bench_;
};

TEST_F(Precompute, ReportsEachMapAndThenTheEnd) {
  putThreeMaps();
  bench_.precompute();
  EXPECT_EQ(bench_.lutQueue.waiting(), 1U);
  EXPECT_EQ(bench_.liveQueue.waiting(), 0U);
  bench_.lutQueue.runAll();
  EXPECT_THAT(bench_.log.entries, IsEmpty()) << "not off the main thread";
  EXPECT_THAT(reports(), ElementsAre("1/3 1", "2/3 2", "3/3 10", "done 3/3"));
}

TEST_F(Precompute, SavesTheSeatsTableOfEachMap) {
  putThreeMaps();
  bench_.precompute({3, 1});
  bench_.settle();
  for (const char* map : {"1", "2", "10"}) {
    EXPECT_TRUE(bench_.isSaved(map, {3, 1})) << map;
    EXPECT_FALSE(bench_.isSaved(map, {2, 1})) << map;
  }
  EXPECT_EQ(bench_.framesRead(), 5);
}

TEST_F(Precompute, TablesAreInMemoryAfterwards) {
  putThreeMaps();
  bench_.precompute();
  bench_.settle();
  EXPECT_EQ(bench_.state().pixelMapSeatLUTRequestedKey, "") << "none is put in force";
  bench_.phone.virtualFiles.removeFolder("/documents");
  bench_.preload(2);
  EXPECT_EQ(wordsOf(bench_.state().pixelMapSeatLUTActiveData), kBlue);
  EXPECT_EQ(bench_.lutQueue.waiting(), 0U);
}

TEST_F(Precompute, VenueWithMoreThanEightMapsKeepsTheLastEightInMemory) {
  for (int map = 1; map <= 10; ++map) bench_.putMap(std::to_string(map), kBlue);
  bench_.precompute();
  bench_.settle();
  bench_.phone.virtualFiles.reads.drain();
  for (int map = 3; map <= 10; ++map) bench_.preload(map);
  EXPECT_THAT(bench_.phone.virtualFiles.reads.entries, IsEmpty());
  bench_.preload(2);
  EXPECT_THAT(bench_.phone.virtualFiles.reads.entries,
              testing::Contains(PixelMapBench::dataOf("2")));
  EXPECT_EQ(wordsOf(bench_.state().pixelMapSeatLUTActiveData), kBlue);
}

TEST_F(Precompute, MapsThatAreOnDiskAreNotDecoded) {
  bench_.putMapWithTable("1", kRedGreen);
  bench_.putMapWithTable("2", kBlue);
  bench_.precompute();
  bench_.lutQueue.runAll();
  EXPECT_THAT(reports(), ElementsAre("1/2 1", "2/2 2", "done 2/2"));
  EXPECT_EQ(bench_.opens(), 0);
  bench_.phone.virtualFiles.removeFolder("/documents");
  bench_.preload(1);
  EXPECT_EQ(wordsOf(bench_.state().pixelMapSeatLUTActiveData), kRedGreen) << "but in memory";
}

TEST_F(Precompute, OnlyMapsThatAreNotOnDiskAreDecoded) {
  putThreeMaps();
  bench_.putMapWithTable("2", kBlue);
  bench_.putMapWithTable("10", kRedGreen);
  bench_.phone.virtualFiles.touch(PixelMapBench::videoOf("10"), 1e9 + 0.6);
  bench_.precompute();
  bench_.lutQueue.runAll();
  EXPECT_THAT(reports(), ElementsAre("1/3 1", "2/3 2", "3/3 10", "done 3/3"));
  EXPECT_EQ(bench_.framesRead(), 4);
}

TEST_F(Precompute, NegativeSeatOrVenueBelowOneIsDoneWithoutTheQueue) {
  putThreeMaps();
  bench_.putMap("1", kBlue, {}, 0);
  bench_.precompute({-1, 0});
  bench_.precompute({0, -1});
  bench_.precompute({0, 0}, 0);
  bench_.precompute({0, 0}, -7);
  EXPECT_THAT(bench_.log.entries, IsEmpty()) << "in a turn of its own";
  EXPECT_THAT(reports(), ElementsAre("done 0/0", "done 0/0", "done 0/0", "done 0/0"));
  EXPECT_EQ(bench_.lutQueue.waiting(), 0U);
}

TEST_F(Precompute, VenueWithoutMapsIsDone) {
  bench_.precompute({0, 0}, 8);
  EXPECT_THAT(reports(), ElementsAre("done 0/0"));
  EXPECT_EQ(bench_.lutQueue.waiting(), 0U);
}

TEST_F(Precompute, MapThatCannotBeBuiltCountsAsDone) {
  putThreeMaps();
  bench_.putMap("2", {});
  bench_.precompute();
  bench_.lutQueue.runAll();
  EXPECT_THAT(reports(), ElementsAre("1/3 1", "2/3 2", "3/3 10", "done 3/3"));
  EXPECT_FALSE(bench_.isSaved("2"));
  EXPECT_TRUE(bench_.isSaved("10"));
}

TEST_F(Precompute, MapThatCannotBeSavedCountsAsDoneAndIsInMemory) {
  putThreeMaps();
  bench_.phone.virtualFiles.isReadOnly = true;
  bench_.precompute();
  bench_.lutQueue.runAll();
  EXPECT_THAT(reports(), ElementsAre("1/3 1", "2/3 2", "3/3 10", "done 3/3"));
  bench_.preload(2);
  EXPECT_EQ(wordsOf(bench_.state().pixelMapSeatLUTActiveData), kBlue);
}

TEST_F(Precompute, ReportsMayBeAbsent) {
  putThreeMaps();
  bench_.luts().precomputePixelMapLUTsForVenueId(7, {2, 1}, {}, {});
  bench_.luts().precomputePixelMapLUTsForVenueId(7, {-1, 1}, {}, {});
  bench_.settle();
  EXPECT_TRUE(bench_.isSaved("10"));
}

TEST_F(Precompute, SecondOneEndsTheFirstAtItsNextMap) {
  putThreeMaps();
  bench_.putMap("1", kRedGreen, [this](std::size_t frame) {
    if (frame == 0) bench_.precompute({3, 1}, 7, "second ");
  });
  bench_.precompute({2, 1}, 7, "first ");
  bench_.lutQueue.runNext();
  EXPECT_EQ(bench_.framesRead(), 2) << "the map that it was at, to its end";
  EXPECT_TRUE(bench_.isSaved("1", {2, 1}));
  EXPECT_THAT(reports(), ElementsAre("first 1/3 1"));
  bench_.putMap("1", kRedGreen);
  bench_.lutQueue.runAll();
  EXPECT_THAT(reports(),
              ElementsAre("second 1/3 1", "second 2/3 2", "second 3/3 10", "second done 3/3"));
  EXPECT_FALSE(bench_.isSaved("2", {2, 1}));
  EXPECT_TRUE(bench_.isSaved("2", {3, 1}));
}

TEST_F(Precompute, SecondOneEndsTheFirstBeforeItBegins) {
  putThreeMaps();
  bench_.precompute({2, 1}, 7, "first ");
  bench_.precompute({3, 1}, 7, "second ");
  bench_.lutQueue.runNext();
  EXPECT_EQ(bench_.opens(), 0);
  EXPECT_THAT(reports(), IsEmpty());
  bench_.lutQueue.runNext();
  EXPECT_EQ(reports().size(), 4U);
}

TEST_F(Precompute, OneThatHasNothingToDoEndsNoOther) {
  putThreeMaps();
  bench_.precompute({2, 1}, 7, "first ");
  bench_.precompute({-1, 1}, 7, "second ");
  bench_.precompute({2, 1}, 8, "third ");
  bench_.lutQueue.runAll();
  EXPECT_THAT(reports(), ElementsAre("second done 0/0", "third done 0/0", "first 1/3 1",
                                     "first 2/3 2", "first 3/3 10", "first done 3/3"));
}

TEST_F(Precompute, OneThatIsSupersededInItsLastMapStillCompletes) {
  bench_.putMap("1", kRedGreen, [this](std::size_t frame) {
    if (frame == 1) bench_.precompute({3, 1}, 7, "second ");
  });
  bench_.precompute({2, 1}, 7, "first ");
  bench_.lutQueue.runNext();
  EXPECT_THAT(reports(), ElementsAre("first 1/1 1", "first done 1/1"))
      << "it is asked before each map, and there was no next";
}

TEST_F(Precompute, InvalidationEndsItAtItsNextMapAndRemovesWhatItSaved) {
  putThreeMaps();
  bench_.putMap("2", kBlue,
                [this](std::size_t) { bench_.luts().invalidatePixelMapSeatLUTCacheForVenueId(7); });
  bench_.precompute();
  bench_.lutQueue.runNext();
  EXPECT_THAT(reports(), ElementsAre("1/3 1", "2/3 2")) << "and no end";
  EXPECT_TRUE(bench_.isSaved("1"));
  EXPECT_TRUE(bench_.isSaved("2"));
  EXPECT_FALSE(bench_.isSaved("10"));
  bench_.lutQueue.runAll();
  EXPECT_FALSE(bench_.isSaved("1"));
  EXPECT_FALSE(bench_.isSaved("2"));
  EXPECT_THAT(reports(), IsEmpty());
}

TEST_F(Precompute, MapsAreLookedForAnewAfterwards) {
  bench_.putMapWithTable("1", kRedGreen);
  bench_.putMapWithTable("2", kBlue);
  bench_.preload(1);
  bench_.phone.virtualFiles.remove(PixelMapBench::videoOf("1"));
  bench_.precompute();
  bench_.log.drain();
  bench_.preload(1);
  EXPECT_THAT(bench_.log.drain(), ElementsAre("Missing video.mp4 (Venue-7/1) using JPG fallback"));
}

TEST_F(Precompute, WaitsBehindABuildAndFindsItsTableOnDisk) {
  bench_.putMap("1", kRedGreen);
  bench_.preload(1);
  bench_.precompute();
  bench_.lutQueue.runAll();
  EXPECT_EQ(bench_.framesRead(), 2);
  bench_.turn();
  EXPECT_EQ(wordsOf(bench_.state().pixelMapSeatLUTActiveData), kRedGreen);
}

TEST_F(Precompute, TableInForceStaysWhileOthersAreBuilt) {
  putThreeMaps();
  bench_.putMapWithTable("1", kRedGreen);
  bench_.preload(1);
  bench_.log.drain();
  bench_.precompute();
  bench_.lutQueue.runAll();
  EXPECT_THAT(reports(), ElementsAre("1/3 1", "2/3 2", "3/3 10", "done 3/3")) << "no refresh";
  EXPECT_EQ(wordsOf(bench_.state().pixelMapSeatLUTActiveData), kRedGreen);
}

TEST_F(Precompute, MapAskedForMeanwhileIsShownByTheNextPacketAfterIt) {
  bench_.putMap("1", kRedGreen);
  bench_.precompute();
  bench_.preload(1);
  bench_.lutQueue.runNext();
  bench_.preload(1);
  EXPECT_EQ(wordsOf(bench_.state().pixelMapSeatLUTActiveData), kRedGreen);
}

TEST_F(Precompute, EngineMayGoWithinAReport) {
  putThreeMaps();
  int reports = 0;
  bench_.luts().precomputePixelMapLUTsForVenueId(
      7, {2, 1},
      [this, &reports, kept = std::string("what the host kept for itself")](
          int, int, const std::string& map) {
        ++reports;
        bench_.destroy();
        EXPECT_EQ(kept, "what the host kept for itself") << "it lives as long as it is called";
        EXPECT_EQ(map, "1");
      },
      [&reports](int, int) { reports += 100; });
  bench_.lutQueue.runAll();
  bench_.turn();
  EXPECT_EQ(reports, 1);
}

TEST_F(Precompute, EngineMayGoWithinTheEndOfIt) {
  bench_.putMap("1", kRedGreen);
  int ends = 0;
  bench_.luts().precomputePixelMapLUTsForVenueId(
      7, {2, 1}, {}, [this, &ends, kept = std::string("what the host kept for itself")](int, int) {
        bench_.destroy();
        EXPECT_EQ(kept, "what the host kept for itself");
        ++ends;
      });
  bench_.lutQueue.runAll();
  bench_.turn();
  EXPECT_EQ(ends, 1);
}

TEST_F(Precompute, OneMayBeginWithinAnothersEnd) {
  putThreeMaps();
  bench_.luts().precomputePixelMapLUTsForVenueId(7, {2, 1}, {}, [this](int, int) {
    bench_.precompute({2, 1}, 7, "second ");
  });
  bench_.settle();
  bench_.settle();
  EXPECT_THAT(bench_.log.drain(),
              ElementsAre("second 1/3 1", "second 2/3 2", "second 3/3 10", "second done 3/3"));
}

}  // namespace
}  // namespace halvora
