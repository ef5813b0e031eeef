// SPDX-License-Identifier: Apache-2.0
#include "adapters/ffmpeg/ffmpeg_videos.h"

#include "adapters/ffmpeg/ffmpeg_asset.h"

namespace halvora {

std::unique_ptr<VideoAsset> FfmpegVideoAssets::open(const std::string& path,
                                                    std::string* reason) const {
  return FfmpegAsset::open(path, reason);
}

}  // namespace halvora
