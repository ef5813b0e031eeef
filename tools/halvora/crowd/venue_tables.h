// SPDX-License-Identifier: Apache-2.0
// The tables of all seats of a venue, one block a pixel map, each built in one pass over its video.
// The memory is whoever's makes it, and outlives it. Once it is made, any thread.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
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
  /// Adds the tables of one map.
  End build(const PixelMapVideoEntry& map, const VideoAssets& videos, const BuildControl& control,
            const Room& room);

  SeatLut find(std::string_view videoURL, SeatPosition seat) const override;
  /// The frames of a video's tables; 0 for a video without.
  int frameCount(std::string_view videoURL) const;
  std::size_t seatCount() const { return seats_.size(); }

 private:
  struct Block {
    std::span<const std::uint32_t> words;
    int frameCount = 0;
  };
  struct HashSeat {
    std::size_t operator()(const SeatPosition& seat) const {
      return static_cast<std::size_t>(static_cast<std::uint64_t>(seat.x) * 0x9E3779B97F4A7C15U ^
                                      static_cast<std::uint64_t>(seat.y));
    }
  };

  std::vector<SeatPosition> seats_;
  std::unordered_map<SeatPosition, std::size_t, HashSeat> rows_;
  std::map<std::string, Block, std::less<>> blocks_;
};

}  // namespace halvora
