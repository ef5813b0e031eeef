// SPDX-License-Identifier: Apache-2.0
#include "venue/show/flash_meter.h"

#include <algorithm>
#include <cmath>

namespace halvora {

namespace {

constexpr Duration kSecond = milliseconds(1000);
constexpr int kMostHarmless = 3;
constexpr double kLeastChange = 0.1;
// A change does not count where even its darker side is as bright as this.
constexpr double kBright = 0.8;
constexpr double kSaturated = 0.8;
constexpr double kLeastDistance = 0.2;
// What sums of binary fractions lose.
constexpr double kRounding = 1e-9;

constexpr LinearColour kWhiteLight{1, 1, 1};

}  // namespace

// IEC 61966-2-1.
double linearOfLevel(double level) {
  if (level <= 0) return 0;
  if (level >= 1) return 1;
  return level <= 0.04045 ? level / 12.92 : std::pow((level + 0.055) / 1.055, 2.4);
}

double relativeLuminance(const LinearColour& colour) {
  return 0.2126 * colour.red + 0.7152 * colour.green + 0.0722 * colour.blue;
}

LinearColour lightOf(const PhoneLight& light) { return light.torch ? kWhiteLight : light.screen; }

void FlashFigure::take(const FlashFigure& other) {
  const bool isWorse =
      other.flashes > flashes || (other.flashes == flashes && flashes > 0 && other.at < at);
  if (isWorse) *this = other;
}

void FlashFigures::take(const FlashFigures& other) {
  general.take(other.general);
  red.take(other.red);
}

bool FlashFigures::areHarmless() const {
  return general.flashes <= kMostHarmless && red.flashes <= kMostHarmless;
}

Duration FlashFigures::at() const {
  FlashFigure worst = general;
  worst.take(red);
  return worst.at;
}

void FlashCurve::add(std::uint8_t Point::*what, Duration from, Duration to, int flashes) {
  const auto first = static_cast<std::size_t>(std::max(from, Duration::zero()) / kStep);
  const auto last = static_cast<std::size_t>(std::max(to, Duration::zero()) / kStep);
  if (points_.size() <= last) points_.resize(last + 1);
  const auto count = static_cast<std::uint8_t>(std::min(flashes, 255));
  for (std::size_t at = first; at <= last; ++at) {
    points_[at].*what = std::max(points_[at].*what, count);
  }
}

void FlashCurve::addGeneral(Duration from, Duration to, int flashes) {
  add(&Point::general, from, to, flashes);
}

void FlashCurve::addRed(Duration from, Duration to, int flashes) {
  add(&Point::red, from, to, flashes);
}

void FlashCurve::take(const FlashCurve& other) {
  if (points_.size() < other.points_.size()) points_.resize(other.points_.size());
  for (std::size_t at = 0; at < other.points_.size(); ++at) {
    points_[at].general = std::max(points_[at].general, other.points_[at].general);
    points_[at].red = std::max(points_[at].red, other.points_[at].red);
  }
}

void EyeMeter::Changes::add(Duration time) {
  if (count == 0) first = time;
  last = time;
  ++count;
}

EyeMeter::Seen EyeMeter::seenOf(Duration time, const LinearColour& colour) const {
  Seen seen;
  seen.time = time;
  seen.luminance = relativeLuminance(colour);
  seen.isDark = seen.luminance <= darkUpTo_;
  if (seen.isDark) return seen;
  seen.isRed = colour.red / (colour.red + colour.green + colour.blue) >= kSaturated - kRounding;
  const double x = 0.4124 * colour.red + 0.3576 * colour.green + 0.1805 * colour.blue;
  const double z = 0.0193 * colour.red + 0.1192 * colour.green + 0.9505 * colour.blue;
  const double whole = x + 15 * seen.luminance + 3 * z;
  seen.u = 4 * x / whole;
  seen.v = 9 * seen.luminance / whole;
  return seen;
}

// Of what was before a second only the light that it begins with belongs to it.
void EyeMeter::forget(Duration before) {
  while (begin_ + 1 < lights_.size() && lights_[begin_ + 1].time < before) ++begin_;
  if (lights_.size() - begin_ > kMostLights) begin_ = lights_.size() - kMostLights;
  // Only where there is no room left, and enough of it is free: a light costs the same however many
  // there are, and a crowd's phones hold little more than their last second.
  if (lights_.size() < lights_.capacity() || begin_ < lights_.size() / 16) return;
  lights_.erase(lights_.begin(), lights_.begin() + static_cast<std::ptrdiff_t>(begin_));
  begin_ = 0;
}

// From the furthest level since the last change.
EyeMeter::Changes EyeMeter::generalChanges(Second second) {
  const auto counts = [](double darker, double brighter) {
    return brighter - darker >= kLeastChange - kRounding && darker < kBright;
  };
  Changes changes;
  double low = second.front().luminance;
  double high = low;
  // Up: 1, down: -1.
  int direction = 0;
  for (const Seen& seen : second) {
    const bool falls = direction >= 0 && counts(seen.luminance, high);
    const bool rises = direction <= 0 && counts(low, seen.luminance);
    if (falls || rises) {
      direction = rises ? 1 : -1;
      low = high = seen.luminance;
      changes.add(seen.time);
    }
    low = std::min(low, seen.luminance);
    high = std::max(high, seen.luminance);
  }
  return changes;
}

// Darkness has no colour, and so is another one than any.
bool EyeMeter::isRedChange(const Seen& one, const Seen& other) {
  if (one.isRed == other.isRed) return false;
  if (one.isDark || other.isDark) return true;
  return std::hypot(one.u - other.u, one.v - other.v) > kLeastDistance;
}

// From any colour since the last change.
EyeMeter::Changes EyeMeter::redChanges(Second second) {
  Changes changes;
  auto since = second.begin();
  for (auto now = second.begin(); now != second.end(); ++now) {
    const bool goesOn = changes.count > 0 && now->isRed == since->isRed;
    const auto isChange = [now](const Seen& seen) { return isRedChange(seen, *now); };
    if (goesOn || !std::any_of(since, now, isChange)) continue;
    since = now;
    changes.add(now->time);
  }
  return changes;
}

void EyeMeter::remember(Seen seen) {
  if (!lights_.empty()) {
    const Seen& before = lights_.back();
    seen.way = before.way;
    if (seen.luminance > before.luminance) seen.way = 1;
    if (seen.luminance < before.luminance) seen.way = -1;
    seen.runs = static_cast<std::uint16_t>(before.runs + (seen.way == before.way ? 0 : 1));
    seen.crossings =
        static_cast<std::uint16_t>(before.crossings + (seen.isRed == before.isRed ? 0 : 1));
  }
  lights_.push_back(seen);
  forget(seen.time - kSecond);
}

void EyeMeter::add(Duration time, const LinearColour& colour, FlashCurve* curve) {
  if (!lights_.empty() && colour == last_) return;
  last_ = colour;
  remember(seenOf(time, colour));
  const Seen& first = second().front();
  const Seen& now = lights_.back();
  const auto count = [&](FlashFigure& worst, int most, Changes (*changesOf)(Second),
                         void (FlashCurve::*draw)(Duration, Duration, int)) {
    if (most == 0 || (curve == nullptr && most / 2 <= worst.flashes)) return;
    const Changes changes = changesOf(second());
    if (changes.flashes() > worst.flashes) worst = {changes.flashes(), changes.first};
    const bool isNew = changes.count > 0 && changes.last == time;
    if (curve != nullptr && isNew) (curve->*draw)(changes.first, time, changes.flashes());
  };
  const auto since = [](std::uint16_t begin, std::uint16_t end) {
    return static_cast<int>(static_cast<std::uint16_t>(end - begin));
  };
  count(general_, since(first.runs, now.runs) + 1, generalChanges, &FlashCurve::addGeneral);
  count(red_, since(first.crossings, now.crossings), redChanges, &FlashCurve::addRed);
}

void PhoneMeter::add(Duration time, const PhoneLight& light, FlashCurve* curve) {
  if (light.torch && !lit_) {
    lit_ = std::make_unique<Lit>();
    lit_->torch.add(time, {});
    lit_->both = screen_;
  }
  screen_.add(time, light.screen, curve);
  if (!lit_) return;
  lit_->torch.add(time, light.torch ? kWhiteLight : LinearColour{}, curve);
  lit_->both.add(time, lightOf(light), curve);
}

FlashFigures PhoneMeter::worst() const {
  FlashFigures worst = screen_.worst();
  if (lit_) {
    worst.take(lit_->torch.worst());
    worst.take(lit_->both.worst());
  }
  return worst;
}

}  // namespace halvora
