// SPDX-License-Identifier: Apache-2.0
#include "engine/halvora_view_controller.h"

#include <utility>

#include "light/bitmap.h"
#include "platform/image.h"
#include "platform/json.h"
#include "platform/user_defaults.h"

namespace halvora {

namespace {

constexpr std::size_t kLargestPaletteFile = 4 << 20;
constexpr std::size_t kLargestStill = 32 << 20;
constexpr Duration kLowLightPoll = milliseconds(500);
constexpr Duration kShowFade = milliseconds(1000);

std::string assetFolder(const Bundle& bundle) {
  return bundle.resourcePath().empty() ? "" : bundle.resourcePath() + "/HVAssets";
}

// A bucket is a folder within the documents; a text that leads out of them names none.
std::string goboDocuments(const std::string& documents, const std::string& bucket) {
  const std::string within = "/" + bucket + "/";
  const bool leadsOut = bucket.starts_with('/') || within.find("/../") != std::string::npos;
  return documents.empty() || bucket.empty() || leadsOut ? "" : documents + within + "Gobo";
}

}  // namespace

HalvoraViewController& HalvoraViewController::sharedInstance(const Platform& platform,
                                                             EngineOptions options) {
  // Never destroyed: a host's own statics may still ask for it while the process ends.
  static auto* const kInstance = new HalvoraViewController(platform, std::move(options));
  return *kInstance;
}

HalvoraViewController::HalvoraViewController(const Platform& platform, EngineOptions options,
                                             std::optional<ShowParts> parts)
    : platform_(platform),
      hasOwnPalettes_(options.palettes == nullptr),
      palettesArray_(hasOwnPalettes_ ? std::make_shared<const std::vector<Palette>>()
                                     : std::move(options.palettes)),
      timers_(platform.runLoop),
      views_(timers_),
      overlays_(state_.screen, views_, timers_),
      torch_(state_.torch, timers_, platform.random, platform.torch,
             [this] { return seatIsWhite(); }),
      gobo_(state_.gobo, views_, platform.random),
      video_(state_.video, views_, timers_, platform.videoPlayers),
      seatLut_(platform_,
               {[this] { return state_.seat.currentVideoMinutes; },
                [this] { refreshMode21ColorIfNeeded(); }},
               options.seatLuts),
      parts_(parts ? *parts : ShowParts{torch_, gobo_, overlays_, video_, seatLut_}),
      brightness_(platform.screen, timers_, state_.colour),
      modes_(state_.screen, state_.colour, views_, timers_, platform.random, parts_.overlays,
             [this] { return seatLight(); }),
      processor_({platform_, state_, palettesArray_, callbacks_, timers_, views_, brightness_,
                  modes_, parts_}),
      usage_(platform.wallClock, platform.calendar, platform.defaults, platform.http,
             platform.bundles.main.identifier(), std::move(options.usageEndpoints)),
      scanner_(platform_, state_.presence, timers_, *this) {}

HalvoraViewController::~HalvoraViewController() {
  // The queues wait for the build that is under way.
  seatLut_.end();
  timers_.invalidate(lowLightHintTimer_);
  platform_.application.removeObserver(*this);
}

void HalvoraViewController::viewDidLoad() {
  state_.isStatusBarHidden = false;
  platform_.application.addObserver(*this);
  if (hasOwnPalettes_) loadPalettes();
  pixelMapLUTDecodeQueue_ = platform_.queues.make("com.halvora.sdk.pixelmap.lut.decode");
  pixelMapLiveDecodeQueue_ = platform_.queues.make("com.halvora.sdk.pixelmap.live.decode");
  seatLut_.useQueues(*pixelMapLUTDecodeQueue_, *pixelMapLiveDecodeQueue_);
  parts_.seatLut.clearActiveSeatLUT();
  pairedBucketID_ = textForKey(platform_.defaults, "pairedBucketID").value_or("");
  platform_.application.useAudioPlaybackCategory();

  views_.setText(ViewId::pairingCodeLabel, "0000");
  const std::string assets = assetFolder(platform_.bundles.main);
  gobo_.build({goboDocuments(getPrivateDocumentsDirectory(), pairedBucketID_),
               assets.empty() ? assets : assets + "/Gobos"});
  video_.build(assets);
  views_.setAlpha(ViewId::dimmerView, 1.0 - state_.colour.currentMaster);
  overlays_.build(
      hvLocalizedStringForKey("hv_map_no_seat_overlay_message",
                              "No seat selected for this part of the light show.\n"
                              "Keep the app open to continue taking part."),
      hvLocalizedStringForKey("hv_low_light_hint", "Light show active. Please keep the app open."));
  timers_.invalidate(lowLightHintTimer_);
  lowLightHintTimer_ =
      timers_.every(kLowLightPoll, [this] { parts_.overlays.updateLowLightHintState(); });

  state_.presence.setupOnce = true;
  brightness_.saveOriginalBrightness();
  // The toggling modes begin lit, so that their first command goes dark on every phone alike.
  state_.screen.lastTurnOn = true;
}

// Whatever is wrong with the file, the show goes on in the commands' own colours.
void HalvoraViewController::loadPalettes() {
  const auto text =
      platform_.bundles.main.readResource("HVAssets/palettes.json", kLargestPaletteFile);
  if (!text) return;
  const std::optional<JsonValue> document = platform_.json.parse(*text);
  if (document) {
    palettesArray_ = std::make_shared<const std::vector<Palette>>(parsePalettes(*document));
  }
}

void HalvoraViewController::viewWillLayoutSubviews(const std::optional<Rect>& superviewBounds) {
  frame_ = superviewBounds.value_or(Rect{});
}

std::string HalvoraViewController::hvLocalizedStringForKey(std::string_view key,
                                                           std::string_view fallback) const {
  std::string text = platform_.bundles.kit.localizedString(key);
  return text.empty() || text == key ? std::string(fallback) : text;
}

PacketFate HalvoraViewController::processEffect(const Broadcast& broadcast) {
  return processor_.process(broadcast);
}

void HalvoraViewController::appDidBecomeActive() {
  state_.presence.resetApp = true;
  if (state_.presence.scanningAllowed) usage_.appOpened();
}

void HalvoraViewController::appWillResignActive() {
  platform_.application.setIdleTimerDisabled(false);
}

void HalvoraViewController::showReceptionRate(int packets) {
  if (state_.screen.currentMode == kFrameRateMode) {
    views_.setText(ViewId::fpsLabel, std::to_string(packets));
  }
}

void HalvoraViewController::dropShow() {
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

SeatLight HalvoraViewController::seatLight() {
  if (!hasSeat()) return {};
  return {true, parts_.seatLut.colorFromActivePixelMapSeatLUTForFrameIndex(
                    state_.seat.currentVideoMinutes)};
}

void HalvoraViewController::refreshMode21ColorIfNeeded() {
  const ScreenState& screen = state_.screen;
  if (screen.currentMode == kPixelMapMode && hasSeat()) {
    modes_.processMode(screen.currentMode, screen.currentModeSpeed);
  }
}

bool HalvoraViewController::hasSeat() const {
  return hasSelectedSection(platform_.defaults) && state_.seat.hasPosition();
}

// A missing still leaves the torch as it is, seat or no seat; one that no seat looks at is not
// decoded.
std::optional<bool> HalvoraViewController::seatIsWhite() const {
  const SeatState& seat = state_.seat;
  const std::string name = "Maps/v" + std::to_string(seat.currentVenueId) + "_m" +
                           std::to_string(seat.currentPixelMapId) + "_f" +
                           std::to_string(seat.currentVideoMinutes) + ".jpg";
  const auto bytes = platform_.bundles.main.readResource(name, kLargestStill);
  if (!bytes) return std::nullopt;
  if (!hasSeat()) return false;
  const std::optional<Image> image = platform_.images.decode(*bytes);
  if (!image) return std::nullopt;
  std::optional<BitmapContext> bitmap = createARGBBitmapContextFromImage(*image);
  if (!bitmap) return std::nullopt;
  drawRow(*image, seat.currentYPos, *bitmap);
  const std::uint8_t* pixel = bitmap->pixelAt(seat.currentXPos, seat.currentYPos);
  return pixel != nullptr && pixel[1] == 255 && pixel[2] == 255 && pixel[3] == 255;
}

}  // namespace halvora
