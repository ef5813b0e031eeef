// SPDX-License-Identifier: Apache-2.0
// Panel and wizard for whoever uses them through assistive technology: what is in the tree, what
// answers, what is said aloud, and where the keyboard is afterwards.
#include <QAccessible>
#include <QStringList>
#include <string>

#include <gtest/gtest.h>

#include "faces/qt/impl/status_announcer.h"
#include "tests/faces/qt/access_tree.h"
#include "tests/faces/qt/qml_bench.h"
#include "tests/faces/qt/status_bench.h"

namespace halvora {
namespace {

// A user of a screen reader: finds things by their names and does what they let be done.
class Listener {
 public:
  explicit Listener(const StatusBenchSetup& setup) : bench(setup) {
    auto* announcer = bench.view().findChild<StatusAnnouncer*>();
    EXPECT_NE(announcer, nullptr);
    QObject::connect(announcer, &StatusAnnouncer::announced, announcer,
                     [this](const QString& text) { heard += text.split(QLatin1Char('\n')); });
  }

  AccessNodes tree() { return accessTree(bench.window()); }
  bool finds(const char* name) { return withName(tree(), QString::fromUtf8(name)) != nullptr; }
  void act(const char* name, const QString& action) {
    const AccessNodes nodes = tree();
    const AccessNode* node = withName(nodes, QString::fromUtf8(name));
    ASSERT_NE(node, nullptr) << name;
    ASSERT_TRUE(node->act(action)) << name;
    bench.turn([] {});
    bench.waitUntil([&] { return !bench.wizard().isPresented() || bench.isShown("seatButtons"); });
    bench.settle();
  }
  void press(const char* name) { act(name, QAccessibleActionInterface::pressAction()); }
  void waitUntilClosed() {
    bench.waitUntil([&] { return !bench.wizard().isLoaded(); });
    bench.settle();
  }
  bool hasHeard(const char* words) { return heard.contains(QString::fromUtf8(words)); }
  std::string allHeard() { return heard.join(QStringLiteral(" | ")).toStdString(); }

