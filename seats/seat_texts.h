// SPDX-License-Identifier: Apache-2.0
// The texts that a seat map's parse needs: names as the document gives them, and the localised ones
// in their place. Any thread, apart from the look-ups.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "halvora/platform/bundle.h"
#include "halvora/platform/json.h"
#include "seats/seat_names.h"
#include "text/numbers.h"

namespace halvora {

/// The localised texts of one parse, looked up beforehand: the parse runs on a queue.
struct SeatMapTexts {
  /// With "%ld" in place of the number.
  std::string sectionFormat = "Section %ld";
  std::string rowFormat = "Row %ld";
  std::string seatFormat = "Seat %ld";
  std::string sectionPrefix = "Section";
  std::string rowPrefix = "Row";
  std::string seatPrefix = "Seat";
};

/// Main thread.
SeatMapTexts seatMapTexts(const Bundle& kit);

/// The format with a number in its place.
inline std::string formatted(std::string_view format, std::int64_t number) {
  return formatted(format, {std::to_string(number)});
}

/// Without white space and line ends, Unicode's included, at either end.
std::string_view trimmedOfBlanks(std::string_view text);
inline std::string_view trimmed(std::string_view text) {
  constexpr auto isGraphic = [](char character) { return character > ' ' && character < '\x7F'; };
  const bool isTrim = !text.empty() && isGraphic(text.front()) && isGraphic(text.back());
  return isTrim ? text : trimmedOfBlanks(text);
}

/// The integer that a text begins with, white space as above skipped.
inline std::int64_t leadingInteger(std::string_view text) { return integerValue(trimmed(text)); }

/// A text trimmed, or a number as plain decimal; empty for what gives no name. A number needs
/// `storage`, which must outlive the answer.
std::string_view nameOf(const JsonScalar& value, std::string& storage);

}  // namespace halvora
