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

class SeatLutsEnding : public testing::Test {
 protected:
  std::vector<std::string> taken() { return bench_.log.drain(); }
  const SeatLutState& state() const { return bench_.state(); }
  void invalidate(std::int64_t venue = 7) {
    bench_.luts().invalidatePixelMapSeatLUTCacheForVenueId(venue);
  }
  void expectNothingActive() {
    EXPECT_EQ(state().pixelMapSeatLUTLoadedKey, "");
    EXPECT_EQ(state().pixelMapSeatLUTActiveData, nullptr);
    EXPECT_EQ(state().pixelMapSeatLUTFrameCount, 0);
  }

  PixelMapBench bench_;
};

using SeatLutInvalidation = SeatLutsEnding;
using SeatLutLifetime = SeatLutsEnding;

TEST_F(SeatLutInvalidation, VenueBelowOneDoesNothing) {
  bench_.putMapWithTable("5", kRedGreen);
  bench_.preload(5);
  invalidate(0);
  invalidate(-7);
  EXPECT_EQ(bench_.lutQueue.waiting(), 0U);
  EXPECT_EQ(wordsOf(state().pixelMapSeatLUTActiveData), kRedGreen);
  EXPECT_TRUE(bench_.isSaved("5"));
}

TEST_F(SeatLutInvalidation, ForgetsTheTableInForceAtOnceWithoutARefresh) {
  bench_.putMapWithTable("5", kRedGreen);
  bench_.preload(5);
  taken();
  invalidate();
  expectNothingActive();
  EXPECT_EQ(state().pixelMapSeatLUTRequestedKey, "");
  EXPECT_EQ(bench_.colour(0), std::nullopt);
  EXPECT_THAT(taken(), IsEmpty());
}

TEST_F(SeatLutInvalidation, RemovesAllSeatsOfTheVenuesVideosOnTheQueue) {
  bench_.putMapWithTable("5", kRedGreen, {2, 1});
  bench_.putMapWithTable("5", kRedGreen, {3, 1});
  bench_.putMapWithTable("6", kBlue);
  invalidate();
  EXPECT_TRUE(bench_.isSaved("5")) << "not on the main thread";
  bench_.lutQueue.runAll();
  EXPECT_FALSE(bench_.isSaved("5", {2, 1}));
  EXPECT_FALSE(bench_.isSaved("5", {3, 1}));
  EXPECT_FALSE(bench_.isSaved("6"));
}

TEST_F(SeatLutInvalidation, LeavesOtherVenuesFilesAndForgetsTheirTablesInMemory) {
  bench_.putMapWithTable("5", kRedGreen);
  bench_.preload(5);
  invalidate(8);
  bench_.settle();
  expectNothingActive();
  EXPECT_TRUE(bench_.isSaved("5"));
  bench_.phone.virtualFiles.reads.drain();
  bench_.preload(5);
  EXPECT_EQ(wordsOf(state().pixelMapSeatLUTActiveData), kRedGreen);
  EXPECT_THAT(bench_.phone.virtualFiles.reads.entries,
              testing::Contains(PixelMapBench::dataOf("5")));
}

TEST_F(SeatLutInvalidation, IsForgottenFromMemoryToo) {
  bench_.putMapWithTable("5", kRedGreen);
  bench_.preload(5);
  invalidate();
  bench_.lutQueue.runAll();
  bench_.preload(5);
  expectNothingActive();
  EXPECT_EQ(bench_.lutQueue.waiting(), 1U) << "it has to be built again";
}

TEST_F(SeatLutInvalidation, BuildUnderWayIsFinishedAndRemoved) {
  bench_.putMap("5", kRedGreen, [this](std::size_t frame) {
    if (frame == 0) invalidate();
  });
  bench_.preload(5);
  bench_.lutQueue.runNext();
  EXPECT_EQ(bench_.framesRead(), 2);
  EXPECT_TRUE(bench_.isSaved("5"));
  bench_.turn();
  expectNothingActive();
  bench_.lutQueue.runNext();
  EXPECT_FALSE(bench_.isSaved("5"));
}

TEST_F(SeatLutInvalidation, TableAskedForAfterwardsIsBuiltBehindTheRemoval) {
  bench_.putMap("5", kRedGreen);
  bench_.preload(5);
  invalidate();
  bench_.preload(5);
  EXPECT_EQ(bench_.lutQueue.waiting(), 3U) << "build, removal, build";
  bench_.settle();
  EXPECT_EQ(wordsOf(state().pixelMapSeatLUTActiveData), kRedGreen);
  EXPECT_TRUE(bench_.isSaved("5"));
}

