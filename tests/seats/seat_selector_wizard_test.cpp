// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/seats/wizard_room.h"

namespace halvora {
namespace {

using testing::ElementsAre;

const std::vector<RowSpec> kRows = {{"Row 1", {{"Seat 1", 1, 1}, {"Seat 2", 2, 1}}},
                                    {"Row 2", {{"Seat 1", 1, 2}, {"Seat 2", 2, 2}}}};
const std::vector<SectionSpec> kTwoStanding = {
    {"Standing Floor", kRows}, {"A", kRows}, {"Standing Pit", kRows}};
const std::vector<SectionSpec> kSeated = {{"A", kRows}, {"B", {{"Row 9", {{"Seat 5", 50, 90}}}}}};

TEST(SeatSelectorSections, PutStandingOnesFirstAndKeepTheOrderOfEachGroup) {
  WizardRoom room({{"C", kRows},
                   {"Standing Floor", kRows},
                   {"A", kRows},
                   {"B", kRows},
                   {"North standing", kRows}});
  EXPECT_THAT(namesOf(room.load().sections()),
              ElementsAre("Standing Floor", "North standing", "C", "A", "B"));
}

TEST(SeatSelectorSections, StandingFloorAndPitComeBeforeAAndAreLabelledStanding) {
  WizardRoom room(kTwoStanding);
  auto& wizard = room.load();
  EXPECT_THAT(namesOf(wizard.sections()), ElementsAre("Standing Floor", "Standing Pit", "A"));
  EXPECT_THAT(pickerTitles(wizard), ElementsAre("Select section...", "Standing", "Standing", "A"));
  room.kit.setText("hv_seat_picker_standing_label", "Stehplatz");
  EXPECT_THAT(pickerTitles(wizard),
              ElementsAre("Select section...", "Stehplatz", "Stehplatz", "A"));
}

TEST(SeatSelectorSections, MayBeOneOrNone) {
  WizardRoom one({{"Standing", kRows}});
  EXPECT_EQ(one.load().sections().size(), 1U);

  WizardRoom none({});
  for (int round = 0; round < 2; ++round) {
    auto& wizard = none.load();
    EXPECT_TRUE(wizard.sections().empty());
    EXPECT_THAT(pickerTitles(wizard), ElementsAre("Select section..."));
    EXPECT_FALSE(wizard.views().nextButton.enabled);
    EXPECT_EQ(wizard.views().nextButton.alpha, 0.5);
    none.inputs.map = nullptr;
  }
}

TEST(SeatSelectorPredicates, TellStandingSectionsByIndex) {
  WizardRoom room(kTwoStanding);
  auto& wizard = room.load();
  EXPECT_TRUE(wizard.isStandingSectionAtIndex(0));
  EXPECT_TRUE(wizard.isStandingSectionAtIndex(1));
  for (const std::int64_t index : {-1, 2, 3, 99}) {
    EXPECT_FALSE(wizard.isStandingSectionAtIndex(index)) << index;
  }
  EXPECT_EQ(wizard.maxStepForCurrentSelection(), 2) << "nothing is selected";
  wizard.pickerDidSelectRow(1);
  EXPECT_EQ(wizard.maxStepForCurrentSelection(), 1);
  wizard.pickerDidSelectRow(3);
  EXPECT_EQ(wizard.maxStepForCurrentSelection(), 2);
}

TEST(SeatSelectorPicker, StartsAtTheSectionsWithNothingSelected) {
  WizardRoom room(kSeated);
  auto& wizard = room.load();
  EXPECT_EQ(stateOf(wizard), (WizardState{0, -1, -1, -1}));
  EXPECT_THAT(pickerTitles(wizard), ElementsAre("Select section...", "A", "B"));
  EXPECT_TRUE(wizard.currentRows().empty());
  EXPECT_TRUE(wizard.currentSeats().empty());
  EXPECT_THAT(namesOf(wizard.itemsForCurrentStep()), ElementsAre("A", "B"));
  EXPECT_FALSE(wizard.views().pickerView.hidden);
  EXPECT_TRUE(wizard.views().standingSelectorContainerHidden);
}

TEST(SeatSelectorPicker, OffersTheRowsOfTheSectionAndTheSeatsOfTheRow) {
  WizardRoom room(kSeated);
  auto& wizard = room.load();
  wizard.pickerDidSelectRow(2);
  EXPECT_EQ(stateOf(wizard), (WizardState{0, 1, -1, -1}));
  wizard.nextTapped();
  EXPECT_EQ(stateOf(wizard), (WizardState{1, 1, -1, -1}));
  EXPECT_THAT(pickerTitles(wizard), ElementsAre("Select row...", "Row 9"));
  wizard.pickerDidSelectRow(1);
  wizard.nextTapped();
  EXPECT_EQ(stateOf(wizard), (WizardState{2, 1, 0, -1}));
  EXPECT_THAT(pickerTitles(wizard), ElementsAre("Select seat...", "Seat 5"));
  wizard.pickerDidSelectRow(1);
  EXPECT_EQ(stateOf(wizard), (WizardState{2, 1, 0, 0}));
  EXPECT_THAT(namesOf(wizard.currentRows()), ElementsAre("Row 9"));
  EXPECT_THAT(namesOf(wizard.currentSeats()), ElementsAre("Seat 5"));
  EXPECT_THAT(namesOf(wizard.itemsForCurrentStep()), ElementsAre("Seat 5"));
}

TEST(SeatSelectorPicker, CallsOnlySectionsStanding) {
  WizardRoom room(kTwoStanding);
  auto& wizard = room.load();
  wizard.pickerDidSelectRow(3);
  wizard.nextTapped();
  EXPECT_THAT(pickerTitles(wizard), ElementsAre("Select row...", "Row 1", "Row 2"));
}

TEST(SeatSelectorPicker, HasNoTitleBeyondItsRows) {
  WizardRoom room(kSeated);
  auto& wizard = room.load();
  EXPECT_EQ(wizard.titleForPickerRow(3), "");
  EXPECT_EQ(wizard.titleForPickerRow(-1), "");
  EXPECT_EQ(wizard.titleForPickerRow(INT64_MIN), "");
}

TEST(SeatSelectorPicker, ReselectingTheSameSectionKeepsRowAndSeat) {
  WizardRoom room(kSeated);
  auto& wizard = room.loadWith({"A", "Row 2", "Seat 2"});
  wizard.pickerDidSelectRow(1);
  EXPECT_EQ(stateOf(wizard), (WizardState{0, 0, 1, 1}));
}

TEST(SeatSelectorPicker, ChangingTheSectionClearsRowAndSeat) {
  WizardRoom room(kSeated);
  auto& wizard = room.loadWith({"A", "Row 2", "Seat 2"});
  wizard.pickerDidSelectRow(2);
  EXPECT_EQ(stateOf(wizard), (WizardState{0, 1, -1, -1}));
  auto& again = room.load();
  again.pickerDidSelectRow(0);
  EXPECT_EQ(stateOf(again), (WizardState{0, -1, -1, -1}));
}

TEST(SeatSelectorPicker, SelectingARowClearsTheSeatEvenIfItIsTheSame) {
  WizardRoom room(kSeated);
  auto& wizard = room.loadWith({"A", "Row 2", "Seat 2"});
  wizard.nextTapped();
  wizard.pickerDidSelectRow(2);
  EXPECT_EQ(stateOf(wizard), (WizardState{1, 0, 1, -1}));
}

TEST(SeatSelectorPicker, BackOnThePlaceholderAtTheRowStepDisablesNext) {
  WizardRoom room(kSeated);
  auto& wizard = room.loadWith({"A", "Row 2", "Seat 2"});
  wizard.nextTapped();
  EXPECT_TRUE(wizard.views().nextButton.enabled);
  wizard.pickerDidSelectRow(0);
  EXPECT_EQ(stateOf(wizard), (WizardState{1, 0, -1, -1}));
  EXPECT_FALSE(wizard.views().nextButton.enabled);
  EXPECT_EQ(wizard.views().nextButton.alpha, 0.5);
}

TEST(SeatSelectorPicker, ReloadsWithItsStepAndNeverWhileItIsTurned) {
  WizardRoom room(kSeated);
  auto& wizard = room.load();
  const PickerView& picker = wizard.views().pickerView;
  EXPECT_EQ(picker.reloads, 1U);
  EXPECT_EQ(picker.selectedRow, 0);
  wizard.pickerDidSelectRow(1);
  wizard.pickerDidSelectRow(1);
  EXPECT_EQ(picker.reloads, 1U);
  wizard.nextTapped();
  EXPECT_EQ(picker.reloads, 2U);
  EXPECT_EQ(picker.selectedRow, 0) << "the placeholder: no row is selected";
  wizard.pickerDidSelectRow(2);
  wizard.nextTapped();
  EXPECT_EQ(picker.reloads, 3U);
  wizard.backTapped();
  EXPECT_EQ(picker.reloads, 4U);
  EXPECT_EQ(picker.selectedRow, 2);
  wizard.backTapped();
  EXPECT_EQ(picker.reloads, 5U);
  EXPECT_EQ(picker.selectedRow, 1);
  wizard.updateWizardUI();
  EXPECT_EQ(picker.reloads, 6U);
}

TEST(SeatSelectorPicker, GoesToItsLastRowForASelectionBeyondIt) {
  WizardRoom room(kSeated);
  auto& wizard = room.load();
  wizard.pickerDidSelectRow(90);
  wizard.updateWizardUI();
  EXPECT_EQ(wizard.views().pickerView.selectedRow, 2);
  EXPECT_TRUE(wizard.currentRows().empty());
  wizard.nextTapped();
  wizard.pickerDidSelectRow(5);
  EXPECT_FALSE(wizard.views().nextButton.enabled) << "there is nothing to select";
  wizard.updateWizardUI();
  EXPECT_EQ(wizard.views().pickerView.selectedRow, 0);
}

TEST(SeatSelectorPicker, ARowBeyondTheSectionHasNoSeats) {
  WizardRoom room(kSeated);
  auto& wizard = room.loadWith({"A", "Row 2", "Seat 2"});
  wizard.nextTapped();
  wizard.pickerDidSelectRow(90);
  EXPECT_EQ(wizard.views().selectionSummaryLabel.text, "A  |  --  |  --");
  wizard.nextTapped();
  EXPECT_THAT(pickerTitles(wizard), ElementsAre("Select seat..."));
  EXPECT_FALSE(wizard.views().nextButton.enabled);
}

TEST(SeatSelectorPicker, TitlesAreWhiteInTheStatusFontAt31) {
  WizardRoom room(kSeated);
  room.inputs.statusTextFontName = room.font = "Avenir";
  auto& wizard = room.load();
  EXPECT_EQ(wizard.views().pickerView.title.font, (Font{"Avenir", 31, FontWeight::regular}));
  EXPECT_EQ(wizard.views().pickerView.title.colour, kWhite);
}

TEST(SeatSelectorStored, AChoiceIsRestoredAndTheSectionStepShown) {
  WizardRoom room(kSeated);
  auto& wizard = room.loadWith({"B", "Row 9", "Seat 5"});
  EXPECT_EQ(stateOf(wizard), (WizardState{0, 1, 0, 0}));
  EXPECT_EQ(wizard.views().pickerView.selectedRow, 2);
  EXPECT_EQ(wizard.views().selectionSummaryLabel.text, "B  |  Row 9  |  Seat 5");
  EXPECT_TRUE(wizard.views().nextButton.enabled);
}

TEST(SeatSelectorStored, AnAbsentRowLeavesOnlyTheSection) {
  WizardRoom room(kSeated);
  EXPECT_EQ(stateOf(room.loadWith({"A", "Row 3", "Seat 1"})), (WizardState{0, 0, -1, -1}));
}

TEST(SeatSelectorStored, AnAbsentSeatLeavesSectionAndRow) {
  WizardRoom room(kSeated);
  EXPECT_EQ(stateOf(room.loadWith({"A", "Row 2", "Seat 7"})), (WizardState{0, 0, 1, -1}));
}

TEST(SeatSelectorStored, AnAbsentSectionLeavesNothing) {
  WizardRoom room(kSeated);
  EXPECT_EQ(stateOf(room.loadWith({"C", "Row 1", "Seat 1"})), WizardState{});
}

TEST(SeatSelectorStored, NamesAreComparedExactly) {
  WizardRoom room(kSeated);
  EXPECT_EQ(stateOf(room.loadWith({"a", "Row 1", "Seat 1"})), WizardState{});
  EXPECT_EQ(stateOf(room.loadWith({"A", "row 1", "Seat 1"})), (WizardState{0, 0, -1, -1}));
  EXPECT_EQ(stateOf(room.loadWith({"A ", "Row 1", "Seat 1"})), WizardState{});
}

TEST(SeatSelectorStored, AnEmptyNameLeavesNothing) {
  WizardRoom room(kSeated);
  EXPECT_EQ(stateOf(room.loadWith({"", "Row 1", "Seat 1"})), WizardState{});
  EXPECT_EQ(stateOf(room.loadWith({"A", "", "Seat 1"})), WizardState{});
  EXPECT_EQ(stateOf(room.loadWith({"A", "Row 1", ""})), WizardState{});
}

TEST(SeatSelectorStored, TheFirstOfEqualNamesCounts) {
  WizardRoom room({{"A", {{"R", {{"S", 1, 1}, {"S", 2, 2}}}, {"R", {{"S", 3, 3}}}}},
                   {"A", {{"R", {{"S", 4, 4}}}}}});
  EXPECT_EQ(stateOf(room.loadWith({"A", "R", "S"})), (WizardState{0, 0, 0, 0}));
}

TEST(SeatSelectorStored, AStandingChoiceIsFoundInTheSortedMap) {
  WizardRoom room(kTwoStanding);
  EXPECT_EQ(stateOf(room.loadWith({"Standing Pit", "Row 2", "Seat 1"})), (WizardState{0, 1, 1, 0}));
}

TEST(SeatSelectorSummary, ShowsWhatIsSelectedSoFar) {
  WizardRoom room(kSeated);
  auto& wizard = room.load();
  const Label& summary = wizard.views().selectionSummaryLabel;
  EXPECT_EQ(summary.text, "--  |  --  |  --");
  wizard.pickerDidSelectRow(1);
  EXPECT_EQ(summary.text, "A  |  --  |  --");
  wizard.nextTapped();
  wizard.pickerDidSelectRow(2);
  EXPECT_EQ(summary.text, "A  |  Row 2  |  --");
  wizard.nextTapped();
  wizard.pickerDidSelectRow(1);
  EXPECT_EQ(summary.text, "A  |  Row 2  |  Seat 1");
  EXPECT_EQ(wizard.selectedNameForStep(0), "A");
  EXPECT_EQ(wizard.selectedNameForStep(1), "Row 2");
  EXPECT_EQ(wizard.selectedNameForStep(2), "Seat 1");
  EXPECT_EQ(wizard.selectedNameForStep(7), "Seat 1");
}

TEST(SeatSelectorSummary, IsTheNameAloneForAStandingSection) {
  WizardRoom room(kTwoStanding);
  auto& wizard = room.load();
  wizard.pickerDidSelectRow(2);
  EXPECT_EQ(wizard.views().selectionSummaryLabel.text, "Standing Pit");
}

TEST(SeatSelectorSummary, FollowsTheFormatOfTheStringTable) {
  WizardRoom room(kSeated);
  room.kit.setText("hv_seat_picker_summary_format", "%3$@ in %1$@");
  auto& wizard = room.load();
  EXPECT_EQ(wizard.wizardSeatSummaryWithSection("A", "1", "2"), "2 in A");
  EXPECT_EQ(wizard.wizardSeatSummaryWithSection(std::nullopt, "1", std::nullopt), "-- in --");
}

TEST(SeatSelectorButtons, BackIsHiddenAtTheFirstStepOnly) {
  WizardRoom room(kSeated);
  auto& wizard = room.loadWith({"A", "Row 1", "Seat 1"});
  const Button& back = wizard.views().backButton;
  EXPECT_TRUE(back.hidden);
  EXPECT_FALSE(back.enabled);
  for (int step = 1; step <= 2; ++step) {
    wizard.nextTapped();
    EXPECT_FALSE(back.hidden);
    EXPECT_TRUE(back.enabled);
    EXPECT_EQ(back.alpha, 1);
    EXPECT_EQ(back.title, "Back");
  }
}

TEST(SeatSelectorButtons, NextBecomesConfirmAtTheLastStep) {
  WizardRoom room(kSeated);
  auto& wizard = room.loadWith({"A", "Row 1", "Seat 1"});
  const Button& next = wizard.views().nextButton;
  EXPECT_EQ(next.title, "Next");
  wizard.nextTapped();
  EXPECT_EQ(next.title, "Next");
  wizard.nextTapped();
  EXPECT_EQ(next.title, "Confirm Seat");
  wizard.backTapped();
  EXPECT_EQ(next.title, "Next");
}

TEST(SeatSelectorButtons, NextIsEnabledOnceSomethingIsSelected) {
  WizardRoom room(kSeated);
  auto& wizard = room.load();
  const Button& next = wizard.views().nextButton;
  for (int step = 0; step <= 2; ++step) {
    EXPECT_FALSE(next.enabled);
    EXPECT_EQ(next.alpha, 0.5);
    wizard.pickerDidSelectRow(1);
    EXPECT_TRUE(next.enabled);
    EXPECT_EQ(next.alpha, 1);
    if (step < 2) wizard.nextTapped();
  }
}

TEST(SeatSelectorButtons, BackKeepsTheSelection) {
  WizardRoom room(kSeated);
  auto& wizard = room.loadWith({"A", "Row 2", "Seat 1"});
  wizard.nextTapped();
  wizard.nextTapped();
  wizard.backTapped();
  EXPECT_EQ(stateOf(wizard), (WizardState{1, 0, 1, 0}));
  wizard.backTapped();
  EXPECT_EQ(stateOf(wizard), (WizardState{0, 0, 1, 0}));
  wizard.backTapped();
  EXPECT_EQ(stateOf(wizard), (WizardState{0, 0, 1, 0})) << "there is nothing below";
}

TEST(SeatSelectorAlert, AStandingSectionNeedsALiveVenueSignal) {
  WizardRoom room(kTwoStanding);
  auto& wizard = room.load();
  wizard.pickerDidSelectRow(1);
  EXPECT_FALSE(wizard.presentedAlert());
  for (int round = 0; round < 3; ++round) {
    wizard.nextTapped();
    EXPECT_EQ(wizard.presentedAlert(),
              (Alert{"Standing Location At Venue",
                     "If you've got a standing ticket, please select your location once you've "
                     "arrived at the venue.",
                     "OK"}));
    EXPECT_EQ(stateOf(wizard), (WizardState{0, 0, -1, -1}));
    wizard.alertButtonTapped();
    EXPECT_FALSE(wizard.presentedAlert());
    EXPECT_EQ(stateOf(wizard), (WizardState{0, 0, -1, -1}));
  }
  EXPECT_FALSE(wizard.isDismissed());
}

TEST(SeatSelectorAlert, AlsoStopsAStoredStandingChoice) {
  WizardRoom room(kTwoStanding);
  auto& wizard = room.loadWith({"Standing Floor", "Row 1", "Seat 1"});
  wizard.nextTapped();
  EXPECT_TRUE(wizard.presentedAlert());
  EXPECT_EQ(wizard.currentStep(), 0);
}

TEST(SeatSelectorAlert, GoesWithTheWizardThatItStandsOver) {
  WizardRoom room(kTwoStanding);
  auto& wizard = room.load();
  wizard.pickerDidSelectRow(1);
  wizard.nextTapped();
  ASSERT_TRUE(wizard.presentedAlert());
  wizard.cancelTapped();
  EXPECT_FALSE(wizard.presentedAlert());
  wizard.nextTapped();
  EXPECT_FALSE(wizard.presentedAlert());
}

TEST(SeatSelectorAlert, IsNotForSeatedSections) {
  WizardRoom room(kTwoStanding);
  auto& wizard = room.load();
  wizard.pickerDidSelectRow(3);
  wizard.nextTapped();
  EXPECT_FALSE(wizard.presentedAlert());
  EXPECT_EQ(wizard.currentStep(), 1);
}

TEST(SeatSelectorResult, HandsOverTheItemsOnceAndIsDismissed) {
  WizardRoom room(kSeated);
  auto& wizard = room.loadWith({"A", "Row 2", "Seat 1"});
  wizard.nextTapped();
  wizard.nextTapped();
  EXPECT_TRUE(room.chosen.empty());
  EXPECT_FALSE(wizard.isDismissed());
  wizard.nextTapped();
  EXPECT_THAT(room.chosen, ElementsAre(Chosen{"A", "Row 2", "Seat 1", 1, 2}));
  EXPECT_TRUE(wizard.isDismissed());
  wizard.nextTapped();
  EXPECT_EQ(room.chosen.size(), 1U);
}

TEST(SeatSelectorResult, IsHandedOverBeforeTheDismissal) {
  WizardRoom room(kSeated);
  WizardController* shown = nullptr;
  int calls = 0;
  room.inputs.onSeatSelected = [&](const auto&, const auto&, const auto&) {
    ++calls;
    EXPECT_FALSE(shown->isDismissed());
    shown->nextTapped();
  };
  shown = &room.loadWith({"A", "Row 2", "Seat 1"});
  for (int tap = 0; tap < 3; ++tap) shown->nextTapped();
  EXPECT_EQ(calls, 1) << "a callback that taps again is not called again";
  EXPECT_TRUE(shown->isDismissed());
}

TEST(SeatSelectorResult, MayHaveNoListener) {
  WizardRoom room(kSeated);
  room.inputs.onSeatSelected = nullptr;
  auto& wizard = room.loadWith({"A", "Row 2", "Seat 1"});
  for (int tap = 0; tap < 3; ++tap) wizard.nextTapped();
  EXPECT_TRUE(wizard.isDismissed());
}

TEST(SeatSelectorResult, OutOfRangeDoesNothing) {
  WizardRoom room(kSeated);
  auto& wizard = room.loadWith({"A", "Row 2", "Seat 1"});
  wizard.nextTapped();
  wizard.nextTapped();
  for (const std::int64_t row : {0, 3, 99}) {
    wizard.pickerDidSelectRow(row);
    wizard.nextTapped();
    EXPECT_TRUE(room.chosen.empty());
    EXPECT_FALSE(wizard.isDismissed());
  }
  EXPECT_EQ(wizard.selectedNameForStep(2), "--");
}

TEST(SeatSelectorResult, CloseDismissesWithoutOne) {
  WizardRoom room(kSeated);
  auto& wizard = room.loadWith({"A", "Row 2", "Seat 1"});
  wizard.cancelTapped();
  EXPECT_TRUE(wizard.isDismissed());
  EXPECT_TRUE(room.chosen.empty());
}

TEST(SeatSelectorResult, NothingMovesAfterTheDismissal) {
  WizardRoom room(kSeated);
  auto& wizard = room.loadWith({"A", "Row 2", "Seat 1"});
  wizard.nextTapped();
  const WizardState before = stateOf(wizard);
  wizard.cancelTapped();
  wizard.nextTapped();
  wizard.backTapped();
  wizard.pickerDidSelectRow(1);
  wizard.handleStandingTap({1, 1});
  EXPECT_EQ(stateOf(wizard), before);
  EXPECT_TRUE(room.chosen.empty());
}

}  // namespace
}  // namespace halvora
