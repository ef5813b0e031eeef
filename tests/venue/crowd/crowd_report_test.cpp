// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/crowd_report.h"

#include <gtest/gtest.h>

#include "venue/crowd/crowd_summary.h"

namespace halvora {
namespace {

TEST(LookDelays, SaysWhenSoManyPhonesHadTheLook) {
  LookDelays delays;
  for (const int time : {0, 5, 5, 100}) delays.add(milliseconds(time));
  EXPECT_EQ(delays.whenShown(1), milliseconds(0));
  EXPECT_EQ(delays.whenShown(2), milliseconds(5));
  EXPECT_EQ(delays.whenShown(3), milliseconds(5));
  EXPECT_EQ(delays.whenShown(4), milliseconds(100));
  EXPECT_EQ(delays.whenShown(5), std::nullopt);
}

TEST(LookDelays, RoundsUpToTheMillisecond) {
  LookDelays delays;
  delays.add(Duration(1));
  EXPECT_EQ(delays.whenShown(1), milliseconds(1));
}

TEST(LookDelays, IsCoarserForLongerTimesAndNeverTooEarly) {
  for (const int time : {127, 128, 135, 136, 1000, 1023, 1024, 1300, 16'383}) {
    LookDelays delays;
    delays.add(milliseconds(time));
    const auto shown = delays.whenShown(1);
    ASSERT_TRUE(shown) << time;
    EXPECT_GE(*shown, milliseconds(time));
    EXPECT_LE(*shown, milliseconds(time < 128 ? time : time < 1024 ? time + 7 : time + 255));
  }
}

TEST(LookDelays, WhatComesTooLateNeverCame) {
  LookDelays delays;
  delays.add(LookDelays::kLongest);
  EXPECT_EQ(delays.whenShown(1), std::nullopt);
}

TEST(OpenLooks, AddsUpByTheNumberOfTheLook) {
  OpenLooks looks;
  OpenLooks more;
  looks.add(0, milliseconds(3));
  more.add(0, milliseconds(7));
  more.add(2, milliseconds(9));
  looks.add(more);
  const LookDelays first = looks.take(0);
  EXPECT_EQ(first.whenShown(1), milliseconds(3));
  EXPECT_EQ(first.whenShown(2), milliseconds(7));
  EXPECT_EQ(looks.take(1).whenShown(1), std::nullopt);
  EXPECT_EQ(looks.take(2).whenShown(1), milliseconds(9));
}

TEST(OpenLooks, ALookThatWasTakenOutCountsNoMore) {
  OpenLooks looks;
  looks.add(0, milliseconds(3));
  looks.take(0);
  looks.add(0, milliseconds(4));
  looks.add(1, milliseconds(5));
  OpenLooks late;
  late.add(0, milliseconds(6));
  looks.add(late);
  const LookDelays second = looks.take(1);
  EXPECT_EQ(second.whenShown(1), milliseconds(5));
  EXPECT_EQ(second.whenShown(2), std::nullopt);
}

FrameCounts compared(std::uint32_t phone, std::uint32_t error) {
  FrameCounts counts;
  counts.compared = 1;
  counts.squaredError = counts.worstError = error;
  counts.worstPhone = phone;
  return counts;
}

TEST(FrameCounts, TheWorstPhoneIsTheSameInWhateverOrderTheyAreAdded) {
  FrameCounts forwards;
  FrameCounts backwards;
  const FrameCounts all[] = {compared(4, 9), compared(2, 9), compared(7, 1), compared(9, 0)};
  for (const FrameCounts& counts : all) forwards.add(counts);
  for (std::size_t at = 4; at-- > 0;) backwards.add(all[at]);
  EXPECT_EQ(forwards.worstPhone, 2);
  EXPECT_EQ(backwards.worstPhone, 2);
  EXPECT_EQ(forwards.worstError, 9);
  EXPECT_EQ(forwards.compared, 4);
  EXPECT_EQ(forwards.squaredError, 19);
}

TEST(FrameCounts, AFrameInWhichNothingWasComparedHasNoWorstPhone) {
  FrameCounts counts = compared(5, 0);
  counts.add({});
  EXPECT_EQ(counts.worstPhone, 5);
  FrameCounts first;
  first.add(compared(5, 0));
  EXPECT_EQ(first.worstPhone, 5);
}

TEST(Psnr, IsThatOfEightBitLevels) {
  EXPECT_EQ(psnr(0, 300), std::nullopt);
  EXPECT_NEAR(*psnr(255 * 255, 1), 0, 1e-9);
  EXPECT_NEAR(*psnr(300, 300), 48.1308, 1e-4);
}

}  // namespace
}  // namespace halvora
