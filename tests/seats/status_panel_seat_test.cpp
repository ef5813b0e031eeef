// SPDX-License-Identifier: Apache-2.0
// The seat on the panel: what is shown of it, how it is chosen, the dot and its pulse.
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/seats/panel_bench.h"

namespace halvora {
namespace {

constexpr std::uint32_t kRedWord = 0xFFFF0000;

// The button and the summary

TEST(SeatSelectionUI, WithoutASeatOffersToSelectOne) {
  PanelBench bench(inVenue7());
  EXPECT_EQ(bench.shown(), "hidden hidden shown hidden shown shown");
  EXPECT_EQ(bench.views().seatSelectionButton.title, "Select Seat");
  EXPECT_TRUE(bench.views().seatSelectionButton.enabled);
  EXPECT_EQ(bench.summary(), "No seat selected");
  EXPECT_EQ(bench.dotText(), "hidden");
}

TEST(SeatSelectionUI, WithASeatOffersToChangeIt) {
  PanelBench bench(inVenue7());
  bench.storeSeat(7, {"A", "1", "10"}, {3, 4});
  bench.tick();
  EXPECT_EQ(bench.views().seatSelectionButton.title, "Change Seat");
  EXPECT_EQ(bench.summary(), "A  |  1  |  10");
  EXPECT_EQ(bench.dotText(), "amber");
}

TEST(SeatSelectionUI, AStandingPlaceIsALocation) {
  PanelBench bench(inVenue7());
  bench.storeSeat(7, {"Standing Floor", "R", "P1"}, {2, 7});
  bench.tick();
  EXPECT_EQ(bench.views().seatSelectionButton.title, "Change Location");
  EXPECT_EQ(bench.summary(), "Standing Floor");
}

TEST(SeatSelectionUI, AStoredChoiceWithAnEmptyPartIsNone) {
  PanelBench bench(inVenue7());
  for (const SeatNames& names :
       {SeatNames{"A", "", "10"}, SeatNames{"", "1", "10"}, SeatNames{"A", "1", ""}}) {
    bench.storeSeat(7, names, {3, 4});
    bench.tick();
    EXPECT_EQ(bench.summary(), "No seat selected");
    EXPECT_EQ(bench.views().seatSelectionButton.title, "Select Seat");
    EXPECT_EQ(bench.dotText(), "hidden");
  }
}

TEST(SeatSelectionUI, ItsTextsAreTheKitsButTheSummarysFormIsNot) {
  PanelBench bench(inVenue7());
  auto& strings = bench.phone.kitBundle.strings;
  strings["hv_seat_button_select"] = "kit: select";
  strings["hv_seat_button_change_seat"] = "kit: change seat";
  strings["hv_seat_button_change_location"] = "kit: change location";
  strings["hv_seat_summary_none"] = "kit: none";
  strings["hv_seat_picker_summary_format"] = "%@/%@/%@";
  bench.tick();
  EXPECT_EQ(bench.views().seatSelectionButton.title, "kit: select");
  EXPECT_EQ(bench.summary(), "kit: none");
  bench.storeSeat(7, {"A", "1", "10"}, {3, 4});
  bench.tick();
  EXPECT_EQ(bench.views().seatSelectionButton.title, "kit: change seat");
  EXPECT_EQ(bench.summary(), "A  |  1  |  10");
  bench.storeSeat(7, {"Standing Floor", "R", "P1"}, {2, 7});
  bench.tick();
  EXPECT_EQ(bench.views().seatSelectionButton.title, "kit: change location");
}

TEST(SeatSelectionUI, EveryVenueHasItsOwnSeatAndTheFlatKeysFollow) {
  PanelBench bench(inVenue7());
  bench.putMap(8, kBenchMap);
  bench.storeSeat(7, {"A", "1", "10"}, {3, 4});
  bench.tick();
  EXPECT_EQ(bench.flat("xPos") + " " + bench.flat("yPos") + " " + bench.flat("selectedSection") +
                " " + bench.flat("selectedRow") + " " + bench.flat("selectedSeat"),
            "3 4 A 1 10");
  bench.hearVenue(8);
  bench.tick();
  EXPECT_EQ(bench.summary(), "No seat selected");
  EXPECT_EQ(bench.flat("xPos") + " " + bench.flat("selectedSection"), "0 -");
  bench.hearVenue(7);
  bench.tick();
  EXPECT_EQ(bench.summary(), "A  |  1  |  10");
  EXPECT_EQ(bench.flat("xPos") + " " + bench.flat("selectedSection"), "3 A");
}

// Choosing

TEST(SeatSelection, TheWizardGetsWhatItNeeds) {
  PanelBench bench(inVenue7());
  bench.storeSeat(7, {"A", "2", "21"}, {5, 6});
  StatusPanelFields fields = bench.panel().fields();
  fields.statusTextFontName = "Known";
  fields.actionButtonColour = colourOfBytes(4, 5, 6);
  fields.actionButtonTitleColour = colourOfBytes(7, 8, 9);
  fields.actionButtonTitleFontName = "Known";
  fields.actionButtonTitleFontSize = 13;
  bench.panel().setFields(fields);
  bench.panel().openSeatSelector();
  const auto selector = bench.panel().presentedWizard();
  ASSERT_NE(selector, nullptr);
  EXPECT_EQ(selector->inputs().venueId, 7);
  EXPECT_EQ(selector->inputs().map, bench.panel().seatMap().seatMapSections());
  // The wizard lists the standing area first, as the document does.
  EXPECT_EQ(selector->numberOfPickerRows(), 4U);
  EXPECT_EQ(selector->currentStep(), 0);
  EXPECT_EQ(selector->selectedSectionIndex(), 1);
  EXPECT_EQ(selector->selectedRowIndex(), 1);
  EXPECT_EQ(selector->selectedSeatIndex(), 1);
  const SeatSelectorViews& views = selector->views();
  EXPECT_EQ(views.nextButton.background, MaybeColour(colourOfBytes(4, 5, 6)));
  EXPECT_EQ(views.nextButton.titleColour, colourOfBytes(7, 8, 9));
  EXPECT_EQ(views.nextButton.font.name, "Known");
  EXPECT_EQ(views.nextButton.font.size, 13);
  EXPECT_EQ(views.stepLabel.font.name, "Known");
}

TEST(SeatSelection, IsStoredAndItsTablesAreBuilt) {
  PanelBench bench(inVenue7());
  bench.putPixelMap(7, 1, {kRedWord, kRedWord});
  bench.choose(2, 2, 2);
  EXPECT_EQ(bench.storedSeat(7), (SeatPoint{5, 6}));
  EXPECT_EQ(bench.summary(), "A  |  2  |  21");
  EXPECT_EQ(bench.flat("xPos"), "5");
  EXPECT_EQ(bench.flat("yPos"), "6");
  EXPECT_EQ(bench.flat("selectedSection"), "A");
  EXPECT_EQ(bench.flat("selectedRow"), "2");
  EXPECT_EQ(bench.flat("selectedSeat"), "21");
  EXPECT_EQ(bench.tables(), 1U);
  EXPECT_TRUE(bench.isStoredReady(7));
  EXPECT_EQ(bench.dotText(), "green");
}

TEST(SeatSelection, WritesTheFlatKeysThenTheRecordAndThenWhatBecomesOfTheTables) {
  PanelBench bench(inVenue7());
  bench.storeSeat(7, {"A", "1", "10"}, {3, 4});
  bench.panel().storage().setPersistedSeatLUTReady(true, 7);
  bench.tick();
  bench.phone.defaults.log.drain();
  const std::uint64_t synchronisations = bench.phone.defaults.synchronisations;
  bench.choose(3, 1, 1);
  std::vector<std::string> keys;
  for (const auto& write : bench.phone.defaults.log.entries) keys.push_back(write.key);
  EXPECT_EQ(keys, (std::vector<std::string>{"xPos", "yPos", "selectedSection", "selectedSeat",
                                            "seatSelectionByVenue", "seatLUTReadyByVenue"}));
  // Once for each of the three, and once more for all of a choice before its tables are begun.
  EXPECT_GE(bench.phone.defaults.synchronisations, synchronisations + 4);
}

TEST(SeatSelection, IsShownAtOnceThoughThePanelIsStillCovered) {
  PanelBench bench(inVenue7());
  bench.panel().openSeatSelector();
  const auto selector = bench.panel().presentedWizard();
  ASSERT_NE(selector, nullptr);
  for (const std::int64_t pick : {2, 2, 1}) {
    selector->pickerDidSelectRow(pick);
    selector->nextTapped();
  }
  EXPECT_EQ(bench.summary(), "A  |  2  |  20");
  EXPECT_EQ(bench.views().seatSelectionButton.title, "Change Seat");
}

TEST(SeatSelection, GoesToTheVenueOfTheMapWhereNoneIsInForceAnyMore) {
  PanelBench bench;
  bench.putMap(7, kBenchMap);
  bench.hearVenue(7);
  bench.tick();
  bench.panel().openSeatSelector();
  const auto selector = bench.panel().presentedWizard();
  ASSERT_NE(selector, nullptr);
  bench.hearVenue(0);
  for (int step = 0; step < 3; ++step) {
    selector->pickerDidSelectRow(step == 0 ? 3 : 1);
    selector->nextTapped();
  }
  EXPECT_EQ(bench.storedSeat(7), (SeatPoint{9, 1}));
}

TEST(SeatSelection, AWizardThatOutlivesThePanelDoesNothing) {
  PanelBench bench(inVenue7());
  bench.panel().openSeatSelector();
  const auto selector = bench.panel().presentedWizard();
  bench.destroyPanel();
  for (int step = 0; step < 3; ++step) {
    selector->pickerDidSelectRow(step == 0 ? 2 : 1);
    selector->nextTapped();
  }
  EXPECT_EQ(SeatStorage(bench.phone.defaults).seatSelectionForVenueId(7), nullptr);
}

TEST(SeatSelection, WithOnlyADefaultVenueAStandingSectionCannotBeChosen) {
  PanelBench bench({.defaultVenueId = 12});
  bench.putMap(12, kBenchMap);
  bench.tick();
  EXPECT_EQ(bench.panel().seatMap().seatMapVenueId(), 12);
  bench.panel().openSeatSelector();
  auto selector = bench.panel().presentedWizard();
  ASSERT_NE(selector, nullptr);
  selector->pickerDidSelectRow(1);
  selector->nextTapped();
  EXPECT_NE(selector->presentedAlert(), std::nullopt);
  EXPECT_EQ(selector->currentStep(), 0);
  selector->cancelTapped();

  bench.hearVenue(12);
  bench.tick();
  bench.panel().openSeatSelector();
  selector = bench.panel().presentedWizard();
  selector->pickerDidSelectRow(1);
  selector->nextTapped();
  EXPECT_EQ(selector->currentStep(), 1);
}

// Precompute

TEST(SeatPrecompute, DoesNothingWithoutAPlaceOrAVenue) {
  PanelBench bench(inVenue7());
  bench.panel().startSeatLUTPrecomputeForVenueId(7, {-1, 2});
  bench.panel().startSeatLUTPrecomputeForVenueId(7, {1, -2});
  bench.panel().startSeatLUTPrecomputeForVenueId(0, {1, 2});
  EXPECT_FALSE(bench.panel().tables().isInProgress());
  EXPECT_EQ(bench.phone.defaults.find("seatLUTReadyByVenue"), nullptr);
}

TEST(SeatPrecompute, APlaceMayBeTheFirstOne) {
  PanelBench bench(inVenue7());
  bench.putPixelMap(7, 1, {kRedWord});
  bench.turn([&] { bench.panel().startSeatLUTPrecomputeForVenueId(7, {0, 0}); });
  EXPECT_EQ(bench.tables(), 1U);
}

TEST(SeatPrecompute, IsNotReadyFromItsStartUntilItsEnd) {
  PanelBench bench(inVenue7());
  bench.putPixelMap(7, 1, {kRedWord});
  bench.storeSeat(7, {"A", "1", "10"}, {3, 4});
  bench.panel().storage().setPersistedSeatLUTReady(true, 7);
  bench.tick();
  EXPECT_EQ(bench.dotText(), "green");
  bench.panel().startSeatLUTPrecomputeForVenueId(7, {3, 4});
  EXPECT_TRUE(bench.panel().tables().isInProgress());
  EXPECT_EQ(bench.panel().tables().lastDone(), 0);
  EXPECT_FALSE(bench.isStoredReady(7));
  EXPECT_EQ(bench.dotText(), "amber");
  bench.settle();
  EXPECT_FALSE(bench.panel().tables().isInProgress());
  EXPECT_EQ(bench.panel().tables().lastDone(), -1);
  EXPECT_TRUE(bench.isStoredReady(7));
  EXPECT_EQ(bench.dotText(), "green");
}

TEST(SeatPrecompute, IsNotStartedTwice) {
  PanelBench bench(inVenue7());
  bench.putPixelMap(7, 1, {kRedWord});
  bench.panel().startSeatLUTPrecomputeForVenueId(7, {3, 4});
  bench.panel().startSeatLUTPrecomputeForVenueId(7, {5, 6});
  bench.settle();
  EXPECT_EQ(bench.tables(), 1U);
  EXPECT_TRUE(bench.isStoredReady(7));
}

TEST(SeatPrecompute, ASecondOneLeavesTheFirstAlone) {
  PanelBench bench(inVenue7());
  bench.putPixelMap(7, 1, {kRedWord});
  bench.panel().showSeatLUTPrecomputeProgressWithDone(1, 3, "1");
  bench.panel().startSeatLUTPrecomputeForVenueId(7, {5, 6});
  EXPECT_EQ(bench.panel().tables().lastDone(), 1);
  EXPECT_EQ(bench.phone.defaults.find("seatLUTReadyByVenue"), nullptr);
  bench.settle();
  EXPECT_EQ(bench.tables(), 0U);
}

TEST(SeatPrecompute, ItsStartAndItsReportsRefreshTheStatus) {
  PanelBench bench(inVenue7());
  for (int map = 1; map <= 2; ++map) bench.putPixelMap(7, map, {kRedWord});
  bench.storeSeat(7, {"A", "1", "10"}, {3, 4});
  bench.tick();
  std::vector<std::string> seen;
  const auto setStatus = [&] {
    bench.phone.defaults.setFromOutside("bluetoothStatus", std::to_string(seen.size()));
  };
  bench.phone.loop.onTurnEnded([&] {
    seen.push_back(bench.views().statusTextLabel.text + " at " +
                   std::to_string(bench.panel().tables().lastDone()));
    setStatus();
  });
  setStatus();
  bench.turn([&] { bench.panel().startSeatLUTPrecomputeForVenueId(7, {3, 4}); });
  EXPECT_EQ(seen, (std::vector<std::string>{"0 at 0", "1 at 1", "2 at 2", "3 at -1"}));
}

TEST(SeatPrecompute, OneThatReportsNothingToDoLeavesTheFlagNo) {
  PanelBench bench(inVenue7());
  bench.storeSeat(7, {"A", "1", "10"}, {3, 4});
  bench.panel().storage().setPersistedSeatLUTReady(true, 7);
  bench.turn([&] { bench.panel().startSeatLUTPrecomputeForVenueId(7, {3, 4}); });
  EXPECT_FALSE(bench.panel().tables().isInProgress());
  EXPECT_FALSE(bench.isStoredReady(7));
  EXPECT_EQ(bench.dotText(), "amber");
}

TEST(SeatPrecompute, ReportsEveryMapAndPulsesAtEach) {
  PanelBench bench(inVenue7());
  for (int map = 1; map <= 3; ++map) bench.putPixelMap(7, map, {kRedWord});
  bench.storeSeat(7, {"A", "1", "10"}, {3, 4});
  bench.tick();
  std::vector<std::string> seen;
  bench.panel().startSeatLUTPrecomputeForVenueId(7, {3, 4});
  bench.phone.loop.onTurnEnded([&] {
    seen.push_back(std::to_string(bench.panel().tables().lastDone()) + " " + bench.dotText());
  });
  bench.settle();
  EXPECT_EQ(seen,
            (std::vector<std::string>{"0 amber", "1 amber", "2 amber", "3 amber", "-1 green"}));
  EXPECT_EQ(bench.tables(), 3U);
}

TEST(SeatPrecompute, WhatComesLateOfAnAbandonedOneIsIgnored) {
  PanelBench bench(inVenue7());
  bench.putPixelMap(7, 1, {kRedWord});
  // Its tables are built when the first turn ends, before its reports arrive.
  bench.phone.loop.soon([&] { bench.panel().startSeatLUTPrecomputeForVenueId(7, {3, 4}); });
  bench.phone.loop.soon([&] { bench.panel().hideSeatLUTPrecomputeProgress(); });
  bench.phone.loop.runFor({});
  EXPECT_EQ(bench.tables(), 1U);
  EXPECT_FALSE(bench.panel().tables().isInProgress());
  EXPECT_FALSE(bench.isStoredReady(7));
}

TEST(SeatPrecompute, OneThatEndsAfterThePanelDoesNothing) {
  PanelBench bench(inVenue7());
  bench.putPixelMap(7, 1, {kRedWord});
  bench.panel().startSeatLUTPrecomputeForVenueId(7, {3, 4});
  bench.destroyPanel();
  bench.settle();
  EXPECT_FALSE(SeatStorage(bench.phone.defaults).persistedSeatLUTReadyForVenueId(7));
  EXPECT_EQ(bench.tables(), 1U) << "the engine goes on";
}

// Dot

class StatusDotTest : public testing::Test {
 protected:
  StatusDotTest() {
    bench.storeSeat(7, {"A", "1", "10"}, {3, 4});
    bench.tick();
  }
  void progress(int done, int total = 9) {
    bench.panel().showSeatLUTPrecomputeProgressWithDone(done, total, "1");
  }
  /// Whether the dot has begun to pulse at this moment, which nothing before did.
  bool pulses() {
    const bool pulsed = bench.dot().pulseBegan == bench.phone.loop.now();
    bench.phone.loop.runFor(milliseconds(1));
    return pulsed;
  }

