// SPDX-License-Identifier: Apache-2.0
#include "adapters/standard/defaults_document.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "tests/support/other_country.h"

namespace halvora {
namespace {

ReadDefaults read(const std::string& text) {
  const std::optional<JsonValue> document = ExactJsonReader().parse(text, nullptr);
  return document ? readDefaultsDocument(*document) : ReadDefaults{};
}

/// What comes back of a value that is written and read under a key.
std::optional<DefaultsValue> restarted(const DefaultsValue& value, const std::string& key = "key") {
  const ReadDefaults back = read(defaultsDocument({{key, value}}));
  if (!back.isWhole || back.values.size() != 1) return std::nullopt;
  const auto found = back.values.find(key);
  return found == back.values.end() ? std::nullopt : std::optional(found->second);
}

void expectKept(const DefaultsValue& value) {
  const std::optional<DefaultsValue> back = restarted(value);
  ASSERT_TRUE(back) << defaultsDocument({{"key", value}});
  EXPECT_EQ(*back, value) << defaultsDocument({{"key", value}});
}

TEST(DefaultsDocument, KeepsFlagsAndWholeNumbers) {
  expectKept(true);
  expectKept(false);
  for (const std::int64_t number :
       {std::int64_t{0}, std::int64_t{1}, std::int64_t{-1}, std::int64_t{1} << 53,
        (std::int64_t{1} << 53) + 1, std::numeric_limits<std::int64_t>::max(),
        std::numeric_limits<std::int64_t>::min()}) {
    expectKept(number);
  }
}

TEST(DefaultsDocument, KeepsFractionsExactly) {
  for (const double number :
       {0.0, 1.0, -1.0, 0.1, 1.0 / 3, 1e300, -1e300, 5e-324, 2.2250738585072014e-308,
        1.7976931348623157e308, 123456789012345678.0, 1e15, 1e17, 0.30000000000000004}) {
    expectKept(number);
  }
  const std::optional<DefaultsValue> back = restarted(-0.0);
  ASSERT_TRUE(back);
  EXPECT_TRUE(std::signbit(std::get<double>(back->storage)));
}

TEST(DefaultsDocument, KeepsNumbersThatJsonDoesNotHave) {
  expectKept(std::numeric_limits<double>::infinity());
  expectKept(-std::numeric_limits<double>::infinity());
  const auto back = restarted(std::numeric_limits<double>::quiet_NaN());
  ASSERT_TRUE(back);
  EXPECT_TRUE(std::isnan(std::get<double>(back->storage)));
}

TEST(DefaultsDocument, KeepsDates) {
  expectKept(Date{0});
  expectKept(Date{1767268800});
  expectKept(Date{1767268800.123456});
  expectKept(Date{-1e9});
  expectKept(Date{std::numeric_limits<double>::infinity()});
}

TEST(DefaultsDocument, KeepsTexts) {
  for (const char* text : {"", "a", " a b ", "\"quoted\" \\ /", "line\nline\r\ttab", "Zürich",
                           "\xE6\x97\xA5\xE6\x9C\xAC", "\xF0\x9F\x8E\x86", "\xEF\xBF\xBF",
                           "\xF3\xB0\x80\x80", "\x7F", "\x01\x1F"}) {
    expectKept(std::string(text));
  }
  expectKept(std::string("a\0b", 3));
}

TEST(DefaultsDocument, KeepsBytesThatAreNoText) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) {
    expectKept(std::string(1, static_cast<char>(byte)));
    all += static_cast<char>(byte);
  }
  expectKept(all);
  // Cut short, too long, half a pair, beyond the last character.
  for (const char* text : {"\xC3", "a\xE2\x82", "\xC0\xAF", "\xE0\x80\xAF", "\xED\xA0\x80",
                           "\xF4\x90\x80\x80", "\xF0\x80\x80\x80", "\xF5\x80\x80\x80"}) {
    expectKept(std::string(text));
  }
}

