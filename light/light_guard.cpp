// SPDX-License-Identifier: Apache-2.0
#include "light/light_guard.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace halvora {

namespace {

// Of one turn; a look writes three at most.
constexpr std::size_t kMostWrites = 16;
// A backlight has steps; one that is further off than these does as it likes.
constexpr double kDeaf = 0.05;
// Whoever has moved the backlight further than this since has set it themselves; the steps of the
// coarsest backlights are less than twice this wide.
constexpr double kTheirs = 0.1;

// Views that light comes from; the others are words for whoever holds the phone.
constexpr ViewId kLit[] = {ViewId::container,   ViewId::lightView,   ViewId::videoBackgroundView,
                           ViewId::playerViewA, ViewId::playerViewB, ViewId::goboView,
                           ViewId::goboImage,   ViewId::dimmerView};

// The light of one look under the words of another.
LightLook lightOf(const LightLook& light, LightLook words) {
  for (const ViewId view : kLit) words.visible[indexOf(view)] = light.of(view);
  words.light = light.light;
  words.gobo = light.gobo;
  return words;
}

}  // namespace

double LightGuard::GuardedScreen::brightness() const {
  const auto& wanted = guard_.wantedBacklight_;
  return wanted ? *wanted : device_.brightness();
}

void LightGuard::GuardedScreen::setBrightness(double level) {
  const double clamped = std::clamp(level, 0.0, 1.0);
  if (!guard_.isGuarding()) {
    guard_.ours_ = clamped;
    guard_.level_.reset();
    return device_.setBrightness(level);
  }
  guard_.wantedBacklight_ = clamped;
  if (guard_.writes_.size() == kMostWrites) guard_.writes_.erase(guard_.writes_.begin());
  guard_.writes_.push_back(clamped);
  guard_.decideSoon();
}

void LightGuard::GuardedTorch::setOn(bool on) {
  guard_.wantsTorch_ = on;
  if (guard_.isGuarding()) return guard_.decideSoon();
  guard_.isTorchOn_ = on;
  device_.setOn(on);
}

void LightGuard::GuardedHaptics::impact(ImpactStyle style) {
  if (guard_.limits_.vibration && !guard_.hasLeft_) device_.impact(style);
}

void LightGuard::GuardedHaptics::playSystemSound(std::uint32_t sound) {
  if (guard_.limits_.vibration && !guard_.hasLeft_) device_.playSystemSound(sound);
}

LightGuard::LightGuard(const Platform& platform, ViewStack& views, TimerSet& timers,
                       PictureMeans* pictures)
    : device_(platform.screen),
      lamp_(platform.torch),
      platform_(platform),
      views_(views),
      timers_(timers),
      screen_(*this, device_),
      torch_(*this, lamp_),
      haptics_(*this, platform.haptics),
      sharedPictures_(pictures) {}

LightGuard::~LightGuard() {
  timers_.invalidate(soon_);
  timers_.invalidate(retry_);
  timers_.invalidate(back_);
  if (views_.filter() == this) views_.setFilter(nullptr);
}

void LightGuard::setLimits(const LightLimits& limits) {
  if (limits == limits_) return;
  limits_ = limits;
  limits_.mostBrightness = std::clamp(limits.mostBrightness, 0.0, 1.0);
  rewire();
}

// Who guards nothing is not there: the show writes and draws as if nobody had ever asked.
void LightGuard::rewire() {
  const bool hadLimiter = limiting_ != nullptr;
  const bool wantsLimiter = limits_.flash == FlashPolicy::limited;
  guards_ = limits_ != LightLimits{} || hasLeft_ || isMoving();
  // What is lit already comes down, too, and goes back up with the limit.
  if (device_.brightness() > limits_.mostBrightness) keepWantedBacklight();
  if (guards_) writes_.reserve(kMostWrites);
  if (wantsLimiter && !hadLimiter) {
    LightLook shown = lookOf(views_);
    // Black for as long as it takes to know what else it would be.
    if (!isKnown(shown)) shown = darkened(std::move(shown));
    const Emission present{meanOf(shown), device_.brightness(), isTorchOn_};
    limiting_ = std::make_unique<Limiting>(present, std::move(shown));
  }
  if (!wantsLimiter) limiting_.reset();
  LightFilter* const filter = guards_ ? this : nullptr;
  if (views_.filter() != filter) views_.setFilter(filter);
  decideNow();
}

