// SPDX-License-Identifier: Apache-2.0
// Torch modes and effects: the screen's effects over again with a lamp that is on or off. A phone
// without a torch drops every write and keeps its effects running, so that all phones draw the same
// chances. Owned by the engine; main thread.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "halvora/platform/random.h"
#include "halvora/platform/torch.h"
#include "light/mode_tables.h"
#include "light/show_parts.h"
#include "light/show_state.h"
#include "light/timer_set.h"

namespace halvora {

inline constexpr int kPixelMapTorchMode = 9;

enum class TorchEffect : std::uint8_t {
  none,
  flashBulbLED,
  strobeLED,
  randomStrobeLED,
  strobeRandomRunLED,
};

/// Takes down the run flag and the two named timers.
void stopTorchEffect(TorchState& state, TimerSet& timers);

class TorchModes final : public TorchPart {
 public:
  /// `seatIsWhite` says whether the seat's point in the still picture of the frame in force is pure
  /// white; none when there is no such picture, which leaves the torch as it is.
  TorchModes(TorchState& state, TimerSet& timers, Random& random, Torch& torch,
             std::function<std::optional<bool>()> seatIsWhite);

  void turnTorchOn(bool on) override;
  void processLEDMode(int mode, int withSpeed) override;
  /// One step of an effect; each step schedules the next.
  void step(TorchEffect effect);

 private:
  Duration draw(const Pause& pause);
  void schedule(TorchEffect effect, Duration delay, TimerId& named);
  void toggle();
  void burst();

  TorchState& state_;
  TimerSet& timers_;
  Random& random_;
  Torch& torch_;
  std::function<std::optional<bool>()> seatIsWhite_;
};

}  // namespace halvora
