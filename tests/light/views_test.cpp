// SPDX-License-Identifier: Apache-2.0
#include "light/views.h"

#include <map>
#include <string>

#include <gtest/gtest.h>

#include "adapters/virtual/virtual_run_loop.h"
#include "light/view_stack.h"

namespace halvora {
namespace {

TEST(Views, EveryRowStandsAtItsOwnNumber) {
  const std::map<ViewId, std::string> names{
      {ViewId::container, "container"},
      {ViewId::lightView, "lightView"},
      {ViewId::fpsLabel, "fpsLabel"},
      {ViewId::videoBackgroundView, "videoBackgroundView"},
      {ViewId::playerViewA, "playerViewA"},
      {ViewId::playerViewB, "playerViewB"},
      {ViewId::goboView, "goboView"},
      {ViewId::goboImage, "goboImage"},
      {ViewId::pixelMapImage, "pixelMapImage"},
      {ViewId::pairingCodeLabel, "pairingCodeLabel"},
      {ViewId::dimmerView, "dimmerView"},
      {ViewId::mapNoSeatOverlayView, "mapNoSeatOverlayView"},
      {ViewId::mapNoSeatOverlayLabel, "mapNoSeatOverlayLabel"},
      {ViewId::lowLightHintLabel, "lowLightHintLabel"},
  };
  ASSERT_EQ(names.size(), kViewCount);
  for (const auto& [view, name] : names) EXPECT_EQ(rowOf(view).name, name);
}

TEST(Views, AllThatAShowFadesInIsTransparentAtFirst) {
  VirtualRunLoop loop;
  TimerSet timers(loop);
  const ViewStack views(timers);
  for (const ViewId view :
       {ViewId::container, ViewId::fpsLabel, ViewId::pairingCodeLabel, ViewId::goboView,
        ViewId::dimmerView, ViewId::mapNoSeatOverlayView, ViewId::lowLightHintLabel,
        ViewId::videoBackgroundView, ViewId::playerViewA, ViewId::playerViewB}) {
    EXPECT_EQ(views.alpha(view), 0) << rowOf(view).name;
  }
  EXPECT_EQ(views.alpha(ViewId::lightView), 1);
  EXPECT_EQ(views.alpha(ViewId::goboImage), 1);
}

TEST(Views, OnlyTheTwoNoticesAreHiddenAtFirst) {
  for (std::size_t at = 0; at < kViewCount; ++at) {
    const auto view = static_cast<ViewId>(at);
    EXPECT_EQ(rowOf(view).hidden,
              view == ViewId::mapNoSeatOverlayView || view == ViewId::lowLightHintLabel);
  }
}

TEST(Views, TheDimmerLiesAboveTheLightAndTheGoboAndBelowTheNotices) {
  for (const ViewId below :
       {ViewId::lightView, ViewId::fpsLabel, ViewId::goboView, ViewId::pairingCodeLabel}) {
    EXPECT_LT(below, ViewId::dimmerView);
  }
  EXPECT_LT(ViewId::lightView, ViewId::fpsLabel);
  EXPECT_LT(ViewId::fpsLabel, ViewId::goboView);
  EXPECT_LT(ViewId::goboView, ViewId::pairingCodeLabel);
  EXPECT_LT(ViewId::dimmerView, ViewId::mapNoSeatOverlayView);
  EXPECT_LT(ViewId::mapNoSeatOverlayView, ViewId::lowLightHintLabel);
}

TEST(Views, ParentsAreDrawnBeforeTheirChildren) {
  for (std::size_t at = 1; at < kViewCount; ++at) {
    EXPECT_LT(indexOf(kViews[at].parent), at) << kViews[at].name;
  }
  EXPECT_EQ(rowOf(ViewId::goboImage).parent, ViewId::goboView);
  EXPECT_EQ(rowOf(ViewId::pixelMapImage).parent, ViewId::goboView);
}

TEST(ViewFrames, FillTheContainer) {
  EXPECT_EQ(frameOf(ViewId::lightView, {390, 844}), (Rect{0, 0, 390, 844}));
  EXPECT_EQ(frameOf(ViewId::dimmerView, {844, 390}), (Rect{0, 0, 844, 390}));
}

TEST(ViewFrames, TheNoSeatNoticeIs220To280WideAndCentred) {
  // 390 − 48 is above 280, 300 − 48 is between, 260 − 48 is below 220.
  EXPECT_EQ(frameOf(ViewId::mapNoSeatOverlayView, {390, 844}), (Rect{55, 360, 280, 124}));
  EXPECT_EQ(frameOf(ViewId::mapNoSeatOverlayView, {300, 524}), (Rect{24, 200, 252, 124}));
  EXPECT_EQ(frameOf(ViewId::mapNoSeatOverlayView, {260, 524}), (Rect{20, 200, 220, 124}));
}

TEST(ViewFrames, TheLowLightHintIsAsWideAsItsMarginsAllow) {
  EXPECT_EQ(frameOf(ViewId::lowLightHintLabel, {390, 844}), (Rect{24, 412, 342, 20}));
}

}  // namespace
}  // namespace halvora
