// SPDX-License-Identifier: Apache-2.0
// What an operator relies on in front of an audience: nothing is on the air by mistake, dark is
// dark, nothing is lost by one wrong press, and every control is there for assistive technology.
#include <QAccessible>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "apps/console/desk_choices.h"
#include "apps/console/look_history.h"
#include "apps/console/options.h"
#include "apps/console/show_files.h"
#include "tests/adapters/standard/temporary_folder.h"
#include "tests/apps/console/console_bench.h"
#include "tests/faces/qt/access_tree.h"

namespace halvora {
namespace {

struct ConsoleSafety : ConsoleTest {
  void holdKey(Qt::Key key, Duration time) {
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
    QCoreApplication::sendEvent(&window(), &press);
    pass(time);
    QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier);
    QCoreApplication::sendEvent(&window(), &release);
    settle();
  }
  void hold(const char* name, Duration time) {
    const QPointF place = middleOf(name);
    QMouseEvent press(QEvent::MouseButtonPress, place, window().mapToGlobal(place), Qt::LeftButton,
                      Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&window(), &press);
    pass(time);
    QMouseEvent release(QEvent::MouseButtonRelease, place, window().mapToGlobal(place),
                        Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&window(), &release);
    settle();
  }
  QString recording(const QTemporaryDir& folder) {
    const QString path = folder.filePath(QStringLiteral("show.jsonl"));
    desk.setProperty("file", path);
    showSwatch("swatch2");
    desk.record();
    showSwatch("swatch7");
    pass(milliseconds(4000));
    desk.stop();
    return path;
  }
};

TEST(ShowConsoleStart, IsOffAir) {
  VirtualRunLoop loop;
  VirtualQueues queues{loop};
  DemoLibraries libraries;
  ShowConsole desk(sourceTree() + "/assets/demo", loop, queues, libraries);
  loop.runFor(milliseconds(3000));
  EXPECT_FALSE(desk.isOnAir());
  EXPECT_EQ(desk.packetsSent(), 0);
}

// Any folder of a venue's assets will do, and any venue.
TEST(ShowConsoleStart, TakesTheVenueThatItsAssetsAreOf) {
  const TemporaryFolder folder;
  EXPECT_EQ(venueOf(folder.path()), kDemoVenue);
  folder.write("HVAssets/Maps/Venue-31/map.json", "{}");
  folder.write("HVAssets/Maps/Venue-12/map.json", "{}");
  folder.write("HVAssets/Maps/Venue-x/map.json", "{}");
  EXPECT_EQ(venueOf(folder.path()), 12);
  VirtualRunLoop loop;
  VirtualQueues queues{loop};
  DemoLibraries libraries;
  ShowConsole desk(folder.path(), loop, queues, libraries);
  desk.setOnAir(true);
  loop.runFor(milliseconds(500));
  EXPECT_EQ(desk.packet().venueId, 12);
  folder.write("HVAssets/Maps/Venue-7/map.json", "{}");
  EXPECT_EQ(venueOf(folder.path()), 7);
}

TEST(ShowConsoleStart, NeedsNoShow) {
  const TemporaryFolder folder;
  DemoOptions options;
  options.assets = folder.path();
  const DemoLibraries libraries;
  const auto files = openShow(options, folder.path(), libraries.json);
  ASSERT_TRUE(std::holds_alternative<ShowFiles>(files));
  EXPECT_EQ(std::get<ShowFiles>(files).assets, folder.path());
  // A picture of a show does.
  options.contactSheet = "sheet.png";
  EXPECT_TRUE(
      std::holds_alternative<DemoRefusal>(openShow(options, folder.path(), libraries.json)));
}

TEST_F(ConsoleSafety, LeavingTheAirIsHeld) {
  click("onAir");
  EXPECT_TRUE(desk.isOnAir());
  hold("onAir", ShowConsole::kHoldToLeave - milliseconds(100));
  EXPECT_TRUE(desk.isOnAir());
  hold("onAir", ShowConsole::kHoldToLeave + milliseconds(1));
  EXPECT_FALSE(desk.isOnAir());
  click("onAir");
  EXPECT_TRUE(desk.isOnAir());
  item("onAir").forceActiveFocus(Qt::TabFocusReason);
  for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Space}) {
    holdKey(key, milliseconds(100));
    EXPECT_TRUE(desk.isOnAir());
    holdKey(key, ShowConsole::kHoldToLeave + milliseconds(1));
    EXPECT_FALSE(desk.isOnAir());
    holdKey(key, milliseconds(100));
    EXPECT_TRUE(desk.isOnAir());
  }
}

TEST_F(ConsoleSafety, EscapeDoesNotQuitOnAir) {
  key(Qt::Key_Escape);
  EXPECT_TRUE(window().isVisible());
  EXPECT_TRUE(item("hintText").property("text").toString().startsWith("Still on air"));
}

