// SPDX-License-Identifier: Apache-2.0
// Any bytes as a ticket office's table, or as a seating plan: refused with words, or a list in
// which every seat is once, and which has its places on a canvas, no two alike.
#include <atomic>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <variant>

#include "adapters/json/exact_json_reader.h"
#include "tests/fuzz/fuzz_targets.h"
#include "venue/plan/seat_list.h"
#include "venue/plan/seat_placing.h"

namespace halvora {

namespace {

void check(const std::variant<SeatList, std::string>& read) {
  if (const auto* why = std::get_if<std::string>(&read)) {
    require(!why->empty(), "a refusal has words");
    return;
  }
  const auto& list = std::get<SeatList>(read);
  std::set<std::tuple<std::string, std::string, std::string>> names;
  for (const ListedSeat& seat : list.seats) {
    require(names.emplace(seat.section, seat.row, seat.seat).second, "a seat is there once");
  }
  const std::atomic<bool> isInterrupted{false};
  const auto placed = placeSeats(list, {}, isInterrupted);
  const auto* places = std::get_if<PlacedList>(&placed);
  require(places != nullptr, "a few seats fit");
  if (places == nullptr) return;
  std::set<std::pair<int, int>> taken;
  for (const PlacedList::Place& place : places->places) {
    require(place.x >= 0 && place.x < places->width && place.y >= 0 && place.y < places->height,
            "a seat is on the canvas");
    require(taken.emplace(place.x, place.y).second, "no two seats share a pixel");
  }
  require(!seatMapDocumentOf(list, *places).empty(), "a map has a document");
}

}  // namespace

int fuzzTickets(FuzzBytes bytes) {
  check(seatsOfCsv(textOf(bytes), {}));
  check(seatsOfPretix(textOf(bytes), ExactJsonReader()));
  return 0;
}

}  // namespace halvora
