// SPDX-License-Identifier: Apache-2.0
#include "engine/air_gate.h"

namespace halvora {

namespace {

using Act = AirVerdict::Act;

}  // namespace

AirGate::AirGate(const AirOptions& options, const MessageCodes& codes) {
  if (options.authentication != Authentication::off) {
    proof_.emplace(options.showKey ? codes.withKey(*options.showKey) : nullptr,
                   options.authentication);
  }
  if (options.policy == AirPolicy::guarded) {
    guard_.emplace(options.applicationId, options.venueId);
  }
}

AirVerdict AirGate::judge(const HeardPacket& packet, Duration now, const WallClock& clock) {
  const bool wasContested = trust_ == AirTrust::contested;
  const AirVerdict verdict = decide(packet, now, clock);
  if (verdict.act == Act::obey && packet.pixelMapId() != 0 && packet.pixelMapId() != map_) {
    map_ = packet.pixelMapId();
    mapSince_ = now;
  }
  if (verdict.act == Act::hold)
    ++diagnostics_.doubts[static_cast<std::size_t>(AirDoubt::contested)];
  if (verdict.act == Act::doubt) ++diagnostics_.doubts[static_cast<std::size_t>(verdict.doubt)];
  trust_ = trustAt(now);
  if (!wasContested && trust_ == AirTrust::contested) ++diagnostics_.contests;
  return verdict;
}

AirVerdict AirGate::decide(const HeardPacket& packet, Duration now, const WallClock& clock) {
  if (guard_ && isMapTooSoon(packet, now)) return AirVerdict::doubted(AirDoubt::mapTooSoon);
  if (proof_) {
    const AirVerdict verdict = proof_->judge(packet, now, epochOf(clock.now()));
    diagnostics_.goodTags = proof_->goodTags();
    if (verdict.act != Act::pass) return verdict;
  }
  return guard_ ? guard_->judge(packet, now) : AirVerdict{};
}

void AirGate::refresh(Duration now) {
  if (guard_) guard_->refresh(now);
  trust_ = trustAt(now);
}

void AirGate::reset(Duration now) {
  if (guard_) guard_->reset();
  if (proof_) proof_->showAgain();
  map_ = 0;
  trust_ = trustAt(now);
}

void AirGate::showAgain() {
  if (guard_) guard_->showAgain();
  if (proof_) proof_->showAgain();
}

bool AirGate::isMapTooSoon(const HeardPacket& packet, Duration now) const {
  return map_ != 0 && packet.pixelMapId() != 0 && packet.pixelMapId() != map_ &&
         now - mapSince_ < kMapPause;
}

AirTrust AirGate::trustAt(Duration now) const {
  if (proof_ && proof_->isProven(now)) return AirTrust::trusted;
  if (guard_ && guard_->isContested()) return AirTrust::contested;
  return guard_ && guard_->isLearnt() ? AirTrust::trusted : AirTrust::unproven;
}

std::unique_ptr<AirGate> makeAirGate(const AirOptions& options, const MessageCodes& codes) {
  if (options.policy == AirPolicy::exact && options.authentication == Authentication::off) {
    return nullptr;
  }
  return std::make_unique<AirGate>(options, codes);
}

}  // namespace halvora
