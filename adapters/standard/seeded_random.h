// SPDX-License-Identifier: Apache-2.0
// A small, fast generator whose draws follow from its seed alone, the same on every machine: a
// permuted congruential generator with 64 bits of state (O'Neill, "PCG: A Family of Simple Fast
// Space-Efficient Statistically Good Algorithms", 2014).
#pragma once

#include <cstdint>

#include "halvora/platform/random.h"

namespace halvora {

class SeededRandom final : public Random {
 public:
  explicit SeededRandom(std::uint64_t seed) : state_(seed + kIncrement) { next(); }

  std::uint32_t below(std::uint32_t bound) override {
    if (bound == 0) return 0;
    // The draws below `uneven` would make the smallest results likelier than the others.
    const std::uint32_t uneven = (0 - bound) % bound;
    std::uint32_t drawn = next();
    while (drawn < uneven) drawn = next();
    return drawn % bound;
  }

 private:
  static constexpr std::uint64_t kMultiplier = 6364136223846793005U;
  static constexpr std::uint64_t kIncrement = 1442695040888963407U;

  std::uint32_t next() {
    const std::uint64_t old = state_;
    state_ = old * kMultiplier + kIncrement;
    const auto mixed = static_cast<std::uint32_t>(((old >> 18) ^ old) >> 27);
    const auto turn = static_cast<std::uint32_t>(old >> 59);
    return mixed >> turn | mixed << ((0 - turn) & 31);
  }

  std::uint64_t state_;
};

}  // namespace halvora
