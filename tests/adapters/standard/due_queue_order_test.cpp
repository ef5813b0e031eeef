// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/standard/due_queue.h"
#include "adapters/standard/seeded_random.h"
#include "tests/engine/allocation_count.h"

namespace halvora {
namespace {

struct DueQueueOrderTest : testing::Test {
  Task note(char name) {
    return [this, name] { ran += name; };
  }
  // Runs everything that is due by `now`, as of that time.
  void runAt(Duration now) {
    for (auto time = queue.earliest(); time && *time <= now; time = queue.earliest()) {
      queue.runEarliest(now);
    }
  }

  DueQueue queue;
  std::string ran;
};

TEST_F(DueQueueOrderTest, EarlierOnesComeFirst) {
  queue.schedule(milliseconds(30), {}, note('c'));
  queue.schedule(milliseconds(10), {}, note('a'));
  queue.schedule(milliseconds(20), {}, note('b'));
  EXPECT_EQ(queue.earliest(), milliseconds(10));
  runAt(milliseconds(20));
  EXPECT_EQ(ran, "ab");
  EXPECT_EQ(queue.earliest(), milliseconds(30));
}

TEST_F(DueQueueOrderTest, OfOneTimeTheFirstScheduledComesFirst) {
  queue.schedule(milliseconds(10), {}, note('b'));
  queue.schedule(milliseconds(10), {}, note('c'));
  queue.scheduleFirst(milliseconds(10), 7, note('a'));
  runAt(milliseconds(10));
  EXPECT_EQ(ran, "abc");
  EXPECT_EQ(queue.earliest(), std::nullopt);
}

TEST_F(DueQueueOrderTest, ARepeatingOneIsDueAtExactMultiples) {
  queue.schedule(milliseconds(50), milliseconds(50), note('r'));
  runAt(milliseconds(51));
  EXPECT_EQ(queue.earliest(), milliseconds(100));
  runAt(milliseconds(149));
  EXPECT_EQ(queue.earliest(), milliseconds(150));
  EXPECT_EQ(ran, "rr");
}

TEST_F(DueQueueOrderTest, ARepeatingOneThatIsLateRunsOnceAndSkipsWhatItMissed) {
  queue.schedule(milliseconds(50), milliseconds(50), note('r'));
  runAt(milliseconds(270));
  EXPECT_EQ(ran, "r");
  EXPECT_EQ(queue.earliest(), milliseconds(300));
}

TEST_F(DueQueueOrderTest, LateByWholeIntervalsItIsDueAfterNow) {
  queue.schedule(milliseconds(50), milliseconds(50), note('r'));
  runAt(milliseconds(200));
  EXPECT_EQ(ran, "r");
  EXPECT_EQ(queue.earliest(), milliseconds(250));
}

TEST_F(DueQueueOrderTest, ARepeatingOneCountsAsScheduledWhenItLastRan) {
  queue.schedule(milliseconds(50), milliseconds(50), note('r'));
  queue.schedule(milliseconds(100), {}, note('o'));
  runAt(milliseconds(50));
  runAt(milliseconds(100));
  EXPECT_EQ(ran, "ror");
}

TEST_F(DueQueueOrderTest, ACancelledOneNeverRuns) {
  const TimerId timer = queue.schedule(milliseconds(10), {}, note('a'));
  queue.schedule(milliseconds(20), {}, note('b'));
  EXPECT_TRUE(queue.isPending(timer));
  queue.cancel(timer);
  EXPECT_FALSE(queue.isPending(timer));
  EXPECT_EQ(queue.earliest(), milliseconds(20));
  runAt(milliseconds(20));
  EXPECT_EQ(ran, "b");
}

TEST_F(DueQueueOrderTest, ARepeatingOneMayCancelItself) {
  TimerId timer = 0;
  timer = queue.schedule(milliseconds(10), milliseconds(10), [this, &timer] {
    ran += 'r';
    if (ran.size() == 2) queue.cancel(timer);
  });
  runAt(milliseconds(10));
  runAt(milliseconds(20));
  runAt(milliseconds(30));
  EXPECT_EQ(ran, "rr");
  EXPECT_EQ(queue.earliest(), std::nullopt);
}

TEST_F(DueQueueOrderTest, AnIdIsNotUsedAgain) {
  const TimerId first = queue.schedule(milliseconds(10), {}, note('a'));
  runAt(milliseconds(10));
  const TimerId second = queue.schedule(milliseconds(20), {}, note('b'));
  EXPECT_NE(first, second);
  queue.cancel(first);
  EXPECT_TRUE(queue.isPending(second));
}

// Most of them cancelled, in no order, so that the queue cleans up in between.
TEST_F(DueQueueOrderTest, TheRestKeepsItsOrderAfterManyCancellations) {
  constexpr int kTimers = 1009;
  std::vector<int> times;
  std::vector<TimerId> timers(kTimers);
  const auto timeOf = [](int at) { return at * 389 % kTimers; };
  for (int at = 0; at < kTimers; ++at) {
    const int time = timeOf(at);
    timers[static_cast<std::size_t>(at)] =
        queue.schedule(milliseconds(time), {}, [&times, time] { times.push_back(time); });
  }
  std::vector<int> expected;
  for (int at = 0; at < kTimers; ++at) {
    if (at % 7 == 0) {
      expected.push_back(timeOf(at));
    } else {
      queue.cancel(timers[static_cast<std::size_t>(at)]);
    }
  }
  std::sort(expected.begin(), expected.end());
  runAt(milliseconds(kTimers));
  EXPECT_EQ(times, expected);
}

TEST_F(DueQueueOrderTest, CancelledOnesTakeNoMoreRoomThanThereWasOnce) {
  if (!countsAllocations()) GTEST_SKIP() << "this build does not count";
  const auto scheduleAndCancel = [this] {
    for (int at = 0; at < 1000; ++at) {
      queue.cancel(queue.schedule(milliseconds(1000 + at), {}, [] {}));
    }
  };
  queue.schedule(milliseconds(5000), {}, note('a'));
  scheduleAndCancel();
  const AllocationCount count;
  for (int turn = 0; turn < 10; ++turn) scheduleAndCancel();
  EXPECT_EQ(count.allocations(), 0);
  runAt(milliseconds(5000));
  EXPECT_EQ(ran, "a");
}

// What a task holds may cancel timers while the task itself is being cancelled.
TEST_F(DueQueueOrderTest, ATaskThatGoesMayCancelOthers) {
  struct Canceller {
    DueQueue* queue;
    TimerId other;
    ~Canceller() { queue->cancel(other); }
  };
  const TimerId other = queue.schedule(milliseconds(10), {}, note('a'));
  auto canceller = std::make_unique<Canceller>(Canceller{&queue, other});
  const TimerId timer =
      queue.schedule(milliseconds(10), {}, [kept = std::move(canceller)] { FAIL(); });
  queue.cancel(timer);
  EXPECT_FALSE(queue.isPending(other));
  EXPECT_EQ(queue.earliest(), std::nullopt);
}

// So many that what was cancelled is cleared away several times.
TEST_F(DueQueueOrderTest, StandsWhateverWasCancelled) {
  SeededRandom random(20261122);
  std::vector<std::pair<Duration, int>> expected;
  std::vector<int> order;
  std::vector<TimerId> timers;
  for (int number = 0; number < 3000; ++number) {
    const Duration time = milliseconds(static_cast<long long>(random.below(50)));
    timers.push_back(queue.schedule(time, {}, [&order, number] { order.push_back(number); }));
    expected.emplace_back(time, number);
    if (number % 3 == 0) continue;
    const std::size_t gone = random.below(static_cast<std::uint32_t>(timers.size()));
    queue.cancel(timers[gone]);
    expected.erase(expected.begin() + static_cast<std::ptrdiff_t>(gone));
    timers.erase(timers.begin() + static_cast<std::ptrdiff_t>(gone));
  }
  std::stable_sort(expected.begin(), expected.end(),
                   [](const auto& left, const auto& right) { return left.first < right.first; });
  runAt(milliseconds(50));
  ASSERT_EQ(order.size(), expected.size());
  for (std::size_t at = 0; at < order.size(); ++at) ASSERT_EQ(order[at], expected[at].second) << at;
}

// A phone that sets and cancels a timer at every packet does so for hours.
TEST_F(DueQueueOrderTest, WhatIsCancelledDoesNotPileUp) {
  queue.schedule(milliseconds(1'000'000), {}, note('z'));
  const auto cancelMany = [this](int count) {
    for (int number = 0; number < count; ++number) {
      queue.cancel(queue.schedule(milliseconds(500), {}, note('a')));
    }
  };
  cancelMany(1000);
  const AllocationCount count;
  cancelMany(100'000);
  if (!countsAllocations()) GTEST_SKIP() << "this build does not count what is allocated";
  EXPECT_EQ(count.allocations(), 0U);
}

}  // namespace
}  // namespace halvora
