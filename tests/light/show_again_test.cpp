// SPDX-License-Identifier: Apache-2.0
#include <set>

#include <gtest/gtest.h>

#include "light/screen_modes.h"
#include "tests/light/light_room.h"

namespace halvora {
namespace {

const std::set<std::uint32_t> kSteady{1, 9, 10, 11, 12};
const std::set<std::uint32_t> kUnlessPalette{15, 16, 17, 18, 19, 20};

Events shownAgain(LightRoom& room, std::uint32_t mode) {
  room.modes.showAgain(mode, 255);
  return room.runFor(0);
}

TEST(ShowAgain, SteadyModesShowTheCurrentColourAndEndTheEffect) {
  for (const std::uint32_t mode : kSteady) {
    LightRoom room;
    room.state.runEffectAnimation = true;
    EXPECT_EQ(shownAgain(room, mode), Events{"0 orange"}) << mode;
    EXPECT_FALSE(room.state.runEffectAnimation) << mode;
  }
}

TEST(ShowAgain, Mode13ShowsTheCurrentColourBesideItsEffect) {
  LightRoom room;
  room.state.runEffectAnimation = true;
  room.activatePalette();
  EXPECT_EQ(shownAgain(room, 13), Events{"0 red"});
  EXPECT_TRUE(room.state.runEffectAnimation);
}

TEST(ShowAgain, Modes15To20ShowTheCurrentColourWithoutAPalette) {
  for (const std::uint32_t mode : kUnlessPalette) {
    for (const std::uint32_t palette : {0U, 51U, 255U}) {
      LightRoom room;
      room.state.runEffectAnimation = true;
      room.colour.currentPaletteId = palette;
      EXPECT_EQ(shownAgain(room, mode), Events{"0 orange"}) << mode << " palette " << palette;
      EXPECT_TRUE(room.state.runEffectAnimation);
    }
  }
}

TEST(ShowAgain, Modes15To20ShowNothingWhileAPaletteIsActive) {
  for (const std::uint32_t mode : kUnlessPalette) {
    for (const std::uint32_t palette : {1U, 50U}) {
      LightRoom room;
      room.colour.currentPaletteId = palette;
      room.state.lastTurnOn = room.state.effectOn = true;
      EXPECT_EQ(shownAgain(room, mode), Events{}) << mode << " palette " << palette;
    }
  }
}

TEST(ShowAgain, ToggleModesShowTheCurrentColourWhileTheyAreOn) {
  for (const std::uint32_t mode : {7U, 8U}) {
    LightRoom room;
    room.state.lastTurnOn = true;
    EXPECT_EQ(shownAgain(room, mode), Events{"0 orange"});
    EXPECT_TRUE(room.state.lastTurnOn);
    room.state.lastTurnOn = false;
    EXPECT_EQ(shownAgain(room, mode), Events{});
    EXPECT_FALSE(room.state.lastTurnOn);
  }
}

TEST(ShowAgain, Mode4FollowsTheShimmersPhase) {
  LightRoom room;
  EXPECT_EQ(shownAgain(room, 4), Events{"0 orange"});
  room.state.effectOn = true;
  EXPECT_EQ(shownAgain(room, 4), Events{"0 darkOrange"});
  EXPECT_TRUE(room.state.effectOn);
}

TEST(ShowAgain, EveryOtherModeShowsNothing) {
  for (std::uint32_t mode = 0; mode <= 300; ++mode) {
    const bool shows = kSteady.contains(mode) || kUnlessPalette.contains(mode) || mode == 2 ||
                       mode == 4 || mode == 7 || mode == 8 || mode == 13;
    if (shows) continue;
    LightRoom room;
    room.state = {.runEffectAnimation = true, .effectOn = true, .lastTurnOn = true};
    EXPECT_EQ(shownAgain(room, mode), Events{}) << mode;
    EXPECT_TRUE(room.state.runEffectAnimation) << mode;
    room.runFor(6000);
    EXPECT_EQ(room.loop.turns(), 0U) << mode;
  }
}

struct DelayCase {
  int p;
  Rule rule;
  int milliseconds;
};

class DelayedFlash : public testing::TestWithParam<DelayCase> {};

TEST_P(DelayedFlash, ShowsTheColourOnceAfterItsDelay) {
  LightRoom room(GetParam().rule);
  room.modes.showAgain(2, speedOf(GetParam().p));
  EXPECT_TRUE(room.state.runEffectAnimation);
  EXPECT_EQ(room.runFor(GetParam().milliseconds - 1), Events{});
  EXPECT_EQ(room.runFor(1), Events{std::to_string(GetParam().milliseconds) + " orange"});
  EXPECT_EQ(room.runFor(10'000), Events{});
}

INSTANTIATE_TEST_SUITE_P(Fastest, DelayedFlash,
                         testing::Values(DelayCase{0, Rule::least, 50},
                                         DelayCase{0, Rule::greatest, 1100}));
INSTANTIATE_TEST_SUITE_P(Middle, DelayedFlash,
                         testing::Values(DelayCase{50, Rule::least, 525},
                                         DelayCase{50, Rule::greatest, 3050}));
INSTANTIATE_TEST_SUITE_P(Slowest, DelayedFlash,
                         testing::Values(DelayCase{100, Rule::least, 1000},
                                         DelayCase{100, Rule::greatest, 5000}));
// 33 × 950 ÷ 100 is 313, 33 × 39 is 1287.
INSTANTIATE_TEST_SUITE_P(RoundedDown, DelayedFlash,
                         testing::Values(DelayCase{33, Rule::least, 363},
                                         DelayCase{33, Rule::greatest, 2387}));

TEST(DelayedFlashes, FollowTheCommandsSpeedNotTheRunningEffects) {
  LightRoom room;
  room.state.currentPerc = 100;
  room.modes.showAgain(2, 255);
  EXPECT_EQ(room.runFor(50), Events{"50 orange"});
}

TEST(DelayedFlashes, EveryCommandHasItsOwn) {
  LightRoom room;
  room.modes.showAgain(2, 255);
  room.runFor(20);
  room.colour.currentColour = kGreen;
  room.modes.showAgain(2, 255);
  EXPECT_EQ(room.runFor(1000), (Events{"50 orange", "70 green"}));
}

TEST(DelayedFlashes, ShowTheColourOfTheirOwnCommand) {
  LightRoom room;
  room.modes.showAgain(2, 255);
  room.colour.currentColour = kBlue;
  EXPECT_EQ(room.runFor(50), Events{"50 orange"});
}

TEST(DelayedFlashes, DoNotFireOnceTheEffectWasStopped) {
  LightRoom room;
  room.modes.showAgain(2, 255);
  room.runFor(20);
  room.modes.stopEffect();
  EXPECT_EQ(room.runFor(1000), Events{});
}

TEST(DelayedFlashes, LeaveTheRunningEffectsTimerItsName) {
  LightRoom room;
  room.state.animationTimer = 77;
  room.state.strobeAnimationTimer = 78;
  room.modes.showAgain(2, 255);
  EXPECT_EQ(room.state.animationTimer, 77U);
  EXPECT_EQ(room.state.strobeAnimationTimer, 78U);
}

}  // namespace
}  // namespace halvora
