// SPDX-License-Identifier: Apache-2.0
// Time as the kit counts it. `Duration` is exact to the microsecond, so three pauses of 50 ms are
// 150 ms; media time is the run loop's own, counted from its start. `Date` is civil time, used only
// for once-a-day rules.
#pragma once

#include <chrono>
#include <cmath>
#include <compare>

#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

/// A span of time, or a time of the run loop since its beginning.
using Duration = std::chrono::microseconds;

/// So many thousandths of a second, below 0 too.
constexpr Duration milliseconds(long long value) { return std::chrono::milliseconds(value); }

/// Seconds to the nearest microsecond, so that 0.124f and 0.124 are the same span.
inline Duration fromSeconds(double seconds) { return Duration(std::llround(seconds * 1e6)); }

/// A span as seconds, exact to the microsecond for some 285 years.
constexpr double toSeconds(Duration duration) {
  return static_cast<double>(duration.count()) / 1e6;
}

/// A moment of civil time.
struct Date {
  double secondsSince1970 = 0;  ///< In universal time, with fractions; below 0 before.
  friend auto operator<=>(const Date&, const Date&) = default;
};

}  // namespace v0
}  // namespace halvora
