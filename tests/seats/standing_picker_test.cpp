// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/seats/wizard_room.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::vector<RowSpec> kCorner = {{"1", {{"a", 10, 5}, {"b", 20, 5}, {"c", 10, 15}}}};
/// Three by three, the fifth in the middle.
const std::vector<RowSpec> kSquare = {{"1", {{"a", 0, 0}, {"b", 1, 0}, {"c", 2, 0}}},
                                      {"2", {{"a", 0, 1}, {"b", 1, 1}, {"c", 2, 1}}},
                                      {"3", {{"a", 0, 2}, {"b", 1, 2}, {"c", 2, 2}}}};
const std::vector<SectionSpec> kFloor = {{"Standing Floor", kSquare}, {"A", kSquare}};
constexpr const char* kPlan = "HVAssets/Maps/Venue-7/standing-overlay.png";

TEST(StandingStep, SelectsTheMiddleAtOnce) {
  WizardRoom room(kFloor);
  room.inputs.hasLiveVenueSignal = true;
  auto& wizard = room.load();
  EXPECT_TRUE(wizard.views().standingDotView.hidden);
  EXPECT_THAT(wizard.standingSeatPoints(), IsEmpty());
  wizard.pickerDidSelectRow(1);
  EXPECT_TRUE(wizard.views().standingDotView.hidden);
  EXPECT_FALSE(wizard.isStandingStepActive());
  EXPECT_EQ(wizard.views().titleLabel.text, "Select Seat") << "still at the section step";
  EXPECT_EQ(wizard.views().stepLabel.text.substr(0, 15), "We need to know");
  wizard.nextTapped();
  EXPECT_TRUE(wizard.isStandingStepActive());
  EXPECT_EQ(stateOf(wizard), (WizardState{1, 0, 1, 1}));
  EXPECT_EQ(wizard.views().nextButton.title, "Confirm Location");
  EXPECT_TRUE(wizard.views().nextButton.enabled);
  EXPECT_FALSE(wizard.views().standingDotView.hidden);
  EXPECT_EQ(wizard.standingSeatPoints().size(), 9U);
}

TEST(StandingStep, ShowsThePlanInThePickersPlace) {
  WizardRoom room(kFloor);
  auto& wizard = room.loadAtPlan();
  EXPECT_TRUE(wizard.views().pickerView.hidden);
  EXPECT_FALSE(wizard.views().standingSelectorContainerHidden);
  EXPECT_EQ(wizard.views().pickerView.reloads, 1U) << "a hidden picker is not reloaded";
  wizard.backTapped();
  EXPECT_FALSE(wizard.views().pickerView.hidden);
  EXPECT_TRUE(wizard.views().standingSelectorContainerHidden);
  EXPECT_EQ(wizard.views().pickerView.reloads, 2U);
  EXPECT_EQ(wizard.views().pickerView.selectedRow, 1);
}

TEST(StandingStep, ConfirmsARealSeat) {
  WizardRoom room(kFloor);
  auto& wizard = room.loadAtPlan();
  wizard.handleStandingTap({99, 99});
  wizard.nextTapped();
  EXPECT_THAT(room.chosen, ElementsAre(Chosen{"Standing Floor", "3", "c", 2, 2}));
  EXPECT_TRUE(wizard.isDismissed());
}

TEST(StandingStep, PutsTheDotOfAStoredChoiceBack) {
  WizardRoom room(kFloor);
  room.inputs.hasLiveVenueSignal = true;
  auto& wizard = room.loadWith({"Standing Floor", "3", "a"});
  wizard.nextTapped();
  wizard.viewDidLayoutSubviews({200, 100});
  EXPECT_EQ(stateOf(wizard), (WizardState{1, 0, 2, 0}));
  EXPECT_EQ(wizard.views().standingDotView.center, (Point{12, 88}));
}

TEST(StandingStep, SelectsTheMiddleForAStoredChoiceWithoutItsSeat) {
  WizardRoom room(kFloor);
  room.inputs.hasLiveVenueSignal = true;
  auto& wizard = room.loadWith({"Standing Floor", "3", "z"});
  wizard.nextTapped();
  EXPECT_EQ(stateOf(wizard), (WizardState{1, 0, 1, 1}));
}

TEST(StandingStep, SelectsTheMiddleWhereTheSeatIsLost) {
  WizardRoom room(kFloor);
  auto& wizard = room.loadAtPlan();
  wizard.handleStandingTap({0, 0});
  wizard.pickerDidSelectRow(40);
  EXPECT_EQ(stateOf(wizard), (WizardState{1, 0, 1, 1}));
}

