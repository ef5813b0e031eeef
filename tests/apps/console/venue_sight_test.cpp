// SPDX-License-Identifier: Apache-2.0
#include "apps/console/venue_sight.h"

#include <gtest/gtest.h>

namespace halvora {
namespace {

constexpr Size kPicture{800, 600};

TEST(VenueSight, TheWholePictureStaysWhereItIs) {
  EXPECT_EQ(fitted({-30, 500, 1}, kPicture), VenueSight());
  EXPECT_EQ(fitted({10, 10, 0.2}, kPicture), VenueSight());
}

TEST(VenueSight, FromCloseByAnEdgeMayComeToTheMiddle) {
  const VenueSight far = fitted({-1e6, 1e6, 50}, kPicture);
  EXPECT_NEAR(-far.left * far.zoom, 400, 10);
  EXPECT_NEAR((600 - far.top) * far.zoom, 300, 10);
  EXPECT_EQ(fitted({100, 50, 4}, kPicture), (VenueSight{100, 50, 4}));
}

TEST(VenueSight, ZoomingKeepsAPlace) {
  const VenueSight sight{100, 50, 4};
  const VenueSight closer = zoomedAt(sight, 200, 300, 2);
  EXPECT_EQ(closer.zoom, 8);
  EXPECT_DOUBLE_EQ(closer.left + 200 / 8.0, 100 + 200 / 4.0);
  EXPECT_DOUBLE_EQ(closer.top + 300 / 8.0, 50 + 300 / 4.0);
  EXPECT_EQ(zoomedAt(sight, 0, 0, 1e9).zoom, VenueSight::kMostZoom);
  EXPECT_EQ(zoomedAt(sight, 0, 0, 1e-9).zoom, 1);
}

TEST(VenueSight, APlaceIsSeenWhereItIsWanted) {
  const CrowdDisc disc{300, 200, 3, false};
  const CrowdDisc shown = seen(disc, sightOf(disc, 10, 250, 350));
  EXPECT_DOUBLE_EQ(shown.x, 250);
  EXPECT_DOUBLE_EQ(shown.y, 350);
  EXPECT_DOUBLE_EQ(shown.radius, 30);
}

TEST(VenueSight, TheWayBetweenTwoSightsHasAFixedPoint) {
  const VenueSight from{0, 0, 1};
  const VenueSight to = zoomedAt(from, 320, 240, 12);
  for (const double share : {0.0, 0.25, 0.5, 0.75, 1.0}) {
    const CrowdDisc shown = seen({320, 240, 1, false}, between(from, to, share));
    EXPECT_NEAR(shown.x, 320, 1e-9) << share;
    EXPECT_NEAR(shown.y, 240, 1e-9) << share;
  }
  EXPECT_EQ(between(from, to, 1), to);
  // At one zoom it is a straight move.
  const VenueSight half = between({0, 0, 4}, {100, 50, 4}, 0.5);
  EXPECT_NEAR(half.left, 50, 1e-9);
  EXPECT_NEAR(half.top, 25, 1e-9);
}

}  // namespace
}  // namespace halvora
