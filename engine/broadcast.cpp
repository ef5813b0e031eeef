// SPDX-License-Identifier: Apache-2.0
#include "engine/broadcast.h"

#include <algorithm>

#include "halvora/platform/bluetooth.h"

namespace halvora {

BroadcastFormat formatOf(std::span<const std::uint8_t> data) {
  if (data.size() < 2 || data[0] != kShowPrefix[0] || data[1] != kShowPrefix[1]) {
    return BroadcastFormat::otherMaker;
  }
  return data.size() < kShortestBroadcast ? BroadcastFormat::tooShort : BroadcastFormat::valid;
}

Broadcast decodeBroadcast(std::span<const std::uint8_t> data) {
  Broadcast broadcast;
  for (const BroadcastField& field : kBroadcastFields) {
    const std::uint8_t* at = data.data() + field.offset;
    field.value.set(broadcast, field.value.bytes() == 2 ? at[0] << 8 | at[1] : at[0]);
  }
  broadcast.transmitter = data.back();
  return broadcast;
}

BroadcastBytes encodeBroadcast(const Broadcast& broadcast) {
  BroadcastBytes data{};
  std::ranges::copy(kShowPrefix, data.begin());
  for (const BroadcastField& field : kBroadcastFields) {
    const std::uint16_t value = field.value.of(broadcast);
    std::uint8_t* at = data.data() + field.offset;
    if (field.value.bytes() == 2) *at++ = static_cast<std::uint8_t>(value >> 8);
    *at = static_cast<std::uint8_t>(value & 0xFF);
  }
  return data;
}

std::string NSDataToHex(std::span<const std::uint8_t> data) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  text.reserve(data.size() * 2);
  for (const std::uint8_t byte : data) {
    text.push_back(kDigits[byte >> 4]);
    text.push_back(kDigits[byte & 0xF]);
  }
  return text;
}

std::string transmitterKey(std::uint16_t applicationId, std::uint8_t transmitter) {
  return std::to_string(applicationId) + ":" + std::to_string(transmitter);
}

int cueMilliseconds(const Broadcast& broadcast) {
  return broadcast.minutes * 60000 + broadcast.seconds * 1000 + broadcast.hundredths * 10;
}

int cueToken(const Broadcast& broadcast) {
  return std::max(broadcast.seconds * 256 + broadcast.minutes, 1);
}

}  // namespace halvora
