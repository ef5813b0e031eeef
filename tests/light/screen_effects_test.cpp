// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <array>

#include <gtest/gtest.h>

#include "light/screen_modes.h"
#include "tests/light/light_room.h"
#include "tests/light/slowness.h"

namespace halvora {
namespace {

/// A step that shows a colour, perhaps flashes back, and is followed by the next.
struct StepCase {
  std::string name;
  Effect effect;
  std::uint32_t mode;
  std::string shown;
  std::string flashBack;
  std::string shownNext;
  Times least;
  Times greatest;
};

void PrintTo(const StepCase& step, std::ostream* out) { *out << step.name; }

class EffectStep : public testing::TestWithParam<StepCase> {};

TEST_P(EffectStep, ShowsItsColoursAndComesAgainOnTime) {
  const StepCase& expected = GetParam();
  for (const Rule rule : {Rule::least, Rule::greatest}) {
    for (std::size_t at = 0; at < kSlowness.size(); ++at) {
      SCOPED_TRACE(testing::Message() << "p " << kSlowness[at]);
      LightRoom room(rule);
      room.step(expected.effect, expected.mode, kSlowness[at]);
      const Duration next =
          dueAfter((rule == Rule::least ? expected.least : expected.greatest)[at]);
      Events events{"0 " + expected.shown};
      if (!expected.flashBack.empty() && next > milliseconds(90)) {
        events.push_back("90 " + expected.flashBack);
      }
      events.push_back(textOf(next) + " " + expected.shownNext);
      room.loop.runUntil(next);
      EXPECT_EQ(room.events, events);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    All, EffectStep,
    testing::Values(
        StepCase{"flashBulb", Effect::flashBulb, 3, "orange", "black", "orange", kNoPause,
                 kRandomPauses},
        StepCase{"paletteFlashBulb", Effect::paletteFlashBulb, 15, "orange", "black", "orange",
                 kNoPause, kRandomPauses},
        StepCase{"whiteSparkle", Effect::whiteSparkle, 13, "white", "orange", "white", kNoPause,
                 kRandomPauses},
        StepCase{"paletteRandom", Effect::paletteRandom, 19, "orange", "", "orange", kNoPause,
                 kRandomPauses},
        StepCase{"paletteCycle",
                 Effect::paletteCycle,
                 20,
                 "orange",
                 "",
                 "orange",
                 {50, 2525, 5000},
                 {50, 2525, 5000}},
        StepCase{"shimmer", Effect::shimmer, 4, "orange", "", "darkOrange", kNoPause,
                 kRandomPauses},
        StepCase{
            "strobe", Effect::strobe, 5, "orange", "", "black", {10, 105, 200}, {10, 105, 200}},
        StepCase{"strobeRandomRun",
                 Effect::strobeRandomRun,
                 6,
                 "orange",
                 "",
                 "black",
                 {50, 50, 50},
                 {50, 50, 50}}),
    [](const auto& row) { return row.param.name; });

/// A step that runs the light to one colour and then to another.
struct FadeCase {
  std::string name;
  Effect effect;
  std::uint32_t mode;
  std::string first;
  std::string second;
  Times fade;
  Times least;
  Times greatest;
};

void PrintTo(const FadeCase& fade, std::ostream* out) { *out << fade.name; }

class FadeStep : public testing::TestWithParam<FadeCase> {};

TEST_P(FadeStep, RunsThereAndOnAndComesAgainAfterItsPause) {
  const FadeCase& expected = GetParam();
  for (const Rule rule : {Rule::least, Rule::greatest}) {
    for (std::size_t at = 0; at < kSlowness.size(); ++at) {
      SCOPED_TRACE(testing::Message() << "p " << kSlowness[at]);
      LightRoom room(rule);
      room.step(expected.effect, expected.mode, kSlowness[at]);
      const Duration fade = milliseconds(expected.fade[at]);
      const Duration next =
          2 * fade + dueAfter((rule == Rule::least ? expected.least : expected.greatest)[at]);
      const std::string in = " in " + textOf(fade);
      room.loop.runUntil(next);
      EXPECT_EQ(room.events,
                (Events{"0 to " + expected.first + in, textOf(fade) + " there",
                        textOf(fade) + " to " + expected.second + in, textOf(2 * fade) + " there",
                        textOf(next) + " to " + expected.first + in}));
    }
  }
}

constexpr Times kPulses{100, 1300, 2500};
constexpr Times kCrossfades{200, 2600, 5000};

INSTANTIATE_TEST_SUITE_P(All, FadeStep,
                         testing::Values(FadeCase{"whitePulse", Effect::whitePulse, 14, "white",
                                                  "orange", kPulses, kNoPause, kRandomPauses},
                                         FadeCase{"colourPulse", Effect::colourPulse, 16, "orange",
                                                  "black", kPulses, kNoPause, kRandomPauses},
                                         FadeCase{"colourCrossfade",
                                                  Effect::colourCrossfade,
                                                  17,
                                                  "orange",
                                                  "orange",
                                                  kCrossfades,
                                                  {300, 2650, 5000},
                                                  {300, 2650, 5000}},
                                         FadeCase{"colourCrossfadeRandom",
                                                  Effect::colourCrossfadeRandom,
                                                  18,
                                                  "orange",
                                                  "orange",
                                                  kCrossfades,
                                                  {200, 200, 200},
                                                  {500, 2750, 5000}}),
                         [](const auto& row) { return row.param.name; });

TEST(EffectTimes, AreWholeMillisecondsRoundedDown) {
  // At 33 percent: 33 × 190 ÷ 100 is 62, 33 × 4950 ÷ 100 is 1633.
  LightRoom strobe;
  strobe.step(Effect::strobe, 5, 33);
  EXPECT_EQ(strobe.runFor(72), (Events{"0 orange", "72 black"}));
  LightRoom cycle;
  cycle.step(Effect::paletteCycle, 20, 33);
  EXPECT_EQ(cycle.runFor(1683), (Events{"0 orange", "1683 orange"}));
}

TEST(EffectTimes, PulsesLastAnEvenNumberOfMillisecondsAtEverySpeed) {
  for (int p = 0; p <= 100; ++p) {
    LightRoom room;
    room.step(Effect::whitePulse, 14, p);
    EXPECT_EQ(room.runFor(0), Events{"0 to white in " + std::to_string((p * 48 + 200) / 2)}) << p;
  }
}

TEST(EffectTimes, StrobeAt0PercentTogglesEvery10Ms) {
  LightRoom room;
  room.step(Effect::strobe, 5, 0);
  EXPECT_EQ(room.runFor(30), (Events{"0 orange", "10 black", "20 orange", "30 black"}));
}

TEST(EffectTimes, PaletteCycleAt0PercentChangesEvery50Ms) {
  LightRoom room(Rule::greatest);
  room.activatePalette();
  room.step(Effect::paletteCycle, 20, 0);
  // Draws of 2: from red to blue, then the step back to green, then blue again.
  EXPECT_EQ(room.runFor(100), (Events{"0 blue", "50 green", "100 blue"}));
}

TEST(EffectTimes, FollowTheSpeedInForceAtEachStep) {
  LightRoom room;
  room.step(Effect::strobe, 5, 0);
  room.state.currentPerc = 100;
  EXPECT_EQ(room.runFor(210), (Events{"0 orange", "10 black", "210 orange"}));
}

const std::array<std::pair<Effect, std::uint32_t>, 12> kAllEffects{{
    {Effect::flashBulb, 3},
    {Effect::paletteFlashBulb, 15},
    {Effect::whiteSparkle, 13},
    {Effect::whitePulse, 14},
    {Effect::colourPulse, 16},
    {Effect::colourCrossfade, 17},
    {Effect::colourCrossfadeRandom, 18},
    {Effect::paletteRandom, 19},
    {Effect::paletteCycle, 20},
    {Effect::shimmer, 4},
    {Effect::strobe, 5},
    {Effect::randomStrobe, 6},
}};

TEST(EffectGuards, NoStepDoesAnythingOnceTheRunFlagIsDown) {
  auto effects = std::vector(kAllEffects.begin(), kAllEffects.end());
  effects.emplace_back(Effect::strobeRandomRun, 6);
  for (const auto& [effect, mode] : effects) {
    LightRoom room;
    room.activatePalette();
    room.state.currentMode = mode;
    room.modes.step(effect);
    EXPECT_EQ(room.runFor(6000), Events{}) << mode;
    EXPECT_EQ(room.loop.turns(), 0U) << mode;
    EXPECT_TRUE(room.random.log.entries.empty()) << mode;
    EXPECT_FALSE(room.state.effectOn) << mode;
  }
}

TEST(EffectGuards, SparkleFadesAndPulsesRunInTheirOwnModeOnly) {
  const std::vector<std::uint32_t> guarded{13, 14, 16, 17, 18};
  for (const auto& [effect, mode] : kAllEffects) {
    const bool isGuarded = std::find(guarded.begin(), guarded.end(), mode) != guarded.end();
    for (std::uint32_t other = 0; other <= 60; ++other) {
      if (other == mode) continue;
      LightRoom room;
      room.activatePalette();
      room.step(effect, other, 0);
      const std::string trace = std::to_string(mode) + " in " + std::to_string(other);
      EXPECT_EQ(room.events.empty(), isGuarded) << trace;
      EXPECT_EQ(room.loop.isPending(room.state.animationTimer) || room.views.isAnimating(),
                !isGuarded)
          << trace;
      EXPECT_TRUE(!isGuarded || room.random.log.entries.empty()) << trace;
    }
  }
}

TEST(EffectGuards, WhitePulseFiringAfterTheModeChangedTo13DoesNothing) {
  LightRoom room;
  room.state.runEffectAnimation = true;
  room.state.currentMode = 13;
  room.modes.step(Effect::whitePulse);
  EXPECT_EQ(room.runFor(6000), Events{});
  EXPECT_EQ(room.loop.turns(), 0U);
}

struct PaletteCase {
  Effect effect;
  std::uint32_t mode;
  Events expected;
};

TEST(EffectPalettes, SomeStepsDrawTheNextColourFirst) {
  // A draw of 1 leads from red to green; the pauses are the shortest.
  const std::vector<PaletteCase> cases{
      {Effect::paletteFlashBulb, 15, {"0 green"}},
      {Effect::paletteRandom, 19, {"0 green"}},
      {Effect::paletteCycle, 20, {"0 green"}},
      {Effect::colourPulse, 16, {"0 to green in 100"}},
  };
  for (const PaletteCase& expected : cases) {
    LightRoom room(Rule::least, {1});
    room.activatePalette();
    room.step(expected.effect, expected.mode, 0);
    EXPECT_EQ(room.runFor(0), expected.expected) << expected.mode;
  }
}

TEST(EffectPalettes, CrossfadesDrawTheNextColourBetweenTheirFades) {
  for (const Effect effect : {Effect::colourCrossfade, Effect::colourCrossfadeRandom}) {
    LightRoom room(Rule::least, {2});
    room.activatePalette();
    room.step(effect, effect == Effect::colourCrossfade ? 17 : 18, 0);
    EXPECT_EQ(room.runFor(400),
              (Events{"0 to red in 200", "200 there", "200 to blue in 200", "400 there"}));
  }
}

TEST(EffectPalettes, TheOtherEffectsLeaveThePaletteAlone) {
  for (const auto& [effect, mode] : kAllEffects) {
    if (mode >= 15) continue;
    LightRoom room;
    room.activatePalette();
    room.step(effect, mode, 0);
    room.runFor(2000);
    EXPECT_EQ(room.colour.currentPaletteIndex, 0U) << mode;
    EXPECT_EQ(nameOf(room.colour.currentColour), "red") << mode;
  }
}

TEST(EffectPalettes, WithoutAPaletteIdNothingIsDrawnFromALeftoverPalette) {
  for (const auto& [effect, mode] : kAllEffects) {
    LightRoom room;
    room.activatePalette();
    room.colour.currentPaletteId = 0;
    room.step(effect, mode, 0);
    room.runFor(1000);
    EXPECT_EQ(room.colour.currentPaletteIndex, 0U) << mode;
  }
}

TEST(EffectPalettes, AnIdWithoutAPaletteKeepsTheCommandsColour) {
  LightRoom room;
  room.colour.currentPaletteId = 51;
  room.step(Effect::paletteCycle, 20, 0);
  EXPECT_EQ(room.runFor(50), (Events{"0 orange", "50 orange"}));
}

TEST(FlashBack, SettingTheRunFlagDownLeavesTheColourShown) {
  LightRoom room;
  room.step(Effect::flashBulb, 3, 100);
  room.runFor(50);
  room.state.runEffectAnimation = false;
  EXPECT_EQ(room.runFor(6000), Events{});
  EXPECT_EQ(nameOf(room.views.lightColour()), "orange");
}

TEST(FlashBack, IsNeverInvalidatedAndFiresIntoTheNextEffect) {
  LightRoom room(Rule::greatest);
  room.change(3, 255);
  room.runFor(300);
  room.runFor(50);
  room.change(4, 255);
  EXPECT_EQ(room.runFor(100), (Events{"350 orange", "390 black"}));
}

TEST(FlashBack, DiesWhenTheNextModeHasNoEffect) {
  LightRoom room(Rule::greatest);
  room.change(3, 255);
  room.runFor(350);
  room.change(22, 255);
  EXPECT_EQ(room.runFor(1000), Events{});
}

TEST(FlashBack, OfTheSparkleShowsTheColourOfItsOwnStep) {
  LightRoom room(Rule::greatest);
  room.step(Effect::whiteSparkle, 13, 0);
  room.colour.currentColour = kGreen;
  EXPECT_EQ(room.runFor(90), (Events{"0 white", "90 orange"}));
}

TEST(FlashBack, IsKeptUnderNoName) {
  LightRoom room(Rule::greatest);
  room.step(Effect::flashBulb, 3, 0);
  // The one named timer is the next step's.
  room.timers.invalidate(room.state.animationTimer);
  EXPECT_EQ(room.state.strobeAnimationTimer, 0U);
  EXPECT_EQ(room.runFor(6000), (Events{"0 orange", "90 black"}));
}

TEST(DelayLightColour, ShowsItsColourOnlyWhileAnEffectRuns) {
  LightRoom room;
  room.modes.delayLightColour(kGreen);
  EXPECT_EQ(room.runFor(0), Events{});
  room.state.runEffectAnimation = true;
  room.modes.delayLightColour(kGreen);
  room.modes.delayLightColour(std::nullopt);
  EXPECT_EQ(room.runFor(0), (Events{"0 green", "0 none"}));
}

TEST(Shimmer, AlternatesTheColourAndItsDarkerVariant) {
  LightRoom room(Rule::greatest);
  room.step(Effect::shimmer, 4, 0);
  EXPECT_EQ(room.runFor(900),
            (Events{"0 orange", "300 darkOrange", "600 orange", "900 darkOrange"}));
}

TEST(Shimmer, DarkColoursAlternateWithBlack) {
  LightRoom room(Rule::greatest);
  room.colour.currentColour = Colour{0.6F, 0.5F, 0.1F, 1};
  room.step(Effect::shimmer, 4, 0);
  room.runFor(299);
  EXPECT_EQ(room.runFor(1), Events{"300 black"});
}

TEST(Shimmer, OfNoColourClearsTheLight) {
  LightRoom room(Rule::greatest);
  room.colour.currentColour = std::nullopt;
  room.step(Effect::shimmer, 4, 0);
  EXPECT_EQ(room.runFor(300), (Events{"0 none", "300 none"}));
}

}  // namespace
}  // namespace halvora