void LightGuard::leave(double backlight) {
  if (hasLeft_) return;
  keepWantedBacklight();
  if (!owesBacklight()) ours_.reset();
  awayBacklight_ = backlight;
  moveGate(false);
}

void LightGuard::comeBack() {
  if (!hasLeft_) return;
  moveGate(true);
  rewireOnceBack();
}

// Who has come back whole, and has no limits, has no guard either.
void LightGuard::rewireOnceBack() {
  timers_.invalidate(back_);
  try {
    back_ = timers_.after(kLeaving, [this] {
      back_ = 0;
      rewire();
    });
  } catch (...) {
    // The guard stays, and lets all through a turn later.
  }
}

// From where it is.
void LightGuard::moveGate(bool open) {
  const Duration done = std::min(timers_.now() - gateMoved_, kLeaving);
  gateMoved_ = timers_.now() - (kLeaving - done);
  hasLeft_ = !open;
  rewire();
  views_.lookAgain();
}

double LightGuard::gate() const {
  const double part =
      std::clamp(toSeconds(timers_.now() - gateMoved_) / toSeconds(kLeaving), 0.0, 1.0);
  return hasLeft_ ? 1 - part : part;
}

bool LightGuard::isMoving() const { return timers_.now() - gateMoved_ < kLeaving; }

// The device has what the show gave it, and nobody else has changed that since.
bool LightGuard::owesBacklight() const {
  return ours_ && std::abs(device_.brightness() - *ours_) <= kTheirs;
}

// What the show has written counts again when it is back.
void LightGuard::keepWantedBacklight() {
  if (!wantedBacklight_ && owesBacklight()) wantedBacklight_ = device_.brightness();
}

// Once: from then on it is theirs whose phone it is.
void LightGuard::giveBackBacklight() {
  ours_.reset();
  level_.reset();
  if (device_.brightness() == awayBacklight_) return;
  device_.setBrightness(awayBacklight_);
  isDeaf_ = std::abs(device_.brightness() - awayBacklight_) > kDeaf;
}

void LightGuard::goAway(double backlight) {
  if (limiting_ == nullptr || isAway_) return;
  keepWantedBacklight();
  if (!owesBacklight()) ours_.reset();
  isAway_ = true;
  awayBacklight_ = backlight;
  decideNow();
}

void LightGuard::returnToApplication() {
  if (!isAway_) return;
  isAway_ = false;
  decideNow();
}

void LightGuard::end(double backlight) {
  if (limiting_ == nullptr) return;
  if (isTorchOn_) lamp_.setOn(false);
  if (owesBacklight()) device_.setBrightness(backlight);
  isTorchOn_ = false;
  ours_.reset();
}

Levels LightGuard::shownScreen() {
  if (container_ == std::nullopt) container_ = device_.bounds();
  return meanOf(guards_ ? decide() : lookOf(views_));
}

LightLook LightGuard::lookInto(Size container) {
  container_ = container;
  return decide();
}

void LightGuard::decideSoon() {
  if (soon_ != 0) return;
  try {
    soon_ = timers_.soon([this] {
      soon_ = 0;
      decideNow();
    });
  } catch (...) {
    // Without memory for a turn of its own it is decided in this one.
    decideNow();
  }
}

// In a turn of the guard's own: a face that shows something else by now is told.
void LightGuard::decideNow() {
  const Emission before = limiting_ ? limiting_->limiter.last() : Emission();
  decide();
  if (limiting_ && limiting_->limiter.last() != before) views_.lookAgain();
}

// Asked for as soon as there is a picture, most of which fade in: it is known before it is seen.
bool LightGuard::isKnown(const LightLook& look) {
  if (sharedPictures_ != nullptr || !look.gobo || look.gobo->empty()) return true;
  const bool isKnown = ownPictures().isKnown(*look.gobo);
  return isKnown || shownGobo(look) == nullptr;
}

Levels LightGuard::meanOf(const LightLook& look) {
  const std::string* const gobo = shownGobo(look);
  if (gobo == nullptr) return halvora::meanOf(look, {});
  const Size size = container_.value_or(device_.bounds());
  return halvora::meanOf(look, sharedPictures_ != nullptr ? sharedPictures_->of(*gobo, size)
                                                          : ownPictures().of(*gobo, size));
}

