// SPDX-License-Identifier: Apache-2.0
#include "adapters/standard/string_table.h"

#include <string>

#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/virtual/virtual_storage.h"

namespace halvora {
namespace {

struct StringTableTest : testing::Test {
  void put(const std::string& language, const std::string& document) {
    bundle.resources["strings/" + language + ".json"] = document;
  }
  StringTable tableOf(const std::vector<std::string>& languages) {
    return stringTableOf(bundle, languages, json);
  }

  VirtualBundle bundle{"com.halvora.sdk"};
  ExactJsonReader json;
};

TEST_F(StringTableTest, TheFirstLanguageThatIsThereCountsAndEnglishFillsIt) {
  put("en", R"({"a": "a in English", "b": "b in English"})");
  put("fr", R"({"a": "a en français"})");
  put("de", R"({"a": "a auf Deutsch", "b": "b auf Deutsch"})");
  const StringTable table = tableOf({"xx", "fr", "de"});
  EXPECT_EQ(textIn(table, "a"), "a en français");
  EXPECT_EQ(textIn(table, "b"), "b in English");
  EXPECT_EQ(textIn(table, "c"), "c");
  EXPECT_EQ(table.size(), 2);
  EXPECT_EQ(textIn(tableOf({}), "a"), "a in English");
}

TEST_F(StringTableTest, ATagIsCutAtItsHyphensFromTheEnd) {
  put("zh", R"({"a": "zh"})");
  put("zh-Hant", R"({"a": "zh-Hant"})");
  EXPECT_EQ(textIn(tableOf({"zh-Hant-TW"}), "a"), "zh-Hant");
  EXPECT_EQ(textIn(tableOf({"zh-Hans-CN"}), "a"), "zh");
  EXPECT_EQ(textIn(tableOf({"zh-Hant"}), "a"), "zh-Hant");
}

TEST_F(StringTableTest, WhatIsNoObjectOrNoTextIsLeftOut) {
  put("en", R"({"a": "English"})");
  put("de", R"(["a"])");
  put("fr", "{");
  put("it", R"({"a": 5, "b": null, "c": "c"})");
  EXPECT_EQ(textIn(tableOf({"de", "fr"}), "a"), "English");
  const StringTable table = tableOf({"it"});
  EXPECT_EQ(textIn(table, "a"), "English");
  EXPECT_EQ(textIn(table, "b"), "b");
  EXPECT_EQ(textIn(table, "c"), "c");
}

TEST_F(StringTableTest, ATableOfAMebibyteIsReadAndALargerOneIsNot) {
  const std::string document = R"({"a": "it"})";
  put("de", document + std::string((1 << 20) - document.size(), ' '));
  EXPECT_EQ(textIn(tableOf({"de"}), "a"), "it");
  put("de", document + std::string((1 << 20) - document.size() + 1, ' '));
  EXPECT_EQ(textIn(tableOf({"de"}), "a"), "a");
}

TEST(LanguageTag, IsOfLettersDigitsAndHyphensAndNotTooLong) {
  for (const char* tag : {"a", "z", "A", "Z", "0", "9", "-", "zh-Hant-TW"}) {
    EXPECT_TRUE(isLanguageTag(tag)) << tag;
  }
  for (const char* tag : {"", "`", "{", "@", "[", "/", ":", "a_b", "../en", "\u00E9"}) {
    EXPECT_FALSE(isLanguageTag(tag)) << tag;
  }
  EXPECT_TRUE(isLanguageTag(std::string(64, 'a')));
  EXPECT_FALSE(isLanguageTag(std::string(65, 'a')));
}

TEST_F(StringTableTest, WhatIsNoTagIsNotLookedFor) {
  bundle.resources["strings/../en.json"] = R"({"a": "outside"})";
  EXPECT_EQ(textIn(tableOf({"../en"}), "a"), "a");
}

}  // namespace
}  // namespace halvora
