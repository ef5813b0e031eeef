// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/crowd_venue.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

#include "seats/seat_map_document.h"
#include "seats/seat_names.h"
#include "venue/base/packed_bytes.h"

namespace halvora {

namespace {

std::vector<SeatPosition> placesOf(std::span<const CrowdSeat> seats) {
  std::vector<SeatPosition> places;
  places.reserve(seats.size());
  for (const CrowdSeat& seat : seats) places.push_back(seat.at);
  return places;
}

// A mapping begins at a page, so its words lie where words may.
std::span<std::uint32_t> wordsOf(const MappedFile& file, std::size_t count) {
  return {reinterpret_cast<std::uint32_t*>(file.bytes().data()), count};
}

using Print = std::array<std::byte, sizeof(std::uint64_t)>;

// Behind the words there is room for their fingerprint.
std::size_t sizeOfRoom(std::size_t words) { return words * sizeof(std::uint32_t) + sizeof(Print); }

std::string_view textOf(std::span<const std::byte> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

Print printOf(std::span<const std::byte> room) {
  return std::bit_cast<Print>(fingerprintOf(textOf(room.first(room.size() - sizeof(Print)))));
}

// A file that was torn as it was written may well have its size.
bool isSealed(std::span<const std::byte> room) {
  return std::ranges::equal(room.last(sizeof(Print)), printOf(room));
}

void seal(std::span<std::byte> room) {
  std::ranges::copy(printOf(room), room.last(sizeof(Print)).begin());
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

// As the kit's own tables, they count for a video of that size and time only.
std::string CrowdVenue::keptFile(const std::string& folder, const PixelMapVideoEntry& map,
                                 int frames, const Files& files) const {
  const auto video = files.attributes(map.videoPath);
  if (!video) return {};
  PackedWriter key;
  key.text(map.videoPath);
  key.number(video->size);
  key.signedNumber(static_cast<std::int64_t>(video->modifiedAt * 1e6));
  key.number(static_cast<std::uint64_t>(frames));
  for (const SeatPosition& place : tables_.places()) {
    key.signedNumber(place.x);
    key.signedNumber(place.y);
  }
  return folder + "/" + std::to_string(fingerprintOf(key.bytes())) + ".tables";
}

bool CrowdVenue::takeKept(const PixelMapVideoEntry& map, int frames, const std::string& file) {
  const std::size_t words = tables_.places().size() * static_cast<std::size_t>(frames);
  auto kept = MappedFile::open(file, sizeOfRoom(words));
  if (!kept || !isSealed(kept->bytes())) return false;
  rooms_.push_back(std::move(*kept));
  tables_.adopt(map.videoPath, wordsOf(rooms_.back(), words), frames);
  return true;
}

bool CrowdVenue::keep(const PixelMapVideoEntry& map, const std::string& file, Files& files) const {
  const auto* const block = tables_.block(map.videoPath);
  if (block == nullptr) return false;
  const auto room = std::ranges::find(rooms_, std::as_bytes(block->words).data(),
                                      [](const MappedFile& one) { return one.bytes().data(); });
  if (room == rooms_.end()) return false;
  seal(room->bytes());
  return files.replace(file, textOf(room->bytes()));
}

std::span<std::uint32_t> CrowdVenue::roomFor(std::size_t words) {
  std::error_code error;
  const std::string folder = std::filesystem::temp_directory_path(error).string();
  if (error) return {};
  auto file = MappedFile::make(folder, sizeOfRoom(words));
  if (!file) return {};
  rooms_.push_back(std::move(*file));
  return wordsOf(rooms_.back(), words);
}

}  // namespace halvora
