// SPDX-License-Identifier: Apache-2.0
// What the flashing effects of screen and torch have in common: two phases that take turns. Main
// thread.
#pragma once

#include "light/mode_tables.h"
#include "light/timer_set.h"

namespace halvora {

/// The other phase, shown.
template <class Show>
void toggle(bool& isOn, const Show& show) {
  isOn = !isOn;
  show(isOn);
}

/// What comes after an end of a burst.
enum class BurstNext : std::uint8_t {
  /// The fast toggling within it, in a named timer of its own.
  run,
  /// Its other end.
  end,
};

/// One end of a burst: lights up and lets it run for kBurstLength, or goes dark for a pause. `next`
/// is handed what comes after which pause.
template <class Show, class Next>
void turnBurst(bool& isOn, TimerSet& timers, TimerId& run, const Show& show, const Next& next) {
  timers.invalidate(run);
  show(!isOn);
  if (!isOn) {
    next(BurstNext::run, exactly(kBurstStep));
    next(BurstNext::end, exactly(kBurstLength));
  } else {
    next(BurstNext::end, kRandomPause);
  }
  isOn = !isOn;
}

}  // namespace halvora