TEST_F(SeatLutInvalidation, EarlierBuildsEndDoesNotLetALaterOneBeAskedForTwice) {
  bench_.putMap("5", {});
  bench_.preload(5);
  invalidate();
  bench_.preload(5);
  bench_.lutQueue.runNext();
  bench_.turn();
  bench_.preload(5);
  EXPECT_EQ(bench_.lutQueue.waiting(), 2U) << "removal and the build asked for behind it";
}

TEST_F(SeatLutInvalidation, VideoIsLookedForAnew) {
  bench_.putMapWithTable("5", kRedGreen);
  bench_.preload(5);
  bench_.phone.virtualFiles.remove(PixelMapBench::videoOf("5"));
  invalidate();
  taken();
  bench_.preload(5);
  EXPECT_THAT(taken(), ElementsAre("Missing video.mp4 (Venue-7/5) using JPG fallback"));
}

TEST_F(SeatLutInvalidation, NewVideoInTheOldPlaceIsBuilt) {
  bench_.putMapWithTable("5", kRedGreen);
  bench_.preload(5);
  invalidate();
  bench_.lutQueue.runAll();
  bench_.putMap("5", kBlue);
  bench_.preload(5);
  bench_.settle();
  EXPECT_EQ(wordsOf(state().pixelMapSeatLUTActiveData), kBlue);
}

TEST_F(SeatLutLifetime, BuildThatHasNotBegunIsNotMadeForAnEngineThatIsGone) {
  bench_.putMap("5", kRedGreen);
  bench_.preload(5);
  bench_.precompute();
  taken();
  bench_.destroy();
  bench_.settle();
  EXPECT_EQ(bench_.framesRead(), 0);
  EXPECT_FALSE(bench_.isSaved("5"));
  EXPECT_THAT(taken(), IsEmpty());
}

TEST_F(SeatLutLifetime, WhatWasPostedDoesNothingForAnEngineThatIsGone) {
  bench_.putMap("5", kRedGreen);
  bench_.preload(5);
  bench_.precompute();
  bench_.lutQueue.runAll();
  bench_.precompute({-1, 0});
  taken();
  bench_.destroy();
  bench_.settle();
  EXPECT_TRUE(bench_.isSaved("5"));
  EXPECT_THAT(taken(), IsEmpty());
}

TEST_F(SeatLutLifetime, InvalidationOfAnEngineThatIsGoneRemovesNothing) {
  bench_.putMapWithTable("5", kRedGreen);
  invalidate();
  bench_.destroy();
  bench_.settle();
  EXPECT_TRUE(bench_.isSaved("5"));
}

TEST_F(SeatLutLifetime, BuildUnderWayEndsAtItsNextFrame) {
  bench_.putMap("5", countedWords(100), [this](std::size_t frame) {
    if (frame == 2) bench_.luts().end();
  });
  bench_.preload(5);
  taken();
  bench_.lutQueue.runAll();
  EXPECT_EQ(bench_.framesRead(), 3);
  bench_.turn();
  EXPECT_FALSE(bench_.isSaved("5"));
  expectNothingActive();
  EXPECT_THAT(taken(), IsEmpty());
}

TEST_F(SeatLutLifetime, PrecomputeUnderWayEndsAtItsNextFrameAndReportsNoMap) {
  bench_.putMap("5", countedWords(100), [this](std::size_t frame) {
    if (frame == 2) bench_.luts().end();
  });
  bench_.putMapWithTable("6", countedWords(100));
  bench_.precompute();
  bench_.lutQueue.runAll();
  EXPECT_EQ(bench_.framesRead(), 3);
  EXPECT_THAT(bench_.phone.virtualFiles.reads.entries, IsEmpty()) << "nor is the next one begun";
  bench_.destroy();
  bench_.turn();
  EXPECT_FALSE(bench_.isSaved("5"));
  EXPECT_THAT(taken(), IsEmpty());
}

TEST_F(SeatLutLifetime, LiveSamplingEnds) {
  bench_.putMap("5", countedWords(100));
  bench_.preload(5);
  bench_.luts().end();
  EXPECT_EQ(bench_.luts().liveSampler().colorFromLivePixelMapSeatBufferForFrameIndex(0),
            std::nullopt);
  bench_.liveQueue.runAll();
  EXPECT_EQ(bench_.framesRead(), 0);
}

}  // namespace
}  // namespace halvora
