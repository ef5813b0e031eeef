// SPDX-License-Identifier: Apache-2.0
#include "light/brightness.h"

#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "platform/virtual/virtual_devices.h"
#include "platform/virtual/virtual_run_loop.h"

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

}  // namespace
}  // namespace halvora
