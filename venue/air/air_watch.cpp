// SPDX-License-Identifier: Apache-2.0
#include "venue/air/air_watch.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace halvora {

namespace {

/// So many turns within so long are no restart: two senders take turns.
constexpr int kSeveralTurns = 3;
constexpr Duration kTurnPause = milliseconds(3000);

constexpr const char* kNames[] = {"unknown sender", "wrong venue", "jump",
                                  "two senders",    "other look",  "silent"};
constexpr const char* kTrusts[] = {"unproven", "trusted", "contested"};

std::string keyText(std::uint32_t key) {
  return transmitterKey(static_cast<std::uint16_t>(key >> 8), static_cast<std::uint8_t>(key));
}

}  // namespace

AirWatch::AirWatch(const AirWatchOptions& options, const MessageCodes& codes,
                   const WallClock& clock, std::function<void(const AirFinding&)> tell)
    : options_(options), gate_(options.air, codes), clock_(clock), tell_(std::move(tell)) {
  if (options_.senders != nullptr) senders_.resize(options_.senders->keys().size());
}

void AirWatch::hear(std::span<const std::uint8_t> data, Duration now) {
  const HeardPacket packet(data);
  const std::string key = keyText(packet.key);
  static_cast<void>(gate_.judge(packet, now, clock_));
  tellTrust();
  noteSender(key, now);
  auto before = last_;
  auto found = transmitters_.find(packet.key);
  const bool isFirst = found == transmitters_.end();
  if (isFirst && transmitters_.size() < kMostTransmitters) {
    found = transmitters_.try_emplace(packet.key).first;
  }
  if (found != transmitters_.end()) {
    Heard& heard = found->second;
    if (!isKnown(key)) {
      say(Kind::unknownSender, key, heard.told[0], now, "not one of the show's");
    }
    if (options_.venueId && packet.venueId != *options_.venueId) {
      say(Kind::wrongVenue, key, heard.told[1], now, "venue " + std::to_string(packet.venueId));
    }
    if (!isFirst) follow(packet, key, heard, now);
    if (!isFirst && now - heard.heard < kLate) before = heard.look;
    heard.sequence = packet.sequence;
    std::ranges::copy(packet.look(), heard.look.begin());
    heard.heard = now;
    if (isFirst) heard.good = now;
  }
  const auto until = options_.expected != nullptr ? rightUntil(packet, before, now) : std::nullopt;
  if (!until) return;
  good_ = std::max(good_.value_or(*until), *until);
  if (found != transmitters_.end()) found->second.good = std::max(found->second.good, *until);
}

bool AirWatch::isKnown(const std::string& key) const {
  const auto& known = options_.transmitters;
  return known.empty() || std::ranges::find(known, key) != known.end();
}

void AirWatch::follow(const HeardPacket& packet, const std::string& key, Heard& heard,
                      Duration now) {
  const std::uint16_t step = stepFrom(heard.sequence, packet.sequence);
  const std::string detail =
      std::to_string(heard.sequence) + " to " + std::to_string(packet.sequence);
  if (step == 0) {
    const bool isSame = std::ranges::equal(packet.look(), heard.look);
    if (!isSame) turn(key, heard, now, std::to_string(packet.sequence) + " says two things");
    return;
  }
  if (step >= kHalfWayRound) turn(key, heard, now, detail);
  if (step > AirGuard::kLargestStep) say(Kind::jump, key, heard.told[2], now, detail);
}

void AirWatch::turn(const std::string& key, Heard& heard, Duration now, const std::string& detail) {
  heard.turns = now - heard.turned < kTurnPause ? std::min(heard.turns + 1, kSeveralTurns) : 1;
  heard.turned = now;
  if (heard.turns >= kSeveralTurns) say(Kind::twoSenders, key, heard.told[3], now, detail);
}

// The first look of the expected show that is heard says how far it is. That may have been one of
// an hour ago, or one that had been there for long, or the show begins anew, or is played by hand:
// where what is heard disagrees, a step that the show itself makes, from one look to the next, says
// it again: of one transmitter, since from one that hangs to the next there is a step as well, or,
// where it was not heard for a while, from what was. What stands still makes none, and what is not
// of the show is compared all the same.
// Numbers only help: a player's go on from evening to evening. A look that is heard late was right
// until the show left it.
std::optional<Duration> AirWatch::rightUntil(const HeardPacket& packet,
                                             const std::optional<BroadcastKeyBytes>& before,
                                             Duration now) {
  const TrueShow& show = *options_.expected;
  std::ranges::copy(packet.look(), last_.emplace().begin());
  const auto right = [&] {
    return begin_ ? show.lastShown(last_, now - *begin_ - kLate, now - *begin_) : std::nullopt;
  };
  auto until = right();
  if (!until) {
    std::optional<Duration> place;
    if (!begin_) place = show.timeOf(*last_, packet.sequence, std::nullopt, {});
    const bool isStep = before && before != last_;
    if (begin_ && isStep) place = show.timeOf(*last_, packet.sequence, before, now - *begin_);
    if (place) {
      begin_ = now - *place;
      aligned_ = now;
      until = right();
    }
  }
  if (begin_) lastHeard_ = now;
  return until ? std::optional(*begin_ + *until) : std::nullopt;
}