  PanelBench bench{inVenue7()};
};

TEST_F(StatusDotTest, IsPlacedBesideTheSummaryText) {
  // Text from 10 to 130, its middle at 28; the dot is 8 wide and 6 away.
  EXPECT_EQ(bench.dot().frame, (Rect{136, 24, 8, 8}));
  bench.summaryTextFrame = {0, 0, 50, 20};
  bench.panel().viewDidLayoutSubviews(300);
  EXPECT_EQ(bench.dot().frame, (Rect{56, 6, 8, 8}));
  EXPECT_EQ(bench.row().seatSelectionLoadingIndicator.frame, (Rect{56, 0, 20, 20}));
  bench.summaryTextFrame = {0, 0, 70, 20};
  progress(1);
  EXPECT_EQ(bench.dot().frame, (Rect{76, 6, 8, 8}));
  EXPECT_EQ(kDotCornerRadius, 4);
}

TEST_F(StatusDotTest, PulsesOnlyWhenTheProgressHasGrown) {
  progress(3);
  EXPECT_FALSE(pulses()) << "nothing was in progress before";
  progress(3);
  EXPECT_FALSE(pulses());
  progress(5);
  EXPECT_TRUE(pulses());
  progress(4);
  EXPECT_FALSE(pulses());
  progress(5);
  EXPECT_TRUE(pulses()) << "more than the 4 that came last";
}

TEST_F(StatusDotTest, ProgressOfNoTotalIsIgnored) {
  progress(3, 0);
  progress(3, -1);
  EXPECT_FALSE(bench.panel().tables().isInProgress());
  EXPECT_EQ(bench.panel().tables().lastDone(), -1);
}

TEST_F(StatusDotTest, ProgressBelowNothingCountsAsNothing) {
  progress(-4);
  EXPECT_TRUE(bench.panel().tables().isInProgress());
  EXPECT_EQ(bench.panel().tables().lastDone(), 0);
  progress(0);
  EXPECT_FALSE(pulses());
  progress(1);
  EXPECT_TRUE(pulses());
}

TEST_F(StatusDotTest, IsAmberWhileTablesAreBuiltHoweverReadyTheyWere) {
  bench.panel().completeSeatLUTPrecomputeWithDone(1, 1);
  EXPECT_EQ(bench.dotText(), "green");
  progress(1);
  EXPECT_EQ(bench.dotText(), "amber");
}

TEST_F(StatusDotTest, PulsesOnceWhenTheTablesHaveJustBecomeReady) {
  progress(1);
  pulses();
  bench.panel().completeSeatLUTPrecomputeWithDone(9, 9);
  EXPECT_TRUE(bench.panel().tables().isReady());
  EXPECT_EQ(bench.dotText(), "green");
  EXPECT_TRUE(pulses());
  bench.panel().completeSeatLUTPrecomputeWithDone(9, 9);
  EXPECT_FALSE(pulses());
}

TEST_F(StatusDotTest, CompletionShortOfTheTotalLeavesTheTablesNotReady) {
  bench.panel().completeSeatLUTPrecomputeWithDone(8, 9);
  EXPECT_FALSE(bench.panel().tables().isReady());
  EXPECT_EQ(bench.dotText(), "amber");
  EXPECT_FALSE(pulses());
}

TEST_F(StatusDotTest, CompletionWithTotal0LeavesTheTablesNotReady) {
  progress(1);
  bench.panel().completeSeatLUTPrecomputeWithDone(0, 0);
  EXPECT_FALSE(bench.panel().tables().isReady());
  EXPECT_FALSE(bench.panel().tables().isInProgress());
  EXPECT_EQ(bench.panel().tables().lastDone(), -1);
}

TEST_F(StatusDotTest, HidingTheProgressForgetsItAndTheReadiness) {
  bench.panel().completeSeatLUTPrecomputeWithDone(1, 1);
  progress(3);
  bench.panel().hideSeatLUTPrecomputeProgress();
  EXPECT_FALSE(bench.panel().tables().isInProgress());
  EXPECT_FALSE(bench.panel().tables().isReady());
  EXPECT_EQ(bench.panel().tables().lastDone(), -1);
  EXPECT_EQ(bench.dotText(), "amber");
}

TEST_F(StatusDotTest, WithoutASeatIsHiddenResetAndDoesNotPulse) {
  progress(1);
  progress(2);
  ASSERT_TRUE(bench.dot().pulseBegan);
  bench.panel().storage().clearSeatSelectionForVenueId(7);
  progress(3);
  EXPECT_EQ(bench.dotText(), "hidden");
  EXPECT_EQ(bench.dot().pulseBegan, std::nullopt);
  bench.panel().completeSeatLUTPrecomputeWithDone(9, 9);
  EXPECT_EQ(bench.dot().pulseBegan, std::nullopt);
}

TEST_F(StatusDotTest, ItsReadinessIsTheStoredOneUnlessTablesAreBeingBuilt) {
  bench.panel().storage().setPersistedSeatLUTReady(true, 7);
  bench.tick();
  EXPECT_EQ(bench.dotText(), "green");
  bench.panel().storage().setPersistedSeatLUTReady(false, 7);
  progress(1);
  bench.tick();
  EXPECT_TRUE(bench.panel().tables().isReady());
  bench.panel().completeSeatLUTPrecomputeWithDone(0, 9);
  bench.tick();
  EXPECT_FALSE(bench.panel().tables().isReady());
}

}  // namespace
}  // namespace halvora
