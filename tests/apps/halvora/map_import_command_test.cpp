// SPDX-License-Identifier: Apache-2.0
// A ticket office's seats become a map that passes its check, and none is lost without a word.
#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "apps/halvora/map_commands.h"
#include "tests/apps/halvora/tool_runner.h"
#include "venue/plan/csv_table.h"
#include "venue/plan/free_squares.h"
#include "venue/plan/seat_list.h"
#include "venue/plan/seat_placing.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::vector<std::vector<std::string>> fieldsOf(const std::string& text) {
  std::vector<std::vector<std::string>> lines;
  const auto parsed = parseCsv(text);
  if (const auto* fault = std::get_if<CsvFault>(&parsed)) {
    return {{std::to_string(fault->line), fault->what}};
  }
  for (const CsvRow& row : std::get<CsvTable>(parsed).rows) lines.push_back(row.fields);
  return lines;
}

TEST(CsvTable, ReadsWhatOfficesExport) {
  EXPECT_THAT(
      fieldsOf("\xEF\xBB\xBFsection,row,seat\r\nA, 1 ,2\r\n\r\n\"B, left\",\"3 \"\"x\"\"\",4"),
      ElementsAre(ElementsAre("A", "1", "2"), ElementsAre("B, left", "3 \"x\"", "4")));
  EXPECT_THAT(fieldsOf("a;b\n1,5;2\n"), ElementsAre(ElementsAre("1,5", "2")));
  EXPECT_THAT(fieldsOf("a\tb\n1\t2\n"), ElementsAre(ElementsAre("1", "2")));
  EXPECT_THAT(fieldsOf("a\n\"over\ntwo\"\nx\n"),
              ElementsAre(ElementsAre("over\ntwo"), ElementsAre("x")));
  EXPECT_THAT(fieldsOf("a\nb\n\"c"),
              ElementsAre(ElementsAre("3", "a quoted field without its end")));
  EXPECT_THAT(fieldsOf("a\n\"b\"c\n")[0][1], HasSubstr("behind the end"));
  EXPECT_THAT(fieldsOf("")[0][1], HasSubstr("names the columns"));
}

// As spreadsheets save a table that was not asked for as anything else.
TEST(CsvTable, SaysWhichLineIsNotUtf8) {
  EXPECT_THAT(fieldsOf("a,b\nx,1\nPlatz S\xFC"
                       "d,2\n"),
              ElementsAre(ElementsAre("3", "not UTF-8; save the table as \"CSV UTF-8\"")));
  EXPECT_THAT(fieldsOf(std::string("\xFF\xFE"
                                   "a\0\n\0",
                                   6))[0][0],
              "1");
  EXPECT_THAT(fieldsOf("a\nS\xC3\xBC"
                       "d\n"),
              ElementsAre(ElementsAre("S\xC3\xBC"
                                      "d")));
}

class MapImport : public testing::Test {
 protected:
  ToolRun import(const std::string& seats, std::vector<std::string> options = {}) {
    options.insert(options.begin(),
                   {"map", "import", folder.write("seats", seats), "--out", out()});
    return runTool(options);
  }
  std::string out() const { return (folder.path() / "map.json").string(); }
  ToolRun check() const { return runTool({"map", "check", out()}); }

  TestFolder folder;
  std::atomic<bool> isInterrupted{false};
};

TEST_F(MapImport, ATableWithoutPlacesBecomesBlocks) {
  const ToolRun run = import("Block,Row,Seat\nA,1,1\nA,1,2\nA,2,1\nB,1,1\n");
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_EQ(run.output,
            "{\"seats\":4,\"width\":32,\"height\":16,\"moved\":0,\"dropped\":[],\"doubled\":[],"
            "\"missing\":[]}\n");
  EXPECT_EQ(
      contentsOf(out()),
      "{\"seatVersion\":1,\"mapAssetsVersion\":1,\"s\":{\"A\":{\"1\":{\"1\":[4,4],\"2\":[8,4]},"
      "\"2\":{\"1\":[4,8]}},\"B\":{\"1\":{\"1\":[24,4]}}}}\n");
  EXPECT_EQ(check().status, 0) << check().output;
}

// No phone could read the map that it would make.
TEST_F(MapImport, RefusesNamesThatAreNotUtf8) {
  const ToolRun run = import(
      "section,row,seat\nParkett S\xFC"
      "d,1,1\n");
  EXPECT_EQ(flawOfRefusal(run), "");
  EXPECT_THAT(run.error, HasSubstr("line 2: not UTF-8"));
  EXPECT_FALSE(std::filesystem::exists(out()));
}

