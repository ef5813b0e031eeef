// SPDX-License-Identifier: Apache-2.0
#include "seats/standing_plan.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

namespace halvora {

namespace {

// The span of one coordinate over a section.
struct Span {
  double least = std::numeric_limits<double>::max();
  double greatest = std::numeric_limits<double>::lowest();

  void add(double value) {
    least = std::min(least, value);
    greatest = std::max(greatest, value);
  }
  // A section may have all its seats in one line, or one seat.
  double share(double value) const {
    return clampedToUnit((value - least) / std::max(greatest - least, 1.0));
  }
};

double onAxis(double share, double length, double radius) {
  const double place = std::max(clampedToUnit(share) * length, radius);
  return std::round(std::min(place, length - radius));
}

/// Places as near as this are drawn as one.
constexpr double kSamePlace = 1e-6;

}  // namespace

double clampedToUnit(double value) { return value > 0 ? std::min(value, 1.0) : 0; }

std::vector<StandingSeatPoint> standingSeatPointsOf(const SeatMap::SectionItem& section) {
  Span x;
  Span y;
  std::vector<StandingSeatPoint> points;
  for (std::size_t rowIndex = 0; rowIndex < section.rowCount(); ++rowIndex) {
    const SeatMap::RowItem row = section.row(rowIndex);
    for (std::size_t seatIndex = 0; seatIndex < row.seatCount(); ++seatIndex) {
      const SeatMap::SeatItem seat = row.seat(seatIndex);
      const auto xPos = static_cast<double>(seat.xPos);
      const auto yPos = static_cast<double>(seat.yPos);
      x.add(xPos);
      y.add(yPos);
      points.push_back(
          {static_cast<std::int64_t>(rowIndex), static_cast<std::int64_t>(seatIndex), xPos, yPos});
    }
  }
  for (StandingSeatPoint& point : points) {
    point.xNorm = x.share(point.xNorm);
    point.yNorm = y.share(point.yNorm);
  }
  return points;
}

// A plain walk: 100,000 points take a fraction of a frame even on a phone, and a touch cannot ask
// more often than the screen is drawn. It gives the first of equal points without further thought.
const StandingSeatPoint* nearestStandingSeat(std::span<const StandingSeatPoint> points, double x,
                                             double y) {
  x = clampedToUnit(x);
  y = clampedToUnit(y);
  const StandingSeatPoint* nearest = nullptr;
  double best = std::numeric_limits<double>::max();
  for (const StandingSeatPoint& point : points) {
    const double dx = point.xNorm - x;
    const double dy = point.yNorm - y;
    const double distance = dx * dx + dy * dy;
    if (distance < best) {
      best = distance;
      nearest = &point;
    }
  }
  return nearest;
}

// The points are in order of row and seat.
const StandingSeatPoint* standingSeatAt(std::span<const StandingSeatPoint> points,
                                        std::int64_t rowIndex, std::int64_t seatIndex) {
  const auto isBefore = [&](const StandingSeatPoint& point) {
    return std::pair(point.rowIndex, point.seatIndex) < std::pair(rowIndex, seatIndex);
  };
  const auto found = std::partition_point(points.begin(), points.end(), isBefore);
  const bool isFound =
      found != points.end() && found->rowIndex == rowIndex && found->seatIndex == seatIndex;
  return isFound ? &*found : nullptr;
}

std::optional<Point> standingDotCenter(Size dragArea, double dotWidth, double x, double y) {
  if (!(dragArea.width > 0) || !(dragArea.height > 0)) return std::nullopt;
  const double radius = dotWidth / 2;
  return Point{onAxis(x, dragArea.width, radius), onAxis(y, dragArea.height, radius)};
}

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
