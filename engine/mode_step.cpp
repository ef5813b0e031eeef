// SPDX-License-Identifier: Apache-2.0
// The mode's step of command processing, and with it the beginning and the end of a show, of which
// the host is told.
#include "engine/show_fade.h"
#include "engine/steps.h"
#include "halvora/platform/application.h"
#include "halvora/platform/screen.h"
#include "light/brightness.h"
#include "light/screen_modes.h"
#include "light/view_stack.h"

namespace halvora {

namespace {

// Lets the host act, who may destroy the engine.
template <class Act>
void letHost(Witness& engine, const Act& act) {
  engine.setMayGo(true);
  try {
    act();
  } catch (...) {
    engine.setMayGo(false);
    throw;
  }
  engine.setMayGo(false);
}

// By a copy: a callback may put another one in its place.
void tell(Witness& engine, ShowCallbacks* callbacks, std::function<void()> ShowCallbacks::*what) {
  if (callbacks == nullptr) return;
  try {
    const auto callback = callbacks->*what;
    if (callback) letHost(engine, callback);
  } catch (...) {
    if (!engine.isGone()) ++callbacks->failures;
  }
}

// Also the application has the host's ear: whoever presents something is told to take it back.
void beginShow(Witness& engine, const ShowStage& stage, bool isFirstLook) {
  tell(engine, stage.callbacks, &ShowCallbacks::lightShowStarted);
  if (engine.isGone()) return;
  stage.views.animateAlpha({{ViewId::container, 1}}, {.duration = kShowFade, .name = "Fade Out"});
  stage.screen.setBrightness(1.0);
  stage.isStatusBarHidden = true;
  const bool dismisses = isFirstLook || !stage.dismissesOnce;
  letHost(engine, [&application = stage.application, dismisses] {
    application.setStatusBarHidden(true);
    application.setIdleTimerDisabled(true);
    if (dismisses) application.dismissPresentedScreens();
  });
}

void endShow(Witness& engine, const ShowStage& stage) {
  tell(engine, stage.callbacks, &ShowCallbacks::lightShowStopped);
  if (engine.isGone()) return;
  stage.views.animateAlpha({{ViewId::container, 0}}, {.duration = kShowFade, .name = "Fade In"});
  stage.brightness.originalScreenBrightness();
  stage.isStatusBarHidden = false;
  letHost(engine, [&application = stage.application] {
    application.setStatusBarHidden(false);
    application.setIdleTimerDisabled(false);
  });
}

}  // namespace

void changeMode(Command& command, const ShowStage& stage, ScreenState& screen, GoboState& gobo,
                ScreenModes& modes, NoticesPart& notices) {
  const int speed = command.broadcast.speed;
  const bool isInForce = command.mode == screen.currentMode && speed == screen.currentModeSpeed;
  if (isInForce && !command.isForced) return;
  const bool isFirstLook = screen.currentMode == 0;
  screen.currentMode = command.mode;
  screen.currentModeSpeed = speed;
  gobo.currentGoboMode = command.mode;
  gobo.currentGoboSpeed = speed;
  if (command.mode != kNoSeatMode) notices.hideMapNoSeatOverlay();
  modes.stopEffect();
  stage.views.removeLightAnimations();
  stage.views.setAlpha(ViewId::fpsLabel, command.mode == kFrameRateMode ? 1 : 0);
  if (command.mode != 0) {
    beginShow(command.engine, stage, isFirstLook);
  } else {
    endShow(command.engine, stage);
  }
  if (command.engine.isGone()) return;
  if (modeRow(command.mode).begins == Begins::withTheChange) modes.processMode(command.mode, speed);
}

}  // namespace halvora
