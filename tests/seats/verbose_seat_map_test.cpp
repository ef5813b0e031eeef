// SPDX-License-Identifier: Apache-2.0
// The layout of lists: "sections", "rows", "seats".
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/seats/seat_map_lines.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// The map of one section "S" with one row "R" of these seats.
std::vector<std::string> seats(const std::string& entries) {
  std::vector<std::string> lines = linesOfDocument(
      R"({"sections": [{"name": "S", "rows": [{"name": "R", "seats": [)" + entries + "]}]}]}");
  for (std::string& line : lines) {
    EXPECT_TRUE(line.starts_with("S | R | ")) << line;
    line.erase(0, 8);
  }
  return lines;
}

/// The position of one seat object with these members, the second one of the first row.
std::string positionOf(const std::string& members) {
  const auto lines = seats(R"("first", {"name": "N", )" + members + "}");
  if (lines.size() != 2) return "no seat";
  EXPECT_TRUE(lines[1].starts_with("N "));
  return lines[1].substr(2);
}

/// The name of the only section, row and seat.
std::string nameOfSeat(const std::string& name) {
  const auto lines = seats(R"({"x": 0, "y": 0, "name": )" + name + "}");
  if (lines.size() != 1 || !lines[0].ends_with(" 0,0")) return "no seat";
  return lines[0].substr(0, lines[0].size() - 4);
}

TEST(VerboseSeatMap, SectionsRowsAndSeatsKeepTheOrderOfTheDocument) {
  EXPECT_THAT(linesOfDocument(R"({"sections": [
      {"name": "B", "rows": [{"name": "2", "seats": [{"name": "9", "xPos": 5, "yPos": 6}]},
                             {"name": "1", "seats": [{"name": "10", "xPos": 7, "yPos": 8},
                                                     {"name": "1", "xPos": 3, "yPos": 4}]}]},
      {"name": "A", "rows": [{"name": "x", "seats": [{"name": "y", "xPos": -1, "yPos": 0}]}]}]})"),
              ElementsAre("B | 2 | 9 5,6", "B | 1 | 10 7,8", "B | 1 | 1 3,4", "A | x | y -1,0"));
}

TEST(VerboseSeatMap, TheListMayBeTheDocumentItself) {
  EXPECT_THAT(linesOfDocument(R"([{"name": "S", "rows": [{"name": "R", "seats": ["A"]}]}])"),
              ElementsAre("S | R | A 1,1"));
}

TEST(VerboseSeatMap, OtherMembersOfTheTopAreIgnored) {
  EXPECT_THAT(linesOfDocument(R"({"seatVersion": 3, "name": "x", "rows": [{"seats": ["no"]}],
                                  "sections": [{"rows": [{"seats": ["A"]}]}], "more": [{}]})"),
              ElementsAre("Section 1 | Row 1 | A 1,1"));
}

TEST(VerboseSeatMap, NamelessSectionAndRowWithSeatsGivenByName) {
  EXPECT_THAT(linesOfDocument(R"({"sections": [{"rows": [{"seats": ["A", "B"]}]}]})"),
              ElementsAre("Section 1 | Row 1 | A 1,1", "Section 1 | Row 1 | B 2,1"));
}

TEST(VerboseSeatMap, SectionsThatAreNoArrayGiveNothing) {
  for (const char* value : {"{}", "7", "\"x\"", "null", "true", R"({"rows": []})"}) {
    EXPECT_TRUE(seatMapOf(R"({"sections": )" + std::string(value) + "}").isEmpty()) << value;
  }
}

TEST(VerboseSeatMap, RowsAndSeatsThatAreNoArraysCountAsEmpty) {
  EXPECT_THAT(linesOfDocument(R"([{"name": "a", "rows": {"seats": ["x"]}}, {"rows": "x"},
      {"rows": 1}, {"rows": null}, {"rows": [{"seats": {"a": "b"}}, {"seats": "x"}, {"seats": 3}]},
      {"name": "kept", "rows": [{"seats": ["A"]}]}])"),
              ElementsAre("kept | Row 1 | A 1,1"));
}

TEST(VerboseSeatMap, SectionEntriesThatAreNoObjectsAreSkippedAndNotCounted) {
  EXPECT_THAT(linesOfDocument(R"([1, "x", null, true, [{"rows": [{"seats": ["no"]}]}],
                                 {"rows": [{"seats": ["A"]}]}])"),
              ElementsAre("Section 1 | Row 1 | A 1,1"));
}