TEST(StandingStep, KeepsTheChoiceOnTheWayBackAndAgainForward) {
  WizardRoom room(kFloor);
  auto& wizard = room.loadAtPlan();
  wizard.handleStandingTap({0, 0});
  wizard.backTapped();
  EXPECT_EQ(stateOf(wizard), (WizardState{0, 0, 0, 0}));
  wizard.nextTapped();
  EXPECT_EQ(stateOf(wizard), (WizardState{1, 0, 0, 0}));
  EXPECT_EQ(wizard.views().standingDotView.center, (Point{12, 12}));
}

TEST(StandingStep, AnotherStandingSectionHasItsOwnPoints) {
  WizardRoom room({{"Standing Floor", kSquare}, {"Standing Pit", kCorner}});
  auto& wizard = room.loadAtPlan();
  EXPECT_EQ(wizard.standingSeatPoints().size(), 9U);
  wizard.backTapped();
  wizard.pickerDidSelectRow(2);
  wizard.nextTapped();
  EXPECT_EQ(wizard.standingSeatPoints(),
            (std::vector<StandingSeatPoint>{{0, 0, 0, 0}, {0, 1, 1, 0}, {0, 2, 0, 1}}));
  EXPECT_EQ(stateOf(wizard), (WizardState{1, 1, 0, 0})) << "all are equally far from the middle";
  EXPECT_EQ(wizard.buildStandingSeatPointsForSectionIndex(0).size(), 9U);
  EXPECT_THAT(wizard.buildStandingSeatPointsForSectionIndex(-1), IsEmpty());
  EXPECT_THAT(wizard.buildStandingSeatPointsForSectionIndex(2), IsEmpty());
}

TEST(StandingTouch, SelectsTheNearestSeatAndTheDotSnapsToIt) {
  WizardRoom room({{"Standing", kCorner}});
  auto& wizard = room.loadAtPlan({100, 200});
  wizard.handleStandingTap({60, 40});
  EXPECT_EQ(stateOf(wizard), (WizardState{1, 0, 0, 1}));
  EXPECT_EQ(wizard.views().standingDotView.center, (Point{88, 12}));
  EXPECT_FALSE(wizard.views().standingDotView.hidden);
}

TEST(StandingTouch, ADragActsOnEveryChangeLikeATap) {
  WizardRoom room(kFloor);
  auto& wizard = room.loadAtPlan();
  std::vector<std::int64_t> seats;
  for (const double x : {1.0, 20.0, 30.0, 60.0, 80.0, 99.0}) {
    wizard.handleStandingDrag({x, 50});
    seats.push_back(wizard.selectedSeatIndex());
  }
  EXPECT_THAT(seats, ElementsAre(0, 0, 1, 1, 2, 2));
  EXPECT_EQ(wizard.selectedRowIndex(), 1);
}

TEST(StandingTouch, OutsideTheAreaClampsToItsEdge) {
  WizardRoom room(kFloor);
  auto& wizard = room.loadAtPlan();
  wizard.handleStandingDrag({-30, -1});
  EXPECT_EQ(stateOf(wizard), (WizardState{1, 0, 0, 0}));
  wizard.handleStandingDrag({500, 100.5});
  EXPECT_EQ(stateOf(wizard), (WizardState{1, 0, 2, 2}));
}

TEST(StandingTouch, RefreshesTheTextsAndDoesNotReloadThePicker) {
  WizardRoom room(kFloor);
  auto& wizard = room.loadAtPlan();
  const std::uint64_t reloads = wizard.views().pickerView.reloads;
  room.kit.setText("hv_seat_picker_drag_hint", "Move it");
  wizard.handleStandingDrag({1, 1});
  EXPECT_EQ(wizard.views().stepLabel.text, "Move it");
  EXPECT_EQ(wizard.views().selectionSummaryLabel.text, "Standing Floor");
  EXPECT_EQ(wizard.views().pickerView.reloads, reloads);
}

TEST(StandingTouch, OfASingleSeatAlwaysSelectsItInTheCorner) {
  WizardRoom room({{"Standing", {{"1", {{"a", 70, 70}}}}}});
  auto& wizard = room.loadAtPlan();
  for (const Point touch : {Point{0, 0}, {99, 99}, {50, 1}, {-9, 400}}) {
    wizard.handleStandingTap(touch);
    EXPECT_EQ(stateOf(wizard), (WizardState{1, 0, 0, 0}));
    EXPECT_EQ(wizard.views().standingDotView.center, (Point{12, 12}));
  }
}

