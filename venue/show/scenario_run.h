// SPDX-License-Identifier: Apache-2.0
// Does what a scenario says, each thing at its time and in a turn of its own, on any run loop.
// Begins when it is made and stops when it goes; the scenario and the loop must outlive it. Main
// thread.
#pragma once

#include <functional>

#include "adapters/virtual/virtual_run_loop.h"
#include "halvora/platform/run_loop.h"
#include "venue/show/scenario_schedule.h"

namespace halvora {

class ScenarioRun {
 public:
  using Act = std::function<void(const ScenarioAction&)>;

  /// `act` is told of what is left of the schedule.
  ScenarioRun(ScenarioSchedule schedule, RunLoop& loop, Act act);
  /// In virtual time what a phone is told of comes before what it has to do itself at that time.
  ScenarioRun(ScenarioSchedule schedule, VirtualRunLoop& loop, Act act);
  ScenarioRun(const ScenarioRun&) = delete;
  ScenarioRun& operator=(const ScenarioRun&) = delete;

  /// Once, so long after the run began, in a turn of its own; it may destroy the run.
  void endAfter(Duration time, std::function<void()> ended);
  /// Since the run began.
  Duration time() const { return loop_.now() - begin_; }

 private:
  ScenarioRun(ScenarioSchedule schedule, RunLoop& loop, VirtualRunLoop* virtualLoop, Act act);
  void waitForNext();
  TimerId at(Duration time, Task&& task);

  RunLoop& loop_;
  VirtualRunLoop* virtualLoop_;
  const Duration begin_;
  ScenarioSchedule schedule_;
  Act act_;
  std::function<void()> ended_;
  Timer next_;
  Timer end_;
};

}  // namespace halvora