TEST(VerboseSeatMap, RowEntriesThatAreNoObjectsAreSkippedAndNotCounted) {
  EXPECT_THAT(linesOfDocument(R"([{"rows": [1, "x", null, false, [{"seats": ["no"]}],
                                           {"seats": ["A"]}]}])"),
              ElementsAre("Section 1 | Row 1 | A 1,1"));
}

TEST(VerboseSeatMap, SeatEntriesThatAreNeitherObjectTextNorNumberAreSkippedAndNotCounted) {
  EXPECT_THAT(seats(R"(null, [1, 2], ["x"], "A", null, {}, [])"),
              ElementsAre("A 1,1", "Seat 2 2,1"));
}

TEST(VerboseSeatMap, ASeatMayBeATextANumberOrABoolean) {
  EXPECT_THAT(seats(R"("A", 7, 7.5, true, false)"),
              ElementsAre("A 1,1", "7 2,1", "7.5 3,1", "1 4,1", "0 5,1"));
}

TEST(VerboseSeatMap, AnEmptyTextIsASeatWithoutAName) {
  EXPECT_THAT(seats(R"("", "  ")"), ElementsAre("Seat 1 1,1", "Seat 2 2,1"));
}

TEST(VerboseSeatMap, TheRowOrdinalIsTheDefaultLine) {
  EXPECT_THAT(linesOfDocument(R"([{"rows": [{"seats": ["a"]}, {"seats": ["b", "c"]}]},
                                  {"rows": [{"seats": ["d"]}]}])"),
              ElementsAre("Section 1 | Row 1 | a 1,1", "Section 1 | Row 2 | b 1,2",
                          "Section 1 | Row 2 | c 2,2", "Section 2 | Row 1 | d 1,1"));
}

TEST(VerboseSeatMap, DroppedSectionsUseUpTheirOrdinal) {
  EXPECT_THAT(linesOfDocument(R"([{"rows": [{"seats": ["a"]}]}, {"rows": [{"seats": []}]},
                                  {"rows": [{"seats": ["b"]}]}])"),
              ElementsAre("Section 1 | Row 1 | a 1,1", "Section 3 | Row 1 | b 1,1"));
}

TEST(VerboseSeatMap, DroppedRowsUseUpTheirOrdinal) {
  EXPECT_THAT(
      linesOfDocument(R"([{"rows": [{}, {"seats": [null]}, {"seats": ["a"]}, {"seats": []}]}])"),
      ElementsAre("Section 1 | Row 3 | a 1,3"));
}

TEST(VerboseSeatMap, MembersMayStandInAnyOrder) {
  EXPECT_THAT(linesOfDocument(R"([{"rows": [{"seats": [{"yPos": 2, "xPos": 1, "name": "N"}],
                                             "name": "R"}], "name": "S"}])"),
              ElementsAre("S | R | N 1,2"));
}

TEST(VerboseSeatMap, OfEqualMembersTheFirstCounts) {
  EXPECT_THAT(linesOfDocument(R"({"sections": [{"name": "S", "name": "no", "rows": [
        {"name": "R", "name": "no", "seats": [{"name": "N", "name": "no", "x": 4, "x": 5, "y": 6,
         "y": 7}], "seats": ["no"]}], "rows": [{"seats": ["no"]}]}], "sections": [{"rows": []}]})"),
              ElementsAre("S | R | N 4,6"));
}

TEST(VerboseSeatMap, AFirstMemberOfNoUseHidesLaterOnes) {
  EXPECT_TRUE(
      seatMapOf(R"({"sections": 1, "sections": [{"rows": [{"seats": ["A"]}]}]})").isEmpty());
  EXPECT_TRUE(seatMapOf(R"([{"rows": null, "rows": [{"seats": ["A"]}]}])").isEmpty());
  EXPECT_TRUE(seatMapOf(R"([{"rows": [{"seats": {}, "seats": ["A"]}]}])").isEmpty());
  EXPECT_THAT(linesOfDocument(R"([{"name": [], "name": "no", "rows": [
        {"name": null, "name": "no", "seats": [{"name": {}, "name": "no", "x": null, "x": 8,
         "y": [], "y": 9}]}]}])"),
              ElementsAre("Section 1 | Row 1 | Seat 1 1,1"));
}

TEST(VerboseSeatMapNames, OfTextsAreTrimmed) {
  EXPECT_EQ(nameOfSeat(R"("  A 1\t\n")"), "A 1");
  EXPECT_EQ(nameOfSeat(R"("\u00A0\u2003\u3000\u2028A\u00A0B\u0085\u000B\u000C\r")"),
            "A\xC2\xA0"
            "B");
  EXPECT_EQ(nameOfSeat(R"("Äpfel ")"), "Äpfel");
}

