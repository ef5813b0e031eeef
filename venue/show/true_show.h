// SPDX-License-Identifier: Apache-2.0
// The show that a scenario sends, as what phones, and whoever listens, are held against. Values;
// any thread once it is made.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "engine/broadcast.h"
#include "halvora/platform/time.h"
#include "venue/show/scenario.h"

namespace halvora {

/// What is on the air of a show without strangers, moment by moment.
class TrueShow {
 public:
  TrueShow(const Scenario& scenario, Duration end);

  struct Moment {
    Duration time{};
    std::vector<std::uint8_t> data;
    Broadcast fields;
  };
  /// The packet that was sent last; null before the first.
  const Moment* at(Duration time) const;
  /// When the show comes to that look, from `before` where one is given: where the packet has that
  /// number too, or else as near to `near` as it does.
  std::optional<Duration> timeOf(const BroadcastKeyBytes& look, std::uint16_t sequence,
                                 const std::optional<BroadcastKeyBytes>& before,
                                 Duration near) const;
  /// Whether it was, or became, the show's look between those times. No look is that of mode 0.
  bool showed(const std::optional<BroadcastKeyBytes>& look, Duration from, Duration to) const {
    return lastShown(look, from, to).has_value();
  }
  /// Until when it was, of those times.
  std::optional<Duration> lastShown(const std::optional<BroadcastKeyBytes>& look, Duration from,
                                    Duration to) const;

 private:
  std::vector<Moment> moments_;
  /// Those of them at which the look becomes another one, by that look; of one look, in their
  /// order.
  std::vector<std::size_t> byLook_;
};

}  // namespace halvora
