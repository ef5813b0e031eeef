// SPDX-License-Identifier: Apache-2.0
// Where a venue's pixel maps lie in the bundles, and single frames of them: the exact frame of a
// video, or the still frames beside it. Owned by the engine's seat tables; main thread. The lookups
// of videos keep no state.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "halvora/colour.h"
#include "halvora/platform/bundle.h"
#include "halvora/platform/image.h"
#include "halvora/platform/video_asset.h"

namespace halvora {

struct PixelMapVideoEntry {
  /// The name of the map's folder.
  std::string mapId;
  /// Where its video is, for `VideoAssets` and `Files`.
  std::string videoPath;
};

/// Where the video directly in a map's folder of a bundle is; empty for none.
std::string pixelMapVideoIn(const Bundle& bundle, const std::string& folder);

class PixelMapAssets {
 public:
  PixelMapAssets(const Bundles& bundles, const VideoAssets& videos, const ImageDecoder& images)
      : bundles_(bundles), videos_(videos), images_(images) {}

  /// Where the map's video is, in the main bundle if it is in both; empty for none.
  std::string pixelMapVideoURLForVenueId(std::int64_t venueId, std::int64_t pixelMapId) const;
  /// Every map of the venue that has a video, each once, in the order of the bundles and of the
  /// folders in them.
  std::vector<PixelMapVideoEntry> pixelMapVideoEntriesForVenueId(std::int64_t venueId) const;

  /// The whole picture of a frame (the index counts modulo the video's frames), or null. The last
  /// one is kept: asking again costs nothing. Decodes on the calling thread.
  std::shared_ptr<const Image> copyPixelMapFrameImageForVenueId(std::int64_t venueId,
                                                                std::int64_t pixelMapId,
                                                                std::int64_t frameIndex);
  MaybeColour colorFromPixelMapVideoFrameForVenueId(std::int64_t venueId, std::int64_t pixelMapId,
                                                    std::int64_t frameIndex, std::int64_t seatX,
                                                    std::int64_t seatY);
  /// The seat's colour in the still of that frame, or of the next one. Stills count from 1.
  MaybeColour colorFromPixelMapJPGFallbackForVenueId(std::int64_t venueId, std::int64_t pixelMapId,
                                                     std::int64_t frameIndex, std::int64_t seatX,
                                                     std::int64_t seatY) const;
  /// One pixel, its colour premultiplied by its alpha; none outside of the picture.
  static MaybeColour sampleColorFromImage(const Image& image, std::int64_t seatX,
                                          std::int64_t seatY);

  /// Takes a text on what is missing, or none when all is well, and drops it unless somebody
  /// listens.
  void setPixelMapDebugText(const std::optional<std::string>& text) const {
    if (debugTextListener) debugTextListener(text);
  }
  std::function<void(const std::optional<std::string>&)> debugTextListener;

 private:
  struct VideoFrameCache {
    std::string pixelMapVideoPath;
    std::unique_ptr<VideoAsset> asset;
    std::unique_ptr<FrameGenerator> pixelMapVideoFrameGenerator;
    int pixelMapVideoFrameCount = 0;
    int pixelMapVideoCachedFrameIndex = -1;
    std::shared_ptr<const Image> pixelMapVideoCachedFrameImage;
  };

  const Bundles& bundles_;
  const VideoAssets& videos_;
  const ImageDecoder& images_;
  VideoFrameCache cache_;
};

}  // namespace halvora
