// SPDX-License-Identifier: Apache-2.0
// What the styles of the panel and of the wizard are made of. Pure functions; any thread.
#pragma once

#include <string>
#include <string_view>

#include "halvora/labels.h"

namespace halvora {

constexpr Colour withAlpha(Colour colour, float alpha) {
  colour.alpha = alpha;
  return colour;
}

/// The font of that name where there is one, else the system's of that weight.
inline Font fontNamed(std::string_view name, double size, FontWeight weight,
                      const FontLookup& hasFont) {
  if (!name.empty() && hasFont && hasFont(name)) {
    return {std::string(name), size, FontWeight::regular};
  }
  return {"", size, weight};
}

}  // namespace halvora
