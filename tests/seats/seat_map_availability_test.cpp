// SPDX-License-Identifier: Apache-2.0
// When the panel loads which venue's map, what it shows meanwhile, and what becomes of a venue
// without one.
#include <array>
#include <cstdint>
#include <new>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "tests/seats/panel_bench.h"

namespace halvora {
namespace {

const SeatMapAvailability& mapOf(PanelBench& bench) { return bench.panel().seatMap(); }

TEST(SeatMapAvailability, BeginsWithNothing) {
  PanelBench bench;
  EXPECT_EQ(mapOf(bench).seatMapVenueId(), 0);
  EXPECT_EQ(mapOf(bench).seatMapLoadingVenueId(), 0);
  EXPECT_TRUE(mapOf(bench).seatMapSections()->isEmpty());
}

TEST(SeatMapAvailability, LoadsTheVenueInForceOffTheMainThread) {
  PanelBench bench;
  bench.putMap(7, kBenchMap);
  bench.hearVenue(7);
  bench.panel().preloadSeatMapForVenueId(7);
  EXPECT_EQ(mapOf(bench).seatMapLoadingVenueId(), 7);
  EXPECT_EQ(mapOf(bench).seatMapVenueId(), 0);
  EXPECT_EQ(bench.readsOfMap(7), 0U) << "not while the main thread waits";
  bench.settle();
  EXPECT_EQ(mapOf(bench).seatMapLoadingVenueId(), 0);
  EXPECT_EQ(mapOf(bench).seatMapVenueId(), 7);
  EXPECT_EQ(mapOf(bench).seatMapSections()->sectionCount(), 3U);
  EXPECT_EQ(bench.readsOfMap(7), 1U);
}

TEST(SeatMapAvailability, AVenueThatIsLoadedOrBeingLoadedIsNotLoadedAgain) {
  PanelBench bench;
  bench.putMap(7, kBenchMap);
  bench.hearVenue(7);
  bench.panel().preloadSeatMapForVenueId(7);
  bench.panel().preloadSeatMapForVenueId(7);
  const std::uint64_t turns = bench.phone.loop.turns();
  bench.settle();
  EXPECT_EQ(bench.phone.loop.turns(), turns + 2) << "one load has one result";
  bench.turn([&] { bench.panel().preloadSeatMapForVenueId(7); });
  EXPECT_EQ(mapOf(bench).seatMapLoadingVenueId(), 0);
  EXPECT_EQ(bench.readsOfMap(7), 1U);
}

TEST(SeatMapAvailability, OfTwoPreloadsOnlyTheLastOnesResultIsKept) {
  PanelBench bench;
  bench.putMap(4, kBenchMap);
  bench.putMap(5, R"({"sections": [{"rows": [{"seats": ["A"]}]}]})");
  bench.hearVenue(5);
  bench.panel().preloadSeatMapForVenueId(4);
  bench.panel().preloadSeatMapForVenueId(5);
  bench.settle();
  EXPECT_EQ(mapOf(bench).seatMapVenueId(), 5);
  EXPECT_EQ(mapOf(bench).seatMapSections()->sectionCount(), 1U);
}

TEST(SeatMapAvailability, ALoadForAVenueThatIsNotInForceIsGivenUpWhenItEnds) {
  PanelBench bench;
  bench.putMap(7, kBenchMap);
  bench.turn([&] { bench.panel().preloadSeatMapForVenueId(7); });
  EXPECT_EQ(bench.readsOfMap(7), 1U);
  EXPECT_EQ(mapOf(bench).seatMapVenueId(), 0);
}

TEST(SeatMapAvailability, NoVenueClearsEverything) {
  PanelBench bench({.defaultVenueId = 7});
  bench.putMap(7, kBenchMap);
  bench.tick();
  ASSERT_EQ(mapOf(bench).seatMapVenueId(), 7);
  bench.panel().preloadSeatMapForVenueId(0);
  EXPECT_EQ(mapOf(bench).seatMapVenueId(), 0);
  EXPECT_TRUE(mapOf(bench).seatMapSections()->isEmpty());
  EXPECT_EQ(mapOf(bench).mapVersionInfoForVenueId(7), std::nullopt);
  bench.panel().preloadSeatMapForVenueId(4);
  bench.panel().preloadSeatMapForVenueId(-1);
  EXPECT_EQ(mapOf(bench).seatMapLoadingVenueId(), 0);
  bench.settle();
  EXPECT_EQ(mapOf(bench).seatMapVenueId(), 0) << "nobody wants that load any more";
}

TEST(SeatMapAvailability, RefreshingReconcilesTheMapWithTheVenue) {
  PanelBench bench;
  bench.putMap(7, kBenchMap);
  bench.hearVenue(7);
  bench.turn([&] { bench.panel().refreshSeatMapAvailability(); });
  EXPECT_EQ(mapOf(bench).seatMapVenueId(), 7);
  bench.turn([&] { bench.panel().refreshSeatMapAvailability(); });
  EXPECT_EQ(bench.readsOfMap(7), 1U);
  bench.hearVenue(0);
  bench.panel().refreshSeatMapAvailability();
  EXPECT_EQ(mapOf(bench).seatMapVenueId(), 0);
}

TEST(SeatMapAvailability, AVenueWithoutAMapCountsAsLoadedAndEmpty) {
  PanelBench bench;
  bench.hearVenue(7);
  for (const char* document : {"", "{", "5", "{\"sections\": 5}", "[{\"rows\": []}]"}) {
    bench.putMap(7, document);
    bench.turn([&] { bench.panel().preloadSeatMapForVenueId(7); });
    EXPECT_EQ(mapOf(bench).seatMapVenueId(), 7);
    EXPECT_EQ(mapOf(bench).seatMapLoadingVenueId(), 0);
    EXPECT_TRUE(mapOf(bench).seatMapSections()->isEmpty()) << document;
    bench.panel().preloadSeatMapForVenueId(0);
  }
}

TEST(SeatMapAvailability, AMissingMapIsLookedForAgainAndFoundWhenItAppears) {
  PanelBench bench({.defaultVenueId = 7});
  bench.phone.loop.runFor(milliseconds(5000));
  EXPECT_EQ(mapOf(bench).seatMapVenueId(), 7);
  EXPECT_EQ(bench.readsOfMap(7), 0U);
  EXPECT_EQ(bench.shown(), "hidden hidden shown hidden hidden hidden");
  bench.putMap(7, kBenchMap);
  bench.tick();
  EXPECT_EQ(bench.shown(), "hidden hidden shown hidden shown shown");
}

TEST(SeatMapAvailability, ABrokenMapIsReadAgainOnlyWhenItHasChanged) {
  PanelBench bench({.defaultVenueId = 7});
  bench.putMap(7, "{");
  bench.phone.loop.runFor(milliseconds(5000));
  EXPECT_EQ(bench.readsOfMap(7), 1U);
  bench.putMap(7, kBenchMap);
  bench.tick();
  EXPECT_EQ(bench.readsOfMap(7), 2U);
  EXPECT_FALSE(mapOf(bench).seatMapSections()->isEmpty());
}

TEST(SeatMapAvailability, AnotherMapIsOneOfAnotherVenueSizeOrTime) {
  PanelBench bench({.defaultVenueId = 7});
  const auto put = [&bench](int venue, const std::string& document) {
    bench.phone.virtualFiles.put("/host/HVAssets/Maps/Venue-" + std::to_string(venue) + "/map.json",
                                 document, 5);
  };
  const std::string good = R"([{"rows": [{"seats": ["A"]}]}])";
  put(7, "{");
  bench.tick();
  EXPECT_TRUE(mapOf(bench).seatMapSections()->isEmpty());
  put(7, good);
  bench.tick();
  EXPECT_FALSE(mapOf(bench).seatMapSections()->isEmpty()) << "of another size";
  put(8, std::string(good.size(), '['));
  bench.hearVenue(8);
  bench.tick();
  EXPECT_EQ(mapOf(bench).seatMapVenueId(), 8);
  EXPECT_TRUE(mapOf(bench).seatMapSections()->isEmpty()) << "of another venue";
}

TEST(SeatMapAvailability, AHostWithoutAFolderHasNoMaps) {
  PanelBench bench({.defaultVenueId = 7,
                    .prepare = [](VirtualPhone& phone) { phone.mainBundle.folder.clear(); }});
  bench.putMap(7, kBenchMap);
  bench.tick();
  EXPECT_TRUE(mapOf(bench).seatMapSections()->isEmpty());
}

TEST(SeatMapAvailability, ABundleNeedsNoFolderForItsMaps) {
  PanelBench bench({.defaultVenueId = 7, .prepare = [](VirtualPhone& phone) {
                      phone.mainBundle.folder.clear();
                      phone.mainBundle.resources["HVAssets/Maps/Venue-7/map.json"] = kBenchMap;
                    }});
  bench.tick();
  EXPECT_EQ(mapOf(bench).seatMapSections()->sectionCount(), 3U);
}

TEST(SeatMapAvailability, NamesComeFromTheKitsTexts) {
  PanelBench bench({.prepare = [](VirtualPhone& phone) {
    phone.kitBundle.strings["hv_seat_picker_fallback_section_format"] = "Block %ld";
  }});
  bench.putMap(7, R"({"sections": [{"rows": [{"seats": ["A"]}]}]})");
  bench.hearVenue(7);
  bench.turn([&] { bench.panel().preloadSeatMapForVenueId(7); });
  EXPECT_EQ(mapOf(bench).seatMapSections()->section(0).displayName(), "Block 1");
}

TEST(SeatMapAvailability, ALoadThatEndsAfterThePanelDoesNothing) {
  PanelBench bench;
  bench.putMap(7, kBenchMap);
  bench.panel().preloadSeatMapForVenueId(7);
  bench.destroyPanel();
  bench.settle();
  EXPECT_EQ(bench.readsOfMap(7), 0U);
}

TEST(SeatMapAvailability, AResultThatArrivesAfterThePanelDoesNothing) {
  PanelBench bench;
  bench.putMap(7, kBenchMap);
  bench.panel().preloadSeatMapForVenueId(7);
  // The load runs at the end of the turn that destroys the panel at the next one's beginning.
  bench.phone.loop.soon([] {});
  bench.phone.loop.soon([&] { bench.destroyPanel(); });
  EXPECT_TRUE(bench.phone.loop.runFor({}));
  EXPECT_EQ(bench.readsOfMap(7), 1U);
}

TEST(SeatMapAvailability, WhileItLoadsTheSeatButtonSaysSo) {
  PanelBench bench;
  bench.putMap(7, kBenchMap);
  bench.hearVenue(7);
  bench.storeSeat(7, {"A", "1", "10"}, {3, 4});
  bench.panel().preloadSeatMapForVenueId(7);
  bench.panel().updateSeatSelectionUIForVenueId(7);
  const Button& button = bench.views().seatSelectionButton;
  EXPECT_EQ(button.title, "Loading Seats...");
  EXPECT_FALSE(button.enabled);
  EXPECT_EQ(button.alpha, 0.85);
  EXPECT_EQ(bench.summary(), "Seat map is loading...");
  EXPECT_EQ(bench.dotText(), "hidden");
  EXPECT_TRUE(bench.row().seatSelectionLoadingIndicator.isAnimating);
  // Text from 10 to 130, its middle at 28; the indicator is 20 wide and 6 away.
  EXPECT_EQ(bench.row().seatSelectionLoadingIndicator.frame, (Rect{136, 18, 20, 20}));

  bench.settle();
  bench.panel().updateSeatSelectionUIForVenueId(7);
  EXPECT_EQ(button.title, "Change Seat");
  EXPECT_TRUE(button.enabled);
  EXPECT_EQ(button.alpha, 1);
  EXPECT_FALSE(bench.row().seatSelectionLoadingIndicator.isAnimating);
}

TEST(SeatMapAvailability, WhileAnotherVenuesMapLoadsTheDotIsHiddenAndTheIndicatorPlaced) {
  PanelBench bench(inVenue7());
  bench.storeSeat(7, {"A", "1", "10"}, {3, 4});
  bench.tick();
  ASSERT_EQ(bench.dotText(), "amber");
  bench.hearVenue(8);
  bench.summaryTextFrame = {0, 0, 50, 20};
  bench.panel().preloadSeatMapForVenueId(8);
  bench.panel().updateSeatSelectionUIForVenueId(8);
  EXPECT_EQ(bench.dotText(), "hidden");
  EXPECT_EQ(bench.row().seatSelectionLoadingIndicator.frame, (Rect{56, 0, 20, 20}));
  bench.panel().updateStatus();
  EXPECT_EQ(bench.dot().frame, (Rect{56, 6, 8, 8})) << "a hidden one has its place too";
}

TEST(SeatMapAvailability, TheSeatControlsAreShownOnlyForTheMapOfTheVenueInForce) {
  PanelBench bench;
  bench.putMap(7, kBenchMap);
  const std::string with = "hidden hidden shown hidden shown shown";
  const std::string without = "hidden hidden shown hidden hidden hidden";
  bench.hearVenue(7);
  bench.panel().updateStatus();
  EXPECT_EQ(bench.shown(), without) << "loading";
  bench.settle();
  EXPECT_EQ(bench.shown(), with);
  bench.hearVenue(8);
  bench.panel().updateStatus();
  EXPECT_EQ(bench.shown(), without) << "loading another";
  bench.settle();
  EXPECT_EQ(bench.shown(), without) << "the other has none";
  bench.hearVenue(7);
  bench.tick();
  EXPECT_EQ(bench.shown(), with);
  bench.hearVenue(0);
  bench.tick();
  EXPECT_EQ(bench.shown(), without) << "no venue";
}

TEST(SeatMapAvailability, TheTextsOfLoadingAreTheKits) {
  PanelBench bench;
  bench.phone.kitBundle.strings["hv_seat_button_loading"] = "kit: loading seats";
  bench.phone.kitBundle.strings["hv_seat_summary_loading"] = "kit: map is loading";
  bench.panel().preloadSeatMapForVenueId(7);
  bench.panel().updateSeatSelectionUIForVenueId(7);
  EXPECT_EQ(bench.views().seatSelectionButton.title, "kit: loading seats");
  EXPECT_EQ(bench.summary(), "kit: map is loading");
}

// Opening the wizard

TEST(OpenSeatSelector, WithoutAVenueSaysThatTheMapIsMissing) {
  PanelBench bench;
  bench.panel().openSeatSelector();
  EXPECT_EQ(bench.panel().presentedWizard(), nullptr);
  EXPECT_EQ(bench.panel().presentedAlert(),
            (Alert{"Seat Map Missing", "No valid map.json parsed for current venue.", "OK"}));
  const std::uint64_t changes = bench.panel().changes();
  bench.panel().dismissAlert();
  EXPECT_EQ(bench.panel().presentedAlert(), std::nullopt);
  EXPECT_EQ(bench.panel().changes(), changes + 1);
}

TEST(OpenSeatSelector, TheAlertsTextsAreTheKits) {
  PanelBench bench;
  bench.phone.kitBundle.strings["hv_seat_map_missing_title"] = "kit: title";
  bench.phone.kitBundle.strings["hv_seat_map_missing_message"] = "kit: message";
  bench.phone.kitBundle.strings["hv_common_ok"] = "kit: ok";
  bench.panel().openSeatSelector();
  EXPECT_EQ(bench.panel().presentedAlert(), (Alert{"kit: title", "kit: message", "kit: ok"}));
}

TEST(OpenSeatSelector, WhileTheMapLoadsDoesNothing) {
  PanelBench bench;
  bench.putMap(7, kBenchMap);
  bench.hearVenue(7);
  bench.panel().openSeatSelector();
  EXPECT_EQ(bench.panel().presentedWizard(), nullptr);
  EXPECT_EQ(bench.panel().presentedAlert(), std::nullopt);
  bench.settle();
  EXPECT_EQ(bench.panel().presentedWizard(), nullptr);
  bench.panel().openSeatSelector();
  EXPECT_NE(bench.panel().presentedWizard(), nullptr);
}

TEST(OpenSeatSelector, WhereTheMapWasMissingItIsLookedForOnceMoreAndThenReported) {
  PanelBench bench({.defaultVenueId = 7});
  bench.tick();
  bench.panel().openSeatSelector();
  EXPECT_EQ(bench.panel().presentedAlert(), std::nullopt) << "it is being looked for";
  bench.settle();
  ASSERT_NE(bench.panel().presentedAlert(), std::nullopt);
  EXPECT_EQ(bench.panel().presentedAlert()->title, "Seat Map Missing");
  bench.panel().dismissAlert();
  bench.phone.loop.runFor(milliseconds(5000));
  EXPECT_EQ(bench.panel().presentedAlert(), std::nullopt) << "once a tap";
}

TEST(OpenSeatSelector, AnotherVenuesMissingMapIsNotWhatWasAskedFor) {
  PanelBench bench({.defaultVenueId = 7});
  bench.tick();
  bench.panel().openSeatSelector();
  bench.hearVenue(8);
  bench.turn([&] { bench.panel().updateStatus(); });
  EXPECT_EQ(mapOf(bench).seatMapVenueId(), 8);
  EXPECT_EQ(bench.panel().presentedAlert(), std::nullopt);
}

TEST(OpenSeatSelector, WhereTheMapHasAppearedNothingIsReported) {
  PanelBench bench({.defaultVenueId = 7});
  bench.tick();
  bench.putMap(7, kBenchMap);
  bench.turn([&] { bench.panel().openSeatSelector(); });
  EXPECT_EQ(bench.panel().presentedAlert(), std::nullopt);
  EXPECT_EQ(bench.shown(), "hidden hidden shown hidden shown shown");
}

TEST(OpenSeatSelector, AFirstLoadThatFindsNoMapReportsNothing) {
  PanelBench bench;
  bench.hearVenue(7);
  bench.turn([&] { bench.panel().openSeatSelector(); });
  EXPECT_EQ(bench.panel().presentedAlert(), std::nullopt);
}

TEST(OpenSeatSelector, OpensNothingOverSomethingThatIsOpen) {
  PanelBench bench({.defaultVenueId = 7});
  bench.putMap(7, kBenchMap);
  bench.tick();
  bench.panel().openSeatSelector();
  const auto selector = bench.panel().presentedWizard();
  bench.panel().openSeatSelector();
  EXPECT_EQ(bench.panel().presentedWizard(), selector);
}

TEST(OpenSeatSelector, WhileTheWizardIsPresentedTheTimerChangesNothing) {
  PanelBench bench({.defaultVenueId = 7});
  bench.putMap(7, kBenchMap);
  bench.tick();
  bench.panel().openSeatSelector();
  const std::uint64_t changes = bench.panel().changes();
  const std::uint64_t writes = bench.phone.defaults.changes;
  bench.phone.defaults.setFromOutside("bluetoothStatus", std::string("other"));
  bench.phone.defaults.setFromOutside("xPos", std::string("99"));
  bench.hearVenue(8);
  const std::uint64_t outside = bench.phone.defaults.changes;
  bench.phone.loop.runFor(milliseconds(5000));
  EXPECT_EQ(bench.panel().changes(), changes);
  EXPECT_EQ(bench.phone.defaults.changes, outside);
  EXPECT_GT(outside, writes);
  EXPECT_EQ(mapOf(bench).seatMapVenueId(), 7);

  bench.panel().presentedWizard()->cancelTapped();
  EXPECT_EQ(bench.panel().presentedWizard(), nullptr);
  bench.tick();
  EXPECT_EQ(bench.views().statusTextLabel.text, "other");
  EXPECT_EQ(bench.flat("xPos"), "0");
}

TEST(OpenSeatSelector, WhileAnAlertIsPresentedTheTimerChangesNothing) {
  PanelBench bench;
  bench.panel().openSeatSelector();
  bench.phone.defaults.set("bluetoothStatus", std::string("other"));
  bench.tick();
  EXPECT_EQ(bench.views().statusTextLabel.text, "");
  bench.panel().dismissAlert();
  bench.tick();
  EXPECT_EQ(bench.views().statusTextLabel.text, "other");
}

TEST(OpenSeatSelector, AShowThatBeginsTakesThePresentedScreensAway) {
  PanelBench bench({.defaultVenueId = 7});
  bench.putMap(7, kBenchMap);
  bench.tick();
  bench.panel().openSeatSelector();
  const auto selector = bench.panel().presentedWizard();
  ASSERT_NE(selector, nullptr);
  bench.phone.application.dismissPresentedScreens();
  EXPECT_TRUE(selector->isDismissed());
  EXPECT_EQ(bench.panel().presentedWizard(), nullptr);

  bench.panel().preloadSeatMapForVenueId(0);
  StatusPanelFields none;
  bench.panel().setFields(none);
  bench.panel().openSeatSelector();
  ASSERT_NE(bench.panel().presentedAlert(), std::nullopt);
  bench.phone.application.dismissPresentedScreens();
  EXPECT_EQ(bench.panel().presentedAlert(), std::nullopt);
}

TEST(OpenSeatSelector, APanelThatIsGoneHearsNoMoreOfShows) {
  PanelBench bench(inVenue7());
  bench.panel().openSeatSelector();
  const auto selector = bench.panel().presentedWizard();
  bench.destroyPanel();
  bench.phone.application.dismissPresentedScreens();
  EXPECT_FALSE(selector->isDismissed());
}

// Where it was, nothing is written after it has gone.
TEST(SeatMapAvailability, MayGoWhileItSaysThatAMapIsLoaded) {
  PanelBench bench;
  bench.putMap(7, kBenchMap);
  alignas(SeatMapAvailability) std::array<unsigned char, sizeof(SeatMapAvailability)> room;
  SeatMapAvailability* map = nullptr;
  map = new (room.data()) SeatMapAvailability(bench.phone.platform(), [&map, &room] {
    EXPECT_EQ(map->seatMapVenueId(), 7);
    std::exchange(map, nullptr)->~SeatMapAvailability();
    room.fill(0xA5);
  });
  map->viewDidLoad();
  bench.turn([&map] { map->preloadSeatMapForVenueId(7); });
  EXPECT_EQ(map, nullptr);
  for (const unsigned char byte : room) ASSERT_EQ(byte, 0xA5);
}

}  // namespace
}  // namespace halvora
