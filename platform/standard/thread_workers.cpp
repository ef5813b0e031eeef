// SPDX-License-Identifier: Apache-2.0
#include "platform/standard/thread_workers.h"

#include <algorithm>
#include <system_error>
#include <thread>
#include <vector>

namespace halvora {

ThreadWorkers::ThreadWorkers(int count)
    : count_(std::clamp(count > 0 ? count : static_cast<int>(std::thread::hardware_concurrency()),
                        1, kMost)) {}

void ThreadWorkers::run(std::span<Task> tasks) {
  if (tasks.empty()) return;
  std::vector<std::thread> threads;
  threads.reserve(tasks.size() - 1);
  for (Task& task : tasks.subspan(1)) threads.emplace_back([&task] { task(); });
  tasks.front()();
  for (std::thread& thread : threads) thread.join();
}

}  // namespace halvora