TEST(VerboseSeatMapNames, OfOnlySpacesFallBack) {
  EXPECT_EQ(nameOfSeat(R"("   ")"), "Seat 1");
  EXPECT_EQ(nameOfSeat(R"("\u2003\n")"), "Seat 1");
  EXPECT_EQ(nameOfSeat(R"("")"), "Seat 1");
}

TEST(VerboseSeatMapNames, OfNumbersAreTheirShortestPlainDecimals) {
  EXPECT_EQ(nameOfSeat("7"), "7");
  EXPECT_EQ(nameOfSeat("7.0"), "7");
  EXPECT_EQ(nameOfSeat("7.50"), "7.5");
  EXPECT_EQ(nameOfSeat("1e3"), "1000");
  EXPECT_EQ(nameOfSeat("-12"), "-12");
  EXPECT_EQ(nameOfSeat("true"), "1");
  EXPECT_EQ(nameOfSeat("false"), "0");
  EXPECT_EQ(nameOfSeat("9223372036854775807"), "9223372036854775807");
  EXPECT_EQ(nameOfSeat("123456789012345678901234567890"), "123456789012345678901234567890");
}

TEST(VerboseSeatMapNames, OfOtherTypesFallBack) {
  for (const char* name : {"null", "[]", "{}", R"(["A"])", R"({"name": "A"})"}) {
    EXPECT_EQ(nameOfSeat(name), "Seat 1") << name;
  }
}

TEST(VerboseSeatMapNames, OfSectionsAndRowsFollowTheSameRule) {
  EXPECT_THAT(linesOfDocument(R"([{"name": 7.0, "rows": [{"name": " R ", "seats": ["a"]}]},
                                  {"name": " ", "rows": [{"name": true, "seats": ["b"]}]}])"),
              ElementsAre("7 | R | a 1,1", "Section 2 | 1 | b 1,1"));
}

TEST(VerboseSeatMapNames, AreUnescaped) {
  EXPECT_EQ(nameOfSeat(R"("\"\\\/\u00e4\ud83d\ude00\b")"), "\"\\/\xC3\xA4\xF0\x9F\x98\x80\b");
}

TEST(VerboseSeatMapNames, OfMembersMayBeEscaped) {
  EXPECT_EQ(positionOf(R"("\u0078": 4, "y\u0050os": 5)"), "4,5");
}

TEST(VerboseSeatMapPositions, EveryKeyServes) {
  for (const char* key : {"xPos", "x", "xpos", "column", "col"}) {
    EXPECT_EQ(positionOf("\"" + std::string(key) + "\": 40"), "40,1") << key;
  }
  for (const char* key : {"yPos", "y", "ypos", "row", "line"}) {
    EXPECT_EQ(positionOf("\"" + std::string(key) + "\": 40"), "2,40") << key;
  }
}

TEST(VerboseSeatMapPositions, OtherKeysDoNot) {
  EXPECT_EQ(positionOf(R"("X": 9, "Y": 9, "XPOS": 9, "xPosi": 9, "xPo": 9, "columns": 9, "": 9,
                         "lines": 9, "\u0000x": 9, "rows": 9, "seats": [9], "xposxposx": 9)"),
            "2,1");
}

TEST(VerboseSeatMapPositions, EarlierKeysGoBeforeLaterOnesWhereverTheyStand) {
  EXPECT_EQ(positionOf(R"("xPos": 1, "x": 2, "xpos": 3, "column": 4, "col": 5)"), "1,1");
  EXPECT_EQ(positionOf(R"("col": 5, "column": 4, "xpos": 3, "x": 2, "xPos": 1)"), "1,1");
  EXPECT_EQ(positionOf(R"("col": 5, "xpos": 3, "column": 4)"), "3,1");
  EXPECT_EQ(positionOf(R"("line": 5, "row": 4, "ypos": 3, "y": 2, "yPos": 1)"), "2,1");
  EXPECT_EQ(positionOf(R"("line": 5, "ypos": 3, "row": 4)"), "2,3");
  EXPECT_EQ(positionOf(R"("line": 5, "row": 4)"), "2,4");
}

TEST(VerboseSeatMapPositions, ATextGivesItsLeadingInteger) {
  EXPECT_EQ(positionOf(R"("x": "12", "y": " -7 rows")"), "12,-7");
  EXPECT_EQ(positionOf(R"("x": "\t+3.9", "y": "1e3")"), "3,1");
  EXPECT_EQ(positionOf(R"("x": "99999999999999999999", "y": "-99999999999999999999")"),
            "9223372036854775807,-9223372036854775808");
}

