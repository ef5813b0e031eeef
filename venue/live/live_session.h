// SPDX-License-Identifier: Apache-2.0
// A show while it is played: the player, what gives it commands, and the transmitters that its
// packets go to, each with a number of its own and all with the same sequence numbers. Main thread.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "venue/live/live_air.h"
#include "venue/live/live_ground.h"
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

  /// Before the first command; it outlives the session.
  void add(LiveAir& air) { airs_.push_back(&air); }

  /// One of a player's commands, or quit.
  void obey(std::string_view line);
  /// Another list in the place of the one that is played: see the player.
  void takeOver(const CueList& show, std::optional<std::size_t> cue) {
    player_.takeOver(show, cue);
  }
  bool hasQuit() const { return hasQuit_; }
  const ShowPlayer& player() const { return player_; }

 private:
  void send(const Broadcast& packet, bool isRepeat);

  RunLoop& loop_;
  SequenceNumbers& numbers_;
  PacketEncoder encode_;
  LiveReport report_;
  std::vector<LiveAir*> airs_;
  const Duration begin_;
  std::string alarm_;
  bool hasQuit_ = false;
  ShowPlayer player_;
};

}  // namespace halvora
