// SPDX-License-Identifier: Apache-2.0
// How delayed proof does in a crowd: each phone judges what it obeys, and as long as that is
// unproven its light keeps to the flash limit and its torch is off. Sums are of whole numbers, so
// that the order of phones does not matter. A trial is a phone's; one thread at a time.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <vector>

#include "venue/base/json_buffer.h"
#include "venue/crowd/crowd_phone.h"
#include "venue/crowd/delayed_proof.h"

namespace halvora {

/// What phones are given, and what they show of a show that is proven.
struct ProofSettings {
  std::uint16_t applicationId = 0;
  ChainKey anchor{};
  /// Outlives the crowd.
  const MessageCodes* codes = nullptr;
  LightLimits limits = {};
};

/// Of all phones.
struct ProofTally {
  /// That obeyed anything, and that were never given full light.
  std::uint64_t phones = 0;
  std::uint64_t never = 0;
  /// From the first look that a phone obeyed to full light, in ms: how many phones.
  std::map<std::int64_t, std::uint64_t> delays;
  /// Frames that showed the show; with full light; and since the phone first had that.
  std::uint64_t shown = 0;
  std::uint64_t full = 0;
  std::uint64_t shownSince = 0;
  /// Frames that showed a stranger's look; with full light; and one that was taken for proven
  /// itself.
  std::uint64_t strange = 0;
  std::uint64_t strangeFull = 0;
  std::uint64_t strangeProven = 0;
  /// Of one phone, the most frames with full light on strangers' looks, one after the other.
  std::uint64_t longestStrangeFull = 0;
  /// Packets that were judged to be forged.
  std::uint64_t forged = 0;

  void add(const ProofTally& other);
  /// An object's members, with so many frames a second.
  void write(PrettyJsonWriter& writer, int framesPerSecond) const;
};

class ProofTrial {
 public:
  /// The phone outlives it.
  ProofTrial(const ProofSettings& settings, CrowdPhone& phone);

  /// What was on the air, and what came of it.
  void heard(std::span<const std::uint8_t> data, CrowdPhone::Heard heard, Duration now);
  /// A look at the phone; `isStrange` if what it shows is not the show's.
  void look(Duration now, bool isStrange);
  ProofTally tally() const;

 private:
  void apply(Duration now);

  const ProofSettings& settings_;
  CrowdPhone& phone_;
  DelayedProof proof_;
  /// The packet that is obeyed.
  std::vector<std::uint8_t> current_;
  DelayedProof::Standing standing_ = DelayedProof::Standing::unproven;
  std::optional<Duration> began_;
  std::optional<Duration> firstFull_;
  std::uint64_t strangeFullNow_ = 0;
  ProofTally tally_;
};

}  // namespace halvora
