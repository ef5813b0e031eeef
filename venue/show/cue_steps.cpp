// SPDX-License-Identifier: Apache-2.0
#include "venue/show/cue_steps.h"

#include <algorithm>
#include <cmath>

#include "pixelmap/frame_time.h"

namespace halvora {

namespace {

// Guards the pace against a product that falls just short of a whole number.
constexpr double kHair = 1e-6;

}  // namespace

CueSteps::CueSteps(const Cue& cue, Duration repeat, std::uint8_t masterBefore, int lastFrame)
    : cue_(&cue),
      repeat_(repeat),
      masterBefore_(masterBefore),
      lastFrame_(lastFrame),
      fadeSteps_(std::max<std::int64_t>(1, cue.fade / repeat)) {}

Duration CueSteps::mapTime(const CueMap& map, std::int64_t k) {
  return milliseconds(std::llround(static_cast<double>(k) * 1000 / map.rate));
}

std::int64_t CueSteps::mapFrame(const CueMap& map, std::int64_t k) {
  const double passed = static_cast<double>(k) * kPixelMapFramesPerSecond / map.rate;
  return map.from + static_cast<std::int64_t>(std::floor(passed + kHair));
}

std::optional<Duration> CueSteps::nextTime() const {
  std::optional<Duration> time;
  if (fadeStep_ <= fadeSteps_) time = (fadeStep_ - 1) * repeat_;
  const auto& map = cue_->look.map;
  if (map && (mapStep_ == 0 || mapFrame(*map, mapStep_ - 1) < lastFrame_)) {
    const Duration frame = mapTime(*map, mapStep_);
    time = time ? std::min(*time, frame) : frame;
  }
  return time;
}

void CueSteps::stepTo(Duration time) {
  if (!packet_) packet_ = cue_->look.packet;
  if (fadeStep_ <= fadeSteps_ && (fadeStep_ - 1) * repeat_ == time) {
    const std::int64_t difference = cue_->look.packet.master - std::int64_t{masterBefore_};
    // To the nearest, halves up, also on the way down.
    const std::int64_t doubled = 2 * difference * fadeStep_ + fadeSteps_;
    std::int64_t passed = doubled / (2 * fadeSteps_);
    if (doubled % (2 * fadeSteps_) < 0) --passed;
    packet_->master = static_cast<std::uint8_t>(masterBefore_ + passed);
    ++fadeStep_;
  }
  const auto& map = cue_->look.map;
  if (map && mapTime(*map, mapStep_) == time) {
    const std::int64_t frame = std::min(mapFrame(*map, mapStep_), lastFrame_);
    packet_->minutes = static_cast<std::uint8_t>(frame & 0xFF);
    packet_->seconds = static_cast<std::uint8_t>(frame >> 8);
    ++mapStep_;
  }
}

std::optional<CueStep> CueSteps::next() {
  for (;;) {
    const auto time = nextTime();
    if (!time) return std::nullopt;
    const std::optional<Broadcast> before = packet_;
    stepTo(*time);
    // A fade or a slow map may come to the same bytes again: that is a repeat, no look of its own.
    if (before != packet_) return CueStep{*time, *packet_};
  }
}

}  // namespace halvora
