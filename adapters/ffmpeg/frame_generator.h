// SPDX-License-Identifier: Apache-2.0
// The picture on show at any time. It keeps the two pictures around the last time asked for, so
// that the next one costs only what lies between. One thread.
#pragma once

#include <memory>
#include <optional>

#include "adapters/ffmpeg/display_turn.h"
#include "adapters/ffmpeg/picture_stream.h"
#include "halvora/platform/video_asset.h"

namespace halvora {

class ImageGenerator final : public FrameGenerator {
 public:
  ImageGenerator(std::unique_ptr<PictureStream> stream, std::shared_ptr<PictureBudget> budget,
                 DisplayTurn turn)
      : stream_(std::move(stream)), budget_(std::move(budget)), turn_(turn) {}

  std::optional<Image> imageAt(MediaTime time) override;

 private:
  bool isAhead(MediaTime time) const;
  bool goTo(MediaTime time);
  std::unique_ptr<DecodedFrame> nextWithTime();

  std::unique_ptr<PictureStream> stream_;
  std::shared_ptr<PictureBudget> budget_;
  DisplayTurn turn_;
  // The picture on show, and the one after it.
  std::unique_ptr<DecodedFrame> current_;
  std::unique_ptr<DecodedFrame> coming_;
};

}  // namespace halvora
