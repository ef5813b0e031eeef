// SPDX-License-Identifier: Apache-2.0
// Videos that a test can write by hand: "words WIDTH HEIGHT FRAMES", then a line for each frame
// with the words of its pixels, row by row. FRAMES at 30 a second is what the file claims; fewer
// lines make a video that was cut short. Anything else is no video. Any thread.
#pragma once

#include <mutex>

#include "adapters/virtual/virtual_video.h"

namespace halvora {

class WordVideos final : public VideoAssets {
 public:
  std::unique_ptr<VideoAsset> open(const std::string& path,
                                   std::string* reason = nullptr) const override;

 private:
  mutable std::mutex mutex_;
  mutable VirtualVideoAssets videos_;
};

}  // namespace halvora