TEST(StandingTouch, OfTwoSeatsEquallyFarTakesTheOneListedFirst) {
  WizardRoom room({{"Standing", {{"1", {{"far", 2, 0}, {"near", 0, 0}}}}}});
  auto& wizard = room.loadAtPlan();
  wizard.handleStandingTap({50, 0});
  EXPECT_EQ(wizard.selectedSeatIndex(), 0);
}

TEST(StandingTouch, IsIgnoredByAnAreaWithoutSize) {
  WizardRoom room(kFloor);
  auto& wizard = room.loadAtPlan();
  wizard.handleStandingTap({99, 99});
  const Point center = wizard.views().standingDotView.center;
  EXPECT_EQ(center, (Point{88, 88}));
  for (const Size size : {Size{0, 0}, {0, 100}, {100, 0}}) {
    wizard.viewDidLayoutSubviews(size);
    wizard.handleStandingTap({0, 0});
    EXPECT_EQ(stateOf(wizard), (WizardState{1, 0, 2, 2}));
    EXPECT_EQ(wizard.views().standingDotView.center, center);
  }
}

TEST(StandingTouch, IsIgnoredOutsideTheStandingStep) {
  WizardRoom room(kFloor);
  auto& wizard = room.loadAtPlan();
  wizard.backTapped();
  wizard.handleStandingTap({99, 99});
  EXPECT_EQ(stateOf(wizard), (WizardState{0, 0, 1, 1})) << "at the section step";
  wizard.pickerDidSelectRow(2);
  wizard.nextTapped();
  wizard.handleStandingDrag({99, 99});
  EXPECT_EQ(stateOf(wizard), (WizardState{1, 1, -1, -1})) << "at the rows of a seated section";
}

TEST(StandingTouch, IsIgnoredByAWizardThatIsDismissed) {
  WizardRoom room(kFloor);
  auto& wizard = room.loadAtPlan();
  wizard.cancelTapped();
  wizard.handleStandingDrag({99, 99});
  EXPECT_EQ(stateOf(wizard), (WizardState{1, 0, 1, 1}));
}

TEST(StandingLayout, PlacesTheDotOnceTheAreaHasASize) {
  WizardRoom room(kFloor);
  room.inputs.hasLiveVenueSignal = true;
  auto& wizard = room.load();
  wizard.pickerDidSelectRow(1);
  wizard.nextTapped();
  EXPECT_EQ(wizard.views().standingDotView.center, (Point{0, 0}));
  wizard.viewDidLayoutSubviews({301, 201});
  EXPECT_EQ(wizard.views().standingDotView.center, (Point{151, 101}));
  wizard.viewDidLayoutSubviews({100, 400});
  EXPECT_EQ(wizard.views().standingDotView.center, (Point{50, 200}));
}

TEST(StandingLayout, OutsideTheStandingStepOnlyKeepsTheSize) {
  WizardRoom room(kFloor);
  auto& wizard = room.load();
  wizard.pickerDidSelectRow(1);
  wizard.viewDidLayoutSubviews({100, 100});
  EXPECT_EQ(stateOf(wizard), (WizardState{0, 0, -1, -1}));
  EXPECT_TRUE(wizard.views().standingDotView.hidden);
}

TEST(StandingPlanPicture, IsAbsentWithoutOneAndTheStageIsShown) {
  WizardRoom room(kFloor);
  room.inputs.venueId = 7;
  const SeatSelectorViews& views = room.load().views();
  EXPECT_EQ(views.standingOverlayImage, nullptr);
  EXPECT_FALSE(views.standingStageLabel.hidden);
  EXPECT_EQ(views.standingStageHeightConstraint, 64);
  EXPECT_EQ(views.standingDragAreaTopConstraint, 10);
}

TEST(StandingPlanPicture, HidesTheStage) {
  WizardRoom room(kFloor);
  room.inputs.venueId = 7;
  room.main.setResource(kPlan, pixmapOf(3, 2, 1, 2, 3));
  const SeatSelectorViews& views = room.loadAtPlan().views();
  ASSERT_NE(views.standingOverlayImage, nullptr);
  EXPECT_EQ(views.standingOverlayImage->width, 3U);
  EXPECT_TRUE(views.standingStageLabel.hidden);
  EXPECT_EQ(views.standingStageHeightConstraint, 0);
  EXPECT_EQ(views.standingDragAreaTopConstraint, 0);
}

