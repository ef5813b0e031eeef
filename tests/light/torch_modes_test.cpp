// SPDX-License-Identifier: Apache-2.0
#include "light/torch_modes.h"

#include <optional>

#include <gtest/gtest.h>

#include "tests/light/light_room.h"

namespace halvora {
namespace {

/// The torch modes alone, with every write to the torch as an event.
class TorchRoom final : private Torch, private SeatSight {
 public:
  explicit TorchRoom(Rule rule = Rule::least, std::vector<std::uint32_t> firstDraws = {})
      : random(rule, std::move(firstDraws)) {}

  /// What command processing does with every new torch mode or speed.
  void change(int mode, int speed) {
    state.currentLEDMode = mode;
    state.currentLEDSpeed = speed;
    state.runLEDEffectAnimation = false;
    timers.invalidate(state.ledAnimationTimer);
    timers.invalidate(state.ledStrobeAnimationTimer);
    modes.processLEDMode(mode, speed);
  }

  Events runFor(long long ms) {
    loop.runFor(milliseconds(ms));
    return std::exchange(events, {});
  }

  bool isTorchFitted = true;
  bool isFlashFitted = true;
  std::optional<bool> seat;
  VirtualRunLoop loop;
  TimerSet timers{loop};
  TorchState state;
  ScriptedRandom random;
  Events events;
  TorchModes modes{state, timers, random, *this, *this};

