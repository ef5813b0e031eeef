// SPDX-License-Identifier: Apache-2.0
// A map's seats as one list: where each of them is, and which of them lie on one pixel. Values, any
// thread.
#pragma once

#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

#include "seats/seat_map.h"

namespace halvora {

/// Which seat of a map; they order as the map does.
struct SeatIndex {
  std::uint32_t section = 0;
  std::uint32_t row = 0;
  std::uint32_t seat = 0;
  friend bool operator<(const SeatIndex& left, const SeatIndex& right) {
    return std::tie(left.section, left.row, left.seat) <
           std::tie(right.section, right.row, right.seat);
  }
};

struct PlacedSeat {
  std::int64_t x = 0;
  std::int64_t y = 0;
  SeatIndex index;
};

/// All of them, in the order of the map.
std::vector<PlacedSeat> placedSeatsOf(const SeatMap& map);

/// The seats of each pixel that has more than one; pixels and seats in the order of the map.
std::vector<std::vector<PlacedSeat>> sharedPixelsOf(std::vector<PlacedSeat> seats);

/// "SECTION / ROW / SEAT".
std::string seatLabel(const SeatMap& map, SeatIndex index);

/// "1 seat", "12,000 seats".
std::string counted(std::uint64_t count, const char* one, const char* many);

}  // namespace halvora
