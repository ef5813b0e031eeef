// SPDX-License-Identifier: Apache-2.0
// The seat table (LUT): one seat's colours, one word 0xAARRGGBB a frame. Tables are shared and
// never change once they are made. Values, any thread.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "halvora/colour.h"

namespace halvora {

/// Pixels of the video: columns from the left, rows from the top.
struct SeatPosition {
  std::int64_t x = 0;
  std::int64_t y = 0;
  friend bool operator==(const SeatPosition&, const SeatPosition&) = default;
};

/// One seat's words, or no table. They are shared, and may be part of a block with the tables of
/// many seats.
class SeatLut {
 public:
  SeatLut() = default;
  SeatLut(std::nullptr_t) {}  // NOLINT(google-explicit-constructor): null is no table
  explicit SeatLut(std::vector<std::uint32_t> words) {
    auto owned = std::make_shared<const std::vector<std::uint32_t>>(std::move(words));
    words_ = *owned;
    owner_ = std::move(owned);
  }
  /// Words that live as long as `owner` does; without one, whoever made them sees to it.
  SeatLut(std::span<const std::uint32_t> words, std::shared_ptr<const void> owner)
      : owner_(std::move(owner)), words_(words) {}

  explicit operator bool() const { return words_.data() != nullptr; }
  std::span<const std::uint32_t> words() const { return words_; }
  /// The very same table.
  friend bool operator==(const SeatLut& left, const SeatLut& right) {
    return left.words_.data() == right.words_.data();
  }

 private:
  std::shared_ptr<const void> owner_;
  std::span<const std::uint32_t> words_;
};

/// Tables that somebody holds ready, such as those of a whole venue in one block. Any thread.
class SeatLutSource {
 public:
  virtual ~SeatLutSource() = default;
  /// No table where it has none of that video and seat.
  virtual SeatLut find(std::string_view videoPath, SeatPosition seat) const = 0;
};

/// The word of a frame that has no colour.
inline constexpr std::uint32_t kNoColourWord = 0;

/// Frames of a table; 0 for none.
inline int frameCountOf(const SeatLut& lut) { return static_cast<int>(lut.words().size()); }

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
