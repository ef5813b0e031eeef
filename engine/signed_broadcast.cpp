// SPDX-License-Identifier: Apache-2.0
#include "engine/signed_broadcast.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace halvora {

namespace {

constexpr double kSecondsAnEpoch = 60;

}  // namespace

std::optional<SignedBroadcastView> signedBroadcastIn(std::span<const std::uint8_t> data) {
  if (data.size() != kSignedBroadcast) return std::nullopt;
  return data.first<kSignedBroadcast>();
}

std::uint32_t epochOf(Date date) {
  constexpr double kLast = std::numeric_limits<std::uint32_t>::max();
  const double minutes = std::floor(date.secondsSince1970 / kSecondsAnEpoch);
  // Written so that what is no number is the first.
  if (!(minutes > 0)) return 0;
  return static_cast<std::uint32_t>(std::min(minutes, kLast));
}

PacketTag tagOf(SignedBroadcastView packet, std::uint32_t epoch, MessageCode& code) {
  std::array<std::uint8_t, kTagOffset + 1 + 4> message{};
  const auto fields = packet.first<kTagOffset>();
  auto at = std::copy(fields.begin(), fields.end(), message.begin());
  *at++ = packet.back();
  for (int shift = 24; shift >= 0; shift -= 8) {
    *at++ = static_cast<std::uint8_t>(epoch >> shift & 0xFF);
  }
  const MessageCode::Code whole = code.of(message);
  return {whole[0], whole[1], whole[2]};
}

bool isTagGood(SignedBroadcastView packet, std::uint32_t epoch, MessageCode& code) {
  return isSameTag(tagOf(packet, epoch, code), tagIn(packet));
}

SignedBroadcastBytes signBroadcast(const Broadcast& broadcast, std::uint32_t epoch,
                                   MessageCode& code) {
  const BroadcastBytes plain = encodeBroadcast(broadcast);
  SignedBroadcastBytes packet{};
  std::ranges::copy(std::span(plain).first<kTagOffset>(), packet.begin());
  packet.back() = plain.back();
  const PacketTag tag = tagOf(packet, epoch, code);
  std::ranges::copy(tag, packet.begin() + kTagOffset);
  return packet;
}

}  // namespace halvora
