// SPDX-License-Identifier: Apache-2.0
#include "halvora/colour.h"

#include <algorithm>
#include <cstddef>

#include "text/numbers.h"

namespace halvora {

namespace {

constexpr float kDarkening = 0.6F;

constexpr std::uint8_t byteAt(std::uint64_t number, unsigned shift) {
  return static_cast<std::uint8_t>((number >> shift) & 0xFF);
}

}  // namespace

Colour v0::colorFromHexString(std::string_view text) {
  std::uint64_t number = 0;
  std::size_t at = 1;
  // A first character of several bytes is one character all the same.
  while (at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80) ++at;
  for (; at < text.size(); ++at) {
    const int digit = hexDigit(text[at]);
    if (digit < 0) break;
    number = std::min<std::uint64_t>(number * 16 + static_cast<unsigned>(digit), UINT32_MAX);
  }
  return colourOfBytes(byteAt(number, 16), byteAt(number, 8), byteAt(number, 0));
}

MaybeColour v0::darkerColorForColor(const MaybeColour& colour) {
  if (!colour) return std::nullopt;
  const auto darker = [](float level) { return std::max(level - kDarkening, 0.0F); };
  return Colour{darker(colour->red), darker(colour->green), darker(colour->blue), colour->alpha};
}

Colour v0::mix(const Colour& from, const Colour& to, float share) {
  const auto between = [share](float a, float b) { return a + (b - a) * share; };
  return {between(from.red, to.red), between(from.green, to.green), between(from.blue, to.blue),
          between(from.alpha, to.alpha)};
}

}  // namespace halvora
