// SPDX-License-Identifier: Apache-2.0
#include "light/emission.h"

#include <algorithm>
#include <cmath>

namespace halvora {

namespace {

// IEC 61966-2-1.
double linearOf(double level) {
  const double in = std::clamp(level, 0.0, 1.0);
  return in <= 0.04045 ? in / 12.92 : std::pow((in + 0.055) / 1.055, 2.4);
}

}  // namespace

LinearLight screenLight(const Emission& emission) {
  const double backlight = std::clamp(emission.backlight, 0.0, 1.0);
  const Levels& screen = emission.screen;
  return {linearOf(screen.red) * backlight, linearOf(screen.green) * backlight,
          linearOf(screen.blue) * backlight};
}

Chromaticity chromaticityOf(const LinearLight& light) {
  const double x = 0.4124 * light.red + 0.3576 * light.green + 0.1805 * light.blue;
  const double y = light.luminance();
  const double z = 0.0193 * light.red + 0.1192 * light.green + 0.9505 * light.blue;
  const double sum = x + 15 * y + 3 * z;
  if (sum <= 0) return {};
  return {4 * x / sum, 9 * y / sum};
}

}  // namespace halvora
