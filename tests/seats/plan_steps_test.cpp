// SPDX-License-Identifier: Apache-2.0
#include <set>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "seats/standing_plan.h"

namespace halvora {
namespace {

constexpr Size kPlan{300, 200};
constexpr PlanDirection kWays[] = {{1, 0}, {-1, 0}, {0, 1}, {0, -1}};

// The index of the place that a step leads to; the place itself where there is none.
std::size_t stepped(const std::vector<StandingSeatPoint>& points, std::size_t from,
                    PlanDirection way, double least = 0) {
  const StandingSeatPoint* to = standingSeatTowards(points, points[from], way, least, kPlan);
  return to == nullptr ? from : static_cast<std::size_t>(to - points.data());
}

TEST(SeatPlanSteps, GoesToTheNeighbourInAGrid) {
  std::vector<StandingSeatPoint> points;
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column)
      points.push_back({row, column, column / 2.0, row / 2.0});
  }
  EXPECT_EQ(stepped(points, 4, {1, 0}), 5U);
  EXPECT_EQ(stepped(points, 4, {-1, 0}), 3U);
  EXPECT_EQ(stepped(points, 4, {0, 1}), 7U);
  EXPECT_EQ(stepped(points, 4, {0, -1}), 1U);
  EXPECT_EQ(stepped(points, 8, {1, 0}), 8U);
  EXPECT_EQ(stepped(points, 8, {0, 1}), 8U);
}

TEST(SeatPlanSteps, PrefersWhatLiesAheadToWhatLiesAside) {
  const std::vector<StandingSeatPoint> points = {
      {0, 0, 0, 0.5}, {0, 1, 0.05, 0.9}, {0, 2, 0.3, 0.5}};
  EXPECT_EQ(stepped(points, 0, {1, 0}), 2U);
}

TEST(SeatPlanSteps, ALongStepSkipsWhatIsNear) {
  const std::vector<StandingSeatPoint> points = {{0, 0, 0, 0}, {0, 1, 0.05, 0}, {0, 2, 0.2, 0}};
  EXPECT_EQ(stepped(points, 0, {1, 0}, 30), 2U);
  EXPECT_EQ(stepped(points, 0, {1, 0}, 61), 0U);
}

TEST(SeatPlanSteps, APlaceExactlyALongStepAwayIsOne) {
  const std::vector<StandingSeatPoint> points = {{0, 0, 0, 0}, {0, 1, 0.25, 0}, {0, 2, 0.5, 0}};
  EXPECT_EQ(stepped(points, 0, {1, 0}, 75), 1U);
}

TEST(SeatPlanSteps, OfTwoAsNearTheEarlierOneIsTaken) {
  const std::vector<StandingSeatPoint> points = {
      {0, 0, 0, 0.5}, {0, 1, 0.5, 0.25}, {0, 2, 0.5, 0.75}};
  EXPECT_EQ(stepped(points, 0, {1, 0}), 1U);
}

TEST(SeatPlanSteps, PlacesOnTopOfEachOtherLeadNowhere) {
  const std::vector<StandingSeatPoint> points = {{0, 0, 0.5, 0.5}, {0, 1, 0.5, 0.5}};
  for (const PlanDirection way : kWays) EXPECT_EQ(stepped(points, 0, way), 0U);
  EXPECT_EQ(standingSeatTowards({}, points[0], {1, 0}, 0, kPlan), nullptr);
}

// Whatever the plan looks like, the keyboard reaches all of it.
TEST(SeatPlanSteps, EveryPlaceOfAScatteredPlanIsReached) {
  std::vector<StandingSeatPoint> points;
  std::uint32_t seed = 7;
  const auto draw = [&seed] {
    seed = seed * 1664525U + 1013904223U;
    return (seed >> 8) / 16777216.0;
  };
  for (int seat = 0; seat < 300; ++seat) {
    const double x = draw();
    points.push_back({0, seat, x, draw()});
  }
  std::set<std::size_t> reached{0};
  std::vector<std::size_t> open{0};
  while (!open.empty()) {
    const std::size_t from = open.back();
    open.pop_back();
    for (const PlanDirection way : kWays) {
      const std::size_t to = stepped(points, from, way);
      if (reached.insert(to).second) open.push_back(to);
    }
  }
  EXPECT_EQ(reached.size(), points.size());
}

}  // namespace
}  // namespace halvora
