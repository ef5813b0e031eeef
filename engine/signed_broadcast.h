// SPDX-License-Identifier: Apache-2.0
// A packet that proves whose it is: bytes 0 to 24 of the plain one, a tag over them that only
// whoever has the show's key can make, and the transmitter number, which is always the last byte. A
// phone that knows nothing of tags reads it as the plain packet that it is as well. The tag is also
// of the minute it was made in, which is not sent, so that an old packet dies. Values, any thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "engine/broadcast.h"
#include "halvora/platform/message_codes.h"
#include "halvora/platform/time.h"

namespace halvora {

inline constexpr std::size_t kSignedBroadcast = 29;
/// What comes before the tag: all of a plain packet but the transmitter number.
inline constexpr std::size_t kTagOffset = 25;
inline constexpr std::size_t kTagSize = 3;

using SignedBroadcastBytes = std::array<std::uint8_t, kSignedBroadcast>;
using SignedBroadcastView = std::span<const std::uint8_t, kSignedBroadcast>;
using PacketTag = std::array<std::uint8_t, kTagSize>;

/// The data as a signed packet; none where it is too long or too short for one. Only for data whose
/// format is valid.
std::optional<SignedBroadcastView> signedBroadcastIn(std::span<const std::uint8_t> data);
inline std::span<const std::uint8_t, kTagSize> tagIn(SignedBroadcastView packet) {
  return packet.subspan<kTagOffset, kTagSize>();
}

/// Whole minutes since 1970, as far as 32 bits go; what lies outside counts as the nearest.
std::uint32_t epochOf(Date date);

/// The tag that a packet should have in that minute.
PacketTag tagOf(SignedBroadcastView packet, std::uint32_t epoch, MessageCode& code);
/// Whether both tags are the same. Every byte is looked at, wherever the first difference is, so
/// that nobody who takes the time learns how much of a tag was right.
template <class Bytes>
bool isSameTag(const PacketTag& wanted, const Bytes& found) {
  unsigned difference = 0;
  for (std::size_t at = 0; at < kTagSize; ++at) {
    difference |= static_cast<unsigned>(wanted[at] ^ found[at]);
  }
  return difference == 0;
}
/// Whether it has it. Takes the same time wherever the first difference is.
bool isTagGood(SignedBroadcastView packet, std::uint32_t epoch, MessageCode& code);
/// The packet with those fields, signed for that minute.
SignedBroadcastBytes signBroadcast(const Broadcast& broadcast, std::uint32_t epoch,
                                   MessageCode& code);

}  // namespace halvora
