// SPDX-License-Identifier: Apache-2.0
// The state of the light's concerns, one plain struct each; an engine owns one of every kind. A
// named timer is the id that was kept last (see TimerSet). Main thread.
#pragma once

#include <cstdint>

#include "halvora/platform/run_loop.h"

namespace halvora {

/// How slow a speed byte is, in percent: 0 is the fastest (255), 100 the slowest (0). Single
/// precision, as every phone computes it.
int percentageSpeed(int speed);

struct ScreenState {
  std::uint32_t currentMode = 0;
  int currentModeSpeed = 0;
  /// The percentage speed of the mode in force.
  int currentPerc = 0;
  /// Whether a screen effect may keep itself going.
  bool runEffectAnimation = false;
  /// The phase of the toggling effects.
  bool effectOn = false;
  /// The phase of the modes that each command toggles.
  bool lastTurnOn = false;
  TimerId animationTimer = 0;
  TimerId strobeAnimationTimer = 0;
};

struct TorchState {
  int currentLEDMode = 0;
  int currentLEDSpeed = 0;
  /// The percentage speed of the torch mode in force.
  int currentLEDPerc = 0;
  /// Whether a torch effect may keep itself going.
  bool runLEDEffectAnimation = false;
  /// The phase of the toggling effects.
  bool ledEffectOn = false;
  /// The phase of the modes that each command toggles.
  bool ledLastTurnOn = false;
  /// The state last written to the torch.
  bool torchIsOn = false;
  TimerId ledAnimationTimer = 0;
  TimerId ledStrobeAnimationTimer = 0;
};

struct GoboState {
  int currentGobo = 0;
  std::uint32_t currentGoboMode = 0;
  int currentGoboSpeed = 0;
  /// Seconds that the first fade of the random pulse waits.
  float goboDelay = 0;
  bool goboIsAnimating = false;
  /// The variant drawn last, from 1; 0 for none yet.
  std::int64_t currentRandomIndex = 0;
};

struct VideoState {
  int currentVideoId = 0;
  int currentVideoStatus = 0;
  int currentVideoMilliseconds = 0;
  bool videoCanPlay = false;
  bool isCatchingUp = false;
  /// Whether A is the active one of the two players.
  bool isVideoAPlaying = false;
  TimerId videoPlayTimer = 0;
};

}  // namespace halvora
