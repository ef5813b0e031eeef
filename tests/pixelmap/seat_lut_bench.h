// SPDX-License-Identifier: Apache-2.0
// Small things that the tests of seat tables share: tables and their bytes by hand.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "pixelmap/seat_lut.h"

namespace halvora {

using Words = std::vector<std::uint32_t>;

inline SeatLut lutOf(Words words) { return SeatLut(std::move(words)); }

/// The words of a table; none for no table, which no table that was built or read has.
inline Words wordsOf(const SeatLut& lut) { return {lut.words().begin(), lut.words().end()}; }

/// Opaque words 0xFF000001, 0xFF000002 … so that each tells its frame.
inline Words countedWords(std::size_t frames) {
  Words words;
  for (std::uint32_t frame = 1; frame <= frames; ++frame) words.push_back(0xFF000000U | frame);
  return words;
}

}  // namespace halvora
