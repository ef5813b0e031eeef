// SPDX-License-Identifier: Apache-2.0
#include "engine/show_proof.h"

#include <algorithm>
#include <utility>

namespace halvora {

namespace {

constexpr Duration kOneSecond = milliseconds(1000);
using Act = AirVerdict::Act;

bool areNeighbours(std::uint32_t one, std::uint32_t other) {
  return (one > other ? one - other : other - one) <= 1;
}

}  // namespace

AirVerdict ShowProof::judge(const HeardPacket& packet, Duration now, std::uint32_t epoch) {
  const auto tagged = signedBroadcastIn(packet.data);
  if (!tagged) return withoutProof(now, AirDoubt::untagged);
  const auto minute = minuteOf(*tagged, epoch);
  if (!minute) {
    countBadTag(now);
    return withoutProof(now, AirDoubt::badTag);
  }
  ++goodTags_;
  const AirVerdict verdict = inOrder(packet.sequence, *minute, now);
  if (verdict.act != Act::doubt || verdict.doubt != AirDoubt::replayed) lastGood_ = now;
  return verdict;
}

bool ShowProof::isProven(Duration now) const { return lastGood_ && now - *lastGood_ < kPreference; }

std::optional<std::uint32_t> ShowProof::minuteOf(SignedBroadcastView packet, std::uint32_t epoch) {
  if (code_ == nullptr) return std::nullopt;
  if (known_ && std::ranges::equal(packet, *known_) && areNeighbours(knownMinute_, epoch)) {
    return knownMinute_;
  }
  for (const std::uint32_t minute : {epoch, epoch - 1, epoch + 1}) {
    if (!areNeighbours(minute, epoch) || !isTagGood(packet, minute, *code_)) continue;
    std::ranges::copy(packet, known_.emplace().begin());
    knownMinute_ = minute;
    return minute;
  }
  return std::nullopt;
}

AirVerdict ShowProof::withoutProof(Duration now, AirDoubt doubt) const {
  if (authentication_ == Authentication::require || isProven(now)) {
    return AirVerdict::doubted(doubt);
  }
  return {};
}

// Nobody but the show can sign for a minute that has not been heard yet; and what a transmitter
// said before it began anew must not take its place while it is heard.
bool ShowProof::isAfter(const Place& place, std::uint16_t sequence, std::uint32_t epoch,
                        Duration now) const {
  const bool isLater = epoch > place.epoch;
  const bool isSilent = now - place.heard >= kSilence;
  const std::uint16_t step = stepFrom(place.sequence, sequence);
  if (step < kHalfWayRound) return step <= kLargestStep || isLater || isSilent;
  // Transmitters of one show may be a packet apart as the minute changes.
  const bool isSkew = stepFrom(sequence, place.sequence) <= kLargestSkew;
  return isLater && (!isSkew || isSilent);
}

AirVerdict ShowProof::inOrder(std::uint16_t sequence, std::uint32_t epoch, Duration now) {
  if (place_) {
    if (sequence == place_->sequence) {
      place_->epoch = std::max(place_->epoch, epoch);
      place_->heard = now;
      return {.act = std::exchange(isShownAgain_, false) ? Act::obey : Act::same};
    }
    if (!isAfter(*place_, sequence, epoch, now)) return AirVerdict::doubted(AirDoubt::replayed);
  }
  if (isFlooded(now) && !isConfirmed(sequence, now)) {
    return AirVerdict::doubted(AirDoubt::unconfirmed);
  }
  place_ = {sequence, epoch, now};
  isShownAgain_ = false;
  return {.act = Act::obey};
}

void ShowProof::countBadTag(Duration now) {
  if (now - second_ >= kOneSecond) {
    badTagsBefore_ = now - second_ < 2 * kOneSecond ? badTags_ : 0;
    badTags_ = 0;
    second_ = now;
  }
  // No further than it matters.
  badTags_ = std::min(badTags_ + 1, kFlood + 1);
}

bool ShowProof::isFlooded(Duration now) const {
  if (now - second_ >= 2 * kOneSecond) return false;
  return badTags_ > kFlood || (now - second_ < kOneSecond && badTagsBefore_ > kFlood);
}

// One tag in millions is good by chance, and a flood may be millions. That the next few numbers
// have one as well, or that somebody goes on with a packet without knowing that its tag was good,
// is not by chance.
bool ShowProof::isConfirmed(std::uint16_t sequence, Duration now) {
  if (waiting_) {
    const std::uint16_t step = stepFrom(*waiting_, sequence);
    const Duration age = now - waitingSince_;
    if (step == 0 && age < kConfirmation) return false;
    waiting_ = sequence;
    waitingSince_ = now;
    return step <= kConfirmingStep && age < kPreference;
  }
  waiting_ = sequence;
  waitingSince_ = now;
  return false;
}

}  // namespace halvora
