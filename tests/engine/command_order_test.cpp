// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/engine/engine_bench.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using B = Broadcast;

// Without the writes' requests to be made lasting, which have a test of their own.
Acts withoutSynchronise(Acts acts) {
  std::erase(acts, "synchronize");
  return acts;
}

TEST(CommandOrder, HasEighteenNamedSteps) {
  std::vector<std::string> names;
  for (const ShowEngine::Step& step : ShowEngine::steps()) names.push_back(step.name);
  EXPECT_THAT(names, ElementsAre("application id", "sync flag", "fields", "seat", "mode override",
                                 "venue and preload", "cue time", "colour", "video status",
                                 "master", "video", "vibration", "gobo", "mode",
                                 "pixel-map restart", "static colour", "random flash", "torch"));
}

TEST(CommandOrder, OfALookWithAPixelMap) {
  EngineBench bench;
  bench.seat("Block A", "12", "34");
  bench.seatColours[513] = colourOfBytes(1, 2, 3);
  bench.process(look(3, {{&B::syncFlag, 2},
                         {&B::venueId, 9},
                         {&B::pixelMapId, 5},
                         {&B::master, 255},
                         {&B::speed, 255},
                         {&B::ledMode, 9},
                         {&B::ledSpeed, 200},
                         {&B::minutes, 1},
                         {&B::seconds, 2},
                         {&B::gobo, 4},
                         {&B::vibrate, 2},
                         {&B::paletteId, 1}}));
  EXPECT_THAT(
      withoutSynchronise(bench.take()),
      ElementsAre("set appID 258", "set syncCloud YES", "set venueID 9", "preload 9 5 12 34",
                  "headroom", "draw 2", "brightness 1", "brightness 0.99", "alpha dimmerView 0",
                  "impact heavy", "dispose 1352", "alpha goboView 0",
                  // The mode changes to the pixel map ...
                  "hideNoSeat", "alpha fpsLabel 0", "started", "alpha container 1 in 1000 ms",
                  "brightness 1", "statusBarHidden true", "idleTimerDisabled true", "dismiss",
                  "hideNoSeat", "seatColour 0", "light 0 0 0",
                  // ... and the pixel map restarts at the new frame.
                  "hideNoSeat", "seatColour 513", "light 1 2 3", "ledMode 9 200", "ledMode 9 200"));
}

TEST(CommandOrder, OfALookWithAnEffect) {
  EngineBench bench;
  bench.views().setAlpha(ViewId::pairingCodeLabel, 1);
  bench.views().setAlpha(ViewId::videoBackgroundView, 1);
  bench.views().setAlpha(ViewId::playerViewB, 1);
  bench.take();
  bench.process(look(4, {{&B::venueId, 9},
                         {&B::master, 51},
                         {&B::speed, 255},
                         {&B::ledMode, 1},
                         {&B::gobo, 4},
                         {&B::vibrate, 1}}));
  EXPECT_THAT(
      withoutSynchronise(bench.take()),
      ElementsAre("set appID 258", "set syncCloud NO", "set venueID 9", "clearSeatLut",
                  "stopSampler", "headroom", "alpha pairingCodeLabel 0", "brightness 0.2",
                  "alpha dimmerView 0.8", "alpha videoBackgroundView 0",
                  "alpha playerViewA 0 in 500 ms", "alpha playerViewB 0 in 500 ms", "impact light",
                  "dispose 1352", "alpha goboView 1", "changeGobo", "alpha goboView 1",
                  "hideNoSeat", "alpha fpsLabel 0", "started", "alpha container 1 in 1000 ms",
                  "brightness 1", "statusBarHidden true", "idleTimerDisabled true", "dismiss",
                  // Entering the mode shows the colour and draws the pause to the first step.
                  "hideNoSeat", "light 255 0 0", "draw 301",
                  // Every look in the mode shows it again.
                  "light 255 0 0", "ledMode 1 0", "torch on"));
}

TEST(CommandOrder, OfALookThatEndsTheShow) {
  EngineBench bench;
  bench.process(look(1));
  bench.take();
  bench.process(look(0));
  EXPECT_THAT(withoutSynchronise(bench.take()),
              ElementsAre("set appID 258", "set syncCloud NO", "set venueID 0", "clearSeatLut",
                          "stopSampler", "headroom", "hideNoSeat", "alpha fpsLabel 0", "stopped",
                          "alpha container 0 in 1000 ms", "brightness 0.99",
                          "statusBarHidden false", "idleTimerDisabled false", "torch off"));
}

TEST(CommandStops, ApplicationId0OnlyWritesTheApplicationId) {
  EngineBench bench;
  bench.process(look(1, {{&B::venueId, 4}}));
  bench.take();
  EXPECT_EQ(bench.process(look(5, {{&B::applicationId, 0},
                                   {&B::syncFlag, 2},
                                   {&B::venueId, 9},
                                   {&B::vibrate, 3},
                                   {&B::paletteId, 1}})),
            PacketFate::noApplication);
  EXPECT_THAT(bench.take(), ElementsAre("set appID 0", "synchronize"));
  EXPECT_EQ(bench.screen().currentMode, 1U);
  EXPECT_EQ(bench.state().seat.currentVenueId, 4);
  EXPECT_EQ(bench.state().colour.currentPaletteId, 0U);
  EXPECT_EQ(bench.defaultsText("syncCloud"), "NO");
}

