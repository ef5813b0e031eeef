// SPDX-License-Identifier: Apache-2.0
#include "adapters/json/real_number.h"

#include <array>
#include <clocale>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>

namespace halvora {

namespace {

// A plain decimal of few digits: both parts of the division are exact, so its result is the nearest
// double.
std::optional<double> shortDecimal(std::string_view written) {
  constexpr std::size_t kMostDigits = 15;
  constexpr std::array<double, kMostDigits + 1> kPowers = {
      1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
  const bool isNegative = written.starts_with('-');
  if (isNegative) written.remove_prefix(1);
  if (written.size() > kMostDigits) return std::nullopt;
  std::int64_t digits = 0;
  std::size_t decimals = 0;
  for (std::size_t at = 0; at < written.size(); ++at) {
    if (written[at] == '.') {
      decimals = written.size() - at - 1;
    } else if (written[at] >= '0' && written[at] <= '9') {
      digits = digits * 10 + (written[at] - '0');
    } else {
      return std::nullopt;
    }
  }
  const double value = static_cast<double>(digits) / kPowers[decimals];
  return isNegative ? -value : value;
}

// In the locale that no host changes. The C library has it ready: asking for it allocates nothing
// and cannot fail.
double plainNumber(const char* text) {
#ifdef _WIN32
  static const _locale_t kPlain = _create_locale(LC_ALL, "C");
  return _strtod_l(text, nullptr, kPlain);
#else
  static const locale_t kPlain = newlocale(LC_ALL_MASK, "C", nullptr);
  return strtod_l(text, nullptr, kPlain);
#endif
}

}  // namespace

double realNumber(std::string_view written) {
  if (const auto value = shortDecimal(written)) return *value;
  return plainNumber(std::string(written).c_str());
}

}  // namespace halvora
