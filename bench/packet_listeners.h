// SPDX-License-Identifier: Apache-2.0
// Two phones that hear advertisements from their radio alike: one judges them with the engine's
// scanner, one with the reference. Behind both works the same command processing.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "bench/bench_phone.h"
#include "bench/require.h"
#include "bench/text_reference.h"

namespace halvora {

/// What can be seen of a listener from outside.
struct Heard {
  std::array<std::uint64_t, kPacketFateCount> counts{};
  std::string currentBroadcast;
  bool transmitterFound = false;
  bool insideVenue = false;
  std::uint16_t currentSequence = 0;
  std::uint16_t liveSequence = 0;
  int broadcastCount = 0;
  int fps = 0;
  int activeFPS = 0;
  MaybeColour light;
  friend bool operator==(const Heard&, const Heard&) = default;
};

class EngineListener {
 public:
  explicit EngineListener(std::vector<std::string> allowed = {}) {
    phone_.engine.setAllowedTransmitterIds(std::move(allowed));
    phone_.engine.start();
    // The first scan begins a second after the start.
    phone_.loop().runUntil(milliseconds(1000));
    require(phone_.radio().isScanning(), "the engine does not scan");
  }

  void advertise(const Advertisement& advertisement) { phone_.radio().advertise(advertisement); }
  void resetRangeCount() { phone_.engine.scanner().resetRangeCount(); }
  std::uint64_t count(PacketFate fate) const { return phone_.engine.diagnostics()[fate]; }

  Heard heard() {
    const PresenceState& state = phone_.engine.state().presence;
    return {phone_.engine.diagnostics().counts,
            phone_.engine.scanner().currentBroadcast(),
            state.transmitterFound,
            state.insideVenue,
            state.currentSequence,
            state.liveSequence,
            state.broadcastCount,
            state.fps,
            state.activeFPS,
            phone_.engine.views().lightColour()};
  }

 private:
  BenchPhone phone_;
};

template <TextScanner::HexText kHexText>
class TextListener {
 public:
  explicit TextListener(std::vector<std::string> allowed = {}) {
    scanner_.allowedTransmitterIds = {allowed.begin(), allowed.end()};
    manager_->scanForPeripherals({.allowDuplicates = true});
    require(phone_.radio().isScanning(), "the reference does not scan");
  }

  void advertise(const Advertisement& advertisement) { phone_.radio().advertise(advertisement); }
  void resetRangeCount() { scanner_.resetRangeCount(); }
  std::uint64_t count(PacketFate fate) const {
    return scanner_.counts[static_cast<std::size_t>(fate)];
  }

  Heard heard() {
    return {scanner_.counts,           scanner_.currentBroadcast,
            scanner_.transmitterFound, scanner_.insideVenue,
            scanner_.currentSequence,  scanner_.liveSequence,
            scanner_.broadcastCount,   scanner_.fps,
            scanner_.activeFPS,        phone_.engine.views().lightColour()};
  }

 private:
  BenchPhone phone_;
  TextScanner scanner_{kHexText, [this](const Broadcast& broadcast) {
                         return phone_.engine.processEffect(broadcast);
                       }};
  std::unique_ptr<CentralManager> manager_ = phone_.radio().makeManager(scanner_);
};

using PrintedTextListener = TextListener<printedHex>;
using TabledTextListener = TextListener<NSDataToHex>;

}  // namespace halvora
