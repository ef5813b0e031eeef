// SPDX-License-Identifier: Apache-2.0
#include "light/torch_modes.h"

#include <optional>

#include "light/burst.h"
#include "light/pause.h"

namespace halvora {

void stopTorchEffect(TorchState& state, TimerSet& timers) {
  state.runLEDEffectAnimation = false;
  timers.invalidate(state.ledAnimationTimer);
  timers.invalidate(state.ledStrobeAnimationTimer);
}

TorchModes::TorchModes(TorchState& state, TimerSet& timers, Random& random, Torch& torch,
                       SeatSight& seat)
    : state_(state), timers_(timers), random_(random), torch_(torch), seat_(seat) {}

void TorchModes::turnTorchOn(bool on) {
  if (!torch_.hasTorch() || !torch_.hasFlash()) return;
  torch_.setOn(on);
  state_.torchIsOn = on;
}

void TorchModes::processLEDMode(int mode, int withSpeed) {
  state_.currentLEDPerc = percentageSpeed(withSpeed);
  const TorchModeRow& row = torchModeRow(mode);
  switch (row.entry) {
    case TorchEntry::none:
      break;
    case TorchEntry::effect:
      state_.runLEDEffectAnimation = true;
      if (row.effect == TorchEffect::randomStrobeLED) state_.ledEffectOn = false;
      turnTorchOn(false);
      schedule(row.effect, draw(row.untilFirstStep), state_.ledAnimationTimer);
      break;
    case TorchEntry::toggle:
      state_.runLEDEffectAnimation = false;
      toggle(state_.ledLastTurnOn, [this](bool isOn) { turnTorchOn(isOn); });
      break;
    case TorchEntry::pixelMap:
      if (const std::optional<bool> isWhite = seat_.seatIsWhite()) {
        state_.ledEffectOn = *isWhite;
        turnTorchOn(*isWhite);
      }
      break;
  }
}

void TorchModes::step(TorchEffect effect) {
  if (!state_.runLEDEffectAnimation) return;
  const auto show = [this](bool isOn) { turnTorchOn(isOn); };
  switch (effect) {
    case TorchEffect::none:
      break;
    case TorchEffect::flashBulbLED:
      turnTorchOn(true);
      state_.ledStrobeAnimationTimer =
          timers_.after(milliseconds(kFlashLength), [this] { turnTorchOn(false); });
      schedule(effect, draw(kRandomPause), state_.ledAnimationTimer);
      break;
    case TorchEffect::strobeLED:
      toggle(state_.ledEffectOn, show);
      schedule(effect, draw(kTorchStrobePause), state_.ledAnimationTimer);
      break;
    case TorchEffect::randomStrobeLED:
      turnBurst(state_.ledEffectOn, timers_, state_.ledStrobeAnimationTimer, show,
                [this](BurstNext next, const Pause& pause) {
                  const bool isRun = next == BurstNext::run;
                  schedule(isRun ? TorchEffect::strobeRandomRunLED : TorchEffect::randomStrobeLED,
                           draw(pause),
                           isRun ? state_.ledStrobeAnimationTimer : state_.ledAnimationTimer);
                });
      break;
    case TorchEffect::strobeRandomRunLED:
      toggle(state_.ledEffectOn, show);
      schedule(effect, draw(exactly(kBurstStep)), state_.ledStrobeAnimationTimer);
      break;
  }
}

Duration TorchModes::draw(const Pause& pause) {
  return drawPause(pause, state_.currentLEDPerc, random_);
}

void TorchModes::schedule(TorchEffect effect, Duration delay, TimerId& named) {
  named = timers_.after(delay, [this, effect] { step(effect); });
}

}  // namespace halvora
