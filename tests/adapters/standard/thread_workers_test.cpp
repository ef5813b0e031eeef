// SPDX-License-Identifier: Apache-2.0
#include "adapters/standard/thread_workers.h"

#include <algorithm>
#include <atomic>
#include <latch>
#include <new>
#include <span>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/virtual/virtual_video.h"
#include "tests/support/no_threads.h"

namespace halvora {

namespace {

TEST(ThreadWorkers, CountIsBoundedAndAtLeastOne) {
  EXPECT_EQ(ThreadWorkers(1).count(), 1);
  EXPECT_EQ(ThreadWorkers(5).count(), 5);
  EXPECT_EQ(ThreadWorkers(1000).count(), ThreadWorkers::kMost);
  EXPECT_GE(ThreadWorkers(0).count(), 1);
  EXPECT_GE(ThreadWorkers(-3).count(), 1);
  EXPECT_LE(ThreadWorkers().count(), ThreadWorkers::kMost);
}

TEST(ThreadWorkers, TasksOfARunMayWaitForEachOtherAndAllHaveEndedAfterIt) {
  ThreadWorkers workers(2);
  std::latch all(3);
  std::vector<std::thread::id> threads(3);
  std::vector<Task> tasks;
  for (std::size_t at = 0; at < threads.size(); ++at) {
    tasks.emplace_back([&all, &threads, at] {
      all.arrive_and_wait();
      threads[at] = std::this_thread::get_id();
    });
  }
  workers.run(tasks);
  EXPECT_TRUE(workers.areParallel());
  EXPECT_EQ(threads[0], std::this_thread::get_id());
  EXPECT_NE(threads[1], threads[0]);
  EXPECT_NE(threads[2], threads[1]);
}

TEST(ThreadWorkers, NoTasksAreNoWork) { EXPECT_EQ(ThreadWorkers(2).run({}), WorkEnd::done); }

// Ten tasks of which those of these numbers throw; how many came to their end.
template <class Run>
WorkEnd runTen(const Run& run, const std::vector<std::size_t>& throwing, int& ended) {
  std::atomic<int> count{0};
  std::vector<Task> tasks;
  for (std::size_t at = 0; at < 10; ++at) {
    const bool isThrowing = std::ranges::find(throwing, at) != throwing.end();
    tasks.emplace_back([&count, isThrowing] {
      if (isThrowing) throw std::bad_alloc();
      ++count;
    });
  }
  const WorkEnd end = run(tasks);
  ended = count;
  return end;
}

TEST(ThreadWorkers, TaskThatThrowsHasEndedAndTheOthersGoOn) {
  const auto onThreads = [](std::span<Task> tasks) { return ThreadWorkers(3).run(tasks); };
  const auto inOrder = [](std::span<Task> tasks) { return InlineWorkers().run(tasks); };
  int ended = 0;
  for (const std::size_t at : {std::size_t{0}, std::size_t{4}, std::size_t{9}}) {
    EXPECT_EQ(runTen(onThreads, {at}, ended), WorkEnd::failed) << at;
    EXPECT_EQ(ended, 9);
    EXPECT_EQ(runTen(inOrder, {at}, ended), WorkEnd::failed) << at;
    EXPECT_EQ(ended, 9);
  }
  EXPECT_EQ(runTen(onThreads, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9}, ended), WorkEnd::failed);
  EXPECT_EQ(ended, 0);
  EXPECT_EQ(runTen(onThreads, {}, ended), WorkEnd::done);
  EXPECT_EQ(ended, 10);
}

TEST(ThreadWorkers, WithoutThreadsNoTaskBegins) {
  ThreadWorkers workers(3);
  const auto run = [&workers](std::span<Task> tasks) { return workers.run(tasks); };
  int ended = 0;
  {
    const NoThreads none;
    EXPECT_EQ(runTen(run, {}, ended), WorkEnd::notBegun);
    EXPECT_EQ(ended, 0);
  }
  EXPECT_EQ(runTen(run, {}, ended), WorkEnd::done) << "and there may be some again";
  EXPECT_EQ(ended, 10);
}

TEST(ThreadWorkers, WithoutThreadsTheCallersOwnDoesWhatWaitsForNothing) {
  ThreadWorkers workers(3);
  const auto run = [&workers](std::span<Task> tasks) { return runAnyway(workers, tasks); };
  const NoThreads none;
  int ended = 0;
  EXPECT_EQ(runTen(run, {}, ended), WorkEnd::done);
  EXPECT_EQ(ended, 10);
  EXPECT_EQ(runTen(run, {3}, ended), WorkEnd::failed);
  EXPECT_EQ(ended, 9);
}

}  // namespace

}  // namespace halvora
