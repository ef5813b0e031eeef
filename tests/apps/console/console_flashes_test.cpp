// SPDX-License-Identifier: Apache-2.0
// What the desk says of how often its look flashes, and what it does not send by mistake.
#include <gtest/gtest.h>

#include "apps/console/desk_flashes.h"
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
