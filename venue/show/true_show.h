// SPDX-License-Identifier: Apache-2.0
// The show that a scenario sends, as what phones, and whoever listens, are held against. Values;
// any thread once it is made.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
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
  /// When a packet with that look and number was first sent.
  std::optional<Duration> firstTimeOf(std::span<const std::uint8_t, kBroadcastKeySize> look,
                                      std::uint16_t sequence) const;
  /// Whether it was, or became, the show's look between those times. No look is that of mode 0.
  bool showed(const std::optional<BroadcastKeyBytes>& look, Duration from, Duration to) const {
    return lastShown(look, from, to).has_value();
  }
  /// Until when it was, of those times.
  std::optional<Duration> lastShown(const std::optional<BroadcastKeyBytes>& look, Duration from,
                                    Duration to) const;

 private:
  std::vector<Moment> moments_;
  /// Places in them, by sequence number; of one number, in their order.
  std::vector<std::size_t> bySequence_;
};

}  // namespace halvora
