// SPDX-License-Identifier: Apache-2.0
// Counts flashes as WCAG 2.3.1 defines them: pairs of opposing changes of relative luminance by a
// tenth or more whose darker side is below 0.8 (general), and of saturated red (red). ITU-R BT.1702
// comes to the same figures on a screen whose white is 200 cd/m². Values; one thread at a time.
#pragma once

#include <deque>

#include "halvora/platform/time.h"

namespace halvora {

/// Linear light, each 0 to 1.
struct LinearColour {
  double red = 0;
  double green = 0;
  double blue = 0;
};

/// Relative luminance of sRGB primaries, 0 to 1.
double relativeLuminance(const LinearColour& colour);

/// The pairs of opposing changes of one value, each of at least `step`.
class OpposingChanges {
 public:
  explicit OpposingChanges(double step) : step_(step) {}

  /// The value at a time, which only goes forward. `counts` says whether a change between two
  /// values is one of those meant.
  template <class Counts>
  void add(Duration time, double value, const Counts& counts);

  /// The most pairs that begin and end within one second.
  int most() const { return most_; }

 private:
  void changed(Duration time);

  double step_;
  bool hasValue_ = false;
  /// Where the value turned last, and how far it has come since.
  double turn_ = 0;
  double reach_ = 0;
  /// Up: 1, down: -1, neither yet: 0. Of the last change that was large enough.
  int direction_ = 0;
  std::deque<Duration> changes_;
  int most_ = 0;
};

class FlashCount {
 public:
  void add(Duration time, const LinearColour& colour);

  /// The most flashes within any second.
  int generalFlashes() const { return general_.most(); }
  int redFlashes() const { return red_.most(); }

 private:
  OpposingChanges general_{0.1};
  OpposingChanges red_{20};
  bool wasSaturatedRed_ = false;
};

template <class Counts>
void OpposingChanges::add(Duration time, double value, const Counts& counts) {
  if (!hasValue_) {
    hasValue_ = true;
    turn_ = reach_ = value;
    return;
  }
  const bool goesOn = direction_ > 0 ? value >= reach_ : direction_ < 0 && value <= reach_;
  if (goesOn) {
    reach_ = value;
    return;
  }
  // The other way: from the furthest point reached.
  const double from = direction_ == 0 ? turn_ : reach_;
  const double change = value - from;
  if ((change < 0 ? -change : change) < step_ || !counts(from, value)) return;
  direction_ = change > 0 ? 1 : -1;
  turn_ = from;
  reach_ = value;
  changed(time);
}

}  // namespace halvora
