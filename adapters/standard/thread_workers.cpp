// SPDX-License-Identifier: Apache-2.0
#include "adapters/standard/thread_workers.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <functional>
#include <thread>
#include <vector>

namespace halvora {

ThreadWorkers::ThreadWorkers(int count)
    : count_(std::clamp(count > 0 ? count : static_cast<int>(std::thread::hardware_concurrency()),
                        1, kMost)) {}

WorkEnd ThreadWorkers::run(std::span<Task> tasks) {
  if (tasks.empty()) return WorkEnd::done;
  // One may wait for another, so none begins before all have their thread.
  enum Start { waiting, refused, given };
  std::atomic<Start> start = waiting;
  std::atomic<bool> hasFailed = false;
  const auto work = [&start, &hasFailed](Task& task) {
    start.wait(waiting);
    if (start == given && !ranToItsEnd(task)) hasFailed = true;
  };
  std::vector<std::thread> threads;
  Start answer = given;
  try {
    threads.reserve(tasks.size() - 1);
    for (Task& task : tasks.subspan(1)) threads.emplace_back(work, std::ref(task));
  } catch (const std::exception&) {
    answer = refused;
  }
  start = answer;
  start.notify_all();
  work(tasks.front());
  for (std::thread& thread : threads) thread.join();
  if (answer == refused) return WorkEnd::notBegun;
  return hasFailed ? WorkEnd::failed : WorkEnd::done;
}

}  // namespace halvora
