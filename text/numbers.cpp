// SPDX-License-Identifier: Apache-2.0
#include "text/numbers.h"

#include <array>
#include <charconv>
#include <cmath>

namespace halvora {

std::string plainDecimal(double value) {
  if (value == 0) return "0";
  if (std::isnan(value)) return "nan";
  if (std::isinf(value)) return value < 0 ? "-inf" : "inf";
  // "d.ddde+x", with the fewest digits that read back as the same number.
  std::array<char, 40> text{};
  const char* end = std::to_chars(text.data(), text.data() + text.size(), std::fabs(value),
                                  std::chars_format::scientific)
                        .ptr;
  const std::string_view scientific(text.data(), static_cast<std::size_t>(end - text.data()));
  const std::size_t letter = scientific.find('e');
  std::string digits(scientific.substr(0, 1));
  if (letter > 2) digits += scientific.substr(2, letter - 2);
  // How many digits stand before the decimal point; none or less, and zeros follow it.
  const auto whole = static_cast<int>(integerValue(scientific.substr(letter + 1))) + 1;
  const auto count = static_cast<int>(digits.size());
  if (whole <= 0) {
    digits.insert(0, "0." + std::string(static_cast<std::size_t>(-whole), '0'));
  } else if (whole >= count) {
    digits.append(static_cast<std::size_t>(whole - count), '0');
  } else {
    digits.insert(static_cast<std::size_t>(whole), ".");
  }
  return value < 0 ? "-" + digits : digits;
}

}  // namespace halvora
