// SPDX-License-Identifier: Apache-2.0
// A universe of lighting channels by OLA's daemon, which speaks Art-Net, sACN and the rest. Polled
// on the run loop of whoever owns it; where the daemon goes, that is said, and it is tried again
// once a second. Main thread.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

#include "halvora/platform/run_loop.h"

namespace halvora {

inline constexpr std::uint16_t kOlaPort = 9010;

struct OlaListener {
  std::function<void(std::span<const std::uint8_t> levels)> levels;
  std::function<void(bool isThere)> changed;
};

class OlaInput {
 public:
  virtual ~OlaInput() = default;

  static constexpr Duration kLook = milliseconds(20);
  static constexpr Duration kRetry = milliseconds(1000);

  /// Of the daemon on this machine; null where this program was built without OLA. The listener
  /// hears at once whether the daemon is there.
  static std::unique_ptr<OlaInput> open(unsigned universe, RunLoop& loop, OlaListener listener,
                                        std::uint16_t port = kOlaPort);
};

}  // namespace halvora
