// SPDX-License-Identifier: Apache-2.0
#include "tools/halvora/crowd/crowd_venue.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "seats/seat_names.h"

namespace halvora {

namespace {

constexpr std::size_t kLargestPaletteFile = 4 << 20;

}  // namespace

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

std::shared_ptr<const std::vector<Palette>> sharedPalettes(const Bundle& main,
                                                           const JsonReader& json) {
  const auto text = main.readResource("HVAssets/palettes.json", kLargestPaletteFile);
  const auto document = text ? json.parse(*text, nullptr) : std::nullopt;
  return std::make_shared<const std::vector<Palette>>(document ? parsePalettes(*document)
                                                               : std::vector<Palette>());
}

std::span<std::uint32_t> TableRooms::make(std::size_t words) {
  std::error_code error;
  const std::string folder = std::filesystem::temp_directory_path(error).string();
  auto file = MappedFile::make(folder, words * sizeof(std::uint32_t));
  if (!file) return {};
  files_.push_back(std::move(*file));
  return {reinterpret_cast<std::uint32_t*>(files_.back().bytes().data()), words};
}

}  // namespace halvora
