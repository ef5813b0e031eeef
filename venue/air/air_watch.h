// SPDX-License-Identifier: Apache-2.0
// Looks at what is on the air as a crew would want to: who is there that should not be, what does
// not go on, and what differs from the show that should be on. Says each thing once, and again
// after ten seconds if it still holds. Keeps to its room whatever is sent. One thread.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "engine/air_gate.h"
#include "halvora/platform/wall_clock.h"
#include "venue/show/show_senders.h"
#include "venue/show/true_show.h"

namespace halvora {

struct AirWatchOptions {
  /// What a phone would believe.
  AirOptions air;
  /// The transmitters that belong to the show; empty for all.
  std::vector<std::string> transmitters = {};
  std::optional<std::uint8_t> venueId = std::nullopt;
  /// What should be on the air; outlives the watch. Its first packet that is heard says when it
  /// began, and where that turns out wrong the next step from look to look does.
  const TrueShow* expected = nullptr;
  /// Who should send it; outlives the watch. Null where only the show as a whole is expected.
  const ShowSenders* senders = nullptr;
};

struct AirFinding {
  /// "unknown sender", "wrong venue", "jump", "two senders", "other look", "silent", or "trust",
  /// which is "unproven" from the first packet on until it is something else.
  std::string what;
  /// Whose; empty where it is nobody's.
  std::string transmitter;
  std::string detail;
};

class AirWatch {
 public:
  /// How far what is heard may lag behind what should be on the air.
  static constexpr Duration kLate = milliseconds(1500);
  static constexpr Duration kPause = milliseconds(10'000);
  static constexpr std::size_t kMostTransmitters = 256;

  AirWatch(const AirWatchOptions& options, const MessageCodes& codes, const WallClock& clock,
           std::function<void(const AirFinding&)> tell);

  /// A valid packet.
  void hear(std::span<const std::uint8_t> data, Duration now);
  /// A few times a second.
  void look(Duration now);

 private:
  enum class Kind : std::uint8_t { unknownSender, wrongVenue, jump, twoSenders, otherLook, silent };
  struct Heard {
    std::uint16_t sequence = 0;
    BroadcastKeyBytes look{};
    /// How often the numbers went back lately, and when last.
    int turns = 0;
    Duration turned{};
    /// When, and until when what was heard was right.
    Duration heard{};
    Duration good{};
    /// What was said of it, but for its silence.
    std::array<std::optional<Duration>, 5> told;
  };

  /// One of `AirWatchOptions::senders`.
  struct Expected {
    std::optional<Duration> heard;
    std::optional<Duration> told;
  };

  void follow(const HeardPacket& packet, const std::string& key, Heard& heard, Duration now);
  void turn(const std::string& key, Heard& heard, Duration now, const std::string& detail);
  bool isKnown(const std::string& key) const;
  std::optional<Duration> rightUntil(const HeardPacket& packet,
                                     const std::optional<BroadcastKeyBytes>& before, Duration now);
  void compare(Duration now);
  void compareEach(Duration now);
  bool isDue(const std::string& key, Duration now) const;
  std::string difference(std::span<const std::uint8_t> look, Duration now) const;
  void noteSender(const std::string& key, Duration now);
  void missSenders(Duration now);
  void say(Kind kind, const std::string& key, std::optional<Duration>& told, Duration now,
           const std::string& detail);
  void tellTrust();

  AirWatchOptions options_;
  AirGate gate_;
  const WallClock& clock_;
  std::function<void(const AirFinding&)> tell_;
  std::map<std::uint32_t, Heard> transmitters_;
  /// None until something is heard.
  std::optional<AirTrust> trust_;
  /// Of the expected show: when it began, since when that is known, and what was heard last.
  std::optional<Duration> begin_;
  Duration aligned_{};
  std::optional<Duration> firstLook_;
  std::optional<BroadcastKeyBytes> last_;
  Duration lastHeard_{};
  /// Until when what was heard was right.
  std::optional<Duration> good_;
  std::array<std::optional<Duration>, 2> told_;
  std::vector<Expected> senders_;
};

}  // namespace halvora
