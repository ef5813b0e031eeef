// SPDX-License-Identifier: Apache-2.0
// What becomes of seat tables when the video, the memory or the threads are not what they should
// be: asked for again, but not at every packet.
#include <memory>
#include <new>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "pixelmap/pixel_map_seat_luts.h"
#include "tests/pixelmap/pixel_map_bench.h"
#include "tests/pixelmap/seat_lut_calls.h"
#include "tests/support/passed_run_loop.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const Words kRed{0xFFFF0000};

class SeatLutRest : public testing::Test {
 protected:
  void putSound() {
    VirtualVideo sound = VirtualVideo::ofWords(kRed);
    sound.hasTrack = false;
    bench_.phone.virtualFiles.put(PixelMapBench::videoOf("1"), "sound", 1e9);
    bench_.phone.virtualVideos.put(PixelMapBench::videoOf("1"), std::move(sound));
  }
  /// A look each tenth of a second, and all that comes of it.
  void looks(int count) {
    for (int look = 0; look < count; ++look) {
      bench_.preload(1);
      bench_.settle();
      bench_.phone.loop.runFor(milliseconds(100));
    }
  }
  std::uint64_t failures(SeatLutFailure failure) { return bench_.luts().failures()[failure]; }
  bool isShown() { return bench_.colour(0).has_value(); }

  PixelMapBench bench_;
};

TEST_F(SeatLutRest, LooksWhileATableIsBuiltDoNotOpenTheVideo) {
  bench_.putMap("1", kRed);
  bench_.preload(1);
  const int opens = bench_.opens();
  for (int look = 0; look < 10; ++look) bench_.preload(1);
  EXPECT_EQ(bench_.opens(), opens);
  EXPECT_EQ(bench_.lutQueue.waiting(), 1U);
  EXPECT_EQ(bench_.liveQueue.waiting(), 1U);
  bench_.settle();
  EXPECT_TRUE(isShown());
}

TEST_F(SeatLutRest, VideoThatChangesWhileItsTableIsBuiltIsOpenedAgain) {
  bench_.putMap("1", kRed);
  bench_.preload(1);
  const int opens = bench_.opens();
  bench_.phone.virtualFiles.touch(PixelMapBench::videoOf("1"), 2e9);
  bench_.preload(1);
  EXPECT_GT(bench_.opens(), opens);
  EXPECT_EQ(bench_.lutQueue.waiting(), 1U) << "and one build is enough";
}

TEST_F(SeatLutRest, VideoWithoutPicturesIsOpenedAtTheFirstLookAndThenMoreAndMoreSeldom) {
  putSound();
  looks(1);
  // Once on the main thread, once for the table.
  EXPECT_EQ(bench_.opens(), 2);
  looks(9);
  EXPECT_EQ(bench_.opens(), 2) << "ten looks in a second";
  // After 1, 2, 4 … 64 seconds, and then every 64: at 1, 3, 7, 15, 31, 63, 127, 191.
  looks(2000);
  EXPECT_EQ(bench_.opens(), 2 + 2 * 8);
  EXPECT_EQ(failures(SeatLutFailure::noVideo), 9U);
  EXPECT_EQ(bench_.state().pixelMapSeatLUTRequestedKey, PixelMapBench::keyOf("1"));
}

TEST_F(SeatLutRest, VideoWhoseFramesCannotBeReadRestsToo) {
  VirtualVideo video = VirtualVideo::ofWords(kRed);
  video.canBeginReading = false;
  bench_.putMap("1", kRed);
  bench_.phone.virtualVideos.put(PixelMapBench::videoOf("1"), std::move(video));
  looks(1);
  const int opens = bench_.opens();
  looks(9);
  EXPECT_EQ(bench_.opens(), opens);
  EXPECT_EQ(failures(SeatLutFailure::noFrames), 1U);
}

TEST_F(SeatLutRest, AnotherVideoInItsPlaceIsTriedAtOnce) {
  putSound();
  looks(5);
  bench_.putMap("1", kRed);
  looks(1);
  EXPECT_TRUE(isShown());
}

