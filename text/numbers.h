// SPDX-License-Identifier: Apache-2.0
// Numbers in texts, by the rules that defaults, seat maps and command lines share. Any thread, no
// locale.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace halvora {

/// The integer a text begins with: blanks skipped, one sign, then decimal digits; 0 without digits,
/// saturated at 64 bits.
constexpr std::int64_t integerValue(std::string_view text) {
  std::size_t at = 0;
  while (at < text.size() && (text[at] == ' ' || (text[at] >= '\t' && text[at] <= '\r'))) ++at;
  const bool negative = at < text.size() && text[at] == '-';
  if (at < text.size() && (text[at] == '-' || text[at] == '+')) ++at;
  // Counted downwards, because the negative range is the larger one.
  std::int64_t value = 0;
  for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at) {
    const int digit = text[at] - '0';
    if (value < (INT64_MIN + digit) / 10) return negative ? INT64_MIN : INT64_MAX;
    value = value * 10 - digit;
  }
  if (negative) return value;
  return value == INT64_MIN ? INT64_MAX : -value;
}

/// The value of a hexadecimal digit of either case; -1 for any other character.
constexpr int hexDigit(char character) {
  if (character >= '0' && character <= '9') return character - '0';
  if (character >= 'a' && character <= 'f') return character - 'a' + 10;
  if (character >= 'A' && character <= 'F') return character - 'A' + 10;
  return -1;
}

/// A number truncated towards zero and saturated at 64 bits; 0 for what is not a number.
constexpr std::int64_t wholeNumber(double value) {
  // 2^63 is the first double beyond the range; its negative is the last one within.
  constexpr double kBeyond = 9223372036854775808.0;
  if (value != value) return 0;
  if (value >= kBeyond) return INT64_MAX;
  return value > -kBeyond ? static_cast<std::int64_t>(value) : INT64_MIN;
}

/// The shortest decimal without an exponent that reads back as the same number ("7", "0.1"); "nan",
/// "inf" and "-inf" for what is none.
std::string plainDecimal(double value);

}  // namespace halvora
