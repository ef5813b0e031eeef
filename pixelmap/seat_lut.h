// SPDX-License-Identifier: Apache-2.0
// The seat table (LUT): one seat's colours, one word 0xAARRGGBB a frame. Tables are shared and
// never change once they are made. Values, any thread.
#pragma once

#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

#include "light/colour.h"

namespace halvora {

/// Pixels of the video: columns from the left, rows from the top.
struct SeatPosition {
  std::int64_t x = 0;
  std::int64_t y = 0;
  friend bool operator==(const SeatPosition&, const SeatPosition&) = default;
};

/// Null for no table.
using SeatLut = std::shared_ptr<const std::vector<std::uint32_t>>;

/// The word of a frame that has no colour.
inline constexpr std::uint32_t kNoColourWord = 0;

/// Frames of a table; 0 for none.
inline int frameCountOf(const SeatLut& lut) { return lut ? static_cast<int>(lut->size()) : 0; }

constexpr Colour colourOfWord(std::uint32_t word) {
  const auto level = [word](int shift) {
    return levelOf(static_cast<std::uint8_t>(word >> shift & 255));
  };
  return {level(16), level(8), level(0), level(24)};
}

/// Each level rounded to the nearest of 255.
inline std::uint32_t wordOfColour(const Colour& colour) {
  const auto byte = [](float level) {
    return static_cast<std::uint32_t>(std::llround(double{level} * 255)) & 255;
  };
  return byte(colour.alpha) << 24 | byte(colour.red) << 16 | byte(colour.green) << 8 |
         byte(colour.blue);
}

}  // namespace halvora
