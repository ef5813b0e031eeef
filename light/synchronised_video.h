// SPDX-License-Identifier: Apache-2.0
// Clips that every phone plays in step: two players take turns, each new clip is prepared on the
// one that is not showing and started, once it is ready, at the show's position plus a lead. Owned
// by the engine; main thread.
#pragma once

#include <memory>
#include <string>

#include "halvora/platform/files.h"
#include "halvora/platform/video_player.h"
#include "light/show_parts.h"
#include "light/show_state.h"
#include "light/view_stack.h"

namespace halvora {

class SynchronisedVideo final : public VideoPart {
 public:
  SynchronisedVideo(VideoState& state, ViewStack& views, TimerSet& timers, const Files& files,
                    const VideoPlayers& players)
      : state_(state), views_(views), timers_(timers), files_(files), players_(players) {}

  /// Takes the folder that clips lie in, as NAME.mp4.
  void build(SharedText folder) { folder_ = std::move(folder); }

  void playVideo(const std::string& name) override;
  void pausePlayers() override;
  /// Looks every 10 ms whether the active player can start.
  void videoPlayWait();
  /// Seeks and starts the active player if it is ready and the show lets it.
  void startVideo();

 private:
  VideoPlayer& active() const { return state_.isVideoAPlaying ? players_.a : players_.b; }
  VideoPlayer& inactive() const { return state_.isVideoAPlaying ? players_.b : players_.a; }
  VideoItem getPlayerItem(const std::string& name) const;

  VideoState& state_;
  ViewStack& views_;
  TimerSet& timers_;
  const Files& files_;
  /// A platform's own; it outlives the engine.
  const VideoPlayers& players_;
  SharedText folder_;
  /// A seek may complete after the engine is gone. Null before the first.
  std::shared_ptr<const bool> isAlive_;
};

}  // namespace halvora
