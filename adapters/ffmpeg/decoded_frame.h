// SPDX-License-Identifier: Apache-2.0
// A picture as the decoder left it in memory. It shares that memory and nothing else, so it may go
// anywhere.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "adapters/ffmpeg/libav.h"
#include "adapters/standard/pixel_layout.h"
#include "halvora/platform/video_asset.h"

namespace halvora {

class DecodedFrame final : public VideoFrame {
 public:
  /// Null for pixels of a kind that has no colours to be read. `unit` is that of the frame's times,
  /// in seconds.
  static std::unique_ptr<DecodedFrame> of(LibavPointer<AVFrame> frame, AVRational unit);

  double seconds() const override;
  std::uint32_t width() const override { return static_cast<std::uint32_t>(frame_->width); }
  std::uint32_t height() const override { return static_cast<std::uint32_t>(frame_->height); }
  void sample(std::span<const PixelPosition> positions,
              std::span<std::uint32_t> words) const override {
    samplePixels(layout_, positions, words);
  }

  bool hasTime() const { return frame_->pts != AV_NOPTS_VALUE; }
  /// Whether it is presented before, at or after that time: below, equal to or above 0.
  int comparedWith(MediaTime time) const;
  /// The same for the end of its presentation, if nothing comes after it.
  int endComparedWith(MediaTime time) const;

 private:
  DecodedFrame(LibavPointer<AVFrame> frame, AVRational unit, const PixelLayout& layout)
      : frame_(std::move(frame)), unit_(unit), layout_(layout) {}

  LibavPointer<AVFrame> frame_;
  AVRational unit_;
  PixelLayout layout_;
};

/// Where the pixels of that frame lie; none for a kind that has no colours to be read.
std::optional<PixelLayout> pixelLayoutOf(const AVFrame& frame);
/// Exactly which of the two times comes first: below, equal to or above 0.
int compareTimes(std::int64_t value, AVRational unit, MediaTime time);

}  // namespace halvora
