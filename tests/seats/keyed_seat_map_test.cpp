// SPDX-License-Identifier: Apache-2.0
// The compact layout: objects by key below "s".
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/seats/seat_map_lines.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// The seats of section 1, row 2.
std::vector<std::string> seats(const std::string& members) {
  std::vector<std::string> lines = linesOfDocument(R"({"s": {"1": {"2": {)" + members + "}}}}");
  for (std::string& line : lines) {
    EXPECT_TRUE(line.starts_with("Section 1 | Row 2 | Seat ")) << line;
    line.erase(0, 25);
  }
  return lines;
}

/// The names of seats with these keys, in the order of the map.
std::vector<std::string> inOrder(std::initializer_list<const char*> keys) {
  std::string members;
  for (const char* key : keys) {
    members += (members.empty() ? "\"" : ", \"") + std::string(key) + "\": [0, 0]";
  }
  std::vector<std::string> lines = seats(members);
  for (std::string& line : lines) line.erase(line.size() - 4);
  return lines;
}

TEST(KeyedSeatMap, NamesCarryThePrefixesAndTheKeys) {
  EXPECT_THAT(linesOfDocument(R"({"s": {"101": {"7": {"12": [30, 40]}}}})"),
              ElementsAre("Section 101 | Row 7 | Seat 12 30,40"));
}

TEST(KeyedSeatMap, KeysAreNotTrimmed) {
  EXPECT_THAT(linesOfDocument(R"({"s": {" a ": {"": {"\t": [1, 2]}}}})"),
              ElementsAre("Section  a  | Row  | Seat \t 1,2"));
}

TEST(KeyedSeatMap, PrefixesAreLocalisedAndTakenAsTheyAre) {
  SeatMapTexts texts;
  texts.sectionPrefix = "Block %ld";
  texts.rowPrefix = "Reihe";
  texts.seatPrefix = "%@";
  EXPECT_THAT(linesOfDocument(R"({"s": {"1": {"2": {"3": [4, 5]}}}})", texts),
              ElementsAre("Block %ld 1 | Reihe 2 | %@ 3 4,5"));
}

TEST(KeyedSeatMap, ValuesOfTheWrongTypeAreSkipped) {
  EXPECT_THAT(linesOfDocument(R"({"s": {
      "1": [1, 2], "2": 5, "3": null, "4": "x", "5": true,
      "6": {"1": [1, 2], "2": 5, "3": null, "4": "x", "5": false,
            "6": {"1": {"x": 1}, "2": 5, "3": null, "4": "1,2", "5": true, "6": [1, 2]}}}})"),
              ElementsAre("Section 6 | Row 6 | Seat 6 1,2"));
}

TEST(KeyedSeatMap, APositionOfFewerThanTwoElementsIsSkipped) {
  EXPECT_THAT(seats(R"("1": [], "2": [5], "3": [{}], "4": [1, 2])"), ElementsAre("4 1,2"));
}

TEST(KeyedSeatMap, FurtherElementsAreIgnored) {
  EXPECT_THAT(seats(R"("4": [1, 2, 3, "4", [5], {"6": 7}, null])"), ElementsAre("4 1,2"));
}

TEST(KeyedSeatMap, ElementsMayBeNumbersBooleansOrTexts) {
  EXPECT_THAT(seats(R"("1": [7.9, "8 m"], "2": [true, -7.9], "3": ["-3", 1e3])"),
              ElementsAre("1 7,8", "2 1,-7", "3 -3,1000"));
}

TEST(KeyedSeatMap, AnEmptyTextIsZero) {
  EXPECT_THAT(seats(R"("9": ["", 3])"), ElementsAre("9 0,3"));
}

TEST(KeyedSeatMap, OtherElementsTakeTheIntegersOfTheKeys) {
  EXPECT_THAT(seats(R"("9": [null, null], "10": [[1, 2], {}], "11": [null, 5], "12": [5, null])"),
              ElementsAre("9 9,2", "10 10,2", "11 11,5", "12 5,2"));
  EXPECT_THAT(
      linesOfDocument(R"({"s": {"A": {"row 3": {"7b": [null, null], "x": [null, []]}}}})"),
      ElementsAre("Section A | Row row 3 | Seat x 0,0", "Section A | Row row 3 | Seat 7b 7,0"));
}

TEST(KeyedSeatMap, WhiteSpaceOfUnicodeMayStandBeforeAnInteger) {
  EXPECT_THAT(seats(R"("9": ["\u00A07", "\u3000+8"])"), ElementsAre("9 7,8"));
  EXPECT_THAT(seats(R"("\u00A09": [null, 3])"), ElementsAre("\xC2\xA0"
                                                            "9 9,3"));
}