 private:
  SeatLight seatLight() override { return {}; }
  std::optional<bool> seatIsWhite() override { return seat; }
  bool hasTorch() const override { return isTorchFitted; }
  bool hasFlash() const override { return isFlashFitted; }
  void setOn(bool on) override { events.push_back(textOf(loop.now()) + (on ? " on" : " off")); }
};

TEST(TorchWrite, IsMirroredInTheState) {
  TorchRoom room;
  room.modes.turnTorchOn(true);
  EXPECT_TRUE(room.state.torchIsOn);
  room.modes.turnTorchOn(false);
  EXPECT_FALSE(room.state.torchIsOn);
  EXPECT_EQ(room.events, (Events{"0 on", "0 off"}));
}

TEST(TorchWrite, IsDroppedWithoutATorchOrWithoutAFlash) {
  for (const auto& [torch, flash] : {std::pair{false, true}, {true, false}, {false, false}}) {
    TorchRoom room;
    room.modes.turnTorchOn(true);
    room.isTorchFitted = torch;
    room.isFlashFitted = flash;
    room.modes.turnTorchOn(false);
    EXPECT_EQ(room.events, Events{"0 on"});
    EXPECT_TRUE(room.state.torchIsOn) << "the state last written";
  }
}

TEST(TorchSpeed, PercentageFollowsTheSpeedInEveryMode) {
  TorchRoom room;
  for (const auto& [speed, percent] : {std::pair{255, 0}, {252, 1}, {171, 33}, {128, 50}, {0, 100}})
    for (const int mode : {0, 1, 2, 3, 4, 5, 6, 7, 9, 10, 255}) {
      room.change(mode, speed);
      EXPECT_EQ(room.state.currentLEDPerc, percent) << mode;
    }
}

TEST(TorchModesTable, OtherModesDoNothing) {
  for (const int mode : {0, 1, 2, 3, 10, 11, 21, 50, 255, 256, -1}) {
    TorchRoom room;
    room.state.ledEffectOn = true;
    room.state.ledLastTurnOn = true;
    room.change(mode, 0);
    EXPECT_EQ(room.runFor(20000), Events{}) << mode;
    EXPECT_EQ(room.random.log.entries.size(), 0U) << mode;
    EXPECT_FALSE(room.state.runLEDEffectAnimation) << mode;
    EXPECT_TRUE(room.state.ledEffectOn && room.state.ledLastTurnOn) << mode;
    EXPECT_EQ(room.loop.turns(), 0U) << mode;
  }
}

struct RandomPauseCase {
  int p;
  std::uint32_t latest;
};

// p × 47 + 300
constexpr RandomPauseCase kRandomPauses[] = {{0, 300}, {33, 1851}, {50, 2650}, {100, 5000}};

TEST(TorchMode4, FlashesOf90MillisecondsAfterDrawnPauses) {
  for (const RandomPauseCase& pause : kRandomPauses) {
    SCOPED_TRACE(pause.p);
    TorchRoom room(Rule::greatest);
    room.change(4, speedOf(pause.p));
    EXPECT_TRUE(room.state.runLEDEffectAnimation);
    const auto at = [&pause](std::uint32_t steps, int later, const char* what) {
      return std::to_string(steps * pause.latest + static_cast<std::uint32_t>(later)) + what;
    };
    EXPECT_EQ(
        room.runFor(2 * pause.latest + 90),
        (Events{"0 off", at(1, 0, " on"), at(1, 90, " off"), at(2, 0, " on"), at(2, 90, " off")}));
    EXPECT_EQ(room.random.log.entries, (std::vector<std::uint32_t>(3, pause.latest + 1)));
  }
}

TEST(TorchMode4, ShortestPauseIsNone) {
  TorchRoom room(Rule::least, {0, 299});
  room.change(4, 255);
  EXPECT_EQ(room.runFor(200), (Events{"0 off", "0.1 on", "90.1 off"}));
}

TEST(TorchMode4, FlashBeforeTheLastOneEndedGoesDarkTwice) {
  TorchRoom room(Rule::greatest, {300, 50});
  room.change(4, 255);
  EXPECT_EQ(room.runFor(600), (Events{"0 off", "300 on", "350 on", "390 off", "440 off"}));
}

TEST(TorchMode4, ChangeEndsOnlyTheLastOfTwoOverlappingFlashes) {
  TorchRoom room(Rule::greatest, {300, 50});
  room.change(4, 255);
  room.runFor(360);
  room.change(10, 255);
  EXPECT_EQ(room.runFor(20000), Events{"390 off"});
}

TEST(TorchMode4, ChangeWithinAFlashLeavesTheTorchOn) {
  TorchRoom room(Rule::greatest);
  room.change(4, 255);
  room.runFor(350);
  room.change(10, 255);
  EXPECT_EQ(room.runFor(20000), Events{});
  EXPECT_TRUE(room.state.torchIsOn);
}

struct StrobeCase {
  int p;
  int first;
  int next;
};

// p × 150 ÷ 100 + 50 and p × 190 ÷ 100 + 10, in whole milliseconds.
constexpr StrobeCase kStrobes[] = {{0, 50, 10}, {33, 99, 72}, {50, 125, 105}, {100, 200, 200}};

TEST(TorchMode5, TogglesInAnEvenBeat) {
  for (const StrobeCase& strobe : kStrobes) {
    SCOPED_TRACE(strobe.p);
    TorchRoom room;
    room.change(5, speedOf(strobe.p));
    EXPECT_TRUE(room.state.runLEDEffectAnimation);
    Events expected{"0 off"};
    for (int step = 0; step < 5; ++step) {
      expected.push_back(std::to_string(strobe.first + step * strobe.next) +
                         (step % 2 == 0 ? " on" : " off"));
    }
    EXPECT_EQ(room.runFor(strobe.first + 4 * strobe.next), expected);
    EXPECT_EQ(room.random.log.entries.size(), 0U);
  }
}

TEST(TorchMode5, BeginsInThePhaseThatWasLeft) {
  TorchRoom room;
  room.state.ledEffectOn = true;
  room.change(5, 255);
  EXPECT_EQ(room.runFor(60), (Events{"0 off", "50 off", "60 on"}));
}

TEST(TorchMode6, BurstsOf150MillisecondsBetweenDrawnPauses) {
  for (const RandomPauseCase& pause : kRandomPauses) {
    SCOPED_TRACE(pause.p);
    TorchRoom room(Rule::greatest);
    room.change(6, speedOf(pause.p));
    EXPECT_TRUE(room.state.runLEDEffectAnimation);
    Events expected{"0 off"};
    for (std::uint32_t burst = 0; burst < 2; ++burst) {
      const std::uint32_t begin = pause.latest + burst * (150 + pause.latest);
      expected.push_back(std::to_string(begin) + " on");
      expected.push_back(std::to_string(begin + 50) + " off");
      expected.push_back(std::to_string(begin + 100) + " on");
      expected.push_back(std::to_string(begin + 150) + " off");
    }
    EXPECT_EQ(room.runFor(2 * pause.latest + 300), expected);
    EXPECT_EQ(room.random.log.entries, (std::vector<std::uint32_t>(3, pause.latest + 1)));
  }
}

TEST(TorchMode6, BeginsWithABurstWhateverPhaseWasLeft) {
  TorchRoom room(Rule::greatest);
  room.state.ledEffectOn = true;
  room.change(6, 255);
  EXPECT_FALSE(room.state.ledEffectOn);
  EXPECT_EQ(room.runFor(300), (Events{"0 off", "300 on"}));
}

TEST(TorchMode6, ChangeWithinABurstEndsBothTimers) {
  TorchRoom room(Rule::greatest);
  room.change(6, 255);
  room.runFor(320);
  room.change(10, 255);
  EXPECT_EQ(room.runFor(20000), Events{});
}

TEST(TorchModes7And8, EachCommandFlipsTheTorch) {
  TorchRoom room;
  room.change(7, 255);
  EXPECT_TRUE(room.state.ledLastTurnOn);
  room.change(7, 0);
  EXPECT_FALSE(room.state.ledLastTurnOn);
  room.change(8, 255);
  room.change(7, 255);
  EXPECT_EQ(room.runFor(20000), (Events{"0 on", "0 off", "0 on", "0 off"}));
  EXPECT_EQ(room.random.log.entries.size(), 0U);
}

TEST(TorchModes7And8, EndARunningEffectAndKeepItsPhase) {
  for (const int mode : {7, 8}) {
    TorchRoom room;
    room.state.runLEDEffectAnimation = true;
    room.state.ledEffectOn = true;
    room.modes.processLEDMode(mode, 255);
    EXPECT_FALSE(room.state.runLEDEffectAnimation);
    EXPECT_TRUE(room.state.ledEffectOn);
  }
}

TEST(TorchModes7And8, PhaseOutlivesOtherModes) {
  TorchRoom room;
  room.change(7, 255);
  room.change(5, 0);
  room.change(8, 255);
  EXPECT_EQ(room.events, (Events{"0 on", "0 off", "0 off"}));
}

TEST(TorchMode9, FollowsTheSeat) {
  TorchRoom room;
  room.seat = true;
  room.change(9, 255);
  EXPECT_TRUE(room.state.ledEffectOn);
  room.seat = false;
  room.change(9, 255);
  EXPECT_FALSE(room.state.ledEffectOn);
  EXPECT_EQ(room.runFor(20000), (Events{"0 on", "0 off"}));
  EXPECT_FALSE(room.state.runLEDEffectAnimation);
}

TEST(TorchMode9, WithoutAPictureLeavesTheTorchAndThePhase) {
  for (const bool before : {true, false}) {
    TorchRoom room;
    room.modes.turnTorchOn(before);
    room.state.ledEffectOn = before;
    room.events.clear();
    room.change(9, 255);
    EXPECT_EQ(room.runFor(20000), Events{});
    EXPECT_EQ(room.state.torchIsOn, before);
    EXPECT_EQ(room.state.ledEffectOn, before);
  }
}

TEST(TorchStepFunction, DoesNothingOnceTheFlagIsDown) {
  for (const TorchEffect effect : {TorchEffect::flashBulbLED, TorchEffect::strobeLED,
                                   TorchEffect::randomStrobeLED, TorchEffect::strobeRandomRunLED}) {
    TorchRoom room;
    room.state.ledEffectOn = true;
    room.modes.step(effect);
    EXPECT_EQ(room.runFor(20000), Events{});
    EXPECT_EQ(room.random.log.entries.size(), 0U);
    EXPECT_TRUE(room.state.ledEffectOn);
    EXPECT_EQ(room.loop.turns(), 0U);
  }
}

TEST(TorchStepFunction, BurstStepsGoOnEvery50MillisecondsByThemselves) {
  TorchRoom room;
  room.state.runLEDEffectAnimation = true;
  room.modes.step(TorchEffect::strobeRandomRunLED);
  EXPECT_EQ(room.runFor(150), (Events{"0 on", "50 off", "100 on", "150 off"}));
}

TEST(TorchEffects, EndWithTheFlagEvenIfATimerIsLeft) {
  for (const int mode : {4, 5, 6}) {
    TorchRoom room(Rule::greatest);
    room.change(mode, 255);
    room.state.runLEDEffectAnimation = false;
    EXPECT_EQ(room.runFor(20000), Events{"0 off"}) << mode;
    EXPECT_EQ(room.loop.turns(), 1U) << mode;
  }
}

TEST(TorchEffects, RunOnWithTheSameDrawsWithoutATorchOrWithoutAFlash) {
  for (const int mode : {4, 5, 6}) {
    TorchRoom lit(Rule::least, {7, 300, 20, 111, 5, 290});
    lit.change(mode, 128);
    lit.runFor(1000);
    for (const auto& [torch, flash] : {std::pair{false, true}, {true, false}, {false, false}}) {
      TorchRoom dark(Rule::least, {7, 300, 20, 111, 5, 290});
      dark.isTorchFitted = torch;
      dark.isFlashFitted = flash;
      dark.change(mode, 128);
      EXPECT_EQ(dark.runFor(1000), Events{}) << mode;
      EXPECT_TRUE(dark.state.runLEDEffectAnimation) << mode;
      EXPECT_FALSE(dark.state.torchIsOn) << mode;
      EXPECT_EQ(dark.random.log.entries, lit.random.log.entries) << mode;
      EXPECT_EQ(dark.state.ledEffectOn, lit.state.ledEffectOn) << mode;
      EXPECT_EQ(dark.loop.turns(), lit.loop.turns()) << mode;
    }
  }
}

}  // namespace
}  // namespace halvora
