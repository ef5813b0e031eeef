// SPDX-License-Identifier: Apache-2.0
#include "engine/air_guard.h"

#include <algorithm>
#include <utility>

namespace halvora {

namespace {

using Act = AirVerdict::Act;

/// How often it is kept where the show is.
constexpr Duration kTick = milliseconds(250);
/// How long a stranger is reckoned with after one was there.
constexpr Duration kWariness = milliseconds(10'000);
/// Whoever has not been heard for so long may lose its place among the rivals.
constexpr Duration kRivalPause = milliseconds(1250);
/// Nobody goes on from where the show was if so many of its packets are not heard.
constexpr int kHomePause = 5;
/// Strays further apart than this, and than twice what the show's own packets are, have nothing to
/// do with each other.
constexpr Duration kStrayPause = milliseconds(750);
/// Further than this nobody counts.
constexpr int kMany = 10'000;
/// How long a packet must have been followed by nothing that disputes it, to be held in a contest.
constexpr Duration kSettling = milliseconds(1500);
/// What a show may have gone on by since a stranger's step.
constexpr std::uint16_t kHomeStep = 64;

BroadcastBytes plainOf(const HeardPacket& packet) {
  BroadcastBytes bytes{};
  std::ranges::copy(packet.data.first<kShortestBroadcast - 1>(), bytes.begin());
  bytes.back() = packet.data.back();
  return bytes;
}

}  // namespace

AirGuard::Line::Line(const HeardPacket& packet, Duration now)
    : key(packet.key), venueId(packet.venueId), sequence(packet.sequence), since(now), heard(now) {
  std::ranges::copy(packet.look(), look.begin());
}

std::optional<std::uint16_t> AirGuard::Line::stepTo(const HeardPacket& packet,
                                                    std::uint16_t largest) const {
  const std::uint16_t step = stepFrom(sequence, packet.sequence);
  if (step == 0 && !std::ranges::equal(look, packet.look())) return std::nullopt;
  return step <= largest ? std::optional(step) : std::nullopt;
}

void AirGuard::Line::take(const HeardPacket& packet, Duration now) {
  sequence = packet.sequence;
  std::ranges::copy(packet.look(), look.begin());
  packets = std::min(packets + 1, kMany);
  gap += (std::min<Duration>(now - heard, 2 * kSkew) - gap) / 8;
  heard = now;
}

void AirGuard::reset() { *this = AirGuard(applicationId_, venueId_); }

bool AirGuard::isPinnedElsewhere(const HeardPacket& packet) const {
  return (applicationId_ && *applicationId_ != packet.applicationId()) ||
         (venueId_ && *venueId_ != packet.venueId);
}

AirVerdict AirGuard::judge(const HeardPacket& packet, Duration now) {
  if (isPinnedElsewhere(packet)) return AirVerdict::doubted(AirDoubt::otherShow);
  refresh(now);
  isWary_ = isWary_ && now < waryUntil_;
  if (!contested_ && home_ && now - homeHeard_ >= pauseOf(*home_)) home_.reset();
  if (!lead_) return begin(packet, now);
  keepTrail(now);
  settle(now);
  AirVerdict verdict = lead_->isFrom(packet) ? fromLead(packet, now) : fromOther(packet, now);
  const bool isOfShow = verdict.act == Act::obey || verdict.act == Act::same;
  if (isOfShow && contested_) verdict = {.act = Act::hold};
  if (verdict.act == Act::obey) current_ = plainOf(packet);
  return verdict;
}

AirVerdict AirGuard::begin(const HeardPacket& packet, Duration now) {
  // Nobody obeys number 0 first: senders begin at 1.
  if (packet.sequence == 0) return AirVerdict::doubted(AirDoubt::outOfStep);
  lead(Line(packet, now));
  current_ = plainOf(packet);
  keepTrail(now);
  return {.act = Act::obey};
}

void AirGuard::lead(const Line& line) {
  lead_ = line;
  ahead_.reset();
  followsLeadOnly_ = false;
  strays_ = {};
  contested_ = false;
  trail_ = {};
  home_.reset();
  nextHome_.reset();
  settling_.reset();
}

void AirGuard::refresh(Duration now) {
  // Where it is the leading one that has gone, somebody has to take its place first.
  if (!contested_ || now - strays_.heard < kSilence) return;
  contested_ = false;
  strays_ = {};
  mustShow_ = true;
  beWary(now);
}

AirVerdict AirGuard::fromLead(const HeardPacket& packet, Duration now) {
  const auto step = lead_->stepTo(packet, kLargestStep);
  // While two streams are weighed, each keeps its own.
  const bool isOthers =
      contested_ && step && *step > 0 && nearestRival(packet, now, *step) != nullptr;
  if (step && !isOthers) {
    if (*step > 0) leaveHome(now);
    lead_->take(packet, now);
    learn();
    return *step > 0 ? leadGoesOn(packet, now) : leadRepeats(now);
  }
  // On its way while a newer one overtook it.
  if (!isOthers && packet.sequence != lead_->sequence && isInStep(packet.sequence)) {
    noteHome(packet, now);
    settling_.reset();
    return {.act = Act::same};
  }
  return rival(packet, now, AirDoubt::outOfStep);
}

void AirGuard::noteHome(const HeardPacket& packet, Duration now) {
  if (!home_ || !home_->stepTo(packet, kLargestStep)) return;
  homeHeard_ = now;
  isHomeHeard_ = true;
}

// Where the show was before this step, unless somebody still goes on from before the last one.
void AirGuard::leaveHome(Duration now) {
  const Duration before = std::exchange(lastStep_, now);
  if (contested_) return;
  const bool isAsked = home_ && (isHomeHeard_ || now - homeSince_ < pauseOf(*home_));
  homeHeard_ = isAsked && isHomeHeard_ ? homeHeard_ : now;
  if (isAsked) return;
  const bool isProven = !nextHome_ || now - before >= pauseOf(*lead_);
  home_ = isProven ? lead_ : nextHome_;
  nextHome_ = lead_;
  homeSince_ = now;
  isHomeHeard_ = false;
}

// How long it takes at least to know that nobody goes on from there.
Duration AirGuard::pauseOf(const Line& line) { return std::max(kSkew, kHomePause * line.gap); }

AirVerdict AirGuard::leadRepeats(Duration now) {
  if (mustShow_ && !contested_) {
    mustShow_ = false;
    return {.act = Act::obey};
  }
  if (!ahead_) return {.act = Act::same};
  if (stepFrom(ahead_->mark, lead_->sequence) <= kLargestStep) {
    *ahead_ = {ahead_->sequence, ahead_->sequence, now, 0};
  }
  ahead_->packets = std::min(ahead_->packets + 1, kSeveral);
  if (ahead_->packets < kSeveral || now - ahead_->since < kSkew) return {.act = Act::same};
  // Whoever went ahead went alone.
  ahead_.reset();
  followsLeadOnly_ = true;
  return {.act = Act::obey};
}

AirVerdict AirGuard::leadGoesOn(const HeardPacket& packet, Duration now) {
  if (ahead_) {
    const std::uint16_t lag = stepFrom(packet.sequence, ahead_->sequence);
    if (lag > 0 && lag <= kLargestStep) return leadRepeats(now);
    ahead_.reset();
  }
  if (!contested_) mustShow_ = false;
  return {.act = Act::obey};
}

AirVerdict AirGuard::fromOther(const HeardPacket& packet, Duration now) {
  const bool isSameShow =
      packet.applicationId() == lead_->key >> 8 && packet.venueId == lead_->venueId;
  if (!isSameShow) return rival(packet, now, AirDoubt::otherShow);
  const std::uint16_t step = stepFrom(position(), packet.sequence);
  if (lead_->isSilent(now) && step <= kLargestStep && !contested_) {
    // It has gone on alone for so long that it leads.
    const bool isLearnt = lead_->isLearnt;
    lead(Line(packet, now));
    lead_->isLearnt = isLearnt;
    return {.act = step == 0 ? Act::same : Act::obey};
  }
  if (step == 0 || isInStep(packet.sequence)) return {.act = Act::same};
  if (step > kLargestStep || followsLeadOnly_) return rival(packet, now, AirDoubt::outOfStep);
  if (!ahead_) ahead_ = {packet.sequence, packet.sequence, now, 0};
  ahead_->sequence = packet.sequence;
  return {.act = Act::obey};
}

AirVerdict AirGuard::rival(const HeardPacket& packet, Duration now, AirDoubt doubt) {
  const bool isOne = isStray(packet);
  if (isOne) countStray(now);
  if (isOne) noteHome(packet, now);
  if (isOne && isOvertaken(now) && home_->stepTo(packet, kHomeStep)) return goHome(packet, now);
  const Line* const line = takeToRivals(packet, now);
  if (line != nullptr && maySucceed(*line, now)) {
    // What contradicted the one before need not contradict this one.
    const Line next = *line;
    rivals_ = {};
    lead(next);
    settled_.reset();
    lead_->isLearnt = true;
    mustShow_ = false;
    beWary(now);
    return {.act = Act::obey};
  }
  if (contested_ && isOne) return {.act = Act::hold};
  return AirVerdict::doubted(doubt);
}

void AirGuard::beWary(Duration now) {
  isWary_ = true;
  waryUntil_ = now + kWariness;
}

// The show goes on from where it was before a stranger's step.
AirVerdict AirGuard::goHome(const HeardPacket& packet, Duration now) {
  const Line home = *home_;
  lead(home);
  home_ = home;
  homeHeard_ = now;
  beWary(now);
  lead_->take(packet, now);
  return {.act = Act::obey};
}

// The rival that the packet goes on from, in the fewest steps and at most so many.
AirGuard::Line* AirGuard::nearestRival(const HeardPacket& packet, Duration now,
                                       std::uint16_t largest) {
  Line* nearest = nullptr;
  std::uint16_t leastStep = std::min(largest, kSteadyStep);
  for (std::optional<Line>& line : rivals_) {
    if (!line || !line->isFrom(packet) || now - line->heard >= kRivalPause) continue;
    const auto step = line->stepTo(packet, leastStep);
    if (!step || (nearest != nullptr && *step == leastStep)) continue;
    leastStep = *step;
    nearest = &*line;
  }
  return nearest;
}

// The rival whose packet it is, new or not; null where there is no room for another.
AirGuard::Line* AirGuard::takeToRivals(const HeardPacket& packet, Duration now) {
  if (Line* const line = nearestRival(packet, now, kSteadyStep)) {
    line->take(packet, now);
    return line;
  }
  const auto isFree = [now](const std::optional<Line>& line) {
    // Who said one thing once makes way for others.
    return !line || now - line->heard >= (line->packets < kSeveral ? kTick : kRivalPause);
  };
  const auto room = std::ranges::find_if(rivals_, isFree);
  return room != rivals_.end() ? &room->emplace(packet, now) : nullptr;
}

// Whether a rival may take the place of a show that has fallen silent: one that is steady, and by
// far the one that is heard most.
bool AirGuard::maySucceed(const Line& rival, Duration now) const {
  if (!lead_->isSilent(now) || !rival.isSteady()) return false;
  return std::ranges::none_of(rivals_, [&](const std::optional<Line>& other) {
    return other && &*other != &rival && !other->isSilent(now) &&
           other->packets * 2 >= rival.packets;
  });
}

// A show that has been learnt is disputed only by what its leading transmitter may have said just
// now as well: what is far from it, or was said before, waits. One that has not is by anybody.
bool AirGuard::isStray(const HeardPacket& packet) const {
  if (!lead_->isLearnt) return true;
  if (!lead_->isFrom(packet)) return false;
  if (packet.sequence == lead_->sequence) return true;
  if (home_) return home_->stepTo(packet, kLargestStep).has_value();
  return isWary_ && stepFrom(packet.sequence, lead_->sequence) <= kLargestStep;
}

// Whether what was taken for a step forward was a stranger's: the show goes on from before it, and
// nobody has said it again.
bool AirGuard::isOvertaken(Duration now) const {
  return lead_->isLearnt && home_ && !contested_ && strays_.packets >= kSeveral &&
         now - strays_.alone >= kTick;
}

void AirGuard::countStray(Duration now) {
  settling_.reset();
  const Duration pause = std::max(kStrayPause, 2 * lead_->gap);
  if (!strays_.areHeard || (!contested_ && now - strays_.heard >= pause)) {
    strays_ = {.areHeard = true, .since = now, .heard = now, .alone = now};
  } else if (lead_->heard >= strays_.heard) {
    strays_.turns = std::min(strays_.turns + 1, kSeveral);
    strays_.packets = 0;
    strays_.alone = now;
  }
  strays_.packets = std::min(strays_.packets + 1, kSeveral);
  strays_.heard = now;
  // They take turns, where a show that was begun anew would be alone; or did so a moment ago.
  const bool isEnough = strays_.turns >= 2 && now - strays_.since >= kTick;
  if (isEnough || isWary_) contested_ = true;
}

void AirGuard::learn() {
  if (lead_->isLearnt || contested_) return;
  if (!strays_.areHeard || lead_->heard - strays_.heard >= kSilence) {
    lead_->isLearnt = lead_->isSteady();
  }
}

void AirGuard::keepTrail(Duration now) {
  if (trail_[0] && now - tick_ < kTick) return;
  tick_ = now;
  trail_[1] = trail_[0];
  trail_[0] = position();
}

void AirGuard::settle(Duration now) {
  if (contested_) return settling_.reset();
  if (settling_ && now - settlingSince_ < kSettling) return;
  if (settling_) settled_ = settling_;
  settling_ = current_;
  settlingSince_ = now;
}

// Whether the show was there, or between there and where it is, within the last half second.
bool AirGuard::isInStep(std::uint16_t sequence) const {
  const auto& oldest = trail_[1] ? trail_[1] : trail_[0];
  if (!oldest) return false;
  return stepFrom(*oldest, sequence) <= stepFrom(*oldest, position()) &&
         stepFrom(*oldest, position()) <= kLargestStep;
}

}  // namespace halvora
