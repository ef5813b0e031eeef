// SPDX-License-Identifier: Apache-2.0
// Whether packets prove that they are the show's: their tags, and the order that proven packets
// keep, so that a recorded one cannot take the show back. Takes as much room under a flood of bad
// tags as without. Owned by the air's gate; main thread.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>

#include "engine/air_verdict.h"
#include "engine/signed_broadcast.h"
#include "halvora/platform/time.h"

namespace halvora {

class ShowProof {
 public:
  /// How long what has no good tag is ignored after one that has.
  static constexpr Duration kPreference = milliseconds(10'000);
  /// How long nothing proven must have been heard before the show may go on from elsewhere.
  static constexpr Duration kSilence = milliseconds(3000);
  /// A step forward that needs no silence: more than transmitters skip that go on from a journal.
  static constexpr std::uint16_t kLargestStep = 2048;
  /// So far transmitters of one show may be apart.
  static constexpr std::uint16_t kLargestSkew = 64;
  /// So many bad tags within a second are a flood ...
  static constexpr int kFlood = 10;
  /// ... in which what is new is confirmed by a good tag at most so many numbers later, or by being
  /// heard still, so much later.
  static constexpr std::uint16_t kConfirmingStep = 16;
  static constexpr Duration kConfirmation = milliseconds(1000);

  /// Without a code no tag is good.
  ShowProof(std::unique_ptr<MessageCode> code, Authentication authentication)
      : code_(std::move(code)), authentication_(authentication) {}

  AirVerdict judge(const HeardPacket& packet, Duration now, std::uint32_t epoch);
  /// The show was dropped, or could not be shown: what was heard last is new once more. The order
  /// stays.
  void showAgain() { isShownAgain_ = true; }
  /// Whether a new good tag was heard lately.
  bool isProven(Duration now) const;
  std::uint64_t goodTags() const { return goodTags_; }

 private:
  struct Place {
    std::uint16_t sequence = 0;
    std::uint32_t epoch = 0;
    Duration heard{};
  };

  std::optional<std::uint32_t> minuteOf(SignedBroadcastView packet, std::uint32_t epoch);
  AirVerdict withoutProof(Duration now, AirDoubt doubt) const;
  bool isAfter(const Place& place, std::uint16_t sequence, std::uint32_t epoch, Duration now) const;
  AirVerdict inOrder(std::uint16_t sequence, std::uint32_t epoch, Duration now);
  void countBadTag(Duration now);
  bool isFlooded(Duration now) const;
  bool isConfirmed(std::uint16_t sequence, Duration now);

  std::unique_ptr<MessageCode> code_;
  Authentication authentication_;
  /// The newest that was proven.
  std::optional<Place> place_;
  bool isShownAgain_ = false;
  std::optional<Duration> lastGood_;
  std::uint64_t goodTags_ = 0;
  /// The good packet heard last, which is most often the next one as well, and its minute.
  std::optional<SignedBroadcastBytes> known_;
  std::uint32_t knownMinute_ = 0;
  /// Bad tags, in the second that began then and in the one before.
  Duration second_{};
  int badTags_ = 0;
  int badTagsBefore_ = 0;
  /// What is new in a flood and waits for a second good tag.
  std::optional<std::uint16_t> waiting_;
  Duration waitingSince_{};
};

}  // namespace halvora
