// SPDX-License-Identifier: Apache-2.0
#include "tests/seats/plain_seat_map.h"

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

#include "text/numbers.h"

namespace halvora {

namespace {

using Names = std::vector<std::pair<std::string, const JsonValue*>>;

std::optional<std::string> textOf(const JsonValue& value) {
  if (const std::string* text = value.text()) return *text;
  if (const bool* flag = value.boolean()) return *flag ? "1" : "0";
  if (const std::int64_t* number = value.integer()) return std::to_string(*number);
  if (const double* number = value.real()) return plainDecimal(*number);
  return std::nullopt;
}

std::string nameOr(const JsonValue* value, const std::string& format, std::int64_t ordinal) {
  const std::optional<std::string> text = value != nullptr ? textOf(*value) : std::nullopt;
  const std::string_view name = text ? trimmed(*text) : std::string_view();
  return name.empty() ? formatted(format, ordinal) : std::string(name);
}

std::int64_t integerOfText(std::string_view text) { return integerValue(trimmed(text)); }

std::optional<std::int64_t> integerOf(const JsonValue& value) {
  if (const std::string* text = value.text()) return integerOfText(*text);
  return value.wholeNumber();
}

std::int64_t position(const JsonValue& seat, std::initializer_list<const char*> keys,
                      std::int64_t fallback) {
  for (const char* key : keys) {
    const JsonValue* value = seat.find(key);
    if (value == nullptr || (value->text() != nullptr && value->text()->empty())) continue;
    if (const auto integer = integerOf(*value)) return *integer;
  }
  return fallback;
}

const JsonValue::Array& arrayOf(const JsonValue& object, std::string_view name) {
  static const JsonValue::Array kEmpty;
  const JsonValue* value = object.find(name);
  return value != nullptr && value->array() != nullptr ? *value->array() : kEmpty;
}

std::string line(const std::string& section, const std::string& row, const std::string& seat,
                 std::int64_t x, std::int64_t y) {
  return section + " | " + row + " | " + seat + " " + std::to_string(x) + "," + std::to_string(y);
}

std::vector<std::string> listedLines(const JsonValue::Array& sections, const SeatMapTexts& texts) {
  std::vector<std::string> lines;
  std::int64_t sectionOrdinal = 0;
  for (const JsonValue& section : sections) {
    if (section.object() == nullptr) continue;
    const std::string sectionName =
        nameOr(section.find("name"), texts.sectionFormat, ++sectionOrdinal);
    std::int64_t rowOrdinal = 0;
    for (const JsonValue& row : arrayOf(section, "rows")) {
      if (row.object() == nullptr) continue;
      const std::string rowName = nameOr(row.find("name"), texts.rowFormat, ++rowOrdinal);
      std::int64_t ordinal = 0;
      for (const JsonValue& seat : arrayOf(row, "seats")) {
        const bool isObject = seat.object() != nullptr;
        if (!isObject && !textOf(seat)) continue;
        ++ordinal;
        const JsonValue* name = isObject ? seat.find("name") : &seat;
        const std::int64_t x = position(seat, {"xPos", "x", "xpos", "column", "col"}, ordinal);
        const std::int64_t y = position(seat, {"yPos", "y", "ypos", "row", "line"}, rowOrdinal);
        lines.push_back(line(sectionName, rowName, nameOr(name, texts.seatFormat, ordinal), x, y));
      }
    }
  }
  return lines;
}

// A key as a list of parts that compare one by one: runs of digits by their number of digits and
// then as texts, everything else character by character. A part of text is its character; its
// number of digits says whether it sorts before all digits or behind them.
std::vector<std::pair<std::size_t, std::string>> partsOf(std::string_view key) {
  std::vector<std::pair<std::size_t, std::string>> parts;
  while (!key.empty()) {
    const char first = key.front();
    if (first < '0' || first > '9') {
      const bool isBefore = static_cast<unsigned char>(first) < '0';
      parts.emplace_back(isBefore ? 0 : SIZE_MAX, std::string(1, first));
      key.remove_prefix(1);
      continue;
    }
    std::string digits(key.substr(0, key.find_first_not_of("0123456789")));
    key.remove_prefix(digits.size());
    digits.erase(0, digits.find_first_not_of('0'));
    parts.emplace_back(digits.size() + 1, digits);
  }
  return parts;
}

Names sortedMembers(const JsonValue& value) {
  Names members;
  if (value.object() == nullptr) return members;
  for (const JsonMember& member : *value.object()) {
    if (value.find(member.name) == &member.value) members.emplace_back(member.name, &member.value);
  }
  std::stable_sort(members.begin(), members.end(), [](const auto& left, const auto& right) {
    const std::int64_t leftInteger = integerOfText(left.first);
    const std::int64_t rightInteger = integerOfText(right.first);
    if (leftInteger != rightInteger) return leftInteger < rightInteger;
    return partsOf(left.first) < partsOf(right.first);
  });
  return members;
}

std::vector<std::string> keyedLines(const JsonValue& sections, const SeatMapTexts& texts) {
  std::vector<std::string> lines;
  for (const auto& [sectionKey, section] : sortedMembers(sections)) {
    for (const auto& [rowKey, row] : sortedMembers(*section)) {
      for (const auto& [seatKey, seat] : sortedMembers(*row)) {
        const JsonValue::Array* elements = seat->array();
        if (elements == nullptr || elements->size() < 2) continue;
        lines.push_back(line(texts.sectionPrefix + " " + sectionKey, texts.rowPrefix + " " + rowKey,
                             texts.seatPrefix + " " + seatKey,
                             integerOf((*elements)[0]).value_or(integerOfText(seatKey)),
                             integerOf((*elements)[1]).value_or(integerOfText(rowKey))));
      }
    }
  }
  return lines;
}

}  // namespace

std::vector<std::string> plainSeatMapLines(const JsonValue& document, const SeatMapTexts& texts) {
  const JsonValue* keyed = document.find("s");
  if (keyed != nullptr && keyed->object() != nullptr) return keyedLines(*keyed, texts);
  if (document.array() != nullptr) return listedLines(*document.array(), texts);
  return listedLines(arrayOf(document, "sections"), texts);
}

}  // namespace halvora
