// SPDX-License-Identifier: Apache-2.0
#include "adapters/ffmpeg/frame_generator.h"

#include <utility>

namespace halvora {

std::unique_ptr<DecodedFrame> ImageGenerator::nextWithTime() {
  std::unique_ptr<DecodedFrame> frame = stream_->next();
  while (frame != nullptr && !frame->hasTime()) frame = stream_->next();
  return frame;
}

// Whether decoding on leads there, and no later access point saves most of the way.
bool ImageGenerator::isAhead(MediaTime time) const {
  // Beginning anew costs about as much as some pictures do.
  constexpr std::size_t kWorthAJump = 30;
  if (current_ == nullptr || current_->comparedWith(time) > 0) return false;
  const std::size_t wanted = stream_->firstSampleAfter(time);
  const std::size_t nearest = stream_->accessPoints().atOrBefore(wanted > 0 ? wanted - 1 : 0);
  return nearest < stream_->nextSample() + kWorthAJump;
}

bool ImageGenerator::goTo(MediaTime time) {
  if (!isAhead(time)) {
    current_.reset();
    coming_.reset();
    if (!stream_->startFor(time)) return false;
    coming_ = nextWithTime();
  }
  while (coming_ != nullptr && coming_->comparedWith(time) <= 0) {
    current_ = std::move(coming_);
    coming_ = nextWithTime();
  }
  return current_ != nullptr && (coming_ != nullptr || current_->endComparedWith(time) > 0);
}

std::optional<Image> ImageGenerator::imageAt(MediaTime time) {
  if (time.timescale <= 0 || !goTo(time)) return std::nullopt;
  const std::uint64_t bytes = std::uint64_t{4} * current_->width() * current_->height();
  const std::unique_ptr<BudgetShare> share = BudgetShare::of(budget_, bytes);
  if (share == nullptr) return std::nullopt;
  return turnedImage(*current_, turn_);
}

}  // namespace halvora