TEST(KeyedSeatMap, EmptyRowsAndSectionsAreDropped) {
  EXPECT_THAT(linesOfDocument(R"({"s": {"1": {}, "2": {"1": {}, "2": {"1": [1]}},
                                       "3": {"1": {}, "2": {"1": [1, 2]}, "3": {}}, "4": {}}})"),
              ElementsAre("Section 3 | Row 2 | Seat 1 1,2"));
}

TEST(KeyedSeatMap, OtherMembersOfTheTopAreIgnored) {
  EXPECT_THAT(linesOfDocument(R"({"seatVersion": 3, "S": {"1": {"1": {"1": [0, 0]}}},
                                  "s": {"1": {"1": {"1": [1, 2]}}},
                                  "t": {"1": {"1": {"1": [0, 0]}}}})"),
              ElementsAre("Section 1 | Row 1 | Seat 1 1,2"));
}

TEST(SeatMapLayout, WithBothOnlyTheKeyedOneCountsWhereverItStands) {
  const std::string keyed = R"("s": {"1": {"1": {"1": [1, 2]}}})";
  const std::string listed = R"("sections": [{"rows": [{"seats": ["A"]}]}])";
  for (const std::string& both : {keyed + ", " + listed, listed + ", " + keyed}) {
    EXPECT_THAT(linesOfDocument("{" + both + "}"), ElementsAre("Section 1 | Row 1 | Seat 1 1,2"));
  }
}

TEST(SeatMapLayout, AnEmptyKeyedOneCountsToo) {
  for (const char* document : {R"({"s": {}, "sections": [{"rows": [{"seats": ["A"]}]}]})",
                               R"({"sections": [{"rows": [{"seats": ["A"]}]}], "s": {"1": {}}})"}) {
    EXPECT_TRUE(seatMapOf(document).isEmpty()) << document;
  }
}

TEST(SeatMapLayout, AnSThatIsNoObjectLeavesTheList) {
  for (const char* value : {"[]", "[1]", "7", "\"x\"", "null", "true"}) {
    EXPECT_THAT(linesOfDocument(R"({"s": )" + std::string(value) +
                                R"(, "sections": [{"rows": [{"seats": ["A"]}]}]})"),
                ElementsAre("Section 1 | Row 1 | A 1,1"))
        << value;
  }
}

TEST(SeatMapLayout, TheFirstSAndTheFirstSectionsCount) {
  EXPECT_THAT(linesOfDocument(R"({"s": 1, "s": {"1": {"1": {"1": [1, 2]}}},
                                  "sections": [{"rows": [{"seats": ["A"]}]}]})"),
              ElementsAre("Section 1 | Row 1 | A 1,1"));
  EXPECT_THAT(
      linesOfDocument(R"({"s": {"1": {"1": {"1": [1, 2]}}}, "s": {"2": {"1": {"1": [3, 4]}}}})"),
      ElementsAre("Section 1 | Row 1 | Seat 1 1,2"));
}

TEST(SeatMapLayout, AnObjectWithNeitherGivesNothing) {
  EXPECT_THAT(linesOfDocument("{}"), IsEmpty());
  EXPECT_THAT(linesOfDocument(R"({"rows": [{"seats": ["A"]}]})"), IsEmpty());
}

TEST(SeatKeyOrder, TextsSortAmongTheKeysOfValueZero) {
  EXPECT_THAT(inOrder({"10", "9", "B", "A", "0"}), ElementsAre("0", "A", "B", "9", "10"));
}

TEST(SeatKeyOrder, IntegersSortByValue) {
  EXPECT_THAT(inOrder({"10", "2", "-1", "33", "1"}), ElementsAre("-1", "1", "2", "10", "33"));
}

TEST(SeatKeyOrder, TheLeadingIntegerGoesFirst) {
  EXPECT_THAT(inOrder({"3", "2b", "2a", "10a", "1z"}), ElementsAre("1z", "2a", "2b", "3", "10a"));
}

TEST(SeatKeyOrder, RunsOfDigitsWithinTextsCompareByValue) {
  EXPECT_THAT(inOrder({"A10", "A9", "A9b", "A009c", "B1", "A9a10", "A9a9"}),
              ElementsAre("A9", "A9a9", "A9a10", "A9b", "A009c", "A10", "B1"));
}

TEST(SeatKeyOrder, RunsOfAnyLengthCompareByValue) {
  EXPECT_THAT(inOrder({"A100000000000000000000000", "A99999999999999999999999"}),
              ElementsAre("A99999999999999999999999", "A100000000000000000000000"));
}

