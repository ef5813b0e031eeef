// SPDX-License-Identifier: Apache-2.0
#include "light/timer_set.h"

#include <algorithm>

namespace halvora {

namespace {

constexpr std::size_t kSmallestSweep = 16;

}  // namespace

TimerSet::~TimerSet() {
  for (const TimerId timer : timers_) loop_.cancel(timer);
}

void TimerSet::invalidate(TimerId& named) {
  loop_.cancel(named);
  named = 0;
}

TimerId TimerSet::keep(TimerId timer) {
  if (timers_.size() >= sweepAt_) {
    std::erase_if(timers_, [this](TimerId id) { return !loop_.isPending(id); });
    sweepAt_ = std::max(kSmallestSweep, timers_.size() * 2);
  }
  timers_.push_back(timer);
  return timer;
}

}  // namespace halvora
