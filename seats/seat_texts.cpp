// SPDX-License-Identifier: Apache-2.0
#include "seats/seat_texts.h"

#include <algorithm>
#include <iterator>

#include "text/numbers.h"

namespace halvora {

namespace {

struct LocalizedText {
  std::string_view key;
  std::string SeatMapTexts::*text;
};

constexpr LocalizedText kTexts[] = {
    {"hv_seat_picker_fallback_section_format", &SeatMapTexts::sectionFormat},
    {"hv_seat_picker_fallback_row_format", &SeatMapTexts::rowFormat},
    {"hv_seat_picker_fallback_seat_format", &SeatMapTexts::seatFormat},
    {"hv_seat_picker_fallback_section_prefix", &SeatMapTexts::sectionPrefix},
    {"hv_seat_picker_fallback_row_prefix", &SeatMapTexts::rowPrefix},
    {"hv_seat_picker_fallback_seat_prefix", &SeatMapTexts::seatPrefix},
};

// White space of Unicode, line and paragraph separators included, shortest first.
constexpr std::string_view kBlanks[] = {
    "\t",           "\n",           "\v",           "\f",           "\r",           " ",
    "\xC2\x85",     "\xC2\xA0",     "\xE1\x9A\x80", "\xE2\x80\x80", "\xE2\x80\x81", "\xE2\x80\x82",
    "\xE2\x80\x83", "\xE2\x80\x84", "\xE2\x80\x85", "\xE2\x80\x86", "\xE2\x80\x87", "\xE2\x80\x88",
    "\xE2\x80\x89", "\xE2\x80\x8A", "\xE2\x80\xA8", "\xE2\x80\xA9", "\xE2\x80\xAF", "\xE2\x81\x9F",
    "\xE3\x80\x80",
};

bool isBlank(std::string_view character) {
  return std::find(std::begin(kBlanks), std::end(kBlanks), character) != std::end(kBlanks);
}

constexpr std::size_t kLongestBlank = 3;

}  // namespace

SeatMapTexts seatMapTexts(const Bundle& kit) {
  SeatMapTexts texts;
  for (const LocalizedText& entry : kTexts) {
    std::string& text = texts.*entry.text;
    text = localizedText(kit, entry.key, text);
  }
  return texts;
}

std::string_view trimmedOfBlanks(std::string_view text) {
  const auto trimOnce = [&text](bool atEnd) {
    for (std::size_t size = 1; size <= std::min(kLongestBlank, text.size()); ++size) {
      const std::size_t from = atEnd ? text.size() - size : 0;
      if (!isBlank(text.substr(from, size))) continue;
      text = atEnd ? text.substr(0, from) : text.substr(size);
      return true;
    }
    return false;
  };
  while (trimOnce(false)) {
  }
  while (trimOnce(true)) {
  }
  return text;
}

std::string_view nameOf(const JsonScalar& value, std::string& storage) {
  switch (value.kind) {
    case JsonScalar::Kind::null:
      return {};
    case JsonScalar::Kind::text:
      return trimmed(value.text);
    case JsonScalar::Kind::boolean:
      return value.integer != 0 ? "1" : "0";
    case JsonScalar::Kind::integer:
      return value.integer != 0 ? value.text : "0";
    case JsonScalar::Kind::real:
      break;
  }
  // An integer beyond 64 bits is plain decimal already.
  const bool isInteger = value.text.find_first_of(".eE") == std::string_view::npos;
  return isInteger ? value.text : storage = plainDecimal(value.real);
}

}  // namespace halvora
