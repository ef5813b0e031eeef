// SPDX-License-Identifier: Apache-2.0
// What the desk says of how often its look flashes, and what it does not send by mistake.
#include <string>

#include <gtest/gtest.h>

#include "apps/console/desk_flashes.h"
#include "apps/console/show_recording.h"
#include "tests/adapters/standard/temporary_folder.h"
#include "tests/apps/console/console_bench.h"
#include "tests/faces/qt/access_tree.h"

namespace halvora {
namespace {

struct ConsoleFlashes : ConsoleTest {
  ConsoleFlashes() { desk.flashes()->setArmed(false); }
  void set(const char* field, int value) {
    desk.set(QString::fromLatin1(field), value);
    pass(milliseconds(300));
  }
  void setStrobe() {
    desk.set(QStringLiteral("paletteId"), 0);
    desk.set(QStringLiteral("speed"), 255);
    set("mode", 5);
  }
  QString words() { return item("flashes").property("text").toString(); }
};

TEST_F(ConsoleFlashes, SaysWhatTheLookOnTheDeskDoes) {
  set("mode", 1);
  EXPECT_EQ(words(), QStringLiteral("0 flashes a second"));
  EXPECT_FALSE(item("arm").isVisible());
  desk.setOnAir(false);
  setStrobe();
  EXPECT_EQ(words(), QStringLiteral("50 flashes a second: not sent until armed"));
  EXPECT_TRUE(item("arm").isVisible());
  set("mode", 1);
  EXPECT_EQ(words(), QStringLiteral("0 flashes a second"));
  // The torch counts as much as the screen.
  desk.set(QStringLiteral("ledSpeed"), 255);
  set("ledMode", 5);
  EXPECT_EQ(desk.flashes()->general(), 50);
}

TEST_F(ConsoleFlashes, ALookThatFlashesTooOftenWaitsToBeArmed) {
  set("mode", 1);
  const Broadcast calm = desk.packet();
  setStrobe();
  EXPECT_EQ(desk.packet().mode, calm.mode) << "what was sent before goes on";
  const int sent = desk.packetsSent();
  pass(milliseconds(1000));
  EXPECT_GT(desk.packetsSent(), sent);
  EXPECT_EQ(desk.packet(), calm);
  click("arm");
  pass(milliseconds(200));
  EXPECT_EQ(desk.packet().mode, 5);
  EXPECT_GT(desk.packet().sequence, calm.sequence);
  EXPECT_EQ(words(), QStringLiteral("50 flashes a second"));
  click("arm");
  pass(milliseconds(200));
  EXPECT_EQ(desk.packet().mode, calm.mode) << "disarmed, it is taken off the air";
  EXPECT_GT(desk.packet().sequence, calm.sequence + 1);
}

TEST_F(ConsoleFlashes, ABlackoutAndItsEndNeverWait) {
  set("mode", 1);
  setStrobe();
  desk.setBlackout(true);
  pass(milliseconds(200));
  EXPECT_EQ(desk.packet().red, 0);
  desk.setBlackout(false);
  pass(milliseconds(200));
  EXPECT_EQ(desk.packet().mode, 1);
  EXPECT_NE(desk.packet().red, 0);
}

TEST_F(ConsoleFlashes, WhoGoesOnAirWithAStrobeSendsNothingUntilItIsArmed) {
  VirtualRunLoop otherLoop;
  VirtualQueues otherQueues{otherLoop};
  ShowConsole other(sourceTree() + "/assets/demo", otherLoop, otherQueues, libraries);
  other.set(QStringLiteral("paletteId"), 0);
  other.set(QStringLiteral("speed"), 255);
  other.set(QStringLiteral("mode"), 5);
  other.setOnAir(true);
  otherLoop.runFor(milliseconds(1000));
  EXPECT_EQ(other.packetsSent(), 0);
  other.flashes()->setArmed(true);
  otherLoop.runFor(milliseconds(1000));
  EXPECT_GT(other.packetsSent(), 0);
}

TEST_F(ConsoleFlashes, LeavingTheAirDisarms) {
  desk.flashes()->setArmed(true);
  desk.setOnAir(false);
  EXPECT_FALSE(desk.flashes()->isArmed());
}

// Cues: a steady red, a white strobe, a steady blue.
struct ConsoleShowFlashes : ConsoleFlashes {
  static constexpr int kStrobe = 5;

  ConsoleShowFlashes() { openIn(desk); }
  void openIn(ShowConsole& console, const char* first = "steady") const {
    const std::string path = folder.write(
        "show.yaml", std::string("application: 4242\nvenue: 7\ntransmitter: 1\ncues:\n") +
                         (first == std::string("steady")
                              ? "  - {name: Red, look: {mode: 1, colour: '#ff0000'}}\n"
                              : "") +
                         "  - {name: Storm, look: {mode: 5, colour: '#ffffff', speed: 255}}\n"
                         "  - {name: Blue, look: {mode: 1, colour: '#0000ff'}}\n");
    console.cues()->setFile(QString::fromStdString(path));
    console.cues()->open();
    ASSERT_TRUE(console.cues()->isOpen()) << console.cues()->faults().join(' ').toStdString();
  }
  void obey(const char* command) {
    desk.cues()->obey(QString::fromLatin1(command));
    pass(milliseconds(300));
  }

