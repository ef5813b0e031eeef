// SPDX-License-Identifier: Apache-2.0
// The gobo's step of command processing: which fade, pulse or change a look asks of the picture
// over the light.
#include "engine/command_processor.h"
#include "halvora/platform/platform.h"
#include "light/mode_tables.h"
#include "light/random_number.h"
#include "light/show_parts.h"
#include "light/view_stack.h"

namespace halvora {

namespace {

constexpr int kShortestGoboDelay = 100;
constexpr int kLongestGoboDelay = 4000;
constexpr std::uint32_t kLastSteadyGoboMode = 9;

}  // namespace

bool CommandProcessor::setGobo(Command& command) {
  GoboState& state = rooms_.state.gobo;
  const int gobo = command.broadcast.gobo;
  const std::uint32_t mode = command.mode;
  const bool isSteady = mode >= 1 && mode <= kLastSteadyGoboMode;
  if (gobo != 0 && isSteady && rooms_.views.alpha(ViewId::goboView) != 1) {
    rooms_.views.setAlpha(ViewId::goboView, 1);
  }
  const bool isNewGobo = gobo != state.currentGobo && mode != 0;
  const bool isNewMode = mode > kLastSteadyGoboMode && mode != rooms_.state.screen.currentMode;
  if (!isNewGobo && !isNewMode && !command.isForced) return true;

  state.currentGobo = gobo;
  state.currentGoboMode = mode;
  state.currentGoboSpeed = command.broadcast.speed;
  const Duration fade = milliseconds(kGoboFade.at(percentageSpeed(command.broadcast.speed)));
  if (gobo != 0) {
    showGobo(mode, fade);
  } else if (mode == kGoboFadeMode) {
    fadeGobo(0, fade, false);
  } else {
    hideGoboAtOnce();
  }
  return true;
}

void CommandProcessor::showGobo(std::uint32_t mode, Duration fade) {
  GoboState& state = rooms_.state.gobo;
  ViewStack& views = rooms_.views;
  GoboPart& part = rooms_.parts.gobo;
  switch (mode) {
    case kGoboRandomPulseMode:
      state.goboDelay = static_cast<float>(randomNumberBetween(
                            rooms_.platform.random, kShortestGoboDelay, kLongestGoboDelay)) /
                        1000.0F;
      part.goboPulseRandom();
      break;
    case kGoboPulseMode:
      part.goboPulse();
      break;
    case kPixelMapMode:
    case kNoSeatMode:
      hideGoboAtOnce();
      // So that the gobo comes back when the pixel map ends.
      state.currentGobo = 0;
      break;
    case kGoboFadeMode:
      if (views.alpha(ViewId::goboView) == 0) {
        part.changeGobo();
        fadeGobo(1, fade, false);
      } else {
        views.removeAnimations(ViewId::goboView);
        fadeGobo(0, fade, true);
      }
      break;
    default:
      state.goboIsAnimating = false;
      part.changeGobo();
      views.setAlpha(ViewId::goboView, 1);
      break;
  }
}

void CommandProcessor::fadeGobo(double alpha, Duration fade, bool thenChange) {
  rooms_.state.gobo.goboIsAnimating = true;
  rooms_.views.animateAlpha({{ViewId::goboView, alpha}}, {.duration = fade},
                            [this, fade, thenChange](bool finished) {
                              if (!thenChange) {
                                rooms_.state.gobo.goboIsAnimating = false;
                              } else if (finished) {
                                rooms_.parts.gobo.changeGobo();
                                fadeGobo(1, fade, false);
                              }
                            });
}

void CommandProcessor::hideGoboAtOnce() {
  rooms_.state.gobo.goboIsAnimating = false;
  rooms_.views.setAlpha(ViewId::goboView, 0);
}

}  // namespace halvora
