// SPDX-License-Identifier: Apache-2.0
// The venue from above: each seat a disc, each standing place a square that fills its room, in the
// light that its phone shows. Which pixel belongs to which seat is found out once. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "venue/crowd/crowd_phone.h"

namespace halvora {

/// A seat as it is drawn; in pixels.
struct CrowdDisc {
  double x = 0;
  double y = 0;
  double radius = 0;
  bool isSquare = false;
};

/// All seats, as large as a picture of that size can show them.
std::vector<CrowdDisc> discsOf(std::span<const CrowdSeat> seats, int width, int height);

class CrowdPicture {
 public:
  CrowdPicture(std::span<const CrowdSeat> seats, int width, int height)
      : CrowdPicture(discsOf(seats, width, height), width, height) {}
  /// Discs may lie beyond the picture's edges.
  CrowdPicture(std::span<const CrowdDisc> discs, int width, int height);

  /// One light a seat; `rgb` has three bytes a pixel, rows from the top.
  void draw(std::span<const CrowdLight> lights, std::span<std::uint8_t> rgb) const;
  /// The hall without a seat, one word 0xFFRRGGBB a pixel.
  void drawHall(std::span<std::uint32_t> words) const;
  /// Those seats over what `drawHall` and earlier calls have drawn.
  void drawSeats(std::span<const CrowdLight> lights, std::span<const std::uint32_t> seats,
                 std::span<std::uint32_t> words) const;

 private:
  struct Pixel {
    /// From the picture's first.
    std::uint32_t at = 0;
    /// How much of it the seat covers, of 255.
    std::uint8_t cover = 0;
    /// In the middle of the seat, where the torch is seen.
    bool isCore = false;
  };

  template <class Put>
  void drawSeat(std::uint32_t seat, const CrowdLight& light, const Put& put) const;

  std::size_t size_;
  /// Seat after seat; those of seat s begin at firsts_[s].
  std::vector<Pixel> pixels_;
  std::vector<std::uint32_t> firsts_;
};

/// How far each seat is from the one nearest to it, in the map's pixels; 0 for a seat alone, and
/// for seats that share a pixel.
std::vector<double> distancesToNearest(std::span<const CrowdSeat> seats);

}  // namespace halvora