TEST_F(ConsoleSafety, BlackoutIsBlackAndStays) {
  pass(kFirstLook);
  showSwatch("swatch2");
  click("blackout");
  pass(milliseconds(1500));
  expectNear(phoneColour(), QColor("#000000"));
  EXPECT_NE(desk.packet().mode, 0) << "the hosts' pages would light up";
  EXPECT_EQ(desk.packet().ledMode, 0);
  // Whatever is set meanwhile waits.
  click("swatch7");
  pass(milliseconds(1500));
  expectNear(phoneColour(), QColor("#000000"));
  key(Qt::Key_B, QStringLiteral("b"));
  pass(milliseconds(1500));
  expectNear(phoneColour(), QColor("#1f5bff"));
}

// Unlike a blackout: the phones are their hosts' again.
TEST_F(ConsoleSafety, EndShowIsTheModeThatEndsIt) {
  pass(kFirstLook);
  EXPECT_NE(desk.packet().mode, 0);
  const AccessNodes nodes = accessTree(window());
  const AccessNode* end = withName(nodes, QStringLiteral("mode End show"));
  ASSERT_NE(end, nullptr);
  EXPECT_TRUE(end->act(QAccessibleActionInterface::pressAction()));
  pass(milliseconds(500));
  EXPECT_EQ(desk.packet().mode, 0);
  EXPECT_FALSE(desk.isBlackout());
}

TEST_F(ConsoleSafety, BlackoutAndOffAirEndAReplay) {
  const QTemporaryDir folder;
  pass(kFirstLook);
  recording(folder);
  desk.replay();
  pass(milliseconds(1200));
  ASSERT_TRUE(desk.isReplaying());
  click("blackout");
  pass(milliseconds(5000));
  EXPECT_FALSE(desk.isReplaying());
  expectNear(phoneColour(), QColor("#000000"));

  desk.replay();
  EXPECT_FALSE(desk.isBlackout());
  pass(milliseconds(1200));
  ASSERT_TRUE(desk.isReplaying());
  desk.setOnAir(false);
  const int sent = desk.packetsSent();
  pass(milliseconds(5000));
  EXPECT_FALSE(desk.isReplaying());
  EXPECT_EQ(desk.packetsSent(), sent);
}

TEST_F(ConsoleSafety, AReplayIsOnTheAir) {
  const QTemporaryDir folder;
  pass(kFirstLook);
  recording(folder);
  desk.setOnAir(false);
  desk.replay();
  EXPECT_TRUE(desk.isOnAir());
}

TEST_F(ConsoleSafety, OverwritingIsAskedFor) {
  const QTemporaryDir folder;
  pass(kFirstLook);
  const QString path = recording(folder);
  desk.record();
  EXPECT_FALSE(desk.isRecording());
  EXPECT_TRUE(desk.message().contains(QStringLiteral("once more"))) << desk.message().toStdString();
  desk.record();
  EXPECT_TRUE(desk.isRecording());
  desk.stop();
  // Once more for another file is not once more for this one.
  QFile other(folder.filePath(QStringLiteral("other.jsonl")));
  ASSERT_TRUE(other.open(QIODevice::WriteOnly));
  other.close();
  desk.record();
  desk.setProperty("file", other.fileName());
  desk.record();
  EXPECT_FALSE(desk.isRecording());
}

TEST_F(ConsoleSafety, ARecordingUnderWayIsKeptWhereTheConsoleEnds) {
  const QTemporaryDir folder;
  const QString path = folder.filePath(QStringLiteral("evening.jsonl"));
  {
    ShowConsole other(sourceTree() + "/assets/demo", loop, queues, libraries);
    other.setProperty("file", path);
    other.record();
    EXPECT_TRUE(other.isRecording());
    EXPECT_FALSE(QFile::exists(path));
  }
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  EXPECT_TRUE(file.readAll().contains("\"start\":true"));
}

TEST_F(ConsoleSafety, NumberKeysChooseModes) {
  key(Qt::Key_5, QStringLiteral("5"));
  EXPECT_EQ(desk.look().mode, 5);
  item("file").forceActiveFocus(Qt::TabFocusReason);
  key(Qt::Key_3, QStringLiteral("3"));
  EXPECT_EQ(desk.look().mode, 5);
}

// Who speaks to the machine, or brushes against its keys, sends no look by it.
TEST_F(ConsoleSafety, SingleKeysCanBeSwitchedOff) {
  const auto keyWithControl = [this](Qt::Key key) {
    QKeyEvent press(QEvent::KeyPress, key, Qt::ControlModifier);
    QCoreApplication::sendEvent(&window(), &press);
    settle();
  };
  desk.set("mode", 1);
  click("singleKeys");
  for (const Qt::Key one : {Qt::Key_5, Qt::Key_B, Qt::Key_F}) key(one);
  EXPECT_EQ(desk.look().mode, 1);
  EXPECT_FALSE(desk.isBlackout());
  EXPECT_NE(window().visibility(), QWindow::FullScreen);
  keyWithControl(Qt::Key_5);
  keyWithControl(Qt::Key_B);
  EXPECT_EQ(desk.look().mode, 5);
  EXPECT_TRUE(desk.isBlackout());
  EXPECT_TRUE(item("hintText").property("text").toString().startsWith("Ctrl+1–9"));
  click("singleKeys");
  key(Qt::Key_6);
  EXPECT_EQ(desk.look().mode, 6);
}

