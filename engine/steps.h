// SPDX-License-Identifier: Apache-2.0
// The 18 steps that turn a new look into changes of the show, a function each. A step is handed
// what it touches and nothing else, compares its fields with the state in force and acts on changes
// only. The order, which is part of the show's behaviour, is the table in show_engine.cpp. Main
// thread.
#pragma once

#include <cstdint>
#include <vector>

#include "engine/broadcast.h"
#include "engine/engine_state.h"
#include "halvora/diagnostics.h"
#include "halvora/platform/application.h"
#include "halvora/platform/haptics.h"
#include "halvora/platform/random.h"
#include "halvora/platform/screen.h"
#include "halvora/platform/user_defaults.h"
#include "halvora/witness.h"
#include "light/palettes.h"
#include "light/show_parts.h"
#include "light/show_state.h"

namespace halvora {

class BrightnessRamps;
class ScreenModes;
class TimerSet;
class ViewStack;

/// A look on its way through the steps.
struct Command {
  Broadcast broadcast;
  /// Of the engine, which a host may destroy while it is told of the look.
  Witness& engine;
  /// The screen mode; the pixel map may override the one that was sent.
  std::uint32_t mode = 0;
  bool hasSection = false;
  bool hasPosition = false;
  int cueToken = 0;
  /// The present step was cut short in the look before: what it finds in force may be half of it.
  bool isForced = false;
  /// The step that says anything but `processed` is the last one.
  PacketFate fate = PacketFate::processed;
};

void takeApplicationId(Command& command, UserDefaults& defaults);
void takeSyncFlag(Command& command, UserDefaults& defaults);
void takeFields(Command& command);
void readSeat(Command& command, SeatState& seat, const UserDefaults& defaults);
void overrideMode(Command& command, ScreenState& screen, ViewStack& views);
void takeVenueAndPreload(const Command& command, SeatState& seat, UserDefaults& defaults,
                         SeatLutPart& seatLut);
void takeCueTime(const Command& command, VideoState& video, const Screen& screen);
void takeColour(const Command& command, ColourState& colour, const std::vector<Palette>& palettes,
                Random& random);
void takeVideoStatus(const Command& command, VideoState& video, ViewStack& views);
void setMaster(const Command& command, ColourState& colour, ViewStack& views, Screen& screen);
void vibrate(const Command& command, int& currentVibrate, Haptics& haptics);

/// What the clip's step touches.
struct ClipStage {
  VideoState& state;
  ViewStack& views;
  TimerSet& timers;
  VideoPart& players;
  Screen& screen;
  BrightnessRamps& brightness;
};
void setVideo(const Command& command, const ClipStage& stage);

/// What the gobo's step touches, and the ends of its fades.
struct GoboStage {
  GoboState& state;
  ViewStack& views;
  GoboPart& gobo;
};
void setGobo(const Command& command, const GoboStage& stage, const ScreenState& screen,
             Random& random);

/// What the beginning and the end of a show touch. The host is told of both, and may destroy the
/// engine then.
struct ShowStage {
  ShowCallbacks* callbacks;
  ViewStack& views;
  BrightnessRamps& brightness;
  bool& isStatusBarHidden;
  Screen& screen;
  Application& application;
  /// Whether the host's own screens are taken back only as a show begins, not at every look of it.
  bool dismissesOnce = false;
};
void changeMode(Command& command, const ShowStage& stage, ScreenState& screen, GoboState& gobo,
                ScreenModes& modes, NoticesPart& notices);

void restartPixelMap(const Command& command, SeatState& seat, ScreenModes& modes, TorchPart& torch);
void showColour(const Command& command, ScreenModes& modes);
void scheduleRandomFlash(const Command& command, ScreenModes& modes);
void setTorch(const Command& command, TorchState& torch, TimerSet& timers, TorchPart& part,
              Random& random);

}  // namespace halvora
