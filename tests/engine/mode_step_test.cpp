// SPDX-License-Identifier: Apache-2.0
#include <cstdint>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "light/mode_tables.h"
#include "tests/engine/engine_bench.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using B = Broadcast;

Acts callbacksOf(EngineBench& bench, const Broadcast& broadcast) {
  bench.take();
  bench.process(broadcast);
  return bench.take({"started", "stopped"});
}

TEST(ShowCallbacks, StartedOnEveryChangeOfModeOrSpeed) {
  EngineBench bench;
  EXPECT_THAT(callbacksOf(bench, look(1)), ElementsAre("started"));
  EXPECT_THAT(callbacksOf(bench, look(3)), ElementsAre("started"));
  EXPECT_THAT(callbacksOf(bench, look(3, {{&B::speed, 1}})), ElementsAre("started"));
  EXPECT_THAT(callbacksOf(bench, look(3, {{&B::speed, 1}, {&B::blue, 1}})), IsEmpty());
}

TEST(ShowCallbacks, StoppedOnEveryChangeToMode0OrOfItsSpeed) {
  EngineBench bench;
  EXPECT_THAT(callbacksOf(bench, look(0)), IsEmpty()) << "mode and speed are those in force";
  EXPECT_THAT(callbacksOf(bench, look(0, {{&B::speed, 1}})), ElementsAre("stopped"));
  EXPECT_THAT(callbacksOf(bench, look(0, {{&B::speed, 1}, {&B::blue, 1}})), IsEmpty());
  EXPECT_THAT(callbacksOf(bench, look(1)), ElementsAre("started"));
  EXPECT_THAT(callbacksOf(bench, look(0)), ElementsAre("stopped"));
}

TEST(ShowCallbacks, AbsentOnesAreTolerated) {
  EngineBench bench({.hasCallbacks = false});
  bench.process(look(1));
  EXPECT_EQ(bench.views().alpha(ViewId::container), 1);
  bench.process(look(0));
  EXPECT_EQ(bench.views().alpha(ViewId::container), 0);
}

TEST(ModeStep, StoresModeAndSpeed) {
  EngineBench bench;
  bench.process(look(255, {{&B::speed, 200}}));
  EXPECT_EQ(bench.screen().currentMode, 255U);
  EXPECT_EQ(bench.screen().currentModeSpeed, 200);
}

TEST(ModeStep, ToldToHosts) {
  EngineBench bench;
  std::vector<std::uint32_t> told;
  const auto tell = [&] { told.push_back(bench.controller().screenMode()); };
  bench.controller().setLightShowStartedCallback(tell);
  bench.controller().setLightShowStoppedCallback(tell);
  EXPECT_EQ(bench.controller().screenMode(), 0U);
  bench.process(look(7));
  bench.process(look(0));
  EXPECT_THAT(told, ElementsAre(7U, 0U));
  bench.seat("", "1", "1");
  bench.process(look(7, {{&B::pixelMapId, 1}}));
  EXPECT_EQ(bench.controller().screenMode(), kNoSeatMode) << "no section was chosen";
}

TEST(ModeStep, IsNoneOnceTheVenueWasLeft) {
  EngineBench bench;
  bench.listen();
  bench.hearNext(look(1));
  EXPECT_EQ(bench.controller().screenMode(), 1U);
  bench.runTo(20000);
  EXPECT_FALSE(bench.controller().isInsideVenue());
  EXPECT_EQ(bench.controller().screenMode(), 0U);
}

TEST(ModeStep, ShowGoesOnTheScreen) {
  EngineBench bench;
  bench.process(look(1));
  EXPECT_TRUE(bench.engine().prefersStatusBarHidden());
  EXPECT_TRUE(bench.phone.application.isStatusBarHidden);
  EXPECT_TRUE(bench.phone.application.isIdleTimerDisabled);
  EXPECT_EQ(bench.phone.application.dismissals, 1);
  EXPECT_DOUBLE_EQ(bench.phone.screen.brightness(), 1);
  bench.runTo(500);
  EXPECT_NEAR(bench.views().shownAlpha(ViewId::container), 0.5, 1e-6);
  bench.runTo(1000);
  EXPECT_EQ(bench.views().shownAlpha(ViewId::container), 1);
}