  const TemporaryFolder folder;
};

TEST_F(ConsoleShowFlashes, ACueThatFlashesTooOftenWaitsToBeArmed) {
  obey("go");
  const Broadcast red = desk.packet();
  ASSERT_EQ(red.red, 255);
  EXPECT_EQ(words(), QStringLiteral("0 flashes a second"));
  obey("go");
  EXPECT_EQ(desk.cues()->current(), 1);
  EXPECT_EQ(words(), QStringLiteral("50 flashes a second: not sent until armed"));
  const int sent = desk.packetsSent();
  pass(milliseconds(1000));
  EXPECT_EQ(desk.packet(), red) << "the look before goes on";
  EXPECT_GT(desk.packetsSent(), sent);
  click("arm");
  pass(milliseconds(200));
  EXPECT_EQ(desk.packet().mode, kStrobe);
  EXPECT_EQ(desk.packet().sequence, red.sequence + 1);
  click("arm");
  pass(milliseconds(200));
  EXPECT_EQ(desk.packet().red, 255) << "disarmed, it is taken off the air";
  EXPECT_EQ(desk.packet().mode, 1);
  EXPECT_EQ(desk.packet().sequence, red.sequence + 2);
  click("arm");
  pass(milliseconds(200));
  EXPECT_EQ(desk.packet().mode, kStrobe);
  EXPECT_EQ(desk.packet().sequence, red.sequence + 3);
  obey("go");
  EXPECT_EQ(desk.packet().blue, 255);
  EXPECT_EQ(desk.packet().sequence, red.sequence + 4);
}

TEST_F(ConsoleShowFlashes, AShowThatBeginsWithAStrobeSendsNothingUntilItIsArmed) {
  VirtualRunLoop otherLoop;
  VirtualQueues otherQueues{otherLoop};
  ShowConsole other(sourceTree() + "/assets/demo", otherLoop, otherQueues, libraries);
  openIn(other, "strobe");
  other.cues()->obey(QStringLiteral("go"));
  otherLoop.runFor(milliseconds(1000));
  EXPECT_TRUE(other.isOnAir());
  EXPECT_EQ(other.packetsSent(), 0);
  other.flashes()->setArmed(true);
  otherLoop.runFor(milliseconds(1000));
  EXPECT_GT(other.packetsSent(), 0);
  EXPECT_EQ(other.packet().mode, kStrobe);
  other.flashes()->setArmed(false);
  otherLoop.runFor(milliseconds(200));
  EXPECT_EQ(other.packet().mode, 1) << "nothing calm was sent before it, so it is black";
  EXPECT_EQ(other.packet().red, 0);
}

TEST_F(ConsoleShowFlashes, BlackoutAndPanicOfAShowNeverWaitNorStayWhenReleased) {
  for (const char* command : {"blackout", "panic"}) {
    obey("goto Red");
    obey("goto Storm");
    obey(command);
    EXPECT_EQ(desk.packet().red + desk.packet().green + desk.packet().blue, 0) << command;
    obey("release");
    EXPECT_EQ(desk.packet().red, 255) << command;
    EXPECT_EQ(desk.packet().mode, 1) << command;
  }
}

TEST_F(ConsoleShowFlashes, WhoLeavesTheAirLeavesNothingToGoOn) {
  obey("goto Red");
  desk.setOnAir(false);
  const int sent = desk.packetsSent();
  obey("goto Storm");
  EXPECT_TRUE(desk.isOnAir());
  EXPECT_EQ(desk.packetsSent(), sent);
}

TEST_F(ConsoleFlashes, ARecordingAsksToo) {
  const TemporaryFolder folder;
  set("mode", 1);
  const QString path = QString::fromStdString(folder.path() + "/strobe.jsonl");
  desk.setProperty("file", path);
  desk.flashes()->setArmed(true);
  desk.record();
  setStrobe();
  pass(milliseconds(1000));
  desk.stop();
  desk.flashes()->setArmed(false);
  set("mode", 1);
  desk.replay();
  ASSERT_TRUE(desk.isReplaying()) << desk.message().toStdString();
  pass(kRecordingLead);
  const int sent = desk.packetsSent();
  for (int tenth = 0; tenth < 8; ++tenth) {
    pass(milliseconds(100));
    EXPECT_EQ(desk.packet().mode, 1);
  }
  EXPECT_GT(desk.packetsSent(), sent) << "what was calm goes on";
  EXPECT_EQ(words(), QStringLiteral("50 flashes a second: not sent until armed"));
  desk.stop();
  desk.flashes()->setArmed(true);
  desk.replay();
  pass(kRecordingLead + milliseconds(800));
  EXPECT_EQ(desk.packet().mode, 5);
  desk.stop();
}

TEST_F(ConsoleFlashes, AssistiveTechnologyArmsToo) {
  setStrobe();
  const AccessNodes tree = accessTree(window());
  const AccessNode* arm =
      withName(tree, QStringLiteral("Arm looks that flash more than three times a second"));
  ASSERT_NE(arm, nullptr);
  EXPECT_TRUE(arm->act(QAccessibleActionInterface::pressAction()));
  settle();
  EXPECT_TRUE(desk.flashes()->isArmed());
}

}  // namespace
}  // namespace halvora
