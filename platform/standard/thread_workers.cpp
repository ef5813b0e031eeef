// SPDX-License-Identifier: Apache-2.0
#include "platform/standard/thread_workers.h"

#include <algorithm>
#include <future>
#include <system_error>
#include <thread>
#include <vector>

namespace halvora {

ThreadWorkers::ThreadWorkers(int count)
    : count_(std::clamp(count > 0 ? count : static_cast<int>(std::thread::hardware_concurrency()),
                        1, kMost)) {}

void ThreadWorkers::run(std::span<Task> tasks) {
  if (tasks.empty()) return;
  // One may wait for another, so none begins before all have their thread.
  std::promise<bool> start;
  const std::shared_future<bool> mayBegin = start.get_future().share();
  std::vector<std::thread> threads;
  threads.reserve(tasks.size() - 1);
  bool areThere = true;
  try {
    for (Task& task : tasks.subspan(1)) {
      threads.emplace_back([mayBegin, &task] {
        if (mayBegin.get()) task();
      });
    }
  } catch (const std::system_error&) {
    areThere = false;
  }
  start.set_value(areThere);
  if (areThere) tasks.front()();
  for (std::thread& thread : threads) thread.join();
}

}  // namespace halvora
