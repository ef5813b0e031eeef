// SPDX-License-Identifier: Apache-2.0
#include "adapters/virtual/virtual_devices.h"

#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/virtual/virtual_run_loop.h"

namespace halvora {
namespace {

TEST(VirtualScreen, KeepsItsBrightnessWithin0To1AndWritesDownEveryLevel) {
  VirtualScreen screen({390, 844}, 0.5);
  EXPECT_EQ(screen.brightness(), 0.5);
  EXPECT_EQ(screen.bounds(), (Size{390, 844}));
  screen.setBrightness(1.5);
  screen.setBrightness(-0.5);
  screen.setBrightness(0.25);
  screen.setBrightness(0.25);
  EXPECT_EQ(screen.brightness(), 0.25);
  EXPECT_EQ(screen.log.entries, (std::vector<double>{1, 0, 0.25, 0.25}));
}

TEST(VirtualHaptics, WritesDownItsActs) {
  VirtualHaptics haptics;
  haptics.impact(ImpactStyle::light);
  haptics.impact(ImpactStyle::heavy);
  haptics.playSystemSound(kVibrationSound);
  haptics.disposeSystemSound(kVibrationSound);
  EXPECT_EQ(haptics.log.entries, (std::vector{HapticAct::lightImpact, HapticAct::heavyImpact,
                                              HapticAct::sound, HapticAct::dispose}));
}

class CountingObserver final : public ApplicationObserver {
 public:
  void handleOrientationChange() override { ++orientations; }
  void appDidBecomeActive() override { ++activations; }
  void appWillResignActive() override { ++resignations; }
  int orientations = 0;
  int activations = 0;
  int resignations = 0;
};

TEST(VirtualApplication, TellsItsObserversUntilTheyLeave) {
  VirtualApplication application;
  CountingObserver first;
  CountingObserver second;
  application.addObserver(first);
  application.addObserver(second);
  application.becomeActive();
  application.removeObserver(first);
  application.resignActive();
  application.changeOrientation();
  EXPECT_EQ(first.activations, 1);
  EXPECT_EQ(first.resignations, 0);
  EXPECT_EQ(second.activations, 1);
  EXPECT_EQ(second.resignations, 1);
  EXPECT_EQ(second.orientations, 1);
}

TEST(VirtualApplication, KeepsWhatItWasTold) {
  VirtualApplication application;
  application.setIdleTimerDisabled(true);
  application.setStatusBarHidden(true);
  application.dismissPresentedScreens();
  application.useAudioPlaybackCategory();
  EXPECT_TRUE(application.isIdleTimerDisabled);
  EXPECT_TRUE(application.isStatusBarHidden);
  EXPECT_EQ(application.dismissals, 1);
  EXPECT_TRUE(application.usesAudioPlayback);
}

TEST(VirtualWallClock, GoesOnWithTheRunLoop) {
  VirtualRunLoop loop;
  VirtualWallClock clock(loop);
  clock.begin = Date{1000};
  loop.runUntil(milliseconds(2500));
  EXPECT_EQ(clock.now(), Date{1002.5});
}

TEST(VirtualWallClock, BeginsAtNoonOfTheFirstDayOf2026) {
  const VirtualRunLoop loop;
  const VirtualWallClock clock(loop);
  EXPECT_EQ(VirtualCalendar().componentsOf(clock.now()), (DayComponents{2026, 1, 1}));
  // 56 years with 14 leap days, and half a day.
  EXPECT_EQ(clock.now(), Date{(56 * 365 + 14) * 86400.0 + 43200.0});
}

TEST(VirtualCalendar, KnowsDaysMonthsAndYears) {
  const VirtualCalendar calendar;
  EXPECT_EQ(calendar.componentsOf(Date{0}), (DayComponents{1970, 1, 1}));
  EXPECT_EQ(calendar.componentsOf(Date{86399.999}), (DayComponents{1970, 1, 1}));
  EXPECT_EQ(calendar.componentsOf(Date{86400}), (DayComponents{1970, 1, 2}));
  EXPECT_EQ(calendar.componentsOf(Date{951782400}), (DayComponents{2000, 2, 29}));
  EXPECT_EQ(calendar.componentsOf(Date{951868800}), (DayComponents{2000, 3, 1}));
}

TEST(VirtualCalendar, KnowsTheTimeBefore1970) {
  EXPECT_EQ(VirtualCalendar().componentsOf(Date{-0.5}), (DayComponents{1969, 12, 31}));
  EXPECT_EQ(VirtualCalendar().componentsOf(Date{-86400}), (DayComponents{1969, 12, 31}));
  EXPECT_EQ(VirtualCalendar().componentsOf(Date{-86401}), (DayComponents{1969, 12, 30}));
}

TEST(VirtualCalendar, HasAnOffsetFromUniversalTime) {
  VirtualCalendar calendar;
  calendar.offsetSeconds = 3600;
  EXPECT_EQ(calendar.componentsOf(Date{86400 - 3600}), (DayComponents{1970, 1, 2}));
  calendar.offsetSeconds = -3600;
  EXPECT_EQ(calendar.componentsOf(Date{86400}), (DayComponents{1970, 1, 1}));
}

TEST(VirtualCalendar, StaysWithinItsYearsForAbsurdDates) {
  const DayComponents late = VirtualCalendar().componentsOf(Date{1e300});
  const DayComponents early = VirtualCalendar().componentsOf(Date{-1e300});
  EXPECT_GT(late.year, 20'000);
  EXPECT_LT(early.year, -20'000);
  EXPECT_EQ(late, VirtualCalendar().componentsOf(Date{std::numeric_limits<double>::infinity()}));
}

TEST(ScriptedRandom, DrawsTheLeastOrTheGreatest) {
  ScriptedRandom least(ScriptedRandom::Rule::least);
  ScriptedRandom greatest(ScriptedRandom::Rule::greatest);
  EXPECT_EQ(least.below(10), 0U);
  EXPECT_EQ(greatest.below(10), 9U);
  EXPECT_EQ(least.below(0), 0U);
  EXPECT_EQ(greatest.below(0), 0U);
}

TEST(ScriptedRandom, FollowsItsListFirstAndNeverLeavesTheBound) {
  ScriptedRandom random(ScriptedRandom::Rule::greatest, {3, 99});
  EXPECT_EQ(random.below(10), 3U);
  EXPECT_EQ(random.below(10), 9U);
  EXPECT_EQ(random.below(5), 4U);
  EXPECT_EQ(random.log.entries, (std::vector<std::uint32_t>{10, 10, 5}));
}

TEST(VirtualHttp, WritesDownItsRequests) {
  VirtualHttp http;
  http.get("https://a.example/");
  http.get("https://b.example/");
  EXPECT_EQ(http.log.entries,
            (std::vector<std::string>{"https://a.example/", "https://b.example/"}));
}

TEST(VirtualQueues, RunTheirTasksWhenTheTurnEndsInTheOrderOfTheCalls) {
  VirtualRunLoop loop;
  VirtualQueues queues(loop);
  const auto first = queues.make("first");
  const auto second = queues.make("second");
  EXPECT_EQ(first->label(), "first");
  EXPECT_EQ(queues.log.entries, (std::vector<std::string>{"first", "second"}));
  std::vector<int> order;
  loop.soon([&] {
    second->dispatch([&] { order.push_back(1); });
    first->dispatch([&] { order.push_back(2); });
    order.push_back(0);
  });
  loop.soon([&] { order.push_back(3); });
  loop.runUntil(Duration::zero());
  EXPECT_EQ(order, (std::vector<int>{0, 1, 2, 3}));
}

}  // namespace
}  // namespace halvora
