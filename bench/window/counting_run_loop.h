// SPDX-License-Identifier: Apache-2.0
// A run loop that counts the turns it runs: everything that wakes the kit. Wraps another one, which
// must outlive it; same threads.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "halvora/platform/run_loop.h"

namespace halvora {

class CountingRunLoop final : public RunLoop {
 public:
  explicit CountingRunLoop(RunLoop& loop) : loop_(loop) {}

  std::uint64_t turns() const { return turns_; }

  Duration now() const override { return loop_.now(); }
  TimerId after(Duration delay, Task&& task) override {
    return loop_.after(delay, counted(std::move(task)));
  }
  TimerId every(Duration interval, Task&& task) override {
    return loop_.every(interval, counted(std::move(task)));
  }
  TimerId soon(Task&& task) override { return loop_.soon(counted(std::move(task))); }
  void cancel(TimerId timer) override { loop_.cancel(timer); }
  bool isPending(TimerId timer) const override { return loop_.isPending(timer); }
  void post(Task&& task) override { loop_.post(counted(std::move(task))); }

 private:
  // A task has no room for another one.
  Task counted(Task&& task) {
    return [this, counted = std::make_unique<Task>(std::move(task))] {
      ++turns_;
      (*counted)();
    };
  }

  RunLoop& loop_;
  std::uint64_t turns_ = 0;
};

}  // namespace halvora
