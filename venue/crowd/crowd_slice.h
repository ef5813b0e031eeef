// SPDX-License-Identifier: Apache-2.0
// What the phones of a crowd, or of a shard of it, did: slice by slice while it runs, and in the
// end. All of it are sums and extremes, so that what shards did adds up to what the whole crowd
// does. Values; any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "halvora/platform/time.h"
#include "venue/crowd/crowd_phone.h"
#include "venue/crowd/crowd_report.h"
#include "venue/crowd/cue_watch.h"
#include "venue/crowd/field_meter.h"
#include "venue/crowd/proof_trial.h"
#include "venue/show/flash_meter.h"

namespace halvora {

struct CrowdFrame {
  Duration time{};
  /// One a phone, in the order of the seats; empty where no picture of it is wanted.
  std::span<const CrowdLight> lights;
  FrameCounts counts;
  /// Whether the newest look on the air is a show.
  bool isShowOnAir = false;
  /// Where that look is a pixel map: its frame.
  std::optional<int> mapFrame;
};

/// A look whose delays are complete: it is so old that later ones do not count.
struct ClosedLook {
  Duration time{};
  /// That were open when it came on the air.
  std::uint64_t phones = 0;
  LookDelays delays;
};

struct CrowdSlice {
  /// The first time that belongs to the next slice.
  Duration end{};
  std::vector<CrowdFrame> frames;
  /// In the last slice, all that were left.
  std::vector<ClosedLook> closedLooks;
  /// When the phones' light was looked at, and how each section's had changed: time by time.
  std::vector<Duration> watches;
  std::vector<FieldLight> field;
  PacketCounts packets;
  FlashCurve phoneCurve;
};

/// What is known when the show is over.
struct CrowdEnd {
  /// Of the worst phone.
  FlashFigures phoneFlashes;
  /// To attackers, at any time.
  std::uint64_t phonesLost = 0;
  /// Empty for a show that was given as packets.
  std::vector<CueTally> cues;
  /// None where phones judged nothing.
  std::optional<ProofTally> proof;
  /// Of a processor's time, as a clock on the wall has it.
  Duration spent{};
};

/// Takes what happened in one slice; false where it cannot be kept.
class CrowdSink {
 public:
  virtual ~CrowdSink() = default;
  virtual bool add(const CrowdSlice& slice) = 0;
};

}  // namespace halvora