TEST_F(SeatLutRest, ItsPausesBeginAnewWithAnotherVideo) {
  putSound();
  looks(100);
  bench_.phone.virtualFiles.touch(PixelMapBench::videoOf("1"), 2e9);
  looks(1);
  const int opens = bench_.opens();
  looks(10);
  EXPECT_EQ(bench_.opens(), opens + 2) << "a second later";
}

TEST_F(SeatLutRest, OtherMapsAndInvalidationKnowNothingOfIt) {
  putSound();
  bench_.putMap("2", kRed);
  looks(2);
  bench_.preload(2);
  bench_.settle();
  EXPECT_TRUE(isShown());
  const int opens = bench_.opens();
  bench_.preload(1);
  EXPECT_EQ(bench_.opens(), opens) << "still at rest";
  EXPECT_FALSE(isShown()) << "and not the other map's colour";
  bench_.luts().invalidatePixelMapSeatLUTCacheForVenueId(7);
  bench_.preload(1);
  EXPECT_GT(bench_.opens(), opens);
}

TEST_F(SeatLutRest, BuildThatFindsNoThreadIsAskedForAgain) {
  bench_.putMap("1", kRed);
  bench_.lutQueue.isRefusing = true;
  looks(9);
  EXPECT_FALSE(isShown());
  EXPECT_EQ(failures(SeatLutFailure::noThread), 1U);
  EXPECT_THAT(bench_.log.drain(), ElementsAre("refresh "));
  bench_.lutQueue.isRefusing = false;
  looks(3);
  EXPECT_TRUE(isShown());
  EXPECT_THAT(bench_.log.drain(), ElementsAre("refresh " + PixelMapBench::keyOf("1")));
}

TEST_F(SeatLutRest, BuildThatRunsOutOfMemoryIsAskedForAgainAndSaysSo) {
  bool isShort = true;
  bench_.putMap("1", kRed, [&isShort](std::size_t) {
    if (isShort) throw std::bad_alloc();
  });
  looks(5);
  EXPECT_FALSE(isShown());
  EXPECT_FALSE(bench_.isSaved("1"));
  EXPECT_EQ(failures(SeatLutFailure::noFrames), 0U) << "nothing is wrong with the video";
  // The table's and the live sampler's.
  EXPECT_EQ(failures(SeatLutFailure::noMemory), 2U);
  isShort = false;
  looks(6);
  EXPECT_TRUE(isShown());
}

TEST_F(SeatLutRest, LiveSamplerWithoutAThreadIsQuiet) {
  bench_.putMap("1", kRed);
  bench_.liveQueue.isRefusing = true;
  looks(1);
  EXPECT_TRUE(isShown()) << "the table needs none of it";
  EXPECT_EQ(failures(SeatLutFailure::noMemory), 1U);
}

TEST_F(SeatLutRest, TableThatCannotBeSavedIsCounted) {
  bench_.putMap("1", kRed);
  bench_.phone.virtualFiles.isReadOnly = true;
  looks(1);
  EXPECT_TRUE(isShown());
  EXPECT_EQ(failures(SeatLutFailure::notSaved), 1U);
}

TEST_F(SeatLutRest, PrecomputeThatFindsNoThreadEndsWithWhatWasDone) {
  bench_.putMap("1", kRed);
  bench_.putMap("2", kRed);
  bench_.lutQueue.isRefusing = true;
  bench_.precompute();
  EXPECT_THAT(bench_.log.entries, IsEmpty()) << "in a turn of its own";
  bench_.turn();
  EXPECT_THAT(bench_.log.drain(), ElementsAre("done 0/2"));
  EXPECT_EQ(failures(SeatLutFailure::noThread), 1U);
  bench_.lutQueue.isRefusing = false;
  bench_.precompute();
  bench_.settle();
  EXPECT_THAT(bench_.log.drain(), ElementsAre("1/2 1", "2/2 2", "done 2/2"));
}

TEST_F(SeatLutRest, PrecomputeThatRunsOutOfMemoryGoesOnWithTheNextMap) {
  bench_.putMap("1", kRed, [](std::size_t) { throw std::bad_alloc(); });
  bench_.putMap("2", kRed);
  bench_.precompute();
  bench_.settle();
  EXPECT_THAT(bench_.log.drain(), ElementsAre("1/2 1", "2/2 2", "done 2/2"));
  EXPECT_TRUE(bench_.isSaved("2"));
  EXPECT_EQ(failures(SeatLutFailure::noMemory), 1U);
}

