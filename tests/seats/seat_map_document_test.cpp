// SPDX-License-Identifier: Apache-2.0
// The document as a whole: its encoding, its limits and what rejects it.
#include "seats/seat_map_document.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/standard/seeded_random.h"
#include "tests/seats/plain_seat_map.h"
#include "tests/seats/seat_map_lines.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string kListed = R"([{"rows": [{"seats": ["A"]}]}])";
const std::string kKeyed = R"({"s": {"1": {"1": {"1": [1, 2]}}}})";

TEST(SeatMapDocument, MalformedOnesGiveNothing) {
  for (const std::string& good : {kListed, kKeyed}) {
    ASSERT_FALSE(seatMapOf(good).isEmpty());
    for (std::size_t size = 0; size < good.size(); ++size) {
      EXPECT_TRUE(seatMapOf(good.substr(0, size)).isEmpty()) << good.substr(0, size);
    }
    EXPECT_TRUE(seatMapOf(good + "x").isEmpty());
    EXPECT_TRUE(seatMapOf(good + good).isEmpty());
  }
}

TEST(SeatMapDocument, ATrailingCommaRejectsIt) {
  EXPECT_THAT(linesOfDocument(R"([{"rows": [{"seats": ["A",]}]}])"), IsEmpty());
  EXPECT_THAT(linesOfDocument(R"([{"rows": [{"seats": ["A"]}]},])"), IsEmpty());
  EXPECT_THAT(linesOfDocument(R"({"s": {"1": {"1": {"1": [1, 2]},}}})"), IsEmpty());
}

TEST(SeatMapDocument, ALoneSurrogateRejectsItWhereverItStands) {
  EXPECT_THAT(linesOfDocument(R"([{"rows": [{"seats": ["A"]}]}, "\ud800"])"), IsEmpty());
  EXPECT_THAT(linesOfDocument(R"({"more": {"\udc00": 1}, "s": {"1": {"1": {"1": [1, 2]}}}})"),
              IsEmpty());
}

TEST(SeatMapDocument, AnIntegerBeyond64BitsDoesNotRejectIt) {
  EXPECT_THAT(linesOfDocument(R"({"more": 123456789012345678901234567890,
                                  "s": {"1": {"1": {"1": [18446744073709551616, 2]}}}})"),
              ElementsAre("Section 1 | Row 1 | Seat 1 9223372036854775807,2"));
}

TEST(SeatMapDocument, ATopLevelFragmentGivesNothing) {
  for (const char* document : {"7", "\"x\"", "null", "true", "", " "}) {
    EXPECT_THAT(linesOfDocument(document), IsEmpty()) << document;
  }
}

