// SPDX-License-Identifier: Apache-2.0
// The tables of all seats of a venue, one block a pixel map, each built in one pass over its video.
// The memory is whoever's makes it, and outlives it. Once it is made, any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "pixelmap/pixel_map_assets.h"
#include "pixelmap/seat_lut.h"
#include "pixelmap/seat_lut_builder.h"

namespace halvora {

class VenueTables final : public SeatLutSource {
 public:
  /// Gives room for so many words, all 0, or none.
  using Room = std::function<std::span<std::uint32_t>(std::size_t words)>;

  /// Seats that share a pixel share a table.
  explicit VenueTables(std::span<const SeatPosition> seats);

  enum class End : std::uint8_t { built, noVideo, noRoom, cancelled };
  /// Adds the tables of one map. Throws std::bad_alloc where memory is short.
  End build(const PixelMapVideoEntry& map, const VideoAssets& videos, const BuildControl& control,
            const Room& room);

  /// Adds tables that were built before: a row of so many words a place.
  void adopt(const std::string& videoPath, std::span<const std::uint32_t> words, int frameCount) {
    blocks_[videoPath] = {words, frameCount};
  }
  /// The places, each once; in the order of the rows.
  std::span<const SeatPosition> places() const { return seats_; }

  SeatLut find(std::string_view videoPath, SeatPosition seat) const override;

  /// The tables of one map, a row of `frameCount` words for each place.
  struct Block {
    std::span<const std::uint32_t> words;
    int frameCount = 0;

    std::span<const std::uint32_t> row(std::size_t at) const {
      const auto frames = static_cast<std::size_t>(frameCount);
      return words.subspan(at * frames, frames);
    }
  };
  /// Null for a video without.
  const Block* block(std::string_view videoPath) const;
  /// The row of a seat in every block; none for a seat that has no table.
  std::optional<std::size_t> rowOf(SeatPosition seat) const;
  std::size_t seatCount() const { return seats_.size(); }

 private:
  std::size_t slotOf(SeatPosition seat) const;

  std::vector<SeatPosition> seats_;
  /// A hash table at most half full, with linear probing: rows from 1, 0 for a free slot. Every
  /// look at a pixel map asks it, once a phone.
  std::vector<std::uint32_t> slots_;
  std::map<std::string, Block, std::less<>> blocks_;
};

}  // namespace halvora
