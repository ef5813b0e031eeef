// SPDX-License-Identifier: Apache-2.0
// Where seats go that do not say where they are.
#include "venue/plan/seat_placing.h"

#include <atomic>
#include <string>
#include <variant>

#include <gtest/gtest.h>

namespace halvora {
namespace {

void addSection(SeatList& list, const std::string& name, int rows, int seats) {
  for (int row = 1; row <= rows; ++row) {
    for (int seat = 1; seat <= seats; ++seat) {
      list.seats.push_back({name, std::to_string(row), std::to_string(seat), {}, {}});
    }
  }
}

// Seats are four pixels apart, a shelf is 1,200 wide, and twelve lie between sections.
TEST(SeatPlacing, EachShelfIsAsHighAsItsOwnSections) {
  SeatList list;
  addSection(list, "high", 10, 200);
  addSection(list, "flat", 1, 200);
  addSection(list, "last", 1, 200);
  const std::atomic<bool> isInterrupted = false;
  const auto placed = std::get<PlacedList>(placeSeats(list, {}, isInterrupted));
  ASSERT_EQ(placed.places.size(), 2400U);
  EXPECT_EQ(placed.moved, 0U);
  const int high = placed.places[0].y;
  EXPECT_EQ(placed.places[200].y, high + 4) << "the next row";
  EXPECT_EQ(placed.places[2000].y, high + 10 * 4 + 12);
  EXPECT_EQ(placed.places[2200].y, high + 10 * 4 + 12 + 4 + 12);
  EXPECT_EQ(placed.places[2200].x, placed.places[0].x);
}

TEST(SeatPlacing, SectionsStandSideBySideWhereTheyFit) {
  SeatList list;
  addSection(list, "left", 2, 100);
  addSection(list, "right", 1, 100);
  const std::atomic<bool> isInterrupted = false;
  const auto placed = std::get<PlacedList>(placeSeats(list, {}, isInterrupted));
  EXPECT_EQ(placed.places[200].x, placed.places[0].x + 100 * 4 + 12);
  EXPECT_EQ(placed.places[200].y, placed.places[0].y);
}

}  // namespace
}  // namespace halvora
