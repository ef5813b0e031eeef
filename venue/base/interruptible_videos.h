// SPDX-License-Identifier: Apache-2.0
// Videos that end at the next frame once the user has had enough. What was made from one that ended
// so is worth nothing. Looks at videos and a flag that outlive it; any thread.
#pragma once

#include <atomic>

#include "halvora/platform/video_asset.h"

namespace halvora {

class InterruptibleVideos final : public VideoAssets {
 public:
  InterruptibleVideos(const VideoAssets& videos, const std::atomic<bool>& isInterrupted)
      : videos_(videos), isInterrupted_(isInterrupted) {}
  std::unique_ptr<VideoAsset> open(const std::string& path, std::string* reason) const override;

 private:
  const VideoAssets& videos_;
  const std::atomic<bool>& isInterrupted_;
};

}  // namespace halvora
