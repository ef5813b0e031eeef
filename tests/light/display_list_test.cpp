// SPDX-License-Identifier: Apache-2.0
#include "light/display_list.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "adapters/virtual/virtual_run_loop.h"
#include "light/timer_set.h"

namespace halvora {
namespace {

constexpr Size kPhone{390, 844};
constexpr Rect kWhole{0, 0, 390, 844};
constexpr Colour kOrange{1, 0.5F, 0.25F, 1};

struct DisplayListTest : testing::Test {
  DisplayList list() const { return displayListOf(views, kPhone); }
  void showContainer() { views.setAlpha(ViewId::container, 1); }

  VirtualRunLoop loop;
  TimerSet timers{loop};
  ViewStack views{timers};
};

DisplayItem fill(Colour colour, double opacity = 1) {
  return {ViewContent::fill, kWhole, colour, opacity, "", 0};
}

DisplayItem label(const char* text, Colour colour, double opacity = 1) {
  return {ViewContent::text, kWhole, colour, opacity, text, 100};
}

TEST_F(DisplayListTest, IsEmptyWhileTheContainerIsInvisible) {
  views.setLightColour(kOrange);
  EXPECT_TRUE(list().empty());
}

TEST_F(DisplayListTest, IsEmptyWhileTheContainerIsHidden) {
  showContainer();
  views.setHidden(ViewId::container, true);
  EXPECT_TRUE(list().empty());
}

TEST_F(DisplayListTest, IsOneFillForAPlainColour) {
  showContainer();
  views.setLightColour(kOrange);
  EXPECT_EQ(list(), DisplayList{fill(kOrange)});
}

TEST_F(DisplayListTest, TheContainerFadesAsAWhole) {
  views.setAlpha(ViewId::container, 0.25);
  views.setLightColour(kOrange);
  EXPECT_EQ(list(), DisplayList{fill(kOrange, 0.25)});
}

TEST_F(DisplayListTest, ALightWithoutColourIsTheContainersBlack) {
  showContainer();
  views.setLightColour(std::nullopt);
  EXPECT_EQ(list(), DisplayList{fill(kBlack)});
}

TEST_F(DisplayListTest, ATranslucentLightLiesOnBlack) {
  showContainer();
  views.setLightColour(Colour{1, 0.5F, 0.25F, 0.5F});
  EXPECT_EQ(list(), DisplayList{fill({0.5F, 0.25F, 0.125F, 1})});
}

TEST_F(DisplayListTest, ALightBeyondTheRangeIsCut) {
  showContainer();
  views.setLightColour(Colour{4, -1, 0.5F, 1});
  EXPECT_EQ(list(), DisplayList{fill({1, 0, 0.5F, 1})});
}

TEST_F(DisplayListTest, TheDimmerDarkensTheLight) {
  showContainer();
  views.setLightColour(kOrange);
  views.setAlpha(ViewId::dimmerView, 0.75);
  EXPECT_EQ(list(), DisplayList{fill({0.25F, 0.125F, 0.0625F, 1})});
}

TEST_F(DisplayListTest, AHiddenDimmerDarkensNothing) {
  showContainer();
  views.setLightColour(kOrange);
  views.setAlpha(ViewId::dimmerView, 0.75);
  views.setHidden(ViewId::dimmerView, true);
  EXPECT_EQ(list(), DisplayList{fill(kOrange)});
}

TEST_F(DisplayListTest, TheDimmerDarkensCodeAndGoboButNotTheNotices) {
  showContainer();
  views.setAlpha(ViewId::dimmerView, 0.5);
  views.setText(ViewId::pairingCodeLabel, "0042");
  views.setAlpha(ViewId::pairingCodeLabel, 1);
  views.setText(ViewId::goboImage, "star");
  views.setAlpha(ViewId::goboView, 1);
  views.setText(ViewId::lowLightHintLabel, "Keep the app open.");
  views.setHidden(ViewId::lowLightHintLabel, false);
  views.setAlpha(ViewId::lowLightHintLabel, 1);

  const Colour half{0.5F, 0.5F, 0.5F, 1};
  const DisplayItem gobo{ViewContent::image, kWhole, half, 1, "star", 0};
  // 24 points from both sides, 20 high, in the middle of 844; white of alpha 0.16.
  const DisplayItem notice{ViewContent::text,          {24, 412, 342, 20},   kWhite,
                           static_cast<double>(0.16F), "Keep the app open.", 13};
  EXPECT_EQ(list(), (DisplayList{fill(kBlack), gobo, label("0042", half), notice}));
}

TEST_F(DisplayListTest, ListsBottomToTop) {
  showContainer();
  views.setText(ViewId::pairingCodeLabel, "0042");
  views.setAlpha(ViewId::pairingCodeLabel, 1);
  views.setText(ViewId::fpsLabel, "10");
  views.setAlpha(ViewId::fpsLabel, 0.5);
  EXPECT_EQ(list(), (DisplayList{fill(kBlack), label("10", kWhite, 0.5), label("0042", kWhite)}));
}

TEST_F(DisplayListTest, LeavesOutWhatCannotBeSeen) {
  showContainer();
  // A text of alpha 0, a hidden one, an empty one, and a picture without a name.
  views.setText(ViewId::pairingCodeLabel, "0000");
  views.setText(ViewId::lowLightHintLabel, "Keep the app open.");
  views.setAlpha(ViewId::lowLightHintLabel, 1);
  views.setAlpha(ViewId::fpsLabel, 1);
  views.setAlpha(ViewId::goboView, 1);
  EXPECT_EQ(list(), DisplayList{fill(kBlack)});
}

TEST_F(DisplayListTest, AClipIsListedByTheNameOfItsView) {
  showContainer();
  views.setAlpha(ViewId::playerViewB, 0.5);
  views.setAlpha(ViewId::dimmerView, 0.75);
  views.setText(ViewId::fpsLabel, "10");
  views.setAlpha(ViewId::fpsLabel, 1);
  views.setText(ViewId::goboImage, "star");
  views.setAlpha(ViewId::goboView, 1);
  const Colour quarter{0.25F, 0.25F, 0.25F, 1};
  const DisplayItem clip{ViewContent::video, kWhole, quarter, 0.5, "playerViewB", 0};
  const DisplayItem gobo{ViewContent::image, kWhole, quarter, 1, "star", 0};
  EXPECT_EQ(list(), (DisplayList{fill(kBlack), label("10", quarter), clip, gobo}));
}

TEST_F(DisplayListTest, OpacitiesOfParentsAndChildrenMultiply) {
  views.setAlpha(ViewId::container, 0.5);
  views.setAlpha(ViewId::goboView, 0.5);
  views.setAlpha(ViewId::goboImage, 0.5);
  views.setText(ViewId::goboImage, "star");
  const DisplayItem gobo{ViewContent::image, kWhole, kWhite, 0.125, "star", 0};
  EXPECT_EQ(list(), (DisplayList{fill(kBlack, 0.5), gobo}));
}

TEST_F(DisplayListTest, AHiddenParentHidesItsChildren) {
  showContainer();
  views.setText(ViewId::mapNoSeatOverlayLabel, "No seat");
  views.setAlpha(ViewId::mapNoSeatOverlayView, 1);
  EXPECT_EQ(list(), DisplayList{fill(kBlack)});

  views.setHidden(ViewId::mapNoSeatOverlayView, false);
  // 280 points at most, 124 high, centred in 390 × 844; white of alpha 0.4.
  const DisplayItem notice{ViewContent::text,         {55, 360, 280, 124}, kWhite,
                           static_cast<double>(0.4F), "No seat",           14};
  EXPECT_EQ(list(), (DisplayList{fill(kBlack), notice}));
}

TEST_F(DisplayListTest, FollowsTheSizeOfTheContainer) {
  showContainer();
  const DisplayList list = displayListOf(views, {100, 50});
  ASSERT_EQ(list.size(), 1U);
  EXPECT_EQ(list[0].frame, (Rect{0, 0, 100, 50}));
}

TEST_F(DisplayListTest, ShowsTheMomentAndNotWhatWasSet) {
  views.animateAlpha({{ViewId::container, 1}}, {.duration = milliseconds(1000)});
  views.animateLight(kWhite, milliseconds(1000), {});
  EXPECT_TRUE(list().empty());
  loop.runFor(milliseconds(500));
  // Half way in time is half way in value, whatever the easing: it is symmetric.
  EXPECT_EQ(list(), DisplayList{fill({0.5F, 0.5F, 0.5F, 1}, 0.5)});
  loop.runFor(milliseconds(500));
  EXPECT_EQ(list(), DisplayList{fill(kWhite)});
}

}  // namespace
}  // namespace halvora
