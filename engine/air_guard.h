// SPDX-License-Identifier: Apache-2.0
// Follows one show among all that is on the air, without a key: what goes on from what was heard is
// believed, and whoever contradicts it has to wait until it has fallen silent. One transmitter
// leads; others of the show may be ahead of it for a moment, so that a look still arrives with
// whichever is heard first. Whatever is sent, it takes the same room. Owned by the air's gate; main
// thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "engine/air_verdict.h"
#include "halvora/platform/time.h"

namespace halvora {

class AirGuard {
 public:
  /// A step in sequence that phones may have missed the packets of.
  static constexpr std::uint16_t kLargestStep = 1024;
  /// A step in what would take the show's place, which has to be one stream.
  static constexpr std::uint16_t kSteadyStep = 16;
  /// How long a show must have been silent for another to take its place, and that one must have
  /// been heard.
  static constexpr Duration kSilence = milliseconds(3000);
  /// How far apart packets of one show come in, in time.
  static constexpr Duration kSkew = milliseconds(500);
  /// So many packets are no accident.
  static constexpr int kSeveral = 3;
  static constexpr std::size_t kRivals = 8;

  /// Of these, only what the host knows.
  AirGuard(std::optional<std::uint16_t> applicationId, std::optional<std::uint8_t> venueId)
      : applicationId_(applicationId), venueId_(venueId) {}

  AirVerdict judge(const HeardPacket& packet, Duration now);
  /// Ends a contest that one side has left. `judge` does so too.
  void refresh(Duration now);
  /// The show was dropped: the next one is learnt anew.
  void reset();
  /// The next repeat of what was obeyed last is obeyed too.
  void showAgain() { mustShow_ = true; }

  bool isContested() const { return contested_; }
  /// Whether the show has been heard long enough, and undisputed.
  bool isLearnt() const { return lead_ && lead_->isLearnt; }
  /// The packet of the show that was in force before anybody disputed it, without tag; null where
  /// there was none.
  const BroadcastBytes* undisputed() const { return isLearnt() && settled_ ? &*settled_ : nullptr; }

 private:
  /// A row of packets, each of which goes on from the one before.
  struct Line {
    explicit Line(const HeardPacket& packet, Duration now);
    bool isFrom(const HeardPacket& packet) const {
      return key == packet.key && venueId == packet.venueId;
    }
    /// How far the packet goes on from the last one, 0 for the same again; none where it does not.
    std::optional<std::uint16_t> stepTo(const HeardPacket& packet, std::uint16_t largest) const;
    void take(const HeardPacket& packet, Duration now);
    bool isSilent(Duration now) const { return now - heard >= kSilence; }
    /// Long enough to take a silent show's place.
    bool isSteady() const { return packets >= kSeveral && heard - since >= kSilence; }

    std::uint32_t key;
    std::uint8_t venueId;
    bool isLearnt = false;
    std::uint16_t sequence;
    BroadcastKeyBytes look;
    int packets = 1;
    Duration since;
    Duration heard;
    /// How far apart its packets are heard, about.
    Duration gap = milliseconds(100);
  };
  /// How far another transmitter is ahead of the leading one.
  struct Ahead {
    std::uint16_t sequence = 0;
    /// Where it was then; the leading one has not come as far since, and said so much meanwhile.
    std::uint16_t mark = 0;
    Duration since{};
    int packets = 0;
  };
  /// What contradicts the show and cannot be told from it.
  struct Strays {
    bool areHeard = false;
    Duration since{};
    Duration heard{};
    /// How often the leading one was heard between two of them.
    int turns = 0;
    /// So many since then, and from when on.
    int packets = 0;
    Duration alone{};
  };

  bool isPinnedElsewhere(const HeardPacket& packet) const;
  AirVerdict begin(const HeardPacket& packet, Duration now);
  AirVerdict fromLead(const HeardPacket& packet, Duration now);
  AirVerdict leadRepeats(Duration now);
  AirVerdict leadGoesOn(const HeardPacket& packet, Duration now);
  AirVerdict fromOther(const HeardPacket& packet, Duration now);
  AirVerdict rival(const HeardPacket& packet, Duration now, AirDoubt doubt);
  void noteHome(const HeardPacket& packet, Duration now);
  void leaveHome(Duration now);
  static Duration pauseOf(const Line& line);
  Line* nearestRival(const HeardPacket& packet, Duration now, std::uint16_t largest);
  Line* takeToRivals(const HeardPacket& packet, Duration now);
  bool maySucceed(const Line& rival, Duration now) const;
  AirVerdict goHome(const HeardPacket& packet, Duration now);
  bool isStray(const HeardPacket& packet) const;
  void countStray(Duration now);
  bool isOvertaken(Duration now) const;
  void beWary(Duration now);
  void learn();
  void keepTrail(Duration now);
  void settle(Duration now);
  bool isInStep(std::uint16_t sequence) const;
  std::uint16_t position() const { return ahead_ ? ahead_->sequence : lead_->sequence; }
  void lead(const Line& line);

  std::optional<std::uint16_t> applicationId_;
  std::optional<std::uint8_t> venueId_;
  std::optional<Line> lead_;
  std::optional<Ahead> ahead_;
  /// Another transmitter has led astray: only the leading one is followed.
  bool followsLeadOnly_ = false;
  std::array<std::optional<Line>, kRivals> rivals_;
  Strays strays_;
  bool contested_ = false;
  /// A stranger was there a moment ago.
  bool isWary_ = false;
  Duration waryUntil_{};
  /// After a contest the next packet of the show is shown, new or not.
  bool mustShow_ = false;
  /// The packet that was obeyed last.
  BroadcastBytes current_{};
  /// One that was obeyed then, to be settled if nobody disputes it for a while; and the last that
  /// was.
  std::optional<BroadcastBytes> settling_;
  Duration settlingSince_{};
  std::optional<BroadcastBytes> settled_;
  /// Where the show was a tick ago, and before that.
  std::array<std::optional<std::uint16_t>, 2> trail_;
  /// The show before a step of its leading transmitter, as long as somebody goes on from there.
  std::optional<Line> home_;
  /// What is to be that next: young enough to be a stranger's already.
  std::optional<Line> nextHome_;
  Duration lastStep_{};
  Duration homeSince_{};
  Duration homeHeard_{};
  bool isHomeHeard_ = false;
  Duration tick_{};
};

}  // namespace halvora
