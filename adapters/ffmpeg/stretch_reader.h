// SPDX-License-Identifier: Apache-2.0
// Hands out the pictures of one stretch, or those presented within a range of time. One thread.
#pragma once

#include <memory>
#include <optional>

#include "adapters/ffmpeg/picture_stream.h"
#include "halvora/platform/video_asset.h"

namespace halvora {

class StretchReader final : public FrameReader {
 public:
  /// Null where there is no stream, or the range cannot be reached in it.
  static std::unique_ptr<StretchReader> of(std::unique_ptr<PictureStream> stream,
                                           const std::optional<MediaTimeRange>& range);

  std::unique_ptr<VideoFrame> next() override;
  bool hasLostPictures() const override { return stream_->hasLostPictures(); }

 private:
  StretchReader(std::unique_ptr<PictureStream> stream, const std::optional<MediaTimeRange>& range)
      : stream_(std::move(stream)), range_(range) {}

  std::unique_ptr<PictureStream> stream_;
  std::optional<MediaTimeRange> range_;
};

}  // namespace halvora
