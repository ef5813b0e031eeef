// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/crowd_venue.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "seats/seat_names.h"

namespace halvora {

std::string seatMapPath(std::int64_t venueId) {
  return "HVAssets/Maps/Venue-" + std::to_string(venueId) + "/map.json";
}

std::vector<CrowdSeat> seatsOf(const SeatMap& map) {
  std::vector<CrowdSeat> seats;
  for (std::size_t section = 0; section < map.sectionCount(); ++section) {
    const SeatMap::SectionItem item = map.section(section);
    const bool isStanding = isStandingName(item.displayName());
    for (std::size_t at = 0; at < item.rowCount(); ++at) {
      const SeatMap::RowItem row = item.row(at);
      for (std::size_t place = 0; place < row.seatCount(); ++place) {
        const SeatMap::SeatItem seat = row.seat(place);
        seats.push_back({{seat.xPos, seat.yPos},
                         item.displayName(),
                         isStanding,
                         row.displayName(),
                         seat.displayName});
      }
    }
  }
  return seats;
}

std::vector<CrowdSeat> spreadOver(std::vector<CrowdSeat> seats, std::size_t count) {
  if (count >= seats.size()) return seats;
  std::vector<CrowdSeat> chosen;
  for (std::size_t at = 0; at < count; ++at) chosen.push_back(seats[at * seats.size() / count]);
  return chosen;
}

std::span<std::uint32_t> TableRooms::make(std::size_t words) {
  std::error_code error;
  const std::string folder = std::filesystem::temp_directory_path(error).string();
  if (error) return {};
  auto file = MappedFile::make(folder, words * sizeof(std::uint32_t));
  if (!file) return {};
  files_.push_back(std::move(*file));
  return {reinterpret_cast<std::uint32_t*>(files_.back().bytes().data()), words};
}

}  // namespace halvora
