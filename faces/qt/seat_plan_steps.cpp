// SPDX-License-Identifier: Apache-2.0
#include "faces/qt/seat_plan_steps.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace halvora {

namespace {

/// Places as near as this are drawn as one.
constexpr double kSamePlace = 1e-6;

}  // namespace

// Four directions that together see everything, and a way of measuring with which a step towards a
// place never leads away from it: so the keyboard reaches every place of any plan.
const StandingSeatPoint* standingSeatTowards(std::span<const StandingSeatPoint> points,
                                             const StandingSeatPoint& from, PlanDirection direction,
                                             double leastStep, Size plan) {
  const double least = std::max(leastStep, kSamePlace);
  const StandingSeatPoint* nearest = nullptr;
  double best = std::numeric_limits<double>::max();
  for (const StandingSeatPoint& point : points) {
    const double right = (point.xNorm - from.xNorm) * plan.width;
    const double down = (point.yNorm - from.yNorm) * plan.height;
    const double ahead = right * direction.right + down * direction.down;
    if (ahead < least) continue;
    const double aside = std::abs(right * direction.down) + std::abs(down * direction.right);
    if (aside > ahead) continue;
    const double cost = ahead + aside;
    if (cost < best) {
      best = cost;
      nearest = &point;
    }
  }
  return nearest;
}

}  // namespace halvora
