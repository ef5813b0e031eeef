// SPDX-License-Identifier: Apache-2.0
#include "light/timer_set.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace halvora {

namespace {

constexpr std::size_t kSmallestRoom = 8;

}  // namespace

TimerSet::~TimerSet() {
  for (const TimerId timer : timers_) loop_.cancel(timer);
}

void TimerSet::invalidate(TimerId& named) {
  if (named != 0) loop_.cancel(std::exchange(named, 0));
}

void TimerSet::makeRoom() {
  if (timers_.size() < timers_.capacity()) return;
  std::erase_if(timers_, [this](TimerId id) { return !loop_.isPending(id); });
  // Where most were pending the next sweep would come too soon.
  const bool isCrowded = timers_.size() * 4 > timers_.capacity() * 3;
  if (isCrowded || timers_.capacity() == 0) {
    timers_.reserve(std::max(kSmallestRoom, timers_.capacity() * 2));
  }
}

}  // namespace halvora
