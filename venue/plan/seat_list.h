// SPDX-License-Identifier: Apache-2.0
// The seats of a ticket office, as a list: out of a table with named columns, or out of a pretix
// seating plan. Nothing is left out without a word. Values, any thread.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "halvora/platform/json.h"

namespace halvora {

struct ListedSeat {
  std::string section;
  std::string row;
  std::string seat;
  /// Where it is, in any measure, x to the right and y downwards.
  std::optional<double> x;
  std::optional<double> y;
};

/// "SECTION / ROW / SEAT".
std::string seatLabel(const ListedSeat& seat);

struct SeatList {
  /// Each once, in the order of the file.
  std::vector<ListedSeat> seats;
  /// Entries that are no seat, and seats that are there again, a text each.
  std::vector<std::string> dropped;
  std::vector<std::string> doubled;

  /// Whether every seat says where it is.
  bool isPlaced() const;
};

/// Which columns to take, by their names; empty for the usual names.
struct SeatColumns {
  std::string section;
  std::string row;
  std::string seat;
  std::string x;
  std::string y;
};

/// The seats, or one line on what is wrong, with "line N: " before it where it is of one line.
std::variant<SeatList, std::string> seatsOfCsv(std::string_view text, const SeatColumns& columns);
std::variant<SeatList, std::string> seatsOfPretix(std::string_view text, const JsonReader& json);

/// Those of the first that the second has not, as labels.
std::vector<std::string> seatsMissingIn(const SeatList& wanted, const SeatList& there);

}  // namespace halvora