TEST(SeatKeyOrder, TextsCompareByCodePointAndCase) {
  EXPECT_THAT(inOrder({"é", "z", "a", "Z", "\xF0\x9F\x98\x80", "\xEF\xBF\xBD", "!", "~"}),
              ElementsAre("!", "Z", "a", "z", "~", "é", "\xEF\xBF\xBD", "\xF0\x9F\x98\x80"));
}

TEST(SeatKeyOrder, AShorterTextGoesFirst) {
  EXPECT_THAT(inOrder({"AB", "A", "ABC", ""}), ElementsAre("", "A", "AB", "ABC"));
}

TEST(SeatKeyOrder, DigitsCompareWithOtherCharactersByCodePoint) {
  EXPECT_THAT(inOrder({"Aa", "A1", "A!", "A:"}), ElementsAre("A!", "A1", "A:", "Aa"));
}

TEST(SeatKeyOrder, EquivalentKeysKeepTheOrderOfTheDocument) {
  EXPECT_THAT(inOrder({"2", "01", "1", "001", "0"}), ElementsAre("0", "01", "1", "001", "2"));
  EXPECT_THAT(inOrder({"A1", "A01", "A001"}), ElementsAre("A1", "A01", "A001"));
}

TEST(SeatKeyOrder, BlanksAndSignsBelongToTheTextButNotToTheInteger) {
  // All of value 1: as texts, a blank goes before "+", and "+" before a digit.
  EXPECT_THAT(inOrder({"1", "+1", " 1"}), ElementsAre(" 1", "+1", "1"));
}

TEST(SeatKeyOrder, WhiteSpaceOfUnicodeDoesNotHideAnInteger) {
  EXPECT_THAT(inOrder({"9", "\u00A010", "A", "2"}), ElementsAre("A", "2", "9", "\u00A010"));
}

TEST(SeatKeyOrder, IntegersBeyond64BitsAreTheLargestOneAndCompareAsTexts) {
  EXPECT_THAT(
      inOrder({"99999999999999999999", "9223372036854775807", "10000000000000000000", "5"}),
      ElementsAre("5", "9223372036854775807", "10000000000000000000", "99999999999999999999"));
}

TEST(SeatKeyOrder, HoldsForSectionsAndRowsToo) {
  EXPECT_THAT(linesOfDocument(R"({"s": {"10": {"2": {"1": [0, 0]}, "1": {"1": [0, 0]}},
                                       "B": {"1": {"1": [0, 0]}},
                                       
                                       "9": {"1": {"2": [0, 0], "1": [1, 1]}}}})"),
              ElementsAre("Section B | Row 1 | Seat 1 0,0", "Section 9 | Row 1 | Seat 1 1,1",
                          "Section 9 | Row 1 | Seat 2 0,0", "Section 10 | Row 1 | Seat 1 0,0",
                          "Section 10 | Row 2 | Seat 1 0,0"));
}

TEST(SeatKeyRepeats, OfEqualKeysTheFirstCounts) {
  EXPECT_THAT(seats(R"("1": [1, 1], "1": [2, 2], "2": [3, 3], "1": [4, 4])"),
              ElementsAre("1 1,1", "2 3,3"));
  EXPECT_THAT(linesOfDocument(R"({"s": {"1": {"1": {"1": [1, 1]}, "1": {"2": [2, 2]}},
                                       "2": {"1": {"1": [3, 3]}}, "1": {"1": {"1": [4, 4]}}}})"),
              ElementsAre("Section 1 | Row 1 | Seat 1 1,1", "Section 2 | Row 1 | Seat 1 3,3"));
}

TEST(SeatKeyRepeats, AFirstKeyOfNoUseHidesLaterOnes) {
  EXPECT_THAT(seats(R"("1": 5, "1": [2, 2], "2": [3], "2": [3, 3], "3": [4, 4])"),
              ElementsAre("3 4,4"));
  EXPECT_THAT(linesOfDocument(R"({"s": {"1": null, "1": {"1": {"1": [4, 4]}}, "2": {}, "2":
                                       {"1": {"1": [4, 4]}}, "3": {"1": [], "1": {"1": [4, 4]},
                                       "2": {"1": [5, 5]}}}})"),
              ElementsAre("Section 3 | Row 2 | Seat 1 5,5"));
}

TEST(SeatKeyRepeats, KeysThatAreOnlyEquivalentAllCount) {
  EXPECT_THAT(seats(R"("01": [1, 1], "1": [2, 2], "01": [3, 3], "1": [4, 4])"),
              ElementsAre("01 1,1", "1 2,2"));
}

TEST(SeatKeyRepeats, EscapedKeysAreTheSameKeys) {
  EXPECT_THAT(seats(R"("A": [1, 1], "\u0041": [2, 2])"), ElementsAre("A 1,1"));
}

}  // namespace
}  // namespace halvora
