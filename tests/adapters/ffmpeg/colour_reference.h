// SPDX-License-Identifier: Apache-2.0
// Colours in double precision, straight from the definitions: what fixed point is compared with.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace halvora {

struct ReferenceColours {
  double kr = 0.2126;
  double kb = 0.0722;
  bool isFull = false;
  int depth = 8;
};

inline int referenceLevel(double share) {
  return static_cast<int>(std::floor(std::fmin(std::fmax(share, 0), 1) * 255 + 0.5));
}

inline std::uint32_t referenceWord(int red, int green, int blue, int alpha = 255) {
  return static_cast<std::uint32_t>(alpha) << 24 | static_cast<std::uint32_t>(red) << 16 |
         static_cast<std::uint32_t>(green) << 8 | static_cast<std::uint32_t>(blue);
}

/// The word of three numbers of `depth` bits.
inline std::uint32_t referenceYuv(const ReferenceColours& colours, int y, int u, int v) {
  const double unit = std::pow(2.0, colours.depth - 8);
  const double most = std::pow(2.0, colours.depth) - 1;
  const double luma = colours.isFull ? y / most : (y - 16 * unit) / (219 * unit);
  const double span = colours.isFull ? most : 224 * unit;
  const double pb = (u - 128 * unit) / span;
  const double pr = (v - 128 * unit) / span;
  const double red = luma + 2 * (1 - colours.kr) * pr;
  const double blue = luma + 2 * (1 - colours.kb) * pb;
  const double green =
      (luma - colours.kr * red - colours.kb * blue) / (1 - colours.kr - colours.kb);
  return referenceWord(referenceLevel(red), referenceLevel(green), referenceLevel(blue));
}

/// How many levels two words are apart in the channel where they differ most.
inline int levelsApart(std::uint32_t one, std::uint32_t other) {
  int most = 0;
  for (int shift = 0; shift < 32; shift += 8) {
    const int apart =
        std::abs(static_cast<int>(one >> shift & 0xFF) - static_cast<int>(other >> shift & 0xFF));
    most = apart > most ? apart : most;
  }
  return most;
}

}  // namespace halvora
