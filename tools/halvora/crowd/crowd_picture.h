// SPDX-License-Identifier: Apache-2.0
// The venue from above: each seat a disc, each standing place a square that fills its room, in the
// light that its phone shows. Which pixel belongs to which seat is found out once. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "tools/halvora/crowd/crowd_phone.h"

namespace halvora {

class CrowdPicture {
 public:
  CrowdPicture(std::span<const CrowdSeat> seats, int width, int height);

  /// One light a seat; `rgb` has three bytes a pixel, rows from the top.
  void draw(std::span<const CrowdLight> lights, std::span<std::uint8_t> rgb) const;

 private:
  struct Pixel {
    std::uint32_t seat = 0;
    /// How much of it the seat covers, of 255; 0 for nobody's.
    std::uint8_t cover = 0;
    /// In the middle of the seat, where the torch is seen.
    bool isCore = false;
  };

  void place(std::uint32_t seat, double x, double y, double radius, bool isSquare);

  int width_;
  int height_;
  std::vector<Pixel> pixels_;
};

/// How far each seat is from the one nearest to it, in the map's pixels; 0 for a seat alone, and
/// for seats that share a pixel.
std::vector<double> distancesToNearest(std::span<const CrowdSeat> seats);

}  // namespace halvora
