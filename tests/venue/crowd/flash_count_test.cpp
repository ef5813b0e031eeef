// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/flash_count.h"

#include <gtest/gtest.h>

namespace halvora {
namespace {

constexpr LinearColour kDark{0, 0, 0};
constexpr LinearColour kLit{1, 1, 1};

// Between two colours, so many times a second, for three seconds.
FlashCount flashing(int aSecond, const LinearColour& one, const LinearColour& other) {
  FlashCount count;
  for (int at = 0; at < 3 * 2 * aSecond; ++at) {
    count.add(milliseconds(1000) * at / (2 * aSecond), at % 2 == 0 ? one : other);
  }
  return count;
}

TEST(FlashCount, CountsPairsOfOpposingChangesInTheBusiestSecond) {
  EXPECT_EQ(flashing(1, kDark, kLit).generalFlashes(), 1);
  EXPECT_EQ(flashing(3, kDark, kLit).generalFlashes(), 3);
  EXPECT_EQ(flashing(10, kDark, kLit).generalFlashes(), 10);
}

TEST(FlashCount, LooksAtTheBusiestSecondOnly) {
  FlashCount count;
  Duration time{};
  bool isLit = false;
  for (const int pause : {400, 400, 400, 50, 50, 50, 50, 50, 50, 400, 400, 400}) {
    count.add(time, isLit ? kLit : kDark);
    isLit = !isLit;
    time += milliseconds(pause);
  }
  EXPECT_EQ(count.generalFlashes(), 4);
}

TEST(FlashCount, TwoChangesThatAreASecondApartArePairedAndNoFurther) {
  for (const int apart : {1000, 1001}) {
    FlashCount count;
    count.add(milliseconds(0), kDark);
    count.add(milliseconds(100), kLit);
    count.add(milliseconds(100 + apart), kDark);
    EXPECT_EQ(count.generalFlashes(), apart == 1000 ? 1 : 0) << apart;
  }
}

TEST(FlashCount, AChangeBelowATenthIsNone) {
  EXPECT_EQ(flashing(5, {0.3, 0.3, 0.3}, {0.39, 0.39, 0.39}).generalFlashes(), 0);
  EXPECT_EQ(flashing(5, {0.3, 0.3, 0.3}, {0.41, 0.41, 0.41}).generalFlashes(), 5);
}

TEST(FlashCount, AChangeBetweenBrightLevelsIsNone) {
  EXPECT_EQ(flashing(5, {0.81, 0.81, 0.81}, kLit).generalFlashes(), 0);
  EXPECT_EQ(flashing(5, {0.79, 0.79, 0.79}, kLit).generalFlashes(), 5);
}

TEST(FlashCount, ASlowRiseAndFallIsOneFlashHoweverManyStepsItHas) {
  FlashCount count;
  for (int at = 0; at <= 100; ++at) {
    const double level = at <= 50 ? at / 50.0 : (100 - at) / 50.0;
    count.add(milliseconds(at * 9), {level, level, level});
  }
  EXPECT_EQ(count.generalFlashes(), 1);
}

TEST(FlashCount, ASteadyRiseIsNoFlash) {
  FlashCount count;
  for (int at = 0; at <= 50; ++at) {
    const double level = at / 50.0;
    count.add(milliseconds(at * 9), {level, level, level});
  }
  EXPECT_EQ(count.generalFlashes(), 0);
}

TEST(FlashCount, SaturatedRedIsCountedApart) {
  const FlashCount red = flashing(4, kDark, {1, 0, 0});
  EXPECT_EQ(red.redFlashes(), 4);
  // Red's own luminance is a fifth of white's.
  EXPECT_EQ(red.generalFlashes(), 4);
  EXPECT_EQ(flashing(4, kDark, kLit).redFlashes(), 0);
  EXPECT_EQ(flashing(4, kDark, {0, 0, 1}).redFlashes(), 0);
  EXPECT_EQ(flashing(4, kDark, {0, 0, 1}).generalFlashes(), 0);
}

TEST(FlashCount, RedOfTooLittleStrengthIsNone) {
  EXPECT_EQ(flashing(4, kDark, {0.06, 0, 0}).redFlashes(), 0);
  EXPECT_EQ(flashing(4, kDark, {0.07, 0, 0}).redFlashes(), 4);
}

TEST(RelativeLuminance, WeighsTheChannels) {
  EXPECT_DOUBLE_EQ(relativeLuminance(kLit), 1);
  EXPECT_DOUBLE_EQ(relativeLuminance({1, 0, 0}), 0.2126);
  EXPECT_DOUBLE_EQ(relativeLuminance({0, 1, 0}), 0.7152);
  EXPECT_DOUBLE_EQ(relativeLuminance({0, 0, 1}), 0.0722);
}

}  // namespace
}  // namespace halvora
