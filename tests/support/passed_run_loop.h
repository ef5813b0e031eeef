// SPDX-License-Identifier: Apache-2.0
// A run loop that passes on what it is asked, for tests that want one thing of it to be otherwise.
// Owned by the test; the one beneath outlives it.
#pragma once

#include <utility>

#include "halvora/platform/run_loop.h"

namespace halvora {

class PassedRunLoop : public RunLoop {
 public:
  explicit PassedRunLoop(RunLoop& loop) : loop_(loop) {}

  Duration now() const override { return loop_.now(); }
  TimerId after(Duration delay, Task&& task) override {
    return loop_.after(delay, std::move(task));
  }
  TimerId every(Duration interval, Task&& task) override {
    return loop_.every(interval, std::move(task));
  }
  TimerId soon(Task&& task) override { return loop_.soon(std::move(task)); }
  void cancel(TimerId timer) override { loop_.cancel(timer); }
  bool isPending(TimerId timer) const override { return loop_.isPending(timer); }
  void post(Task&& task) override { loop_.post(std::move(task)); }

 private:
  RunLoop& loop_;
};

}  // namespace halvora
