// SPDX-License-Identifier: Apache-2.0
#include "venue/show/scenario_run.h"

#include <utility>

namespace halvora {

ScenarioRun::ScenarioRun(ScenarioSchedule schedule, RunLoop& loop, VirtualRunLoop* virtualLoop,
                         Act act)
    : loop_(loop),
      virtualLoop_(virtualLoop),
      begin_(loop.now()),
      schedule_(std::move(schedule)),
      act_(std::move(act)) {
  waitForNext();
}

ScenarioRun::ScenarioRun(ScenarioSchedule schedule, RunLoop& loop, Act act)
    : ScenarioRun(std::move(schedule), loop, nullptr, std::move(act)) {}

ScenarioRun::ScenarioRun(ScenarioSchedule schedule, VirtualRunLoop& loop, Act act)
    : ScenarioRun(std::move(schedule), loop, &loop, std::move(act)) {}

void ScenarioRun::endAfter(Duration time, std::function<void()> ended) {
  ended_ = std::move(ended);
  end_ = {loop_, loop_.after(begin_ + time - loop_.now(), [this] {
            const auto callback = std::move(ended_);
            callback();
          })};
}

// The next one is waited for before this one is done: an act that fails ends no show.
void ScenarioRun::waitForNext() {
  const auto moment = schedule_.next();
  if (!moment) return;
  next_ = {loop_, at(begin_ + moment->time, [this, action = moment->action] {
             waitForNext();
             act_(*action);
           })};
}

TimerId ScenarioRun::at(Duration time, Task&& task) {
  if (virtualLoop_ != nullptr) return virtualLoop_->actFromOutside(time, 0, std::move(task));
  // A timer without a delay would be late, and with it all that a phone times from its start.
  const Duration delay = time - loop_.now();
  return delay > Duration::zero() ? loop_.after(delay, std::move(task))
                                  : loop_.soon(std::move(task));
}

}  // namespace halvora
