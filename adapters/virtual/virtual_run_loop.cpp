// SPDX-License-Identifier: Apache-2.0
#include "adapters/virtual/virtual_run_loop.h"

#include <algorithm>
#include <utility>

namespace halvora {

TimerId VirtualRunLoop::after(Duration delay, Task&& task) {
  return queue_.schedule(now_ + dueAfter(delay), {}, std::move(task));
}

TimerId VirtualRunLoop::every(Duration interval, Task&& task) {
  const Duration period = dueAfter(interval);
  return queue_.schedule(now_ + period, period, std::move(task));
}

TimerId VirtualRunLoop::soon(Task&& task) { return queue_.schedule(now_, {}, std::move(task)); }

TimerId VirtualRunLoop::actFromOutside(Duration time, std::uint64_t order, Task&& act) {
  return queue_.scheduleFirst(std::max(time, now_), order, std::move(act));
}

bool VirtualRunLoop::runUntil(Duration end) {
  while (const std::optional<Duration> time = queue_.earliest()) {
    if (*time > end) break;
    if (*time > now_) turnsAtThisInstant_ = 0;
    if (turnsAtThisInstant_ >= kMostTurnsAtOneInstant) return false;
    now_ = *time;
    // However much happens to a phone at once, it is the phone's own turns that may have no end.
    if (queue_.runEarliest(now_)) ++turnsAtThisInstant_;
    endTurn();
  }
  if (end > now_) {
    now_ = end;
    turnsAtThisInstant_ = 0;
  }
  return true;
}

void VirtualRunLoop::endTurn() {
  ++turns_;
  // A job may give further jobs.
  for (std::size_t at = 0; at < background_.size(); ++at) {
    Task job = std::move(background_[at]);
    queue_.run(job);
  }
  background_.clear();
  if (turnEnded_) turnEnded_();
}

}  // namespace halvora
