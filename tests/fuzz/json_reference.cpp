// SPDX-License-Identifier: Apache-2.0
#include "tests/fuzz/json_reference.h"

#include <algorithm>

#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

namespace halvora {

namespace {

struct NoHandler : rapidjson::BaseReaderHandler<rapidjson::UTF8<>, NoHandler> {
  bool Default() { return true; }
};

// It refuses a zero of a large exponent.
bool hasLargeExponent(std::string_view text) {
  for (std::size_t at = text.find_first_of("eE"); at != text.npos;
       at = text.find_first_of("eE", at + 1)) {
    const std::size_t sign = text.find_first_not_of("+-", at + 1);
    if (sign != text.npos && hasDigits(text.substr(sign, 3), 3)) return true;
  }
  return false;
}

}  // namespace

bool hasDigits(std::string_view text, std::size_t count) {
  std::size_t run = 0;
  for (const char character : text) {
    run = character >= '0' && character <= '9' ? run + 1 : 0;
    if (run >= count) return true;
  }
  return false;
}

bool rapidJsonAccepts(std::string_view text) {
  rapidjson::MemoryStream stream(text.data(), text.size());
  rapidjson::Reader reader;
  NoHandler handler;
  constexpr unsigned kFlags = rapidjson::kParseIterativeFlag |
                              rapidjson::kParseNumbersAsStringsFlag |
                              rapidjson::kParseValidateEncodingFlag;
  return !reader.Parse<kFlags>(stream, handler).IsError();
}

bool isComparableJson(std::string_view text) {
  const std::size_t begin = std::min(text.find_first_not_of(" \t\r\n"), text.size());
  if (begin == text.size() || (text[begin] != '{' && text[begin] != '[')) return false;
  if (text.find('\0') != text.npos || text.find('\xED') != text.npos) return false;
  if (text.find("\\ud") != text.npos || text.find("\\uD") != text.npos) return false;
  const auto opened = std::count_if(text.begin(), text.end(),
                                    [](char character) { return (character & 0xDF) == '['; });
  return opened < 500 && !hasDigits(text, 300) && !hasLargeExponent(text);
}

}  // namespace halvora
