// SPDX-License-Identifier: Apache-2.0
// What the user has asked the system for about everything that is shown, as far as the system tells
// it. Values, any thread.
#pragma once

#include <cstdint>

#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

/// Whether all is to be `dark`, or `light`, or however an application likes it: `any`.
enum class ColourScheme : std::uint8_t { any, dark, light };

/// What is unknown counts as not asked for.
struct UserWishes {
  bool highContrast = false;  ///< Stronger differences between letters and ground.
  /// Nothing is to slide or turn.
  bool reducedMotion = false;
  ColourScheme scheme = ColourScheme::any;  ///< Of what is shown; the light is the show's.
  friend bool operator==(const UserWishes&, const UserWishes&) = default;
};

}  // namespace v0
}  // namespace halvora