TEST(VerboseSeatMapPositions, ATextsLeadingWhiteSpaceMayBeAnyOfUnicode) {
  EXPECT_EQ(positionOf(R"("x": "\u00A012", "y": "\u2003\n\u3000-7\u00A0")"), "12,-7");
  EXPECT_EQ(positionOf(R"("x": "-\u00A012", "y": "\u00A0")"), "0,0") << "but not behind the sign";
}

TEST(VerboseSeatMapPositions, ATextWithoutAnIntegerIsZeroAndEndsTheSearch) {
  EXPECT_EQ(positionOf(R"("x": "abc", "xpos": 9, "column": 9, "col": 9)"), "0,1");
  EXPECT_EQ(positionOf(R"("x": " ", "xpos": 9)"), "0,1");
}

TEST(VerboseSeatMapPositions, AnEmptyTextMovesOnToTheNextKey) {
  EXPECT_EQ(positionOf(R"("x": "", "xpos": 5)"), "5,1");
  EXPECT_EQ(positionOf(R"("x": "", "column": 6)"), "6,1");
  EXPECT_EQ(positionOf(R"("x": "", "col": 7)"), "7,1");
  EXPECT_EQ(positionOf(R"("x": "", "xPos": "", "y": "", "line": 8)"), "2,8");
}

TEST(VerboseSeatMapPositions, NullArraysAndObjectsMoveOnToTheNextKey) {
  EXPECT_EQ(positionOf(R"("xPos": null, "x": [5], "xpos": {"x": 5}, "column": 6, "col": 7)"),
            "6,1");
  EXPECT_EQ(positionOf(R"("xPos": null, "x": [], "xpos": {}, "column": "", "col": null)"), "2,1");
}

TEST(VerboseSeatMapPositions, NumbersTruncateTowardsZeroAndSaturate) {
  EXPECT_EQ(positionOf(R"("x": 7.9, "y": -7.9)"), "7,-7");
  EXPECT_EQ(positionOf(R"("x": 1e3, "y": 25e-1)"), "1000,2");
  EXPECT_EQ(positionOf(R"("x": true, "y": false)"), "1,0");
  EXPECT_EQ(positionOf(R"("x": 9223372036854775808, "y": -1e300)"),
            "9223372036854775807,-9223372036854775808");
}

TEST(VerboseSeatMapPositions, AreIndependentOfEachOther) {
  EXPECT_EQ(positionOf(R"("x": 30)"), "30,1");
  EXPECT_EQ(positionOf(R"("y": 30)"), "2,30");
}

TEST(VerboseSeatMapPositions, OfOneSeatDoNotReachTheNext) {
  EXPECT_THAT(seats(R"({"x": 30, "y": 40, "name": "A"}, {}, {"name": "C", "x": 5})"),
              ElementsAre("A 30,40", "Seat 2 2,1", "C 5,1"));
}

TEST(VerboseSeatMapTexts, FallbacksAreLocalisedFormats) {
  SeatMapTexts texts;
  texts.sectionFormat = "%ld. Block";
  texts.rowFormat = "Reihe %1$ld";
  texts.seatFormat = "Platz";
  EXPECT_THAT(linesOfDocument(R"([{"rows": [{"seats": [{}, ""]}]}])", texts),
              ElementsAre("1. Block | Reihe 1 | Platz 1,1", "1. Block | Reihe 1 | Platz 2,1"));
}

TEST(VerboseSeatMapTexts, ManyFallbacksCountUp) {
  std::string entries = "\"\"";
  for (int seat = 2; seat <= 12; ++seat) entries += ",\"\"";
  EXPECT_EQ(seats(entries).back(), "Seat 12 12,1");
}

TEST(VerboseSeatMapTexts, FallbacksAreNotTrimmed) {
  SeatMapTexts texts;
  texts.seatFormat = " %ld ";
  EXPECT_THAT(linesOfDocument(R"([{"rows": [{"seats": [""]}]}])", texts),
              ElementsAre("Section 1 | Row 1 |  1  1,1"));
}

TEST(VerboseSeatMap, NothingInsideAnIgnoredMemberCounts) {
  EXPECT_THAT(seats(R"({"name": "A", "more": {"x": 9, "name": "no", "seats": ["no"]},
                        "others": [{"rows": [{"seats": ["no"]}]}], "x": 3})"),
              ElementsAre("A 3,1"));
}

TEST(VerboseSeatMap, EmptyListsGiveNothing) {
  EXPECT_THAT(linesOfDocument("[]"), IsEmpty());
  EXPECT_THAT(linesOfDocument(R"({"sections": []})"), IsEmpty());
  EXPECT_THAT(linesOfDocument("[{}, {\"rows\": [{}]}]"), IsEmpty());
}

}  // namespace
}  // namespace halvora
