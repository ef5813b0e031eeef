// SPDX-License-Identifier: Apache-2.0
// Finds a seat in a map by what a ticket says of it: three names, or one line of text with other
// words between. A name of the map is known with and without the word before it ("Row 8", "8"), in
// any capitals, and a number with zeros before it. Values and pure functions; any thread.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "halvora/platform/bundle.h"
#include "seats/seat_map.h"

namespace halvora {

/// By what a ticket calls them; empty for what it does not name.
struct TicketSeat {
  std::string section;
  std::string row;
  std::string seat;
};

/// What stands before section, row and seat on tickets, in lower case.
using TicketWords = std::array<std::vector<std::string>, 3>;
/// Of the user's language, and English. Main thread.
TicketWords ticketWords(const Bundle& kit);

enum class SeatPart { section, row, seat };

/// A name as it is, but for the word before it that says what it is: "8" for "Row 8".
std::string withoutTicketWord(const TicketWords& words, SeatPart part, std::string_view name);

/// The map's own indices. What is named is either found or missing, or lies below what is missing.
struct FoundSeat {
  std::optional<std::size_t> section;
  std::optional<std::size_t> row;
  std::optional<std::size_t> seat;
  /// The first that the map has not got, and how the ticket calls it.
  std::optional<SeatPart> missing;
  std::string missingName;

  bool isComplete() const { return section && row && seat; }
};

class SeatFinder {
 public:
  /// The map outlives the finder.
  SeatFinder(const SeatMap& map, TicketWords words);

  FoundSeat seat(const TicketSeat& asked) const;
  /// Of a longer line only the first 512 bytes count.
  FoundSeat line(std::string_view text) const;

 private:
  using Tokens = std::vector<std::string>;

  std::string keyOf(SeatPart part, std::string_view name) const;
  std::optional<SeatPart> partNamedBy(std::string_view token) const;
  Tokens tokensOf(std::string_view text) const;
  std::optional<TicketSeat> labelled(const Tokens& tokens) const;
  FoundSeat inOrder(const Tokens& tokens) const;
  FoundSeat inOrderFrom(const Tokens& tokens, std::size_t first, std::size_t words) const;
  std::optional<std::size_t> sectionNamed(std::string_view name) const;
  std::optional<std::size_t> rowNamed(std::size_t section, std::string_view name) const;
  std::optional<std::size_t> seatNamed(std::size_t section, std::size_t row,
                                       std::string_view name) const;

  const SeatMap& map_;
  const TicketWords words_;
  /// Of the sections, in the map's order: they are asked for again and again.
  std::vector<std::string> sectionKeys_;
};

}  // namespace halvora
