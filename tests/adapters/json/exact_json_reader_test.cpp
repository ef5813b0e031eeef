// SPDX-License-Identifier: Apache-2.0
#include "adapters/json/exact_json_reader.h"

#include <limits>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace halvora {
namespace {

constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();

std::optional<JsonValue> parse(std::string_view text) {
  return ExactJsonReader().parse(text, nullptr);
}

/// The only element of the array that `element` stands in.
JsonValue elementOf(const std::string& element) {
  const auto document = parse("[" + element + "]");
  if (!document || document->array() == nullptr || document->array()->size() != 1) {
    ADD_FAILURE() << "rejected: " << element.substr(0, 60);
    return JsonValue();
  }
  return document->array()->front();
}

enum class Width { two = 2, four = 4 };
enum class Endian { little, big };

std::string encode(const std::u32string& text, Width width, Endian endian) {
  std::string bytes;
  const auto put = [&](std::uint32_t unit) {
    const int count = static_cast<int>(width);
    for (int at = 0; at < count; ++at) {
      const int shift = 8 * (endian == Endian::little ? at : count - 1 - at);
      bytes.push_back(static_cast<char>((unit >> shift) & 0xFF));
    }
  };
  for (const char32_t character : text) {
    if (width == Width::two && character > 0xFFFF) {
      put(0xD800 + ((character - 0x10000) >> 10));
      put(0xDC00 + ((character - 0x10000) & 0x3FF));
    } else {
      put(character);
    }
  }
  return bytes;
}

TEST(JsonText, UnderstandsEveryEncodingWithAndWithoutAByteOrderMark) {
  const std::u32string text = U"{\"näme\": [\"€\", \"\U0001F600\", -12.5]}";
  const std::string mark = "\xEF\xBB\xBF";
  const std::string utf8 = "{\"n\xC3\xA4me\": [\"\xE2\x82\xAC\", \"\xF0\x9F\x98\x80\", -12.5]}";
  std::vector<std::string> documents{utf8, mark + utf8};
  for (const Width width : {Width::two, Width::four}) {
    for (const Endian endian : {Endian::little, Endian::big}) {
      documents.push_back(encode(text, width, endian));
      documents.push_back(encode(U"\uFEFF" + text, width, endian));
    }
  }
  for (std::size_t at = 0; at < documents.size(); ++at) {
    SCOPED_TRACE(at);
    const auto document = parse(documents[at]);
    ASSERT_TRUE(document);
    const JsonValue* list = document->find("n\xC3\xA4me");
    ASSERT_NE(list, nullptr);
    ASSERT_NE(list->array(), nullptr);
    ASSERT_EQ(list->array()->size(), 3U);
    EXPECT_EQ(*list->array()->at(0).text(), "\xE2\x82\xAC");
    EXPECT_EQ(*list->array()->at(1).text(), "\xF0\x9F\x98\x80");
    EXPECT_EQ(list->array()->at(2).number(), -12.5);
  }
}

TEST(JsonText, TheSmallestDocumentsAreReadInEveryEncoding) {
  for (const Width width : {Width::two, Width::four}) {
    for (const Endian endian : {Endian::little, Endian::big}) {
      EXPECT_TRUE(parse(encode(U"{}", width, endian)));
      EXPECT_TRUE(parse(encode(U"\uFEFF[]", width, endian)));
    }
  }
  EXPECT_TRUE(parse("[]"));
  EXPECT_TRUE(parse("\xEF\xBB\xBF{}"));
}

TEST(JsonText, OfEqualMemberNamesTheFirstCounts) {
  const auto document = parse(R"({"a": 1, "b": 2, "a": 3, "\u0061": 4})");
  ASSERT_TRUE(document);
  EXPECT_EQ(document->find("a")->wholeNumber(), 1);
  EXPECT_EQ(document->find("b")->wholeNumber(), 2);
}

TEST(JsonText, MembersKeepTheOrderOfTheDocument) {
  const auto document = parse(R"({"z": 1, "a": 2, "m": 3})");
  ASSERT_TRUE(document && document->object() != nullptr);
  std::string names;
  for (const JsonMember& member : *document->object()) names += member.name;
  EXPECT_EQ(names, "zam");
}

TEST(JsonText, ValuesOfEveryKind) {
  EXPECT_TRUE(elementOf("null").isNull());
  EXPECT_EQ(*elementOf("true").boolean(), true);
  EXPECT_EQ(*elementOf("false").boolean(), false);
  EXPECT_EQ(*elementOf("\"a\\n\\u00e4\"").text(), "a\n\xC3\xA4");
  // The first and the last of each length, written out and as they are.
  for (const auto& [escape, text] :
       std::vector<std::pair<std::string, std::string>>{{"\\u0080", "\xC2\x80"},
                                                        {"\\u07ff", "\xDF\xBF"},
                                                        {"\\u0800", "\xE0\xA0\x80"},
                                                        {"\\uffff", "\xEF\xBF\xBF"},
                                                        {"\\ud800\\udc00", "\xF0\x90\x80\x80"},
                                                        {"\\udbff\\udfff", "\xF4\x8F\xBF\xBF"}}) {
    EXPECT_EQ(*elementOf("\"" + escape + "\"").text(), text) << escape;
    EXPECT_EQ(*elementOf("\"" + text + "\"").text(), text) << escape;
  }
  EXPECT_EQ(elementOf("[1, [], {}]").array()->size(), 3U);
  EXPECT_EQ(elementOf("{\"a\": {\"b\": [7]}}").find("a")->find("b")->array()->at(0).wholeNumber(),
            7);
}

TEST(JsonText, WhiteSpaceIsAllowedAround) {
  EXPECT_TRUE(parse(" \t\r\n { \"a\" : [ 1 , 2 ] } \n"));
}

TEST(JsonNumbers, TrueIs1) { EXPECT_EQ(elementOf("true").wholeNumber(), 1); }

TEST(JsonNumbers, WholeNumbersWithAFractionOrAnExponent) {
  EXPECT_EQ(elementOf("7.0").wholeNumber(), 7);
  EXPECT_EQ(elementOf("1e3").wholeNumber(), 1000);
  EXPECT_EQ(elementOf("1E+3").wholeNumber(), 1000);
  EXPECT_EQ(elementOf("25e-1").number(), 2.5);
  EXPECT_NE(elementOf("7.0").real(), nullptr);
}

TEST(JsonNumbers, FractionsTruncateTowardsZero) {
  EXPECT_EQ(elementOf("7.99").wholeNumber(), 7);
  EXPECT_EQ(elementOf("-7.99").wholeNumber(), -7);
}

TEST(JsonNumbers, IntegersAreExactToBothEndsOf64Bits) {
  EXPECT_EQ(elementOf("0").wholeNumber(), 0);
  EXPECT_EQ(elementOf("-0").wholeNumber(), 0);
  EXPECT_EQ(elementOf("9007199254740993").wholeNumber(), 9007199254740993);
  EXPECT_EQ(elementOf("9223372036854775807").wholeNumber(), kMost);
  EXPECT_EQ(elementOf("-9223372036854775808").wholeNumber(), kLeast);
  EXPECT_NE(elementOf("9223372036854775807").integer(), nullptr);
}

TEST(JsonNumbers, IntegersBeyond64BitsSaturateAndDoNotReject) {
  EXPECT_EQ(elementOf("9223372036854775808").wholeNumber(), kMost);
  EXPECT_EQ(elementOf("-9223372036854775809").wholeNumber(), kLeast);
  EXPECT_EQ(elementOf("18446744073709551616").wholeNumber(), kMost);
  EXPECT_EQ(elementOf("18446744073709551616").number(), 18446744073709551616.0);
  EXPECT_EQ(elementOf(std::string(30, '9')).wholeNumber(), kMost);
}

TEST(JsonNumbers, AnIntegerOf400DigitsSaturatesAndDoesNotReject) {
  EXPECT_EQ(elementOf(std::string(400, '9')).wholeNumber(), kMost);
  EXPECT_EQ(elementOf("-" + std::string(400, '9')).wholeNumber(), kLeast);
}

TEST(JsonNumbers, LongFractionsRoundToTheNearest) {
  EXPECT_EQ(elementOf("0.1").number(), 0.1);
  EXPECT_EQ(elementOf("3.14159265358979323846264338327950288").number(),
            3.14159265358979323846264338327950288);
  EXPECT_EQ(elementOf("0." + std::string(400, '1')).number(), 0.1111111111111111111);
}

TEST(JsonNumbers, MalformedOnesRejectTheDocument) {
  for (const char* text : {"+1", "01", "1.", ".5", "1e", "1e+", "-", "--1", "0x10", "NaN",
                           "Infinity", "-Infinity", "1_000"}) {
    EXPECT_FALSE(parse("[" + std::string(text) + "]")) << text;
  }
}

TEST(JsonRejection, ATrailingComma) {
  EXPECT_FALSE(parse("[1, 2,]"));
  EXPECT_FALSE(parse("{\"a\": 1,}"));
  EXPECT_FALSE(parse("[,]"));
}

TEST(JsonRejection, ALoneHighSurrogate) {
  EXPECT_FALSE(parse(R"(["\ud83d"])"));
  EXPECT_FALSE(parse(R"(["\ud83dx"])"));
  EXPECT_FALSE(parse(R"(["\ud83d\u0041"])"));
  EXPECT_FALSE(parse(R"(["\ud83d\ud83d"])"));
  EXPECT_FALSE(parse(R"({"\ud83d": 1})"));
}

TEST(JsonRejection, ALoneLowSurrogate) {
  EXPECT_FALSE(parse(R"(["\ude00"])"));
  EXPECT_FALSE(parse(R"(["\ude00\ud83d"])"));
  EXPECT_FALSE(parse(R"({"\uDFFF": 1})"));
}

TEST(JsonRejection, ALoneSurrogateThatIsNotEscaped) {
  EXPECT_FALSE(parse("[\"\xED\xA0\xBD\"]"));
  EXPECT_FALSE(parse("[\"\xED\xB8\x80\"]"));
  for (const Endian endian : {Endian::little, Endian::big}) {
    for (const char32_t lone : {char32_t{0xD83D}, char32_t{0xDE00}}) {
      const std::u32string text = U"[\"" + std::u32string(1, lone) + U"x\"]";
      EXPECT_FALSE(parse(encode(text, Width::two, endian)));
      EXPECT_FALSE(parse(encode(text, Width::four, endian)));
    }
  }
}

TEST(JsonRejection, BytesThatAreNotUtf8) {
  EXPECT_FALSE(parse("[\"\xFF\"]"));
  EXPECT_FALSE(parse("[\"\xC3\"]"));
  EXPECT_FALSE(parse("[\"\xC0\x80\"]"));
  EXPECT_FALSE(parse("[\"\xF5\x80\x80\x80\"]"));
}

TEST(JsonRejection, TopLevelFragments) {
  for (const char* text : {"7", "\"a\"", "true", "null", "1.5"}) EXPECT_FALSE(parse(text)) << text;
}

TEST(JsonRejection, EmptyDocuments) {
  EXPECT_FALSE(parse(""));
  EXPECT_FALSE(parse(" \n"));
  EXPECT_FALSE(parse("\xEF\xBB\xBF"));
  EXPECT_FALSE(parse("\xFF\xFE"));
}

TEST(JsonRejection, MalformedDocuments) {
  for (const char* text : {"[", "]", "{", "{\"a\"}", "{\"a\":}", "{a: 1}", "{'a': 1}", "[1 2]",
                           "[] []", "{} x", "[\"a]", "[tru]", "[\"\\x\"]", "[\"\\u12\"]",
                           "[\"a\nb\"]", "/* */ []", "[1] // end", "{1: 2}", "[nul"}) {
    EXPECT_FALSE(parse(text)) << text;
  }
}

TEST(JsonRejection, AZeroCharacterWithinTheText) {
  EXPECT_FALSE(parse(std::string_view("[1]\0[2]", 7)));
  EXPECT_FALSE(parse(std::string_view("[1,\0 2]", 7)));
  EXPECT_FALSE(parse(std::string_view("[\"a\0b\"]", 7)));
  EXPECT_FALSE(parse(std::string_view("\0[1]", 4)));
}

TEST(JsonRejection, AZeroCharacterAtTheEnd) {
  EXPECT_FALSE(parse(std::string_view("[1]\0", 4)));
  EXPECT_FALSE(parse(encode(U"[1]" + std::u32string(1, U'\0'), Width::two, Endian::little)));
}

TEST(JsonRejection, AHalfCharacterAtTheEnd) {
  EXPECT_FALSE(parse(encode(U"[1]", Width::two, Endian::little) + " "));
  EXPECT_FALSE(parse(encode(U"[1]", Width::four, Endian::little) + std::string(" \0", 2)));
}

TEST(JsonText, AnEscapedZeroCharacterIsPartOfAText) {
  EXPECT_EQ(*elementOf(R"("a\u0000b")").text(), std::string("a\0b", 3));
  const auto document = parse(R"({"a\u0000b": 1, "a": 2})");
  ASSERT_TRUE(document);
  EXPECT_EQ(document->find("a")->wholeNumber(), 2);
  EXPECT_EQ(document->find(std::string_view("a\0b", 3))->wholeNumber(), 1);
}

TEST(JsonDepth, TheDeepestNestingAllowedIsRead) {
  constexpr std::size_t kDeepest = ExactJsonReader::kDeepestNesting;
  EXPECT_TRUE(parse(std::string(kDeepest, '[') + std::string(kDeepest, ']')));
}

TEST(JsonDepth, ADeeperDocumentIsRejected) {
  constexpr std::size_t kTooDeep = ExactJsonReader::kDeepestNesting + 1;
  EXPECT_FALSE(parse(std::string(kTooDeep, '[') + std::string(kTooDeep, ']')));
  EXPECT_FALSE(parse(std::string(1'000'000, '[')));
  std::string objects;
  for (std::size_t level = 0; level < kTooDeep; ++level) objects += "{\"a\":";
  EXPECT_FALSE(parse(objects + "1" + std::string(kTooDeep, '}')));
}

TEST(JsonDepth, ManyContainersSideBySideAreNotDeep) {
  std::string text = "[[]";
  for (int count = 0; count < 2000; ++count) text += ",{}";
  const auto document = parse(text + "]");
  ASSERT_TRUE(document);
  EXPECT_EQ(document->array()->size(), 2001U);
}

TEST(JsonReason, IsGivenOnFailureOnly) {
  const ExactJsonReader reader;
  std::string reason = "untouched";
  EXPECT_TRUE(reader.parse("[]", &reason));
  EXPECT_EQ(reason, "untouched");
  for (const std::string_view text : {std::string_view(""), std::string_view("7"),
                                      std::string_view("[1,]"), std::string_view("[1]\0[2]", 7)}) {
    reason.clear();
    EXPECT_FALSE(reader.parse(text, &reason));
    EXPECT_FALSE(reason.empty());
  }
}

TEST(JsonReason, SaysWhatIsWrongWithTheEnd) {
  const ExactJsonReader reader;
  std::string reason;
  for (const char* text : {"null", "5", "{} x", "[1, 2", "{\"a\": 1"}) {
    EXPECT_FALSE(reader.parse(text, &reason)) << text;
    EXPECT_EQ(reason, "The document does not end with a brace or a bracket.") << text;
  }
  EXPECT_FALSE(reader.parse("[[1]", &reason));
  EXPECT_EQ(reason, "The document ends too early.");
}

}  // namespace
}  // namespace halvora
