// SPDX-License-Identifier: Apache-2.0
// The status panel as its user meets it: what each situation shows, what the buttons do, how the
// panel takes its size from its texts, and how it follows the host's values.
#include <QColor>
#include <QEasingCurve>
#include <QFont>
#include <QFontInfo>
#include <QQuickItem>
#include <cmath>
#include <string>

#include <gtest/gtest.h>

#include "tests/faces/qt/status_bench.h"

namespace halvora {
namespace {

constexpr const char* kEmptyMap = "{}";

StatusBenchSetup withStatus(const std::string& text) {
  return {.prepare = [text](VirtualPhone& phone) {
    phone.defaults.setFromOutside("bluetoothStatus", text);
  }};
}

// What is to be seen, from top to bottom.
std::string shown(StatusBench& bench) {
  std::string names;
  for (const char* name : {"onboardingLabel", "joinButton", "statusTextLabel", "settingsButton",
                           "seatSelectionButton", "seatSelectionSummaryRow"}) {
    if (bench.isShown(name)) names += std::string(name) + " ";
  }
  return names;
}

TEST(StatusPanelQml, AsksBeforeAnythingElse) {
  StatusBench bench({.authorization = BluetoothAuthorization::notDetermined});
  EXPECT_EQ(shown(bench), "onboardingLabel joinButton ");
  EXPECT_EQ(bench.text("joinButton"), "Join the Light Show");
  EXPECT_EQ(bench.text("onboardingLabel").left(19), "Make your phone a p");
  bench.click("joinButton");
  EXPECT_FALSE(bench.phone.bluetooth.log.entries.empty());
  EXPECT_EQ(shown(bench), "");
  bench.phone.bluetooth.setAuthorization(BluetoothAuthorization::allowedAlways);
  bench.tick();
  EXPECT_EQ(shown(bench), "statusTextLabel seatSelectionButton seatSelectionSummaryRow ");
}

TEST(StatusPanelQml, ShowsTheSentenceOfThePhonesSituation) {
  StatusBench bench(withStatus("Somewhere else"));
  EXPECT_EQ(bench.text("statusTextLabel"), "Somewhere else");
  EXPECT_EQ(shown(bench), "statusTextLabel seatSelectionButton seatSelectionSummaryRow ");
  EXPECT_EQ(bench.text("seatSelectionButton"), "Select Seat");
  EXPECT_EQ(bench.text("seatSelectionSummaryLabel"), "No seat selected");
  EXPECT_FALSE(bench.isShown("seatLUTStatusDot"));
}

TEST(StatusPanelQml, OffersTheSettingsWhereBluetoothIsForbidden) {
  StatusBench bench(withStatus("x"));
  bench.phone.defaults.setFromOutside("bluetoothStatus",
                                      bench.kit.localizedString("bluetooth_notAuthorised"));
  bench.tick();
  ASSERT_TRUE(bench.isShown("settingsButton"));
  bench.click("settingsButton");
  EXPECT_EQ(bench.phone.application.settingsOpened, 1);
}

TEST(StatusPanelQml, OffersTheSettingsWhereBluetoothIsOffIfTheHostSaysSo) {
  for (const bool isOffered : {false, true}) {
    StatusBenchSetup setup = withStatus("x");
    if (isOffered) setup.properties += "\noffersSettingsWhenOff: true";
    StatusBench bench(setup);
    bench.phone.defaults.setFromOutside("bluetoothStatus",
                                        bench.kit.localizedString("bluetooth_off"));
    bench.tick();
    EXPECT_EQ(bench.isShown("settingsButton"), isOffered);
    if (isOffered) bench.click("settingsButton");
    EXPECT_EQ(bench.phone.application.settingsOpened, isOffered ? 1 : 0);
  }
}

TEST(StatusPanelQml, ShowsTheSeatWithAnAmberAndThenAGreenDot) {
  StatusBench bench;
  bench.store({"A", "2", "7"}, {3, 4});
  bench.tick();
  EXPECT_EQ(bench.text("seatSelectionButton"), "Change Seat");
  EXPECT_EQ(bench.text("seatSelectionSummaryLabel"), "A  |  2  |  7");
  ASSERT_TRUE(bench.isShown("seatLUTStatusDot"));
  EXPECT_EQ(bench.item("seatLUTStatusDot")->property("color").value<QColor>().rgb(),
            QColor(255, 159, 26).rgb());
  EXPECT_EQ(bench.spokenName("seatLUTStatusDot"), "Your seat is being prepared");
  SeatStorage(bench.phone.defaults).setPersistedSeatLUTReady(true, 7);
  bench.tick();
  EXPECT_EQ(bench.item("seatLUTStatusDot")->property("color").value<QColor>().rgb(),
            QColor(33, 197, 93).rgb());
  EXPECT_EQ(bench.spokenName("seatLUTStatusDot"), "Your seat is ready for the show");
  const QRectF text = bench.frame("seatSelectionSummaryLabel");
  const QRectF dot = bench.frame("seatLUTStatusDot");
  EXPECT_EQ(dot.left(), text.right() + kSummaryGap);
  EXPECT_EQ(dot.center().y(), text.center().y());
  EXPECT_EQ(dot.size(), QSizeF(8, 8));
}

TEST(StatusPanelQml, ALongSeatNameLeavesRoomForTheDot) {
  StatusBench bench;
  bench.store({std::string(300, 'W'), "2", "7"}, {3, 4});
  bench.tick();
  EXPECT_LE(bench.frame("seatLUTStatusDot").right(), bench.frame("halvoraStatusView").right());
  EXPECT_TRUE(bench.item("seatSelectionSummaryLabel")->property("truncated").toBool());
}

TEST(StatusPanelQml, TurnsASpinnerWhileAMapIsLoaded) {
  StatusBench bench;
  // Which the bench asks for, so that its pictures stand still.
  bench.view().setProperty("reducedMotion", false);
  bench.phone.defaults.setFromOutside("venueID", std::int64_t{8});
  bench.panel().preloadSeatMapForVenueId(8);
  bench.panel().updateSeatSelectionUIForVenueId(8);
  bench.settle();
  EXPECT_EQ(bench.text("seatSelectionButton"), "Loading Seats...");
  EXPECT_FALSE(bench.item("seatSelectionButton")->isEnabled());
  EXPECT_EQ(bench.item("seatSelectionButton")->opacity(), 0.85);
  EXPECT_TRUE(bench.isShown("seatSelectionLoadingIndicator"));
  EXPECT_FALSE(bench.isShown("seatLUTStatusDot"));
  const QObject& turn = *bench.view().findChild<QObject*>(QStringLiteral("spinnerTurn"));
  const auto isTurning = [&turn] { return turn.property("running").toBool(); };
  bench.waitUntil(isTurning);
  EXPECT_EQ(turn.property("duration"), 1000);
  // The loop's time goes on without any of its turns, so nothing is loaded yet.
  bench.clickAt(bench.frame("seatSelectionButton").center());
  EXPECT_FALSE(bench.isShown("seatSheetContent"));
  EXPECT_TRUE(turn.property("running").toBool());
  bench.view().setProperty("reducedMotion", true);
  EXPECT_FALSE(turn.property("running").toBool());
  bench.view().setProperty("reducedMotion", false);
  bench.waitUntil(isTurning);
  bench.tick();
  EXPECT_FALSE(bench.isShown("seatSelectionLoadingIndicator"));
  EXPECT_FALSE(turn.property("running").toBool());
  EXPECT_EQ(bench.item("seatSelectionLoadingIndicator")->rotation(), 0);
}

// How a dot's animation goes: to what, in how many milliseconds, by which curve.
std::string animation(StatusBench& bench, const char* name) {
  const QObject* found = bench.view().findChild<QObject*>(QString::fromLatin1(name));
  if (found == nullptr) return "none";
  return std::to_string(std::lround(found->property("to").toReal() * 100)) + " in " +
         std::to_string(found->property("duration").toInt()) + ", " +
         std::to_string(found->property("easing").value<QEasingCurve>().type());
}

TEST(StatusPanelQml, PulsesTheDotAndPutsItBack) {
  StatusBench bench;
  bench.store({"A", "2", "7"}, {3, 4});
  bench.tick();
  const QObject& pulse = *bench.view().findChild<QObject*>(QStringLiteral("dotPulse"));
  EXPECT_FALSE(pulse.property("running").toBool());
  bench.panel().showSeatLUTPrecomputeProgressWithDone(0, 3, "1");
  EXPECT_FALSE(pulse.property("running").toBool());
  bench.panel().showSeatLUTPrecomputeProgressWithDone(1, 3, "1");
  EXPECT_TRUE(pulse.property("running").toBool());
  bench.waitUntil([&] { return !pulse.property("running").toBool(); });
  const QQuickItem& dot = *bench.item("seatLUTStatusDot");
  EXPECT_EQ(dot.scale(), 1);
  EXPECT_EQ(dot.opacity(), 1);

  const std::string slower = std::to_string(QEasingCurve::OutQuad);
  const std::string faster = std::to_string(QEasingCurve::InQuad);
  EXPECT_EQ(animation(bench, "dotGrows"), "135 in 110, " + slower);
  EXPECT_EQ(animation(bench, "dotFades"), "80 in 110, " + slower);
  EXPECT_EQ(animation(bench, "dotShrinks"), "100 in 140, " + faster);
  EXPECT_EQ(animation(bench, "dotReturns"), "100 in 140, " + faster);
}

TEST(StatusPanelQml, ADotThatIsHiddenPulsesNoMore) {
  StatusBench bench;
  bench.store({"A", "2", "7"}, {3, 4});
  bench.tick();
  bench.panel().showSeatLUTPrecomputeProgressWithDone(0, 3, "1");
  bench.panel().showSeatLUTPrecomputeProgressWithDone(1, 3, "1");
  bench.panel().storage().clearSeatSelectionForVenueId(7);
  bench.panel().hideSeatLUTPrecomputeProgress();
  const QObject& pulse = *bench.view().findChild<QObject*>(QStringLiteral("dotPulse"));
  EXPECT_FALSE(pulse.property("running").toBool());
  EXPECT_EQ(bench.item("seatLUTStatusDot")->scale(), 1);
  EXPECT_EQ(bench.item("seatLUTStatusDot")->opacity(), 1);
}

TEST(StatusPanelQml, TellsOfAMissingMapUntilItIsAcknowledged) {
  for (const bool isByKey : {false, true}) {
    StatusBench bench({.map = kEmptyMap});
    EXPECT_FALSE(bench.isShown("seatSelectionButton"));
    bench.turn([&] { bench.panel().openSeatSelector(); });
    ASSERT_TRUE(bench.isShown("alertContent"));
    EXPECT_EQ(bench.text("alertTitle"), "Seat Map Missing");
    EXPECT_EQ(bench.focused(), "alertButton");
    if (isByKey) {
      bench.key(Qt::Key_Escape);
    } else {
      bench.click("alertButton");
    }
    EXPECT_FALSE(bench.panel().presentedAlert());
    bench.waitUntil([&] { return !bench.isShown("alertContent"); });
  }
}

// States

StatusBenchSetup explained() {
  StatusBenchSetup setup;
  setup.map = mapOfSeats(2, 2);
  setup.properties = "explainsStates: true";
  return setup;
}

TEST(StatusPanelQml, StatesAreExplainedOnlyWhereTheHostWantsIt) {
  StatusBench plain;
  EXPECT_FALSE(plain.isShown("explanationLabel"));
  StatusBench bench(explained());
  ASSERT_TRUE(bench.isShown("explanationLabel"));
  EXPECT_EQ(bench.text("explanationLabel"), "No light show is heard here yet.");
  EXPECT_FALSE(bench.isShown("retryButton"));
  bench.phone.bluetooth.setState(CentralState::poweredOff);
  bench.tick();
  EXPECT_EQ(bench.text("explanationLabel"), "Bluetooth is switched off.");
}

TEST(StatusPanelQml, AMapThatIsMissingIsLookedForAgain) {
  StatusBenchSetup setup = explained();
  setup.map = "{}";
  StatusBench bench(setup);
  bench.tick();
  EXPECT_EQ(bench.text("explanationLabel"), "The seat map of this venue is missing.");
  ASSERT_TRUE(bench.isShown("retryButton"));
  EXPECT_EQ(bench.text("retryButton"), "Try Again");
  bench.phone.virtualFiles.put("/host/HVAssets/Maps/Venue-7/map.json", mapOfSeats(2, 2));
  bench.click("retryButton");
  bench.tick();
  EXPECT_NE(bench.text("explanationLabel"), "The seat map of this venue is missing.");
  EXPECT_TRUE(bench.isShown("seatSelectionButton"));
}

TEST(StatusPanelQml, ASeatOfAnotherDayIsAskedAbout) {
  StatusBench plain;
  plain.store({"Section 209", "Row 8", "Seat 10"}, {362, 404});
  plain.tick();
  EXPECT_FALSE(plain.isShown("sameSeatLabel"));

  StatusBench bench({.properties = "asksOnAnotherDay: true"});
  EXPECT_FALSE(bench.isShown("sameSeatLabel"));
  bench.store({"Section 209", "Row 8", "Seat 10"}, {362, 404});
  bench.tick();
  EXPECT_EQ(bench.text("sameSeatLabel"), "Still Section 209, Row 8, Seat 10?");
  bench.click("sameSeatButton");
  EXPECT_FALSE(bench.isShown("sameSeatLabel"));
  bench.tick();
  EXPECT_FALSE(bench.isShown("sameSeatLabel"));
  // A seat that is chosen today is not asked about, and one of any other day is.
  bench.turn([&] { bench.face().setSeat("209", "8", "9"); });
  bench.tick();
  EXPECT_FALSE(bench.isShown("sameSeatLabel"));
  SeatStorage(bench.phone.defaults).setSeatDay(20000101, 7);
  bench.tick();
  EXPECT_EQ(bench.text("sameSeatLabel"), "Still Section 209, Row 8, Seat 9?");
  EXPECT_TRUE(bench.isShown("sameSeatButton"));
}

// Size

TEST(StatusPanelQml, IsAsHighAsItsContent) {
  StatusBench bench(withStatus("Somewhere else"));
  const QRectF button = bench.frame("seatSelectionButton");
  const QRectF status = bench.frame("statusTextLabel");
  const QRectF summary = bench.frame("seatSelectionSummaryRow");
  EXPECT_EQ(status.height(), 22);
  EXPECT_EQ(button.top(), status.bottom() + 20);
  EXPECT_EQ(button.height(), 44);
  EXPECT_EQ(summary.top(), button.bottom() + 6);
  EXPECT_EQ(bench.view().implicitHeight(), 22 + 20 + 44 + 6 + summary.height());
  EXPECT_EQ(bench.panel().preferredContentSize().height, bench.view().implicitHeight());
  EXPECT_EQ(bench.view().implicitWidth(), 350);
}

TEST(StatusPanelQml, WhatIsHiddenTakesNoRoom) {
  StatusBench bench(withStatus("Somewhere else"));
  bench.phone.defaults.setFromOutside("venueID", std::nullopt);
  bench.tick();
  EXPECT_EQ(shown(bench), "statusTextLabel ");
  EXPECT_EQ(bench.view().implicitHeight(), 22);
}

TEST(StatusPanelQml, FollowsItsWidth) {
  StatusBench bench(withStatus("A sentence that takes one line of a wide panel"));
  bench.window().resize(1200, 800);
  bench.settle();
  const qreal wide = bench.view().implicitHeight();
  EXPECT_EQ(bench.frame("statusTextLabel").height(), 22);
  EXPECT_EQ(bench.frame("seatSelectionButton").width(), 1160);
  bench.window().resize(200, 800);
  bench.settle();
  const qreal label = bench.frame("statusTextLabel").height();
  EXPECT_GE(label, 3 * 22);
  EXPECT_EQ(bench.view().implicitHeight(), wide + label - 22);
}

TEST(StatusPanelQml, WithoutAWidthItMeasuresForTheScreen) {
  StatusBench bench({.width = "0"});
  EXPECT_EQ(bench.panel().preferredContentSize().width, 390);
  EXPECT_EQ(bench.view().implicitWidth(), 390);
  EXPECT_GT(bench.view().implicitHeight(), 44);
}

TEST(StatusPanelQml, LettersAreNeverCutForTheLineHeight) {
  StatusBench bench(withStatus("One line"));
  bench.view().setProperty("statusTextFontSize", 40);
  bench.settle();
  EXPECT_GT(bench.frame("statusTextLabel").height(), 40);
}

// The host's values

TEST(StatusPanelQml, TakesTheHostsValuesAtOnce) {
  StatusBench bench(withStatus("Somewhere else"));
  QQuickItem& view = bench.view();
  view.setProperty("statusTextColour", QColor(10, 20, 30));
  view.setProperty("statusTextFontName", QStringLiteral("DejaVu Sans Mono"));
  view.setProperty("statusTextFontSize", 15);
  view.setProperty("statusTextAlignment", int{Qt::AlignHCenter});
  view.setProperty("actionButtonColour", QColor(1, 2, 3));
  view.setProperty("actionButtonTitleColour", QColor(4, 5, 6));
  view.setProperty("actionButtonTitleFontName", QStringLiteral("DejaVu Sans Bold"));
  view.setProperty("actionButtonTitleFontSize", 19);
  view.setProperty("actionButtonHeight", 60);
  bench.settle();

  const QQuickItem& status = *bench.item("statusTextLabel");
  EXPECT_EQ(status.property("color").value<QColor>(), QColor(10, 20, 30));
  EXPECT_EQ(status.property("font").value<QFont>().family(), "DejaVu Sans Mono");
  EXPECT_EQ(status.property("font").value<QFont>().pixelSize(), 15);
  EXPECT_EQ(status.property("horizontalAlignment").toInt(), int{Qt::AlignHCenter});
  EXPECT_EQ(bench.item("seatSelectionButton")->height(), 60);
  const QFont title = bench.item("seatSelectionButton")->property("font").value<QFont>();
  EXPECT_EQ(title.pixelSize(), 19);
  EXPECT_TRUE(QFontInfo(title).bold());
  // A pixel of the button beside its title.
  const QPointF corner = bench.frame("seatSelectionButton").topLeft() + QPointF(20, 10);
  EXPECT_EQ(bench.picture().pixelColor(corner.toPoint()), QColor(1, 2, 3));
}

TEST(StatusPanelQml, AFontThatThePhoneLacksIsTheSystems) {
  StatusBench bench;
  bench.view().setProperty("statusTextFontName", QStringLiteral("No Such Font"));
  bench.view().setProperty("statusTextFontSize", 13);
  bench.settle();
  const QFont font = bench.item("statusTextLabel")->property("font").value<QFont>();
  EXPECT_EQ(font.family(), "DejaVu Sans");
  EXPECT_EQ(font.pixelSize(), 13);
}

TEST(StatusPanelQml, TheDefaultVenueCountsUntilOneIsHeard) {
  StatusBench bench({.isHeard = false});
  EXPECT_FALSE(bench.isShown("seatSelectionButton"));
  bench.view().setProperty("defaultVenueId", 7);
  bench.tick();
  EXPECT_TRUE(bench.isShown("seatSelectionButton"));
}

// Everyone

TEST(StatusPanelQml, LargeTextsMakeItHigherAndCutNothing) {
  StatusBench bench({.window = {360, 640}, .textScale = 2});
  bench.phone.defaults.setFromOutside("bluetoothStatus",
                                      bench.kit.localizedString("bluetooth_notAuthorised"));
  bench.tick();
  for (const char* name : {"settingsButton", "seatSelectionButton"}) {
    const QQuickItem& button = *bench.item(name);
    const auto* title = button.property("contentItem").value<QQuickItem*>();
    EXPECT_EQ(title->property("font").value<QFont>().pixelSize(), 34);
    EXPECT_LE(title->implicitHeight(), title->height()) << name;
    EXPECT_LE(title->property("contentWidth").toReal(), title->width()) << name;
  }
  EXPECT_EQ(bench.view().implicitHeight(), bench.frame("seatSelectionSummaryRow").bottom() -
                                               bench.frame("halvoraStatusView").top());
}

TEST(StatusPanelQml, IsMirroredWhereOneReadsFromTheRight) {
  StatusBench bench({.language = "ar"});
  bench.store({"A", "2", "7"}, {3, 4});
  bench.tick();
  const QRectF panel = bench.frame("halvoraStatusView");
  const QRectF text = bench.frame("seatSelectionSummaryLabel");
  EXPECT_EQ(text.right(), panel.right());
  EXPECT_EQ(bench.frame("seatLUTStatusDot").right(), text.left() - kSummaryGap);
  const QQuickItem& status = *bench.item("statusTextLabel");
  EXPECT_EQ(status.property("effectiveHorizontalAlignment").toInt(), int{Qt::AlignRight});
  // What the host asks for by name is not turned round.
  bench.view().setProperty("statusTextAlignment", int{Qt::AlignLeft});
  EXPECT_EQ(status.property("effectiveHorizontalAlignment").toInt(), int{Qt::AlignLeft});
  bench.view().setProperty("statusTextAlignment", int{Qt::AlignRight});
  EXPECT_EQ(status.property("effectiveHorizontalAlignment").toInt(), int{Qt::AlignRight});
}

TEST(StatusPanelQml, IsUsedByKeyboardAlone) {
  StatusBench bench({.authorization = BluetoothAuthorization::notDetermined});
  bench.key(Qt::Key_Tab);
  EXPECT_EQ(bench.focused(), "joinButton");
  bench.key(Qt::Key_Space);
  bench.phone.bluetooth.setAuthorization(BluetoothAuthorization::allowedAlways);
  bench.tick();
  bench.key(Qt::Key_Tab);
  EXPECT_EQ(bench.focused(), "seatSelectionButton");
  bench.key(Qt::Key_Return);
  EXPECT_TRUE(bench.isShown("seatSheetContent"));
}

TEST(StatusPanelQml, SaysWhatItShows) {
  StatusBench bench(withStatus("Somewhere else"));
  EXPECT_EQ(bench.spokenName("statusTextLabel"), "Somewhere else");
  EXPECT_EQ(bench.spokenName("seatSelectionButton"), "Select Seat");
  EXPECT_EQ(bench.spokenName("seatSelectionSummaryLabel"), "No seat selected");
}

// Lifetimes

TEST(StatusPanelQml, GoesWithItsWizardOnScreen) {
  StatusBench bench;
  bench.open();
  bench.destroyWindow();
  const std::uint64_t turns = bench.phone.loop.turns();
  bench.phone.loop.runFor(milliseconds(2000));
  // The engine's two looks a second at the room's light go on, and nothing of the panel's.
  EXPECT_EQ(bench.phone.loop.turns() - turns, 4U);
  bench.turn([&] { bench.phone.application.dismissPresentedScreens(); });
}

TEST(StatusPanelQml, AShowTakesTheWizardAway) {
  StatusBench bench;
  bench.open();
  bench.turn([&] { bench.phone.application.dismissPresentedScreens(); });
  bench.waitUntil([&] { return !bench.isShown("seatSheetContent"); });
  EXPECT_FALSE(bench.wizard().isLoaded());
  bench.tick();
  bench.open();
  EXPECT_TRUE(bench.isShown("pickerView"));
}

TEST(StatusPanelQml, AShowTakesTheWizardsAlertAwayWithIt) {
  StatusBench bench(
      {.map = mapWithStanding(), .isHeard = false, .properties = "defaultVenueId: 7"});
  bench.open();
  bench.key(Qt::Key_Down);
  bench.key(Qt::Key_Return);
  ASSERT_TRUE(bench.isShown("alertContent"));
  bench.turn([&] { bench.phone.application.dismissPresentedScreens(); });
  bench.waitUntil(
      [&] { return !bench.isShown("seatSheetContent") && !bench.isShown("alertContent"); });
  bench.tick();
  // Nothing lies over the panel any more, which can be used as before.
  bench.open();
  EXPECT_FALSE(bench.isShown("alertContent"));
  EXPECT_TRUE(bench.isShown("pickerView"));
}

TEST(StatusPanelQml, TwoPanelsShareAnEngine) {
  StatusBench bench({.properties = "HalvoraStatusView { objectName: 'second'; y: 300; "
                                   "width: parent.width; height: implicitHeight }"});
  EXPECT_GT(bench.item("second")->implicitHeight(), 44);
  EXPECT_EQ(bench.item("second")->implicitHeight(), bench.view().implicitHeight());
}

}  // namespace
}  // namespace halvora
