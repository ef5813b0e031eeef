// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/engine/engine_bench.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using B = Broadcast;

// A look that leaves something to reset nearly everywhere.
const Broadcast kRichLook = look(5, {{&B::venueId, 9},
                                     {&B::speed, 0},
                                     {&B::ledMode, 4},
                                     {&B::ledSpeed, 80},
                                     {&B::minutes, 1},
                                     {&B::videoStatus, 1},
                                     {&B::gobo, 3},
                                     {&B::vibrate, 2},
                                     {&B::paletteId, 2}});

class ShowReset : public testing::Test {
 protected:
  ShowReset() { bench_.listen(); }

  // The show has run for three seconds when the application becomes active; the reset comes at 5000
  // ms.
  void runShowAndRequestReset() {
    bench_.runTo(4500);
    bench_.hearNext(kRichLook);
    bench_.runTo(4900);
    bench_.phone.application.becomeActive();
  }

  const PresenceState& presence() const { return bench_.presence(); }

  EngineBench bench_;
};

TEST_F(ShowReset, BecomingActiveDuringAShowEndsItWithTheNextCycle) {
  bench_.runTo(3500);
  bench_.hearNext(kRichLook);
  bench_.runTo(4900);
  bench_.phone.application.becomeActive();
  bench_.runTo(4999);
  EXPECT_EQ(bench_.screen().currentMode, 5U);
  EXPECT_EQ(bench_.views().shownAlpha(ViewId::container), 1);
  bench_.take();
  bench_.runTo(5000);
  EXPECT_EQ(bench_.screen().currentMode, 0U);
  EXPECT_THAT(bench_.take({"alpha"}), ElementsAre("alpha container 0 in 1000 ms"));
  EXPECT_FALSE(presence().resetApp);
  bench_.runTo(5500);
  EXPECT_NEAR(bench_.views().shownAlpha(ViewId::container), 0.5, 1e-6);
  bench_.runTo(6000);
  EXPECT_EQ(bench_.views().shownAlpha(ViewId::container), 0);
}

TEST_F(ShowReset, HappensInOrderAndWithoutTheStoppedCallback) {
  runShowAndRequestReset();
  bench_.runTo(4999);
  bench_.take();
  bench_.log.isDetailed = true;
  bench_.runTo(5000);
  EXPECT_THAT(
      bench_.take({"alpha", "brightness", "torch", "pausePlayers", "set", "synchronize",
                   "restartScan", "stopScan", "started", "stopped"}),
      ElementsAre("alpha container 0 in 1000 ms", "brightness 0.99", "torch off", "pausePlayers",
                  "set appID 0", "synchronize", "restartScan with duplicates"));
}

TEST_F(ShowReset, ZeroesTheShow) {
  runShowAndRequestReset();
  EngineState& state = bench_.writableState();
  state.screen.effectOn = true;
  state.torch.runLEDEffectAnimation = true;
  state.torch.ledEffectOn = true;
  state.video.currentVideoId = 3;
  state.video.isCatchingUp = true;
  EXPECT_TRUE(state.video.videoCanPlay);
  bench_.runTo(5000);

  EXPECT_EQ(state.screen.currentMode, 0U);
  EXPECT_EQ(state.screen.currentModeSpeed, 0);
  EXPECT_FALSE(state.screen.runEffectAnimation);
  EXPECT_FALSE(state.screen.effectOn);
  EXPECT_EQ(state.torch.currentLEDMode, 0);
  EXPECT_EQ(state.torch.currentLEDSpeed, 0);
  EXPECT_FALSE(state.torch.runLEDEffectAnimation);
  EXPECT_FALSE(state.torch.ledEffectOn);
  EXPECT_EQ(state.video.currentVideoId, 0);
  EXPECT_EQ(state.video.currentVideoMilliseconds, 0);
  EXPECT_EQ(state.video.currentVideoStatus, 0);
  EXPECT_FALSE(state.video.videoCanPlay);
  EXPECT_FALSE(state.video.isCatchingUp);
  EXPECT_EQ(state.presence.currentSequence, 0);
  EXPECT_EQ(state.presence.outOfRangeCount, 0);
  EXPECT_FALSE(state.presence.insideVenue);
  EXPECT_EQ(bench_.engine().scanner().currentBroadcast(), "");
  EXPECT_EQ(bench_.defaultsText("appID"), "0");
}

