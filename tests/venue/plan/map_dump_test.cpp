// SPDX-License-Identifier: Apache-2.0
// `halvora map dump`: what scripts rely on, byte by byte.
#include "venue/plan/map_dump.h"

#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"

namespace halvora {
namespace {

const ExactJsonReader kJson;

std::string dump(std::string_view document, const StringTable& strings = {}) {
  return dumpSeatMap(document, strings, kJson);
}

TEST(MapDump, PrintsTheSectionsWithExactlyTheModelsKeys) {
  EXPECT_EQ(dump(R"({"sections": [{"name": "S", "rows": [{"name": "R", "seats": [
                     {"name": "A", "x": 3, "y": -4, "more": 1}, "B"]}, {"seats": [7.5]}]},
                     {"rows": [{"seats": ["C"]}]}]})"),
            R"([{"displayName":"S","rows":[{"displayName":"R","seats":[)"
            R"({"displayName":"A","xPos":3,"yPos":-4},{"displayName":"B","xPos":2,"yPos":1}]},)"
            R"({"displayName":"Row 2","seats":[{"displayName":"7.5","xPos":1,"yPos":2}]}]},)"
            R"({"displayName":"Section 2","rows":[{"displayName":"Row 1","seats":[)"
            R"({"displayName":"C","xPos":1,"yPos":1}]}]}])"
            "\n");
}

TEST(MapDump, PrintsTheCompactLayoutInTheOrderOfItsKeys) {
  EXPECT_EQ(dump(R"({"s": {"2": {"1": {"10": [1, 2], "9": [3, 4]}}}})"),
            R"([{"displayName":"Section 2","rows":[{"displayName":"Row 1","seats":[)"
            R"({"displayName":"Seat 9","xPos":3,"yPos":4},)"
            R"({"displayName":"Seat 10","xPos":1,"yPos":2}]}]}])"
            "\n");
}

TEST(MapDump, ADocumentWithoutSectionsIsAnEmptyArray) {
  for (const char* document : {"", "[]", "{}", "7", "{\"s\": {}}", "[1,]", "no JSON", "\"x\""}) {
    EXPECT_EQ(dump(document), "[]\n") << document;
  }
}

TEST(MapDump, NamesAreEscapedWhereTheyMustBe) {
  EXPECT_EQ(dump(R"([{"name": "\"\\/ä\u0001", "rows": [{"seats": ["x"]}]}])"),
            "[{\"displayName\":\"\\\"\\\\/ä\\u0001\",\"rows\":[{\"displayName\":\"Row 1\","
            "\"seats\":[{\"displayName\":\"x\",\"xPos\":1,\"yPos\":1}]}]}]\n");
}

TEST(MapDump, PositionsArePrintedToBothEndsOf64Bits) {
  EXPECT_EQ(
      dump(R"({"s": {"1": {"1": {"1": [1e30, -1e30]}}}})"),
      R"([{"displayName":"Section 1","rows":[{"displayName":"Row 1","seats":[)"
      R"({"displayName":"Seat 1","xPos":9223372036854775807,"yPos":-9223372036854775808}]}]}])"
      "\n");
}

TEST(MapDump, TextsComeFromTheStringTable) {
  const StringTable strings = {{"hv_seat_picker_fallback_section_format", "Block %ld"},
                               {"hv_seat_picker_fallback_row_format", ""},
                               {"hv_seat_picker_fallback_seat_prefix", "Platz"},
                               {"another", "text"}};
  EXPECT_EQ(dump(R"([{"rows": [{"seats": ["A"]}]}])", strings),
            R"([{"displayName":"Block 1","rows":[{"displayName":"Row 1","seats":[)"
            R"({"displayName":"A","xPos":1,"yPos":1}]}]}])"
            "\n");
  EXPECT_EQ(dump(R"({"s": {"1": {"1": {"1": [1, 2]}}}})", strings),
            R"([{"displayName":"Section 1","rows":[{"displayName":"Row 1","seats":[)"
            R"({"displayName":"Platz 1","xPos":1,"yPos":2}]}]}])"
            "\n");
}

TEST(StringTable, IsAFlatObjectOfTexts) {
  const auto table = readStringTable(R"({"a": "b", "c": 1, "d": {"e": "f"}, "a": "g"})", kJson);
  ASSERT_TRUE(table);
  EXPECT_EQ(*table, (StringTable{{"a", "b"}}));
  EXPECT_TRUE(readStringTable("{}", kJson));
}

TEST(StringTable, AnythingElseIsNone) {
  for (const char* document : {"", "[]", "7", "{", "{\"a\": \"b\",}"}) {
    EXPECT_FALSE(readStringTable(document, kJson)) << document;
  }
}

}  // namespace
}  // namespace halvora
