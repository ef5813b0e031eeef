// SPDX-License-Identifier: Apache-2.0
// A packet as the policies for the air look at it, and what they say of it. Values, any thread.
#pragma once

#include <cstdint>
#include <span>

#include "engine/broadcast.h"
#include "halvora/air.h"

namespace halvora {

/// A valid packet; its bytes live as long as the call that it is handed to.
struct HeardPacket {
  std::span<const std::uint8_t> data;
  /// The application above the transmitter's byte.
  std::uint32_t key = 0;
  std::uint8_t venueId = 0;
  std::uint16_t sequence = 0;

  explicit HeardPacket(std::span<const std::uint8_t> itsData)
      : data(itsData),
        key(static_cast<std::uint32_t>(data[2]) << 16 | static_cast<std::uint32_t>(data[3]) << 8 |
            data.back()),
        venueId(data[5]),
        sequence(
            static_cast<std::uint16_t>(data[kSequenceOffset] << 8 | data[kSequenceOffset + 1])) {}

  std::uint32_t applicationId() const { return key >> 8; }
  std::uint8_t pixelMapId() const { return data[6]; }
  std::span<const std::uint8_t, kBroadcastKeySize> look() const {
    return data.first<kBroadcastKeySize>();
  }
};

/// How far one sequence number is ahead of another: they go round, so what is more than half way
/// round ahead lies behind.
constexpr std::uint16_t stepFrom(std::uint16_t sequence, std::uint16_t to) {
  return static_cast<std::uint16_t>(to - sequence);
}
inline constexpr std::uint16_t kHalfWayRound = 0x8000;

struct AirVerdict {
  enum class Act : std::uint8_t {
    /// The show goes on with it.
    obey,
    /// The show's, and nothing new.
    same,
    /// Of the show that is contested: its look is held.
    hold,
    doubt,
    /// No word on it.
    pass,
  };
  Act act = Act::pass;
  /// Why, where there is a doubt.
  AirDoubt doubt = AirDoubt::otherShow;

  static constexpr AirVerdict doubted(AirDoubt why) { return {Act::doubt, why}; }
};

}  // namespace halvora