void AirWatch::look(Duration now) {
  gate_.refresh(now);
  if (trust_) tellTrust();
  if (!firstLook_) firstLook_ = now;
  if (options_.expected != nullptr) compare(now);
  if (begin_) missSenders(now);
  if (begin_) compareEach(now);
}

void AirWatch::noteSender(const std::string& key, Duration now) {
  if (options_.senders == nullptr) return;
  const auto& keys = options_.senders->keys();
  const auto sender = static_cast<std::size_t>(std::ranges::find(keys, key) - keys.begin());
  if (sender < senders_.size()) senders_[sender].heard = now;
}

// Where nothing at all is heard, no more need be said.
void AirWatch::missSenders(Duration now) {
  if (now - lastHeard_ >= kLate) return;
  for (std::size_t at = 0; at < senders_.size(); ++at) {
    Expected& sender = senders_[at];
    const Duration since = std::max(sender.heard.value_or(*firstLook_), *firstLook_);
    const Duration place = now - *begin_;
    if (now - since < kLate || !options_.senders->isSending(at, place - kLate, place)) continue;
    say(Kind::silent, options_.senders->keys()[at], sender.told, now,
        "others of the show are heard");
  }
}

void AirWatch::compare(Duration now) {
  const Duration since = begin_ ? std::max(lastHeard_, *firstLook_) : *firstLook_;
  if (now - since >= kLate) {
    say(Kind::silent, {}, told_[0], now, begin_ ? "nothing is heard" : "nothing of it was heard");
    return;
  }
  if (!begin_ || !last_ || now - good_.value_or(*firstLook_) < kLate) return;
  say(Kind::otherLook, {}, told_[1], now, difference(*last_, now));
}

// Where nothing of the show is right, that is said of all.
void AirWatch::compareEach(Duration now) {
  if (!good_ || now - *good_ >= kLate) return;
  for (auto& [number, heard] : transmitters_) {
    const bool isWrong = now - std::max(heard.good, aligned_) >= kLate;
    if (!isWrong || now - heard.heard >= kLate) continue;
    const std::string key = keyText(number);
    if (!isDue(key, now)) continue;
    say(Kind::otherLook, key, heard.told[4], now,
        difference(heard.look, now) + "; others of the show are right");
  }
}

// One that the show does not name carries it beside those that it does. One that it names, and that
// has nothing to say now, may keep its look: its zone of the hall has that until its next cue.
bool AirWatch::isDue(const std::string& key, Duration now) const {
  if (!isKnown(key) || options_.senders == nullptr) return isKnown(key);
  const auto& keys = options_.senders->keys();
  const auto sender = static_cast<std::size_t>(std::ranges::find(keys, key) - keys.begin());
  const Duration place = now - *begin_;
  return sender == keys.size() || options_.senders->isSending(sender, place - kLate, place);
}

std::string AirWatch::difference(std::span<const std::uint8_t> look, Duration now) const {
  const auto* const wanted = options_.expected->at(now - *begin_);
  return NSDataToHex(look) + " instead of " +
         (wanted != nullptr ? NSDataToHex(std::span(wanted->data).first(kBroadcastKeySize))
                            : std::string("nothing"));
}

void AirWatch::say(Kind kind, const std::string& key, std::optional<Duration>& told, Duration now,
                   const std::string& detail) {
  if (told && now - *told < kPause) return;
  told = now;
  static_assert(std::size(kNames) == static_cast<std::size_t>(Kind::silent) + 1);
  tell_({kNames[static_cast<std::size_t>(kind)], key, detail});
}

void AirWatch::tellTrust() {
  if (gate_.trust() == trust_) return;
  trust_ = gate_.trust();
  static_assert(std::size(kTrusts) == static_cast<std::size_t>(AirTrust::contested) + 1);
  tell_({"trust", {}, kTrusts[static_cast<std::size_t>(*trust_)]});
}

}  // namespace halvora
