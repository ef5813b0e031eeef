// SPDX-License-Identifier: Apache-2.0
#include "light/brightness.h"

#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/virtual/virtual_devices.h"
#include "adapters/virtual/virtual_run_loop.h"

namespace halvora {
namespace {

struct BrightnessRoom {
  explicit BrightnessRoom(double brightness) : screen({390, 844}, brightness) {}

  /// Percent written up to and including that millisecond.
  std::vector<double> writtenUntil(long long ms) {
    loop.runUntil(milliseconds(ms));
    std::vector<double> percents;
    for (const double level : screen.log.drain()) percents.push_back(std::round(level * 1e6) / 1e4);
    return percents;
  }

  VirtualRunLoop loop;
  TimerSet timers{loop};
  VirtualScreen screen;
  ColourState colour;
  BrightnessRamps ramps{screen, timers, colour};
};

using Percents = std::vector<double>;

TEST(BrightnessRampUp, ClimbsOnePercentEvery10MsFromTheCallOn) {
  BrightnessRoom room(0.5);
  room.colour.currentMaster = 0.535;
  room.ramps.fullScreenBrightness();
  EXPECT_EQ(room.writtenUntil(0), Percents{51});
  EXPECT_EQ(room.writtenUntil(9), Percents{});
  EXPECT_EQ(room.writtenUntil(10), Percents{52});
  EXPECT_EQ(room.writtenUntil(20), Percents{53});
}

TEST(BrightnessRampUp, EndsOnceTheMasterLevelIsPassed) {
  BrightnessRoom room(0.5);
  room.colour.currentMaster = 0.515;
  room.ramps.fullScreenBrightness();
  EXPECT_EQ(room.writtenUntil(1000), (Percents{51, 52}));
  EXPECT_EQ(room.loop.turns(), 2U);
}

TEST(BrightnessRampUp, StartedAtItsTargetDoesNothing) {
  BrightnessRoom room(0.5);
  room.colour.currentMaster = 0.5;
  room.ramps.fullScreenBrightness();
  EXPECT_EQ(room.writtenUntil(1000), Percents{});
  EXPECT_EQ(room.loop.turns(), 0U);
}

TEST(BrightnessRampUp, StartedAboveItsTargetDoesNothing) {
  BrightnessRoom room(0.9);
  room.colour.currentMaster = 0.5;
  room.ramps.fullScreenBrightness();
  EXPECT_EQ(room.writtenUntil(1000), Percents{});
}

TEST(BrightnessRampUp, FollowsAMasterLevelThatChangesOnTheWay) {
  BrightnessRoom room(0.5);
  room.colour.currentMaster = 1;
  room.ramps.fullScreenBrightness();
  EXPECT_EQ(room.writtenUntil(10), (Percents{51, 52}));
  room.colour.currentMaster = 0.2;
  EXPECT_EQ(room.writtenUntil(1000), Percents{});
}

TEST(BrightnessRampUp, TwoAtOnceClimbTwiceAsFast) {
  BrightnessRoom room(0.5);
  room.colour.currentMaster = 1;
  room.ramps.fullScreenBrightness();
  room.ramps.fullScreenBrightness();
  EXPECT_EQ(room.writtenUntil(0), (Percents{51, 52}));
  EXPECT_EQ(room.writtenUntil(10), (Percents{53, 54}));
}

TEST(BrightnessRampDown, FallsOnePercentEvery10MsUntilTheOriginalIsPassed) {
  BrightnessRoom room(0.5);
  room.ramps.saveOriginalBrightness();
  EXPECT_EQ(room.ramps.originalBrightness(), 0.5);
  room.screen.setBrightness(0.525);
  room.screen.log.drain();
  room.ramps.originalScreenBrightness();
  EXPECT_EQ(room.writtenUntil(0), Percents{51.5});
  EXPECT_EQ(room.writtenUntil(19), Percents{50.5});
  EXPECT_EQ(room.writtenUntil(20), Percents{49.5});
  EXPECT_EQ(room.writtenUntil(1000), Percents{});
}

TEST(BrightnessRampDown, StartedAtItsTargetDoesNothing) {
  BrightnessRoom room(0.5);
  room.ramps.saveOriginalBrightness();
  room.ramps.originalScreenBrightness();
  EXPECT_EQ(room.writtenUntil(1000), Percents{});
  EXPECT_EQ(room.loop.turns(), 0U);
}

TEST(BrightnessRampDown, ItsTargetIsTheBrightnessSavedNotTheMasterLevel) {
  BrightnessRoom room(0.3);
  room.ramps.saveOriginalBrightness();
  room.colour.currentMaster = 0.9;
  room.screen.setBrightness(0.315);
  room.screen.log.drain();
  room.ramps.originalScreenBrightness();
  EXPECT_EQ(room.writtenUntil(1000), (Percents{30.5, 29.5}));
}

TEST(BrightnessRampDown, EndsAtADarkScreen) {
  BrightnessRoom room(0.0);
  room.ramps.saveOriginalBrightness();
  room.screen.setBrightness(0.015);
  room.screen.log.drain();
  room.ramps.originalScreenBrightness();
  EXPECT_EQ(room.writtenUntil(1000), (Percents{0.5, 0}));
  EXPECT_EQ(room.loop.turns(), 2U);
}

/// Shows that it is half lit, whatever it is told, and counts what it is told.
class StubbornScreen final : public Screen {
 public:
  Size bounds() const override { return {}; }
  double brightness() const override { return present; }
  void setBrightness(double level) override {
    ++writes;
    if (writes % obeysEvery == 0) present = level;
  }
  float currentEDRHeadroom() const override { return 1; }

