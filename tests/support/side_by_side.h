// SPDX-License-Identifier: Apache-2.0
// For the thread sanitizer: what may be called from any thread, called from several that nothing
// orders. A call that does not lock is a race with each of the others, however they happen to run.
#pragma once

#include <functional>
#include <initializer_list>
#include <thread>
#include <vector>

namespace halvora {

/// Each call on a thread of its own, `times` times, and beside itself; returns when all are done.
inline void sideBySide(std::initializer_list<std::function<void()>> calls, int times = 50) {
  std::vector<std::thread> threads;
  for (const std::function<void()>& call : calls) {
    for (int twin = 0; twin < 2; ++twin) {
      threads.emplace_back([&call, times] {
        for (int time = 0; time < times; ++time) call();
      });
    }
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace halvora