// Whoever opens the file reads texts as they are, and only texts.
TEST(DefaultsDocument, WritesEachCharacterAsItIsAndEachStrayByteByItself) {
  for (const char* text :
       {"\xC2\x80", "\xC2\xBF", "\xDF\xBF", "\xE0\xA0\x80", "\xE0\xBF\xBF", "\xE1\x80\x80",
        "\xEC\xBF\xBF", "\xED\x80\x80", "\xED\x9F\xBF", "\xEE\x80\x80", "\xEF\xBF\xBF",
        "\xF0\x90\x80\x80", "\xF0\xBF\xBF\xBF", "\xF1\x80\x80\x80", "\xF3\xBF\xBF\xBF",
        "\xF4\x80\x80\x80", "\xF4\x8F\x80\x80"}) {
    expectKept(std::string(text));
    EXPECT_NE(defaultsDocument({{"key", std::string(text)}}).find(text), std::string::npos) << text;
  }
  for (const char* text :
       {"\xC1\x80", "\xC2\x7F", "\xC2\xC0", "\xDF\x7F", "\xE0\x9F\xBF", "\xE1\x7F\x80",
        "\xE1\x80\x7F", "\xE1\x80\xC0", "\xED\xA0\x80", "\xF0\x8F\xBF\xBF", "\xF1\x7F\x80\x80",
        "\xF4\x90\x80\x80", "\xF5\x80\x80\x80"}) {
    expectKept(std::string(text));
    EXPECT_EQ(defaultsDocument({{"key", std::string(text)}}).find(text), std::string::npos) << text;
  }
}

TEST(DefaultsDocument, KeepsTheCharactersThatItUsesForBytes) {
  expectKept(std::string("\xF4\x8F\xBC\x80"));
  expectKept(std::string("a\xF4\x8F\xBF\xBF\xF4\x8F\xBB\xBF z"));
  expectKept(std::string("\xF4\x8F\xBC"));
}

TEST(DefaultsDocument, KeepsAnyKey) {
  for (const char* key : {"", "a.b", "\"", "date", "\xFF", "\xF4\x8F\xBC\x80", "\n"}) {
    const auto back = restarted(std::int64_t{7}, key);
    ASSERT_TRUE(back) << key;
    EXPECT_EQ(*back, DefaultsValue(std::int64_t{7}));
  }
}

TEST(DefaultsDocument, KeepsWhatLiesInOtherValues) {
  expectKept(DefaultsArray{});
  expectKept(DefaultsDictionary{});
  expectKept(DefaultsDictionary{{"date", 5.0}});
  expectKept(DefaultsDictionary{{"real", std::string("nan")}});
  expectKept(DefaultsArray{
      DefaultsValue(true), DefaultsValue(1.0), DefaultsValue(Date{1}),
      DefaultsValue(DefaultsDictionary{{"7", DefaultsDictionary{{"xPos", std::int64_t{3}}}},
                                       {"7", std::string("the same key again")},
                                       {"", DefaultsArray{}}})});
}

DefaultsValue nested(int levels) {
  DefaultsValue value = DefaultsDictionary{};
  for (int level = 1; level < levels; ++level) {
    value = DefaultsDictionary{{"in", std::move(value)}};
  }
  return value;
}

TEST(DefaultsDocument, LeavesOutWhatLiesTooDeep) {
  expectKept(nested(kDeepestDefaults));
  const ReadDefaults back =
      read(defaultsDocument({{"deep", nested(kDeepestDefaults + 1)}, {"other", true}}));
  EXPECT_TRUE(back.isWhole);
  EXPECT_EQ(back.values, (DefaultsValues{{"other", true}}));
}

TEST(DefaultsDocument, OfNothingIsAnEmptyObject) {
  const ReadDefaults back = read(defaultsDocument({}));
  EXPECT_TRUE(back.isWhole);
  EXPECT_TRUE(back.values.empty());
}

TEST(DefaultsDocument, AnotherDocumentIsNoneOfOurs) {
  const ReadDefaults back = read("[1, 2]");
  EXPECT_FALSE(back.isWhole);
  EXPECT_TRUE(back.values.empty());
}

TEST(DefaultsDocument, WhatCannotBeUnderstoodIsLeftOut) {
  const ReadDefaults back = read(R"({
    "kept": 5, "nothing": null, "unknown": {"colour": "red"}, "two": {"date": 1.0, "real": "nan"},
    "none": {}, "notADate": {"date": "today"}, "notAReal": {"real": 5.0},
    "notADictionary": {"dictionary": []}, "broken": [1, null],
    "brokenToo": {"dictionary": {"a": null}},
    "kept": 6, "last": true})");
  EXPECT_FALSE(back.isWhole);
  EXPECT_EQ(back.values, (DefaultsValues{{"kept", std::int64_t{5}}, {"last", true}}));
}

TEST(DefaultsDocument, IsTheSameInEveryCountry) {
  const DefaultsValues values = {{"real", 1234567.5},
                                 {"small", 0.1},
                                 {"date", Date{1767225600.25}},
                                 {"integer", std::int64_t{1234567}}};
  const std::string usual = defaultsDocument(values);
  const OtherCountry abroad;
  EXPECT_EQ(defaultsDocument(values), usual);
  EXPECT_EQ(read(usual).values, values);
  if (!abroad.isWhole()) GTEST_SKIP() << "no locale with a decimal comma can be had here";
}

}  // namespace
}  // namespace halvora