TEST(CommandStops, SyncFlag1WritesNoAndNothingElse) {
  EngineBench bench;
  bench.process(look(1, {{&B::syncFlag, 2}, {&B::venueId, 4}}));
  bench.take();
  EXPECT_EQ(bench.process(look(5, {{&B::syncFlag, 1}, {&B::venueId, 9}, {&B::vibrate, 3}})),
            PacketFate::badSyncFlag);
  EXPECT_THAT(bench.take(),
              ElementsAre("set appID 258", "synchronize", "set syncCloud NO", "synchronize"));
  EXPECT_EQ(bench.screen().currentMode, 1U);
  EXPECT_EQ(bench.state().seat.currentVenueId, 4);
  EXPECT_EQ(bench.state().currentVibrate, 0);
}

TEST(CommandStops, OnlySyncFlags0And2Pass) {
  for (const int flag : {0, 1, 2, 3, 4, 128, 255}) {
    EngineBench bench;
    const bool passes = flag == 0 || flag == 2;
    EXPECT_EQ(bench.process(look(1, {{&B::syncFlag, flag}})),
              passes ? PacketFate::processed : PacketFate::badSyncFlag)
        << flag;
    EXPECT_EQ(bench.defaultsText("syncCloud"), flag == 2 ? "YES" : "NO") << flag;
    EXPECT_EQ(bench.screen().currentMode, passes ? 1U : 0U) << flag;
  }
}

TEST(CommandDefaults, EveryWriteIsMadeLasting) {
  EngineBench bench;
  bench.process(look(1, {{&B::venueId, 9}}));
  EXPECT_THAT(bench.take({"set", "synchronize"}),
              ElementsAre("set appID 258", "synchronize", "set syncCloud NO", "synchronize",
                          "set venueID 9", "synchronize"));
}

TEST(CommandDefaults, HoldTheLatestLook) {
  EngineBench bench;
  bench.process(look(1, {{&B::applicationId, 65535}, {&B::syncFlag, 2}, {&B::venueId, 255}}));
  EXPECT_EQ(bench.defaultsText("appID"), "65535");
  EXPECT_EQ(bench.defaultsText("syncCloud"), "YES");
  EXPECT_EQ(bench.defaultsText("venueID"), "255");
  EXPECT_EQ(bench.state().seat.currentVenueId, 255);
  bench.process(look(1));
  EXPECT_EQ(bench.defaultsText("appID"), "258");
  EXPECT_EQ(bench.defaultsText("syncCloud"), "NO");
  EXPECT_EQ(bench.defaultsText("venueID"), "0");
  EXPECT_EQ(bench.state().seat.currentVenueId, 0);
}

TEST(CommandDefaults, EqualValuesCostNothing) {
  EngineBench bench;
  bench.process(look(1, {{&B::venueId, 9}}));
  const std::uint64_t changes = bench.phone.defaults.changes;
  EXPECT_EQ(changes, 3U);
  bench.process(look(3, {{&B::venueId, 9}, {&B::blue, 200}}));
  EXPECT_EQ(bench.phone.defaults.changes, changes);
  bench.process(look(3, {{&B::venueId, 8}, {&B::blue, 200}}));
  EXPECT_EQ(bench.phone.defaults.changes, changes + 1);
}

TEST(CommandCue, TimeIsStoredInMilliseconds) {
  EngineBench bench;
  bench.process(look(1, {{&B::minutes, 1}, {&B::seconds, 2}, {&B::hundredths, 3}}));
  EXPECT_EQ(bench.state().video.currentVideoMilliseconds, 62030);
  bench.process(look(0));
  EXPECT_EQ(bench.state().video.currentVideoMilliseconds, 0);
}

TEST(CommandCue, HeadroomIsReadAndNotUsed) {
  EngineBench bench;
  bench.process(look(1));
  bench.process(look(1, {{&B::blue, 1}}));
  EXPECT_EQ(bench.phone.screen.headroomReads, 2U);
  EXPECT_EQ(bench.state().colour.currentHeadroom, 1.0F);
}

TEST(CommandVideoStatus, IsStoredAsItComes) {
  EngineBench bench;
  bench.process(look(1, {{&B::videoStatus, 200}}));
  EXPECT_EQ(bench.state().video.currentVideoStatus, 200);
}

TEST(CommandVideoStatus, PairingCodeIsHiddenOnlyIfItShows) {
  EngineBench bench;
  bench.process(look(1));
  EXPECT_THAT(bench.take(), testing::Not(testing::Contains("alpha pairingCodeLabel 0")));
  bench.views().setAlpha(ViewId::pairingCodeLabel, 0.001);
  bench.process(look(1, {{&B::blue, 1}}));
  EXPECT_EQ(bench.views().alpha(ViewId::pairingCodeLabel), 0);
}

}  // namespace
}  // namespace halvora
