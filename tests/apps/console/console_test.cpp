// SPDX-License-Identifier: Apache-2.0
// The console in a window off screen, in virtual time: an operator clicks, and the phone beside it
// hears and shines.
#include <QAccessible>
#include <QCoreApplication>
#include <QFile>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTemporaryDir>
#include <set>
#include <string>
#include <variant>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/standard/standard_files.h"
#include "engine/inside.h"
#include "tests/apps/console/console_bench.h"
#include "venue/show/scenario.h"

namespace halvora {
namespace {

TEST_F(ConsoleTest, ALookIsOnTheAirFromTheBeginning) {
  pass(milliseconds(2000));
  EXPECT_NE(desk.packet().mode, 0);
  EXPECT_TRUE(desk.engine().isInsideVenue());
  EXPECT_GT(phoneColour().lightness(), 60);
}

TEST_F(ConsoleTest, AModeThatIsClickedChangesThePacketAndTheLight) {
  pass(kFirstLook);
  showSwatch("swatch2");
  EXPECT_EQ(desk.packet().mode, 1);
  EXPECT_EQ(desk.packet().red, 255);
  expectNear(phoneColour(), QColor("#ff2d20"));
  EXPECT_EQ(item("byte11").childItems().at(0)->property("text"), QStringLiteral("01"));

  const std::uint16_t sequence = desk.packet().sequence;
  click("mode0");
  pass(milliseconds(2000));
  EXPECT_EQ(desk.packet().mode, 0);
  EXPECT_EQ(desk.packet().sequence, sequence + 1);
  EXPECT_EQ(insideOf(desk.engine()).state().screen.currentMode, 0U);
  EXPECT_LT(phoneColour().lightness(), 60);
}

TEST_F(ConsoleTest, PacketsGoOutTenTimesASecondWhileOnAir) {
  pass(kFirstLook);
  const int before = desk.packetsSent();
  pass(milliseconds(1000));
  EXPECT_EQ(desk.packetsSent(), before + 10);
  desk.setOnAir(false);
  pass(milliseconds(1000));
  EXPECT_EQ(desk.packetsSent(), before + 10);
  // Nobody has been heard for seven cycles of a second.
  pass(milliseconds(8000));
  EXPECT_FALSE(desk.engine().isInsideVenue());
  click("onAir");
  pass(milliseconds(2000));
  EXPECT_TRUE(desk.engine().isInsideVenue());
}

TEST_F(ConsoleTest, WhatIsLostChangesNothing) {
  pass(kFirstLook);
  showSwatch("swatch2");
  desk.setLoss(100);
  const int heard = desk.packetsHeard();
  showSwatch("swatch7");
  EXPECT_EQ(desk.packet().blue, 255);
  EXPECT_EQ(desk.packetsHeard(), heard);
  expectNear(phoneColour(), QColor("#ff2d20"));
  desk.setLoss(0);
  pass(milliseconds(200));
  expectNear(phoneColour(), QColor("#1f5bff"));
}

TEST_F(ConsoleTest, TheTorchIsTheLampOnThePhonesBack) {
  pass(kFirstLook);
  EXPECT_FALSE(item("phoneBack").property("isTorchOn").toBool());
  click("torch1");
  pass(milliseconds(200));
  EXPECT_TRUE(item("phoneBack").property("isTorchOn").toBool());
  click("torch0");
  pass(milliseconds(200));
  EXPECT_FALSE(item("phoneBack").property("isTorchOn").toBool());
}

TEST_F(ConsoleTest, AVibrationIsFeltOnce) {
  std::vector<int> shakes;
  QObject::connect(&desk, &ShowConsole::shaken,
                   [&shakes](int strength) { shakes.push_back(strength); });
  pass(kFirstLook);
  for (const int vibration : {1, 2, 3, 0}) {
    desk.set(QStringLiteral("vibrate"), vibration);
    pass(milliseconds(500));
  }
  EXPECT_EQ(shakes, (std::vector<int>{1, 2, 3}));
}

TEST_F(ConsoleTest, AMapPlaysAndIsScrubbed) {
  pass(kFirstLook);
  desk.set(QStringLiteral("pixelMapId"), 1);
  EXPECT_EQ(desk.frames(), 900);
  EXPECT_TRUE(desk.isMapPlaying());
  pass(milliseconds(1000));
  EXPECT_EQ(cueToken(desk.packet()), 31);
  EXPECT_EQ(insideOf(desk.engine()).state().screen.currentMode, 21U);
  click("playMap");
  pass(milliseconds(1000));
  EXPECT_EQ(cueToken(desk.packet()), 31);
  desk.showFrame(400);
  pass(milliseconds(200));
  EXPECT_EQ(cueToken(desk.packet()), 400);
  // The phone has a seat from the beginning, whose pixel is now this colour and now that.
  std::set<QRgb> colours;
  for (int frame = 1; frame <= desk.frames(); frame += 45) {
    desk.showFrame(frame);
    pass(milliseconds(200));
    colours.insert(phoneColour().rgb());
  }
  EXPECT_GT(colours.size(), 3U);
  desk.set(QStringLiteral("pixelMapId"), 0);
  EXPECT_EQ(desk.frames(), 0);
  EXPECT_FALSE(desk.isMapPlaying());
}

TEST_F(ConsoleTest, WhatWasRecordedIsReplayed) {
  const QTemporaryDir folder;
  const QString path = folder.filePath(QStringLiteral("show.jsonl"));
  desk.setProperty("file", path);
  pass(kFirstLook);
  std::vector<Broadcast> heard;
  QObject::connect(&desk, &ShowConsole::packetChanged,
                   [&heard, this] { heard.push_back(desk.packet()); });

  showSwatch("swatch2");
  heard.clear();
  desk.record();
  showSwatch("swatch7");
  click("mode5");
  pass(milliseconds(500));
  showSwatch("swatch5");
  // Until the show has faded in again.
  pass(milliseconds(1000));
  desk.stop();
  const std::vector<Broadcast> recorded = heard;
  ASSERT_EQ(recorded.size(), 3U);

  const auto text = readFile(path.toStdString(), 1 << 20);
  ASSERT_TRUE(text.has_value());
  const auto parsed = parseScenario(*text, libraries.json);
  ASSERT_TRUE(std::holds_alternative<Scenario>(parsed));

  showSwatch("swatch0");
  heard.clear();
  desk.replay();
  EXPECT_TRUE(desk.isReplaying());
  pass(std::get<Scenario>(parsed).lastAction() + milliseconds(100));
  EXPECT_EQ(heard, recorded);
  expectNear(phoneColour(), QColor("#2bff4f"));

  // Then the console's own look is the newest again.
  pass(milliseconds(2000));
  EXPECT_FALSE(desk.isReplaying());
  expectNear(phoneColour(), QColor("#ffffff"));
}

TEST_F(ConsoleTest, AFileThatIsNoScenarioIsToldOf) {
  const QTemporaryDir folder;
  desk.setProperty("file", folder.filePath(QStringLiteral("none.jsonl")));
  desk.replay();
  EXPECT_TRUE(desk.message().contains(QStringLiteral("none.jsonl")));
  QFile file(folder.filePath(QStringLiteral("bad.jsonl")));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write("{\"at\": 0, \"dance\": true}\n");
  file.close();
  desk.setProperty("file", file.fileName());
  desk.replay();
  EXPECT_TRUE(desk.message().contains(QStringLiteral("line 1"))) << desk.message().toStdString();
  EXPECT_FALSE(desk.isReplaying());
  desk.setProperty("file", folder.filePath(QStringLiteral("missing/show.jsonl")));
  desk.record();
  EXPECT_TRUE(desk.isRecording());
  desk.stop();
  EXPECT_FALSE(desk.isRecording());
  EXPECT_TRUE(desk.message().contains(QStringLiteral("missing")));
}

TEST_F(ConsoleTest, FullScreenIsTheLightAlone) {
  pass(kFirstLook);
  showSwatch("swatch7");
  key(Qt::Key_F, QStringLiteral("f"));
  EXPECT_EQ(window().visibility(), QWindow::FullScreen);
  EXPECT_FALSE(item("scroller").isVisible());
  expectNear(window().grabWindow().pixelColor(2, 2), QColor("#1f5bff"));
  key(Qt::Key_F, QStringLiteral("f"));
  EXPECT_EQ(window().visibility(), QWindow::Windowed);
  EXPECT_TRUE(item("scroller").isVisible());
  key(Qt::Key_F11);
  EXPECT_EQ(window().visibility(), QWindow::FullScreen);
}

TEST_F(ConsoleTest, EscapeCloses) {
  desk.setOnAir(false);
  EXPECT_TRUE(window().isVisible());
  key(Qt::Key_Escape);
  EXPECT_FALSE(window().isVisible());
}

TEST_F(ConsoleTest, AFileNameMayHoldTheLetterOfFullScreen) {
  item("file").forceActiveFocus(Qt::TabFocusReason);
  key(Qt::Key_F, QStringLiteral("f"));
  EXPECT_EQ(window().visibility(), QWindow::Windowed);
  EXPECT_TRUE(desk.property("file").toString().contains(QLatin1Char('f')));
}

// All that a keyboard is to reach, by the QML type's own mark.
void addControls(QQuickItem& within, std::set<QQuickItem*>& controls) {
  if (!within.isVisible() || !within.isEnabled()) return;
  if (within.activeFocusOnTab()) controls.insert(&within);
  for (QQuickItem* child : within.childItems()) addControls(*child, controls);
}

TEST_F(ConsoleTest, TabReachesEveryControlAndEachHasAName) {
  pass(kFirstLook);
  window().setWidth(900);
  window().setHeight(640);
  settle();
  std::set<QQuickItem*> controls;
  addControls(*window().contentItem(), controls);
  ASSERT_GT(controls.size(), 100U);

  const QQuickItem& scroller = item("scroller");
  std::set<QQuickItem*> reached;
  for (std::size_t press = 0; press <= controls.size(); ++press) {
    key(Qt::Key_Tab, QStringLiteral("\t"));
    QQuickItem* at = window().activeFocusItem();
    ASSERT_NE(at, nullptr);
    reached.insert(at);
    QAccessibleInterface* spoken = QAccessible::queryAccessibleInterface(at);
    ASSERT_NE(spoken, nullptr) << at->objectName().toStdString();
    EXPECT_FALSE(spoken->text(QAccessible::Name).isEmpty()) << at->objectName().toStdString();
    // Whoever is at the keyboard sees where they are.
    const QRectF seen = at->mapRectToItem(&scroller, at->boundingRect());
    if (!scroller.isAncestorOf(at)) continue;
    EXPECT_GE(seen.top(), 0) << at->objectName().toStdString();
    EXPECT_LE(seen.bottom(), scroller.height()) << at->objectName().toStdString();
  }
  for (QQuickItem* control : controls) {
    EXPECT_TRUE(reached.contains(control)) << control->objectName().toStdString();
  }
}

}  // namespace
}  // namespace halvora
