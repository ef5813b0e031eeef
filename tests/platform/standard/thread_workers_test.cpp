// SPDX-License-Identifier: Apache-2.0
#include "platform/standard/thread_workers.h"

#include <latch>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

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

TEST(ThreadWorkers, NoTasksAreNoWork) { ThreadWorkers(2).run({}); }

}  // namespace

}  // namespace halvora