// What nobody can judge yet, a picture whose mean is being made, waits as a fourth flash would:
// with the light that was there before, which is known, or black where that is on its way.
LightLook LightGuard::wantedLook() {
  LightLook look = lookOf(views_);
  look.visible[indexOf(ViewId::container)] *= gate();
  if (!limiting_ || isKnown(look)) return look;
  if (isGoingDark(views_) || hasLeft_) return darkened(std::move(look));
  return lightOf(limiting_->lastShown, std::move(look));
}

Emission LightGuard::wanted(const LightLook& look) {
  Emission emission;
  if (limiting_) emission.screen = meanOf(look);
  emission.torch = wantsTorch_ && limits_.torch && !hasLeft_ && !isAway_;
  if (isGone() && !isDeaf_ && owesBacklight()) {
    emission.backlight = awayBacklight_;
  } else if (isGone() || isDeaf_ || !wantedBacklight_) {
    if (limiting_) emission.backlight = recentLevel();
  } else {
    emission.backlight = std::min(*wantedBacklight_, limits_.mostBrightness);
  }
  return emission;
}

LightLook LightGuard::decide() {
  if (!guards_) {
    // The last limit is gone: what the show wants is what there is.
    LightLook look = lookOf(views_);
    const Emission all = wanted(look);
    send({ShownScreen::wanted, all, true}, all);
    wantedBacklight_.reset();
    retryAfter(std::nullopt);
    return look;
  }
  LightLook look = wantedLook();
  const Emission all = wanted(look);
  ShownLight shown{ShownScreen::wanted, all, true};
  if (limiting_) {
    shown = limiting_->limiter.decide({all, isGoingDark(views_) || hasLeft_}, timers_.now());
  }
  send(shown, all);
  retryAfter(limiting_ ? limiting_->limiter.retryAfter() : std::nullopt);
  if (shown.screen == ShownScreen::held) look = lightOf(limiting_->lastShown, std::move(look));
  if (shown.screen == ShownScreen::dark) look = darkened(std::move(look));
  if (limiting_) limiting_->lastShown = look;
  return look;
}

void LightGuard::send(const ShownLight& shown, const Emission& wanted) {
  if (shown.emission.torch != isTorchOn_) {
    isTorchOn_ = shown.emission.torch;
    lamp_.setOn(isTorchOn_);
  }
  const bool isHeld = shown.emission.backlight != wanted.backlight;
  if (!wantedBacklight_ || isGone() || isHeld) {
    writes_.clear();
    // Giving the level back may be a rise, and waits like any other.
    if (isGone() && !isHeld && !isDeaf_ && owesBacklight()) giveBackBacklight();
    return;
  }
  const double level = std::min(*wantedBacklight_, limits_.mostBrightness);
  // Whatever was held goes straight to the newest.
  if (writes_.empty() && !isDeaf_ && recentLevel() != level) writes_.push_back(level);
  for (const double write : writes_) writeBacklight(std::min(write, limits_.mostBrightness));
  writes_.clear();
  if (*wantedBacklight_ <= limits_.mostBrightness) wantedBacklight_.reset();
}

void LightGuard::writeBacklight(double level) {
  ours_ = level;
  level_.reset();
  device_.setBrightness(level);
  isDeaf_ = std::abs(device_.brightness() - level) > kDeaf;
}

// At most one: the newest.
void LightGuard::retryAfter(std::optional<Duration> pause) {
  timers_.invalidate(retry_);
  if (!pause) return;
  try {
    retry_ = timers_.after(*pause, [this] {
      retry_ = 0;
      decideNow();
    });
  } catch (...) {
    // What is held stays held until the next turn or frame looks at it.
  }
}

GoboMeans& LightGuard::ownPictures() {
  if (!ownPictures_) {
    ownPictures_ = std::make_unique<GoboMeans>(platform_, [this] {
      decideNow();
      views_.lookAgain();
    });
  }
  return *ownPictures_;
}

// A question to the system, which a frame is not to wait for. Others move a backlight slowly.
double LightGuard::recentLevel() {
  const Duration now = timers_.now();
  const bool holds = level_ && now >= level_->time && now - level_->time < kLevelHolds;
  if (!holds) level_ = Level{device_.brightness(), now};
  return level_->level;
}

}  // namespace halvora
