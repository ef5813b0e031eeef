// SPDX-License-Identifier: Apache-2.0
#include "apps/console/cue_gate.h"

#include "venue/show/cue_schedule.h"

namespace halvora {

namespace {

Broadcast blackOf(const Broadcast& look) {
  constexpr std::uint8_t kSteady = 1;
  Broadcast black;
  black.applicationId = look.applicationId;
  black.venueId = look.venueId;
  black.transmitter = look.transmitter;
  black.syncFlag = look.syncFlag;
  black.mode = kSteady;
  return black;
}

bool isSameLook(Broadcast one, const Broadcast& other) {
  one.sequence = other.sequence;
  return one == other;
}

}  // namespace

Broadcast CueGate::insteadOf(const Broadcast& wanted) const {
  Broadcast look = calm_ ? *calm_ : blackOf(wanted);
  look.sequence = wanted.sequence;
  return look;
}

std::optional<Broadcast> CueGate::pass(const Broadcast& wanted, bool isRepeat, Verdict verdict) {
  const bool waits = verdict == Verdict::waits;
  if (verdict == Verdict::calm) calm_ = wanted;
  if (!onAir_) return waits ? std::nullopt : std::optional(wanted);
  Broadcast look = waits ? insteadOf(wanted) : wanted;
  const bool isNew = !isRepeat && !waits;
  const bool goesOn = !isNew && isSameLook(look, *onAir_);
  look.sequence = goesOn ? onAir_->sequence : nextSequence(onAir_->sequence);
  return look;
}

}  // namespace halvora
