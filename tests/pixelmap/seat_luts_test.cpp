// SPDX-License-Identifier: Apache-2.0
#include <climits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "pixelmap/seat_lut_builds.h"
#include "tests/pixelmap/pixel_map_bench.h"
#include "tests/pixelmap/seat_lut_calls.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

const Words kRedGreen{0xFFFF0000, 0xFF00FF00};
const Words kBlue{0xFF0000FF};
constexpr Colour kRed{1, 0, 0, 1};
constexpr Colour kGreen{0, 1, 0, 1};
constexpr Colour kBlueColour{0, 0, 1, 1};

std::string refreshOf(const std::string& map) { return "refresh " + PixelMapBench::keyOf(map); }
const std::string kRefreshOfNone = "refresh ";

class SeatLuts : public testing::Test {
 protected:
  std::vector<std::string> taken() { return bench_.log.drain(); }
  const SeatLutState& state() const { return bench_.state(); }
  void expectNothingActive() {
    EXPECT_EQ(state().pixelMapSeatLUTLoadedKey, "");
    EXPECT_EQ(state().pixelMapSeatLUTActiveData, nullptr);
    EXPECT_EQ(state().pixelMapSeatLUTFrameCount, 0);
    EXPECT_EQ(bench_.colour(0), std::nullopt);
  }
  void expectActive(const std::string& map, const Words& words) {
    EXPECT_EQ(state().pixelMapSeatLUTRequestedKey, PixelMapBench::keyOf(map));
    EXPECT_EQ(state().pixelMapSeatLUTLoadedKey, PixelMapBench::keyOf(map));
    EXPECT_EQ(wordsOf(state().pixelMapSeatLUTActiveData), words);
    EXPECT_EQ(state().pixelMapSeatLUTFrameCount, static_cast<int>(words.size()));
  }
  MaybeColour live(std::int64_t frame) {
    return bench_.luts().liveSampler().colorFromLivePixelMapSeatBufferForFrameIndex(frame);
  }

  PixelMapBench bench_;
};

using SeatLutLookup = SeatLuts;
using SeatLutPreload = SeatLuts;

TEST_F(SeatLutLookup, HasNothingWithoutATable) {
  EXPECT_EQ(bench_.colour(0), std::nullopt);
  EXPECT_EQ(bench_.colour(-5), std::nullopt);
}

TEST_F(SeatLutLookup, IndexCountsModuloTheFramesAndNegativesAreFrameZero) {
  bench_.putMapWithTable("5", {0xFFFF0000, 0xFF00FF00, 0xFF0000FF});
  bench_.preload(5);
  EXPECT_EQ(bench_.colour(0), kRed);
  EXPECT_EQ(bench_.colour(1), kGreen);
  EXPECT_EQ(bench_.colour(2), kBlueColour);
  EXPECT_EQ(bench_.colour(3), kRed);
  EXPECT_EQ(bench_.colour(65535), kRed);
  EXPECT_EQ(bench_.colour(INT_MAX), kGreen);
  EXPECT_EQ(bench_.colour(-1), kRed) << "not the last frame";
  EXPECT_EQ(bench_.colour(-5), kRed);
  EXPECT_EQ(bench_.colour(INT_MIN), kRed);
}

TEST_F(SeatLutLookup, WordZeroIsNoColourAndEveryOtherWordIsOne) {
  bench_.putMapWithTable("5", {0, 0xFF000000, 0x00000001, 0x80102030});
  bench_.preload(5);
  EXPECT_EQ(bench_.colour(0), std::nullopt);
  EXPECT_EQ(bench_.colour(1), kBlack);
  EXPECT_EQ(bench_.colour(2), (Colour{0, 0, 1 / 255.0F, 0}));
  EXPECT_EQ(bench_.colour(3), (Colour{16 / 255.0F, 32 / 255.0F, 48 / 255.0F, 128 / 255.0F}));
}

TEST_F(SeatLutPreload, NegativeSeatDoesNothing) {
  bench_.putMapWithTable("5", kRedGreen);
  bench_.preload(5);
  taken();
  bench_.preload(6, {-1, 0});
  bench_.preload(6, {0, -1});
  expectActive("5", kRedGreen);
  EXPECT_THAT(taken(), IsEmpty());
}

TEST_F(SeatLutPreload, MapWithoutAVideoClearsAndStops) {
  bench_.putMapWithTable("5", kRedGreen);
  bench_.preload(5);
  taken();
  bench_.preload(6);
  expectNothingActive();
  EXPECT_EQ(state().pixelMapSeatLUTRequestedKey, "");
  EXPECT_THAT(taken(), ElementsAre("Missing video.mp4 (Venue-7/6) using JPG fallback"));
  EXPECT_EQ(bench_.lutQueue.waiting(), 0U);
}

