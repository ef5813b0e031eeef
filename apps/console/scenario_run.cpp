// SPDX-License-Identifier: Apache-2.0
#include "apps/console/scenario_run.h"

#include <utility>

namespace halvora {

ScenarioRun::ScenarioRun(const std::vector<ScenarioLine>& lines, std::size_t first, RunLoop& loop,
                         std::function<void(const ScenarioAction&)> act)
    : loop_(loop), begin_(loop.now()), act_(std::move(act)), timers_(loop) {
  for (std::size_t at = first; at < lines.size(); ++at) schedule(lines[at], 0);
}

void ScenarioRun::endAfter(Duration time, std::function<void()> ended) {
  ended_ = std::move(ended);
  timers_.after(begin_ + time - loop_.now(), [this] {
    const auto callback = std::move(ended_);
    callback();
  });
}

// One occurrence schedules the next, so that a long repeat takes no more room than a short one.
void ScenarioRun::schedule(const ScenarioLine& line, std::uint64_t occurrence) {
  const auto time = line.timeOf(occurrence);
  if (!time) return;
  const auto act = [this, &line, occurrence] {
    act_(line.action);
    schedule(line, occurrence + 1);
  };
  // A timer without a delay would be late, and with it all that a phone times from its start.
  const Duration delay = begin_ + *time - loop_.now();
  if (delay > Duration::zero()) {
    timers_.after(delay, act);
  } else {
    timers_.soon(act);
  }
}

}  // namespace halvora
