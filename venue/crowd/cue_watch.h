// SPDX-License-Identifier: Apache-2.0
// How fast a hall follows each cue of a show: when each phone first showed the cue's look, or one
// after it. Each phone has places of its own, so threads never meet, and the sums come out the same
// whoever made them. Made for one run; read when it is over.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "halvora/platform/time.h"
#include "venue/base/json_buffer.h"
#include "venue/crowd/air.h"
#include "venue/crowd/crowd_devices.h"

namespace halvora {

/// A cue as it is on the air.
struct WatchedCue {
  std::string name;
  Duration begin{};
  /// Of its first packet and its last.
  std::uint16_t firstSequence = 0;
  std::uint16_t lastSequence = 0;
};

/// How a cue was followed, by section.
struct CueTally {
  /// How many phones took so many milliseconds; later ones than `kNever` count as never.
  using Delays = std::map<std::uint16_t, std::uint32_t>;
  static constexpr std::uint16_t kNever = 0xFFFF;

  std::string name;
  Duration begin{};
  std::map<std::string, Delays, std::less<>> sections = {};

  /// Of other phones.
  void add(const CueTally& other);
};

/// A list with an object a cue: `cue`, `t`, `phones` that were open, the milliseconds until half,
/// 95 % and 99 % of them followed (null for never), and the same by section.
void writeCues(PrettyJsonWriter& writer, std::span<const CueTally> cues);

class CueWatch {
 public:
  /// The air and the seats outlive it.
  CueWatch(std::vector<WatchedCue> cues, const Air& air, std::span<const CrowdSeat> phones);

  /// A phone shows that look for the first time. Different phones on any threads.
  void add(std::uint32_t look, std::size_t phone, Duration now);

  /// Of the phones that were open when a cue began.
  std::vector<CueTally> tallies(
      const std::function<bool(std::size_t phone, Duration time)>& isOpen) const;

 private:
  static constexpr std::uint32_t kNoCue = UINT32_MAX;

  std::vector<WatchedCue> cues_;
  std::span<const CrowdSeat> phones_;
  /// The cue whose first look it is, by look.
  std::vector<std::uint32_t> cueOf_;
  /// Milliseconds, by cue and phone.
  std::vector<std::uint16_t> delays_;
};

}  // namespace halvora
