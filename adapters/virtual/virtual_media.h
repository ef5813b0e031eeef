// SPDX-License-Identifier: Apache-2.0
// The torch, the video players and the picture decoder of a virtual phone. Single-threaded.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>

#include "adapters/virtual/log.h"
#include "halvora/platform/run_loop.h"
#include "halvora/platform/torch.h"
#include "halvora/platform/video_player.h"

namespace halvora {

class VirtualTorch final : public Torch {
 public:
  bool hasTorch() const override { return isFitted; }
  bool hasFlash() const override { return isFlashFitted; }
  void setOn(bool on) override {
    isOn = on;
    log.add(on);
  }

  bool isFitted = true;
  bool isFlashFitted = true;
  bool isOn = false;
  /// Every write.
  Log<bool> log;
};

enum class VideoAct : std::uint8_t { load, play, pause, seek };

/// What one of the two players was asked to do.
struct VideoEvent {
  char player;
  VideoAct act;
  /// The clip's name, with load.
  std::string item;
  /// The position, with seek.
  Duration position{};
};

/// Plays nothing and takes no time: a clip that exists is ready at once, and a seek completes in a
/// turn of its own at the same time. A test may hold both back.
class VirtualVideoPlayer final : public VideoPlayer {
 public:
  VirtualVideoPlayer(RunLoop& loop, char name, Log<VideoEvent>& log)
      : loop_(loop), name_(name), log_(log) {}

  void load(const VideoItem& item) override;
  void play() override;
  void pause() override;
  bool isReadyToPlay() const override { return isPlayerReady; }
  bool isItemReadyToPlay() const override { return isItemReady && !item_.path.empty(); }
  void setPreferredForwardBuffer(Duration duration) override { forwardBuffer = duration; }
  void seek(Duration position, Task completion) override;

  /// Lets the oldest seek that is under way complete now.
  void completeSeek();

  const VideoItem& item() const { return item_; }

  bool isPlayerReady = true;
  bool isItemReady = true;
  bool holdsSeeks = false;
  bool isPlaying = false;
  Duration forwardBuffer{};

 private:
  RunLoop& loop_;
  char name_;
  Log<VideoEvent>& log_;
  VideoItem item_;
  /// Turns that are still to come know by it whether the player is there.
  const std::shared_ptr<std::deque<Task>> seeks_ = std::make_shared<std::deque<Task>>();
};

}  // namespace halvora
