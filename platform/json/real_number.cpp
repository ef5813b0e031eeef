// SPDX-License-Identifier: Apache-2.0
#include "platform/json/real_number.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

namespace halvora {

namespace {

struct RealHandler : rapidjson::BaseReaderHandler<rapidjson::UTF8<>, RealHandler> {
  double value = 0;
  bool Double(double number) {
    value = number;
    return true;
  }
};

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

}  // namespace

double realNumber(std::string_view written) {
  if (const auto value = shortDecimal(written)) return *value;
  // RapidJSON looks for the highest bit of the digits, whether or not there is one.
  const std::string_view digits = written.substr(0, written.find_first_of("eE"));
  if (digits.find_first_of("123456789") == std::string_view::npos) {
    return written.starts_with('-') ? -0.0 : 0.0;
  }
  // With a fraction the parser takes every number for a double.
  const bool isInteger = written.find_first_of(".eE") == std::string_view::npos;
  const std::string text = std::string(written) + (isInteger ? ".0" : "");
  rapidjson::MemoryStream stream(text.data(), text.size());
  rapidjson::Reader reader;
  RealHandler handler;
  if (reader.Parse<rapidjson::kParseFullPrecisionFlag>(stream, handler).IsError()) {
    const double infinity = std::numeric_limits<double>::infinity();
    return text.front() == '-' ? -infinity : infinity;
  }
  return handler.value;
}

}  // namespace halvora
