// SPDX-License-Identifier: Apache-2.0
// What the panel shows by permission, presence and venue, and how it is styled.
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "engine/broadcast.h"
#include "seats/label_styles.h"
#include "seats/panel_looks.h"
#include "tests/seats/panel_bench.h"
#include "text/defaults_values.h"

namespace halvora {
namespace {

PanelBenchSetup undetermined() { return {.authorization = BluetoothAuthorization::notDetermined}; }

Broadcast packet(int venueId, int sequence) {
  Broadcast broadcast;
  broadcast.applicationId = 258;
  broadcast.transmitter = 7;
  broadcast.venueId = static_cast<std::uint8_t>(venueId);
  broadcast.sequence = static_cast<std::uint16_t>(sequence);
  return broadcast;
}

TEST(StatusPanel, AsksWhereThePermissionIsNotDetermined) {
  PanelBench bench(undetermined());
  EXPECT_EQ(bench.shown(), "shown shown hidden hidden hidden hidden");
  EXPECT_EQ(bench.views().onboardingLabel->text, "kit: onboarding");
  EXPECT_EQ(bench.views().joinButton->title, "kit: allow");
  EXPECT_EQ(bench.views().statusTextLabel.alpha, 0);
  EXPECT_EQ(bench.views().statusTextLabel.text, "kit: loading");
}

TEST(StatusPanel, AskingHidesASettingsButtonAndASeatThatThereWouldBe) {
  PanelBench bench(undetermined());
  bench.putMap(7, kBenchMap);
  bench.hearVenue(7);
  bench.phone.defaults.set("bluetoothStatus", std::string("kit: not authorised"));
  bench.tick();
  EXPECT_EQ(bench.shown(), "shown shown hidden hidden hidden hidden");
  EXPECT_FALSE(bench.panel().seatMap().seatMapSections()->isEmpty());
}

TEST(StatusPanel, ShowsTheBluetoothStatusWhereThePermissionIsSettled) {
  for (const auto authorization :
       {BluetoothAuthorization::restricted, BluetoothAuthorization::denied,
        BluetoothAuthorization::allowedAlways}) {
    PanelBench bench({.authorization = authorization});
    bench.phone.defaults.set("bluetoothStatus", std::string("host: outside"));
    bench.tick();
    EXPECT_EQ(bench.shown(), "hidden hidden shown hidden hidden hidden");
    EXPECT_EQ(bench.views().statusTextLabel.text, "host: outside");
    EXPECT_EQ(bench.views().statusTextLabel.alpha, 1);
  }
}

TEST(StatusPanel, WithoutABluetoothStatusTheLineIsEmpty) {
  PanelBench bench;
  EXPECT_EQ(bench.views().statusTextLabel.text, "");
  EXPECT_EQ(bench.shown(), "hidden hidden shown hidden hidden hidden");
}

TEST(StatusPanel, FollowsWhatTheEngineWritesOfBluetooth) {
  PanelBench bench;
  bench.turn([&] { bench.engine().start(); });
  bench.tick();
  EXPECT_EQ(bench.views().statusTextLabel.text, "host: outside");
  bench.phone.bluetooth.setState(CentralState::poweredOff);
  bench.tick();
  EXPECT_EQ(bench.views().statusTextLabel.text, "kit: off");
  EXPECT_TRUE(bench.views().settingsButton.hidden);
  bench.phone.bluetooth.setState(CentralState::unauthorised);
  bench.tick();
  EXPECT_EQ(bench.views().statusTextLabel.text, "kit: not authorised");
  EXPECT_FALSE(bench.views().settingsButton.hidden);
  bench.phone.bluetooth.setState(CentralState::poweredOn);
  bench.tick();
  EXPECT_EQ(bench.views().statusTextLabel.text, "host: outside");
  EXPECT_TRUE(bench.views().settingsButton.hidden);
}

TEST(StatusPanel, OffersTheSettingsWhereBluetoothIsOffToAHostThatWantsIt) {
  PanelBench bench;
  bench.turn([&] { bench.engine().start(); });
  bench.phone.bluetooth.setState(CentralState::poweredOff);
  bench.tick();
  EXPECT_TRUE(bench.views().settingsButton.hidden);
  StatusPanelFields fields = bench.panel().fields();
  fields.offersSettingsWhenOff = true;
  bench.panel().setFields(fields);
  bench.tick();
  EXPECT_EQ(bench.views().statusTextLabel.text, "kit: off");
  EXPECT_FALSE(bench.views().settingsButton.hidden);
  bench.phone.bluetooth.setState(CentralState::unauthorised);
  bench.tick();
  EXPECT_FALSE(bench.views().settingsButton.hidden);
  bench.phone.bluetooth.setState(CentralState::poweredOn);
  bench.tick();
  EXPECT_TRUE(bench.views().settingsButton.hidden);
}

TEST(StatusPanel, InsideTheVenueTheHostsTextIsShown) {
  PanelBench bench;
  bench.turn([&] { bench.engine().initBluetoothPermission(); });
  bench.phone.loop.runFor(milliseconds(1100));
  const BroadcastBytes data = encodeBroadcast(packet(9, 1));
  ASSERT_TRUE(bench.phone.bluetooth.advertise(data));
  bench.tick();
  EXPECT_EQ(bench.views().statusTextLabel.text, "host: inside");
  EXPECT_EQ(integerForKey(bench.phone.defaults, "venueID"), 9);
  // Even then the settings button follows the status that is stored.
  bench.phone.defaults.set("bluetoothStatus", std::string("kit: not authorised"));
  bench.tick();
  EXPECT_EQ(bench.views().statusTextLabel.text, "host: inside");
  EXPECT_FALSE(bench.views().settingsButton.hidden);
}

TEST(StatusPanel, TheStatusHasFixedLineHeightAndThePanelsAlignment) {
  PanelBench bench;
  StatusPanelFields fields;
  fields.statusTextAlignment = TextAlignment::center;
  bench.panel().setFields(fields);
  EXPECT_EQ(bench.views().statusTextLabel.lineHeight, 22);
  EXPECT_EQ(bench.views().statusTextLabel.alignment, TextAlignment::center);
  EXPECT_EQ(bench.views().statusTextLabel.lines, 0);
}

TEST(StatusPanel, ItsTextsReadTheSameWhereTheyAreTakenAsLabels) {
  PanelBench bench;
  const Label& status = bench.views().statusTextLabel;
  EXPECT_EQ(status.lineHeight, 22);
  EXPECT_EQ(status.lines, 0);
  const Label& summary = bench.row().seatSelectionSummaryLabel;
  EXPECT_EQ(summary.lines, 1);
  EXPECT_EQ(summary.lineHeight, 0);
}

TEST(StatusPanel, WithoutTextsTheStatusTextsAreEmpty) {
  PanelBench bench({.authorization = BluetoothAuthorization::notDetermined, .hasTexts = false});
  EXPECT_EQ(bench.views().onboardingLabel->text, "");
  EXPECT_EQ(bench.views().joinButton->title, "");
  EXPECT_EQ(bench.views().statusTextLabel.text, "");
  EXPECT_EQ(bench.views().settingsButton.title, "");
  EXPECT_EQ(bench.views().seatSelectionButton.title, "Select Seat");
}

TEST(StatusPanel, WithoutTextsTheSettingsButtonStillFollowsTheStatus) {
  PanelBench bench({.hasTexts = false});
  EXPECT_TRUE(bench.views().settingsButton.hidden);
  bench.phone.bluetooth.setAuthorization(BluetoothAuthorization::denied);
  bench.engine().start();
  bench.tick();
  EXPECT_FALSE(bench.views().settingsButton.hidden);
}

TEST(StatusPanel, JoiningAsksTheEngineAndRemovesTheOnboardingForGood) {
  PanelBench bench(undetermined());
  bench.phone.bluetooth.log.drain();
  bench.turn([&] { bench.panel().initBluetoothPermission(); });
  EXPECT_EQ(bench.phone.bluetooth.log.entries, std::vector{RadioAct::managerMade});
  EXPECT_EQ(bench.shown(), "gone gone hidden hidden hidden hidden");
  bench.tick();
  EXPECT_EQ(bench.shown(), "gone gone hidden hidden hidden hidden");
  bench.phone.bluetooth.setAuthorization(BluetoothAuthorization::allowedAlways);
  bench.tick();
  EXPECT_EQ(bench.shown(), "gone gone shown hidden hidden hidden");
  bench.phone.bluetooth.setAuthorization(BluetoothAuthorization::notDetermined);
  bench.tick();
  EXPECT_EQ(bench.shown(), "gone gone hidden hidden hidden hidden");
}

TEST(StatusPanel, OpensTheSettingsWhereThereAreAny) {
  PanelBench bench;
  bench.panel().openAppSettings();
  EXPECT_EQ(bench.phone.application.settingsOpened, 1);
  bench.phone.application.hasSettings = false;
  bench.panel().openAppSettings();
  EXPECT_EQ(bench.phone.application.settingsOpened, 1);
}

TEST(StatusPanel, IsStyledByItsFields) {
  PanelBench bench(undetermined());
  StatusPanelFields fields;
  fields.statusTextColour = colourOfBytes(1, 2, 3);
  fields.statusTextFontName = "Known";
  fields.statusTextFontSize = 15;
  fields.statusTextAlignment = TextAlignment::right;
  fields.actionButtonColour = colourOfBytes(4, 5, 6);
  fields.actionButtonTitleColour = colourOfBytes(7, 8, 9);
  fields.actionButtonTitleFontName = "Unknown";
  fields.actionButtonTitleFontSize = 13;
  fields.actionButtonHeight = 50;
  bench.panel().setFields(fields);

  const StatusPanelViews& views = bench.views();
  for (const StatusText* label : {&*views.onboardingLabel, &views.statusTextLabel}) {
    EXPECT_EQ(label->colour, colourOfBytes(1, 2, 3));
    EXPECT_EQ(label->font, (Font{"Known", 15}));
    EXPECT_EQ(label->alignment, TextAlignment::right);
    EXPECT_EQ(label->lines, 0);
  }
  const StatusText& summary = bench.row().seatSelectionSummaryLabel;
  EXPECT_EQ(summary.colour, withAlpha(colourOfBytes(1, 2, 3), 0.75F));
  EXPECT_EQ(summary.font, (Font{"Known", 12}));
  EXPECT_EQ(summary.lines, 1);
  for (const Button* button :
       {&*views.joinButton, &views.settingsButton, &views.seatSelectionButton}) {
    EXPECT_EQ(button->background, MaybeColour(colourOfBytes(4, 5, 6)));
    EXPECT_EQ(button->titleColour, colourOfBytes(7, 8, 9));
    EXPECT_EQ(button->font, (Font{"", 13}));
    EXPECT_EQ(button->cornerRadius, 8);
    EXPECT_EQ(button->height, 50);
  }
}

TEST(StatusPanel, FieldsThatComeBeforeTheViewCountToo) {
  PanelBench bench({.isViewLoaded = false});
  StatusPanelFields fields;
  fields.statusTextFontSize = 15;
  bench.panel().setFields(fields);
  bench.turn([&] { bench.panel().viewDidLoad(); });
  EXPECT_EQ(bench.views().statusTextLabel.font.size, 15);
}

TEST(StatusPanel, BeginsWithoutASummary) {
  PanelBench bench(undetermined());
  EXPECT_EQ(bench.views().seatSelectionButton.title, "Select Seat");
  EXPECT_EQ(bench.dotText(), "hidden");
  EXPECT_FALSE(bench.row().seatSelectionLoadingIndicator.isAnimating);
}

TEST(StatusPanel, LaysItsStackOutByTheseNumbers) {
  EXPECT_EQ(kSpacingAfterOnboardingLabel, 20);
  EXPECT_EQ(kSpacingAfterStatusText, 20);
  EXPECT_EQ(kSpacingAfterSeatSelectionButton, 6);
}

TEST(StatusPanel, RefreshesTwiceASecondFromItsLoadingOn) {
  PanelBench bench({.isViewLoaded = false});
  bench.phone.defaults.set("bluetoothStatus", std::string("first"));
  bench.turn([&] { bench.panel().viewDidLoad(); });
  EXPECT_EQ(bench.views().statusTextLabel.text, "first") << "once at once";
  bench.phone.defaults.set("bluetoothStatus", std::string("second"));
  bench.phone.loop.runFor(milliseconds(499));
  EXPECT_EQ(bench.views().statusTextLabel.text, "first");
  bench.phone.loop.runFor(milliseconds(1));
  EXPECT_EQ(bench.views().statusTextLabel.text, "second");
  bench.phone.defaults.set("bluetoothStatus", std::string("third"));
  bench.phone.loop.runFor(milliseconds(500));
  EXPECT_EQ(bench.views().statusTextLabel.text, "third");
}

TEST(StatusPanel, MakesItsParseQueueOnceWhenTheViewLoads) {
  PanelBench bench({.isViewLoaded = false});
  bench.phone.queues.log.drain();
  bench.turn([&] { bench.panel().viewDidLoad(); });
  EXPECT_EQ(bench.phone.queues.log.entries,
            std::vector<std::string>{"com.halvora.sdk.seatmap.parse"});
}

TEST(StatusPanel, ItsTimerGoesWithIt) {
  PanelBench bench;
  bench.destroyPanel();
  const std::uint64_t turns = bench.phone.loop.turns();
  bench.phone.loop.runFor(PanelController::kStatusInterval);
  // The engine's notices go on.
  EXPECT_EQ(bench.phone.loop.turns(), turns + 1);
}

TEST(StatusPanel, ResolvesTheVenueHeardBeforeTheDefault) {
  PanelBench bench({.defaultVenueId = 12});
  EXPECT_EQ(bench.panel().resolvedVenueId(), 12);
  bench.hearVenue(7);
  EXPECT_EQ(bench.panel().resolvedVenueId(), 7);
  bench.hearVenue(-7);
  EXPECT_EQ(bench.panel().resolvedVenueId(), 12);
  VirtualDefaults others;
  others.set("venueID", std::string("3"));
  EXPECT_EQ(bench.panel().resolvedVenueIdFromDefaults(others), 3);
}

TEST(StatusPanel, ANegativeDefaultVenueCountsAsNoVenueAndTheSeatControlsStayHidden) {
  PanelBench bench({.defaultVenueId = -4});
  EXPECT_EQ(bench.panel().resolvedVenueId(), 0);
  bench.phone.loop.runFor(milliseconds(2000));
  EXPECT_EQ(bench.shown(), "hidden hidden shown hidden hidden hidden");
}

TEST(StatusPanel, LooksTextsUpInTheKitWithAFallback) {
  PanelBench bench;
  bench.phone.kitBundle.strings["known"] = "text";
  bench.phone.kitBundle.strings["empty"] = "";
  bench.phone.kitBundle.strings["itself"] = "itself";
  bench.phone.mainBundle.strings["host"] = "of the host";
  EXPECT_EQ(bench.panel().hvLocalizedStringForKey("known", "fallback"), "text");
  EXPECT_EQ(bench.panel().hvLocalizedStringForKey("empty", "fallback"), "fallback");
  EXPECT_EQ(bench.panel().hvLocalizedStringForKey("itself", "fallback"), "fallback");
  EXPECT_EQ(bench.panel().hvLocalizedStringForKey("host", "fallback"), "fallback");
}

// Size

TEST(StatusPanelSize, TakesTheScreensWidthUntilItHasOne) {
  PanelBench bench;
  EXPECT_EQ(bench.measuredWidths.back(), 390);
  EXPECT_EQ(bench.panel().preferredContentSize(), (Size{390, 100}));
  bench.fittingHeight = 120;
  bench.panel().viewDidLayoutSubviews(300);
  EXPECT_EQ(bench.measuredWidths.back(), 300);
  EXPECT_EQ(bench.panel().preferredContentSize(), (Size{300, 120}));
}

TEST(StatusPanelSize, MovesOnlyByMoreThanHalfAPoint) {
  PanelBench bench;
  bench.fittingHeight = 100.5;
  bench.panel().viewDidLayoutSubviews(200);
  EXPECT_EQ(bench.panel().preferredContentSize(), (Size{390, 100}));
  bench.fittingHeight = 100.6;
  bench.panel().viewDidLayoutSubviews(200);
  EXPECT_EQ(bench.panel().preferredContentSize(), (Size{200, 100.6}));
}

TEST(StatusPanelSize, AHeightThatIsNotPositiveIsNone) {
  PanelBench bench;
  for (const double height : {0.0, -5.0}) {
    bench.fittingHeight = height;
    bench.tick();
    EXPECT_EQ(bench.panel().preferredContentSize(), (Size{390, 100}));
  }
}

TEST(StatusPanelSize, IsMeasuredAtEveryStatusUpdate) {
  PanelBench bench;
  bench.measuredWidths.clear();
  bench.tick();
  bench.tick();
  EXPECT_EQ(bench.measuredWidths.size(), 2U);
}

TEST(StatusPanelSize, MeasuringThatLaysOutAgainDoesNotMeasureAgain) {
  PanelBench bench;
  bench.onMeasure = [&] { bench.panel().viewDidLayoutSubviews(250); };
  bench.measuredWidths.clear();
  bench.fittingHeight = 50;
  bench.tick();
  EXPECT_EQ(bench.measuredWidths.size(), 1U);
  EXPECT_EQ(bench.panel().preferredContentSize().height, 50);
}

TEST(StatusPanelSize, IsNotMeasuredBeforeTheViewIsLoaded) {
  PanelBench bench({.isViewLoaded = false});
  bench.panel().updatePreferredContentSizeForCurrentLayout();
  EXPECT_TRUE(bench.measuredWidths.empty());
  EXPECT_EQ(bench.panel().preferredContentSize(), Size());
}

TEST(StatusPanelSize, IsMeasuredOnlyAfterTheFaceHasHeardOfTheChange) {
  PanelBench bench;
  std::vector<std::string> events;
  bench.onChange = [&] { events.push_back(bench.views().statusTextLabel.text); };
  bench.onMeasure = [&] { events.emplace_back("measured"); };
  bench.phone.defaults.set("bluetoothStatus", std::string("longer"));
  bench.tick();
  EXPECT_EQ(events, (std::vector<std::string>{"longer", "measured"}));
}

// Changes

TEST(StatusPanelChanges, ASteadyPanelChangesNothing) {
  PanelBench bench;
  bench.putMap(7, kBenchMap);
  bench.storeSeat(7, {"A", "1", "10"}, {3, 4});
  bench.hearVenue(7);
  bench.tick();
  const std::uint64_t changes = bench.panel().changes();
  const std::uint64_t writes = bench.phone.defaults.changes;
  const std::uint64_t synchronisations = bench.phone.defaults.synchronisations;
  bench.phone.virtualFiles.reads.drain();
  bench.phone.loop.runFor(milliseconds(60'000));
  EXPECT_EQ(bench.panel().changes(), changes);
  EXPECT_EQ(bench.phone.defaults.changes, writes);
  EXPECT_EQ(bench.phone.defaults.synchronisations, synchronisations);
  EXPECT_TRUE(bench.phone.virtualFiles.reads.entries.empty());
}

TEST(StatusPanelChanges, AVenueWithoutAMapChangesNothingEither) {
  PanelBench bench({.defaultVenueId = 7});
  bench.tick();
  const std::uint64_t changes = bench.panel().changes();
  bench.phone.loop.runFor(milliseconds(60'000));
  EXPECT_EQ(bench.panel().changes(), changes);
}

TEST(StatusPanelChanges, EachVisibleChangeIsOne) {
  PanelBench bench;
  const std::uint64_t changes = bench.panel().changes();
  bench.phone.defaults.set("bluetoothStatus", std::string("text"));
  bench.tick();
  EXPECT_EQ(bench.panel().changes(), changes + 1);
  bench.panel().initBluetoothPermission();
  EXPECT_EQ(bench.panel().changes(), changes + 2);
  bench.panel().setFields(bench.panel().fields());
  EXPECT_EQ(bench.panel().changes(), changes + 2);
}

TEST(StatusPanelChanges, WhatIsHiddenDoesNotCount) {
  StatusPanelViews views;
  views.settingsButton.hidden = true;
  const StatusPanelViews before = asSeen(views);
  EXPECT_TRUE(before.settingsButton.hidden);
  views.settingsButton.title = "other";
  EXPECT_EQ(asSeen(views), before);
  views.settingsButton.hidden = false;
  EXPECT_NE(asSeen(views), before);
}

}  // namespace
}  // namespace halvora
