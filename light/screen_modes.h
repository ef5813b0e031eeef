// SPDX-License-Identifier: Apache-2.0
// Screen modes and effects: turns a mode and a speed into the light's colour and a chain of
// one-shot timers. A chain ends where its step finds `runEffectAnimation` down or another mode in
// force, and where its named timer is invalidated. Owned by the engine; main thread.
#pragma once

#include <cstdint>

#include "halvora/platform/random.h"
#include "light/mode_tables.h"
#include "light/palettes.h"
#include "light/seat_sight.h"
#include "light/show_parts.h"
#include "light/show_state.h"
#include "light/view_stack.h"

namespace halvora {

class ScreenModes {
 public:
  /// The seat is asked whenever the pixel-map mode paints.
  ScreenModes(ScreenState& state, ColourState& colour, ViewStack& views, TimerSet& timers,
              Random& random, NoticesPart& notices, SeatSight& seat);

  /// Enters a mode: shows what its row shows at once and starts its effect.
  void processMode(std::uint32_t mode, int withSpeed);
  /// Takes down the run flag and the two named timers; animations and flash-backs end by the flag,
  /// or by their owner.
  void stopEffect();
  /// What every command in that mode shows again, whether it changed the mode or not.
  void showAgain(std::uint32_t mode, int speed);
  /// One step of an effect; each step schedules the next.
  void step(Effect effect);
  /// Shows a colour, unless the effects were stopped since it was scheduled.
  void delayLightColour(const MaybeColour& colour);

 private:
  MaybeColour colourOf(Paint paint) const;
  void show(Paint paint);
  Duration draw(const Pause& pause, int perc);
  void schedule(Effect effect, Duration delay, TimerId& named);
  void enterToggle();
  void enterSeatColour();
  void fadeThere(const EffectRow& row, Effect effect);
  void fadeBack(Effect effect, int perc, Duration fade);
  void burst(const EffectRow& row);

  ScreenState& state_;
  ColourState& colour_;
  ViewStack& views_;
  TimerSet& timers_;
  Random& random_;
  NoticesPart& notices_;
  SeatSight& seat_;
};

}  // namespace halvora
