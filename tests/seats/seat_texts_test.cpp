// SPDX-License-Identifier: Apache-2.0
#include "seats/seat_texts.h"

#include <string>

#include <gtest/gtest.h>

#include "adapters/virtual/virtual_storage.h"
#include "tests/support/other_country.h"
#include "text/numbers.h"

namespace halvora {
namespace {

TEST(SeatMapTexts, AreTheKitsOwnWithoutATable) {
  const SeatMapTexts texts = seatMapTexts(VirtualBundle("id"));
  EXPECT_EQ(texts.sectionFormat, "Section %ld");
  EXPECT_EQ(texts.rowFormat, "Row %ld");
  EXPECT_EQ(texts.seatFormat, "Seat %ld");
  EXPECT_EQ(texts.sectionPrefix, "Section");
  EXPECT_EQ(texts.rowPrefix, "Row");
  EXPECT_EQ(texts.seatPrefix, "Seat");
}

TEST(SeatMapTexts, ComeFromTheKitsTable) {
  VirtualBundle kit("id");
  kit.strings = {{"hv_seat_picker_fallback_section_format", "a"},
                 {"hv_seat_picker_fallback_row_format", "b"},
                 {"hv_seat_picker_fallback_seat_format", "c"},
                 {"hv_seat_picker_fallback_section_prefix", "d"},
                 {"hv_seat_picker_fallback_row_prefix", "e"},
                 {"hv_seat_picker_fallback_seat_prefix", "f"}};
  const SeatMapTexts texts = seatMapTexts(kit);
  EXPECT_EQ(texts.sectionFormat + texts.rowFormat + texts.seatFormat, "abc");
  EXPECT_EQ(texts.sectionPrefix + texts.rowPrefix + texts.seatPrefix, "def");
}

TEST(SeatMapTexts, FallBackWhereTheTablesAreEmptyOrTheKey) {
  VirtualBundle kit("id");
  kit.strings = {{"hv_seat_picker_fallback_row_format", ""},
                 {"hv_seat_picker_fallback_seat_prefix", "hv_seat_picker_fallback_seat_prefix"}};
  const SeatMapTexts texts = seatMapTexts(kit);
  EXPECT_EQ(texts.rowFormat, "Row %ld");
  EXPECT_EQ(texts.seatPrefix, "Seat");
}

TEST(PlainDecimal, IsTheShortestOne) {
  EXPECT_EQ(plainDecimal(7), "7");
  EXPECT_EQ(plainDecimal(7.5), "7.5");
  EXPECT_EQ(plainDecimal(-7.25), "-7.25");
  EXPECT_EQ(plainDecimal(0.1), "0.1");
  EXPECT_EQ(plainDecimal(0.30000000000000004), "0.30000000000000004");
  EXPECT_EQ(plainDecimal(1.0 / 3), "0.3333333333333333");
  EXPECT_EQ(plainDecimal(0), "0");
  EXPECT_EQ(plainDecimal(-0.0), "0");
}

TEST(PlainDecimal, HasNoExponent) {
  EXPECT_EQ(plainDecimal(1), "1");
  EXPECT_EQ(plainDecimal(1000), "1000");
  EXPECT_EQ(plainDecimal(1e21), "1" + std::string(21, '0'));
  EXPECT_EQ(plainDecimal(1.5e300), "15" + std::string(299, '0'));
  EXPECT_EQ(plainDecimal(0.000015), "0.000015");
  EXPECT_EQ(plainDecimal(1e-10), "0.0000000001");
  EXPECT_EQ(plainDecimal(5e-324), "0." + std::string(323, '0') + "5");
}

TEST(PlainDecimal, DoesNotDependOnTheLocale) {
  const OtherCountry abroad;
  EXPECT_EQ(plainDecimal(1234.5), "1234.5");
  if (!abroad.isWhole()) GTEST_SKIP() << "no locale with a decimal comma can be had here";
}

std::string named(const JsonScalar& value) {
  std::string storage;
  return std::string(nameOf(value, storage));
}

TEST(NameOfANumber, MinusZeroIsZero) {
  EXPECT_EQ(named({.kind = JsonScalar::Kind::integer, .integer = 0, .text = "-0"}), "0");
  EXPECT_EQ(named({.kind = JsonScalar::Kind::real, .real = -0.0, .text = "-0.0"}), "0");
}

TEST(Trimmed, TakesEveryUnicodeBlankOffBothEnds) {
  for (const char* blank : {" ", "\t", "\n", "\v", "\f", "\r", "\xC2\x85", "\xC2\xA0",
                            "\xE1\x9A\x80", "\xE2\x80\x80", "\xE2\x80\x8A", "\xE2\x80\xA8",
                            "\xE2\x80\xA9", "\xE2\x80\xAF", "\xE2\x81\x9F", "\xE3\x80\x80"}) {
    const std::string text = std::string(blank) + blank + "a" + blank + "b" + blank;
    EXPECT_EQ(trimmed(text), "a" + std::string(blank) + "b");
    EXPECT_EQ(trimmed(blank), "");
  }
}

TEST(Trimmed, LeavesEverythingElse) {
  for (const char* text : {"", "a", "ä", "\xE2\x80\x8B", "\xEF\xBB\xBF", "\x1F", "\x7F"}) {
    EXPECT_EQ(trimmed(text), text);
  }
}

TEST(LeadingInteger, PassesOverWhatTrimmingTakesOff) {
  EXPECT_EQ(leadingInteger("\xC2\xA0\xE2\x80\xA8 -12 rows"), -12);
  EXPECT_EQ(leadingInteger("7"), 7);
  EXPECT_EQ(leadingInteger("\xC2\xA0"), 0);
  EXPECT_EQ(leadingInteger("\xE2\x80\x8B"
                           "7"),
            0)
      << "a joint is no white space";
}

}  // namespace
}  // namespace halvora
