// SPDX-License-Identifier: Apache-2.0
#include "adapters/standard/thread_queues.h"

#include <atomic>
#include <future>
#include <memory>
#include <new>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/no_threads.h"

namespace halvora {
namespace {

/// Returns once everything given to the queue so far has run.
void waitFor(SerialQueue& queue) {
  std::promise<void> reached;
  queue.dispatch([&reached] { reached.set_value(); });
  reached.get_future().wait();
}

TEST(ThreadsQueue, HasItsLabel) {
  EXPECT_EQ(ThreadQueues().make("com.example.work")->label(), "com.example.work");
}

TEST(ThreadsQueue, KeepsTheOrderOfTheCalls) {
  const auto queue = ThreadQueues().make("queue");
  std::vector<int> order;
  for (int count = 0; count < 1000; ++count) {
    queue->dispatch([&order, count] { order.push_back(count); });
  }
  waitFor(*queue);
  ASSERT_EQ(order.size(), 1000U);
  for (int count = 0; count < 1000; ++count) {
    ASSERT_EQ(order[static_cast<std::size_t>(count)], count);
  }
}

TEST(ThreadsQueue, RunsEverythingOnOneThreadThatIsNotTheCallers) {
  const auto queue = ThreadQueues().make("queue");
  std::thread::id first;
  std::thread::id second;
  queue->dispatch([&first] { first = std::this_thread::get_id(); });
  waitFor(*queue);
  queue->dispatch([&second] { second = std::this_thread::get_id(); });
  waitFor(*queue);
  EXPECT_NE(first, std::this_thread::get_id());
  EXPECT_EQ(first, second);
}

TEST(ThreadsQueue, ATaskMayDispatchTheNext) {
  const auto queue = ThreadQueues().make("queue");
  std::promise<int> reached;
  SerialQueue& own = *queue;
  queue->dispatch([&own, &reached] { own.dispatch([&reached] { reached.set_value(5); }); });
  EXPECT_EQ(reached.get_future().get(), 5);
}

TEST(ThreadsQueue, TakesTasksFromSeveralThreadsAndKeepsTheOrderOfEach) {
  constexpr int kThreads = 4;
  constexpr int kEach = 500;
  const auto queue = ThreadQueues().make("queue");
  SerialQueue& shared = *queue;
  std::vector<std::pair<int, int>> order;
  std::vector<std::thread> callers;
  for (int caller = 0; caller < kThreads; ++caller) {
    callers.emplace_back([&shared, &order, caller] {
      for (int count = 0; count < kEach; ++count) {
        shared.dispatch([&order, caller, count] { order.emplace_back(caller, count); });
      }
    });
  }
  for (std::thread& caller : callers) caller.join();
  waitFor(*queue);
  ASSERT_EQ(order.size(), std::size_t{kThreads * kEach});
  std::vector<int> next(kThreads);
  for (const auto& [caller, count] : order) {
    ASSERT_EQ(count, next[static_cast<std::size_t>(caller)]++);
  }
}

TEST(ThreadsQueue, QueuesDoNotWaitForEachOther) {
  const auto first = ThreadQueues().make("first");
  const auto second = ThreadQueues().make("second");
  std::promise<void> released;
  first->dispatch([&released] { released.get_future().wait(); });
  second->dispatch([&released] { released.set_value(); });
  waitFor(*first);
  waitFor(*second);
}

// The chain never ends by itself: one task is always waiting, so one is always dropped.
struct EndlessTask {
  struct Counts {
    std::atomic<int> given = 1;
    std::atomic<int> ran = 0;
    std::promise<void> begun;
  };

  SerialQueue* queue;
  Counts* counts;
  std::shared_ptr<int> token;

  void operator()() {
    if (++counts->ran == 1) counts->begun.set_value();
    ++counts->given;
    queue->dispatch(std::move(*this));
  }
};

TEST(ThreadsQueue, DestructionFinishesTheTaskUnderWayAndDropsTheOthers) {
  EndlessTask::Counts counts;
  const auto token = std::make_shared<int>();
  {
    const auto queue = ThreadQueues().make("queue");
    queue->dispatch(EndlessTask{queue.get(), &counts, token});
    counts.begun.get_future().wait();
  }
  EXPECT_EQ(counts.given, counts.ran + 1);
  EXPECT_EQ(token.use_count(), 1);
}

TEST(ThreadsQueue, DestructionWaitsForTheTaskUnderWay) {
  std::promise<void> begun;
  bool ended = false;
  {
    const auto queue = ThreadQueues().make("queue");
    queue->dispatch([&begun, &ended] {
      begun.set_value();
      for (int turn = 0; turn < 1000; ++turn) std::this_thread::yield();
      ended = true;
    });
    begun.get_future().wait();
  }
  EXPECT_TRUE(ended);
}

TEST(ThreadsQueue, TaskThatThrowsEndsNoOther) {
  const auto queue = ThreadQueues().make("queue");
  int ended = 0;
  EXPECT_TRUE(queue->dispatch([] { throw std::bad_alloc(); }));
  EXPECT_TRUE(queue->dispatch([&ended] { ++ended; }));
  EXPECT_TRUE(queue->dispatch([] { throw std::runtime_error("nobody hears this"); }));
  EXPECT_TRUE(queue->dispatch([&ended] { ++ended; }));
  waitFor(*queue);
  EXPECT_EQ(ended, 2);
}

TEST(ThreadsQueue, WithoutAThreadATaskIsRefusedAndGone) {
  const auto queue = ThreadQueues().make("queue");
  const auto token = std::make_shared<int>();
  std::atomic<int> ended{0};
  {
    const NoThreads none;
    EXPECT_FALSE(queue->dispatch([&ended, token] { ++ended; }));
    EXPECT_FALSE(queue->dispatch([&ended, token] { ++ended; }));
    EXPECT_EQ(token.use_count(), 1);
  }
  EXPECT_TRUE(queue->dispatch([&ended, token] { ended += 10; })) << "and taken once there is one";
  waitFor(*queue);
  EXPECT_EQ(ended, 10);
}

TEST(ThreadsQueue, AQueueThatHasItsThreadNeedsNoOther) {
  const auto queue = ThreadQueues().make("queue");
  waitFor(*queue);
  const NoThreads none;
  bool hasEnded = false;
  EXPECT_TRUE(queue->dispatch([&hasEnded] { hasEnded = true; }));
  waitFor(*queue);
  EXPECT_TRUE(hasEnded);
}

TEST(ThreadsQueue, AQueueThatNeverHadAThreadGoesQuietly) {
  const auto queue = ThreadQueues().make("queue");
  const NoThreads none;
  EXPECT_FALSE(queue->dispatch([] {}));
}

}  // namespace
}  // namespace halvora
