// SPDX-License-Identifier: Apache-2.0
// What an engine whose host asks for more than the newest packet believes: proof by the show's key
// first, then what goes on from what was heard. An engine that takes the air exactly has none.
// Owned by the scanner; main thread.
#pragma once

#include <memory>
#include <optional>

#include "engine/air_guard.h"
#include "engine/air_verdict.h"
#include "engine/show_proof.h"
#include "halvora/platform/wall_clock.h"

namespace halvora {

class AirGate {
 public:
  /// Another pixel map is taken at most so often.
  static constexpr Duration kMapPause = milliseconds(1000);

  AirGate(const AirOptions& options, const MessageCodes& codes);

  /// `pass` where the exact rule is to decide.
  AirVerdict judge(const HeardPacket& packet, Duration now, const WallClock& clock);
  /// Looks whether time has changed anything.
  void refresh(Duration now);
  /// The show was dropped. What was proven stays proven.
  void reset(Duration now);
  /// What was obeyed last could not be shown: its next repeat is to be obeyed as if it were new.
  void showAgain();

  AirTrust trust() const { return trust_; }
  /// Of a contested show the packet to hold, without tag; null for none.
  const BroadcastBytes* undisputed() const { return guard_ ? guard_->undisputed() : nullptr; }
  const AirDiagnostics& diagnostics() const { return diagnostics_; }
  AirDiagnostics& diagnostics() { return diagnostics_; }

 private:
  AirVerdict decide(const HeardPacket& packet, Duration now, const WallClock& clock);
  bool isMapTooSoon(const HeardPacket& packet, Duration now) const;
  AirTrust trustAt(Duration now) const;

  std::optional<ShowProof> proof_;
  std::optional<AirGuard> guard_;
  AirTrust trust_ = AirTrust::unproven;
  std::uint8_t map_ = 0;
  Duration mapSince_{};
  AirDiagnostics diagnostics_;
};

/// Null for options that ask for nothing.
std::unique_ptr<AirGate> makeAirGate(const AirOptions& options, const MessageCodes& codes);

}  // namespace halvora
