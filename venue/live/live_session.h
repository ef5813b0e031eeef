// SPDX-License-Identifier: Apache-2.0
// A show while it is played: the player, what gives it commands, and the transmitters that its
// packets go to, all with the same sequence numbers: each with a number of its own, or one to a
// zone of the hall, which has what is for that zone. Main thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "venue/live/live_air.h"
#include "venue/live/live_ground.h"
#include "venue/live/show_place.h"
#include "venue/live/show_player.h"

namespace halvora {

/// What a crew is told while it plays.
struct LiveReport {
  /// Each change.
  std::function<void(Duration time, const LiveStatus& status)> changed;
  /// What was not obeyed and why, and what is wrong with the machine: a line each.
  std::function<void(const std::string& line)> say;
};

class LiveSession {
 public:
  /// All of them outlive it.
  LiveSession(const CueList& show, MapFrames frames, RunLoop& loop, SequenceNumbers& numbers,
              PacketEncoder encode, LiveReport report);

  /// Before the first command; it outlives the session. With a zone it sends the cues of that
  /// transmitter number, and those for the whole venue, under that number.
  void add(LiveAir& air, std::optional<std::uint8_t> zone = {}) { airs_.push_back({&air, zone}); }

  /// From where another session was, after all airs were added and before the first command. What
  /// zones have is sent with new numbers.
  void goOn(const ShowPlace& place);
  /// Without a date.
  ShowPlace place() const;

  /// One of a player's commands, or quit.
  void obey(std::string_view line);
  /// Another list in the place of the one that is played: see the player.
  void takeOver(const CueList& show, std::optional<std::size_t> cue) {
    player_.takeOver(show, cue);
  }
  bool hasQuit() const { return hasQuit_; }
  static bool isQuit(std::string_view line);
  const ShowPlayer& player() const { return player_; }

 private:
  struct Air {
    LiveAir* air = nullptr;
    std::optional<std::uint8_t> zone;
    /// Of its zone: what it shows, or showed before all went black.
    std::optional<Broadcast> look = {};
  };

  void send(const Broadcast& packet, bool isRepeat);
  void sendToZone(Air& air, const Broadcast& packet, bool isRepeat);
  bool isMeantFor(const Air& air, const Broadcast& packet) const;
  void giveZonesBack(const Broadcast& packet);

  RunLoop& loop_;
  SequenceNumbers& numbers_;
  PacketEncoder encode_;
  LiveReport report_;
  std::vector<Air> airs_;
  /// Blackout or panic is on the air of all zones.
  bool isBlack_ = false;
  const Duration begin_;
  std::string alarm_;
  bool hasQuit_ = false;
  ShowPlayer player_;
};

}  // namespace halvora