TEST_F(SeatLutRest, InvalidationThatFindsNoThreadRemovesTheTablesItself) {
  bench_.putMapWithTable("1", kRed);
  bench_.lutQueue.isRefusing = true;
  bench_.luts().invalidatePixelMapSeatLUTCacheForVenueId(7);
  EXPECT_FALSE(bench_.isSaved("1"));
}

/// Loses what is posted, as one does that has no memory for it.
class LosingLoop final : public PassedRunLoop {
 public:
  using PassedRunLoop::PassedRunLoop;
  void post(Task&& task) override {
    if (isLosing) throw std::bad_alloc();
    PassedRunLoop::post(std::move(task));
  }

  bool isLosing = true;
};

/// The tables of an engine that is told of nothing.
class SeatLutsUntold : public testing::Test {
 protected:
  SeatLutsUntold() {
    luts_.useQueues(bench_.lutQueue, bench_.liveQueue);
    bench_.putMap("1", kRed);
    bench_.putMap("2", kRed);
  }
  ~SeatLutsUntold() override { luts_.end(); }
  void precompute() {
    luts_.precomputePixelMapLUTsForVenueId(
        7, PixelMapBench::kSeat,
        [this](int done, int total, const std::string& map) {
          bench_.log.add(std::to_string(done) + "/" + std::to_string(total) + " " + map);
        },
        [this](int done, int) { bench_.log.add("done " + std::to_string(done)); });
  }
  Platform platform() {
    Platform platform = bench_.platform;
    platform.runLoop = loop_;
    return platform;
  }

  PixelMapBench bench_;
  LosingLoop loop_{bench_.phone.loop};
  const Platform platform_ = platform();
  SeatLutCalls calls_{
      [this] { bench_.log.add("refresh " + luts_.state().pixelMapSeatLUTLoadedKey); }};
  PixelMapSeatLuts luts_{platform_, calls_};
};

TEST_F(SeatLutsUntold, TableIsFoundWithinASecond) {
  luts_.preloadPixelMapSeatLUTForVenueId(7, 1, 2, 1);
  bench_.settle();
  EXPECT_THAT(bench_.log.drain(), ElementsAre("refresh "));
  bench_.phone.loop.runFor(milliseconds(1000));
  EXPECT_THAT(bench_.log.drain(), ElementsAre("refresh " + PixelMapBench::keyOf("1")));
  bench_.phone.loop.runFor(milliseconds(10'000));
  EXPECT_THAT(bench_.log.drain(), IsEmpty());
}

TEST_F(SeatLutsUntold, PrecomputeIsReportedWithinASecond) {
  precompute();
  bench_.settle();
  EXPECT_THAT(bench_.log.drain(), IsEmpty());
  bench_.phone.loop.runFor(milliseconds(1000));
  EXPECT_THAT(bench_.log.drain(), ElementsAre("1/2 1", "2/2 2", "done 2"));
}

TEST_F(SeatLutsUntold, ReportsThatWereLostComeBeforeThoseThatWereNot) {
  precompute();
  bench_.lutQueue.runAll();
  loop_.isLosing = false;
  precompute();
  bench_.settle();
  bench_.phone.loop.runFor(milliseconds(1000));
  EXPECT_THAT(bench_.log.drain(),
              testing::IsSupersetOf({"1/2 1", "2/2 2", "done 2", "1/2 1", "2/2 2", "done 2"}));
}

TEST_F(SeatLutsUntold, NothingWakesThePhoneOnceAllIsTold) {
  loop_.isLosing = false;
  precompute();
  luts_.preloadPixelMapSeatLUTForVenueId(7, 1, 2, 1);
  bench_.settle();
  const std::uint64_t turns = bench_.phone.loop.turns();
  bench_.phone.loop.runFor(milliseconds(60'000));
  EXPECT_EQ(bench_.phone.loop.turns(), turns);
}

}  // namespace
}  // namespace halvora
