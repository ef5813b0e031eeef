// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/crowd_venue.h"

#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

#include "seats/seat_map_document.h"
#include "seats/seat_names.h"

namespace halvora {

namespace {

std::vector<SeatPosition> placesOf(std::span<const CrowdSeat> seats) {
  std::vector<SeatPosition> places;
  places.reserve(seats.size());
  for (const CrowdSeat& seat : seats) places.push_back(seat.at);
  return places;
}

}  // namespace

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

// Every n-th seat of each row, every other row by half of that further on: no gaps as far as the
// rows are straight. What is left has no neighbours whose squares could meet.
std::vector<CrowdSeat> thinned(std::vector<CrowdSeat> seats, std::size_t count) {
  const std::size_t stride = (seats.size() + count - 1) / count;
  if (stride < 2) return seats;
  std::vector<CrowdSeat> left;
  std::size_t row = 0;
  std::size_t place = 0;
  for (std::size_t at = 0; at < seats.size(); ++at, ++place) {
    const CrowdSeat& seat = seats[at];
    if (at > 0 && (seat.row.data() != seats[at - 1].row.data() ||
                   seat.section.data() != seats[at - 1].section.data())) {
      ++row;
      place = 0;
    }
    if (place % stride != row % 2 * (stride / 2)) continue;
    left.push_back(seat);
    left.back().isStanding = false;
  }
  return left;
}

CrowdVenue::CrowdVenue(std::string_view document, const SeatMapTexts& texts, const JsonReader& json,
                       std::size_t phones, SeatChoice choose, const CrowdShard& shard)
    : map_(parseSeatMapSectionsFromJSON(document, texts, json)),
      seats_(seatsOf(map_)),
      tables_({}) {
  seatCount_ = seats_.size();
  if (phones > 0) seats_ = choose(std::move(seats_), phones);
  firstSimulated_ = shard.first(seats_.size());
  simulatedCount_ = shard.end(seats_.size()) - firstSimulated_;
  tables_ = VenueTables(placesOf(simulated()));
}

VenueTables::End CrowdVenue::build(const PixelMapVideoEntry& map, const VideoAssets& videos,
                                   const BuildControl& control) {
  return tables_.build(map, videos, control, [this](std::size_t words) { return roomFor(words); });
}

std::span<std::uint32_t> CrowdVenue::roomFor(std::size_t words) {
  std::error_code error;
  const std::string folder = std::filesystem::temp_directory_path(error).string();
  if (error) return {};
  auto file = MappedFile::make(folder, words * sizeof(std::uint32_t));
  if (!file) return {};
  rooms_.push_back(std::move(*file));
  return {reinterpret_cast<std::uint32_t*>(rooms_.back().bytes().data()), words};
}

}  // namespace halvora
