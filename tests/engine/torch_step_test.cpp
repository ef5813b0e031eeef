// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/engine/engine_bench.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using B = Broadcast;

// The screen stays off, so the only draws and timers are the torch's.
Broadcast torch(int mode, int speed, int blue = 0) {
  return look(0, {{&B::ledMode, mode}, {&B::ledSpeed, speed}, {&B::blue, blue}});
}

Acts actsOf(EngineBench& bench, const Broadcast& broadcast) {
  bench.take();
  bench.process(broadcast);
  return bench.take({"torch", "ledMode", "draw"});
}

TEST(TorchStep, ChangeOfModeOrSpeedEntersTheTorchMode) {
  EngineBench bench;
  EXPECT_THAT(actsOf(bench, torch(4, 100)), ElementsAre("ledMode 4 100"));
  EXPECT_EQ(bench.state().torch.currentLEDMode, 4);
  EXPECT_EQ(bench.state().torch.currentLEDSpeed, 100);
  EXPECT_THAT(actsOf(bench, torch(4, 100, 1)), IsEmpty());
  EXPECT_THAT(actsOf(bench, torch(4, 101)), ElementsAre("ledMode 4 101"));
  EXPECT_THAT(actsOf(bench, torch(255, 101)), ElementsAre("ledMode 255 101"));
}

TEST(TorchStep, ChangeStopsTheEffectThatRan) {
  EngineBench bench;
  bench.process(torch(4, 100));
  TorchState& state = bench.writableState().torch;
  const auto fail = [] { ADD_FAILURE() << "a stopped torch effect went on"; };
  state.runLEDEffectAnimation = true;
  state.ledAnimationTimer = bench.phone.loop.after(milliseconds(100), fail);
  state.ledStrobeAnimationTimer = bench.phone.loop.after(milliseconds(100), fail);
  bench.process(torch(5, 100));
  EXPECT_FALSE(state.runLEDEffectAnimation);
  bench.runTo(1000);
}

TEST(TorchStep, LookWithTheSameTorchKeepsTheEffect) {
  EngineBench bench;
  bench.process(torch(4, 100));
  TorchState& state = bench.writableState().torch;
  int steps = 0;
  state.runLEDEffectAnimation = true;
  state.ledAnimationTimer = bench.phone.loop.after(milliseconds(100), [&steps] { ++steps; });
  bench.process(torch(4, 100, 1));
  EXPECT_TRUE(state.runLEDEffectAnimation);
  bench.runTo(1000);
  EXPECT_EQ(steps, 1);
}

TEST(TorchStep, Mode0TurnsItOffWithEveryLook) {
  EngineBench bench;
  EXPECT_THAT(actsOf(bench, torch(0, 0)), ElementsAre("torch off"));
  EXPECT_THAT(actsOf(bench, torch(0, 0, 1)), ElementsAre("torch off"));
  EXPECT_THAT(actsOf(bench, torch(0, 9)), ElementsAre("ledMode 0 9", "torch off"));
}

TEST(TorchStep, Mode1TurnsItOnWithEveryLook) {
  EngineBench bench;
  EXPECT_THAT(actsOf(bench, torch(1, 0)), ElementsAre("ledMode 1 0", "torch on"));
  EXPECT_THAT(actsOf(bench, torch(1, 0, 1)), ElementsAre("torch on"));
}

struct FlickerCase {
  int speed;
  int latest;
};

// p × 39 + 1100 with p = 0, 1, 50, 100.
constexpr FlickerCase kFlickerCases[] = {{255, 1100}, {252, 1139}, {128, 3050}, {0, 5000}};

void expectFlicker(int mode, const char* act) {
  for (const FlickerCase& flicker : kFlickerCases) {
    SCOPED_TRACE(flicker.speed);
    EngineBench bench({.random = ScriptedRandom::Rule::greatest});
    EXPECT_THAT(actsOf(bench, torch(mode, flicker.speed)),
                ElementsAre("ledMode " + std::to_string(mode) + " " + std::to_string(flicker.speed),
                            "draw " + std::to_string(flicker.latest + 1)));
    EXPECT_EQ(bench.state().torch.currentLEDMode, mode);
    bench.runTo(flicker.latest - 1);
    EXPECT_THAT(bench.take({"torch"}), IsEmpty());
    bench.runTo(flicker.latest);
    EXPECT_THAT(bench.take({"torch"}), ElementsAre(act));
    bench.runTo(20000);
    EXPECT_THAT(bench.take({"torch"}), IsEmpty()) << "once";
  }
}

TEST(TorchStep, Mode2TurnsItOffAfterADrawnPause) { expectFlicker(2, "torch off"); }

TEST(TorchStep, Mode3TurnsItOnAfterADrawnPause) { expectFlicker(3, "torch on"); }

TEST(TorchStep, ShortestPauseOfModes2And3IsNone) {
  EngineBench bench;
  bench.process(torch(3, 255));
  EXPECT_THAT(bench.take({"torch"}), IsEmpty()) << "never within the look's own turn";
  bench.runTo(1);
  EXPECT_THAT(bench.take({"torch"}), ElementsAre("torch on"));
}

TEST(TorchStep, ReplacedTimerStillFires) {
  EngineBench bench({.random = ScriptedRandom::Rule::greatest});
  bench.process(torch(3, 255));
  const TimerId first = bench.state().torch.ledAnimationTimer;
  bench.runTo(500);
  EXPECT_THAT(actsOf(bench, torch(3, 255, 1)), ElementsAre("draw 1101"));
  EXPECT_NE(bench.state().torch.ledAnimationTimer, first);
  bench.runTo(1100);
  EXPECT_THAT(bench.take({"torch"}), ElementsAre("torch on"));
  bench.runTo(1599);
  EXPECT_THAT(bench.take({"torch"}), IsEmpty());
  bench.runTo(1600);
  EXPECT_THAT(bench.take({"torch"}), ElementsAre("torch on"));
}

TEST(TorchStep, ChangeEndsOnlyTheTimerThatIsNamed) {
  EngineBench bench({.random = ScriptedRandom::Rule::greatest});
  bench.process(torch(3, 255));
  bench.runTo(500);
  bench.process(torch(3, 255, 1));
  bench.runTo(600);
  bench.process(torch(0, 255));
  bench.take();
  bench.runTo(1100);
  EXPECT_THAT(bench.take({"torch"}), ElementsAre("torch on")) << "of the first look";
  bench.runTo(5000);
  EXPECT_THAT(bench.take({"torch"}), IsEmpty()) << "that of the second look was ended";
}

TEST(TorchStep, OtherModesWriteNothingThemselves) {
  for (const int mode : {4, 5, 6, 7, 8, 10, 255}) {
    EngineBench bench;
    EXPECT_THAT(actsOf(bench, torch(mode, 0)),
                ElementsAre("ledMode " + std::to_string(mode) + " 0"));
    bench.runTo(6000);
    EXPECT_THAT(bench.take({"torch"}), IsEmpty()) << mode;
  }
}

}  // namespace
}  // namespace halvora
