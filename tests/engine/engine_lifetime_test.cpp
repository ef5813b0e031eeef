// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/engine/engine_bench.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using B = Broadcast;

// Destroys the engine and lets the phone live on: nothing of it may run, and nothing may reach it.
void expectSilenceAfter(EngineBench& bench, const Broadcast& heard) {
  bench.destroyEngine();
  bench.take();
  const std::uint64_t turns = bench.phone.loop.turns();
  bench.phone.loop.runFor(milliseconds(60000));
  EXPECT_EQ(bench.phone.loop.turns(), turns);
  bench.phone.bluetooth.setState(CentralState::poweredOff);
  bench.phone.bluetooth.setState(CentralState::poweredOn);
  EXPECT_FALSE(bench.phone.bluetooth.advertise(encodeBroadcast(heard)));
  bench.phone.application.becomeActive();
  bench.phone.application.resignActive();
  bench.phone.application.changeOrientation();
  EXPECT_THAT(bench.take(), IsEmpty());
}

TEST(EngineLifetime, EndsWhileEverythingIsPending) {
  EngineBench bench;
  bench.listen();
  bench.views().setAlpha(ViewId::playerViewA, 1);
  bench.runTo(1500);
  // A delayed flash, a torch timer, the container's and the players' fades.
  bench.hearNext(look(2, {{&B::ledMode, 3}, {&B::gobo, 1}}));
  // A fade of the light, one of the gobo, and a torch timer that no name keeps.
  bench.hearNext(look(10, {{&B::ledMode, 3}, {&B::gobo, 2}}));
  bench.hearNext(look(14, {{&B::ledMode, 3}, {&B::gobo, 2}}));
  bench.runTo(1600);
  EXPECT_TRUE(bench.views().isAnimating());
  expectSilenceAfter(bench, look(1, {{&B::sequence, 500}}));
}

TEST(EngineLifetime, EndsDuringABrightnessRampAndAReset) {
  EngineBench bench;
  bench.listen();
  bench.runTo(1500);
  bench.hearNext(look(6));
  bench.phone.application.becomeActive();
  bench.runTo(2050);
  EXPECT_GT(bench.phone.screen.brightness(), 0.6);
  expectSilenceAfter(bench, look(1, {{&B::sequence, 500}}));
}

TEST(EngineLifetime, EndsBeforeTheManagersFirstReport) {
  EngineBench bench;
  bench.engine().start();
  expectSilenceAfter(bench, look(1, {{&B::sequence, 1}}));
}

TEST(EngineLifetime, EndsAfterARemovedAnimationThatHasNotReportedYet) {
  EngineBench bench;
  bench.process(look(14));
  bench.runTo(10);
  bench.process(look(1));
  expectSilenceAfter(bench, look(1, {{&B::sequence, 1}}));
}

TEST(EngineLifetime, EndsWithoutEverHavingLoadedItsView) {
  EngineBench bench({.isViewLoaded = false});
  expectSilenceAfter(bench, look(1, {{&B::sequence, 1}}));
}

TEST(EngineLifetime, NoLongerObservesTheApplication) {
  EngineBench bench;
  bench.destroyEngine();
  EXPECT_THAT(bench.take({"stopObserving"}), ElementsAre("stopObserving"));
}

TEST(EngineLifetime, CallbackMayReplaceItself) {
  EngineBench bench({.hasCallbacks = false});
  ShowEngine& engine = bench.engine();
  std::vector<std::string> calls;
  const std::string longEnoughToLiveOnTheHeap(100, 'x');
  engine.lightShowStartedCallback() = [&engine, &calls, longEnoughToLiveOnTheHeap] {
    engine.lightShowStartedCallback() = [&calls] { calls.emplace_back("second"); };
    // This callback's own values are still there after it gave way to another.
    calls.push_back("first " + std::to_string(longEnoughToLiveOnTheHeap.size()));
  };
  bench.process(look(1));
  bench.process(look(3));
  EXPECT_THAT(calls, ElementsAre("first 100", "second"));
}

TEST(EngineLifetime, CallbackMayRemoveItself) {
  EngineBench bench({.hasCallbacks = false});
  ShowEngine& engine = bench.engine();
  int stopped = 0;
  engine.lightShowStoppedCallback() = [&engine, &stopped] {
    int& counter = stopped;
    engine.lightShowStoppedCallback() = nullptr;
    ++counter;
  };
  bench.process(look(1));
  bench.process(look(0));
  bench.process(look(0, {{&B::speed, 1}}));
  EXPECT_EQ(stopped, 1);
}

TEST(EngineLifetime, CallbackMayChangeTheAllowedList) {
  EngineBench bench;
  bench.listen();
  bench.runTo(1500);
  bench.engine().lightShowStartedCallback() = [&bench] {
    bench.engine().setAllowedTransmitterIds({"1:1"});
  };
  EXPECT_EQ(bench.hearNext(look(1)), PacketFate::processed);
  EXPECT_EQ(bench.hearNext(look(3)), PacketFate::notAllowed);
}

TEST(EngineLifetime, TwoEnginesShareNothing) {
  EngineBench busy;
  EngineBench idle;
  busy.engine().setAllowedTransmitterIds({"258:7"});
  busy.listen();
  busy.runTo(1500);
  busy.hearNext(look(5, {{&B::ledMode, 1}, {&B::paletteId, 1}, {&B::vibrate, 1}}));
  busy.runTo(3000);

  EXPECT_THAT(idle.take(), IsEmpty());
  EXPECT_EQ(idle.phone.loop.turns(), 0U);
  EXPECT_EQ(idle.screen().currentMode, 0U);
  EXPECT_FALSE(idle.engine().isInsideVenue());
  EXPECT_THAT(idle.engine().allowedTransmitterIds(), IsEmpty());
  EXPECT_EQ(idle.state().colour.currentPaletteId, 0U);
  EXPECT_EQ(idle.views().lightColour(), MaybeColour(kBlack));
  EXPECT_EQ(idle.phone.screen.brightness(), 0.5);
  EXPECT_EQ(idle.engine().diagnostics()[PacketFate::processed], 0U);

  idle.process(look(1, {{&B::venueId, 3}}));
  EXPECT_EQ(busy.screen().currentMode, 5U);
  EXPECT_EQ(busy.defaultsText("venueID"), "0");
}

TEST(EngineLifetime, OneEngineGoesWhileAnotherPlays) {
  EngineBench stays;
  {
    EngineBench goes;
    goes.process(look(5));
    stays.process(look(5, {{&B::speed, 255}}));
    stays.runTo(45);
  }
  stays.take();
  stays.runTo(71);
  EXPECT_THAT(stays.take({"light"}), ElementsAre("light 255 0 0", "light 0 0 0", "light 255 0 0"));
}

}  // namespace
}  // namespace halvora
