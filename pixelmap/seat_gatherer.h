// SPDX-License-Identifier: Apache-2.0
// Takes the seats' pixels out of the frames of one stretch of a video and puts them into the
// tables, which lie seat by seat: a frame's words are collected in blocks and transposed, because
// writing them one by one would touch a page of memory for each. One thread at a time; several
// gatherers fill one table side by side.
#pragma once

#include <climits>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "halvora/platform/video_asset.h"
#include "pixelmap/seat_lut.h"

namespace halvora {

/// The tables of a build: rows of `frameCount` words, and which frames have been filled.
struct SeatTables {
  std::span<std::uint32_t> words;
  int frameCount;
  std::span<std::uint8_t> filled;

  std::uint32_t* row(std::size_t seat) const {
    return words.data() + seat * static_cast<std::size_t>(frameCount);
  }
};

class SeatGatherer {
 public:
  static constexpr std::size_t kBlockFrames = 64;

  /// Seats and tables must outlive the gatherer.
  SeatGatherer(std::span<const SeatPosition> seats, const SeatTables& tables);

  /// A frame whose time belongs to none of the tables' frames is left out.
  void take(const VideoFrame& frame);
  /// After the last frame of the stretch. Its last frame number stays behind: the next stretch may
  /// begin with the same.
  void end() { flush(1); }
  /// Puts in what stayed behind, unless a later stretch has that frame; `firstBehind` is the lowest
  /// frame of those. Returns the lowest from this stretch on. Not side by side with anything.
  int settle(int firstBehind);

 private:
  std::span<std::uint32_t> blockRow(std::size_t at) {
    return std::span(block_).subspan(at * seats_.size(), seats_.size());
  }
  void place(std::uint32_t width, std::uint32_t height);
  /// Writes all frames of the block but the last `kept` ones, which become its first.
  void flush(std::size_t kept);
  void writeSeats(std::size_t first, std::size_t count, std::size_t frames);

  std::span<const SeatPosition> seats_;
  SeatTables tables_;
  /// Where the seats are in pictures of the size that came last.
  std::vector<PixelPosition> positions_;
  std::uint32_t width_ = 0;
  std::uint32_t height_ = 0;
  int lowestFrame_ = INT_MAX;
  std::vector<int> frames_;
  std::vector<std::uint32_t> block_;
};

}  // namespace halvora
