// SPDX-License-Identifier: Apache-2.0
#include "light/flash_ledger.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace halvora {

namespace {

constexpr Duration kWholeSecond = milliseconds(1000);
constexpr Duration kInstant{1};

// A little stricter than the rules (0.1, 0.8, 0.8 and 0.2), so that whoever measures figures that
// were rounded on their way comes to the same.
constexpr double kStep = 0.0995;
constexpr double kBright = 0.8005;
constexpr double kSaturated = 0.79;
constexpr double kFar = 0.195;

// Whoever reads whole milliseconds has lost up to one of them: the first time that still belongs to
// the second that ends now.
Duration beginOfSecond(Duration now) {
  return std::chrono::floor<std::chrono::milliseconds>(now) - kWholeSecond;
}

bool isFarApart(const Chromaticity& one, const Chromaticity& other) {
  const double u = one.u - other.u;
  const double v = one.v - other.v;
  return u * u + v * v > kFar * kFar;
}

// More than what rounding does to a colour that fades.
bool differs(const Chromaticity& one, const Chromaticity& other) {
  constexpr double kSame = 0.002;
  return std::abs(one.u - other.u) > kSame || std::abs(one.v - other.v) > kSame;
}

// 0 for darkness.
double shareOfRed(const LinearLight& light) {
  const double sum = light.red + light.green + light.blue;
  return sum > 0 ? light.red / sum : 0;
}

// Red here, and not yet, or only just, by the rule.
bool isHardlyRed(double share) { return share >= kSaturated && share < 0.805; }

}  // namespace

void ChangeTimes::add(Duration time) {
  times_[count_ % kKept] = time;
  ++count_;
}

void ChangeTimes::goOn(Duration time) {
  if (count_ > 0) times_[(count_ - 1) % kKept] = time;
}

int ChangeTimes::since(Duration first) const {
  int found = 0;
  for (std::size_t back = 1; back <= std::min(count_, kKept); ++back) {
    if (times_[(count_ - back) % kKept] < first) break;
    ++found;
  }
  return found;
}

std::optional<Duration> ChangeTimes::earliestSince(Duration first) const {
  const auto found = static_cast<std::size_t>(since(first));
  if (found == 0) return std::nullopt;
  return times_[(count_ - found) % kKept];
}

bool LuminanceChanges::isFall(double from, double to) const {
  return from - to >= kStep && to < kBright;
}

void LuminanceChanges::turn(Way way, double luminance, Duration time) {
  way_ = way;
  lowest_ = highest_ = luminance;
  times_.add(time);
}

void LuminanceChanges::add(double luminance, Duration time) {
  if (!hasBegun_) {
    hasBegun_ = true;
    lowest_ = highest_ = luminance;
    return;
  }
  if (way_ != Way::down && isFall(highest_, luminance)) return turn(Way::down, luminance, time);
  if (way_ != Way::up && isFall(luminance, lowest_)) return turn(Way::up, luminance, time);
  if (way_ != Way::none && (way_ == Way::up ? luminance > highest_ : luminance < lowest_)) {
    times_.goOn(time);
  }
  highest_ = std::max(highest_, luminance);
  lowest_ = std::min(lowest_, luminance);
}

void RedChanges::Seen::add(const Chromaticity& colour, bool dark) {
  if (dark) {
    isDark = true;
    return;
  }
  if (!isAny) least = most = colour;
  isAny = true;
  least = {std::min(least.u, colour.u), std::min(least.v, colour.v)};
  most = {std::max(most.u, colour.u), std::max(most.v, colour.v)};
}

// Darkness has no colour, so it differs from every one.
bool RedChanges::Seen::hasFarFrom(const Chromaticity& colour, bool dark) const {
  if (dark) return isAny;
  if (isDark) return true;
  if (!isAny) return false;
  const Chromaticity furthest{colour.u - least.u > most.u - colour.u ? least.u : most.u,
                              colour.v - least.v > most.v - colour.v ? least.v : most.v};
  return isFarApart(colour, furthest);
}

void RedChanges::add(const LinearLight& light, Duration time) {
  const bool isDark = light.isDark();
  const double share = shareOfRed(light);
  const bool isRed = share >= kSaturated;
  const Chromaticity colour = chromaticityOf(light);
  const Side side = isRed ? Side::red : Side::other;
  Seen& same = isRed ? reds_ : others_;
  Seen& opposite = isRed ? others_ : reds_;
  if (side_ != side && opposite.hasFarFrom(colour, isDark)) {
    side_ = side;
    times_.add(time);
    same = {};
    opposite = {};
    reached_ = colour;
  } else if (side_ == side && (isHardlyRed(share) || differs(colour, reached_))) {
    times_.goOn(time);
    reached_ = colour;
  }
  same.add(colour, isDark);
}

void FlashLedger::add(const Emission& emission, Duration now) {
  const LinearLight screen = screenLight(emission);
  const LinearLight both = emission.torch ? kTorchLight : screen;
  screen_.add(screen.luminance(), now);
  torch_.add(emission.torch ? 1 : 0, now);
  both_.add(both.luminance(), now);
  redOfScreen_.add(screen, now);
  redOfBoth_.add(both, now);
}

bool FlashLedger::mayEmit(const Emission& emission, Duration now, Darkness darkness) const {
  FlashLedger trial = *this;
  trial.add(emission, now);
  if (trial.mostSince(beginOfSecond(now)) > kMostChanges) return false;
  const bool isSoonest = darkness == Darkness::inTheSameMillisecond;
  const Duration dark = isSoonest ? now : now + kInstant;
  trial.add(halvora::darkness(emission), dark);
  return trial.mostSince(isSoonest ? beginOfSecond(now) : dark - kWholeSecond) <= kMostChanges;
}

template <class Visit>
void FlashLedger::eachTimes(const Visit& visit) const {
  for (const LuminanceChanges* changes : {&screen_, &torch_, &both_}) visit(changes->times());
  for (const RedChanges* changes : {&redOfScreen_, &redOfBoth_}) visit(changes->times());
}

int FlashLedger::mostSince(Duration first) const {
  int most = 0;
  eachTimes([&](const ChangeTimes& times) { most = std::max(most, times.since(first)); });
  return most;
}

std::optional<Duration> FlashLedger::nextRoom(Duration now) const {
  std::optional<Duration> next;
  eachTimes([&](const ChangeTimes& times) {
    const Duration first = beginOfSecond(now);
    // Room for darkness is kept, so this is as full as it gets.
    if (times.since(first) < kMostChanges - 1) return;
    const auto earliest =
        std::chrono::floor<std::chrono::milliseconds>(*times.earliestSince(first));
    const Duration room = earliest + kWholeSecond + milliseconds(1);
    if (!next || room < *next) next = room;
  });
  return next;
}

}  // namespace halvora
