// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/flash_count.h"

#include <algorithm>

namespace halvora {

namespace {

constexpr Duration kWindow = milliseconds(1000);
// A change does not count where even its darker side is as bright as this.
constexpr double kBright = 0.8;
constexpr double kSaturated = 0.8;
constexpr double kRedScale = 320;

}  // namespace

double relativeLuminance(const LinearColour& colour) {
  return 0.2126 * colour.red + 0.7152 * colour.green + 0.0722 * colour.blue;
}

void OpposingChanges::changed(Duration time) {
  changes_.push_back(time);
  while (time - changes_.front() > kWindow) changes_.pop_front();
  most_ = std::max(most_, static_cast<int>(changes_.size() / 2));
}

void FlashCount::add(Duration time, const LinearColour& colour) {
  general_.add(time, relativeLuminance(colour),
               [](double one, double other) { return std::min(one, other) < kBright; });
  const double sum = colour.red + colour.green + colour.blue;
  const bool isSaturated = sum > 0 && colour.red / sum >= kSaturated;
  const double red = std::max(colour.red - colour.green - colour.blue, 0.0) * kRedScale;
  red_.add(time, red, [&](double, double) { return isSaturated || wasSaturatedRed_; });
  wasSaturatedRed_ = isSaturated;
}

}  // namespace halvora
