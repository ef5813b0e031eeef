// SPDX-License-Identifier: Apache-2.0
// Any text as a value on a command line, in a document or in the defaults: a number is read exactly
// as the plainest reading has it, and what is no value is refused.
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <string>

#include "adapters/standard/string_table.h"
#include "halvora/colour.h"
#include "light/gobo_animator.h"
#include "seats/seat_texts.h"
#include "tests/fuzz/fuzz_targets.h"
#include "text/numbers.h"
#include "venue/base/input_text.h"

namespace halvora {

namespace {

bool isDigits(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

// By the C library, which knows overflow by errno.
std::optional<std::uint64_t> decimalByLibrary(const std::string& text, std::uint64_t largest) {
  if (!isDigits(text)) return std::nullopt;
  errno = 0;
  const std::uint64_t value = std::strtoull(text.c_str(), nullptr, 10);
  if (errno == ERANGE || value > largest) return std::nullopt;
  return value;
}

void checkDecimals(const std::string& text) {
  for (const std::uint64_t largest : {std::uint64_t{255}, std::uint64_t{65535},
                                      std::uint64_t{INT64_MAX}, std::uint64_t{UINT64_MAX}}) {
    require(decimal(text, largest) == decimalByLibrary(text, largest), "digits up to a bound");
  }
  if (const auto whole = wholeNumber(text)) {
    require(isDigits(text.substr(text.starts_with('-') ? 1 : 0)), "a whole number is digits");
    errno = 0;
    require(*whole == std::strtoll(text.c_str(), nullptr, 10) && errno == 0, "of that value");
  }
  // The library's own reader begins the same way, blanks and one sign included.
  if (text.find('\0') == std::string::npos) {
    require(integerValue(text) == std::strtoll(text.c_str(), nullptr, 10),
            "the integer that a text begins with");
  }
}

void checkReal(const std::string& text) {
  const auto real = plainNumber(text);
  if (!real) return;
  require(text.find_first_not_of("0123456789.eE+-") == std::string::npos, "a plain number");
  require(!std::isnan(*real), "a number");
  if (std::isfinite(*real)) {
    const std::string plain = plainDecimal(*real);
    require(!plain.empty() && plain.size() < 400, "a number can be written");
  }
}

void checkColour(std::string_view text) {
  const Colour colour = colorFromHexString(text);
  const auto isByte = [](float level) {
    const float byte = level * 255;
    return level >= 0 && level <= 1 && std::fabs(byte - std::nearbyint(byte)) < 1e-3F;
  };
  require(isByte(colour.red) && isByte(colour.green) && isByte(colour.blue) && colour.alpha == 1,
          "a colour has three bytes");
}

}  // namespace

int fuzzValues(FuzzBytes bytes) {
  const std::string text(textOf(bytes));
  checkDecimals(text);
  checkReal(text);
  checkColour(text);
  if (text.starts_with('/')) {
    const std::string path = absolutePath(text);
    require(path.front() == '/' && absolutePath(path) == path, "a path from the root stays one");
  }
  if (isLanguageTag(text)) {
    require(text.find_first_of("./\\") == std::string::npos, "a language names no folder");
  }
  if (const auto variants = variantsNamedBy(text, 3)) {
    require(text.starts_with("3_1"), "variants are a gobo's own");
  }
  return 0;
}

}  // namespace halvora
