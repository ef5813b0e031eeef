// SPDX-License-Identifier: Apache-2.0
#include "light/show_state.h"

#include <gtest/gtest.h>

namespace halvora {
namespace {

TEST(PercentageSpeed, TheFastestByteIs0) { EXPECT_EQ(percentageSpeed(255), 0); }

TEST(PercentageSpeed, TheSlowestByteIs100) { EXPECT_EQ(percentageSpeed(0), 100); }

TEST(PercentageSpeed, TheMiddleByteIs50) { EXPECT_EQ(percentageSpeed(128), 50); }

TEST(PercentageSpeed, RoundsToTheNearest) {
  // 127 ÷ 255 is 49.80 %, 1 ÷ 255 is 0.39 %, 2 ÷ 255 is 0.78 %, 254 ÷ 255 is 99.61 %.
  EXPECT_EQ(percentageSpeed(127), 50);
  EXPECT_EQ(percentageSpeed(1), 100);
  EXPECT_EQ(percentageSpeed(2), 99);
  EXPECT_EQ(percentageSpeed(254), 0);
}

TEST(PercentageSpeed, EveryByteIsTheNearestPercentage) {
  // No byte lies half-way between two percentages, so whole numbers decide exactly.
  for (int speed = 0; speed <= 255; ++speed) {
    const int nearest = (speed * 200 + 255) / 510;
    EXPECT_EQ(percentageSpeed(speed), 100 - nearest) << speed;
  }
}

}  // namespace
}  // namespace halvora
