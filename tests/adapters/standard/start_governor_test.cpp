// SPDX-License-Identifier: Apache-2.0
#include "adapters/standard/start_governor.h"

#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

namespace halvora {
namespace {

constexpr StartLimit kFiveInHalfAMinute{5, milliseconds(30'000)};

// Begins as soon as it may, `every` apart at the most, and says when.
std::vector<Duration> starts(StartGovernor& governor, Duration every, int count) {
  std::vector<Duration> times;
  for (Duration now{}; times.size() < static_cast<std::size_t>(count); now += every) {
    now = std::max(now, governor.earliest());
    governor.started(now);
    times.push_back(now);
  }
  return times;
}

TEST(StartGovernor, WithoutALimitAStartMayAlwaysCome) {
  StartGovernor governor;
  for (int count = 0; count < 1000; ++count) governor.started(milliseconds(1));
  EXPECT_EQ(governor.earliest(), Duration::min());
}

TEST(StartGovernor, TheSixthStartWaitsForTheFirstToBeHalfAMinuteAgo) {
  StartGovernor governor(kFiveInHalfAMinute);
  for (int second = 0; second < 5; ++second) {
    EXPECT_EQ(governor.earliest(), Duration::min());
    governor.started(milliseconds(1000 * second));
  }
  EXPECT_EQ(governor.earliest(), milliseconds(30'000));
  governor.started(milliseconds(30'000));
  EXPECT_EQ(governor.earliest(), milliseconds(31'000));
}

TEST(StartGovernor, NoSpanHasMoreStartsThanItMay) {
  StartGovernor governor(kFiveInHalfAMinute);
  const std::vector<Duration> times = starts(governor, milliseconds(700), 100);
  for (std::size_t at = 5; at < times.size(); ++at) {
    EXPECT_GE(times[at] - times[at - 5], kFiveInHalfAMinute.within) << at;
  }
  EXPECT_EQ(times.back(), milliseconds(19 * 30'000 + 4 * 700));
}

TEST(StartGovernor, StartsThatAreFarEnoughApartNeverWait) {
  StartGovernor governor(kFiveInHalfAMinute);
  const std::vector<Duration> times = starts(governor, milliseconds(6000), 50);
  EXPECT_EQ(times.back(), milliseconds(49 * 6000));
}

TEST(StartGovernor, AStartThatCouldNotWaitCounts) {
  StartGovernor governor({2, milliseconds(10'000)});
  for (const int at : {0, 100, 200}) governor.started(milliseconds(at));
  EXPECT_EQ(governor.earliest(), milliseconds(10'100));
}

}  // namespace
}  // namespace halvora