TEST(StandingPlanPicture, IsLookedForUnderFourNamesInOrder) {
  const std::vector<std::string> names = {
      "HVAssets/Maps/Venue-7/standing-overlay.png", "HVAssets/Maps/Venue-7/standing_overlay.png",
      "HVAssets/Maps/Venue-7/standing-overlay.PNG", "HVAssets/Maps/Venue-7/standing_overlay.PNG"};
  for (std::size_t first = 0; first < names.size(); ++first) {
    WizardRoom room(kFloor);
    room.inputs.venueId = 7;
    for (std::size_t at = first; at < names.size(); ++at) {
      room.main.setResource(names[at], pixmapOf(static_cast<int>(at) + 1, 1, 0, 0, 0));
    }
    const auto image = room.load().views().standingOverlayImage;
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->width, first + 1);
    EXPECT_EQ(room.main.reads,
              std::vector<std::string>(names.begin(),
                                       names.begin() + static_cast<std::ptrdiff_t>(first) + 1));
  }
}

TEST(StandingPlanPicture, ThatCannotBeDecodedIsPassedOver) {
  WizardRoom room(kFloor);
  room.inputs.venueId = 7;
  room.main.setResource(kPlan, "no picture");
  room.main.setResource("HVAssets/Maps/Venue-7/standing_overlay.PNG", pixmapOf(5, 1, 0, 0, 0));
  const auto image = room.load().views().standingOverlayImage;
  ASSERT_NE(image, nullptr);
  EXPECT_EQ(image->width, 5U);
}

TEST(StandingPlanPicture, IsNotLookedForWithoutAVenue) {
  WizardRoom room(kFloor);
  for (const std::int64_t venue : {std::int64_t{0}, std::int64_t{-7}, INT64_MIN}) {
    room.inputs.venueId = venue;
    EXPECT_EQ(room.load().views().standingOverlayImage, nullptr);
  }
  EXPECT_THAT(room.main.reads, IsEmpty());
  room.inputs.venueId = 7;
  room.load();
  const std::size_t reads = room.main.reads.size();
  room.inputs.venueId = 0;
  room.load();
  EXPECT_EQ(room.main.reads.size(), reads) << "nor after a venue";
}

TEST(StandingPlanPicture, IsDecodedOnceAVenue) {
  WizardRoom room(kFloor);
  room.inputs.venueId = 7;
  room.main.setResource(kPlan, pixmapOf(3, 2, 1, 2, 3));
  const auto image = room.loadAtPlan().views().standingOverlayImage;
  auto& wizard = room.loadAtPlan();
  for (double x = 0; x < 100; x += 5) wizard.handleStandingDrag({x, x});
  EXPECT_EQ(wizard.views().standingOverlayImage, image) << "the same in both wizards";
  EXPECT_EQ(room.decoder.calls, 1);

  room.inputs.venueId = 8;
  EXPECT_EQ(room.loadAtPlan().views().standingOverlayImage, nullptr);
  const std::size_t reads = room.main.reads.size();
  room.loadAtPlan().handleStandingDrag({1, 1});
  EXPECT_EQ(room.main.reads.size(), reads) << "nor is a missing one looked for again";
}

TEST(StandingHundredThousandSeats, MakeTheirPointsOnceASection) {
  std::vector<RowSpec> rows;
  for (int row = 0; row < 400; ++row) {
    rows.push_back({std::to_string(row), {}});
    for (int seat = 0; seat < 250; ++seat) rows.back().seats.push_back({"s", seat, row});
  }
  WizardRoom room({{"Standing", rows}});
  auto& wizard = room.loadAtPlan({249, 399});
  EXPECT_EQ(wizard.standingSeatPoints().size(), 100'000U);
  const StandingSeatPoint* points = wizard.standingSeatPoints().data();
  for (int step = 0; step < 200; ++step) {
    wizard.handleStandingDrag({static_cast<double>(step), static_cast<double>(2 * step)});
    EXPECT_EQ(stateOf(wizard), (WizardState{1, 0, 2 * step, step}));
    wizard.viewDidLayoutSubviews({249, 399});
  }
  EXPECT_EQ(wizard.standingSeatPoints().data(), points);
}

}  // namespace
}  // namespace halvora
