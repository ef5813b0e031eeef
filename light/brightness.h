// SPDX-License-Identifier: Apache-2.0
// The two ramps of the screen's brightness: one percent every 10 ms. A ramp is a chain of timers
// that ends by its own test; nothing cancels it, and two ramps at once climb twice as fast. One
// that the screen does not follow for a second ends too. Owned by the engine; main thread.
#pragma once

#include "halvora/platform/screen.h"
#include "light/palettes.h"
#include "light/timer_set.h"

namespace halvora {

class BrightnessRamps {
 public:
  BrightnessRamps(Screen& screen, TimerSet& timers, const ColourState& colour)
      : screen_(screen), timers_(timers), colour_(colour) {}

  /// Remembers the present brightness as the one to come back to.
  void saveOriginalBrightness() { originalBrightness_ = screen_.brightness(); }
  double originalBrightness() const { return originalBrightness_; }

  /// Climbs until the master level of the running show is reached or passed.
  void fullScreenBrightness() { climb(0); }
  /// Falls until the brightness saved at start-up is reached or passed.
  void originalScreenBrightness() { fall(0); }

 private:
  /// So many writes in a row that the screen takes no notice of.
  static constexpr int kMostInVain = 100;

  void climb(int inVain);
  void fall(int inVain);

  Screen& screen_;
  TimerSet& timers_;
  const ColourState& colour_;
  double originalBrightness_ = 0;
};

}  // namespace halvora