TEST_F(ShowReset, LeavesTheRestAsItWas) {
  runShowAndRequestReset();
  bench_.runTo(4999);
  const MaybeColour light = bench_.views().lightColour();
  const bool lastTurnOn = bench_.screen().lastTurnOn;
  bench_.runTo(5000);

  const EngineState& state = bench_.state();
  EXPECT_EQ(state.colour.currentPaletteId, 2U);
  EXPECT_EQ(state.colour.currentColour, MaybeColour(colourOfBytes(255, 255, 0)));
  EXPECT_NE(state.colour.colorsArray, nullptr);
  EXPECT_DOUBLE_EQ(state.colour.currentMaster, 100 / 255.0);
  EXPECT_DOUBLE_EQ(bench_.views().alpha(ViewId::dimmerView), 1 - 100 / 255.0);
  EXPECT_EQ(state.currentVibrate, 2);
  EXPECT_EQ(state.gobo.currentGobo, 3);
  EXPECT_EQ(bench_.views().alpha(ViewId::goboView), 1);
  EXPECT_EQ(state.seat.currentVenueId, 9);
  EXPECT_EQ(bench_.defaultsText("venueID"), "9");
  EXPECT_EQ(state.presence.liveSequence, 1);
  EXPECT_TRUE(bench_.engine().prefersStatusBarHidden());
  EXPECT_TRUE(bench_.phone.application.isIdleTimerDisabled);
  EXPECT_EQ(bench_.views().lightColour(), light);
  EXPECT_EQ(bench_.screen().lastTurnOn, lastTurnOn);
}

TEST_F(ShowReset, EndsTheNamedTimers) {
  runShowAndRequestReset();
  EngineState& state = bench_.writableState();
  const auto fail = [] { ADD_FAILURE() << "a timer of the dropped show fired"; };
  for (TimerId* named : {&state.screen.animationTimer, &state.screen.strobeAnimationTimer,
                         &state.torch.ledAnimationTimer, &state.torch.ledStrobeAnimationTimer,
                         &state.video.videoPlayTimer}) {
    *named = bench_.phone.loop.after(milliseconds(500), fail);
  }
  bench_.runTo(8000);
  EXPECT_EQ(state.video.videoPlayTimer, 0U);
}

TEST_F(ShowReset, EndsTheEffect) {
  runShowAndRequestReset();
  bench_.runTo(5000);
  bench_.take();
  bench_.runTo(9000);
  EXPECT_THAT(bench_.take({"light", "draw"}), IsEmpty());
}

TEST_F(ShowReset, EndsTheGobosFadeUnfinished) {
  bench_.runTo(4500);
  bench_.hearNext(look(10, {{&B::gobo, 3}, {&B::speed, 0}}));
  bench_.runTo(4600);
  // Now that it shows, another gobo crossfades through transparent.
  bench_.hearNext(look(10, {{&B::gobo, 4}, {&B::speed, 0}}));
  EXPECT_THAT(bench_.take({"changeGobo"}), ElementsAre("changeGobo"));
  bench_.phone.application.becomeActive();
  bench_.runTo(20000);
  EXPECT_THAT(bench_.take({"changeGobo"}), IsEmpty());
}

TEST_F(ShowReset, BrightnessFallsBackToTheOriginalOne) {
  runShowAndRequestReset();
  bench_.runTo(4999);
  EXPECT_DOUBLE_EQ(bench_.phone.screen.brightness(), 1.0);
  bench_.runTo(5100);
  EXPECT_NEAR(bench_.phone.screen.brightness(), 0.89, 1e-9) << "one percent every 10 ms";
  bench_.runTo(7000);
  EXPECT_LE(bench_.phone.screen.brightness(), 0.5 + 1e-9);
  EXPECT_GE(bench_.phone.screen.brightness(), 0.49 - 1e-9);
}

TEST_F(ShowReset, VideoIsReadyAgainFourSecondsLater) {
  runShowAndRequestReset();
  bench_.runTo(5000);
  EXPECT_FALSE(bench_.state().video.videoCanPlay);
  EXPECT_TRUE(presence().setupOnce) << "cleared, then set with the new timer";
  bench_.runTo(8999);
  EXPECT_FALSE(bench_.state().video.videoCanPlay);
  bench_.runTo(9000);
  EXPECT_TRUE(bench_.state().video.videoCanPlay);
}

