// SPDX-License-Identifier: Apache-2.0
// Chance as a need: seeded or scripted in tests and simulations. Main thread.
#pragma once

#include <cstdint>

#include "halvora/platform/need.h"
#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

class Random : public Need {
 public:
  /// Uniform in [0, bound); 0 for a bound of 0.
  virtual std::uint32_t below(std::uint32_t bound) = 0;
};

}  // namespace v0
}  // namespace halvora
