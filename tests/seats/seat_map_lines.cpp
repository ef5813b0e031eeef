// SPDX-License-Identifier: Apache-2.0
#include "tests/seats/seat_map_lines.h"

#include "adapters/json/exact_json_reader.h"

namespace halvora {

std::vector<std::string> linesOf(const SeatMap& map) {
  std::vector<std::string> lines;
  for (std::size_t at = 0; at < map.sectionCount(); ++at) {
    const auto section = map.section(at);
    for (std::size_t rowAt = 0; rowAt < section.rowCount(); ++rowAt) {
      const auto row = section.row(rowAt);
      for (std::size_t seatAt = 0; seatAt < row.seatCount(); ++seatAt) {
        const auto seat = row.seat(seatAt);
        lines.push_back(std::string(section.displayName()) + " | " +
                        std::string(row.displayName()) + " | " + std::string(seat.displayName) +
                        " " + std::to_string(seat.xPos) + "," + std::to_string(seat.yPos));
      }
    }
  }
  return lines;
}

SeatMap seatMapOf(std::string_view document, const SeatMapTexts& texts) {
  return parseSeatMapSectionsFromJSON(document, texts, ExactJsonReader());
}

std::vector<std::string> linesOfDocument(std::string_view document, const SeatMapTexts& texts) {
  return linesOf(seatMapOf(document, texts));
}

}  // namespace halvora