  double present = 0.5;
  int writes = 0;
  int obeysEvery = 1 << 30;
};

struct StubbornRoom {
  VirtualRunLoop loop;
  TimerSet timers{loop};
  StubbornScreen screen;
  ColourState colour;
  BrightnessRamps ramps{screen, timers, colour};
};

TEST(BrightnessRampInVain, UpEndsAfterASecond) {
  StubbornRoom room;
  room.colour.currentMaster = 1;
  room.ramps.fullScreenBrightness();
  room.loop.runFor(milliseconds(60'000));
  EXPECT_EQ(room.screen.writes, 100);
  EXPECT_EQ(room.loop.turns(), 99U);
}

TEST(BrightnessRampInVain, DownEndsAfterASecond) {
  StubbornRoom room;
  room.screen.present = 0.1;
  room.ramps.saveOriginalBrightness();
  room.screen.present = 0.5;
  room.ramps.originalScreenBrightness();
  room.loop.runFor(milliseconds(60'000));
  EXPECT_EQ(room.screen.writes, 100);
  EXPECT_EQ(room.loop.turns(), 99U);
}

TEST(BrightnessRampInVain, AScreenThatFollowsNowAndThenIsFollowedToTheEnd) {
  StubbornRoom room;
  room.screen.obeysEvery = 100;
  room.colour.currentMaster = 0.525;
  room.ramps.fullScreenBrightness();
  room.loop.runFor(milliseconds(60'000));
  EXPECT_EQ(room.screen.writes, 300);
  EXPECT_NEAR(room.screen.present, 0.53, 1e-9);
}

TEST(BrightnessRampInVain, IsTriedAgainWhenTheNextShowEnds) {
  StubbornRoom room;
  room.colour.currentMaster = 1;
  room.ramps.fullScreenBrightness();
  room.loop.runFor(milliseconds(60'000));
  room.screen.obeysEvery = 1;
  room.ramps.fullScreenBrightness();
  room.loop.runFor(milliseconds(60'000));
  EXPECT_GE(room.screen.present, 1);
}

}  // namespace
}  // namespace halvora