TEST(ModeStep, ShowLeavesTheScreen) {
  EngineBench bench;
  bench.process(look(1));
  bench.runTo(2000);
  bench.process(look(0));
  EXPECT_FALSE(bench.engine().prefersStatusBarHidden());
  EXPECT_FALSE(bench.phone.application.isStatusBarHidden);
  EXPECT_FALSE(bench.phone.application.isIdleTimerDisabled);
  EXPECT_EQ(bench.phone.application.dismissals, 1);
  EXPECT_EQ(bench.views().lightColour(), MaybeColour(colourOfBytes(255, 0, 0)))
      << "the stopped light keeps its colour";
  bench.runTo(2500);
  EXPECT_NEAR(bench.views().shownAlpha(ViewId::container), 0.5, 1e-6);
  bench.runTo(3000);
  EXPECT_EQ(bench.views().shownAlpha(ViewId::container), 0);
  EXPECT_LE(bench.phone.screen.brightness(), 0.5 + 1e-9);
}

TEST(ModeStep, EffectsBeginAtMode3) {
  // Entering a mode from 3 on hides the notice once more.
  for (const int mode : {1, 2}) {
    EngineBench bench;
    bench.process(look(mode));
    EXPECT_THAT(bench.take({"hideNoSeat"}), ElementsAre("hideNoSeat")) << mode;
  }
  for (const int mode : {3, 7, 21, 49, 255}) {
    EngineBench bench;
    bench.process(look(mode));
    EXPECT_THAT(bench.take({"hideNoSeat"}).size(), mode == 21 ? 3U : 2U) << mode;
  }
}

TEST(ModeStep, Mode50KeepsTheNotice) {
  EngineBench bench;
  bench.process(look(50));
  EXPECT_THAT(bench.take({"hideNoSeat", "showNoSeat", "light"}),
              ElementsAre("light 0 0 0", "showNoSeat"));
  bench.process(look(1));
  EXPECT_THAT(bench.take({"hideNoSeat", "showNoSeat"}), ElementsAre("hideNoSeat"));
}

TEST(ModeStep, OnlyMode9ShowsTheRateLabel) {
  EngineBench bench;
  bench.process(look(9));
  EXPECT_EQ(bench.views().alpha(ViewId::fpsLabel), 1);
  bench.process(look(10));
  EXPECT_EQ(bench.views().alpha(ViewId::fpsLabel), 0);
  bench.process(look(9));
  bench.process(look(0));
  EXPECT_EQ(bench.views().alpha(ViewId::fpsLabel), 0);
}

TEST(ModeStep, EndsTheEffectThatRan) {
  EngineBench bench({.random = ScriptedRandom::Rule::greatest});
  bench.process(look(6, {{&B::speed, 255}}));
  bench.runTo(320);
  EXPECT_NE(bench.screen().animationTimer, 0U);
  EXPECT_NE(bench.screen().strobeAnimationTimer, 0U);
  bench.process(look(1, {{&B::speed, 255}}));
  EXPECT_FALSE(bench.screen().runEffectAnimation);
  bench.take();
  bench.runTo(5000);
  EXPECT_THAT(bench.take({"light", "draw"}), IsEmpty());
}

TEST(ModeStep, RemovesTheLightsAnimations) {
  EngineBench bench;
  bench.process(look(14, {{&B::speed, 0}}));
  bench.runTo(1000);
  EXPECT_THAT(bench.take({"fadeLight"}), ElementsAre("fadeLight 255 255 255 in 2500 ms"));
  bench.process(look(1, {{&B::speed, 0}}));
  EXPECT_EQ(bench.views().shownLight(), MaybeColour(colourOfBytes(255, 0, 0)));
  bench.runTo(1001);
  EXPECT_THAT(bench.take({"lightEnded"}), ElementsAre("lightEnded removed"));
  bench.runTo(9000);
  EXPECT_THAT(bench.take({"fadeLight", "lightEnded", "light"}), IsEmpty());
}

