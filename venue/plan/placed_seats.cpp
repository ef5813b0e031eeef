// SPDX-License-Identifier: Apache-2.0
#include "venue/plan/placed_seats.h"

#include <algorithm>
#include <cstddef>
#include <tuple>

namespace halvora {

namespace {

bool isOnOnePixel(const PlacedSeat& left, const PlacedSeat& right) {
  return left.x == right.x && left.y == right.y;
}

}  // namespace

std::vector<PlacedSeat> placedSeatsOf(const SeatMap& map) {
  std::vector<PlacedSeat> seats;
  SeatIndex at;
  for (at.section = 0; at.section < map.sectionCount(); ++at.section) {
    const SeatMap::SectionItem section = map.section(at.section);
    for (at.row = 0; at.row < section.rowCount(); ++at.row) {
      const SeatMap::RowItem row = section.row(at.row);
      for (at.seat = 0; at.seat < row.seatCount(); ++at.seat) {
        const SeatMap::SeatItem seat = row.seat(at.seat);
        seats.push_back({seat.xPos, seat.yPos, at});
      }
    }
  }
  return seats;
}

std::vector<std::vector<PlacedSeat>> sharedPixelsOf(std::vector<PlacedSeat> seats) {
  std::sort(seats.begin(), seats.end(), [](const PlacedSeat& left, const PlacedSeat& right) {
    return std::tie(left.y, left.x, left.index) < std::tie(right.y, right.x, right.index);
  });
  std::vector<std::vector<PlacedSeat>> pixels;
  for (auto first = seats.begin(); first != seats.end();) {
    const auto end = std::find_if(first, seats.end(), [first](const PlacedSeat& seat) {
      return !isOnOnePixel(seat, *first);
    });
    if (end - first > 1) pixels.emplace_back(first, end);
    first = end;
  }
  std::sort(pixels.begin(), pixels.end(), [](const auto& left, const auto& right) {
    return left.front().index < right.front().index;
  });
  return pixels;
}

std::string seatLabel(const SeatMap& map, SeatIndex index) {
  const SeatMap::SectionItem section = map.section(index.section);
  const SeatMap::RowItem row = section.row(index.row);
  std::string label(section.displayName());
  label.append(" / ").append(row.displayName());
  return label.append(" / ").append(row.seat(index.seat).displayName);
}

std::string counted(std::uint64_t count, const char* one, const char* many) {
  constexpr std::size_t kGroup = 3;
  std::string text = std::to_string(count);
  for (std::size_t at = text.size(); at > kGroup;) text.insert(at -= kGroup, ",");
  return text + " " + (count == 1 ? one : many);
}

}  // namespace halvora
