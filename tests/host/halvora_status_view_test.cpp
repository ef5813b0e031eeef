// SPDX-License-Identifier: Apache-2.0
// The status panel's value: the panel that it makes, the fields that it hands over, and its size.
#include <memory>
#include <optional>
#include <utility>

#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/virtual/virtual_phone.h"
#include "halvora/host.h"
#include "tests/host/phone_of_the_process.h"

namespace halvora {
namespace {

// No field has its default.
const StatusPanelFields kFields{.statusTextColour = colourOfBytes(1, 2, 3),
                                .statusTextFontName = "Serif",
                                .statusTextFontSize = 21,
                                .statusTextAlignment = TextAlignment::right,
                                .actionButtonColour = colourOfBytes(4, 5, 6),
                                .actionButtonTitleColour = colourOfBytes(7, 8, 9),
                                .actionButtonTitleFontName = "Sans",
                                .actionButtonTitleFontSize = 19,
                                .actionButtonHeight = 52,
                                .defaultVenueId = 7};

struct HostStatusViewTest : testing::Test {
  EmbeddedEngine embedded() { return {phone.platform(), engine}; }
  HalvoraStatusView view(StatusPanelFields fields = {}) {
    return HalvoraStatusView(embedded(), std::move(fields));
  }

  const ExactJsonReader reader;
  VirtualPhone phone{reader};
  HalvoraViewController engine{phone.platform()};
};

TEST_F(HostStatusViewTest, ItsTenFieldsHaveThePanelsNames) {
  const HalvoraStatusView made = view(kFields);
  EXPECT_EQ(made.statusTextColour, colourOfBytes(1, 2, 3));
  EXPECT_EQ(made.statusTextFontName, "Serif");
  EXPECT_EQ(made.statusTextFontSize, 21);
  EXPECT_EQ(made.statusTextAlignment, TextAlignment::right);
  EXPECT_EQ(made.actionButtonColour, colourOfBytes(4, 5, 6));
  EXPECT_EQ(made.actionButtonTitleColour, colourOfBytes(7, 8, 9));
  EXPECT_EQ(made.actionButtonTitleFontName, "Sans");
  EXPECT_EQ(made.actionButtonTitleFontSize, 19);
  EXPECT_EQ(made.actionButtonHeight, 52);
  EXPECT_EQ(made.defaultVenueId, 7);
}

TEST_F(HostStatusViewTest, TakesItsFieldsInOrder) {
  const StatusPanelFields inOrder{colourOfBytes(1, 2, 3),
                                  "Serif",
                                  21,
                                  TextAlignment::right,
                                  colourOfBytes(4, 5, 6),
                                  colourOfBytes(7, 8, 9),
                                  "Sans",
                                  19,
                                  52,
                                  7};
  EXPECT_EQ(inOrder, kFields);
}

TEST_F(HostStatusViewTest, TheCoordinatorHasAPanelBoundToTheEngine) {
  const auto coordinator = view().makeCoordinator();
  EXPECT_EQ(&coordinator->mainViewController, &engine);
  coordinator->statusViewController->initBluetoothPermission();
  phone.loop.runFor(milliseconds(1500));
  EXPECT_TRUE(phone.bluetooth.isScanning());
}

TEST_F(HostStatusViewTest, TheCoordinatorsPanelHasTheTenFields) {
  EXPECT_EQ(view(kFields).makeCoordinator()->statusViewController->fields(), kFields);
}

TEST_F(HostStatusViewTest, EachCoordinatorHasAPanelOfItsOwn) {
  const auto first = view(kFields).makeCoordinator();
  const auto second = view().makeCoordinator();
  EXPECT_NE(first->statusViewController, second->statusViewController);
  EXPECT_EQ(first->statusViewController->fields(), kFields);
  EXPECT_EQ(second->statusViewController->fields(), StatusPanelFields());
}

TEST_F(HostStatusViewTest, TheControllerIsTheCoordinatorsPanelWithTheFieldsOnceMore) {
  const auto coordinator = view().makeCoordinator();
  HalvoraStatusViewController& panel = view(kFields).makeController(*coordinator);
  EXPECT_EQ(&panel, coordinator->statusViewController.get());
  EXPECT_EQ(panel.fields(), kFields);
}

TEST_F(HostStatusViewTest, AChangeOfTheFontSizeIsSeenAtTheNextUpdate) {
  HalvoraStatusView placed = view(kFields);
  const auto coordinator = placed.makeCoordinator();
  HalvoraStatusViewController& panel = placed.makeController(*coordinator);
  panel.viewDidLoad();
  EXPECT_EQ(panel.views().statusTextLabel.font.size, 21);
  placed.statusTextFontSize = 30;
  EXPECT_EQ(panel.views().statusTextLabel.font.size, 21);
  placed.updateController(&panel);
  EXPECT_EQ(panel.views().statusTextLabel.font.size, 30);
}

TEST_F(HostStatusViewTest, UpdatingCopiesAllTenFields) {
  const auto coordinator = view().makeCoordinator();
  view(kFields).updateController(coordinator->statusViewController.get());
  EXPECT_EQ(coordinator->statusViewController->fields(), kFields);
}

TEST_F(HostStatusViewTest, UpdatingWhatIsNoPanelDoesNothing) {
  const auto coordinator = view(kFields).makeCoordinator();
  view().updateController(nullptr);
  EXPECT_EQ(coordinator->statusViewController->fields(), kFields);
}

// A panel of that preferred height, 320 wide.
struct HostStatusViewSizeTest : HostStatusViewTest {
  HalvoraStatusViewController& panelOfHeight(double height) {
    StatusPanelFace face;
    face.fittingHeight = [height](double) { return height; };
    coordinator = view().makeCoordinator(face);
    HalvoraStatusViewController& panel = view().makeController(*coordinator);
    panel.viewDidLoad();
    panel.viewDidLayoutSubviews(320);
    return panel;
  }

  std::unique_ptr<HalvoraStatusView::Coordinator> coordinator;
};

TEST_F(HostStatusViewSizeTest, IsThePreferredHeightAsWideAsProposed) {
  EXPECT_EQ(view().sizeThatFits({250, 99}, &panelOfHeight(80)), (Size{250, 80}));
}

TEST_F(HostStatusViewSizeTest, WithoutAProposedWidthItIsThePreferredSize) {
  const HalvoraStatusViewController& panel = panelOfHeight(80);
  EXPECT_EQ(view().sizeThatFits({}, &panel), panel.preferredContentSize());
  EXPECT_EQ(view().sizeThatFits({std::nullopt, 99}, &panel)->height, 80);
}

TEST_F(HostStatusViewSizeTest, APreferredHeightOf0LeavesItToTheFace) {
  EXPECT_EQ(view().sizeThatFits({250, 99}, &panelOfHeight(0)), std::nullopt);
}

TEST_F(HostStatusViewSizeTest, AnotherControllerLeavesItToTheFace) {
  EXPECT_EQ(view().sizeThatFits({250, 99}, nullptr), std::nullopt);
}

TEST(HostStatusViewOfTheProcess, MakesTheEngineThatALightViewThenShows) {
  const auto panel = HalvoraStatusView(platformOfTheProcess()).makeCoordinator();
  const auto light = HalvoraView(platformOfTheProcess()).makeCoordinator();
  EXPECT_EQ(&panel->mainViewController, &light->mainViewController);
  EXPECT_EQ(&panel->mainViewController,
            &HalvoraViewController::sharedInstance(platformOfTheProcess()));
}

}  // namespace
}  // namespace halvora
