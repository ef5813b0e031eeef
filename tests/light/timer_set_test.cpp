// SPDX-License-Identifier: Apache-2.0
#include "light/timer_set.h"

#include <optional>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/virtual/virtual_run_loop.h"

namespace halvora {
namespace {

/// Counts who has not been cancelled or fired, without knowing more than a loop tells.
class CountingLoop final : public RunLoop {
 public:
  Duration now() const override { return loop.now(); }
  TimerId after(Duration delay, Task&& task) override { return loop.after(delay, std::move(task)); }
  TimerId every(Duration time, Task&& task) override { return loop.every(time, std::move(task)); }
  TimerId soon(Task&& task) override { return loop.soon(std::move(task)); }
  void cancel(TimerId timer) override {
    ++cancelCalls;
    loop.cancel(timer);
  }
  bool isPending(TimerId timer) const override { return loop.isPending(timer); }
  void post(Task&& task) override { loop.post(std::move(task)); }

  VirtualRunLoop loop;
  int cancelCalls = 0;
};

TEST(TimerSet, RunsItsTimers) {
  VirtualRunLoop loop;
  TimerSet timers(loop);
  std::vector<int> fired;
  timers.after(milliseconds(20), [&] { fired.push_back(20); });
  timers.every(milliseconds(15), [&] { fired.push_back(15); });
  timers.soon([&] { fired.push_back(0); });
  loop.runUntil(milliseconds(30));
  EXPECT_EQ(fired, (std::vector<int>{0, 15, 20, 15}));
  EXPECT_EQ(timers.now(), milliseconds(30));
}

TEST(TimerSet, CancelsEverythingPendingWhenItGoes) {
  VirtualRunLoop loop;
  int fired = 0;
  {
    TimerSet timers(loop);
    for (int count = 0; count < 100; ++count) timers.after(milliseconds(count), [&] { ++fired; });
    timers.every(milliseconds(7), [&] { ++fired; });
    timers.soon([&] { ++fired; });
  }
  loop.runUntil(milliseconds(1000));
  EXPECT_EQ(fired, 0);
  EXPECT_EQ(loop.turns(), 0U);
}

TEST(TimerSet, LeavesOtherOwnersTimersAlone) {
  VirtualRunLoop loop;
  int fired = 0;
  loop.after(milliseconds(5), [&] { ++fired; });
  { const TimerSet timers(loop); }
  loop.runUntil(milliseconds(5));
  EXPECT_EQ(fired, 1);
}

TEST(TimerSet, ATimerWhoseNameWasReplacedStillFires) {
  VirtualRunLoop loop;
  TimerSet timers(loop);
  std::vector<int> fired;
  TimerId named = timers.after(milliseconds(10), [&] { fired.push_back(1); });
  named = timers.after(milliseconds(20), [&] { fired.push_back(2); });
  timers.invalidate(named);
  loop.runUntil(milliseconds(100));
  EXPECT_EQ(fired, std::vector<int>{1});
}

TEST(TimerSet, InvalidatingClearsTheName) {
  VirtualRunLoop loop;
  TimerSet timers(loop);
  int fired = 0;
  TimerId named = timers.after(milliseconds(10), [&] { ++fired; });
  timers.invalidate(named);
  EXPECT_EQ(named, 0U);
  timers.invalidate(named);
  loop.runUntil(milliseconds(100));
  EXPECT_EQ(fired, 0);
}

TEST(TimerSet, InvalidatingATimerThatFiredIsHarmless) {
  VirtualRunLoop loop;
  TimerSet timers(loop);
  int fired = 0;
  TimerId first = timers.after(milliseconds(1), [&] { ++fired; });
  loop.runUntil(milliseconds(1));
  // The new timer may well live where the old one did.
  timers.after(milliseconds(1), [&] { ++fired; });
  timers.invalidate(first);
  loop.runUntil(milliseconds(2));
  EXPECT_EQ(fired, 2);
}

TEST(TimerSet, SweepsWhatFiredSoThatAnHourOfShowLeavesNothingBehind) {
  CountingLoop loop;
  std::optional<TimerSet> timers(loop);
  for (int count = 0; count < 10'000; ++count) {
    timers->after(milliseconds(1), [] {});
    loop.loop.runUntil(milliseconds(count + 1));
  }
  timers.reset();
  EXPECT_LE(loop.cancelCalls, 100);
}

TEST(TimerSet, ASweepKeepsEveryPendingTimer) {
  CountingLoop loop;
  std::optional<TimerSet> timers(loop);
  int longFired = 0;
  for (int count = 0; count < 50; ++count) timers->after(milliseconds(5000), [&] { ++longFired; });
  for (int count = 0; count < 1000; ++count) {
    timers->after(milliseconds(1), [] {});
    loop.loop.runUntil(milliseconds(count + 1));
  }
  timers.reset();
  loop.loop.runUntil(milliseconds(10'000));
  EXPECT_EQ(longFired, 0);
}

TEST(TimerSet, ATaskMayInvalidateItsOwnRepeatingTimer) {
  VirtualRunLoop loop;
  TimerSet timers(loop);
  int fired = 0;
  TimerId named = 0;
  named = timers.every(milliseconds(10), [&] {
    if (++fired == 3) timers.invalidate(named);
  });
  loop.runUntil(milliseconds(1000));
  EXPECT_EQ(fired, 3);
}

}  // namespace
}  // namespace halvora