TEST(ModeStep, SameModeAndSpeedOnlyChangesTheColour) {
  EngineBench bench({.random = ScriptedRandom::Rule::greatest});
  bench.process(look(4, {{&B::speed, 255}}));
  const TimerId step = bench.screen().animationTimer;
  bench.runTo(100);
  bench.take();
  bench.process(look(4, {{&B::speed, 255}, {&B::red, 0}, {&B::blue, 255}}));
  EXPECT_EQ(bench.screen().animationTimer, step);
  EXPECT_THAT(bench.take({"hideNoSeat", "light", "started", "draw", "statusBarHidden"}),
              ElementsAre("light 0 0 255"));
}

TEST(ModeToggle, EachChangeFlipsTheLight) {
  for (const int mode : {7, 8}) {
    EngineBench bench;
    bench.process(look(mode, {{&B::speed, 1}}));
    EXPECT_FALSE(bench.screen().lastTurnOn);
    EXPECT_THAT(bench.take({"light"}), ElementsAre("light 0 0 0"));
    bench.process(look(mode, {{&B::speed, 2}}));
    EXPECT_TRUE(bench.screen().lastTurnOn);
    EXPECT_THAT(bench.take({"light"}), ElementsAre("light 255 0 0", "light 255 0 0"));
  }
}

TEST(ModeToggle, LookThatChangesNeitherModeNorSpeedDoesNotFlip) {
  EngineBench bench;
  bench.process(look(7));
  bench.take();
  bench.process(look(7, {{&B::blue, 255}}));
  EXPECT_FALSE(bench.screen().lastTurnOn);
  EXPECT_THAT(bench.take({"light"}), IsEmpty()) << "dark, it stays dark";
  bench.process(look(7, {{&B::speed, 3}, {&B::blue, 255}}));
  bench.take();
  bench.process(look(7, {{&B::speed, 3}, {&B::green, 255}}));
  EXPECT_THAT(bench.take({"light"}), ElementsAre("light 255 255 0"));
}

struct AgainCase {
  int mode;
  bool shownWithoutPalette;
  bool shownWithPalette;
};

// What a look that only changes the colour repaints.
constexpr AgainCase kAgainCases[] = {
    {0, false, false},  {1, true, true},    {3, false, false},  {4, true, true},
    {5, false, false},  {6, false, false},  {9, true, true},    {10, true, true},
    {11, true, true},   {12, true, true},   {13, true, true},   {14, false, false},
    {15, true, false},  {16, true, false},  {17, true, false},  {18, true, false},
    {19, true, false},  {20, true, false},  {21, false, false}, {22, false, false},
    {51, false, false}, {255, false, false}};

TEST(StaticColour, WithoutAPalette) {
  for (const AgainCase& again : kAgainCases) {
    for (const int palette : {0, 51, 255}) {
      EngineBench bench({.random = ScriptedRandom::Rule::greatest});
      bench.process(look(again.mode, {{&B::paletteId, palette}}));
      bench.take();
      bench.process(look(again.mode, {{&B::paletteId, palette}, {&B::green, 255}}));
      const Acts shown = bench.take({"light"});
      if (again.shownWithoutPalette) {
        EXPECT_THAT(shown, ElementsAre("light 255 255 0")) << again.mode;
      } else {
        EXPECT_THAT(shown, IsEmpty()) << again.mode;
      }
    }
  }
}

TEST(StaticColour, WithAPalette) {
  for (const AgainCase& again : kAgainCases) {
    EngineBench bench;
    bench.process(look(again.mode, {{&B::paletteId, 1}}));
    bench.take();
    bench.process(look(again.mode, {{&B::paletteId, 1}, {&B::green, 255}}));
    const Acts shown = bench.take({"light"});
    if (again.shownWithPalette) {
      EXPECT_THAT(shown, ElementsAre("light 0 0 255")) << again.mode;
    } else {
      EXPECT_THAT(shown, IsEmpty()) << again.mode;
    }
  }
}

