// SPDX-License-Identifier: Apache-2.0
// Seat maps written by hand in a test.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "seats/seat_map.h"

namespace halvora {

struct SeatSpec {
  std::string name;
  std::int64_t x = 0;
  std::int64_t y = 0;
};
struct RowSpec {
  std::string name;
  std::vector<SeatSpec> seats;
};
struct SectionSpec {
  std::string name;
  std::vector<RowSpec> rows;
};

inline std::shared_ptr<const SeatMap> mapOf(const std::vector<SectionSpec>& sections) {
  SeatMapBuilder builder;
  for (const SectionSpec& section : sections) {
    for (const RowSpec& row : section.rows) {
      for (const SeatSpec& seat : row.seats) {
        builder.addSeat(builder.addName(seat.name), seat.x, seat.y);
      }
      builder.endRow(builder.addName(row.name));
    }
    builder.endSection(builder.addName(section.name));
  }
  return std::make_shared<const SeatMap>(builder.finish());
}

}  // namespace halvora
