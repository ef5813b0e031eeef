// SPDX-License-Identifier: Apache-2.0
#include "engine/show_engine.h"

#include <cstdint>
#include <utility>

#include "engine/show_fade.h"
#include "halvora/platform/json.h"
#include "halvora/platform/user_defaults.h"
#include "text/defaults_values.h"

namespace halvora {

namespace {

constexpr Duration kLowLightPoll = milliseconds(500);

// A bucket is a folder within the documents; a text that leads out of them names none.
std::string goboFolder(const std::string& documents, const std::string& bucket) {
  if (documents.empty() || bucket.empty()) return "";
  const std::string within = "/" + bucket + "/";
  const bool leadsOut = bucket.starts_with('/') || within.find("/../") != std::string::npos;
  return leadsOut ? "" : documents + within + "Gobo";
}

std::unique_ptr<GuardedNeeds> guardedNeedsFor(const Platform& platform,
                                              const ShowEngineOptions& options) {
  const bool isGuarded = options.air.policy == AirPolicy::guarded;
  if (!isGuarded && !options.mayChangeAir) return nullptr;
  auto needs = std::make_unique<GuardedNeeds>(platform);
  needs->setBounded(isGuarded);
  return needs;
}

}  // namespace

ShowEngine::ShowEngine(const Platform& platform, ShowEngineOptions options,
                       std::optional<ShowParts> parts)
    : guarded_(guardedNeedsFor(platform, options)),
      platform_(guarded_ ? guarded_->platform(platform) : platform),
      hasOwnAssets_(options.assets == nullptr),
      usageReports_(options.usageReports),
      assets_(hasOwnAssets_ ? std::make_shared<const ShowAssets>() : std::move(options.assets)),
      stills_(options.stills),
      timers_(platform.runLoop),
      views_(timers_),
      hostLimits_(options.limits),
      guard_(platform_, views_, timers_, options.pictures),
      notices_(state_.screen, views_, timers_),
      torch_(state_.torch, timers_, platform.random, guard_.torch(), *this),
      gobo_(state_.gobo, views_, platform.files, platform.bundles->main, platform.random),
      video_(state_.video, views_, timers_, platform.files, platform.videoPlayers),
      seatLut_(platform_, *this, options.seatLuts),
      parts_(parts ? *parts : ShowParts{torch_, gobo_, notices_, video_, seatLut_}),
      brightness_(guard_.screen(), timers_, state_.colour),
      modes_(state_.screen, state_.colour, views_, timers_, platform.random, parts_.notices, *this),
      usage_(platform.wallClock, platform.calendar, platform_.defaults, platform.http,
             platform.bundles->main.identifier(), std::move(options.usageEndpoints)),
      scanner_(platform_, state_.presence, timers_, *this,
               makeAirGate(options.air, platform.codes)) {
  platform_.screen = guard_.screen();
  platform_.torch = guard_.torch();
  platform_.haptics = guard_.haptics();
  guard_.setLimits(hostLimits_);
}

// A need that throws here ends nothing but its own act: nobody is left to be told.
ShowEngine::~ShowEngine() {
  const auto tryTo = [](const auto& act) {
    try {
      act();
    } catch (...) {
    }
  };
  if (guard_.limits().flash == FlashPolicy::limited) {
    tryTo([this] { platform_.application->setIdleTimerDisabled(false); });
  }
  tryTo([this] { guard_.end(brightness_.originalBrightness()); });
  // The queues wait for the build that is under way.
  seatLut_.end();
  timers_.invalidate(lowLightHintTimer_);
  platform_.application->removeObserver(*this);
}

void ShowEngine::viewDidLoad() {
  state_.isStatusBarHidden = false;
  platform_.application->addObserver(*this);
  if (hasOwnAssets_) assets_ = loadShowAssets(platform_.bundles, platform_.json);
  pixelMapLUTDecodeQueue_ = platform_.queues->make("com.halvora.sdk.pixelmap.lut.decode");
  pixelMapLiveDecodeQueue_ = platform_.queues->make("com.halvora.sdk.pixelmap.live.decode");
  seatLut_.useQueues(*pixelMapLUTDecodeQueue_, *pixelMapLiveDecodeQueue_);
  parts_.seatLut.clearActiveSeatLUT();
  pairedBucketID_ = textForKey(platform_.defaults, "pairedBucketID").value_or("");
  platform_.application->useAudioPlaybackCategory();

  views_.setText(ViewId::pairingCodeLabel, SharedText(assets_, &assets_->pairingCode));
  gobo_.build(goboDocuments());
  video_.build(SharedText(assets_, &assets_->clipFolder));
  views_.setAlpha(ViewId::dimmerView, 1.0 - state_.colour.currentMaster);
  notices_.build(SharedText(assets_, &assets_->mapNoSeatText),
                 SharedText(assets_, &assets_->lowLightText));
  timers_.invalidate(lowLightHintTimer_);
  lowLightHintTimer_ =
      timers_.every(kLowLightPoll, [this] { parts_.notices.updateLowLightHintState(); });

  state_.presence.setupOnce = true;
  brightness_.saveOriginalBrightness();
  // The toggling modes begin lit, so that their first command goes dark on every phone alike.
  state_.screen.lastTurnOn = true;
}

ShowCallbacks& ShowEngine::callbacks() {
  if (!callbacks_) callbacks_ = std::make_unique<ShowCallbacks>(scanner_.failedCallbacks());
  return *callbacks_;
}

SharedText ShowEngine::goboDocuments() const {
  std::string folder = goboFolder(getPrivateDocumentsDirectory(), pairedBucketID_);
  return folder.empty() ? nullptr : std::make_shared<const std::string>(std::move(folder));
}

void ShowEngine::viewWillLayoutSubviews(const std::optional<Rect>& superviewBounds) {
  frame_ = superviewBounds.value_or(Rect{});
}

std::string ShowEngine::hvLocalizedStringForKey(std::string_view key,
                                                std::string_view fallback) const {
  return kitText(platform_.bundles, key, fallback);
}

// In the order of the show: a step finds what those before it have left.
const std::array<ShowEngine::Step, 18>& ShowEngine::steps() {
  using Self = ShowEngine;
  static constexpr std::array<Step, 18> kSteps = {{
      {"application id",
       [](Self& its, Command& look) { takeApplicationId(look, its.platform_.defaults); }},
      {"sync flag", [](Self& its, Command& look) { takeSyncFlag(look, its.platform_.defaults); }},
      {"fields", [](Self&, Command& look) { takeFields(look); }},
      {"seat",
       [](Self& its, Command& look) { readSeat(look, its.state_.seat, its.platform_.defaults); }},
      {"mode override",
       [](Self& its, Command& look) { overrideMode(look, its.state_.screen, its.views_); }},
      {"venue and preload",
       [](Self& its, Command& look) {
         takeVenueAndPreload(look, its.state_.seat, its.platform_.defaults, its.parts_.seatLut);
       }},
      {"cue time",
       [](Self& its, Command& look) { takeCueTime(look, its.state_.video, its.platform_.screen); }},
      {"colour",
       [](Self& its, Command& look) {
         takeColour(look, its.state_.colour, its.assets_->palettes, its.platform_.random);
       }},
      {"video status",
       [](Self& its, Command& look) { takeVideoStatus(look, its.state_.video, its.views_); }},
      {"master",
       [](Self& its, Command& look) {
         setMaster(look, its.state_.colour, its.views_, its.platform_.screen);
       }},
      {"video",
       [](Self& its, Command& look) {
         setVideo(look, {its.state_.video, its.views_, its.timers_, its.parts_.video,
                         its.platform_.screen, its.brightness_});
       }},
      {"vibration",
       [](Self& its, Command& look) {
         vibrate(look, its.state_.currentVibrate, its.platform_.haptics);
       }},
      {"gobo",
       [](Self& its, Command& look) {
         setGobo(look, {its.state_.gobo, its.views_, its.parts_.gobo}, its.state_.screen,
                 its.platform_.random);
       }},
      {"mode",
       [](Self& its, Command& look) {
         changeMode(look, its.stage(), its.state_.screen, its.state_.gobo, its.modes_,
                    its.parts_.notices);
       }},
      {"pixel-map restart",
       [](Self& its, Command& look) {
         restartPixelMap(look, its.state_.seat, its.modes_, its.parts_.torch);
       }},
      {"static colour", [](Self& its, Command& look) { showColour(look, its.modes_); }},
      {"random flash", [](Self& its, Command& look) { scheduleRandomFlash(look, its.modes_); }},
      {"torch",
       [](Self& its, Command& look) {
         setTorch(look, its.state_.torch, its.timers_, its.parts_.torch, its.platform_.random);
       }},
  }};
  return kSteps;
}

ShowStage ShowEngine::stage() {
  return {
      callbacks_.get(),      views_,     brightness_, state_.isStatusBarHidden, platform_.screen,
      platform_.application, isGuarded()};
}

PacketFate ShowEngine::processEffect(const Broadcast& broadcast) {
  Witness engine(life_);
  engine.setMayGo(false);
  Command command{.broadcast = broadcast, .engine = engine};
  const bool hadShow = state_.isStatusBarHidden;
  std::uint8_t number = 0;
  std::uint8_t unfinished = 0;
  try {
    for (const Step& step : steps()) {
      command.isForced = ++number == state_.unfinishedStep;
      step.run(*this, command);
      if (engine.isGone()) return PacketFate::engineGone;
      if (command.fate != PacketFate::processed) break;
    }
  } catch (...) {
    // Neither the radio nor the system's run loop knows what to do with an exception.
    if (engine.isGone()) return PacketFate::engineGone;
    unfinished = number;
    command.fate = PacketFate::failed;
  }
  state_.unfinishedStep = unfinished;
  if (state_.isStatusBarHidden != hadShow) scanner_.guard([this] { presenceChanged(); });
  return command.fate;
}

void ShowEngine::appDidBecomeActive() {
  guard_.returnToApplication();
  state_.presence.resetApp = true;
  scanner_.guard([this] {
    if (state_.presence.scanningAllowed && usageReports_) usage_.appOpened();
    presenceChanged();
  });
}

void ShowEngine::setUsageReports(bool isOn) {
  usageReports_ = isOn;
  if (!isOn) platform_.http->cancelAll();
}

void ShowEngine::setLimits(const LightLimits& limits) {
  hostLimits_ = limits;
  guard_.setLimits(bothOf(hostLimits_, viewerLimits_));
}

void ShowEngine::setViewerLimits(const LightLimits& limits) {
  viewerLimits_ = limits;
  guard_.setLimits(bothOf(hostLimits_, viewerLimits_));
}

void ShowEngine::recievedSignal() {
  if (usageReports_) usage_.recievedSignal();
}

void ShowEngine::appWillResignActive() {
  scanner_.guard([this] {
    platform_.application->setIdleTimerDisabled(false);
    guard_.goAway(brightness_.originalBrightness());
  });
}

void ShowEngine::showReceptionRate(int packets) {
  if (state_.screen.currentMode == kFrameRateMode) {
    views_.setText(ViewId::fpsLabel, std::to_string(packets));
  }
}

void ShowEngine::dropShow() {
  views_.animateAlpha({{ViewId::container, 0}}, {.duration = kShowFade, .name = "Fade In"});
  brightness_.originalScreenBrightness();

  TorchState& torch = state_.torch;
  stopTorchEffect(torch, timers_);
  modes_.stopEffect();
  views_.removeAnimations(ViewId::goboView);
  parts_.torch.turnTorchOn(false);

  state_.screen.currentMode = 0;
  state_.screen.currentModeSpeed = 0;
  state_.screen.effectOn = false;
  torch.currentLEDMode = 0;
  torch.currentLEDSpeed = 0;
  torch.ledEffectOn = false;

  parts_.video.pausePlayers();
  VideoState& video = state_.video;
  timers_.invalidate(video.videoPlayTimer);
  video.currentVideoId = 0;
  video.currentVideoMilliseconds = 0;
  video.currentVideoStatus = 0;
  video.videoCanPlay = false;
  video.isCatchingUp = false;
}

PacketFate ShowEngine::contestBegan(const Broadcast* undisputed) {
  if (guarded_) guarded_->torch.setHeld(true);
  if (undisputed != nullptr) return processEffect(*undisputed);
  // Nothing was shown that could be held.
  dropShow();
  return PacketFate::doubted;
}

void ShowEngine::contestEnded() {
  if (guarded_) guarded_->torch.setHeld(false);
}

void ShowEngine::airTrustChanged() {
  if (!callbacks_ || !callbacks_->airTrust) return;
  // The host may destroy the engine, which a packet's way through it does not expect.
  timers_.soon([this] {
    Witness engine(life_);
    try {
      const auto callback = callbacks_->airTrust;
      if (callback) callback(airTrust());
    } catch (...) {
      if (!engine.isGone()) ++callbacks_->failures;
    }
  });
}

std::shared_ptr<const void> ShowEngine::watchPresence(std::function<void()> callback) {
  auto kept = std::make_shared<const std::function<void()>>(std::move(callback));
  auto& watchers = callbacks().presence;
  std::erase_if(watchers, [](const auto& watcher) { return watcher.expired(); });
  watchers.push_back(kept);
  return kept;
}

void ShowEngine::presenceChanged() {
  if (!callbacks_ || callbacks_->presence.empty()) return;
  timers_.soon([this] {
    Witness engine(life_);
    // Whoever is told may come or go, and the engine with them.
    const auto watchers = callbacks_->presence;
    for (const auto& watcher : watchers) {
      const auto callback = watcher.lock();
      try {
        if (callback && *callback) (*callback)();
      } catch (...) {
        if (!engine.isGone()) ++callbacks_->failures;
      }
      if (engine.isGone()) return;
    }
  });
}

void ShowEngine::setAir(const AirOptions& air) {
  std::unique_ptr<AirGate> gate = makeAirGate(air, platform_.codes);
  // What may fail comes first: the air is as it was then.
  if (guarded_) guarded_->setBounded(air.policy == AirPolicy::guarded);
  scanner_.setGate(std::move(gate));
}

AirTrust ShowEngine::airTrust() const { return scanner_.trust(); }

AirDiagnostics ShowEngine::airDiagnostics() const {
  AirDiagnostics diagnostics;
  if (scanner_.gate() != nullptr) diagnostics = scanner_.gate()->diagnostics();
  if (guarded_) diagnostics.hapticsHeldBack = guarded_->haptics.heldBack();
  return diagnostics;
}

SeatLight ShowEngine::seatLight() {
  if (!hasSeat()) return {};
  return {true, parts_.seatLut.colorFromActivePixelMapSeatLUTForFrameIndex(
                    state_.seat.currentVideoMinutes)};
}

void ShowEngine::refreshMode21ColorIfNeeded() {
  const ScreenState& screen = state_.screen;
  if (screen.currentMode == kPixelMapMode && hasSeat()) {
    modes_.processMode(screen.currentMode, screen.currentModeSpeed);
  }
}

bool ShowEngine::hasSeat() const {
  return hasSelectedSection(platform_.defaults) && state_.seat.hasPosition();
}

std::optional<bool> ShowEngine::seatIsWhite() {
  const SeatState& seat = state_.seat;
  std::optional<SeatPosition> position;
  if (hasSeat()) position = SeatPosition{seat.currentXPos, seat.currentYPos};
  return isWhiteInStill({seat.currentVenueId, seat.currentPixelMapId, seat.currentVideoMinutes},
                        position, stills_, platform_.bundles->main, platform_.images);
}

}  // namespace halvora
