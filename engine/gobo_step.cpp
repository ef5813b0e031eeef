// SPDX-License-Identifier: Apache-2.0
// The gobo's step of command processing: which fade, pulse or change a look asks of the picture
// over the light. What a mode does to the gobo is a column of its row.
#include "engine/steps.h"
#include "light/mode_tables.h"
#include "light/random_number.h"
#include "light/view_stack.h"

namespace halvora {

namespace {

constexpr int kShortestGoboDelay = 100;
constexpr int kLongestGoboDelay = 4000;

void fadeTo(double alpha, const GoboStage& stage, Duration fade) {
  stage.state.goboIsAnimating = true;
  stage.views.animateAlpha({{ViewId::goboView, alpha}}, {.duration = fade},
                           [&state = stage.state](bool) { state.goboIsAnimating = false; });
}

void fadeOutAndChange(const GoboStage& stage, Duration fade) {
  stage.state.goboIsAnimating = true;
  stage.views.animateAlpha({{ViewId::goboView, 0}}, {.duration = fade},
                           [stage, fade](bool finished) {
                             if (!finished) return;
                             stage.gobo.changeGobo();
                             fadeTo(1, stage, fade);
                           });
}

void hideAtOnce(const GoboStage& stage) {
  stage.state.goboIsAnimating = false;
  stage.views.setAlpha(ViewId::goboView, 0);
}

void show(GoboRule rule, const GoboStage& stage, Duration fade, Random& random) {
  GoboState& state = stage.state;
  switch (rule) {
    case GoboRule::randomPulse:
      state.goboDelay =
          static_cast<float>(randomNumberBetween(random, kShortestGoboDelay, kLongestGoboDelay)) /
          1000.0F;
      stage.gobo.goboPulseRandom();
      break;
    case GoboRule::pulse:
      stage.gobo.goboPulse();
      break;
    case GoboRule::hidden:
      hideAtOnce(stage);
      // So that the gobo comes back when the pixel map ends.
      state.currentGobo = 0;
      break;
    case GoboRule::fade:
      if (stage.views.alpha(ViewId::goboView) == 0) {
        stage.gobo.changeGobo();
        fadeTo(1, stage, fade);
      } else {
        stage.views.removeAnimations(ViewId::goboView);
        fadeOutAndChange(stage, fade);
      }
      break;
    case GoboRule::off:
    case GoboRule::steady:
    case GoboRule::shown:
      state.goboIsAnimating = false;
      stage.gobo.changeGobo();
      stage.views.setAlpha(ViewId::goboView, 1);
      break;
  }
}

}  // namespace

void setGobo(const Command& command, const GoboStage& stage, const ScreenState& screen,
             Random& random) {
  GoboState& state = stage.state;
  const int gobo = command.broadcast.gobo;
  const GoboRule rule = modeRow(command.mode).gobo;
  const bool isSteady = rule == GoboRule::steady;
  if (gobo != 0 && isSteady && stage.views.alpha(ViewId::goboView) != 1) {
    stage.views.setAlpha(ViewId::goboView, 1);
  }
  const bool isOff = rule == GoboRule::off;
  const bool isNewGobo = gobo != state.currentGobo && !isOff;
  const bool isNewMode = !isSteady && !isOff && command.mode != screen.currentMode;
  if (!isNewGobo && !isNewMode && !command.isForced) return;

  state.currentGobo = gobo;
  state.currentGoboMode = command.mode;
  state.currentGoboSpeed = command.broadcast.speed;
  const Duration fade = milliseconds(kGoboFade.at(percentageSpeed(command.broadcast.speed)));
  if (gobo != 0) {
    show(rule, stage, fade, random);
  } else if (rule == GoboRule::fade) {
    fadeTo(0, stage, fade);
  } else {
    hideAtOnce(stage);
  }
}

}  // namespace halvora
