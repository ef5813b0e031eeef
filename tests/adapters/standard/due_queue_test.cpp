// SPDX-License-Identifier: Apache-2.0
#include "adapters/standard/due_queue.h"

#include <memory>
#include <new>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace halvora {
namespace {

class DueQueueTest : public testing::Test {
 protected:
  Task noting(const char* name) {
    return [this, name] { names_ += name; };
  }
  /// Runs all that is due at that time, as late as it may be; returns their names.
  std::string runAt(long long ms) {
    while (queue_.earliest().value_or(Duration::max()) <= milliseconds(ms)) {
      queue_.runEarliest(milliseconds(ms));
    }
    return std::exchange(names_, {});
  }

  DueQueue queue_;
  std::string names_;
};

TEST_F(DueQueueTest, IsEmptyAtFirstAndWhenAllHasRun) {
  EXPECT_EQ(queue_.earliest(), std::nullopt);
  queue_.schedule(milliseconds(5), {}, noting("a"));
  EXPECT_EQ(queue_.earliest(), milliseconds(5));
  EXPECT_EQ(runAt(5), "a");
  EXPECT_EQ(queue_.earliest(), std::nullopt);
}

TEST_F(DueQueueTest, WhatIsCancelledIsNeverTheEarliest) {
  const TimerId first = queue_.schedule(milliseconds(1), {}, noting("a"));
  queue_.schedule(milliseconds(2), {}, noting("b"));
  queue_.cancel(first);
  EXPECT_EQ(queue_.earliest(), milliseconds(2));
}

TEST_F(DueQueueTest, WhatIsScheduledFirstComesFirstAtItsTime) {
  queue_.schedule(milliseconds(1), {}, noting("own"));
  queue_.scheduleFirst(milliseconds(1), 7, noting("second "));
  queue_.scheduleFirst(milliseconds(1), 3, noting("first "));
  EXPECT_EQ(runAt(1), "first second own");
}

TEST_F(DueQueueTest, ALateRepetitionFiresOnceAndKeepsItsMultiples) {
  queue_.schedule(milliseconds(10), milliseconds(10), noting("a"));
  EXPECT_EQ(runAt(35), "a");
  EXPECT_EQ(queue_.earliest(), milliseconds(40));
  EXPECT_EQ(runAt(40), "a");
  EXPECT_EQ(queue_.earliest(), milliseconds(50));
}

TEST_F(DueQueueTest, ARepetitionLateByAWholeIntervalFiresOnce) {
  queue_.schedule(milliseconds(10), milliseconds(10), noting("a"));
  EXPECT_EQ(runAt(20), "a");
  EXPECT_EQ(queue_.earliest(), milliseconds(30));
}

TEST_F(DueQueueTest, ACancelledTaskMayCancelAnotherAsItGoes) {
  struct Canceller {
    DueQueue& queue;
    TimerId other;
    ~Canceller() { queue.cancel(other); }
  };
  const TimerId other = queue_.schedule(milliseconds(2), {}, noting("never"));
  auto guard = std::make_unique<Canceller>(Canceller{queue_, 0});
  guard->other = other;
  const TimerId first = queue_.schedule(milliseconds(1), {}, [guard = std::move(guard)] {});
  queue_.cancel(first);
  EXPECT_EQ(queue_.earliest(), std::nullopt);
  EXPECT_EQ(runAt(10), "");
}

TEST_F(DueQueueTest, ATaskThatThrowsHasRunAndComesAgainIfItRepeats) {
  int runs = 0;
  queue_.schedule(milliseconds(1), milliseconds(1), [&runs] {
    if (++runs % 2 == 1) throw std::bad_alloc();
  });
  queue_.schedule(milliseconds(2), {}, [] { throw std::bad_alloc(); });
  queue_.schedule(milliseconds(3), {}, noting("b"));
  for (int step = 0; step < 5; ++step) queue_.runEarliest(*queue_.earliest());
  EXPECT_EQ(runs, 3) << "at 1, 2 and 3 ms";
  EXPECT_EQ(queue_.failures(), 3U);
  EXPECT_EQ(names_, "b");
}

}  // namespace
}  // namespace halvora