TEST_F(MapImport, EverySeatThatIsDroppedOrDoubledIsListed) {
  const ToolRun run =
      import("section,row,seat,x,y\nA,1,1,0,0\nA,1,2,1,0\nA,1,1,2,0\nA,1,3,here,0\nA,,4,3,0\n");
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_THAT(run.output, HasSubstr("\"seats\":2,"));
  EXPECT_THAT(run.output, HasSubstr("\"dropped\":[\"line 5: A / 1 / 3: x and y must be numbers\","
                                    "\"line 6: A /  / 4: a name is missing or too long\"]"));
  EXPECT_THAT(run.output, HasSubstr("\"doubled\":[\"line 4: A / 1 / 1\"]"));
}

TEST_F(MapImport, SeatsKeepTheirPlacesAndNoTwoShareAPixel) {
  // Half a metre from seat to seat, and a row that was drawn upon another.
  std::string text = "section,row,seat,x,y\n";
  for (int row = 0; row < 30; ++row) {
    for (int seat = 0; seat < 40; ++seat) {
      const double y = row == 29 ? 14 : 0.5 * row;
      text += "A," + std::to_string(row) + "," + std::to_string(seat) + "," +
              std::to_string(0.5 * seat) + "," + std::to_string(y) + "\n";
    }
  }
  const ToolRun run = import(text);
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_THAT(run.output, HasSubstr("\"seats\":1200,\"width\":176,\"height\":128,\"moved\":40,"));
  EXPECT_EQ(check().status, 0) << check().output;
  EXPECT_THAT(contentsOf(out()), HasSubstr("\"39\":[160,4]}"));
}

TEST_F(MapImport, ABowlLiesOnArcsAndTheRestBelowIt) {
  const auto list =
      seatsOfCsv("section,row,seat\nEast,1,1\nEast,1,2\nEast,1,3\nEast,2,1\nPit,1,1\n", {});
  const auto placed = placeSeats(
      std::get<SeatList>(list),
      {{.section = "East", .from = 0, .to = 180, .radius = 100, .pitch = 20}}, isInterrupted);
  const auto& places = std::get<PlacedList>(placed).places;
  // From the top over the right to the bottom; one seat alone stands in the middle of its arc.
  EXPECT_EQ(places[0].x, places[2].x);
  EXPECT_GT(places[1].x, places[0].x);
  EXPECT_EQ(places[1].y, (places[0].y + places[2].y) / 2);
  EXPECT_EQ(places[3].y, places[1].y);
  EXPECT_GT(places[3].x, places[1].x);
  EXPECT_GT(places[4].y, places[2].y);
  EXPECT_THAT(import("section,row,seat\nA,1,1\n", {"--place", "B=0,90,10,4"}).error,
              HasSubstr("no section is called \"B\""));
  for (const char* bad : {"A", "A=1,2,3", "A=1,2,3,4,5", "A=1,2,3,0", "=1,2,3,4", "A=x,2,3,4"}) {
    EXPECT_EQ(flawOfRefusal(import("section,row,seat\nA,1,1\n", {"--place", bad})), "") << bad;
  }
}

// As where an office has not filled in most of its places.
TEST_F(MapImport, ManySeatsInOnePlaceAreSpreadAroundIt) {
  SeatList list;
  constexpr std::size_t kSeats = 50'000;
  for (std::size_t at = 0; at < kSeats; ++at) list.seats.push_back({"A", "1", "", 0.0, 0.0});
  constexpr std::size_t kPlaced = 1000;
  for (std::size_t at = 0; at < kPlaced; ++at) {
    list.seats.push_back({"A", "2", "", static_cast<double>(1000 + at), 1000.0});
  }
  const auto placed = placeSeats(list, {}, isInterrupted);
  const auto& places = std::get<PlacedList>(placed);
  EXPECT_EQ(places.moved, kSeats - 1);
  std::set<std::pair<int, int>> taken;
  for (const PlacedList::Place& place : places.places) taken.emplace(place.x, place.y);
  EXPECT_EQ(taken.size(), kSeats + kPlaced) << "no two seats share a pixel";
  isInterrupted = true;
  EXPECT_FALSE(std::holds_alternative<PlacedList>(placeSeats(list, {}, isInterrupted)));
}

