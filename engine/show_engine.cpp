// SPDX-License-Identifier: Apache-2.0
#include "engine/show_engine.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <utility>

#include "engine/show_fade.h"
#include "halvora/platform/image.h"
#include "halvora/platform/json.h"
#include "halvora/platform/user_defaults.h"
#include "light/bitmap.h"
#include "text/defaults_values.h"

namespace halvora {

namespace {

constexpr Duration kLowLightPoll = milliseconds(500);

// Of a bitmap's pixel, whose colour is multiplied by its alpha.
bool isWhite(const std::uint8_t* pixel) {
  return pixel[1] == 255 && pixel[2] == 255 && pixel[3] == 255;
}

// A bucket is a folder within the documents; a text that leads out of them names none.
std::string goboDocuments(const std::string& documents, const std::string& bucket) {
  const std::string within = "/" + bucket + "/";
  const bool leadsOut = bucket.starts_with('/') || within.find("/../") != std::string::npos;
  return documents.empty() || bucket.empty() || leadsOut ? "" : documents + within + "Gobo";
}

}  // namespace

ShowEngine::ShowEngine(const Platform& platform, ShowEngineOptions options,
                       std::optional<ShowParts> parts)
    : platform_(platform),
      hasOwnAssets_(options.assets == nullptr),
      usageReports_(options.usageReports),
      assets_(hasOwnAssets_ ? std::make_shared<const ShowAssets>() : std::move(options.assets)),
      stills_(options.stills),
      timers_(platform.runLoop),
      views_(timers_),
      overlays_(state_.screen, views_, timers_),
      torch_(state_.torch, timers_, platform.random, platform.torch,
             [this] { return seatIsWhite(); }),
      gobo_(state_.gobo, views_, platform.files, platform.random),
      video_(state_.video, views_, timers_, platform.files, platform.videoPlayers),
      seatLut_(platform_,
               {[this] { return state_.seat.currentVideoMinutes; },
                [this] { refreshMode21ColorIfNeeded(); }},
               options.seatLuts),
      parts_(parts ? *parts : ShowParts{torch_, gobo_, overlays_, video_, seatLut_}),
      brightness_(platform.screen, timers_, state_.colour),
      modes_(state_.screen, state_.colour, views_, timers_, platform.random, parts_.overlays,
             [this] { return seatLight(); }),
      processor_({platform_, state_, assets_, callbacks_, timers_, views_, brightness_, modes_,
                  parts_, life_}),
      usage_(platform.wallClock, platform.calendar, platform.defaults, platform.http,
             platform.bundles->main.identifier(), std::move(options.usageEndpoints)),
      scanner_(platform_, state_.presence, timers_, *this) {}

ShowEngine::~ShowEngine() {
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
  gobo_.build(goboFolders());
  video_.build(SharedText(assets_, &assets_->folder));
  views_.setAlpha(ViewId::dimmerView, 1.0 - state_.colour.currentMaster);
  overlays_.build(SharedText(assets_, &assets_->mapNoSeatText),
                  SharedText(assets_, &assets_->lowLightText));
  timers_.invalidate(lowLightHintTimer_);
  lowLightHintTimer_ =
      timers_.every(kLowLightPoll, [this] { parts_.overlays.updateLowLightHintState(); });

  state_.presence.setupOnce = true;
  brightness_.saveOriginalBrightness();
  // The toggling modes begin lit, so that their first command goes dark on every phone alike.
  state_.screen.lastTurnOn = true;
}

ShowCallbacks& ShowEngine::callbacks() {
  if (!callbacks_) callbacks_ = std::make_unique<ShowCallbacks>();
  return *callbacks_;
}

// Without downloaded content they are the same for all engines.
std::shared_ptr<const GoboFolders> ShowEngine::goboFolders() const {
  std::string documents = goboDocuments(getPrivateDocumentsDirectory(), pairedBucketID_);
  if (documents.empty()) return {assets_, &assets_->goboFolders};
  return std::make_shared<const GoboFolders>(
      GoboFolders{std::move(documents), assets_->goboFolders.bundle});
}

void ShowEngine::viewWillLayoutSubviews(const std::optional<Rect>& superviewBounds) {
  frame_ = superviewBounds.value_or(Rect{});
}

std::string ShowEngine::hvLocalizedStringForKey(std::string_view key,
                                                std::string_view fallback) const {
  return kitText(platform_.bundles, key, fallback);
}

PacketFate ShowEngine::processEffect(const Broadcast& broadcast) {
  return processor_.process(broadcast);
}

void ShowEngine::appDidBecomeActive() {
  state_.presence.resetApp = true;
  scanner_.guard([this] {
    if (state_.presence.scanningAllowed && usageReports_) usage_.appOpened();
  });
}

void ShowEngine::setUsageReports(bool isOn) {
  usageReports_ = isOn;
  if (!isOn) platform_.http->cancelAll();
}

void ShowEngine::recievedSignal() {
  if (usageReports_) usage_.recievedSignal();
}

void ShowEngine::appWillResignActive() {
  scanner_.guard([this] { platform_.application->setIdleTimerDisabled(false); });
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

// A still that there is no memory for is one that cannot be decoded: the rest of the look counts.
std::optional<bool> ShowEngine::seatIsWhite() const {
  try {
    return seatIsWhiteInStill();
  } catch (const std::bad_alloc&) {
    return std::nullopt;
  }
}

// A missing still leaves the torch as it is, seat or no seat; one that no seat looks at is not
// decoded.
std::optional<bool> ShowEngine::seatIsWhiteInStill() const {
  const SeatState& seat = state_.seat;
  const std::string name = "Maps/v" + std::to_string(seat.currentVenueId) + "_m" +
                           std::to_string(seat.currentPixelMapId) + "_f" +
                           std::to_string(seat.currentVideoMinutes) + ".jpg";
  if (stills_ != nullptr) {
    const auto still = stills_->find(name);
    if (!still) return std::nullopt;
    if (!hasSeat()) return false;
    if (!*still) return std::nullopt;
    const auto pixel = drawnPixel(**still, seat.currentXPos, seat.currentYPos);
    return pixel && isWhite(pixel->data());
  }
  const auto bytes = platform_.bundles->main.readResource(name, kLargestStill);
  if (!bytes) return std::nullopt;
  if (!hasSeat()) return false;
  auto row = platform_.images->decodeRow(*bytes, seat.currentYPos);
  if (!row) return std::nullopt;
  const Image line{row->width, std::min<std::uint32_t>(row->height, 1), std::move(row->rgba)};
  std::optional<BitmapContext> bitmap = createARGBBitmapContextFromImage(line);
  if (!bitmap) return std::nullopt;
  // The seat lies above or below the picture.
  if (line.rgba.empty()) return false;
  drawRow(line, 0, *bitmap);
  const std::uint8_t* pixel = bitmap->pixelAt(seat.currentXPos, 0);
  return pixel != nullptr && isWhite(pixel);
}

}  // namespace halvora
