// SPDX-License-Identifier: Apache-2.0
#include "light/torch_modes.h"

#include <array>
#include <utility>

#include "light/pause.h"

namespace halvora {

namespace {

enum class TorchEntry : std::uint8_t { none, effect, toggle, pixelMap };

struct TorchModeRow {
  TorchEntry entry = TorchEntry::none;
  TorchEffect effect = TorchEffect::none;
  Pause untilFirstStep;
};

// Modes 0 to 3 belong to command processing; modes from 10 on do nothing.
constexpr std::array<TorchModeRow, 10> kTorchModes = {{
    {},
    {},
    {},
    {},
    {TorchEntry::effect, TorchEffect::flashBulbLED, kRandomPause},
    {TorchEntry::effect, TorchEffect::strobeLED, exactly({150, 50})},
    {TorchEntry::effect, TorchEffect::randomStrobeLED, kRandomPause},
    {TorchEntry::toggle, TorchEffect::none, {}},
    {TorchEntry::toggle, TorchEffect::none, {}},
    {TorchEntry::pixelMap, TorchEffect::none, {}},
}};

constexpr Pause kStrobePause = exactly({190, 10});

}  // namespace

void stopTorchEffect(TorchState& state, TimerSet& timers) {
  state.runLEDEffectAnimation = false;
  timers.invalidate(state.ledAnimationTimer);
  timers.invalidate(state.ledStrobeAnimationTimer);
}

TorchModes::TorchModes(TorchState& state, TimerSet& timers, Random& random, Torch& torch,
                       std::function<std::optional<bool>()> seatIsWhite)
    : state_(state),
      timers_(timers),
      random_(random),
      torch_(torch),
      seatIsWhite_(std::move(seatIsWhite)) {}

void TorchModes::turnTorchOn(bool on) {
  if (!torch_.hasTorch() || !torch_.hasFlash()) return;
  torch_.setOn(on);
  state_.torchIsOn = on;
}

void TorchModes::processLEDMode(int mode, int withSpeed) {
  state_.currentLEDPerc = percentageSpeed(withSpeed);
  const bool isKnown = mode >= 0 && mode < static_cast<int>(kTorchModes.size());
  const TorchModeRow row = isKnown ? kTorchModes[static_cast<std::size_t>(mode)] : TorchModeRow{};
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
      state_.ledLastTurnOn = !state_.ledLastTurnOn;
      turnTorchOn(state_.ledLastTurnOn);
      break;
    case TorchEntry::pixelMap:
      if (const std::optional<bool> isWhite = seatIsWhite_()) {
        state_.ledEffectOn = *isWhite;
        turnTorchOn(*isWhite);
      }
      break;
  }
}

void TorchModes::step(TorchEffect effect) {
  if (!state_.runLEDEffectAnimation) return;
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
      toggle();
      schedule(effect, draw(kStrobePause), state_.ledAnimationTimer);
      break;
    case TorchEffect::randomStrobeLED:
      burst();
      break;
    case TorchEffect::strobeRandomRunLED:
      toggle();
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

void TorchModes::toggle() {
  state_.ledEffectOn = !state_.ledEffectOn;
  turnTorchOn(state_.ledEffectOn);
}

void TorchModes::burst() {
  turnTorchOn(!state_.ledEffectOn);
  timers_.invalidate(state_.ledStrobeAnimationTimer);
  if (!state_.ledEffectOn) {
    schedule(TorchEffect::strobeRandomRunLED, draw(exactly(kBurstStep)),
             state_.ledStrobeAnimationTimer);
    schedule(TorchEffect::randomStrobeLED, draw(exactly(kBurstLength)), state_.ledAnimationTimer);
  } else {
    schedule(TorchEffect::randomStrobeLED, draw(kRandomPause), state_.ledAnimationTimer);
  }
  state_.ledEffectOn = !state_.ledEffectOn;
}

}  // namespace halvora