// Counted, because seconds are the machine's: no square is looked at twice from one place.
TEST(FreeSquares, ManySeatsInOnePlaceCostAFewLooksEach) {
  constexpr int kSide = 300;
  FreeSquares squares(kSide, kSide);
  std::set<std::pair<int, int>> taken;
  int farthest = 0;
  for (int seat = 0; seat < kSide * kSide; ++seat) {
    const auto square = squares.take(kSide / 2, kSide / 2);
    ASSERT_TRUE(square) << seat;
    ASSERT_TRUE(taken.emplace(square->column, square->row).second) << seat;
    const int distance =
        std::max(std::abs(square->column - kSide / 2), std::abs(square->row - kSide / 2));
    ASSERT_GE(distance, farthest) << "the nearest first";
    farthest = distance;
  }
  EXPECT_LE(squares.looks(), 3U * kSide * kSide);
  EXPECT_FALSE(squares.take(0, 0));
}

// The place of each block for all its seats, or none at all.
TEST_F(MapImport, ManySeatsOfFewPlacesFindRoomBesideThem) {
  std::string seats = "section,row,seat,x,y\n";
  for (int block = 0; block < 12; ++block) {
    for (int seat = 0; seat < 400; ++seat) {
      seats += "B" + std::to_string(block) + "," + std::to_string(seat / 20) + "," +
               std::to_string(seat % 20) + "," + std::to_string(block % 4 * 10) + "," +
               std::to_string(block / 4 * 10) + "\n";
    }
  }
  const ToolRun run = import(seats);
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_THAT(run.output, HasSubstr("\"seats\":4800"));
  EXPECT_EQ(check().status, 0);
}

TEST_F(MapImport, ReadsASeatingPlan) {
  const ToolRun run = import(R"({"name": "Hall", "zones": [
    {"name": "Floor", "position": {"x": 100, "y": 50}, "rows": [
      {"row_number": "1", "position": {"x": 0, "y": 0}, "seats": [
        {"seat_guid": "f-1-1", "seat_number": "1", "position": {"x": 0, "y": 0}},
        {"seat_guid": "f-1-2", "seat_number": "2", "position": {"x": 25, "y": 0}}]},
      {"row_number": "2", "position": {"x": 0, "y": 25}, "seats": [
        {"seat_guid": "f-2-1", "seat_number": 1, "position": {"x": 0, "y": 0}},
        {"seat_guid": "f-2-x", "position": {"x": 50, "y": 0}}]}]}]})");
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_THAT(run.output, HasSubstr("seat f-2-x: Floor / 2 / : a name is missing"));
  EXPECT_THAT(contentsOf(out()),
              HasSubstr("\"Floor\":{\"1\":{\"1\":[4,4],\"2\":[8,4]},\"2\":{\"1\":[4,8]}}"));
  EXPECT_EQ(check().status, 0) << check().output;
  EXPECT_EQ(flawOfRefusal(import("{}")), "");
  EXPECT_EQ(flawOfRefusal(import("{\"zones\": 3}")), "");
}

TEST_F(MapImport, TicketsForSeatsThatAreNotThereAreListed) {
  const std::string tickets = folder.write("tickets.csv", "Sektor;Reihe;Platz\nA;1;1\nA;1;9\n");
  const ToolRun run = import("Sektor,Reihe,Platz\nA,1,1\nA,1,2\n",
                             {"--columns", "section=Sektor", "--expect", tickets});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.output, HasSubstr("\"missing\":[\"A / 1 / 9\"]"));
  EXPECT_THAT(run.error, HasSubstr("1 ticket for seats"));
}

TEST_F(MapImport, SaysWhichColumnItLacks) {
  const ToolRun run = import("Sektor,Reihe,Platz\nA,1,1\n");
  EXPECT_EQ(flawOfRefusal(run), "");
  EXPECT_THAT(run.error, HasSubstr("no column for the section; say which of Sektor, Reihe, Platz"));
  EXPECT_THAT(import("a,b\n", {"--columns", "row=c"}).error, HasSubstr("no column"));
  EXPECT_EQ(flawOfRefusal(import("section,row,seat\nA,1,1\n", {"--columns", "colour=x"})), "");
  EXPECT_EQ(flawOfRefusal(import("section,row,seat\n")), "");
  EXPECT_FALSE(std::filesystem::exists(out()));
}

}  // namespace
}  // namespace halvora
