// SPDX-License-Identifier: Apache-2.0
// The pauses of effects at three speeds, for tests of screen and torch alike.
#pragma once

#include <algorithm>
#include <array>

#include "halvora/platform/run_loop.h"

namespace halvora {

inline constexpr std::array<int, 3> kSlowness{0, 50, 100};
/// Milliseconds, one at each of these.
using Times = std::array<int, 3>;
inline constexpr Times kNoPause{0, 0, 0};
inline constexpr Times kRandomPauses{300, 2650, 5000};

/// A timer of no delay is due a tenth of a millisecond later.
inline Duration dueAfter(int ms) { return std::max(milliseconds(ms), RunLoop::kShortestDelay); }

}  // namespace halvora
