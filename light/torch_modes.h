// SPDX-License-Identifier: Apache-2.0
// Torch modes and effects: the screen's effects over again with a lamp that is on or off. A phone
// without a torch drops every write and keeps its effects running, so that all phones draw the same
// chances. Owned by the engine; main thread.
#pragma once

#include <cstdint>

#include "halvora/platform/random.h"
#include "halvora/platform/torch.h"
#include "light/mode_tables.h"
#include "light/seat_sight.h"
#include "light/show_parts.h"
#include "light/show_state.h"
#include "light/timer_set.h"

namespace halvora {

/// Takes down the run flag and the two named timers.
void stopTorchEffect(TorchState& state, TimerSet& timers);

class TorchModes final : public TorchPart {
 public:
  /// The seat is asked whenever the pixel-map mode is entered.
  TorchModes(TorchState& state, TimerSet& timers, Random& random, Torch& torch, SeatSight& seat);

  void turnTorchOn(bool on) override;
  void processLEDMode(int mode, int withSpeed) override;
  /// One step of an effect; each step schedules the next.
  void step(TorchEffect effect);

 private:
  Duration draw(const Pause& pause);
  void schedule(TorchEffect effect, Duration delay, TimerId& named);

  TorchState& state_;
  TimerSet& timers_;
  Random& random_;
  Torch& torch_;
  SeatSight& seat_;
};

}  // namespace halvora
