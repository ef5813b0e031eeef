// SPDX-License-Identifier: Apache-2.0
// Videos that are lists of colours: each frame says its time and the colour of every pixel. Nothing
// is decoded, and everything is counted. Safe from several threads once the videos are in place.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "halvora/platform/video_asset.h"
#include "halvora/platform/workers.h"

namespace halvora {

struct VirtualVideoFrame {
  /// Presentation time; may be anything.
  double seconds = 0;
  /// The word of a pixel; see `VirtualVideo::wordAt` for where there is none.
  std::function<std::uint32_t(PixelPosition)> wordAt = {};
};

struct VirtualVideo {
  double durationSeconds = 0;
  std::uint32_t width = 16;
  std::uint32_t height = 9;
  std::vector<VirtualVideoFrame> frames;
  bool hasTrack = true;
  /// Reading ends before this frame, as at a damaged place.
  std::size_t readableFrames = SIZE_MAX;
  bool canBeginReading = true;
  /// Called on the reading thread before each frame that a reader hands out, with its index.
  std::function<void(std::size_t)> onFrame = {};

  /// Frames at 30 a second; frame f has the opaque colour `words[f]` everywhere.
  static VirtualVideo ofWords(const std::vector<std::uint32_t>& words);
  /// So many frames; the pixel tells its frame and its place: 0xFF, frame mod 256, x, y.
  static VirtualVideo ofPlaces(std::size_t frames, std::uint32_t width, std::uint32_t height);
};

class VirtualVideoAssets final : public VideoAssets {
 public:
  std::unique_ptr<VideoAsset> open(const std::string& path,
                                   std::string* reason = nullptr) const override;

  void put(const std::string& path, VirtualVideo video) {
    videos_[path] = std::make_shared<const VirtualVideo>(std::move(video));
  }

  struct Counts {
    std::atomic<int> opens{0};
    std::atomic<int> readers{0};
    std::atomic<int> framesRead{0};
    std::atomic<int> imagesMade{0};
  };
  /// What has been asked for so far.
  mutable Counts counts;

 private:
  std::map<std::string, std::shared_ptr<const VirtualVideo>> videos_;
};

/// Does everything itself, one task after the other.
class InlineWorkers final : public Workers {
 public:
  int count() const override { return 1; }
  bool areParallel() const override { return false; }
  WorkEnd run(std::span<Task> tasks) override {
    WorkEnd end = WorkEnd::done;
    for (Task& task : tasks) {
      if (!ranToItsEnd(task)) end = WorkEnd::failed;
    }
    return end;
  }
};

}  // namespace halvora
