// SPDX-License-Identifier: Apache-2.0
// A seat from what a ticket says of it: in one line, in three names, in a link.
#include "seats/seat_finder.h"

#include <string>

#include <gtest/gtest.h>

#include "seats/ticket_link.h"

namespace halvora {
namespace {

const TicketWords kWords{{{"section", "sec", "block"}, {"row", "reihe"}, {"seat", "platz"}}};

void addRow(SeatMapBuilder& map, const std::string& name, int seats) {
  for (int seat = 1; seat <= seats; ++seat) {
    map.addSeat(map.addName("Seat ", std::to_string(seat)), seat, seat);
  }
  map.endRow(map.addName("Row ", name));
}

// Sections 208 and 209 with rows 1 to 9 of 12 seats, 218 with rows A to T, and a floor.
SeatMap hall() {
  SeatMapBuilder map;
  for (const char* section : {"208", "209"}) {
    for (int row = 1; row <= 9; ++row) addRow(map, std::to_string(row), 12);
    map.endSection(map.addName("Section ", section));
  }
  for (char row = 'A'; row <= 'T'; ++row) addRow(map, std::string(1, row), 3);
  map.endSection(map.addName("Section 218"));
  addRow(map, "1", 2);
  map.endSection(map.addName("Standing Floor North"));
  return map.finish();
}

struct Hall : testing::Test {
  FoundSeat line(const char* text) const { return SeatFinder(map, kWords).line(text); }
  void expectSeat(const char* text, std::size_t section, std::size_t row, std::size_t seat) const {
    const FoundSeat found = line(text);
    EXPECT_TRUE(found.isComplete()) << text;
    EXPECT_EQ(found.section, section) << text;
    EXPECT_EQ(found.row, row) << text;
    EXPECT_EQ(found.seat, seat) << text;
  }
  const SeatMap map = hall();
};

using FindSeat = Hall;

TEST_F(FindSeat, ThreeNamesInTheirOrderAreEnough) {
  for (const char* text :
       {"209 8 10", "209/8/10", "209, 8, 10", "  209-08-010  ", "Section 209 Row 8 Seat 10",
        "Sec 209 Row 8 Seat 10", "sec209 row8 seat10", "Seat 10, Row 8, Section 209",
        "BLOCK 209 REIHE 8 PLATZ 10"}) {
    expectSeat(text, 1, 7, 9);
  }
  expectSeat("218 t 3", 2, 19, 2);
}

TEST_F(FindSeat, TheRestOfATicketDoesNotMatter) {
  expectSeat(
      "Big Show, 5 June 2026 19:30\nGate 5 Level 2\nSection 209  Row 8  Seat 10\nAdult 45.00", 1, 7,
      9);
  expectSeat("Gate 5 Entrance 12 209 8 10 Adult", 1, 7, 9);
}

TEST_F(FindSeat, ANameMayHaveSeveralWords) {
  expectSeat("Standing Floor North 1 2", 3, 0, 1);
  expectSeat("section standing floor north row 1 seat 2", 3, 0, 1);
}

TEST_F(FindSeat, WhatIsNotNamedIsLeftOpen) {
  const FoundSeat section = line("209");
  EXPECT_EQ(section.section, 1U);
  EXPECT_FALSE(section.row || section.missing);
  const FoundSeat row = line("209 8");
  EXPECT_EQ(row.row, 7U);
  EXPECT_FALSE(row.seat || row.missing);
}

TEST_F(FindSeat, SaysWhichIsNotThere) {
  EXPECT_EQ(line("700 1 1").missing, SeatPart::section);
  EXPECT_EQ(line("700 1 1").missingName, "700");
  const FoundSeat row = line("218 Z 1");
  EXPECT_EQ(row.missing, SeatPart::row);
  EXPECT_EQ(row.missingName, "z");
  EXPECT_EQ(row.section, 2U);
  const FoundSeat seat = line("Section 209 Row 8 Seat 13");
  EXPECT_EQ(seat.missing, SeatPart::seat);
  EXPECT_EQ(seat.missingName, "13");
}

TEST_F(FindSeat, NothingAndTooMuchFindNothing) {
  for (const std::string& text :
       {std::string(), std::string(" ,;| "), std::string("row"), std::string(100'000, 'x'),
        std::string(600, ' ') + "209 8 10", std::string("\xFF\xC3\x00", 3)}) {
    EXPECT_TRUE(line(text.c_str()).missing) << text.size();
  }
}

TEST_F(FindSeat, ByThreeNamesAsTheMapOrTheTicketHasThem) {
  const SeatFinder finder(map, kWords);
  EXPECT_TRUE(finder.seat({"Section 209", "Row 8", "Seat 10"}).isComplete());
  EXPECT_TRUE(finder.seat({"209", "8", "10"}).isComplete());
  EXPECT_EQ(finder.seat({"209", "20", "1"}).missing, SeatPart::row);
}

// Links

TEST(FindSeatIn, ANameOfFiveWordsButNotOfSix) {
  SeatMapBuilder builder;
  for (const char* section : {"Upper Ring North East Left", "Upper Ring South East Far Left"}) {
    addRow(builder, "1", 1);
    builder.endSection(builder.addName(section));
  }
  const SeatMap ring = builder.finish();
  const SeatFinder finder(ring, kWords);
  EXPECT_EQ(finder.line("upper ring north east left").section, 0U);
  EXPECT_TRUE(finder.line("upper ring south east far left").missing);
}

TEST(FindSeatIn, ATicketsWordGoesFromAName) {
  const auto without = [](const char* name) {
    return withoutTicketWord(kWords, SeatPart::row, name);
  };
  EXPECT_EQ(without("Row 1"), "1");
  EXPECT_EQ(without("ROW 12 left"), "12 left");
  EXPECT_EQ(without("Row "), "Row ");
  EXPECT_EQ(without("Row"), "Row");
  EXPECT_EQ(without("Block 1"), "Block 1") << "a section's";
}

TEST(TicketLink, HasTheThreeInAnyOrder) {
  for (const char* link :
       {"https://tickets.example/show?section=209&row=8&seat=10",
        "app:seat?seat=10&row=8&section=209", "x?section=2%309&row=8&seat=10&row=9#part",
        "x?a=b&&section=209&row=8&seat=10&"}) {
    const auto seat = ticketSeatOf(link);
    ASSERT_TRUE(seat) << link;
    EXPECT_EQ(seat->section + " " + seat->row + " " + seat->seat, "209 8 10") << link;
  }
  EXPECT_EQ(ticketSeatOf("x?section=Standing+Floor&row=a%20b&seat=1")->section, "Standing Floor");
}

TEST(TicketLink, AnyOtherIsNone) {
  for (const std::string& link :
       {std::string(), std::string("section=1&row=1&seat=1"), std::string("x?section=1&row=1"),
        std::string("x?section=&row=1&seat=1"), std::string("x?section=%2&row=1&seat=1"),
        std::string("x?section=%zz&row=1&seat=1"), std::string("x?section=%00&row=1&seat=1"),
        std::string("x?sections=1&row=1&seat=1"),
        std::string("x#?section=1&row=1&seat").substr(0, 20),
        "x?section=" + std::string(65, '1') + "&row=1&seat=1",
        "x?section=1&row=1&seat=1&" + std::string(2048, 'a')}) {
    EXPECT_FALSE(ticketSeatOf(link)) << link.substr(0, 60);
  }
}

}  // namespace
}  // namespace halvora
