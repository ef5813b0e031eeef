// SPDX-License-Identifier: Apache-2.0
// What a seat map's document says and the kit does not take as it is said: all of it is counted,
// with its place.
#include "venue/plan/map_flaws.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/standard/standard_files.h"
#include "tests/seats/seat_map_lines.h"
#include "tests/support/source_tree.h"
#include "venue/plan/map_report.h"

namespace halvora {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Lines = std::vector<std::string>;

/// "KIND COUNT: PLACE; PLACE" for each kind, in their order.
Lines flaws(const std::string& document) {
  Lines lines;
  for (const Finding& finding : flawsOf(document, ExactJsonReader())) {
    std::string line = finding.kind + " " + std::to_string(finding.count) + ":";
    for (std::size_t at = 0; at < finding.examples.size(); ++at) {
      line += (at > 0 ? "; " : " ") + finding.examples[at];
    }
    lines.push_back(line);
  }
  return lines;
}

Lines flawsOfSections(const std::string& sections) {
  return flaws(R"({"sections": [)" + sections + "]}");
}
Lines flawsOfRows(const std::string& rows) {
  return flawsOfSections(R"({"name": "A", "rows": [)" + rows + "]}");
}
const std::string kGoodSeat = R"({"name": "z", "x": 90, "y": 90})";
Lines flawsOfSeats(const std::string& seats) {
  return flawsOfRows(R"({"name": "1", "seats": [)" + kGoodSeat + ", " + seats + "]}");
}
/// Of a seat's members beside its name.
Lines flawsOfPosition(const std::string& members) {
  return flawsOfSeats(R"({"name": "a", )" + members + "}");
}
Lines flawsOfKeyed(const std::string& sections) { return flaws(R"({"s": {)" + sections + "}}"); }
Lines flawsOfPair(const std::string& pair) {
  return flawsOfKeyed(R"("A": {"1": {"7": )" + pair + "}}");
}

TEST(MapFlaws, DocumentsThatSayWhatTheyMeanHaveNone) {
  EXPECT_THAT(flawsOfSeats(kGoodSeat), IsEmpty());
  EXPECT_THAT(flaws("[{\"rows\": [{\"seats\": [\"A\", \"B\", 3]}]}]"), IsEmpty());
  EXPECT_THAT(flawsOfRows(R"({"name": 7, "seats": [{"xPos": 1, "yPos": "2"}]})"), IsEmpty());
  EXPECT_THAT(flawsOfPair("[1, 2]"), IsEmpty());
  EXPECT_THAT(flawsOfPair(R"(["1", " -2 ", {"more": 1}])"), IsEmpty());
  EXPECT_THAT(flaws("no JSON"), IsEmpty());
  const auto demo = readFile(sourceTree() + "/assets/demo/HVAssets/Maps/Venue-7/map.json", 1 << 26);
  ASSERT_TRUE(demo);
  EXPECT_THAT(flaws(*demo), IsEmpty());
}

TEST(MapFlaws, EntriesThatAreNoSeats) {
  EXPECT_THAT(flawsOfSeats(R"(null, [1, 2], [], {"name": "a", "x": 1, "y": 1})"),
              ElementsAre("seatSkipped 3: sections[0].rows[0].seats[1] is null; "
                          "sections[0].rows[0].seats[2] is a list; "
                          "sections[0].rows[0].seats[3] is a list"));
  EXPECT_THAT(flawsOfSeats("true"),
              ElementsAre("nameUnusable 1: sections[0].rows[0].seats[1] is true",
                          "positionMissing 2: sections[0].rows[0].seats[1] has no x; "
                          "sections[0].rows[0].seats[1] has no y"));
}

TEST(MapFlaws, EntriesThatAreNoRowsOrSections) {
  const std::string good = R"({"name": "1", "seats": [)" + kGoodSeat + "]}";
  EXPECT_THAT(flawsOfRows(good + R"(, "row 2", null, 3, [)" + good + "]"),
              ElementsAre("rowSkipped 4: sections[0].rows[1] is \"row 2\"; "
                          "sections[0].rows[2] is null; sections[0].rows[3] is 3; "
                          "sections[0].rows[4] is a list"));
  EXPECT_THAT(flawsOfSections(R"({"name": "A", "rows": [)" + good + R"(]}, "B", null, [])"),
              ElementsAre("sectionSkipped 3: sections[1] is \"B\"; sections[2] is null; "
                          "sections[3] is a list"));
  EXPECT_THAT(flaws(R"([null, {"name": "A", "rows": [)" + good + "]}]"),
              ElementsAre("sectionSkipped 1: [0] is null"));
}

TEST(MapFlaws, RowsWithoutSeatsAndSectionsWithoutRows) {
  const std::string good = R"({"name": "1", "seats": [)" + kGoodSeat + "]}";
  EXPECT_THAT(flawsOfRows(good + R"(, {"name": "2", "seats": []}, {"name": "3"})"),
              ElementsAre("rowWithoutSeats 2: sections[0].rows[1]; sections[0].rows[2]"));
  EXPECT_THAT(flawsOfRows(good + R"(, {"name": "2", "seats": [null, []]})"),
              ElementsAre("seatSkipped 2: sections[0].rows[1].seats[0] is null; "
                          "sections[0].rows[1].seats[1] is a list",
                          "rowWithoutSeats 1: sections[0].rows[1]"));
  EXPECT_THAT(flawsOfSections(R"({"name": "A"}, {"name": "B", "rows": []},
                                 {"name": "C", "rows": [{"name": "1"}]})"),
              ElementsAre("rowWithoutSeats 1: sections[2].rows[0]",
                          "sectionWithoutRows 3: sections[0]; sections[1]; sections[2]"));
  EXPECT_THAT(flawsOfSections(R"({"name": "A", "rows": {"1": {}}}, {"name": "B", "rows": "1"},
                                 {"name": "C", "rows": null},
                                 {"name": "D", "rows": [{"name": "1", "seats": {"a": 1}}]})"),
              ElementsAre("listMissing 4: sections[0].rows is an object; "
                          "sections[1].rows is \"1\"; sections[2].rows is null; "
                          "sections[3].rows[0].seats is an object",
                          "rowWithoutSeats 1: sections[3].rows[0]",
                          "sectionWithoutRows 4: sections[0]; sections[1]; sections[2]; "
                          "sections[3]"));
}

TEST(MapFlaws, CoordinatesThatCountAsOthers) {
  EXPECT_THAT(flawsOfPosition(R"("x": "12,5", "y": 3)"),
              ElementsAre("positionChanged 1: sections[0].rows[0].seats[1].x is \"12,5\" and "
                          "counts as 12"));
  const struct {
    const char* written;
    const char* shown;
  } kOthers[] = {
      {"\"abc\"", "\"abc\" and counts as 0"},
      {"\"12.5\"", "\"12.5\" and counts as 12"},
      {"\"7b\"", "\"7b\" and counts as 7"},
      {"\" \"", "\" \" and counts as 0"},
      {"12.75", "12.75 and counts as 12"},
      {"1e300", "1e300 and counts as 9223372036854775807"},
      {"true", "true and counts as 1"},
      {"\"1e3\"", "\"1e3\" and counts as 1"},
      {"\"99999999999999999999\"", "\"99999999999999999999\" and counts as 9223372036854775807"}};
  for (const auto& other : kOthers) {
    EXPECT_THAT(flawsOfPosition(R"("x": 3, "line": )" + std::string(other.written)),
                ElementsAre("positionChanged 1: sections[0].rows[0].seats[1].line is " +
                            std::string(other.shown)));
  }
  for (const char* plain : {"12", "-1", "12.0", "1e3", "\"12\"", "\" 12 \"", "\"-3\"", "\"+3\""}) {
    EXPECT_THAT(flawsOfPosition(R"("x": 3, "y": )" + std::string(plain)), IsEmpty()) << plain;
  }
}

TEST(MapFlaws, CoordinatesThatArePassedOver) {
  for (const char* value : {"null", "\"\"", "[3]", "{}"}) {
    const Lines found = flawsOfPosition(R"("x": 1, "y": )" + std::string(value));
    ASSERT_EQ(found.size(), 1U) << value;
    EXPECT_THAT(found[0],
                ::testing::StartsWith("positionUnusable 1: sections[0].rows[0].seats[1].y is "));
  }
  EXPECT_THAT(flawsOfPosition(R"("x": "", "column": 4, "y": 1)"),
              ElementsAre("positionUnusable 1: sections[0].rows[0].seats[1].x is \"\""));
  EXPECT_THAT(flawsOfPosition(R"("x": 1, "y": 1, "row": null, "column": "C")"), IsEmpty())
      << "a better key says it";
  EXPECT_THAT(flawsOfPosition(R"("row": "A", "x": 1, "y": 1)"), IsEmpty());
}

TEST(MapFlaws, CoordinatesThatAreMissingWhereOthersHaveThem) {
  EXPECT_THAT(flawsOfPosition(R"("x": 1)"),
              ElementsAre("positionMissing 1: sections[0].rows[0].seats[1] has no y"));
  EXPECT_THAT(flawsOfSeats(R"("A", {"name": "b"})"),
              ElementsAre("positionMissing 4: sections[0].rows[0].seats[1] has no x; "
                          "sections[0].rows[0].seats[2] has no x; "
                          "sections[0].rows[0].seats[1] has no y; "
                          "sections[0].rows[0].seats[2] has no y"));
  EXPECT_THAT(flawsOfRows(R"({"name": "1", "seats": ["A", {"name": "b"}]})"), IsEmpty())
      << "all follow from their numbers";
}

TEST(MapFlaws, NamesThatAreMissingWhereOthersHaveThemOrCannotBeUsed) {
  const std::string seats = R"("seats": [)" + kGoodSeat + "]";
  EXPECT_THAT(flawsOfRows(R"({"name": "1", )" + seats + "}, {" + seats + "}"),
              ElementsAre("nameMissing 1: sections[0].rows[1]"));
  EXPECT_THAT(flawsOfSeats(R"({"x": 1, "y": 1})"),
              ElementsAre("nameMissing 1: sections[0].rows[0].seats[1]"));
  EXPECT_THAT(flawsOfRows(R"({"name": null, )" + seats + R"(}, {"name": " ", )" + seats +
                          R"(}, {"name": [], )" + seats + "}"),
              ElementsAre("nameUnusable 3: sections[0].rows[0].name is null; "
                          "sections[0].rows[1].name is \" \"; sections[0].rows[2].name is a list"));
  EXPECT_THAT(flawsOfSections("{\"rows\": [{" + seats + "}]}"), IsEmpty());
}

TEST(MapFlaws, MembersThatComeAgain) {
  const std::string seats = R"("seats": [)" + kGoodSeat + "]";
  EXPECT_THAT(flawsOfRows(R"({"name": "1", "name": "2", )" + seats + ", " + seats + "}"),
              ElementsAre("repeatedMember 2: sections[0].rows[0].name; sections[0].rows[0].seats"));
  EXPECT_THAT(flawsOfPosition(R"("x": 1, "y": 2, "x": 3)"),
              ElementsAre("repeatedMember 1: sections[0].rows[0].seats[1].x"));
  EXPECT_THAT(flawsOfKeyed(R"("A": {"1": {"7": [1, 2], "7": [3, 4]}, "1": {"8": [5, 6]}},
                              "A": {"1": {"9": [1, 1]}}, "A": 5)"),
              ElementsAre("repeatedMember 4: s[\"A\"][\"1\"][\"7\"]; s[\"A\"][\"1\"]; s[\"A\"]; "
                          "s[\"A\"]"));
}

TEST(MapFlaws, KeyedEntriesOfOtherKinds) {
  EXPECT_THAT(flawsOfKeyed(R"("A": {"1": {"7": [1, 2]}}, "B": null, "C": [], "D": "x")"),
              ElementsAre("sectionSkipped 3: s[\"B\"] is null; s[\"C\"] is a list; "
                          "s[\"D\"] is \"x\""));
  EXPECT_THAT(flawsOfKeyed(R"("A": {"1": {"7": [1, 2]}, "2": [1, 2], "3": "x", "4": {}})"),
              ElementsAre("rowSkipped 2: s[\"A\"][\"2\"] is a list; s[\"A\"][\"3\"] is \"x\"",
                          "rowWithoutSeats 1: s[\"A\"][\"4\"]"));
  EXPECT_THAT(flawsOfKeyed(R"("A": {"1": {"7": [1, 2], "8": null, "9": {}, "10": "1,2"}})"),
              ElementsAre("seatSkipped 3: s[\"A\"][\"1\"][\"8\"] is null; "
                          "s[\"A\"][\"1\"][\"9\"] is an object; "
                          "s[\"A\"][\"1\"][\"10\"] is \"1,2\""));
  EXPECT_THAT(flawsOfKeyed(R"("A": {"1": {"7": [1], "8": []}}, "B": {})"),
              ElementsAre("cutShort 2: s[\"A\"][\"1\"][\"7\"]; s[\"A\"][\"1\"][\"8\"]",
                          "rowWithoutSeats 1: s[\"A\"][\"1\"]",
                          "sectionWithoutRows 2: s[\"A\"]; s[\"B\"]"));
}

TEST(MapFlaws, KeyedCoordinates) {
  EXPECT_THAT(flawsOfPair(R"(["12,5", 2])"),
              ElementsAre("positionChanged 1: s[\"A\"][\"1\"][\"7\"][0] is \"12,5\" and counts "
                          "as 12"));
  EXPECT_THAT(flawsOfPair("[1, 2.5]"),
              ElementsAre("positionChanged 1: s[\"A\"][\"1\"][\"7\"][1] is 2.5 and counts as 2"));
  EXPECT_THAT(flawsOfPair(R"([null, ""])"),
              ElementsAre("positionUnusable 2: s[\"A\"][\"1\"][\"7\"][0] is null; "
                          "s[\"A\"][\"1\"][\"7\"][1] is \"\""));
  EXPECT_THAT(flawsOfPair("[[1], {}]"),
              ElementsAre("positionUnusable 2: s[\"A\"][\"1\"][\"7\"][0] is a list; "
                          "s[\"A\"][\"1\"][\"7\"][1] is an object"));
}

TEST(MapFlaws, PartsThatNobodyLooksAt) {
  const std::string keyed = R"("s": {"A": {"1": {"7": [1, 2]}}})";
  const std::string listed = R"("sections": [null])";
  EXPECT_THAT(flaws("{" + keyed + ", " + listed + "}"),
              ElementsAre("unusedPart 1: sections, because there is an s"));
  EXPECT_THAT(flaws("{" + listed + ", " + keyed + "}"),
              ElementsAre("unusedPart 1: sections, because there is an s"));
  EXPECT_THAT(flaws(R"({"s": 5, "sections": {"A": 1}})"),
              ElementsAre("unusedPart 2: s, which is 5; sections, which is an object"));
  EXPECT_THAT(flaws("{" + keyed + ", \"s\": {}}"),
              ElementsAre("unusedPart 1: s, which is there already"));
}

TEST(MapFlaws, AllAreCountedAndFiveAreNamed) {
  std::string seats;
  for (int seat = 0; seat < 100'000; ++seat) seats += "null, ";
  const auto found = flawsOf(R"([{"rows": [{"seats": [)" + seats + "1]}]}]", ExactJsonReader());
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].count, 100'000U);
  EXPECT_EQ(found[0].text, "100,000 entries are no seats and are passed over");
  EXPECT_EQ(found[0].examples.size(), Finding::kMostExamples);
}

TEST(MapFlaws, LongTextsAreCutBetweenCharacters) {
  std::string text = std::string(39, 'a') + "\xC3\xA4" + std::string(1000, 'b');
  EXPECT_THAT(flawsOfPosition("\"x\": \"" + text + "\", \"y\": 1"),
              ElementsAre("positionChanged 1: sections[0].rows[0].seats[1].x is \"" +
                          std::string(39, 'a') + "...\" and counts as 0"));
}

// A seat that the model does not have, or has elsewhere than is written, is always a finding.
TEST(MapFlaws, WithoutAnyTheModelIsWhatIsWritten) {
  const char* const kValues[] = {"1",
                                 "\"1\"",
                                 "null",
                                 "\"\"",
                                 "\"1,5\"",
                                 "[]",
                                 "1.5",
                                 "true",
                                 "{}",
                                 "[1]",
                                 "[1, 2]",
                                 "\"x\"",
                                 "{\"name\": \"s\", \"x\": 1, \"y\": 1}"};
  for (const char* first : kValues) {
    for (const char* second : kValues) {
      const std::string pair = "[" + std::string(first) + ", " + second + "]";
      const std::string keyed = R"({"s": {"A": {"1": {"7": )" + pair + "}}}}";
      if (flaws(keyed).empty()) {
        EXPECT_THAT(linesOfDocument(keyed), ElementsAre("Section A | Row 1 | Seat 7 1,1")) << keyed;
      }
      const std::string listed =
          R"([{"name": "A", "rows": [{"name": "1", "seats": [{"name": "7", "x": )" +
          std::string(first) + R"(, "y": )" + second + "}]}]}]";
      if (flaws(listed).empty()) {
        EXPECT_THAT(linesOfDocument(listed), ElementsAre("A | 1 | 7 1,1")) << listed;
      }
    }
  }
}

}  // namespace
}  // namespace halvora
