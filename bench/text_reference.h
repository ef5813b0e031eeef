// SPDX-License-Identifier: Apache-2.0
// The packet path as straight work on text: the data as hexadecimal digits, each field cut out and
// read as a number, keys compared as texts. Keeps the same counters and comes to the same verdicts
// as the scanner; it is what the scanner is measured against.
#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <set>
#include <span>
#include <string>
#include <utility>

#include "engine/broadcast.h"
#include "engine/scanner.h"
#include "halvora/platform/bluetooth.h"

namespace halvora {

/// Digit by digit with the C library's formatting.
inline std::string printedHex(std::span<const std::uint8_t> data) {
  std::string text;
  for (const std::uint8_t byte : data) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02X", unsigned{byte});
    text += digits;
  }
  return text;
}

class TextScanner final : public CentralManagerDelegate {
 public:
  using HexText = std::string (*)(std::span<const std::uint8_t>);
  using ProcessEffect = std::function<PacketFate(const Broadcast&)>;

  TextScanner(HexText hexText, ProcessEffect processEffect)
      : hexText_(hexText), processEffect_(std::move(processEffect)) {}

  void centralManagerDidUpdateState(CentralState) override {}
  void didDiscoverPeripheral(const Advertisement& advertisement) override {
    ++broadcastCount;
    const PacketFate fate = advertisement.manufacturerData ? judge(*advertisement.manufacturerData)
                                                           : PacketFate::noManufacturerData;
    ++counts[static_cast<std::size_t>(fate)];
  }
  void resetRangeCount() { transmitterFound = false; }

  std::set<std::string> allowedTransmitterIds;
  std::array<std::uint64_t, kPacketFateCount> counts{};
  std::string currentBroadcast;
  bool transmitterFound = false;
  bool insideVenue = false;
  std::uint16_t currentSequence = 0;
  std::uint16_t liveSequence = 0;
  int broadcastCount = 0;
  int fps = 0;
  int activeFPS = 0;

 private:
  static std::uint16_t numberIn(const std::string& text, std::size_t from, std::size_t digits) {
    return static_cast<std::uint16_t>(std::stoul(text.substr(from, digits), nullptr, 16));
  }

  PacketFate judge(std::span<const std::uint8_t> data) {
    const std::string text = hexText_(data);
    if (text.substr(0, 4) != "09C9") return PacketFate::otherMaker;
    if (text.size() < 2 * kShortestBroadcast) return PacketFate::tooShort;
    const std::string broadcastKey = text.substr(0, 46);
    const std::uint16_t sequence = numberIn(text, 46, 4);
    const std::uint16_t applicationId = numberIn(text, 4, 4);
    const std::uint16_t transmitter = numberIn(text, text.size() - 2, 2);
    const std::string key = std::to_string(applicationId) + ":" + std::to_string(transmitter);

    const bool listsAny = !allowedTransmitterIds.empty();
    const bool isAllowed = !listsAny || allowedTransmitterIds.count(key) > 0;
    if (transmitter != 255) transmitterFound = true;
    if (!isAllowed) return PacketFate::notAllowed;
    if (transmitter == 255 && transmitterFound && !listsAny) return PacketFate::silenced;

    ++fps;
    insideVenue = true;
    liveSequence = sequence;
    const bool hasWrapped = currentSequence >= 60001 && sequence < 56000;
    if (sequence <= currentSequence && !hasWrapped) return PacketFate::staleSequence;
    currentSequence = sequence;
    if (broadcastKey == currentBroadcast) return PacketFate::sameBroadcast;
    ++activeFPS;
    currentBroadcast = broadcastKey;
    return processEffect_(decode(text));
  }

  static Broadcast decode(const std::string& text) {
    Broadcast broadcast;
    for (const BroadcastField& field : kBroadcastFields) {
      const auto digits = static_cast<std::size_t>(field.value.bytes()) * 2;
      field.value.set(broadcast, numberIn(text, std::size_t{field.offset} * 2, digits));
    }
    broadcast.transmitter = static_cast<std::uint8_t>(numberIn(text, text.size() - 2, 2));
    return broadcast;
  }

  HexText hexText_;
  ProcessEffect processEffect_;
};

}  // namespace halvora