TEST_F(ShowReset, ReadinessTimerIsStartedOnce) {
  runShowAndRequestReset();
  bench_.runTo(4999);
  bench_.log.isDetailed = true;
  bench_.take();
  bench_.runTo(12000);
  const Acts timers = bench_.take({"after"});
  EXPECT_EQ(std::count(timers.begin(), timers.end(), "after 4000 ms"), 1);
}

TEST_F(ShowReset, AnySequenceIsNewAfterwards) {
  bench_.runTo(1500);
  bench_.hear(changed(kRichLook, {{&B::sequence, 40000}}));
  bench_.phone.application.becomeActive();
  bench_.runTo(2000);
  bench_.take();
  EXPECT_EQ(bench_.hear(changed(kRichLook, {{&B::sequence, 5}})), PacketFate::processed);
  EXPECT_THAT(bench_.take({"started", "stopped"}), ElementsAre("started"));
  EXPECT_TRUE(presence().insideVenue);
}

TEST_F(ShowReset, RequestedOutsideTheVenueTakesTheSamePath) {
  bench_.runTo(4500);
  EXPECT_FALSE(presence().insideVenue);
  bench_.phone.application.becomeActive();
  bench_.take();
  bench_.runTo(5000);
  EXPECT_THAT(bench_.take({"alpha", "torch", "pausePlayers", "set", "synchronize", "restartScan"}),
              ElementsAre("alpha container 0 in 1000 ms", "torch off", "pausePlayers",
                          "set appID 0", "synchronize", "restartScan with duplicates"));
  EXPECT_FALSE(bench_.state().video.videoCanPlay);
  bench_.runTo(6000);
  EXPECT_THAT(bench_.take({"alpha", "set"}), IsEmpty()) << "once";
}

TEST_F(ShowReset, RequestWaitsForBluetoothToReturn) {
  runShowAndRequestReset();
  bench_.phone.bluetooth.setState(CentralState::poweredOff);
  bench_.runTo(10500);
  EXPECT_TRUE(presence().resetApp);
  EXPECT_EQ(bench_.screen().currentMode, 5U);
  bench_.phone.bluetooth.setState(CentralState::poweredOn);
  bench_.runTo(11000);
  EXPECT_FALSE(presence().resetApp);
  EXPECT_EQ(bench_.screen().currentMode, 0U);
}

TEST_F(ShowReset, LeavingTheVenueIsTheSameReset) {
  bench_.runTo(1500);
  bench_.hearNext(kRichLook);
  bench_.runTo(8999);
  bench_.take();
  bench_.runTo(9000);
  EXPECT_THAT(
      bench_.take({"alpha", "brightness", "torch", "pausePlayers", "set", "synchronize",
                   "restartScan", "started", "stopped"}),
      ElementsAre("alpha container 0 in 1000 ms", "brightness 0.99", "torch off", "pausePlayers",
                  "set appID 0", "synchronize", "restartScan with duplicates"));
  EXPECT_EQ(presence().currentSequence, 0);
  bench_.runTo(12999);
  EXPECT_FALSE(bench_.state().video.videoCanPlay);
  bench_.runTo(13000);
  EXPECT_TRUE(bench_.state().video.videoCanPlay);
}

TEST_F(ShowReset, BroadcastIsEmptySoTheSameLookIsProcessedAgain) {
  runShowAndRequestReset();
  bench_.runTo(5000);
  EXPECT_EQ(bench_.hearNext(kRichLook), PacketFate::processed);
}

TEST_F(ShowReset, LabelOfMode9IsWrittenBeforeTheModeIsZeroed) {
  bench_.runTo(1500);
  bench_.hearNext(look(9));
  bench_.phone.application.becomeActive();
  bench_.take();
  bench_.runTo(2000);
  EXPECT_THAT(bench_.take({"text"}), ElementsAre("text fpsLabel 0"));
  bench_.runTo(3000);
  EXPECT_THAT(bench_.take({"text"}), IsEmpty());
}

}  // namespace
}  // namespace halvora