TEST(SeatMapDocument, EveryEncodingIsRead) {
  const std::u16string text = u"[{\"rows\": [{\"seats\": [\"Ä\U0001F600\"]}]}]";
  std::string little;
  std::string big;
  for (const char16_t unit : text) {
    little += {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
    big += {static_cast<char>(unit >> 8), static_cast<char>(unit & 0xFF)};
  }
  std::string wide;
  for (const char character : kKeyed) wide += {'\0', '\0', '\0', character};
  const auto expected = ElementsAre("Section 1 | Row 1 | \xC3\x84\xF0\x9F\x98\x80 1,1");
  EXPECT_THAT(linesOfDocument(little), expected);
  EXPECT_THAT(linesOfDocument("\xFF\xFE" + little), expected);
  EXPECT_THAT(linesOfDocument(big), expected);
  EXPECT_THAT(linesOfDocument("\xFE\xFF" + big), expected);
  EXPECT_THAT(linesOfDocument(wide), ElementsAre("Section 1 | Row 1 | Seat 1 1,2"));
  EXPECT_THAT(linesOfDocument("\xEF\xBB\xBF" + kListed), ElementsAre("Section 1 | Row 1 | A 1,1"));
}

TEST(SeatMapDocument, DeepNestingIsReadToItsLimitAndRejectedBeyond) {
  const auto nested = [](std::size_t depth) {
    return "[" + std::string(depth, '[') + std::string(depth, ']') + "," + kListed.substr(1);
  };
  EXPECT_FALSE(seatMapOf(nested(ExactJsonReader::kDeepestNesting - 1)).isEmpty());
  EXPECT_TRUE(seatMapOf(nested(ExactJsonReader::kDeepestNesting)).isEmpty());
}

TEST(SeatMapDocument, TheLargestOneIsReadAndALargerOneIsNot) {
  std::string document = kListed;
  document.resize(kLargestSeatMap, ' ');
  EXPECT_FALSE(seatMapOf(document).isEmpty());
  document += ' ';
  EXPECT_TRUE(seatMapOf(document).isEmpty());
}

TEST(SeatMapDocument, HundredsOfThousandsOfSeatsAreRead) {
  constexpr std::size_t kSeats = 300'000;
  std::string document = R"([{"rows": [{"seats": [)";
  for (std::size_t seat = 1; seat < kSeats; ++seat) document += "1,";
  const SeatMap map = seatMapOf(document + "2]}]}]");
  ASSERT_EQ(map.sectionCount(), 1U);
  const auto row = map.section(0).row(0);
  ASSERT_EQ(row.seatCount(), kSeats);
  EXPECT_EQ(row.seat(kSeats - 1).displayName, "2");
  EXPECT_EQ(row.seat(kSeats - 1).xPos, static_cast<std::int64_t>(kSeats));
}

TEST(SeatMapDocument, ManyEquivalentKeysAreToldApart) {
  // Runs of one zero and of two compare alike, so all keys are equivalent; half of them repeat one.
  std::string document = R"({"s": {"1": {"1": {)";
  constexpr int kZeros = 13;
  for (int key = 0; key < 2 << kZeros; ++key) {
    std::string text;
    for (int at = 0; at < kZeros; ++at) text += (key >> at & 1) != 0 ? "a00" : "a0";
    document += (key > 0 ? ",\"" : "\"") + text + "\":[0,0]";
  }
  const SeatMap map = seatMapOf(document + "}}}}");
  ASSERT_FALSE(map.isEmpty());
  EXPECT_EQ(map.section(0).row(0).seatCount(), std::size_t{1} << kZeros);
}

TEST(SeatMapDocument, AMapMayBeMovedAndCopied) {
  SeatMap map = seatMapOf(kKeyed);
  const SeatMap copy = map;
  const SeatMap moved = std::move(map);
  EXPECT_EQ(linesOf(copy), linesOf(moved));
  EXPECT_THAT(linesOf(moved), ElementsAre("Section 1 | Row 1 | Seat 1 1,2"));
}

// Documents of chance: every layout, every kind of value in every place, names and keys that often
// meet again.
class ChanceDocument {
 public:
  explicit ChanceDocument(std::uint64_t seed) : random_(seed) {}

  std::string text() {
    switch (random_.below(4)) {
      case 0:
        return list(&ChanceDocument::section);
      case 1:
        return "{" + member("s", &ChanceDocument::keyed) + "}";
      default:
        return "{" + member(oneOf({"s", "sections", "t"}), &ChanceDocument::keyed) + "," +
               member("sections", &ChanceDocument::sections) + "," +
               member(oneOf({"s", "sections", "t"}), &ChanceDocument::keyed) + "}";
    }
  }

 private:
  using Part = std::string (ChanceDocument::*)();

  const char* oneOf(std::initializer_list<const char*> values) {
    return values.begin()[random_.below(static_cast<std::uint32_t>(values.size()))];
  }
  std::string scalar() {
    return oneOf({"null", "true", "false", "0", "7", "-3", "7.5", "-0.75", "1e3", "12e-1", "\"\"",
                  "\" \"", "\"A\"", "\"\\u00a07\"", "\"-12x\"", "\"\\u00e4\\n\"", "\"ä\"",
                  "9223372036854775807", "-1e30"});
  }
  std::string value(Part part) {
    switch (random_.below(12)) {
      case 0:
        return scalar();
      case 1:
        return oneOf({"[]", "{}", "[1]", "[[1,2],{\"x\":3}]", "{\"name\":\"x\",\"1\":[1,2]}"});
      default:
        return (this->*part)();
    }
  }
  std::string member(const std::string& name, Part part) {
    return "\"" + name + "\":" + value(part);
  }
  std::string list(Part part) {
    std::string text = "[";
    for (std::uint32_t count = random_.below(5); count > 0; --count) {
      text += value(part) + (count > 1 ? "," : "");
    }
    return text + "]";
  }
  std::string sections() { return list(&ChanceDocument::section); }
  std::string section() { return entry("rows", &ChanceDocument::rows); }
  std::string rows() { return list(&ChanceDocument::row); }
  std::string row() { return entry("seats", &ChanceDocument::seats); }
  std::string seats() { return list(&ChanceDocument::seat); }
  std::string entry(const std::string& name, Part part) {
    std::string text = "{";
    for (std::uint32_t count = 1 + random_.below(3); count > 0; --count) {
      text +=
          (random_.below(2) == 0 ? member("name", &ChanceDocument::scalar) : member(name, part)) +
          ",";
    }
    return text + member(name, part) + "}";
  }
  std::string seat() {
    if (random_.below(3) == 0) return scalar();
    std::string text = "{\"more\":1";
    for (std::uint32_t count = random_.below(7); count > 0; --count) {
      text += "," + member(oneOf({"name", "xPos", "x", "xpos", "column", "col", "yPos", "y", "ypos",
                                  "row", "line", "X", "z"}),
                           &ChanceDocument::scalar);
    }
    return text + "}";
  }
  std::string key() {
    return oneOf({"1", "2", "10", "9", "01", "A", "B", "A1", "A01", "A10", "a", "", " 1", "-1",
                  "1a", "\\u0041", "\\u20031", "ä", "99999999999999999999"});
  }
  std::string keyedBy(Part part) {
    std::string text = "{";
    for (std::uint32_t count = random_.below(7); count > 0; --count) {
      text += member(key(), part) + (count > 1 ? "," : "");
    }
    return text + "}";
  }
  std::string keyed() { return keyedBy(&ChanceDocument::keyedRows); }
  std::string keyedRows() { return keyedBy(&ChanceDocument::keyedSeats); }
  std::string keyedSeats() { return keyedBy(&ChanceDocument::position); }
  std::string position() { return list(&ChanceDocument::scalar); }

  SeededRandom random_;
};

TEST(SeatMapDocument, OfChanceGivesWhatTheRulesGiveOnATreeOfValues) {
  const ExactJsonReader json;
  std::size_t seats = 0;
  for (std::uint64_t seed = 1; seed <= 4000; ++seed) {
    const std::string document = ChanceDocument(seed).text();
    const auto tree = json.parse(document, nullptr);
    ASSERT_TRUE(tree) << document;
    const std::vector<std::string> lines = linesOfDocument(document);
    ASSERT_EQ(lines, plainSeatMapLines(*tree, {})) << document;
    seats += lines.size();
  }
  // Enough of them have seats for the comparison to mean something.
  EXPECT_GT(seats, 10'000U);
}

}  // namespace
}  // namespace halvora
