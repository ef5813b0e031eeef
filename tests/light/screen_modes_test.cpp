// SPDX-License-Identifier: Apache-2.0
#include "light/screen_modes.h"

#include <algorithm>
#include <array>

#include <gtest/gtest.h>

#include "tests/light/light_room.h"
#include "tests/light/slowness.h"

namespace halvora {
namespace {

struct EntryCase {
  std::uint32_t mode;
  Events atOnce;
  /// What the first step shows; followed by the fade's length where it fades.
  std::string firstStep;
  Times fade;
  Times least;
  Times greatest;
};

void PrintTo(const EntryCase& entry, std::ostream* out) { *out << "mode " << entry.mode; }

class EnteringAMode : public testing::TestWithParam<EntryCase> {};

TEST_P(EnteringAMode, ShowsItsColourAtOnceAndStartsItsEffectOnTime) {
  const EntryCase& expected = GetParam();
  for (const Rule rule : {Rule::least, Rule::greatest}) {
    for (std::size_t at = 0; at < kSlowness.size(); ++at) {
      SCOPED_TRACE(testing::Message()
                   << "p " << kSlowness[at] << (rule == Rule::least ? " least" : " most"));
      LightRoom room(rule);
      room.change(expected.mode, speedOf(kSlowness[at]));
      EXPECT_EQ(room.state.currentMode, expected.mode);
      EXPECT_EQ(room.state.currentModeSpeed, speedOf(kSlowness[at]));
      EXPECT_EQ(room.state.currentPerc, kSlowness[at]);
      EXPECT_TRUE(room.state.runEffectAnimation);
      EXPECT_TRUE(room.loop.isPending(room.state.animationTimer));
      EXPECT_EQ(room.runFor(0), expected.atOnce);

      const Duration due = dueAfter((rule == Rule::least ? expected.least : expected.greatest)[at]);
      room.loop.runUntil(due - Duration(1));
      EXPECT_EQ(room.events, Events{});
      room.loop.runUntil(due);
      std::string first = textOf(due) + " " + expected.firstStep;
      if (expected.fade != kNoPause) first += std::to_string(expected.fade[at]);
      EXPECT_EQ(room.events, Events{first});
    }
  }
}

constexpr Times kPulses{100, 1300, 2500};
constexpr Times kCrossfades{200, 2600, 5000};
constexpr Times kNoFade{0, 0, 0};

INSTANTIATE_TEST_SUITE_P(
    All, EnteringAMode,
    testing::Values(
        EntryCase{3, {"0 black"}, "orange", kNoFade, kNoPause, kRandomPauses},
        EntryCase{4, {"0 orange"}, "orange", kNoFade, kNoPause, kRandomPauses},
        EntryCase{5, {}, "orange", kNoFade, {50, 125, 200}, {50, 125, 200}},
        EntryCase{6, {"0 black"}, "orange", kNoFade, kNoPause, kRandomPauses},
        EntryCase{13, {"0 orange"}, "white", kNoFade, kNoPause, kRandomPauses},
        EntryCase{14, {"0 orange"}, "to white in ", kPulses, kNoPause, kRandomPauses},
        EntryCase{15, {"0 black"}, "orange", kNoFade, kNoPause, kRandomPauses},
        EntryCase{16, {"0 black"}, "to orange in ", kPulses, kNoPause, kRandomPauses},
        EntryCase{
            17, {"0 orange"}, "to orange in ", kCrossfades, {300, 2650, 5000}, {300, 2650, 5000}},
        EntryCase{18, {"0 orange"}, "to orange in ", kCrossfades, kNoPause, kRandomPauses},
        EntryCase{19, {"0 orange"}, "orange", kNoFade, kNoPause, kRandomPauses},
        EntryCase{20, {"0 orange"}, "orange", kNoFade, {50, 1025, 2000}, {50, 1025, 2000}}),
    [](const auto& row) { return "Mode" + std::to_string(row.param.mode); });

TEST(ScreenModes, AtSpeed255Mode5StartsAfter50MsAndStrobesEvery10Ms) {
  LightRoom room;
  room.change(5, 255);
  EXPECT_EQ(room.runFor(80), (Events{"50 orange", "60 black", "70 orange", "80 black"}));
}

TEST(ScreenModes, AtSpeed255Mode20StartsAfter50Ms) {
  LightRoom room;
  room.change(20, 255);
  EXPECT_EQ(room.runFor(100), (Events{"0 orange", "50 orange", "100 orange"}));
}

TEST(ScreenModes, AtSpeed0Mode17StartsAfterExactly5000MsWithoutADraw) {
  LightRoom room(Rule::greatest);
  room.change(17, 0);
  EXPECT_EQ(room.runFor(5000), (Events{"0 orange", "5000 to orange in 5000"}));
  EXPECT_TRUE(room.random.log.entries.empty());
}

TEST(ScreenModes, AtSpeed0TheRandomPauseIsDrawnFrom0To5000) {
  LightRoom room;
  room.change(3, 0);
  EXPECT_EQ(room.random.log.entries, std::vector<std::uint32_t>{5001});
}

TEST(ScreenModes, Speed128Is50Percent) {
  LightRoom room;
  room.change(3, 128);
  EXPECT_EQ(room.state.currentPerc, 50);
  EXPECT_EQ(room.random.log.entries, std::vector<std::uint32_t>{2651});
}

TEST(ScreenModes, FirstPausesAreWholeMillisecondsRoundedDown) {
  // At 33 percent: 33 × 150 ÷ 100 is 49, 33 × 1950 ÷ 100 is 643, 33 × 47 is 1551.
  LightRoom strobe;
  strobe.change(5, speedOf(33));
  EXPECT_EQ(strobe.runFor(99), Events{"99 orange"});
  LightRoom cycle;
  cycle.change(20, speedOf(33));
  EXPECT_EQ(cycle.runFor(693), (Events{"0 orange", "693 orange"}));
  LightRoom crossfade;
  crossfade.change(17, speedOf(33));
  EXPECT_EQ(crossfade.runFor(1851), (Events{"0 orange", "1851 to orange in 1784"}));
}

TEST(ScreenModes, TheRandomStrobeBeginsInItsBurstPhase) {
  LightRoom room;
  room.state.effectOn = true;
  room.change(6, 255);
  EXPECT_FALSE(room.state.effectOn);
}

TEST(ScreenModes, OtherEffectsBeginInThePhaseThatWasLeft) {
  LightRoom room;
  room.state.effectOn = true;
  room.change(5, 255);
  EXPECT_EQ(room.runFor(60), (Events{"50 black", "60 orange"}));
}

TEST(ScreenModes, ModesShownByTheCommandItselfShowNothingHere) {
  for (const std::uint32_t mode : {0U, 1U, 2U, 9U, 10U, 11U, 12U}) {
    LightRoom room;
    room.modes.processMode(mode, 255);
    EXPECT_EQ(room.runFor(6000), Events{}) << mode;
    EXPECT_EQ(room.loop.turns(), 0U) << mode;
    EXPECT_EQ(room.state.currentMode, mode);
  }
}

TEST(ScreenModes, UnknownModesLeaveTheLightStopped) {
  std::vector<std::uint32_t> modes{256, 1000, 0xFFFFFFFF};
  for (std::uint32_t mode = 22; mode <= 255; ++mode) {
    if (mode != 50) modes.push_back(mode);
  }
  for (const std::uint32_t mode : modes) {
    LightRoom room;
    room.change(5, 255);
    room.runFor(50);
    room.change(mode, 128);
    EXPECT_EQ(room.runFor(6000), Events{}) << mode;
    EXPECT_EQ(nameOf(room.views.lightColour()), "orange") << mode;
    EXPECT_FALSE(room.state.runEffectAnimation) << mode;
    EXPECT_EQ(room.state.currentMode, mode);
    EXPECT_EQ(room.state.currentPerc, 50);
  }
}

TEST(ToggleMode, Mode7SentTwiceWithDifferentSpeedsFlipsTheLightTwice) {
  LightRoom room;
  room.state.lastTurnOn = true;
  room.change(7, 10);
  EXPECT_EQ(room.runFor(10), Events{"0 black"});
  EXPECT_FALSE(room.state.lastTurnOn);
  room.change(7, 20);
  EXPECT_EQ(room.runFor(10), Events{"10 orange"});
  EXPECT_TRUE(room.state.lastTurnOn);
}

TEST(ToggleMode, Mode8SharesThePhaseOfMode7) {
  LightRoom room;
  room.state.lastTurnOn = true;
  room.change(7, 0);
  room.change(8, 0);
  room.change(7, 0);
  EXPECT_EQ(room.runFor(6000), (Events{"0 black", "0 orange", "0 black"}));
}

TEST(ToggleMode, HasNoTimerAndEndsARunningEffect) {
  for (const std::uint32_t mode : {7U, 8U}) {
    LightRoom room;
    room.state.runEffectAnimation = true;
    room.modes.processMode(mode, 0);
    EXPECT_FALSE(room.state.runEffectAnimation);
    room.runFor(6000);
    EXPECT_EQ(room.loop.turns(), 0U);
    EXPECT_TRUE(room.random.log.entries.empty());
  }
}

TEST(PixelMapMode, ShowsTheSeatsColour) {
  LightRoom room;
  room.seat = {true, kGreen};
  room.change(21, 128);
  EXPECT_EQ(room.runFor(6000), Events{"0 green"});
  EXPECT_EQ(room.loop.turns(), 0U);
}

TEST(PixelMapMode, AFrameWithoutAColourIsBlack) {
  LightRoom room;
  room.seat = {true, std::nullopt};
  room.change(21, 128);
  EXPECT_EQ(room.runFor(0), Events{"0 black"});
}

TEST(PixelMapMode, WithoutASeatItIsBlackEvenWhenAPixelMapIsLoaded) {
  LightRoom room;
  room.seat = {false, kGreen};
  room.state.runEffectAnimation = true;
  room.modes.processMode(21, 128);
  EXPECT_EQ(room.runFor(0), Events{"0 black"});
  EXPECT_FALSE(room.state.runEffectAnimation);
}

TEST(PixelMapMode, WithASeatTheRunFlagStaysAsItIs) {
  for (const bool running : {false, true}) {
    for (const MaybeColour& colour : {MaybeColour(kGreen), MaybeColour()}) {
      LightRoom room;
      room.seat = {true, colour};
      room.state.runEffectAnimation = running;
      room.modes.processMode(21, 128);
      EXPECT_EQ(room.state.runEffectAnimation, running);
    }
  }
}

TEST(PixelMapMode, AsksForTheColourAgainAtEveryCall) {
  LightRoom room;
  room.seat = {true, kGreen};
  room.modes.processMode(21, 128);
  room.seat = {true, kRed};
  room.modes.processMode(21, 128);
  EXPECT_EQ(room.runFor(0), (Events{"0 green", "0 red"}));
}

TEST(NoSeatMode, ShowsBlackAndTheNotice) {
  LightRoom room;
  room.notesHiding = true;
  room.state.runEffectAnimation = true;
  room.modes.processMode(50, 128);
  EXPECT_EQ(room.runFor(6000), (Events{"0 black", "0 notice"}));
  EXPECT_FALSE(room.state.runEffectAnimation);
  EXPECT_EQ(room.state.currentMode, 50U);
  EXPECT_EQ(room.state.currentPerc, 50);
  EXPECT_EQ(room.loop.turns(), 0U);
}

TEST(NoSeatMode, AnyLaterModeHidesTheNoticeFirst) {
  LightRoom room;
  room.change(50, 0);
  room.runFor(0);
  room.notesHiding = true;
  room.change(3, 0);
  EXPECT_EQ(room.runFor(0), (Events{"0 no notice", "0 black"}));
  for (const std::uint32_t mode : {21U, 7U, 22U, 49U, 51U, 255U}) {
    room.change(mode, 0);
    const Events events = room.runFor(0);
    ASSERT_FALSE(events.empty()) << mode;
    EXPECT_EQ(events.front(), "0 no notice") << mode;
  }
}

TEST(StopEffect, TakesDownTheFlagAndBothTimers) {
  LightRoom room(Rule::greatest);
  room.change(6, 255);
  room.runFor(310);
  ASSERT_TRUE(room.loop.isPending(room.state.animationTimer));
  ASSERT_TRUE(room.loop.isPending(room.state.strobeAnimationTimer));
  room.modes.stopEffect();
  EXPECT_FALSE(room.state.runEffectAnimation);
  EXPECT_FALSE(room.loop.isPending(room.state.animationTimer));
  EXPECT_FALSE(room.loop.isPending(room.state.strobeAnimationTimer));
  const std::uint64_t turns = room.loop.turns();
  EXPECT_EQ(room.runFor(6000), Events{});
  EXPECT_EQ(room.loop.turns(), turns);
}

TEST(StopEffect, LeavesTheColourThatIsShown) {
  LightRoom room;
  room.change(5, 255);
  room.runFor(50);
  room.modes.stopEffect();
  EXPECT_EQ(nameOf(room.views.lightColour()), "orange");
}

}  // namespace
}  // namespace halvora
