// SPDX-License-Identifier: Apache-2.0
// Video files of the MP4 family, read and decoded by libavformat and libavcodec. The assets follow
// the threading rules of the need; this class itself has no state of its own, any thread.
#pragma once

#include "halvora/platform/video_asset.h"

namespace halvora {

class FfmpegVideoAssets final : public VideoAssets {
 public:
  std::unique_ptr<VideoAsset> open(const std::string& path,
                                   std::string* reason = nullptr) const override;
};

}  // namespace halvora