  StatusBench bench;
  QStringList heard;
};

StatusBenchSetup hall(int rows = 4, int seats = 5) {
  StatusBenchSetup setup;
  setup.map = mapOfSeats(rows, seats);
  return setup;
}

StatusBenchSetup floor() {
  StatusBenchSetup setup;
  setup.map = mapWithStanding();
  return setup;
}

TEST(SeatAccess, ASeatIsChosenByTheActionsOfAScreenReaderAlone) {
  Listener user(hall());
  user.press("Select Seat");
  user.press("A, 1 of 2");
  user.press("Next");
  user.press("Row 2, 2 of 4");
  user.press("Next");
  user.press("3, 3 of 5");
  user.press("Confirm Seat");
  user.waitUntilClosed();
  EXPECT_EQ(user.bench.stored(), (SeatPoint{3, 2}));
  user.bench.tick();
  EXPECT_TRUE(user.finds("A, Row 2, 3"));
}

TEST(SeatAccess, EachStepIsSaidAndSoIsTheEnd) {
  Listener user(hall());
  user.press("Select Seat");
  EXPECT_TRUE(user.hasHeard("Step 1 of 3")) << user.allHeard();
  user.press("A, 1 of 2");
  EXPECT_TRUE(user.hasHeard("A, 1 of 2")) << user.allHeard();
  user.press("Next");
  EXPECT_TRUE(user.hasHeard("Step 2 of 3")) << user.allHeard();
  user.press("Row 2, 2 of 4");
  user.press("Next");
  EXPECT_TRUE(user.hasHeard("Step 3 of 3")) << user.allHeard();
  user.press("3, 3 of 5");
  user.press("Confirm Seat");
  user.waitUntilClosed();
  user.bench.tick();
  EXPECT_TRUE(user.hasHeard("A, Row 2, 3")) << user.allHeard();
  EXPECT_TRUE(user.hasHeard("Your seat is being prepared") ||
              user.hasHeard("Your seat is ready for the show"))
      << user.allHeard();
}

TEST(SeatAccess, AChangeOfTheVenueIsSaid) {
  Listener user(hall());
  user.bench.phone.defaults.setFromOutside("bluetoothStatus", std::string("You are elsewhere."));
  user.bench.tick();
  EXPECT_TRUE(user.hasHeard("You are elsewhere.")) << user.allHeard();
}

TEST(SeatAccess, RowsAreAListThatSaysWhichIsChosen) {
  Listener user(hall(20, 2));
  user.press("Select Seat");
  user.press("A, 1 of 2");
  user.press("Next");
  const AccessNodes before = user.tree();
  const AccessNode* list = withObjectName(before, "pickerView");
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(list->role, QAccessible::List);
  for (int page = 0; page < 20 && !user.finds("Row 8, 8 of 20"); ++page) {
    user.act(withObjectName(user.tree(), "pickerView")->name.toUtf8().constData(),
             QAccessibleActionInterface::increaseAction());
  }
  user.press("Row 8, 8 of 20");
  const AccessNodes after = user.tree();
  int selected = 0;
  for (const AccessNode& node : after) {
    if (!node.is(QAccessible::ListItem)) continue;
    EXPECT_TRUE(node.interface->state().selectable);
    EXPECT_EQ(node.interface->state().selected != 0, node.name == "Row 8, 8 of 20");
    selected += node.interface->state().selected != 0 ? 1 : 0;
  }
  EXPECT_EQ(selected, 1);
}

TEST(SeatAccess, ThePlanHasFourWays) {
  Listener user(floor());
  user.press("Select Seat");
  user.press("Standing Floor, 1 of 2");
  user.press("Next");
  const auto place = [&] {
    return std::to_string(user.bench.selector().selectedSeatIndex()) + " " +
           std::to_string(user.bench.selector().selectedRowIndex());
  };
  EXPECT_EQ(place(), "2 2");
  user.press("To the right");
  EXPECT_EQ(place(), "3 2");
  user.press("Nearer to the stage");
  EXPECT_EQ(place(), "3 1");
  EXPECT_TRUE(user.hasHeard("75 percent from the left, 25 percent from the stage"))
      << user.allHeard();
  user.press("To the left");
  user.press("Farther from the stage");
  EXPECT_EQ(place(), "2 2");
  const AccessNodes nodes = user.tree();
  const AccessNode* area = withObjectName(nodes, "standingDragArea");
  ASSERT_NE(area, nullptr);
  EXPECT_TRUE(area->act(QAccessibleActionInterface::scrollLeftAction()));
  EXPECT_EQ(place(), "1 2");
  user.press("Confirm Location");
  user.waitUntilClosed();
  EXPECT_EQ(user.bench.stored(), (SeatPoint{10, 20}));
}

TEST(SeatAccess, ASheetHidesWhatIsBehindItAndOnlyThat) {
  StatusBenchSetup setup = hall();
  setup.prepare = [](VirtualPhone& phone) {
    phone.defaults.setFromOutside("bluetoothStatus", std::string("You are elsewhere."));
  };
  Listener user(setup);
  ASSERT_NE(withObjectName(user.tree(), "statusTextLabel"), nullptr);
  user.press("Select Seat");
  EXPECT_EQ(withObjectName(user.tree(), "seatSelectionButton"), nullptr);
  EXPECT_EQ(withObjectName(user.tree(), "statusTextLabel"), nullptr);
  EXPECT_NE(withObjectName(user.tree(), "closeButton"), nullptr);
  EXPECT_NE(withObjectName(user.tree(), "statusAnnouncer"), nullptr);
  user.press("Close");
  user.waitUntilClosed();
  EXPECT_NE(withObjectName(user.tree(), "seatSelectionButton"), nullptr);
  EXPECT_NE(withObjectName(user.tree(), "statusTextLabel"), nullptr);
}

TEST(SeatAccess, AnAlertHidesTheSheet) {
  StatusBenchSetup setup = floor();
  setup.isHeard = false;
  setup.properties = "defaultVenueId: 7";
  Listener user(setup);
  user.press("Select Seat");
  user.press("Standing Floor, 1 of 2");
  user.press("Next");
  EXPECT_EQ(withObjectName(user.tree(), "nextButton"), nullptr);
  user.press("OK");
  EXPECT_NE(withObjectName(user.tree(), "nextButton"), nullptr);
}

// Every screen there is, the way to it by actions alone, and its whole tree.
TEST(SeatAccess, EveryScreenSpeaks) {
  for (const auto authorization :
       {BluetoothAuthorization::notDetermined, BluetoothAuthorization::denied,
        BluetoothAuthorization::allowedAlways}) {
    StatusBenchSetup setup = floor();
    setup.authorization = authorization;
    Listener user(setup);
    expectSpeaking(user.tree());
    EXPECT_GT(user.tree().size(), 3U);
  }
  Listener user(floor());
  user.press("Select Seat");
  expectSpeaking(user.tree());
  user.press("A, 2 of 2");
  user.press("Next");
  expectSpeaking(user.tree());
  user.press("1, 1 of 1");
  user.press("Next");
  expectSpeaking(user.tree());
  user.press("Back");
  user.press("Back");
  user.press("Standing Floor, 1 of 2");
  user.press("Next");
  expectSpeaking(user.tree());

  StatusBenchSetup large;
  Listener filtered(large);
  filtered.press("Select Seat");
  filtered.bench.type("2");
  expectSpeaking(filtered.tree());
  filtered.press("Clear");
  EXPECT_EQ(filtered.bench.text("seatFilter"), "");
}

TEST(SeatAccess, AButtonThatIsDisabledAnswersNothing) {
  Listener user(hall());
  user.press("Select Seat");
  user.press("Next");
  EXPECT_EQ(user.bench.selector().currentStep(), 0);
}

// Looks come and go within a show; its begin and its end are said.
TEST(SeatAccess, AShowsBeginAndEndAreSaidOnce) {
  QmlBench bench;
  QmlWindow window(bench.qml, R"(
    import QtQuick
    import QtQuick.Window
    import Halvora
    Window {
      width: 300; height: 400; visible: true
      HalvoraView { anchors.fill: parent }
      HalvoraStatusView { width: 300 }
    })");
  auto* announcer = window.window().findChild<StatusAnnouncer*>();
  ASSERT_NE(announcer, nullptr);
  QStringList heard;
  QObject::connect(announcer, &StatusAnnouncer::announced, announcer,
                   [&](const QString& text) { heard += text.split(QLatin1Char('\n')); });
  const auto count = [&](const char* words) {
    QCoreApplication::processEvents();
    return heard.count(QString::fromLatin1(words));
  };
  bench.listen();
  bench.show(255, 0, 0, 1);
  bench.show(0, 255, 0, 4);
  EXPECT_EQ(count("The light show has begun."), 1);
  EXPECT_EQ(count("The light show has ended."), 0);
  bench.show(0, 0, 0, 0);
  EXPECT_EQ(count("The light show has ended."), 1);
}

// Focus

TEST(SeatFocus, EachStepHasTheKeyboardAtItsPicker) {
  StatusBench bench(hall());
  bench.open();
  bench.key(Qt::Key_Down);
  for (int step = 1; step <= 2; ++step) {
    bench.click("nextButton");
    EXPECT_EQ(bench.focused(), "pickerView") << step;
    bench.key(Qt::Key_Down);
  }
  bench.click("backButton");
  EXPECT_EQ(bench.focused(), "pickerView");
}

TEST(SeatFocus, WhoeverIsAtTheKeyboardStaysAtIt) {
  StatusBench bench(hall());
  bench.open();
  bench.key(Qt::Key_Down);
  while (bench.focused() != "nextButton") bench.key(Qt::Key_Tab);
  bench.key(Qt::Key_Return);
  EXPECT_EQ(bench.focused(), "pickerView");
  EXPECT_TRUE(bench.isShown("pickerFocusRing"));
}

TEST(SeatFocus, ClosingGoesBackToTheButtonThatOpened) {
  StatusBench bench(hall());
  bench.key(Qt::Key_Tab);
  bench.key(Qt::Key_Return);
  bench.waitUntil([&] { return bench.isShown("seatSheetContent"); });
  bench.key(Qt::Key_Escape);
  bench.waitUntil([&] { return !bench.wizard().isLoaded(); });
  EXPECT_EQ(bench.focused(), "seatSelectionButton");
}

TEST(SeatFocus, NextWithoutAChoiceSaysWhatToDo) {
  StatusBench bench(hall());
  bench.open();
  bench.key(Qt::Key_Return);
  EXPECT_EQ(bench.text("wizardMessage"), "Please choose a section first.");
  bench.key(Qt::Key_Down);
  EXPECT_EQ(bench.text("wizardMessage"), "");
  bench.key(Qt::Key_Return);
  bench.clickAt(bench.frame("nextButton").center());
  EXPECT_EQ(bench.text("wizardMessage"), "Please choose a row first.");
  EXPECT_TRUE(bench.isShown("wizardMessage"));
}

TEST(SeatFocus, EscapeAsksBeforeAChoiceIsLost) {
  StatusBench bench(hall());
  bench.open();
  bench.key(Qt::Key_Down);
  bench.key(Qt::Key_Escape);
  EXPECT_TRUE(bench.wizard().isPresented());
  EXPECT_TRUE(bench.text("wizardMessage").startsWith("Your choice is not confirmed."));
  // Whoever goes on is asked again.
  bench.key(Qt::Key_Down);
  bench.key(Qt::Key_Escape);
  EXPECT_TRUE(bench.wizard().isPresented());
  bench.key(Qt::Key_Escape);
  EXPECT_FALSE(bench.wizard().isPresented());
}

TEST(SeatFocus, TheDotHasItsWordBesideIt) {
  StatusBench bench(hall());
  bench.store({"A", "Row 1", "1"}, {1, 1});
  bench.tick();
  ASSERT_TRUE(bench.isShown("seatLUTStatusWord"));
  const QString word = bench.text("seatLUTStatusWord");
  EXPECT_TRUE(word == "Preparing" || word == "Ready") << word.toStdString();
  EXPECT_GE(bench.frame("seatLUTStatusWord").left(), bench.frame("seatLUTStatusDot").right());
  EXPECT_LE(bench.frame("seatLUTStatusWord").right(),
            bench.frame("seatSelectionSummaryRow").right());
}

}  // namespace
}  // namespace halvora
