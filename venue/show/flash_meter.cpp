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

void ChangeRow::add(Duration time) {
  const auto isOver = [time](Duration change) { return time - change > kSecond; };
  std::erase_if(times_, isOver);
  if (times_.size() >= kMost) times_.erase(times_.begin());
  times_.push_back(time);
  if (flashes() > worst_.flashes) worst_ = {flashes(), times_.front()};
}

void EyeMeter::add(Duration time, const LinearColour& colour, FlashCurve* curve) {
  if (hasBegun_ && colour == last_) return;
  const double luminance = relativeLuminance(colour);
  if (!hasBegun_) low_ = high_ = luminance;
  hasBegun_ = true;
  last_ = colour;
  addLuminance(time, luminance, curve);
  addColour(time, colour, curve);
}

void EyeMeter::addLuminance(Duration time, double luminance, FlashCurve* curve) {
  const auto counts = [](double darker, double brighter) {
    return brighter - darker >= kLeastChange - kRounding && darker < kBright;
  };
  const bool falls = direction_ >= 0 && counts(luminance, high_);
  const bool rises = direction_ <= 0 && counts(low_, luminance);
  if (!falls && !rises) {
    low_ = std::min(low_, luminance);
    high_ = std::max(high_, luminance);
    return;
  }
  direction_ = rises ? 1 : -1;
  low_ = high_ = luminance;
  general_.add(time);
  if (curve != nullptr) curve->addGeneral(general_.begin(), time, general_.flashes());
}

void EyeMeter::Places::add(const Place& place) {
  if (place.isDark) {
    hasDark = true;
    return;
  }
  if (!isAny) outer.fill(place);
  isAny = true;
  if (place.u < outer[0].u) outer[0] = place;
  if (place.u > outer[1].u) outer[1] = place;
  if (place.v < outer[2].v) outer[2] = place;
  if (place.v > outer[3].v) outer[3] = place;
}

// Darkness has no colour, and so is another one than any.
bool EyeMeter::Places::anyFarFrom(const Place& place) const {
  if (place.isDark) return isAny;
  if (hasDark) return true;
  return isAny && std::ranges::any_of(outer, [&place](const Place& seen) {
           return std::hypot(seen.u - place.u, seen.v - place.v) > kLeastDistance;
         });
}

void EyeMeter::addColour(Duration time, const LinearColour& colour, FlashCurve* curve) {
  const double sum = colour.red + colour.green + colour.blue;
  Place place;
  place.isDark = relativeLuminance(colour) <= darkUpTo_;
  const bool isRed = !place.isDark && colour.red / sum >= kSaturated - kRounding;
  if (!place.isDark) {
    const double x = 0.4124 * colour.red + 0.3576 * colour.green + 0.1805 * colour.blue;
    const double y = relativeLuminance(colour);
    const double z = 0.0193 * colour.red + 0.1192 * colour.green + 0.9505 * colour.blue;
    place.u = 4 * x / (x + 15 * y + 3 * z);
    place.v = 9 * y / (x + 15 * y + 3 * z);
  }
  const int now = isRed ? 1 : -1;
  Places& same = isRed ? reds_ : others_;
  Places& opposite = isRed ? others_ : reds_;
  if (redness_ != now && opposite.anyFarFrom(place)) {
    redness_ = now;
    same = opposite = {};
    red_.add(time);
    if (curve != nullptr) curve->addRed(red_.begin(), time, red_.flashes());
  }
  same.add(place);
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
