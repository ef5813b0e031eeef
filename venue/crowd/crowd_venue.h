// SPDX-License-Identifier: Apache-2.0
// A venue as a crowd finds it in its files: where people are, which of them have a phone, and the
// tables of their pixels, as far as they have been built. One thread at a time; once it is all
// there, any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/linux/mapped_file.h"
#include "seats/seat_map.h"
#include "seats/seat_texts.h"
#include "venue/crowd/crowd_phone.h"
#include "venue/crowd/crowd_shard.h"
#include "venue/crowd/venue_tables.h"

namespace halvora {

/// All seats of a map, in its order.
std::vector<CrowdSeat> seatsOf(const SeatMap& map);

/// A choice of so many of the seats, in their order; all where there are no more.
using SeatChoice = std::vector<CrowdSeat> (*)(std::vector<CrowdSeat> seats, std::size_t count);
/// Exactly so many, evenly spread.
std::vector<CrowdSeat> spreadOver(std::vector<CrowdSeat> seats, std::size_t count);
/// About so many, in a pattern without gaps.
std::vector<CrowdSeat> thinned(std::vector<CrowdSeat> seats, std::size_t count);

class CrowdVenue {
 public:
  /// `document` is the text of the venue's map, and may be none. So many phones, 0 for one a seat;
  /// those of a shard are simulated, and have tables.
  CrowdVenue(std::string_view document, const SeatMapTexts& texts, const JsonReader& json,
             std::size_t phones, SeatChoice choose, const CrowdShard& shard = {});
  CrowdVenue(const CrowdVenue&) = delete;
  CrowdVenue& operator=(const CrowdVenue&) = delete;

  /// Of the whole map.
  std::size_t seatCount() const { return seatCount_; }
  /// Those with a phone.
  const std::vector<CrowdSeat>& seats() const { return seats_; }
  std::span<const CrowdSeat> simulated() const {
    return std::span(seats_).subspan(firstSimulated_, simulatedCount_);
  }
  /// Its place among those with a phone.
  std::size_t firstSimulated() const { return firstSimulated_; }

  /// Adds the tables of one map. They would be too much for the machine's own memory, so they lie
  /// in files of the temporary folder, which are gone with this object.
  VenueTables::End build(const PixelMapVideoEntry& map, const VideoAssets& videos,
                         const BuildControl& control);
  /// The file of a folder in which the tables of such a video and these seats are kept, if they
  /// are; empty where there is no such video.
  std::string keptFile(const std::string& folder, const PixelMapVideoEntry& map, int frames,
                       const Files& files) const;
  /// Adds tables that were kept; false where there are none, or what is there is not what was kept.
  bool takeKept(const PixelMapVideoEntry& map, int frames, const std::string& file);
  /// Keeps what was built; false where it cannot be written.
  bool keep(const PixelMapVideoEntry& map, const std::string& file, Files& files) const;
  const VenueTables& tables() const { return tables_; }

 private:
  std::span<std::uint32_t> roomFor(std::size_t words);

  SeatMap map_;
  std::size_t seatCount_ = 0;
  std::vector<CrowdSeat> seats_;
  std::size_t firstSimulated_ = 0;
  std::size_t simulatedCount_ = 0;
  std::vector<MappedFile> rooms_;
  VenueTables tables_;
};

}  // namespace halvora
