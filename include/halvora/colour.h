// SPDX-License-Identifier: Apache-2.0
// Colours of the light: levels of red, green, blue and alpha from 0 to 1. Values, any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

struct Colour {
  /// Levels in sRGB, not multiplied by alpha.
  float red = 0;
  float green = 0;  ///< As red.
  float blue = 0;   ///< As red.
  /// 0 lets through all that lies below, 1 nothing.
  float alpha = 1;
  friend bool operator==(const Colour&, const Colour&) = default;
};

/// No colour at all: what the light shows when it is cleared.
using MaybeColour = std::optional<Colour>;

/// Opaque black: what shows where there is no light.
inline constexpr Colour kBlack{0, 0, 0, 1};
/// Opaque white: as bright as the screen is without more headroom.
inline constexpr Colour kWhite{1, 1, 1, 1};

/// A byte as a level.
constexpr float levelOf(std::uint8_t byte) { return static_cast<float>(byte) / 255.0F; }

/// The opaque colour of three bytes, as packets and web colours have them.
constexpr Colour colourOfBytes(std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
  return {levelOf(red), levelOf(green), levelOf(blue), 1};
}

/// "#RRGGBB" as an opaque colour. The first character is skipped whatever it is; the hexadecimal
/// digits behind it, up to the first other character, are one number, of which the lowest 24 bits
/// count. Without digits: black. A number beyond 32 bits counts as the largest one.
Colour colorFromHexString(std::string_view text);

/// Each of red, green and blue 0.6 lower, not below 0; alpha stays. No colour for none.
MaybeColour darkerColorForColor(const MaybeColour& colour);

/// The colour part of the way from one to the other, `share` from 0 to 1.
Colour mix(const Colour& from, const Colour& to, float share);

}  // namespace v0
}  // namespace halvora
