// SPDX-License-Identifier: Apache-2.0
#include "light/colour.h"

#include <algorithm>
#include <cstddef>

namespace halvora {

namespace {

constexpr float kDarkening = 0.6F;

int hexDigit(char character) {
  if (character >= '0' && character <= '9') return character - '0';
  if (character >= 'a' && character <= 'f') return character - 'a' + 10;
  if (character >= 'A' && character <= 'F') return character - 'A' + 10;
  return -1;
}

constexpr std::uint8_t byteAt(std::uint64_t number, unsigned shift) {
  return static_cast<std::uint8_t>((number >> shift) & 0xFF);
}

}  // namespace

Colour colorFromHexString(std::string_view text) {
  std::uint64_t number = 0;
  for (std::size_t at = 1; at < text.size(); ++at) {
    const int digit = hexDigit(text[at]);
    if (digit < 0) break;
    number = std::min<std::uint64_t>(number * 16 + static_cast<unsigned>(digit), UINT32_MAX);
  }
  return colourOfBytes(byteAt(number, 16), byteAt(number, 8), byteAt(number, 0));
}

MaybeColour darkerColorForColor(const MaybeColour& colour) {
  if (!colour) return std::nullopt;
  const auto darker = [](float level) { return std::max(level - kDarkening, 0.0F); };
  return Colour{darker(colour->red), darker(colour->green), darker(colour->blue), colour->alpha};
}

Colour mix(const Colour& from, const Colour& to, float share) {
  const auto between = [share](float a, float b) { return a + (b - a) * share; };
  return {between(from.red, to.red), between(from.green, to.green), between(from.blue, to.blue),
          between(from.alpha, to.alpha)};
}

}  // namespace halvora
