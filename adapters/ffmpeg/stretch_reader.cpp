// SPDX-License-Identifier: Apache-2.0
#include "adapters/ffmpeg/stretch_reader.h"

#include <utility>

namespace halvora {

std::unique_ptr<StretchReader> StretchReader::of(std::unique_ptr<PictureStream> stream,
                                                 const std::optional<MediaTimeRange>& range) {
  if (stream == nullptr) return nullptr;
  if (range) {
    if (range->begin.timescale <= 0 || range->end.timescale <= 0) return nullptr;
    if (!stream->startFor(range->begin)) return nullptr;
    stream->endBefore(stream->firstSampleAfter(range->end));
  }
  return std::unique_ptr<StretchReader>(new StretchReader(std::move(stream), range));
}

std::unique_ptr<VideoFrame> StretchReader::next() {
  while (auto frame = stream_->next()) {
    const bool isWanted = !range_ || (frame->hasTime() && frame->comparedWith(range_->begin) >= 0 &&
                                      frame->comparedWith(range_->end) < 0);
    if (isWanted) return frame;
  }
  return nullptr;
}

}  // namespace halvora
