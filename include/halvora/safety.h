// SPDX-License-Identifier: Apache-2.0
// What a host, or the person who holds the phone, allows a show to do to eyes: values that act on
// what leaves the phone and on nothing else, so that the show itself goes on as it was sent. Any
// thread.
#pragma once

#include <algorithm>
#include <cstdint>

#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

/// How often the light may flash.
enum class FlashPolicy : std::uint8_t {
  /// All that is sent is shown.
  exact,
  /// No second contains more than three flashes, general or red, of screen, backlight and torch
  /// taken alone or together. What keeps to that is shown as it is; darkness never waits.
  limited,
};

/// As it stands nothing is limited.
struct LightLimits {
  /// How often the light may flash.
  FlashPolicy flash = FlashPolicy::exact;
  /// Of the backlight, 0 to 1.
  double mostBrightness = 1;
  bool torch = true;      ///< Whether the lamp may be lit.
  bool vibration = true;  ///< Whether the phone may be felt.
  friend bool operator==(const LightLimits&, const LightLimits&) = default;
};

/// For whoever finds a show too much.
inline constexpr LightLimits kGentleLight{FlashPolicy::limited, 0.6, false, false};

/// What both allow.
constexpr LightLimits bothOf(const LightLimits& one, const LightLimits& other) {
  const bool isExact = one.flash == FlashPolicy::exact && other.flash == FlashPolicy::exact;
  return {isExact ? FlashPolicy::exact : FlashPolicy::limited,
          std::min(one.mostBrightness, other.mostBrightness), one.torch && other.torch,
          one.vibration && other.vibration};
}

}  // namespace v0
}  // namespace halvora
