// SPDX-License-Identifier: Apache-2.0
// What one cue puts on the air: its look, and while a master fades or a map plays, look after look.
// The one place that knows how: a compiled show and one that is played send the same packets. The
// cue must outlive its steps. A value; any thread.
#pragma once

#include <cstdint>
#include <optional>

#include "venue/show/cue_list.h"

namespace halvora {

struct CueStep {
  /// Since the cue began.
  Duration time{};
  /// Without a sequence number.
  Broadcast packet;
};

class CueSteps {
 public:
  /// `masterBefore` is what a fade begins at; it takes a step each `repeat`. A map ends on its last
  /// frame, where that is known.
  CueSteps(const Cue& cue, Duration repeat, std::uint8_t masterBefore, int lastFrame = 0xFFFF);

  /// The first at 0; none where nothing changes any more.
  std::optional<CueStep> next();

  /// When frame packet k of a map is due, to the millisecond.
  static Duration mapTime(const CueMap& map, std::int64_t k);
  static std::int64_t mapFrame(const CueMap& map, std::int64_t k);

 private:
  std::optional<Duration> nextTime() const;
  void stepTo(Duration time);

  const Cue* cue_;
  Duration repeat_;
  std::uint8_t masterBefore_;
  std::int64_t lastFrame_;
  std::int64_t fadeSteps_;
  /// Those that come next.
  std::int64_t fadeStep_ = 1;
  std::int64_t mapStep_ = 0;
  std::optional<Broadcast> packet_;
};

}  // namespace halvora
