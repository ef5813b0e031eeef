// SPDX-License-Identifier: Apache-2.0
// All timers of one engine. A named timer is just the id that was kept of it: replacing the id does
// not end the timer it named. Such a timer, like a flash-back, still fires, and acts if its flag is
// up then. What is still pending when the engine goes is cancelled here. Main thread.
#pragma once

#include <vector>

#include "halvora/platform/run_loop.h"

namespace halvora {

class TimerSet {
 public:
  explicit TimerSet(RunLoop& loop) : loop_(loop) {}
  ~TimerSet();
  TimerSet(const TimerSet&) = delete;
  TimerSet& operator=(const TimerSet&) = delete;

  TimerId after(Duration delay, Task&& task) {
    makeRoom();
    return timers_.emplace_back(loop_.after(delay, std::move(task)));
  }
  TimerId every(Duration interval, Task&& task) {
    makeRoom();
    return timers_.emplace_back(loop_.every(interval, std::move(task)));
  }
  TimerId soon(Task&& task) {
    makeRoom();
    return timers_.emplace_back(loop_.soon(std::move(task)));
  }

  /// Ends the timer that `named` names, if it still runs, and clears the name.
  void invalidate(TimerId& named);

  Duration now() const { return loop_.now(); }

 private:
  /// For one more. A timer that could not be kept would outlive its engine, so this comes first.
  void makeRoom();

  RunLoop& loop_;
  std::vector<TimerId> timers_;
};

}  // namespace halvora
