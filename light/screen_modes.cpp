// SPDX-License-Identifier: Apache-2.0
#include "light/screen_modes.h"

#include "light/burst.h"
#include "light/pause.h"

namespace halvora {

ScreenModes::ScreenModes(ScreenState& state, ColourState& colour, ViewStack& views,
                         TimerSet& timers, Random& random, NoticesPart& notices, SeatSight& seat)
    : state_(state),
      colour_(colour),
      views_(views),
      timers_(timers),
      random_(random),
      notices_(notices),
      seat_(seat) {}

void ScreenModes::processMode(std::uint32_t mode, int withSpeed) {
  state_.currentMode = mode;
  state_.currentModeSpeed = withSpeed;
  state_.currentPerc = percentageSpeed(withSpeed);

  const ModeRow& row = modeRow(mode);
  if (row.entry == Entry::noSeat) {
    state_.runEffectAnimation = false;
    show(row.atOnce);
    notices_.showMapNoSeatOverlay();
    return;
  }
  notices_.hideMapNoSeatOverlay();
  switch (row.entry) {
    case Entry::effect:
      state_.runEffectAnimation = true;
      // A burst must begin in its own phase, not in one that a toggling effect left.
      if (effectRow(row.effect).shape == Shape::burst) state_.effectOn = false;
      show(row.atOnce);
      schedule(row.effect, draw(row.untilFirstStep, state_.currentPerc), state_.animationTimer);
      break;
    case Entry::toggle:
      enterToggle();
      break;
    case Entry::seatColour:
      enterSeatColour();
      break;
    case Entry::none:
    case Entry::noSeat:
      break;
  }
}

void ScreenModes::stopEffect() {
  state_.runEffectAnimation = false;
  timers_.invalidate(state_.animationTimer);
  timers_.invalidate(state_.strobeAnimationTimer);
}

void ScreenModes::showAgain(std::uint32_t mode, int speed) {
  switch (modeRow(mode).again) {
    case Again::never:
      break;
    case Again::steadily:
      state_.runEffectAnimation = false;
      show(Paint::current);
      break;
    case Again::always:
      show(Paint::current);
      break;
    case Again::withoutPalette:
      if (!namesPalette(colour_.currentPaletteId)) show(Paint::current);
      break;
    case Again::whileTurnedOn:
      if (state_.lastTurnOn) show(Paint::current);
      break;
    case Again::darkerWhenOn:
      show(state_.effectOn ? Paint::darker : Paint::current);
      break;
    case Again::delayed:
      state_.runEffectAnimation = true;
      timers_.after(draw(kDelayedFlash, percentageSpeed(speed)),
                    [this, colour = colour_.currentColour] { delayLightColour(colour); });
      break;
  }
}

void ScreenModes::step(Effect effect) {
  const EffectRow& row = effectRow(effect);
  if (!state_.runEffectAnimation) return;
  if (row.onlyInMode != 0 && row.onlyInMode != state_.currentMode) return;
  if (row.palette == PaletteStep::before && colour_.currentPaletteId > 0) {
    setNextPaletteColor(colour_, random_);
  }

  switch (row.shape) {
    case Shape::nothing:
      return;
    case Shape::show:
      show(row.first);
      break;
    case Shape::flash:
      show(row.first);
      timers_.after(milliseconds(kFlashLength),
                    [this, back = colourOf(row.second)] { delayLightColour(back); });
      break;
    case Shape::toggle:
      toggle(state_.effectOn, [&](bool isOn) { show(isOn ? row.first : row.second); });
      break;
    // These two schedule their next step themselves.
    case Shape::fadeThere:
      return fadeThere(row, effect);
    case Shape::burst:
      return burst(row);
  }
  TimerId& named =
      effect == Effect::strobeRandomRun ? state_.strobeAnimationTimer : state_.animationTimer;
  schedule(effect, draw(row.next, state_.currentPerc), named);
}

void ScreenModes::delayLightColour(const MaybeColour& colour) {
  if (state_.runEffectAnimation) views_.setLightColour(colour);
}

MaybeColour ScreenModes::colourOf(Paint paint) const {
  switch (paint) {
    case Paint::black:
      return kBlack;
    case Paint::white:
      return kWhite;
    case Paint::darker:
      return darkerColorForColor(colour_.currentColour);
    case Paint::current:
    case Paint::nothing:
      break;
  }
  return colour_.currentColour;
}

void ScreenModes::show(Paint paint) {
  if (paint != Paint::nothing) views_.setLightColour(colourOf(paint));
}

Duration ScreenModes::draw(const Pause& pause, int perc) { return drawPause(pause, perc, random_); }

void ScreenModes::schedule(Effect effect, Duration delay, TimerId& named) {
  named = timers_.after(delay, [this, effect] { step(effect); });
}

void ScreenModes::enterToggle() {
  state_.runEffectAnimation = false;
  toggle(state_.lastTurnOn, [this](bool isOn) { show(isOn ? Paint::current : Paint::black); });
}

void ScreenModes::enterSeatColour() {
  const SeatLight light = seat_.seatLight();
  if (!light.hasSeat) state_.runEffectAnimation = false;
  views_.setLightColour(light.hasSeat && light.colour ? light.colour : kBlack);
}

// The speed in force when the step begins holds until its next step is scheduled, however long the
// two fades take.
void ScreenModes::fadeThere(const EffectRow& row, Effect effect) {
  const int perc = state_.currentPerc;
  const Duration fade = milliseconds(row.fade.at(perc));
  views_.removeLightAnimations();
  views_.animateLight(colourOf(row.first), fade, [this, effect, perc, fade](bool finished) {
    if (finished) fadeBack(effect, perc, fade);
  });
}

void ScreenModes::fadeBack(Effect effect, int perc, Duration fade) {
  const EffectRow& row = effectRow(effect);
  if (row.palette == PaletteStep::between && colour_.currentPaletteId > 0) {
    setNextPaletteColor(colour_, random_);
  }
  views_.animateLight(colourOf(row.second), fade, [this, effect, perc](bool finished) {
    if (finished) {
      schedule(effect, draw(effectRow(effect).next, perc), state_.animationTimer);
    }
  });
}

void ScreenModes::burst(const EffectRow& row) {
  turnBurst(
      state_.effectOn, timers_, state_.strobeAnimationTimer,
      [&](bool isOn) { show(isOn ? row.first : row.second); },
      [this](BurstNext next, const Pause& pause) {
        const bool isRun = next == BurstNext::run;
        schedule(isRun ? Effect::strobeRandomRun : Effect::randomStrobe,
                 draw(pause, state_.currentPerc),
                 isRun ? state_.strobeAnimationTimer : state_.animationTimer);
      });
}

}  // namespace halvora