TEST(StaticColour, SteadyModesEndAnyEffect) {
  for (const int mode : {1, 9, 10, 11, 12}) {
    EngineBench bench;
    bench.process(look(mode));
    bench.writableState().screen.runEffectAnimation = true;
    bench.process(look(mode, {{&B::blue, 1}}));
    EXPECT_FALSE(bench.screen().runEffectAnimation) << mode;
  }
}

TEST(StaticColour, Mode13KeepsItsEffect) {
  EngineBench bench;
  bench.process(look(13));
  bench.process(look(13, {{&B::blue, 1}}));
  EXPECT_TRUE(bench.screen().runEffectAnimation);
}

TEST(StaticColour, Mode4IsDarkerInTheOnPhase) {
  EngineBench bench({.random = ScriptedRandom::Rule::greatest});
  bench.process(look(4, {{&B::speed, 255}}));
  bench.runTo(300);
  EXPECT_TRUE(bench.screen().effectOn);
  bench.take();
  bench.process(look(4, {{&B::speed, 255}, {&B::green, 51}}));
  EXPECT_THAT(bench.take({"light"}), ElementsAre("light 102 0 0"));
  bench.runTo(600);
  EXPECT_FALSE(bench.screen().effectOn);
  bench.take();
  bench.process(look(4, {{&B::speed, 255}, {&B::green, 102}}));
  EXPECT_THAT(bench.take({"light"}), ElementsAre("light 255 102 0"));
}

struct FlashCase {
  int speed;
  int least;
  int greatest;
};

// p × 950 ÷ 100 + 50 to p × 39 + 1100 with p = 0, 1, 2, 50, 100.
constexpr FlashCase kFlashCases[] = {
    {255, 50, 1100}, {252, 59, 1139}, {250, 69, 1178}, {128, 525, 3050}, {0, 1000, 5000}};

TEST(RandomFlash, ComesAfterADrawnPause) {
  for (const FlashCase& flash : kFlashCases) {
    for (const auto rule : {ScriptedRandom::Rule::least, ScriptedRandom::Rule::greatest}) {
      SCOPED_TRACE(flash.speed);
      EngineBench bench({.random = rule});
      bench.process(look(2, {{&B::speed, flash.speed}}));
      EXPECT_TRUE(bench.screen().runEffectAnimation);
      EXPECT_THAT(bench.take({"draw", "light"}),
                  ElementsAre("draw " + std::to_string(flash.greatest - flash.least + 1)));
      const int pause = rule == ScriptedRandom::Rule::least ? flash.least : flash.greatest;
      bench.runTo(pause - 1);
      EXPECT_THAT(bench.take({"light"}), IsEmpty());
      bench.runTo(pause);
      EXPECT_THAT(bench.take({"light"}), ElementsAre("light 255 0 0"));
      bench.runTo(20000);
      EXPECT_THAT(bench.take({"light"}), IsEmpty());
    }
  }
}

TEST(RandomFlash, EveryLookSchedulesOneWithItsOwnColour) {
  EngineBench bench;
  bench.process(look(2));
  bench.runTo(400);
  bench.process(look(2, {{&B::green, 255}}));
  bench.take();
  bench.runTo(1000);
  EXPECT_THAT(bench.take({"light"}), ElementsAre("light 255 0 0"));
  bench.runTo(1400);
  EXPECT_THAT(bench.take({"light"}), ElementsAre("light 255 255 0"));
}

TEST(RandomFlash, DoesNotComeOnceTheEffectsAreStopped) {
  EngineBench bench;
  bench.process(look(2));
  bench.process(look(0));
  bench.take();
  bench.runTo(5000);
  EXPECT_THAT(bench.take({"light"}), IsEmpty());
}

TEST(RandomFlash, OneThatIsPendingComesInTheNextEffectToo) {
  EngineBench bench({.random = ScriptedRandom::Rule::greatest});
  bench.process(look(2, {{&B::speed, 255}}));
  bench.runTo(1000);
  bench.process(look(5, {{&B::speed, 0}, {&B::green, 255}}));
  bench.take();
  bench.runTo(1100);
  EXPECT_THAT(bench.take({"light"}), ElementsAre("light 255 0 0"));
}

}  // namespace
}  // namespace halvora
