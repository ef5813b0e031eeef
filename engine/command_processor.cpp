// SPDX-License-Identifier: Apache-2.0
#include "engine/command_processor.h"

#include "engine/show_assets.h"
#include "engine/show_fade.h"
#include "halvora/platform/application.h"
#include "halvora/platform/haptics.h"
#include "halvora/platform/platform.h"
#include "halvora/platform/screen.h"
#include "halvora/platform/user_defaults.h"
#include "halvora/witness.h"
#include "light/brightness.h"
#include "light/random_number.h"
#include "light/screen_modes.h"
#include "light/show_parts.h"
#include "light/torch_modes.h"
#include "light/view_stack.h"
#include "text/defaults_values.h"

namespace halvora {

namespace {

constexpr std::uint16_t kCloudSync = 2;
constexpr Duration kVideoFade = milliseconds(500);
constexpr int kLastVideo = 10;
constexpr LinearTime kLongestTorchPause{3900, 1100};

enum Vibration : int { kLightTap = 1, kHeavyTap = 2, kSystemVibration = 3 };
enum TorchMode : int { kTorchOff = 0, kTorchOn = 1, kTorchRandomOff = 2, kTorchRandomOn = 3 };

}  // namespace

bool hasSelectedSection(const UserDefaults& defaults) {
  return !textForKey(defaults, "selectedSection").value_or("").empty();
}

const std::array<CommandProcessor::Step, 18>& CommandProcessor::steps() {
  using Self = CommandProcessor;
  static constexpr std::array<Step, 18> kSteps = {{
      {"application id", &Self::takeApplicationId},
      {"sync flag", &Self::takeSyncFlag},
      {"fields", &Self::takeFields},
      {"seat", &Self::readSeat},
      {"mode override", &Self::overrideMode},
      {"venue and preload", &Self::takeVenueAndPreload},
      {"cue time", &Self::takeCueTime},
      {"colour", &Self::takeColour},
      {"video status", &Self::takeVideoStatus},
      {"master", &Self::setMaster},
      {"video", &Self::setVideo},
      {"vibration", &Self::vibrate},
      {"gobo", &Self::setGobo},
      {"mode", &Self::changeMode},
      {"pixel-map restart", &Self::restartPixelMap},
      {"static colour", &Self::showColour},
      {"random flash", &Self::scheduleRandomFlash},
      {"torch", &Self::setTorch},
  }};
  return kSteps;
}

PacketFate CommandProcessor::process(const Broadcast& broadcast) {
  Witness engine(rooms_.life);
  engine.setMayGo(false);
  Command command{.broadcast = broadcast, .engine = engine};
  std::uint8_t number = 0;
  try {
    for (const Step& step : steps()) {
      command.isForced = ++number == rooms_.state.unfinishedStep;
      if (!(this->*step.run)(command)) break;
    }
  } catch (...) {
    // Neither the radio nor the system's run loop knows what to do with an exception.
    if (engine.isGone()) return PacketFate::engineGone;
    rooms_.state.unfinishedStep = number;
    return PacketFate::failed;
  }
  if (engine.isGone()) return PacketFate::engineGone;
  rooms_.state.unfinishedStep = 0;
  return command.fate;
}

bool CommandProcessor::takeApplicationId(Command& command) {
  UserDefaults& defaults = rooms_.platform.defaults;
  defaults.set("appID", std::int64_t{command.broadcast.applicationId});
  defaults.synchronize();
  if (command.broadcast.applicationId != 0) return true;
  command.fate = PacketFate::noApplication;
  return false;
}

bool CommandProcessor::takeSyncFlag(Command& command) {
  UserDefaults& defaults = rooms_.platform.defaults;
  const std::uint16_t flag = command.broadcast.syncFlag;
  defaults.set("syncCloud", std::string(flag == kCloudSync ? "YES" : "NO"));
  defaults.synchronize();
  if (flag == 0 || flag == kCloudSync) return true;
  command.fate = PacketFate::badSyncFlag;
  return false;
}

bool CommandProcessor::takeFields(Command& command) {
  command.mode = command.broadcast.mode;
  command.cueToken = cueToken(command.broadcast);
  // Clips are never started over the air in this build.
  command.broadcast.videoId = 0;
  return true;
}

bool CommandProcessor::readSeat(Command& command) {
  const UserDefaults& defaults = rooms_.platform.defaults;
  SeatState& seat = rooms_.state.seat;
  seat.currentXPos = integerForKey(defaults, "xPos");
  seat.currentYPos = integerForKey(defaults, "yPos");
  command.hasPosition = seat.hasPosition();
  command.hasSection = hasSelectedSection(defaults);
  return true;
}

bool CommandProcessor::overrideMode(Command& command) {
  if (command.broadcast.pixelMapId == 0 || command.mode == 0) return true;
  if (command.hasSection) {
    if (command.hasPosition) command.mode = kPixelMapMode;
    return true;
  }
  command.mode = kNoSeatMode;
  rooms_.state.screen.runEffectAnimation = false;
  rooms_.views.setAlpha(ViewId::goboView, 0);
  rooms_.views.setLightColour(kBlack);
  return true;
}

bool CommandProcessor::takeVenueAndPreload(Command& command) {
  const Broadcast& broadcast = command.broadcast;
  SeatState& seat = rooms_.state.seat;
  seat.currentVenueId = broadcast.venueId;
  rooms_.platform.defaults->set("venueID", std::int64_t{broadcast.venueId});
  rooms_.platform.defaults->synchronize();
  SeatLutPart& seatLut = rooms_.parts.seatLut;
  if (broadcast.pixelMapId != 0 && command.hasPosition && command.hasSection) {
    seatLut.preloadPixelMapSeatLUTForVenueId(broadcast.venueId, broadcast.pixelMapId,
                                             seat.currentXPos, seat.currentYPos);
  } else {
    seatLut.clearActiveSeatLUT();
    seatLut.stopPixelMapLiveSampler();
  }
  return true;
}

bool CommandProcessor::takeCueTime(Command& command) {
  rooms_.state.video.currentVideoMilliseconds = cueMilliseconds(command.broadcast);
  // Asked for at every look, and not used yet: the light stays within ordinary white.
  static_cast<void>(rooms_.platform.screen->currentEDRHeadroom());
  return true;
}

bool CommandProcessor::takeColour(Command& command) {
  const auto byte = [](std::uint16_t value) { return static_cast<std::uint8_t>(value); };
  const Broadcast& broadcast = command.broadcast;
  choosePaletteColour(
      rooms_.state.colour, rooms_.assets->palettes, rooms_.platform.random, broadcast.paletteId,
      colourOfBytes(byte(broadcast.red), byte(broadcast.green), byte(broadcast.blue)));
  return true;
}

bool CommandProcessor::takeVideoStatus(Command& command) {
  rooms_.state.video.currentVideoStatus = command.broadcast.videoStatus;
  if (rooms_.views.alpha(ViewId::pairingCodeLabel) != 0) {
    rooms_.views.setAlpha(ViewId::pairingCodeLabel, 0);
  }
  return true;
}

bool CommandProcessor::setMaster(Command& command) {
  if (command.mode == 0) return true;
  Screen& screen = rooms_.platform.screen;
  const double master = command.broadcast.master / 255.0;
  if (command.broadcast.master == 255) {
    // A screen that is at 1.0 already takes no notice of another 1.0; the second write always
    // reaches it.
    screen.setBrightness(1.0);
    screen.setBrightness(0.99);
  } else {
    screen.setBrightness(master);
  }
  rooms_.state.colour.currentMaster = master;
  rooms_.views.setAlpha(ViewId::dimmerView, 1.0 - master);
  return true;
}

bool CommandProcessor::setVideo(Command& command) {
  if (command.broadcast.videoId != 0) {
    showVideo(command.broadcast.videoId, command.broadcast.videoStatus);
  } else {
    hideVideo(command.mode == 0);
  }
  return true;
}

// No look reaches this while clips are never started over the air; it is whole for when they are.
void CommandProcessor::showVideo(int videoId, int videoStatus) {
  ViewStack& views = rooms_.views;
  VideoState& video = rooms_.state.video;
  // The status has just been stored, so catching up is dormant: the two never differ here.
  video.isCatchingUp =
      videoId != video.currentVideoId && videoStatus == 1 && video.currentVideoStatus == 0;
  if (views.alpha(ViewId::container) != 1) {
    views.animateAlpha({{ViewId::container, 1}}, {.duration = kShowFade, .name = "Fade Out"});
    rooms_.platform.screen->setBrightness(1.0);
  }
  if (views.alpha(ViewId::videoBackgroundView) != 1) {
    views.animateAlpha({{ViewId::videoBackgroundView, 1}},
                       {.duration = kShowFade, .name = "Fade Out"});
  }
  if (videoId == video.currentVideoId) return;
  rooms_.timers.invalidate(video.videoPlayTimer);
  video.currentVideoId = videoId;
  if (videoId <= kLastVideo) rooms_.parts.video.playVideo(std::to_string(videoId));
}

void CommandProcessor::hideVideo(bool showEnds) {
  ViewStack& views = rooms_.views;
  VideoState& video = rooms_.state.video;
  rooms_.timers.invalidate(video.videoPlayTimer);
  if (views.alpha(ViewId::videoBackgroundView) != 0) {
    views.setAlpha(ViewId::videoBackgroundView, 0);
  }
  video.currentVideoId = 0;
  if (views.alpha(ViewId::playerViewA) == 0 && views.alpha(ViewId::playerViewB) == 0) return;

  const auto completion = [this, showEnds](bool) {
    if (showEnds) rooms_.brightness.originalScreenBrightness();
    rooms_.parts.video.pausePlayers();
  };
  if (showEnds) {
    views.animateAlpha({{ViewId::playerViewA, 0}, {ViewId::playerViewB, 0}, {ViewId::container, 0}},
                       {.duration = kVideoFade}, completion);
  } else {
    views.animateAlpha({{ViewId::playerViewA, 0}, {ViewId::playerViewB, 0}},
                       {.duration = kVideoFade}, completion);
  }
}

bool CommandProcessor::vibrate(Command& command) {
  const int value = command.broadcast.vibrate;
  if (value == rooms_.state.currentVibrate) return true;
  rooms_.state.currentVibrate = value;
  Haptics& haptics = rooms_.platform.haptics;
  if (value == kSystemVibration) {
    haptics.playSystemSound(kVibrationSound);
    return true;
  }
  if (value == kHeavyTap) haptics.impact(ImpactStyle::heavy);
  if (value == kLightTap) haptics.impact(ImpactStyle::light);
  haptics.disposeSystemSound(kVibrationSound);
  return true;
}

bool CommandProcessor::changeMode(Command& command) {
  ScreenState& screen = rooms_.state.screen;
  const int speed = command.broadcast.speed;
  const bool isInForce = command.mode == screen.currentMode && speed == screen.currentModeSpeed;
  if (isInForce && !command.isForced) return true;
  screen.currentMode = command.mode;
  screen.currentModeSpeed = speed;
  rooms_.state.gobo.currentGoboMode = command.mode;
  rooms_.state.gobo.currentGoboSpeed = speed;
  if (command.mode != kNoSeatMode) rooms_.parts.overlays.hideMapNoSeatOverlay();
  rooms_.modes.stopEffect();
  rooms_.views.removeLightAnimations();
  rooms_.views.setAlpha(ViewId::fpsLabel, command.mode == kFrameRateMode ? 1 : 0);
  if (!(command.mode != 0 ? beginShow(command.engine) : endShow(command.engine))) return false;
  // The modes below are steady; the later steps paint them.
  constexpr std::uint32_t kFirstEffectMode = 3;
  if (command.mode >= kFirstEffectMode) rooms_.modes.processMode(command.mode, speed);
  return true;
}

template <class Act>
bool CommandProcessor::letHost(Witness& engine, const Act& act) {
  engine.setMayGo(true);
  try {
    act();
  } catch (...) {
    engine.setMayGo(false);
    throw;
  }
  engine.setMayGo(false);
  return !engine.isGone();
}

// By a copy: a callback may put another one in its place.
bool CommandProcessor::tell(Witness& engine, std::function<void()> ShowCallbacks::*what) const {
  if (!rooms_.callbacks) return true;
  try {
    const auto callback = (*rooms_.callbacks).*what;
    return !callback || letHost(engine, callback);
  } catch (...) {
    if (engine.isGone()) return false;
    ++rooms_.callbacks->failures;
    return true;
  }
}

// Also the application has the host's ear: whoever presents something is told to take it back.
bool CommandProcessor::beginShow(Witness& engine) {
  if (!tell(engine, &ShowCallbacks::lightShowStarted)) return false;
  rooms_.views.animateAlpha({{ViewId::container, 1}}, {.duration = kShowFade, .name = "Fade Out"});
  rooms_.platform.screen->setBrightness(1.0);
  rooms_.state.isStatusBarHidden = true;
  return letHost(engine, [&application = *rooms_.platform.application] {
    application.setStatusBarHidden(true);
    application.setIdleTimerDisabled(true);
    application.dismissPresentedScreens();
  });
}

bool CommandProcessor::endShow(Witness& engine) {
  if (!tell(engine, &ShowCallbacks::lightShowStopped)) return false;
  rooms_.views.animateAlpha({{ViewId::container, 0}}, {.duration = kShowFade, .name = "Fade In"});
  rooms_.brightness.originalScreenBrightness();
  rooms_.state.isStatusBarHidden = false;
  return letHost(engine, [&application = *rooms_.platform.application] {
    application.setStatusBarHidden(false);
    application.setIdleTimerDisabled(false);
  });
}

bool CommandProcessor::restartPixelMap(Command& command) {
  const bool torchFollows = command.broadcast.ledMode == kPixelMapTorchMode;
  const bool screenFollows = command.mode == kPixelMapMode;
  if (!torchFollows && !screenFollows) return true;
  SeatState& seat = rooms_.state.seat;
  const int pixelMapId = command.broadcast.pixelMapId;
  const bool isInForce =
      command.cueToken == seat.currentVideoMinutes && pixelMapId == seat.currentPixelMapId;
  if (isInForce && !command.isForced) return true;
  seat.currentVideoMinutes = command.cueToken;
  seat.currentPixelMapId = pixelMapId;
  if (screenFollows) rooms_.modes.processMode(kPixelMapMode, command.broadcast.speed);
  if (torchFollows) {
    rooms_.parts.torch.processLEDMode(kPixelMapTorchMode, command.broadcast.ledSpeed);
  }
  return true;
}

bool CommandProcessor::showColour(Command& command) {
  // The delayed colour of the random flash has a step of its own.
  if (modeRow(command.mode).again != Again::delayed) {
    rooms_.modes.showAgain(command.mode, command.broadcast.speed);
  }
  return true;
}

bool CommandProcessor::scheduleRandomFlash(Command& command) {
  if (modeRow(command.mode).again == Again::delayed) {
    rooms_.modes.showAgain(command.mode, command.broadcast.speed);
  }
  return true;
}

bool CommandProcessor::setTorch(Command& command) {
  TorchState& torch = rooms_.state.torch;
  TorchPart& part = rooms_.parts.torch;
  const int mode = command.broadcast.ledMode;
  const int speed = command.broadcast.ledSpeed;
  if (mode != torch.currentLEDMode || speed != torch.currentLEDSpeed || command.isForced) {
    torch.currentLEDMode = mode;
    torch.currentLEDSpeed = speed;
    stopTorchEffect(torch, rooms_.timers);
    part.processLEDMode(mode, speed);
  }
  if (mode == kTorchOff) part.turnTorchOn(false);
  if (mode == kTorchOn) part.turnTorchOn(true);
  if (mode == kTorchRandomOff || mode == kTorchRandomOn) {
    const int latest = kLongestTorchPause.at(percentageSpeed(speed));
    const int pause = randomNumberBetween(rooms_.platform.random, 0, latest);
    torch.ledAnimationTimer = rooms_.timers.after(
        milliseconds(pause), [&part, on = mode == kTorchRandomOn] { part.turnTorchOn(on); });
  }
  return true;
}

}  // namespace halvora