TEST_F(SeatLutPreload, MapWithoutAVideoStopsTheLiveSampler) {
  bench_.putMap("5", kRedGreen);
  bench_.preload(5);
  EXPECT_EQ(live(0), kRed);
  bench_.preload(6);
  EXPECT_EQ(live(0), std::nullopt);
}

TEST_F(SeatLutPreload, TableOnDiskIsInForceAtOnceWithNothingDecoded) {
  bench_.putMapWithTable("5", kRedGreen);
  bench_.preload(5);
  expectActive("5", kRedGreen);
  EXPECT_THAT(taken(), ElementsAre(refreshOf("5")));
  EXPECT_EQ(bench_.opens(), 0);
  EXPECT_EQ(bench_.lutQueue.waiting() + bench_.liveQueue.waiting(), 0U);
}

TEST_F(SeatLutPreload, TableInForceIsNeitherReadNorReportedAgain) {
  bench_.putMapWithTable("5", kRedGreen);
  bench_.preload(5);
  taken();
  const std::size_t reads = bench_.phone.virtualFiles.reads.entries.size();
  bench_.preload(5);
  expectActive("5", kRedGreen);
  EXPECT_THAT(taken(), IsEmpty());
  EXPECT_THAT(bench_.phone.virtualFiles.reads.entries, SizeIs(reads));
}

TEST_F(SeatLutPreload, TablesInMemoryTakeTurnsWithoutTheDisk) {
  bench_.putMapWithTable("5", kRedGreen);
  bench_.putMapWithTable("6", kBlue);
  bench_.preload(5);
  bench_.preload(6);
  taken();
  bench_.phone.virtualFiles.removeFolder("/documents");
  bench_.preload(5);
  expectActive("5", kRedGreen);
  bench_.preload(6);
  expectActive("6", kBlue);
  EXPECT_THAT(taken(), ElementsAre(refreshOf("5"), refreshOf("6")));
}

TEST_F(SeatLutPreload, TableThatWasClearedIsReportedAgain) {
  bench_.putMapWithTable("5", kRedGreen);
  bench_.preload(5);
  bench_.luts().clearActiveSeatLUT();
  expectNothingActive();
  EXPECT_EQ(state().pixelMapSeatLUTRequestedKey, "");
  taken();
  bench_.preload(5);
  EXPECT_THAT(taken(), ElementsAre(refreshOf("5")));
}

TEST_F(SeatLutPreload, EachSeatHasATableOfItsOwn) {
  VirtualVideo video = VirtualVideo::ofPlaces(2, 16, 9);
  bench_.putMap("5", {});
  bench_.phone.virtualVideos.put(PixelMapBench::videoOf("5"), std::move(video));
  bench_.preload(5, {2, 1});
  bench_.settle();
  EXPECT_EQ(bench_.colour(1), colourOfBytes(1, 2, 1));
  bench_.preload(5, {3, 1});
  expectNothingActive();
  bench_.settle();
  EXPECT_EQ(bench_.colour(1), colourOfBytes(1, 3, 1));
  EXPECT_TRUE(bench_.isSaved("5", {2, 1}));
  EXPECT_TRUE(bench_.isSaved("5", {3, 1}));
}

TEST_F(SeatLutPreload, UnbuiltMapIsDarkUntilItsTableIsBuilt) {
  bench_.putMapWithTable("5", kBlue);
  bench_.putMap("6", kRedGreen);
  bench_.preload(5);
  taken();
  bench_.preload(6);
  expectNothingActive();
  EXPECT_EQ(state().pixelMapSeatLUTRequestedKey, PixelMapBench::keyOf("6"));
  EXPECT_THAT(taken(), ElementsAre(kRefreshOfNone)) << "not the other map's colour";
  bench_.lutQueue.runAll();
  expectNothingActive();
  bench_.turn();
  expectActive("6", kRedGreen);
  EXPECT_THAT(taken(), ElementsAre(refreshOf("6")));
  EXPECT_TRUE(bench_.isSaved("6"));
}

TEST_F(SeatLutPreload, TableThatWasBuiltStaysInMemory) {
  bench_.putMap("5", kRedGreen);
  bench_.preload(5);
  bench_.settle();
  bench_.phone.virtualFiles.removeFolder("/documents");
  bench_.luts().clearActiveSeatLUT();
  bench_.preload(5);
  expectActive("5", kRedGreen);
}

