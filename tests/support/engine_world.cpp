// SPDX-License-Identifier: Apache-2.0
#include "tests/support/engine_world.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "light/display_list.h"

namespace halvora {

namespace {

/// A random flash or torch timer, and the slowest fade, end within so long.
constexpr Duration kLongestPause = milliseconds(5100);
constexpr Duration kFade = milliseconds(1001);
constexpr Duration kCycle = milliseconds(1000);
/// Long enough for a reset and for the slowest crossfade, there and back, that it found under way.
constexpr Duration kUntilIdle = milliseconds(25'000);
/// Low light, cycle, range and reception; each start has the last three.
constexpr std::size_t kIdleTimers = 12;
constexpr std::size_t kTimersAStart = 6;
/// Of one look: flash, torch, gobo, container, clips, notice and ramp.
constexpr std::size_t kTimersALook = 8;

std::string videoOf(int map) {
  return "/main/HVAssets/Maps/Venue-" + std::to_string(EngineWorld::kVenue) + "/" +
         std::to_string(map) + "/video.mp4";
}

VirtualPhoneSetup setupOf(std::uint64_t chance, const ImageDecoder& images, bool hasTorch) {
  VirtualPhoneSetup setup;
  setup.random = std::make_unique<SeededRandom>(chance);
  setup.documents = "/documents";
  setup.images = &images;
  setup.hasTorch = hasTorch;
  return setup;
}

bool isShare(double value) { return value >= 0 && value <= 1; }

bool isColour(const MaybeColour& colour) {
  const auto isLevel = [](float level) { return level >= 0 && level <= 1; };
  return !colour || (isLevel(colour->red) && isLevel(colour->green) && isLevel(colour->blue) &&
                     isLevel(colour->alpha));
}

constexpr const char* kPalettes =
    R"({"palettes":[{"id":1,"colours":["#FF2D55","#34C759","#007AFF"]},)"
    R"({"id":2,"colours":["#000000"]},{"id":50,"colours":["#FFFFFF",7,"#010203"]}]})";

}  // namespace

/// Notes every level that is asked for, before the screen clamps it.
class EngineWorld::WatchedScreen final : public Screen {
 public:
  explicit WatchedScreen(EngineWorld& world) : world_(world) {}
  Size bounds() const override { return {390, 844}; }
  double brightness() const override { return level; }
  void setBrightness(double wanted) override {
    // A ramp's last step may pass the end of the scale.
    constexpr double kStep = 0.0101;
    world_.require(wanted >= -kStep && wanted <= 1 + kStep, "a screen's level is in range");
    const double next = std::clamp(wanted, 0.0, 1.0);
    world_.require(next <= level || world_.isInside(),
                   "no screen is made brighter outside the venue");
    level = next;
  }
  float currentEDRHeadroom() const override { return 1; }

  double level = 0.5;

 private:
  EngineWorld& world_;
};

class EngineWorld::WatchedTorch final : public Torch {
 public:
  explicit WatchedTorch(EngineWorld& world) : world_(world) {}
  bool hasTorch() const override { return world_.hasTorch_; }
  bool hasFlash() const override { return world_.hasTorch_; }
  void setOn(bool on) override {
    world_.require(world_.hasTorch_, "a phone without a torch is asked for none");
    const bool mayBeLit = world_.isInside() || world_.now() <= world_.mayFlickerUntil_;
    world_.require(!on || isOn || mayBeLit, "no torch goes on outside the venue");
    isLeftOn = on && (isLeftOn || !world_.isInside());
    isOn = on;
  }

  bool isOn = false;
  /// By a timer that outlived its show: see docs/behaviour.md, Torch.
  bool isLeftOn = false;

 private:
  EngineWorld& world_;
};

class EngineWorld::WatchedHaptics final : public Haptics {
 public:
  explicit WatchedHaptics(EngineWorld& world) : world_(world) {}
  void impact(ImpactStyle) override { feel(); }
  void playSystemSound(std::uint32_t) override { feel(); }
  void disposeSystemSound(std::uint32_t) override {}

