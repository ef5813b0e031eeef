// SPDX-License-Identifier: Apache-2.0
// Going from place to place on the plan of a standing area without pointing at it. Pure function;
// any thread.
#pragma once

#include <span>

#include "halvora/platform/screen.h"
#include "seats/standing_plan.h"

namespace halvora {

/// A direction on the screen: one of the two is 1 or -1, the other 0.
struct PlanDirection {
  int right = 0;
  int down = 0;
};

/// The nearest place that lies rather in that direction than in another, and at least so many
/// points ahead, on a plan of that size. Null where there is none.
const StandingSeatPoint* standingSeatTowards(std::span<const StandingSeatPoint> points,
                                             const StandingSeatPoint& from, PlanDirection direction,
                                             double leastStep, Size plan);

}  // namespace halvora