TEST_F(ConsoleSafety, UndoAndRedoGoThroughTheLooks) {
  EXPECT_FALSE(desk.canUndo());
  desk.set("mode", 5);
  // One knob that turns is one step.
  for (int speed = 10; speed < 20; ++speed) desk.set("speed", speed);
  desk.setColour(QColor("#ff2d20"));
  click("undo");
  EXPECT_EQ(desk.look().paletteId, 12);
  EXPECT_EQ(desk.look().speed, 19);
  click("undo");
  EXPECT_EQ(desk.look().speed, 160);
  EXPECT_EQ(desk.look().mode, 5);
  click("redo");
  EXPECT_EQ(desk.look().speed, 19);
  desk.set("mode", 6);
  EXPECT_FALSE(desk.canRedo());
}

TEST(LookHistory, ForgetsTheOldestOnly) {
  LookHistory history;
  Broadcast look;
  for (int step = 0; step < 300; ++step) {
    history.changing(look, std::to_string(step));
    look.applicationId = static_cast<std::uint16_t>(step + 1);
  }
  std::size_t steps = 0;
  while (const auto before = history.undo(look)) {
    look = *before;
    ++steps;
  }
  EXPECT_EQ(steps, LookHistory::kMostSteps);
  EXPECT_EQ(look.applicationId, 300 - LookHistory::kMostSteps);
}

// By assistive technology

TEST_F(ConsoleSafety, EveryControlSpeaksAndAnswers) {
  const AccessNodes nodes = accessTree(window());
  expectSpeaking(nodes);
  EXPECT_GT(nodes.size(), 100U);
  const AccessNode* mode = withName(nodes, QStringLiteral("mode Strobe"));
  ASSERT_NE(mode, nullptr);
  EXPECT_TRUE(mode->interface->state().checkable);
  EXPECT_FALSE(mode->interface->state().checked);
  EXPECT_TRUE(mode->act(QAccessibleActionInterface::pressAction()));
  settle();
  EXPECT_EQ(desk.look().mode, 5);
  EXPECT_TRUE(mode->interface->state().checked);
  const AccessNode* record = withName(nodes, QStringLiteral("Record"));
  ASSERT_NE(record, nullptr);
  EXPECT_FALSE(record->interface->state().checkable);
  const AccessNode* air = withName(nodes, QStringLiteral("On air"));
  ASSERT_NE(air, nullptr);
  EXPECT_TRUE(air->interface->state().checked);
  EXPECT_TRUE(air->act(QAccessibleActionInterface::pressAction()));
  EXPECT_FALSE(desk.isOnAir());
}

TEST_F(ConsoleSafety, ASliderThatIsSetTellsThePacket) {
  QQuickItem* slider = find(item("speed"), QStringLiteral("slider"));
  ASSERT_NE(slider, nullptr);
  QAccessibleInterface* spoken = QAccessible::queryAccessibleInterface(slider);
  ASSERT_NE(spoken, nullptr);
  QAccessibleValueInterface* value = spoken->valueInterface();
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(value->currentValue().toInt(), desk.look().speed);
  EXPECT_EQ(value->maximumValue().toInt(), 255);
  value->setCurrentValue(99);
  settle();
  EXPECT_EQ(desk.look().speed, 99);
  EXPECT_EQ(spoken->text(QAccessible::Name), QStringLiteral("Speed, 99"));
  // And it still follows the desk.
  desk.set("speed", 12);
  EXPECT_EQ(value->currentValue().toInt(), 12);
  spoken->actionInterface()->doAction(QAccessibleActionInterface::increaseAction());
  EXPECT_EQ(desk.look().speed, 13);
}

TEST_F(ConsoleSafety, EverySliderSaysItsRangeAndTakesAnyValueOfIt) {
  int sliders = 0;
  for (const AccessNode& node : accessTree(window())) {
    if (!node.is(QAccessible::Slider) || node.interface->state().disabled != 0) continue;
    QAccessibleValueInterface* value = node.interface->valueInterface();
    ASSERT_NE(value, nullptr) << node.name.toStdString();
    const int least = value->minimumValue().toInt();
    const int most = value->maximumValue().toInt();
    EXPECT_LT(least, most) << node.name.toStdString();
    for (const int wanted : {most, least}) {
      value->setCurrentValue(wanted);
      settle();
      EXPECT_EQ(value->currentValue().toInt(), wanted) << node.name.toStdString();
    }
    ++sliders;
  }
  EXPECT_GT(sliders, 5);
}

}  // namespace
}  // namespace halvora