 private:
  void feel() { world_.require(world_.isInside(), "nothing is felt outside the venue"); }

  EngineWorld& world_;
};

/// What is to be seen and measured of a phone.
struct EngineWorld::Picture {
  DisplayList items;
  double brightness = 0;
  bool isTorchOn = false;
  bool isStatusBarHidden = false;
  friend bool operator==(const Picture&, const Picture&) = default;
};

EngineWorld::EngineWorld(std::uint64_t chance, bool hasTorch)
    : phone_(json_, setupOf(chance, images_, hasTorch)),
      screen_(std::make_unique<WatchedScreen>(*this)),
      torch_(std::make_unique<WatchedTorch>(*this)),
      haptics_(std::make_unique<WatchedHaptics>(*this)),
      platform_(watchedPlatform()),
      hasTorch_(hasTorch) {
  phone_.queues.log.isKept = phone_.bluetooth.log.isKept = phone_.defaults.log.isKept = false;
  phone_.http.log.isKept = phone_.videoLog.isKept = false;
  phone_.virtualFiles.reads.isKept = phone_.virtualFiles.writes.isKept = false;
  phone_.mainBundle.folder = "/main";
  phone_.mainBundle.resources["HVAssets/palettes.json"] = kPalettes;
  phone_.loop.onTurnEnded([this] { checkTurn(); });
  makeEngine();
}

EngineWorld::~EngineWorld() {
  phone_.loop.onTurnEnded({});
  engine_.reset();
}

std::unique_ptr<const Platform> EngineWorld::watchedPlatform() {
  Platform platform = phone_.platform();
  platform.screen = *screen_;
  platform.haptics = *haptics_;
  platform.torch = *torch_;
  return std::make_unique<const Platform>(platform);
}

void EngineWorld::makeEngine() {
  ShowEngineOptions options;
  options.usageEndpoints = {"https://opens.example", "https://devices.example",
                            "https://signals.example"};
  engine_ = std::make_unique<ShowEngine>(*platform_, options);
  engine_->viewDidLoad();
}

template <class Act>
void EngineWorld::act(const Act& act) {
  require(phone_.loop.actAt(now(), act), "a turn ends");
}

void EngineWorld::require(bool isTrue, const char* rule) {
  if (isTrue || !complaint_.empty()) return;
  complaint_ = std::string(rule) + ", at " + std::to_string(toSeconds(now())) + " s";
}

void EngineWorld::start() {
  if (starts_ >= kMostStarts) return;
  // One that is refused starts nothing.
  if (engine_->isPermissionGranted()) ++starts_;
  act([this] { engine_->start(); });
}

void EngineWorld::beginAnew() {
  phone_.loop.onTurnEnded({});
  engine_.reset();
  // Seeks of the players and what jobs have posted are no timers of the engine's.
  require(phone_.loop.runFor({}), "a turn ends");
  require(pendingTimers() == 0, "an engine that goes leaves no timer");
  torch_->isOn = torch_->isLeftOn = false;
  wasInside_ = false;
  mayFadeUntil_ = mayFlickerUntil_ = now();
  starts_ = 0;
  looks_ = looksBefore_ = 0;
  makeEngine();
  phone_.loop.onTurnEnded([this] { checkTurn(); });
}

void EngineWorld::pass(Duration span) { require(phone_.loop.runFor(span), "time goes on"); }

void EngineWorld::hear(std::span<const std::uint8_t> manufacturerData) {
  const std::uint64_t before = engine_->diagnostics()[PacketFate::processed];
  act([&] {
    if (formatOf(manufacturerData) == BroadcastFormat::valid) {
      noteLook(decodeBroadcast(manufacturerData));
    }
    phone_.bluetooth.advertise(manufacturerData);
  });
  if (engine_->diagnostics()[PacketFate::processed] != before) ++looks_;
}

void EngineWorld::hear(const Broadcast& look) { hear(encodeBroadcast(look)); }

void EngineWorld::hearNothing() {
  act([this] { phone_.bluetooth.advertise(Advertisement{}); });
}

void EngineWorld::noteLook(const Broadcast& look) {
  constexpr int kRandomTorchOn = 3;
  if (look.ledMode == kRandomTorchOn) mayFlickerUntil_ = now() + kLongestPause;
}

void EngineWorld::becomeActive() {
  // The show is dropped in the next cycle, and its light fades then.
  mayFadeUntil_ = std::max(mayFadeUntil_, now() + kCycle + kFade);
  act([this] { phone_.application.becomeActive(); });
}

void EngineWorld::resignActive() {
  act([this] { phone_.application.resignActive(); });
}

void EngineWorld::turnPhone() {
  act([this] { phone_.application.changeOrientation(); });
}

void EngineWorld::sit(std::int64_t x, std::int64_t y, const std::string& section) {
  phone_.defaults.setFromOutside("xPos", x);
  phone_.defaults.setFromOutside("yPos", y);
  phone_.defaults.setFromOutside("selectedSection", section);
}

void EngineWorld::write(const std::string& key, std::optional<DefaultsValue> value) {
  phone_.defaults.setFromOutside(key, std::move(value));
}

void EngineWorld::setRadio(CentralState state) {
  act([&] { phone_.bluetooth.setState(state); });
}

void EngineWorld::setPermission(BluetoothAuthorization authorization) {
  phone_.bluetooth.setAuthorization(authorization);
}

void EngineWorld::setHost(Host host) {
  const auto acts = [this, host]() -> std::function<void()> {
    switch (host) {
      case Host::absent:
        return {};
      case Host::listens:
        return [] {};
      case Host::replacesItself:
        return [this] { setHost(Host::listens); };
      case Host::changesList:
        return [this] { engine_->setAllowedTransmitterIds({"1:1", "1:2", "1:255"}); };
      case Host::precomputes:
        return [this] {
          engine_->precomputePixelMapLUTsForVenueId(
              kVenue, 2, 1, [](int, int, const std::string&) {}, [](int, int) {});
        };
    }
    return {};
  };
  engine_->lightShowStartedCallback() = acts();
  engine_->lightShowStoppedCallback() = acts();
}

void EngineWorld::allow(std::vector<std::string> transmitters) {
  engine_->setAllowedTransmitterIds(std::move(transmitters));
}

void EngineWorld::putClip(int map, Clip clip) {
  const std::string path = videoOf(map);
  if (clip == Clip::absent) return phone_.virtualFiles.remove(path);
  constexpr std::size_t kFrames = 12;
  VirtualVideo video = VirtualVideo::ofPlaces(clip == Clip::empty ? 0 : kFrames, 16, 9);
  video.durationSeconds = 0.4;
  video.hasTrack = clip != Clip::unreadable;
  if (clip == Clip::damaged) video.readableFrames = kFrames / 2;
  // A signature of its own: a table of another one must not be shown.
  phone_.virtualFiles.put(path, "video", static_cast<double>(clip));
  phone_.virtualVideos.put(path, std::move(video));
}

void EngineWorld::putStill(int map, int frame, bool isWhite) {
  const std::uint8_t level = isWhite ? 255 : 254;
  phone_.mainBundle.resources["Maps/v" + std::to_string(kVenue) + "_m" + std::to_string(map) +
                              "_f" + std::to_string(frame) + ".jpg"] =
      pixmapOf(4, 3, level, 255, 255);
}

void EngineWorld::removeStills() {
  std::erase_if(phone_.mainBundle.resources,
                [](const auto& resource) { return resource.first.starts_with("Maps/"); });
}

void EngineWorld::precompute(int venue, std::int64_t x, std::int64_t y) {
  act([&] { engine_->precomputePixelMapLUTsForVenueId(venue, x, y); });
}

void EngineWorld::invalidate(int venue) {
  act([&] { engine_->invalidatePixelMapSeatLUTCacheForVenueId(venue); });
}

void EngineWorld::playVideo(const std::string& name) {
  act([&] { engine_->playVideo(name); });
}

void EngineWorld::layOut(double width, double height) {
  engine_->viewWillLayoutSubviews(Rect{0, 0, width, height});
}

void EngineWorld::dim(double level) { screen_->level = std::clamp(level, 0.0, 1.0); }

void EngineWorld::jumpClock(double seconds) { phone_.wallClock.begin.secondsSince1970 += seconds; }

void EngineWorld::checkTurn() {
  checkLevels();
  checkState();
  checkEmission();
  checkTimers();
}

void EngineWorld::checkLevels() {
  const ViewStack& views = engine_->views();
  bool isGood = true;
  for (std::size_t at = 0; at < kViewCount; ++at) {
    isGood = isGood && isShare(views.alpha(static_cast<ViewId>(at)));
  }
  require(isGood, "an alpha is in range");
  require(
      isShare(views.shownAlpha(ViewId::container)) && isShare(views.shownAlpha(ViewId::goboView)),
      "a shown alpha is in range");
  require(isColour(views.lightColour()) && isColour(views.shownLight()), "a light is a colour");
}

void EngineWorld::checkState() {
  const EngineState& state = engine_->state();
  const auto isByte = [](int value) { return value >= 0 && value <= 255; };
  const auto isPercentage = [](int value) { return value >= 0 && value <= 100; };
  const ScreenState& screen = state.screen;
  require(screen.currentMode <= 255 && isByte(screen.currentModeSpeed) &&
              isPercentage(screen.currentPerc),
          "a screen mode is in range");
  const TorchState& torch = state.torch;
  require(isByte(torch.currentLEDMode) && isByte(torch.currentLEDSpeed) &&
              isPercentage(torch.currentLEDPerc),
          "a torch mode is in range");
  require(torch.torchIsOn == torch_->isOn, "the torch is as it was set");
  const GoboState& gobo = state.gobo;
  require(isByte(gobo.currentGobo) && gobo.currentGoboMode <= 255 &&
              isByte(gobo.currentGoboSpeed) && gobo.goboDelay >= 0 && gobo.goboDelay <= 4,
          "a gobo is in range");
  const ColourState& colour = state.colour;
  require(isShare(colour.currentMaster) && isColour(colour.currentColour), "a colour is one");
  require(colour.colorsArray == nullptr || colour.currentPaletteIndex < colour.colorsArray->size(),
          "a palette's place is in it");
  const VideoState& video = state.video;
  require(isByte(video.currentVideoId) && isByte(video.currentVideoStatus) &&
              video.currentVideoMilliseconds >= 0,
          "a clip is in range");
  const PresenceState& presence = state.presence;
  require(presence.outOfRangeCount >= 0 && presence.outOfRangeCount <= 7 && presence.fps >= 0 &&
              presence.activeFPS <= presence.fps && presence.fps <= presence.broadcastCount,
          "what was heard is counted");
}

void EngineWorld::checkEmission() {
  const bool isInside = engine_->isInsideVenue();
  if (wasInside_ && !isInside) mayFadeUntil_ = std::max(mayFadeUntil_, now() + kFade);
  wasInside_ = isInside;
  if (isInside || now() < mayFadeUntil_) return;
  require(engine_->views().shownAlpha(ViewId::container) == 0, "no light outside the venue");
}

void EngineWorld::checkTimers() {
  if (now() - half_ > kLongestPause) {
    half_ = now();
    looksBefore_ = std::exchange(looks_, 0);
  }
  const std::size_t most = kIdleTimers + kTimersAStart * static_cast<std::size_t>(starts_) +
                           kTimersALook * (looks_ + looksBefore_ + 1);
  require(pendingTimers() <= most, "timers are bounded");
}

void EngineWorld::settle() {
  setPermission(BluetoothAuthorization::allowedAlways);
  // Off first: only a change is reported, and a refused start has called the radio off as well.
  setRadio(CentralState::poweredOff);
  setRadio(CentralState::poweredOn);
  setHost(Host::absent);
  allow({});
  if (starts_ == 0) start();
  becomeActive();
  pass(kUntilIdle);
  EngineWorld fresh(1, hasTorch_);
  while (fresh.starts_ < starts_) fresh.start();
  fresh.pass(kUntilIdle);
  checkReset(fresh.pendingTimers());
  require(pictureOfProbe() == fresh.pictureOfProbe(),
          "a look after a reset is what it is on a fresh phone");
}

void EngineWorld::checkReset(std::size_t freshTimers) {
  const EngineState& state = engine_->state();
  const PresenceState& presence = state.presence;
  require(!presence.insideVenue && !presence.resetApp && presence.setupOnce &&
              !presence.hasCurrentBroadcast && !presence.transmitterFound &&
              presence.currentSequence == 0 && presence.outOfRangeCount == 0 && presence.fps == 0 &&
              presence.activeFPS == 0 && presence.lastFPS == 0 && presence.lastActiveFPS == 0,
          "a reset leaves nothing heard");
  // A fade that was under way has scheduled a last step, which did nothing; its name stays.
  const auto isOver = [this](TimerId timer) { return !phone_.loop.isPending(timer); };
  const ScreenState& screen = state.screen;
  require(screen.currentMode == 0 && screen.currentModeSpeed == 0 && !screen.runEffectAnimation &&
              !screen.effectOn && isOver(screen.animationTimer) &&
              isOver(screen.strobeAnimationTimer),
          "a reset leaves no screen mode");
  const TorchState& torch = state.torch;
  require(torch.currentLEDMode == 0 && torch.currentLEDSpeed == 0 && !torch.runLEDEffectAnimation &&
              !torch.ledEffectOn && isOver(torch.ledAnimationTimer) &&
              isOver(torch.ledStrobeAnimationTimer),
          "a reset leaves no torch mode");
  const VideoState& video = state.video;
  require(video.currentVideoId == 0 && video.currentVideoStatus == 0 &&
              video.currentVideoMilliseconds == 0 && video.videoCanPlay && !video.isCatchingUp &&
              isOver(video.videoPlayTimer),
          "a reset leaves no clip");
  require(displayListOf(engine_->views(), screen_->bounds()).empty(), "a reset leaves no light");
  require(!torch_->isOn || torch_->isLeftOn, "a reset leaves no torch on");
  require(screen_->level <= engine_->brightness().originalBrightness(),
          "a reset gives the screen back");
  // A pulse that was fading out when the show was dropped goes on unseen.
  const bool mayPulse = state.gobo.currentGoboMode == 11 || state.gobo.currentGoboMode == 12;
  require(pendingTimers() >= freshTimers && pendingTimers() <= freshTimers + (mayPulse ? 1 : 0),
          "a reset leaves the timers of an idle engine");
}

// A steady look, a second after it was heard.
EngineWorld::Picture EngineWorld::pictureOfProbe() {
  Broadcast look;
  look.applicationId = 1;
  look.venueId = kVenue;
  look.master = 255;
  look.mode = 1;
  look.speed = 77;
  look.red = 200;
  look.green = 10;
  look.ledMode = 1;
  look.sequence = 1;
  look.transmitter = 1;
  hear(look);
  require(engine_->isInsideVenue(), "an idle phone obeys a look");
  pass(milliseconds(2000));
  Picture picture{displayListOf(engine_->views(), screen_->bounds()), screen_->level, torch_->isOn,
                  engine_->prefersStatusBarHidden()};
  // Not left behind for whatever comes next.
  becomeActive();
  pass(milliseconds(3000));
  return picture;
}

}  // namespace halvora
