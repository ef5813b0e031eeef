// SPDX-License-Identifier: Apache-2.0
#include "engine/steps.h"

#include <string>

#include "halvora/platform/haptics.h"
#include "halvora/platform/screen.h"
#include "halvora/platform/user_defaults.h"
#include "light/random_number.h"
#include "light/screen_modes.h"
#include "light/torch_modes.h"
#include "light/view_stack.h"
#include "text/defaults_values.h"
#include "text/seat_defaults.h"

namespace halvora {

namespace {

constexpr std::uint16_t kCloudSync = 2;
constexpr LinearTime kLongestTorchPause{3900, 1100};

enum Vibration : int { kLightTap = 1, kHeavyTap = 2, kSystemVibration = 3 };

}  // namespace

bool hasSelectedSection(const UserDefaults& defaults) {
  return !textForKey(defaults, kSelectedSectionKey).value_or("").empty();
}

void takeApplicationId(Command& command, UserDefaults& defaults) {
  defaults.set("appID", std::int64_t{command.broadcast.applicationId});
  defaults.synchronize();
  if (command.broadcast.applicationId == 0) command.fate = PacketFate::noApplication;
}

void takeSyncFlag(Command& command, UserDefaults& defaults) {
  const std::uint16_t flag = command.broadcast.syncFlag;
  defaults.set("syncCloud", std::string(flag == kCloudSync ? "YES" : "NO"));
  defaults.synchronize();
  if (flag != 0 && flag != kCloudSync) command.fate = PacketFate::badSyncFlag;
}

void takeFields(Command& command) {
  command.mode = command.broadcast.mode;
  command.cueToken = cueToken(command.broadcast);
  // Clips are never started over the air in this build.
  command.broadcast.videoId = 0;
}

void readSeat(Command& command, SeatState& seat, const UserDefaults& defaults) {
  seat.currentXPos = integerForKey(defaults, kXPosKey);
  seat.currentYPos = integerForKey(defaults, kYPosKey);
  command.hasPosition = seat.hasPosition();
  command.hasSection = hasSelectedSection(defaults);
}

void overrideMode(Command& command, ScreenState& screen, ViewStack& views) {
  if (command.broadcast.pixelMapId == 0 || command.mode == 0) return;
  if (command.hasSection) {
    if (command.hasPosition) command.mode = kPixelMapMode;
    return;
  }
  command.mode = kNoSeatMode;
  screen.runEffectAnimation = false;
  views.setAlpha(ViewId::goboView, 0);
  views.setLightColour(kBlack);
}

void takeVenueAndPreload(const Command& command, SeatState& seat, UserDefaults& defaults,
                         SeatLutPart& seatLut) {
  const Broadcast& broadcast = command.broadcast;
  seat.currentVenueId = broadcast.venueId;
  defaults.set("venueID", std::int64_t{broadcast.venueId});
  defaults.synchronize();
  if (broadcast.pixelMapId != 0 && command.hasPosition && command.hasSection) {
    seatLut.preloadPixelMapSeatLUTForVenueId(broadcast.venueId, broadcast.pixelMapId,
                                             seat.currentXPos, seat.currentYPos);
  } else {
    seatLut.clearActiveSeatLUT();
    seatLut.stopPixelMapLiveSampler();
  }
}

void takeCueTime(const Command& command, VideoState& video, const Screen& screen) {
  video.currentVideoMilliseconds = cueMilliseconds(command.broadcast);
  // Asked for at every look, and not used yet: the light stays within ordinary white.
  static_cast<void>(screen.currentEDRHeadroom());
}

void takeColour(const Command& command, ColourState& colour, const std::vector<Palette>& palettes,
                Random& random) {
  const Broadcast& broadcast = command.broadcast;
  choosePaletteColour(colour, palettes, random, broadcast.paletteId,
                      colourOfBytes(broadcast.red, broadcast.green, broadcast.blue));
}

void takeVideoStatus(const Command& command, VideoState& video, ViewStack& views) {
  video.currentVideoStatus = command.broadcast.videoStatus;
  if (views.alpha(ViewId::pairingCodeLabel) != 0) views.setAlpha(ViewId::pairingCodeLabel, 0);
}

void setMaster(const Command& command, ColourState& colour, ViewStack& views, Screen& screen) {
  if (command.mode == 0) return;
  const double master = command.broadcast.master / 255.0;
  if (command.broadcast.master == 255) {
    // A screen that is at 1.0 already takes no notice of another 1.0; the second write always
    // reaches it.
    screen.setBrightness(1.0);
    screen.setBrightness(0.99);
  } else {
    screen.setBrightness(master);
  }
  colour.currentMaster = master;
  views.setAlpha(ViewId::dimmerView, 1.0 - master);
}

void vibrate(const Command& command, int& currentVibrate, Haptics& haptics) {
  const int value = command.broadcast.vibrate;
  if (value == currentVibrate) return;
  currentVibrate = value;
  if (value == kSystemVibration) {
    haptics.playSystemSound(kVibrationSound);
    return;
  }
  if (value == kHeavyTap) haptics.impact(ImpactStyle::heavy);
  if (value == kLightTap) haptics.impact(ImpactStyle::light);
  haptics.disposeSystemSound(kVibrationSound);
}

void restartPixelMap(const Command& command, SeatState& seat, ScreenModes& modes,
                     TorchPart& torch) {
  const bool torchFollows = command.broadcast.ledMode == kPixelMapTorchMode;
  const bool screenFollows = command.mode == kPixelMapMode;
  if (!torchFollows && !screenFollows) return;
  const int pixelMapId = command.broadcast.pixelMapId;
  const bool isInForce =
      command.cueToken == seat.currentVideoMinutes && pixelMapId == seat.currentPixelMapId;
  if (isInForce && !command.isForced) return;
  seat.currentVideoMinutes = command.cueToken;
  seat.currentPixelMapId = pixelMapId;
  if (screenFollows) modes.processMode(kPixelMapMode, command.broadcast.speed);
  if (torchFollows) torch.processLEDMode(kPixelMapTorchMode, command.broadcast.ledSpeed);
}

// The delayed colour of the random flash has a step of its own.
void showColour(const Command& command, ScreenModes& modes) {
  if (modeRow(command.mode).again == Again::delayed) return;
  modes.showAgain(command.mode, command.broadcast.speed);
}

void scheduleRandomFlash(const Command& command, ScreenModes& modes) {
  if (modeRow(command.mode).again != Again::delayed) return;
  modes.showAgain(command.mode, command.broadcast.speed);
}

void setTorch(const Command& command, TorchState& torch, TimerSet& timers, TorchPart& part,
              Random& random) {
  const int mode = command.broadcast.ledMode;
  const int speed = command.broadcast.ledSpeed;
  if (mode != torch.currentLEDMode || speed != torch.currentLEDSpeed || command.isForced) {
    torch.currentLEDMode = mode;
    torch.currentLEDSpeed = speed;
    stopTorchEffect(torch, timers);
    part.processLEDMode(mode, speed);
  }
  const TorchAgain again = torchModeRow(mode).again;
  switch (again) {
    case TorchAgain::never:
      break;
    case TorchAgain::off:
    case TorchAgain::on:
      part.turnTorchOn(again == TorchAgain::on);
      break;
    case TorchAgain::offLater:
    case TorchAgain::onLater:
      const int latest = kLongestTorchPause.at(percentageSpeed(speed));
      const int pause = randomNumberBetween(random, 0, latest);
      torch.ledAnimationTimer =
          timers.after(milliseconds(pause),
                       [&part, isOn = again == TorchAgain::onLater] { part.turnTorchOn(isOn); });
      break;
  }
}

}  // namespace halvora