TEST_F(SeatLutPreload, LiveSamplerRunsFromThePresentFrameUntilTheTableIsThere) {
  bench_.putMap("5", {0xFFFF0000, 0xFF00FF00, 0xFF0000FF});
  bench_.currentVideoMinutes = 4;
  bench_.preload(5);
  EXPECT_EQ(live(1), kGreen) << "frame 4 of three";
  EXPECT_EQ(live(0), std::nullopt);
  expectNothingActive();
  EXPECT_EQ(bench_.liveQueue.waiting(), 1U);
  bench_.liveQueue.runAll();
  EXPECT_EQ(live(0), kRed);
  expectNothingActive();
  bench_.lutQueue.runAll();
  EXPECT_EQ(live(0), kRed);
  bench_.turn();
  EXPECT_EQ(live(0), std::nullopt);
}

TEST_F(SeatLutPreload, TableFoundInMemoryOrOnDiskStopsTheLiveSampler) {
  bench_.putMap("5", kRedGreen);
  bench_.putMapWithTable("6", kBlue);
  bench_.preload(5);
  EXPECT_EQ(live(0), kRed);
  bench_.preload(6);
  EXPECT_EQ(live(0), std::nullopt) << "found on disk";
  bench_.preload(5);
  EXPECT_EQ(live(0), kRed);
  bench_.preload(6);
  EXPECT_EQ(live(0), std::nullopt) << "found in memory";
}

TEST_F(SeatLutPreload, ManyPacketsOfAnUnbuiltMapMakeOneBuild) {
  bench_.putMap("5", kRedGreen);
  for (int packet = 0; packet < 20; ++packet) bench_.preload(5);
  EXPECT_THAT(taken(), ElementsAre(kRefreshOfNone)) << "asked for once";
  EXPECT_EQ(bench_.lutQueue.waiting(), 1U);
  EXPECT_EQ(bench_.liveQueue.waiting(), 1U);
  bench_.lutQueue.runAll();
  bench_.preload(5);
  EXPECT_EQ(bench_.lutQueue.waiting(), 0U) << "what is built is found on disk by then";
  bench_.turn();
  expectActive("5", kRedGreen);
  EXPECT_EQ(bench_.framesRead(), 2);
}

TEST_F(SeatLutPreload, BuildThatFailedIsTriedAgainByTheNextPacketAfterItsRest) {
  bench_.putMap("5", {});
  bench_.preload(5);
  bench_.settle();
  expectNothingActive();
  EXPECT_FALSE(bench_.isSaved("5"));
  taken();
  bench_.putMap("5", kRedGreen);
  bench_.preload(5);
  EXPECT_EQ(bench_.lutQueue.waiting(), 0U);
  bench_.phone.loop.runFor(SeatLutBuilds::kFirstRest);
  bench_.preload(5);
  EXPECT_THAT(taken(), IsEmpty()) << "it is still the one asked for";
  bench_.settle();
  expectActive("5", kRedGreen);
}

TEST_F(SeatLutPreload, SwitchingMapsWhileABuildRunsSavesItAndDoesNotShowIt) {
  bench_.putMap("5", kRedGreen, [this](std::size_t frame) {
    if (frame == 1) bench_.preload(6);
  });
  bench_.putMap("6", kBlue);
  bench_.preload(5);
  bench_.lutQueue.runNext();
  taken();
  bench_.turn();
  expectNothingActive();
  EXPECT_EQ(state().pixelMapSeatLUTRequestedKey, PixelMapBench::keyOf("6"));
  EXPECT_TRUE(bench_.isSaved("5"));
  EXPECT_THAT(taken(), IsEmpty());
  bench_.lutQueue.runNext();
  bench_.turn();
  expectActive("6", kBlue);
  EXPECT_THAT(taken(), ElementsAre(refreshOf("6")));
}

TEST_F(SeatLutPreload, BuildThatIsNoLongerWantedIsNotKeptInMemory) {
  bench_.putMap("5", kRedGreen);
  bench_.putMapWithTable("6", kBlue);
  bench_.preload(5);
  bench_.preload(6);
  bench_.settle();
  expectActive("6", kBlue);
  bench_.phone.virtualFiles.reads.drain();
  bench_.preload(5);
  expectActive("5", kRedGreen);
  EXPECT_THAT(bench_.phone.virtualFiles.reads.entries,
              testing::Contains(PixelMapBench::dataOf("5")));
}

