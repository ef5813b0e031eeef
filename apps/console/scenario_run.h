// SPDX-License-Identifier: Apache-2.0
// Does what the lines of a scenario say, each at its time, on any run loop. Begins when it is made
// and stops when it goes; lines and loop must outlive it. Main thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "halvora/platform/run_loop.h"
#include "light/timer_set.h"
#include "venue/show/scenario.h"

namespace halvora {

class ScenarioRun {
 public:
  /// `act` is told of each occurrence of the lines from `first` on.
  ScenarioRun(const std::vector<ScenarioLine>& lines, std::size_t first, RunLoop& loop,
              std::function<void(const ScenarioAction&)> act);

  /// Once, so long after the run began, in a turn of its own; it may destroy the run.
  void endAfter(Duration time, std::function<void()> ended);
  /// Since the run began.
  Duration time() const { return loop_.now() - begin_; }

 private:
  void schedule(const ScenarioLine& line, std::uint64_t occurrence);

  RunLoop& loop_;
  const Duration begin_;
  std::function<void(const ScenarioAction&)> act_;
  std::function<void()> ended_;
  TimerSet timers_;
};

}  // namespace halvora
