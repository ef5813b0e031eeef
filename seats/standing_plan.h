// SPDX-License-Identifier: Apache-2.0
// The standing area as a plan: the seats of a section at their places in a unit square, the nearest
// of them to a touch, and where the dot that marks one is drawn. Pure functions; any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "halvora/platform/screen.h"
#include "halvora/wizard.h"
#include "seats/seat_map.h"

namespace halvora {

struct StandingSeatPoint {
  /// Of the row in its section, and of the seat in its row.
  std::int64_t rowIndex = 0;
  std::int64_t seatIndex = 0;
  /// 0 to 1 over the bounding box of the section's seats.
  double xNorm = 0;
  double yNorm = 0;
  friend bool operator==(const StandingSeatPoint&, const StandingSeatPoint&) = default;
};

/// One point a seat, in row order and seat order; empty for a section without seats.
std::vector<StandingSeatPoint> standingSeatPointsOf(const SeatMap::SectionItem& section);

/// `value` within 0 to 1; 0 for what is not a number.
double clampedToUnit(double value);

/// The point nearest to a place, the first of several; null for no points. The place is clamped to
/// the unit square.
const StandingSeatPoint* nearestStandingSeat(std::span<const StandingSeatPoint> points, double x,
                                             double y);

/// The point of a row's seat; null where there is none.
const StandingSeatPoint* standingSeatAt(std::span<const StandingSeatPoint> points,
                                        std::int64_t rowIndex, std::int64_t seatIndex);

/// The nearest place that lies rather in that direction than in another, and at least so many
/// points ahead, on a plan of that size. Null where there is none.
const StandingSeatPoint* standingSeatTowards(std::span<const StandingSeatPoint> points,
                                             const StandingSeatPoint& from, PlanDirection direction,
                                             double leastStep, Size plan);

/// The centre of a dot that wide for a place on the plan, in whole points and not beyond the drag
/// area's edges; none where the area has no size.
std::optional<Point> standingDotCenter(Size dragArea, double dotWidth, double x, double y);

}  // namespace halvora