TEST_F(SeatLutPreload, SwitchingThereAndBackShowsTheFirstBuild) {
  bench_.putMap("5", kRedGreen);
  bench_.putMap("6", kBlue);
  bench_.preload(5);
  bench_.preload(6);
  bench_.preload(5);
  EXPECT_EQ(bench_.lutQueue.waiting(), 2U) << "5 is still to be built";
  bench_.settle();
  expectActive("5", kRedGreen);
  EXPECT_TRUE(bench_.isSaved("6"));
}

TEST_F(SeatLutPreload, ClearingWhileABuildRunsSavesItAndDoesNotShowIt) {
  bench_.putMap("5", kRedGreen);
  bench_.preload(5);
  taken();
  bench_.luts().clearActiveSeatLUT();
  bench_.luts().stopPixelMapLiveSampler();
  bench_.settle();
  expectNothingActive();
  EXPECT_TRUE(bench_.isSaved("5"));
  EXPECT_THAT(taken(), IsEmpty());
}

TEST_F(SeatLutPreload, TableThatCannotBeSavedIsShown) {
  bench_.phone.virtualFiles.isReadOnly = true;
  bench_.putMap("5", kRedGreen);
  bench_.preload(5);
  bench_.settle();
  expectActive("5", kRedGreen);
  EXPECT_FALSE(bench_.isSaved("5"));
}

TEST_F(SeatLutPreload, TableOfAVideoThatWasReplacedMeanwhileIsShownButNotSaved) {
  bench_.putMap("5", kRedGreen, [this](std::size_t frame) {
    if (frame == 1) bench_.phone.virtualFiles.put(PixelMapBench::videoOf("5"), "another", 2e9);
  });
  bench_.preload(5);
  bench_.settle();
  expectActive("5", kRedGreen);
  EXPECT_FALSE(bench_.isSaved("5"));
}

TEST_F(SeatLutPreload, SavedTableOfAVideoThatWasTouchedIsBuiltAnew) {
  bench_.putMapWithTable("5", kBlue);
  bench_.putMap("5", kRedGreen);
  bench_.phone.virtualFiles.touch(PixelMapBench::videoOf("5"), 1e9 + 0.6);
  bench_.preload(5);
  expectNothingActive();
  bench_.settle();
  expectActive("5", kRedGreen);
}

TEST_F(SeatLutPreload, NinthTableEvictsOneThatTheDiskGivesBack) {
  for (int map = 1; map <= 9; ++map) {
    bench_.putMapWithTable(std::to_string(map), {0xFF000000U | static_cast<std::uint32_t>(map)});
  }
  for (int map = 1; map <= 9; ++map) bench_.preload(map);
  bench_.phone.virtualFiles.reads.drain();
  bench_.preload(2);
  EXPECT_THAT(bench_.phone.virtualFiles.reads.entries, IsEmpty());
  bench_.preload(1);
  EXPECT_THAT(bench_.phone.virtualFiles.reads.entries,
              testing::Contains(PixelMapBench::dataOf("1")));
  expectActive("1", {0xFF000001});
}

TEST_F(SeatLutPreload, EvictionLeavesTheTableInForce) {
  bench_.putMapWithTable("1", kRedGreen);
  bench_.preload(1);
  for (int map = 2; map <= 10; ++map) bench_.putMapWithTable(std::to_string(map), kBlue);
  bench_.precompute();
  bench_.settle();
  expectActive("1", kRedGreen);
  EXPECT_EQ(bench_.colour(1), kGreen);
}

TEST_F(SeatLutPreload, WithoutQueuesNothingIsBuilt) {
  VirtualPhone& phone = bench_.phone;
  bench_.putMap("5", kRedGreen);
  bench_.putMapWithTable("6", kBlue);
  const Platform platform = phone.platform();
  SeatLutCalls calls;
  PixelMapSeatLuts luts(platform, calls);
  luts.preloadPixelMapSeatLUTForVenueId(7, 5, 2, 1);
  EXPECT_EQ(luts.state().pixelMapSeatLUTRequestedKey, PixelMapBench::keyOf("5"));
  luts.preloadPixelMapSeatLUTForVenueId(7, 6, 2, 1);
  EXPECT_EQ(wordsOf(luts.state().pixelMapSeatLUTActiveData), kBlue);
  luts.invalidatePixelMapSeatLUTCacheForVenueId(7);
  EXPECT_EQ(luts.state().pixelMapSeatLUTActiveData, nullptr);
}

}  // namespace
}  // namespace halvora
