// SPDX-License-Identifier: Apache-2.0
// Where seats go on the canvas of a pixel map: from their own places, on arcs for bowls, or in
// plain blocks where nothing is known. Each seat has a square of four pixels of its own, because a
// video keeps one colour for four. Values, any thread.
#pragma once

#include <atomic>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "venue/plan/seat_list.h"

namespace halvora {

/// Rows of one section on arcs around a common middle.
struct SeatArc {
  std::string section;
  /// Degrees clockwise from the top: of each row's first seat, and of its last.
  double from = 0;
  double to = 0;
  /// Pixels: of the first row, and from each row to the next one outside.
  double radius = 0;
  double pitch = 0;
};

/// "SECTION=FROM,TO,RADIUS,PITCH".
std::optional<SeatArc> seatArcOf(std::string_view text);

/// No larger canvas: phones decode no larger video.
inline constexpr int kLargestCanvas = 4096;

struct PlacedList {
  struct Place {
    int x = 0;
    int y = 0;
  };
  /// One a seat of the list.
  std::vector<Place> places;
  int width = 0;
  int height = 0;
  /// Seats that were put beside their place, because another has it.
  std::size_t moved = 0;
};

/// The places, or why there are none: seats do not fit, an arc is of no section, or the user has
/// interrupted it. With arcs, or where seats do not say where they are, their own places count for
/// nothing.
std::variant<PlacedList, std::string> placeSeats(const SeatList& list,
                                                 const std::vector<SeatArc>& arcs,
                                                 const std::atomic<bool>& isInterrupted);

/// A seat map's document with these seats.
std::string seatMapDocumentOf(const SeatList& list, const PlacedList& places);

}  // namespace halvora
