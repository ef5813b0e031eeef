// SPDX-License-Identifier: Apache-2.0
// The inclusive draw that every pause of an effect uses. Main thread.
#pragma once

#include <cstdint>

#include "halvora/platform/random.h"

namespace halvora {

/// Uniform from `minimum` to `maxNumber`, both included; the arithmetic is unsigned and 32 bits
/// wide.
inline int randomNumberBetween(Random& random, int minimum, int maxNumber) {
  const auto low = static_cast<std::uint32_t>(minimum);
  const auto high = static_cast<std::uint32_t>(maxNumber);
  return static_cast<int>(low + random.below(high - low + 1));
}

}  // namespace halvora
