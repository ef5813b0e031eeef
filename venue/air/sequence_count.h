// SPDX-License-Identifier: Apache-2.0
// What was received of each transmitter, and by the gaps between its sequence numbers what was not.
// Whoever makes up transmitters takes no more room than the first so many do. Values, any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

#include "engine/broadcast.h"

namespace halvora {

struct TransmitterCount {
  std::uint64_t packets = 0;
  /// Packets with the sequence number of the one before.
  std::uint64_t repeats = 0;
  /// Sequence numbers that were skipped.
  std::uint64_t lost = 0;
  /// How often the numbers began again, or went back.
  std::uint64_t restarts = 0;
  std::uint16_t sequence = 0;
};

class SequenceCount {
 public:
  static constexpr std::size_t kMostTransmitters = 4096;

  void add(const Broadcast& broadcast) {
    const std::string key = transmitterKey(broadcast.applicationId, broadcast.transmitter);
    auto found = counts_.find(key);
    if (found == counts_.end()) {
      if (counts_.size() == kMostTransmitters) {
        ++others_;
        return;
      }
      found = counts_.try_emplace(key).first;
    }
    TransmitterCount& count = found->second;
    // Numbers go on from 65535 to 0, so what lies in the upper half of all distances is a step
    // back.
    const auto step = static_cast<std::uint16_t>(broadcast.sequence - count.sequence);
    if (count.packets > 0) {
      if (step == 0) {
        ++count.repeats;
      } else if (step < 0x8000) {
        count.lost += step - 1U;
      } else {
        ++count.restarts;
      }
    }
    ++count.packets;
    count.sequence = broadcast.sequence;
  }

  /// By their keys, in the order of the texts.
  const std::map<std::string, TransmitterCount>& transmitters() const { return counts_; }
  /// Packets of transmitters beyond those.
  std::uint64_t others() const { return others_; }

 private:
  std::map<std::string, TransmitterCount> counts_;
  std::uint64_t others_ = 0;
};

}  // namespace halvora
