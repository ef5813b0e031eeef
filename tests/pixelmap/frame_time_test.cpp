// SPDX-License-Identifier: Apache-2.0
#include "pixelmap/frame_time.h"

#include <limits>

#include <gtest/gtest.h>

namespace halvora {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();

TEST(PixelMapFrameIndex, CountsModuloTheFrames) {
  EXPECT_EQ(normalizedPixelMapFrameIndex(0, 10), 0);
  EXPECT_EQ(normalizedPixelMapFrameIndex(9, 10), 9);
  EXPECT_EQ(normalizedPixelMapFrameIndex(10, 10), 0);
  EXPECT_EQ(normalizedPixelMapFrameIndex(25, 10), 5);
  EXPECT_EQ(normalizedPixelMapFrameIndex(7, 1), 0);
}

TEST(PixelMapFrameIndex, NegativeOnesCountFromTheEnd) {
  EXPECT_EQ(normalizedPixelMapFrameIndex(-1, 10), 9);
  EXPECT_EQ(normalizedPixelMapFrameIndex(-10, 10), 0);
  EXPECT_EQ(normalizedPixelMapFrameIndex(-11, 10), 9);
  EXPECT_EQ(normalizedPixelMapFrameIndex(INT64_MIN, 10), 2);
  EXPECT_EQ(normalizedPixelMapFrameIndex(INT64_MAX, 10), 7);
}

TEST(PixelMapFrameIndex, IsZeroWithoutFrames) {
  EXPECT_EQ(normalizedPixelMapFrameIndex(7, 0), 0);
  EXPECT_EQ(normalizedPixelMapFrameIndex(-7, 0), 0);
  EXPECT_EQ(normalizedPixelMapFrameIndex(7, -3), 0);
}

TEST(PixelMapFrameCount, IsThirtyASecond) {
  EXPECT_EQ(pixelMapFrameCount(10), 300);
  EXPECT_EQ(pixelMapFrameCount(1.0 / 30), 1);
  EXPECT_EQ(pixelMapFrameCount(2167.4), 65022);
}

TEST(PixelMapFrameCount, RoundsToTheNearestAndHalvesUp) {
  EXPECT_EQ(pixelMapFrameCount(1.016), 30);
  EXPECT_EQ(pixelMapFrameCount(1.017), 31);
  EXPECT_EQ(pixelMapFrameCount(0.75), 23) << "22.5 frames";
}

TEST(PixelMapFrameCount, IsAtLeastOneAndAtMost65025) {
  EXPECT_EQ(pixelMapFrameCount(0.001), 1);
  EXPECT_EQ(pixelMapFrameCount(2167.5), 65025);
  EXPECT_EQ(pixelMapFrameCount(2167.6), 65025);
  EXPECT_EQ(pixelMapFrameCount(40 * 60), 65025);
  EXPECT_EQ(pixelMapFrameCount(std::numeric_limits<double>::max()), 65025);
}

TEST(PixelMapFrameCount, IsOneForWhatIsNoDuration) {
  for (const double duration : {0.0, -0.0, -10.0, kInfinity, -kInfinity, kNoNumber}) {
    EXPECT_EQ(pixelMapFrameCount(duration), 1) << duration;
  }
}

TEST(PixelMapFrameAt, IsTheNearestFrame) {
  EXPECT_EQ(pixelMapFrameAt(0, 300), 0);
  EXPECT_EQ(pixelMapFrameAt(-0.0, 300), 0);
  EXPECT_EQ(pixelMapFrameAt(0.016, 300), 0);
  EXPECT_EQ(pixelMapFrameAt(0.017, 300), 1);
  EXPECT_EQ(pixelMapFrameAt(0.75, 300), 23) << "22.5 frames";
  EXPECT_EQ(pixelMapFrameAt(9.98, 300), 299);
}

TEST(PixelMapFrameAt, EveryFrameIsAtItsOwnTime) {
  for (int frame = 0; frame < kMostPixelMapFrames; ++frame) {
    ASSERT_EQ(pixelMapFrameAt(frame / 30.0, kMostPixelMapFrames), frame);
    ASSERT_EQ(pixelMapFrameAt(pixelMapFrameTime(frame).seconds(), kMostPixelMapFrames), frame);
  }
}

TEST(PixelMapFrameAt, IsNoneForTimesOutsideTheVideo) {
  EXPECT_EQ(pixelMapFrameAt(10, 300), std::nullopt);
  EXPECT_EQ(pixelMapFrameAt(9.99, 300), std::nullopt) << "rounds to frame 300";
  EXPECT_EQ(pixelMapFrameAt(1e300, 300), std::nullopt);
  EXPECT_EQ(pixelMapFrameAt(-1e-9, 300), std::nullopt) << "not even one that rounds to frame 0";
  EXPECT_EQ(pixelMapFrameAt(-1, 300), std::nullopt);
  for (const double seconds : {kInfinity, -kInfinity, kNoNumber}) {
    EXPECT_EQ(pixelMapFrameAt(seconds, 300), std::nullopt) << seconds;
  }
}

TEST(PixelMapFrameTime, IsExactInSixHundredths) {
  EXPECT_EQ(pixelMapFrameTime(0).value, 0);
  EXPECT_EQ(pixelMapFrameTime(7).value, 140);
  EXPECT_EQ(pixelMapFrameTime(65025).value, 1'300'500);
  EXPECT_EQ(pixelMapFrameTime(7).timescale, 600);
  EXPECT_EQ(pixelMapFrameTime(7).seconds(), 7 / 30.0);
}

}  // namespace
}  // namespace halvora
