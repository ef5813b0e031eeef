// SPDX-License-Identifier: Apache-2.0
// Looks at single pixels of pictures. Values.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "halvora/platform/image.h"

namespace halvora {

using Rgb = std::array<int, 3>;

inline Rgb pixelOf(const Image& image, std::uint32_t x, std::uint32_t y) {
  const std::uint8_t* pixel = &image.rgba.at((std::size_t{y} * image.width + x) * 4);
  return {pixel[0], pixel[1], pixel[2]};
}

/// How many pixels have exactly this colour.
inline std::size_t pixelsOf(const Image& image, const Rgb& colour) {
  std::size_t count = 0;
  for (std::uint32_t y = 0; y < image.height; ++y) {
    for (std::uint32_t x = 0; x < image.width; ++x) count += pixelOf(image, x, y) == colour;
  }
  return count;
}

}  // namespace halvora
