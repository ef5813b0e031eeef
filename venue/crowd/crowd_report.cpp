// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/crowd_report.h"

#include <algorithm>

namespace halvora {

namespace {

constexpr std::int64_t kMiddleBegin = 128;
constexpr std::int64_t kMiddleStep = 8;
constexpr std::int64_t kCoarseBegin = 1024;
constexpr std::int64_t kCoarseStep = 256;

// Whole milliseconds, rounded up: a look that took 0.3 ms is not shown at 0 ms.
std::int64_t millisecondsOf(Duration delay) {
  return (std::max(delay, Duration::zero()) + milliseconds(1) - Duration(1)) / milliseconds(1);
}

}  // namespace

void LookDelays::add(Duration delay) {
  if (delay >= kLongest) return;
  const std::int64_t time = millisecondsOf(delay);
  const std::size_t at =
      time < kMiddleBegin ? static_cast<std::size_t>(time)
      : time < kCoarseBegin
          ? kFine + static_cast<std::size_t>((time - kMiddleBegin) / kMiddleStep)
          : kFine + kMiddle + static_cast<std::size_t>((time - kCoarseBegin) / kCoarseStep);
  ++counts_[std::min(at, counts_.size() - 1)];
}

void LookDelays::add(const LookDelays& other) {
  for (std::size_t at = 0; at < counts_.size(); ++at) counts_[at] += other.counts_[at];
}

std::optional<Duration> LookDelays::whenShown(std::uint64_t phones) const {
  std::uint64_t sum = 0;
  for (std::size_t at = 0; at < counts_.size(); ++at) {
    sum += counts_[at];
    if (sum < phones) continue;
    const auto step = static_cast<std::int64_t>(at);
    if (at < kFine) return milliseconds(step);
    if (at < kFine + kMiddle) {
      return milliseconds(kMiddleBegin +
                          (step - static_cast<std::int64_t>(kFine) + 1) * kMiddleStep - 1);
    }
    return milliseconds(kCoarseBegin +
                        (step - static_cast<std::int64_t>(kFine + kMiddle) + 1) * kCoarseStep - 1);
  }
  return std::nullopt;
}

LookDelays& OpenLooks::of(std::uint32_t look) {
  const std::size_t at = look - first_;
  if (at >= delays_.size()) delays_.resize(at + 1);
  return delays_[at];
}

void OpenLooks::add(const OpenLooks& other) {
  for (std::size_t at = 0; at < other.delays_.size(); ++at) {
    const std::uint32_t look = other.first_ + static_cast<std::uint32_t>(at);
    if (look >= first_) of(look).add(other.delays_[at]);
  }
}

LookDelays OpenLooks::take(std::uint32_t look) {
  LookDelays delays = of(look);
  delays_.pop_front();
  first_ = look + 1;
  return delays;
}

void FrameCounts::add(const FrameCounts& other) {
  lost += other.lost;
  open += other.open;
  showing += other.showing;
  torches += other.torches;
  const bool isWorse =
      other.worstError > worstError || (other.worstError == worstError && other.compared > 0 &&
                                        (compared == 0 || other.worstPhone < worstPhone));
  if (isWorse) {
    worstError = other.worstError;
    worstPhone = other.worstPhone;
  }
  compared += other.compared;
  squaredError += other.squaredError;
}

}  // namespace halvora
