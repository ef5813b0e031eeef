// SPDX-License-Identifier: Apache-2.0
// What a crowd finds in a venue's files: where people are, and room for the tables of all seats.
// Values; any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "adapters/linux/mapped_file.h"
#include "seats/seat_map.h"
#include "venue/crowd/crowd_phone.h"

namespace halvora {

/// A venue's map within the main bundle.
std::string seatMapPath(std::int64_t venueId);

/// All seats of a map, in its order.
std::vector<CrowdSeat> seatsOf(const SeatMap& map);

/// So many of the seats, evenly spread, in their order; all where there are no more.
std::vector<CrowdSeat> spreadOver(std::vector<CrowdSeat> seats, std::size_t count);

/// Room for tables that would be too much for the machine's own memory, gone with this object.
class TableRooms {
 public:
  /// So many words, all 0; none where they cannot be had.
  std::span<std::uint32_t> make(std::size_t words);

 private:
  std::vector<MappedFile> files_;
};

}  // namespace halvora
