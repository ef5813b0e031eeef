// SPDX-License-Identifier: Apache-2.0
#include "tests/fuzz/flash_judge.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <span>

namespace halvora {

namespace {

constexpr Duration kSecond = milliseconds(1000);

struct Moment {
  Duration time{};
  double luminance = 0;
  bool isDark = false;
  bool isRed = false;
  double u = 0;
  double v = 0;
};
using Moments = std::vector<Moment>;

Moment momentOf(Duration time, const LinearColour& colour) {
  Moment moment{time, relativeLuminance(colour)};
  const double sum = colour.red + colour.green + colour.blue;
  moment.isDark = sum <= 0;
  if (moment.isDark) return moment;
  moment.isRed = colour.red / sum >= 0.8;
  const double x = 0.4124 * colour.red + 0.3576 * colour.green + 0.1805 * colour.blue;
  const double z = 0.0193 * colour.red + 0.1192 * colour.green + 0.9505 * colour.blue;
  const double whole = x + 15 * moment.luminance + 3 * z;
  moment.u = 4 * x / whole;
  moment.v = 9 * moment.luminance / whole;
  return moment;
}

bool isChange(double one, double other) {
  return std::abs(one - other) >= 0.1 && std::min(one, other) < 0.8;
}

// The longest row of changes that go up and down by turns: from each value the next is looked for
// that is far enough the other way, and until then the value may be replaced by a more extreme one.
int luminanceChanges(std::span<const Moment> moments) {
  double low = moments.front().luminance;
  double high = low;
  int direction = 0;
  int changes = 0;
  for (const Moment& moment : moments) {
    const double now = moment.luminance;
    const bool up = direction <= 0 && now > low && isChange(low, now);
    const bool down = direction >= 0 && now < high && isChange(high, now);
    if (up || down) {
      direction = up ? 1 : -1;
      low = high = now;
      ++changes;
    } else {
      low = std::min(low, now);
      high = std::max(high, now);
    }
  }
  return changes;
}

bool isFar(const Moment& one, const Moment& other) {
  if (one.isRed == other.isRed) return false;
  if (one.isDark || other.isDark) return true;
  return std::hypot(one.u - other.u, one.v - other.v) > 0.2;
}

int redChanges(std::span<const Moment> moments) {
  int changes = 0;
  // 1: to red, -1: away from it.
  int direction = 0;
  std::size_t begin = 0;
  for (std::size_t at = 1; at < moments.size(); ++at) {
    const int now = moments[at].isRed ? 1 : -1;
    if (now == direction) continue;
    for (std::size_t from = begin; from < at; ++from) {
      if (!isFar(moments[from], moments[at])) continue;
      direction = now;
      begin = at;
      ++changes;
      break;
    }
  }
  return changes;
}

// Equal neighbours are one.
void keepChanges(Moments& moments) {
  const auto isSame = [](const Moment& one, const Moment& other) {
    return one.luminance == other.luminance && one.isDark == other.isDark && one.u == other.u &&
           one.v == other.v && one.isRed == other.isRed;
  };
  moments.erase(std::unique(moments.begin(), moments.end(), isSame), moments.end());
}

struct Eyes {
  Moments screen;
  Moments torch;
  Moments both;
};

Eyes eyesOf(const std::vector<JudgedLight>& lights) {
  Eyes eyes;
  for (const JudgedLight& judged : lights) {
    const PhoneLight& light = judged.light;
    const LinearColour white{1, 1, 1};
    eyes.screen.push_back(momentOf(judged.time, light.screen));
    eyes.torch.push_back(momentOf(judged.time, light.torch ? white : LinearColour{}));
    eyes.both.push_back(momentOf(judged.time, light.torch ? white : light.screen));
  }
  for (Moments* moments : {&eyes.screen, &eyes.torch, &eyes.both}) keepChanges(*moments);
  return eyes;
}

// From the light just before that change on.
std::span<const Moment> secondFrom(const Moments& moments, std::size_t change) {
  std::size_t end = change;
  while (end < moments.size() && moments[end].time - moments[change].time <= kSecond) ++end;
  return std::span(moments).subspan(change - 1, end - change + 1);
}

bool hasRoomAt(const Moments& moments, std::size_t last) {
  const Moment dark = momentOf(moments[last].time + Duration{1}, {});
  const auto changesSince = [&](Duration first, bool withDarkness) {
    std::size_t begin = last;
    while (begin > 0 && moments[begin - 1].time >= first) --begin;
    if (begin > 0) --begin;
    Moments second(moments.begin() + static_cast<std::ptrdiff_t>(begin),
                   moments.begin() + static_cast<std::ptrdiff_t>(last) + 1);
    if (withDarkness) second.push_back(dark);
    return std::max(luminanceChanges(second), redChanges(second));
  };
  // For whoever reads whole milliseconds.
  const auto whole = std::chrono::floor<std::chrono::milliseconds>(moments[last].time);
  return changesSince(whole - kSecond, false) <= 7 &&
         changesSince(moments[last].time - kSecond + Duration{1}, true) <= 7;
}

}  // namespace

JudgedFlashes judge(const std::vector<JudgedLight>& lights) {
  JudgedFlashes worst;
  const Eyes eyes = eyesOf(lights);
  for (const Moments* moments : {&eyes.screen, &eyes.torch, &eyes.both}) {
    for (std::size_t change = 1; change < moments->size(); ++change) {
      const auto second = secondFrom(*moments, change);
      worst.general = std::max(worst.general, luminanceChanges(second) / 2);
      worst.red = std::max(worst.red, redChanges(second) / 2);
    }
  }
  return worst;
}

bool keepWithRoom(const std::vector<JudgedLight>& lights) {
  const Eyes eyes = eyesOf(lights);
  for (const Moments* moments : {&eyes.screen, &eyes.torch, &eyes.both}) {
    for (std::size_t last = 0; last < moments->size(); ++last) {
      if (!hasRoomAt(*moments, last)) return false;
    }
  }
  return true;
}

}  // namespace halvora
