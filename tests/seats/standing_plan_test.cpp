// SPDX-License-Identifier: Apache-2.0
#include "seats/standing_plan.h"

#include <cstdint>
#include <limits>
#include <memory>

#include <gtest/gtest.h>

#include "tests/seats/seat_maker.h"

namespace halvora {
namespace {

constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

std::vector<StandingSeatPoint> pointsOf(const std::vector<RowSpec>& rows) {
  const auto map = mapOf({{"Standing", rows}});
  return standingSeatPointsOf(map->section(0));
}

std::size_t nearestTo(const std::vector<StandingSeatPoint>& points, double x, double y) {
  const StandingSeatPoint* nearest = nearestStandingSeat(points, x, y);
  return nearest == nullptr ? points.size() : static_cast<std::size_t>(nearest - points.data());
}

TEST(StandingPoints, AreTheSeatsOverTheirBoundingBox) {
  EXPECT_EQ(pointsOf({{"1", {{"a", 10, 5}, {"b", 20, 5}, {"c", 10, 15}}}}),
            (std::vector<StandingSeatPoint>{{0, 0, 0, 0}, {0, 1, 1, 0}, {0, 2, 0, 1}}));
}

TEST(StandingPoints, KeepTheOrderOfRowsAndSeatsWithTheirIndices) {
  EXPECT_EQ(pointsOf({{"1", {{"a", 4, 0}, {"b", 0, 0}}},
                      {"2", {{"a", 2, 8}}},
                      {"3", {{"a", 1, 2}, {"b", 3, 6}, {"c", 4, 4}}}}),
            (std::vector<StandingSeatPoint>{{0, 0, 1, 0},
                                            {0, 1, 0, 0},
                                            {1, 0, 0.5, 1},
                                            {2, 0, 0.25, 0.25},
                                            {2, 1, 0.75, 0.75},
                                            {2, 2, 1, 0.5}}));
}

TEST(StandingPoints, OfOneSeatAreTheOrigin) {
  EXPECT_EQ(pointsOf({{"1", {{"a", 70, -3}}}}), (std::vector<StandingSeatPoint>{{0, 0, 0, 0}}));
}

TEST(StandingPoints, OfOneLineKeepToItsEdge) {
  EXPECT_EQ(pointsOf({{"1", {{"a", 7, 1}, {"b", 7, 3}}}}),
            (std::vector<StandingSeatPoint>{{0, 0, 0, 0}, {0, 1, 0, 1}}));
  EXPECT_EQ(pointsOf({{"1", {{"a", -2, 9}, {"b", 2, 9}}}}),
            (std::vector<StandingSeatPoint>{{0, 0, 0, 0}, {0, 1, 1, 0}}));
}

TEST(StandingPoints, CollapseWhereTheSeatsHaveNoPositions) {
  const auto points = pointsOf({{"1", {{"a", 0, 0}, {"b", 0, 0}}}, {"2", {{"a", 0, 0}}}});
  ASSERT_EQ(points.size(), 3U);
  for (const StandingSeatPoint& point : points) {
    EXPECT_EQ(point.xNorm, 0);
    EXPECT_EQ(point.yNorm, 0);
  }
  EXPECT_EQ(nearestTo(points, 1, 1), 0U);
  EXPECT_EQ(nearestTo(points, 0, 0), 0U);
}

TEST(StandingPoints, BearTheWidestRangeOfNumbers) {
  const auto points = pointsOf({{"1", {{"a", INT64_MIN, INT64_MAX}, {"b", INT64_MAX, INT64_MIN}}}});
  EXPECT_EQ(points, (std::vector<StandingSeatPoint>{{0, 0, 0, 1}, {0, 1, 1, 0}}));
}

TEST(NearestStandingSeat, IsTheOneNearest) {
  const auto points = pointsOf({{"1", {{"a", 10, 5}, {"b", 20, 5}, {"c", 10, 15}}}});
  EXPECT_EQ(nearestTo(points, 0.6, 0.2), 1U);
  EXPECT_EQ(nearestTo(points, 0.4, 0.2), 0U);
  EXPECT_EQ(nearestTo(points, 0.2, 0.6), 2U);
}

TEST(NearestStandingSeat, IsTheEarlierOneOfTwoEquallyFar) {
  const auto points =
      pointsOf({{"1", {{"a", 0, 0}, {"b", 2, 0}}}, {"2", {{"c", 0, 2}, {"d", 2, 2}}}});
  EXPECT_EQ(nearestTo(points, 0.5, 0.5), 0U);
  EXPECT_EQ(nearestTo(points, 1, 0.5), 1U) << "of b and d";
  EXPECT_EQ(nearestTo(points, 0.5, 1), 2U) << "the lower row, then the lower seat: of c and d";
}

TEST(NearestStandingSeat, WeighsBothAxesAlikeOnThePlan) {
  // Ten times as wide as deep on the map, a square on the plan.
  const auto points = pointsOf({{"1", {{"a", 0, 0}, {"b", 1000, 0}, {"c", 0, 100}}}});
  EXPECT_EQ(nearestTo(points, 0.3, 0.6), 2U);
}

TEST(NearestStandingSeat, IsNearestAsTheCrowFlies) {
  // Half the plan straight up, against three tenths up and three tenths across.
  const auto points = pointsOf({{"1", {{"a", 5, 0}, {"b", 2, 2}, {"c", 0, 10}, {"d", 10, 10}}}});
  EXPECT_EQ(nearestTo(points, 0.5, 0.5), 1U);
}

TEST(NearestStandingSeat, ClampsThePlace) {
  const auto points = pointsOf({{"1", {{"a", 0, 0}, {"b", 10, 0}, {"c", 10, 10}}}});
  EXPECT_EQ(nearestTo(points, -4, -0.1), 0U);
  EXPECT_EQ(nearestTo(points, 7, -3), 1U);
  EXPECT_EQ(nearestTo(points, kInfinity, kInfinity), 2U);
  EXPECT_EQ(nearestTo(points, -kInfinity, 0), 0U);
  EXPECT_EQ(nearestTo(points, kNotANumber, kNotANumber), 0U);
}

TEST(NearestStandingSeat, OfNoneIsNone) { EXPECT_EQ(nearestStandingSeat({}, 0.5, 0.5), nullptr); }

TEST(StandingSeatAt, FindsARowsSeat) {
  const auto points =
      pointsOf({{"1", {{"a", 0, 0}}}, {"2", {{"a", 1, 1}, {"b", 2, 2}}}, {"3", {{"a", 3, 3}}}});
  EXPECT_EQ(standingSeatAt(points, 0, 0), &points[0]);
  EXPECT_EQ(standingSeatAt(points, 1, 1), &points[2]);
  EXPECT_EQ(standingSeatAt(points, 2, 0), &points[3]);
  for (const auto& [row, seat] : {std::pair(0, 1), {1, 2}, {3, 0}, {-1, 0}, {0, -1}, {-1, -1}}) {
    EXPECT_EQ(standingSeatAt(points, row, seat), nullptr) << row << " " << seat;
  }
  EXPECT_EQ(standingSeatAt({}, 0, 0), nullptr);
}

void expectDot(Size area, double x, double y, Point expected) {
  const auto center = standingDotCenter(area, 24, x, y);
  ASSERT_TRUE(center);
  EXPECT_EQ(center->x, expected.x);
  EXPECT_EQ(center->y, expected.y);
}

TEST(StandingDot, IsDrawnInWholePoints) {
  expectDot({200, 300}, 0.5, 0.5, {100, 150});
  expectDot({101, 99}, 0.5, 0.5, {51, 50});
  expectDot({100, 100}, 0.333, 0.666, {33, 67});
}

TEST(StandingDot, KeepsItsRadiusFromTheEdges) {
  expectDot({200, 300}, 0, 0, {12, 12});
  expectDot({200, 300}, 1, 1, {188, 288});
  expectDot({200, 300}, 0.06, 0.94, {12, 282});
  expectDot({200, 300}, -1, 2, {12, 288});
}

TEST(StandingDot, RoundsAfterItIsLimited) { expectDot({100.5, 100.4}, 1, 1, {89, 88}); }

TEST(StandingDot, IsLimitedBelowFirstInAnAreaSmallerThanItself) {
  expectDot({10, 30}, 0, 0, {-2, 12});
  expectDot({10, 20}, 1, 1, {-2, 8});
}

TEST(StandingDot, StaysWhereTheAreaHasNoSize) {
  for (const Size area : {Size{0, 0}, {0, 100}, {100, 0}, {-1, 100}, {100, -1}, {kNotANumber, 1}}) {
    EXPECT_FALSE(standingDotCenter(area, 24, 0.5, 0.5));
  }
}

}  // namespace
}  // namespace halvora
