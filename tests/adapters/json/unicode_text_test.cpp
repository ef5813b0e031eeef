// SPDX-License-Identifier: Apache-2.0
#include "adapters/json/unicode_text.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace halvora {
namespace {

std::string valid(std::string_view text) {
  std::string storage = "left over";
  return std::string(validUtf8(text, storage));
}

TEST(ValidUtf8, LeavesGoodTextWhereItIs) {
  std::string storage;
  for (const std::string_view text :
       {std::string_view(), std::string_view("a name"), std::string_view("a\0b", 3),
        std::string_view("\x7F"), std::string_view("Zürich €\xF0\x9F\x98\x80"),
        std::string_view("\xEF\xBF\xBD")}) {
    const std::string_view answer = validUtf8(text, storage);
    EXPECT_EQ(answer.data(), text.data());
    EXPECT_EQ(answer, text);
  }
}

TEST(ValidUtf8, ReplacesEveryByteThatBelongsToNoCharacter) {
  const std::string r = "\xEF\xBF\xBD";
  for (const auto& [text, expected] : std::vector<std::pair<std::string, std::string>>{
           {"\xFF", r},
           {"a\x80z", "a" + r + "z"},
           {"\xC3", r},
           {"\xC3(", r + "("},
           {"\xC0\xAF", r + r},
           {"\xE2\x82", r + r},
           {"\xED\xA0\x80", r + r + r},
           {"\xF4\x90\x80\x80", r + r + r + r},
           {"\xC3\xA4\xFF\xC3\xA4", "\xC3\xA4" + r + "\xC3\xA4"}}) {
    EXPECT_EQ(valid(text), expected);
  }
}

}  // namespace
}  // namespace halvora
