// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "light/screen_modes.h"
#include "tests/light/light_room.h"

namespace halvora {
namespace {

TEST(FadeChain, EndsWhenItsFirstAnimationIsRemoved) {
  LightRoom room;
  room.step(Effect::whitePulse, 14, 0);
  room.runFor(60);
  room.views.removeLightAnimations();
  EXPECT_EQ(room.runFor(6000), Events{"60 removed"});
  EXPECT_EQ(nameOf(room.views.lightColour()), "white");
}

TEST(FadeChain, EndsWhenItsSecondAnimationIsRemoved) {
  LightRoom room;
  room.step(Effect::colourPulse, 16, 0);
  room.runFor(160);
  room.views.removeLightAnimations();
  EXPECT_EQ(room.runFor(6000), Events{"160 removed"});
  EXPECT_EQ(nameOf(room.views.lightColour()), "black");
}

TEST(FadeChain, DrawsNoPaletteColourWhenItsFirstAnimationIsRemoved) {
  LightRoom room;
  room.activatePalette();
  room.step(Effect::colourCrossfade, 17, 0);
  room.runFor(60);
  room.views.removeLightAnimations();
  room.runFor(1000);
  EXPECT_EQ(room.colour.currentPaletteIndex, 0U);
  EXPECT_TRUE(room.random.log.entries.empty());
}

TEST(FadeChain, AChangeOfModeEndsIt) {
  LightRoom room;
  room.change(17, 255);
  room.runFor(350);
  room.change(22, 255);
  EXPECT_EQ(room.runFor(6000), Events{"350 removed"});
}

TEST(FadeChain, AStepRemovesTheAnimationThatRunsAndOnlyItsOwnChainGoesOn) {
  LightRoom room(Rule::greatest);
  room.step(Effect::whitePulse, 14, 0);
  room.runFor(50);
  room.modes.step(Effect::whitePulse);
  EXPECT_EQ(room.runFor(500), (Events{"50 to white in 100", "50 removed", "150 there",
                                      "150 to orange in 100", "250 there", "550 to white in 100"}));
}

TEST(FadeChain, AStoppedFlagLetsTheFadesFinishButNotTheNextStep) {
  LightRoom room;
  room.step(Effect::whitePulse, 14, 0);
  room.state.runEffectAnimation = false;
  EXPECT_EQ(room.runFor(6000),
            (Events{"0 to white in 100", "100 there", "100 to orange in 100", "200 there"}));
}

TEST(FadeChain, APulsesPauseIsThatOfTheSpeedAtItsStep) {
  LightRoom room(Rule::greatest);
  room.step(Effect::whitePulse, 14, 0);
  room.runFor(150);
  room.state.currentPerc = 100;
  EXPECT_EQ(room.runFor(350), (Events{"200 there", "500 to white in 2500"}));
}

TEST(FadeChain, ARandomCrossfadesPauseIsThatOfTheSpeedAtItsStep) {
  LightRoom room(Rule::greatest);
  room.step(Effect::colourCrossfadeRandom, 18, 0);
  room.runFor(300);
  room.state.currentPerc = 100;
  EXPECT_EQ(room.runFor(600), (Events{"400 there", "900 to orange in 5000"}));
}

TEST(FadeChain, ItsPauseIsDrawnWhenTheSecondAnimationEnds) {
  LightRoom room;
  room.step(Effect::colourPulse, 16, 50);
  room.runFor(2599);
  EXPECT_TRUE(room.random.log.entries.empty());
  room.runFor(1);
  EXPECT_EQ(room.random.log.entries, std::vector<std::uint32_t>{2651});
}

TEST(FadeChain, TheRandomCrossfadeDrawsFrom200) {
  LightRoom room;
  room.step(Effect::colourCrossfadeRandom, 18, 100);
  room.runFor(10'000);
  // From 200 to 5000, both included.
  EXPECT_EQ(room.random.log.entries, std::vector<std::uint32_t>{4801});
}

TEST(FadeChain, ThePulseReturnsToTheColourInForceAtThatMoment) {
  LightRoom room;
  room.step(Effect::whitePulse, 14, 0);
  room.runFor(50);
  room.colour.currentColour = kGreen;
  EXPECT_EQ(room.runFor(50), (Events{"100 there", "100 to green in 100"}));
}

TEST(FadeChain, WithoutAPaletteTheColourPulsesUpAndDownToBlack) {
  LightRoom room;
  room.step(Effect::colourPulse, 16, 0);
  EXPECT_EQ(room.runFor(300), (Events{"0 to orange in 100", "100 there", "100 to black in 100",
                                      "200 there", "200.1 to orange in 100"}));
}

TEST(FadeChain, TheLightPassesThroughTheColoursBetween) {
  LightRoom room;
  room.views.setLightColour(kBlack);
  room.step(Effect::whitePulse, 14, 0);
  room.runFor(50);
  const MaybeColour shown = room.views.shownLight();
  ASSERT_TRUE(shown);
  EXPECT_GT(shown->red, 0.0F);
  EXPECT_LT(shown->red, 1.0F);
  room.runFor(50);
  EXPECT_EQ(nameOf(room.views.shownLight()), "white");
}

TEST(FadeChain, ACrossfadeWalksThroughThePalette) {
  // The only draws are the palette's: to green, then to blue.
  LightRoom room(Rule::least, {1, 2});
  room.activatePalette();
  room.step(Effect::colourCrossfade, 17, 0);
  EXPECT_EQ(room.runFor(1100),
            (Events{"0 to red in 200", "200 there", "200 to green in 200", "400 there",
                    "700 to green in 200", "900 there", "900 to blue in 200", "1100 there"}));
}

// A burst shows orange, toggles 50 and 100 ms later, and at 150 ms meets its own next step: that
// was scheduled before the toggle due at the same instant, so it finds the phase on and pauses.
TEST(RandomStrobe, ABurstTogglesTwiceAndThenPausesInTheDark) {
  LightRoom room(Rule::greatest);
  room.change(6, 255);
  EXPECT_EQ(room.runFor(1200),
            (Events{"0 black", "300 orange", "350 black", "400 orange", "450 black", "750 orange",
                    "800 black", "850 orange", "900 black", "1200 orange"}));
}

TEST(RandomStrobe, AtTheSlowestItsPauseIsUpTo5000MsAndItsBurstTheSame) {
  LightRoom room(Rule::greatest);
  room.change(6, 0);
  EXPECT_EQ(room.runFor(10'150), (Events{"0 black", "5000 orange", "5050 black", "5100 orange",
                                         "5150 black", "10150 orange"}));
}

TEST(RandomStrobe, InTheMiddleItsPauseIsUpTo2650Ms) {
  LightRoom room(Rule::greatest);
  room.change(6, 128);
  EXPECT_EQ(room.runFor(5450), (Events{"0 black", "2650 orange", "2700 black", "2750 orange",
                                       "2800 black", "5450 orange"}));
}

TEST(RandomStrobe, TheShortestPauseIsATenthOfAMillisecond) {
  LightRoom room;
  room.change(6, 255);
  EXPECT_EQ(room.runFor(201), (Events{"0 black", "0.1 orange", "50.1 black", "100.1 orange",
                                      "150.1 black", "150.2 orange", "200.2 black"}));
}

TEST(RandomStrobe, APhaseLeftOnBeginsWithAPause) {
  LightRoom room(Rule::greatest);
  room.state.effectOn = true;
  room.step(Effect::randomStrobe, 6, 0);
  EXPECT_FALSE(room.state.effectOn);
  EXPECT_EQ(room.runFor(300), (Events{"0 black", "300 orange"}));
  EXPECT_TRUE(room.state.effectOn);
}

TEST(RandomStrobe, ABurstThatEndsInItsDarkPhaseIsFollowedByAnother) {
  LightRoom room(Rule::greatest);
  room.step(Effect::randomStrobe, 6, 0);
  room.runFor(60);
  // Without the toggle at 100 ms the step at 150 ms finds the phase off.
  room.timers.invalidate(room.state.strobeAnimationTimer);
  EXPECT_EQ(room.runFor(200), (Events{"150 orange", "200 black", "250 orange"}));
}

TEST(RandomStrobe, TheBurstIsNotDrawnThePauseIs) {
  LightRoom room(Rule::greatest);
  room.step(Effect::randomStrobe, 6, 0);
  room.runFor(149);
  EXPECT_TRUE(room.random.log.entries.empty());
  room.runFor(1);
  EXPECT_EQ(room.random.log.entries, std::vector<std::uint32_t>{301});
}

TEST(RandomStrobe, TheFastTogglesHaveATimerOfTheirOwn) {
  LightRoom room(Rule::greatest);
  room.step(Effect::randomStrobe, 6, 0);
  const TimerId next = room.state.animationTimer;
  room.runFor(60);
  EXPECT_EQ(room.state.animationTimer, next);
  EXPECT_TRUE(room.loop.isPending(room.state.strobeAnimationTimer));
  EXPECT_NE(room.state.strobeAnimationTimer, next);
}

TEST(RandomStrobe, NoToggleOutlivesTheBurst) {
  LightRoom room(Rule::greatest);
  room.step(Effect::randomStrobe, 6, 100);
  room.runFor(150);
  EXPECT_FALSE(room.loop.isPending(room.state.strobeAnimationTimer));
  EXPECT_EQ(room.runFor(4999), Events{});
}

TEST(RandomStrobe, ANewSpeedOfTheSameModeStartsItAfresh) {
  LightRoom room(Rule::greatest);
  room.change(6, 255);
  room.runFor(360);
  room.change(6, 0);
  EXPECT_EQ(room.runFor(5050), (Events{"360 black", "5360 orange", "5410 black"}));
}

}  // namespace
}  // namespace halvora
