// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/engine/engine_bench.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using B = Broadcast;

struct SeatCase {
  const char* section;
  const char* xPos;
  const char* yPos;
  /// What mode 3 with a pixel map becomes.
  std::uint32_t mode;
  bool isPreloaded;
};

// A text counts as the integer it begins with, and as 0 where it begins with none or is missing.
constexpr SeatCase kSeatCases[] = {
    {"A", "12", "34", 21, true},       {"A", "0", "0", 21, true},
    {"A", nullptr, nullptr, 21, true}, {"A", "", "", 21, true},
    {"A", "left", "34", 21, true},     {"A", "-1", "34", 3, false},
    {"A", "12", "-1", 3, false},       {"A", "-5", "-5", 3, false},
    {nullptr, "12", "34", 50, false},  {"", "12", "34", 50, false},
    {nullptr, "-1", "34", 50, false},  {"", nullptr, nullptr, 50, false},
};

TEST(PixelMapOverride, FollowsSectionAndPosition) {
  for (const SeatCase& seat : kSeatCases) {
    EngineBench bench;
    bench.seat(seat.section, seat.xPos, seat.yPos);
    bench.process(look(3, {{&B::pixelMapId, 5}}));
    EXPECT_EQ(bench.screen().currentMode, seat.mode)
        << (seat.section != nullptr ? seat.section : "(none)") << " "
        << (seat.xPos != nullptr ? seat.xPos : "(none)") << " "
        << (seat.yPos != nullptr ? seat.yPos : "(none)");
  }
}

TEST(PixelMapOverride, NeverWithoutAPixelMap) {
  for (const SeatCase& seat : kSeatCases) {
    EngineBench bench;
    bench.seat(seat.section, seat.xPos, seat.yPos);
    bench.process(look(3));
    EXPECT_EQ(bench.screen().currentMode, 3U);
  }
}

TEST(PixelMapOverride, NeverForMode0) {
  for (const SeatCase& seat : kSeatCases) {
    EngineBench bench;
    bench.process(look(3));
    bench.seat(seat.section, seat.xPos, seat.yPos);
    bench.process(look(0, {{&B::pixelMapId, 5}}));
    EXPECT_EQ(bench.screen().currentMode, 0U);
  }
}

TEST(PixelMapOverride, PixelMap5Mode3WithoutASectionIsMode50WithTheOverlayKeptAndBlack) {
  EngineBench bench;
  bench.process(look(3, {{&B::pixelMapId, 5}}));
  EXPECT_EQ(bench.screen().currentMode, 50U);
  EXPECT_THAT(bench.take({"hideNoSeat", "showNoSeat", "light"}),
              ElementsAre("light 0 0 0", "light 0 0 0", "showNoSeat"));
  EXPECT_EQ(bench.views().lightColour(), MaybeColour(kBlack));
  bench.process(look(3, {{&B::pixelMapId, 5}, {&B::blue, 9}}));
  EXPECT_THAT(bench.take({"hideNoSeat", "showNoSeat", "light"}), ElementsAre("light 0 0 0"));
}

TEST(PixelMapOverride, WithoutASectionStopsTheEffectAndHidesTheGobo) {
  EngineBench bench;
  bench.process(look(5, {{&B::speed, 255}, {&B::gobo, 2}}));
  bench.runTo(60);
  EXPECT_TRUE(bench.screen().runEffectAnimation);
  EXPECT_EQ(bench.views().alpha(ViewId::goboView), 1);
  bench.process(look(5, {{&B::speed, 255}, {&B::gobo, 2}, {&B::pixelMapId, 5}}));
  EXPECT_FALSE(bench.screen().runEffectAnimation);
  EXPECT_EQ(bench.views().alpha(ViewId::goboView), 0);
  bench.take();
  bench.runTo(2000);
  EXPECT_THAT(bench.take({"light"}), IsEmpty());
}

TEST(PixelMapOverride, WithoutASectionStopsTheEffectWithEveryLook) {
  EngineBench bench;
  bench.process(look(3, {{&B::pixelMapId, 5}}));
  bench.writableState().screen.runEffectAnimation = true;
  bench.process(look(3, {{&B::pixelMapId, 5}, {&B::blue, 1}}));
  EXPECT_FALSE(bench.screen().runEffectAnimation) << "though the mode did not change";
}

TEST(Preload, NamesVenueMapAndSeat) {
  EngineBench bench;
  bench.seat("A", "12", "34");
  bench.process(look(3, {{&B::venueId, 9}, {&B::pixelMapId, 5}}));
  EXPECT_THAT(bench.take({"preload", "clearSeatLut", "stopSampler"}),
              ElementsAre("preload 9 5 12 34"));
  EXPECT_EQ(bench.state().seat.currentXPos, 12);
  EXPECT_EQ(bench.state().seat.currentYPos, 34);
}

TEST(Preload, OnlyForAPlacedSeat) {
  for (const SeatCase& seat : kSeatCases) {
    EngineBench bench;
    bench.seat(seat.section, seat.xPos, seat.yPos);
    bench.process(look(3, {{&B::pixelMapId, 5}}));
    const Acts acts = bench.take({"preload", "clearSeatLut", "stopSampler"});
    if (seat.isPreloaded) {
      EXPECT_EQ(acts.size(), 1U);
    } else {
      EXPECT_THAT(acts, ElementsAre("clearSeatLut", "stopSampler"));
    }
  }
}

TEST(Preload, WithoutAPixelMapTheTableIsForgotten) {
  EngineBench bench;
  bench.seat("A", "12", "34");
  bench.process(look(3));
  EXPECT_THAT(bench.take({"preload", "clearSeatLut", "stopSampler"}),
              ElementsAre("clearSeatLut", "stopSampler"));
}

TEST(Preload, AlsoInMode0) {
  EngineBench bench;
  bench.seat("A", "12", "34");
  bench.process(look(0, {{&B::venueId, 9}, {&B::pixelMapId, 5}}));
  EXPECT_THAT(bench.take({"preload", "clearSeatLut", "stopSampler"}),
              ElementsAre("preload 9 5 12 34"));
}

TEST(Preload, SeatIsReadAnewWithEveryLook) {
  EngineBench bench;
  bench.seat("A", "12", "34");
  bench.process(look(3, {{&B::pixelMapId, 5}}));
  bench.seat("B", "56", "78");
  bench.process(look(3, {{&B::pixelMapId, 5}, {&B::blue, 1}}));
  EXPECT_THAT(bench.take({"preload"}), ElementsAre("preload 0 5 12 34", "preload 0 5 56 78"));
}

MaybeColour colourOfLook(EngineBench& bench, Changes changes) {
  bench.process(look(1, changes));
  return bench.state().colour.currentColour;
}

TEST(CommandColour, WithoutAPaletteIsTheLooksOwn) {
  EngineBench bench;
  EXPECT_EQ(colourOfLook(bench, {{&B::red, 255}, {&B::green, 128}, {&B::blue, 1}}),
            MaybeColour(Colour{1, 128 / 255.0F, 1 / 255.0F, 1}));
  EXPECT_EQ(colourOfLook(bench, {{&B::red, 0}, {&B::green, 2}, {&B::blue, 3}}),
            MaybeColour(colourOfBytes(0, 2, 3)));
  EXPECT_THAT(bench.take({"draw"}), IsEmpty());
}

TEST(CommandColour, PaletteDrawsOneOfItsColours) {
  EngineBench bench({.draws = {2}});
  EXPECT_EQ(colourOfLook(bench, {{&B::paletteId, 2}}), MaybeColour(colourOfBytes(0, 255, 255)));
  EXPECT_THAT(bench.take({"draw"}), ElementsAre("draw 3"));
  EXPECT_EQ(bench.state().colour.currentPaletteIndex, 2U);
  EXPECT_EQ(bench.state().colour.currentPaletteId, 2U);
  ASSERT_NE(bench.state().colour.colorsArray, nullptr);
  EXPECT_EQ(bench.state().colour.colorsArray->size(), 3U);
}

TEST(CommandColour, SamePaletteTwiceDrawsNoNewColour) {
  EngineBench bench({.draws = {1}});
  colourOfLook(bench, {{&B::paletteId, 2}});
  bench.take();
  EXPECT_EQ(colourOfLook(bench, {{&B::paletteId, 2}, {&B::red, 3}}),
            MaybeColour(colourOfBytes(255, 0, 255)));
  EXPECT_THAT(bench.take({"draw"}), IsEmpty());
}

TEST(CommandColour, SwitchingThePaletteDrawsANewColour) {
  EngineBench bench({.draws = {1, 0, 1}});
  EXPECT_EQ(colourOfLook(bench, {{&B::paletteId, 2}}), MaybeColour(colourOfBytes(255, 0, 255)));
  EXPECT_EQ(colourOfLook(bench, {{&B::paletteId, 1}}), MaybeColour(colourOfBytes(0, 0, 255)));
  EXPECT_EQ(colourOfLook(bench, {{&B::paletteId, 2}}), MaybeColour(colourOfBytes(255, 0, 255)));
  EXPECT_THAT(bench.take({"draw"}), ElementsAre("draw 3", "draw 2", "draw 3"));
}

TEST(CommandColour, Palette50IsTheLastThatIsLookedUp) {
  EngineBench bench;
  EXPECT_EQ(colourOfLook(bench, {{&B::paletteId, 50}}), MaybeColour(kWhite));
  EXPECT_THAT(bench.take({"draw"}), ElementsAre("draw 1"));
}

TEST(CommandColour, Palette51IsThatOfPalette0) {
  EngineBench bench;
  colourOfLook(bench, {{&B::paletteId, 1}});
  bench.take();
  for (const int palette : {51, 0, 255}) {
    EXPECT_EQ(colourOfLook(bench, {{&B::paletteId, palette}}),
              MaybeColour(colourOfBytes(255, 0, 0)));
    EXPECT_EQ(bench.state().colour.colorsArray, nullptr);
    EXPECT_EQ(colourOfLook(bench, {{&B::paletteId, palette}, {&B::green, 7}}),
              MaybeColour(colourOfBytes(255, 7, 0)))
        << "the look's own colour follows every look";
  }
  EXPECT_THAT(bench.take({"draw"}), IsEmpty());
}

TEST(CommandColour, UnknownPaletteKeepsTheColourOfItsFirstLook) {
  EngineBench bench;
  colourOfLook(bench, {{&B::paletteId, 2}});
  EXPECT_EQ(colourOfLook(bench, {{&B::paletteId, 30}}), MaybeColour(colourOfBytes(255, 0, 0)));
  EXPECT_EQ(bench.state().colour.colorsArray, nullptr);
  EXPECT_EQ(colourOfLook(bench, {{&B::paletteId, 30}, {&B::green, 7}}),
            MaybeColour(colourOfBytes(255, 0, 0)));
}

TEST(CommandMaster, 255EndsAt99PercentWithoutADimmer) {
  EngineBench bench;
  bench.process(look(1, {{&B::master, 255}}));
  bench.take();
  bench.process(look(1, {{&B::master, 255}, {&B::blue, 1}}));
  EXPECT_THAT(bench.take({"brightness", "alpha"}),
              ElementsAre("brightness 1", "brightness 0.99", "alpha dimmerView 0"));
  EXPECT_DOUBLE_EQ(bench.phone.screen.brightness(), 0.99);
  EXPECT_DOUBLE_EQ(bench.state().colour.currentMaster, 1);
}

TEST(CommandMaster, ZeroIsBlack) {
  EngineBench bench;
  bench.process(look(1));
  bench.take();
  bench.process(look(1, {{&B::master, 0}}));
  EXPECT_THAT(bench.take({"brightness", "alpha"}),
              ElementsAre("brightness 0", "alpha dimmerView 1"));
  EXPECT_EQ(bench.views().alpha(ViewId::dimmerView), 1);
}

TEST(CommandMaster, OtherLevelsAreShares) {
  EngineBench bench;
  bench.process(look(1));
  for (const int master : {1, 51, 128, 254}) {
    bench.process(look(1, {{&B::master, master}}));
    EXPECT_DOUBLE_EQ(bench.phone.screen.brightness(), master / 255.0);
    EXPECT_DOUBLE_EQ(bench.state().colour.currentMaster, master / 255.0);
    EXPECT_DOUBLE_EQ(bench.views().alpha(ViewId::dimmerView), 1 - master / 255.0);
  }
}

TEST(CommandMaster, Mode0LeavesBrightnessAndDimmerAlone) {
  EngineBench bench;
  bench.process(look(0, {{&B::master, 10}}));
  EXPECT_THAT(bench.take({"brightness", "alpha"}), IsEmpty());
  EXPECT_EQ(bench.state().colour.currentMaster, 1.0);
  EXPECT_EQ(bench.phone.screen.brightness(), 0.5);
}

TEST(CommandMaster, ModeOfThePixelMapCounts) {
  EngineBench bench;
  bench.process(look(1, {{&B::pixelMapId, 5}, {&B::master, 0}}));
  EXPECT_EQ(bench.views().alpha(ViewId::dimmerView), 1);
}

TEST(CommandVideo, IsNeverStarted) {
  EngineBench bench;
  bench.process(look(1, {{&B::videoId, 3}, {&B::videoStatus, 1}}));
  EXPECT_THAT(bench.take({"playVideo"}), IsEmpty());
  EXPECT_EQ(bench.state().video.currentVideoId, 0);
  EXPECT_EQ(bench.views().alpha(ViewId::videoBackgroundView), 0);
}

TEST(CommandVideo, EndsTheStartPollerAndTheVideo) {
  EngineBench bench;
  EngineState& state = bench.writableState();
  state.video.currentVideoId = 3;
  const TimerId poller = bench.phone.loop.every(milliseconds(10), [] {});
  state.video.videoPlayTimer = poller;
  bench.process(look(1));
  EXPECT_EQ(state.video.currentVideoId, 0);
  EXPECT_FALSE(bench.phone.loop.isPending(poller));
}

TEST(CommandVideo, HiddenPlayersAreLeftAlone) {
  EngineBench bench;
  bench.process(look(1));
  bench.runTo(2000);
  const Acts acts = bench.take({"alpha", "pausePlayers"});
  EXPECT_THAT(acts, ElementsAre("alpha dimmerView 0.607843", "alpha fpsLabel 0",
                                "alpha container 1 in 1000 ms"));
}

TEST(CommandVideo, EitherVisiblePlayerFadesBothOut) {
  for (const ViewId visible : {ViewId::playerViewA, ViewId::playerViewB}) {
    EngineBench bench;
    bench.process(look(1));
    bench.views().setAlpha(visible, 0.25);
    bench.take();
    bench.process(look(1, {{&B::blue, 1}}));
    EXPECT_THAT(bench.take({"alpha", "pausePlayers"}),
                ElementsAre("alpha dimmerView 0.607843", "alpha playerViewA 0 in 500 ms",
                            "alpha playerViewB 0 in 500 ms"));
    bench.runTo(499);
    EXPECT_THAT(bench.take({"pausePlayers"}), IsEmpty());
    bench.runTo(500);
    EXPECT_THAT(bench.take({"brightness", "pausePlayers"}), ElementsAre("pausePlayers"));
  }
}

TEST(CommandVideo, InMode0TheContainerAndTheBrightnessFollow) {
  EngineBench bench;
  bench.phone.screen.setBrightness(0.9);
  bench.views().setAlpha(ViewId::playerViewA, 1);
  bench.views().setAlpha(ViewId::container, 1);
  bench.take();
  // Mode and speed are those in force, so nothing but the video ends here.
  bench.process(look(0));
  EXPECT_THAT(bench.take({"alpha", "brightness"}),
              ElementsAre("alpha playerViewA 0 in 500 ms", "alpha playerViewB 0 in 500 ms",
                          "alpha container 0 in 500 ms"));
  bench.runTo(500);
  EXPECT_THAT(bench.take({"brightness", "pausePlayers"}),
              ElementsAre("brightness 0.89", "pausePlayers"));
}

TEST(CommandVideo, EndsWithTheShowEvenWhereTheContainersFadeIsTakenOver) {
  EngineBench bench;
  bench.process(look(1));
  bench.runTo(2000);
  bench.views().setAlpha(ViewId::playerViewA, 1);
  bench.take();
  bench.process(look(0));
  EXPECT_THAT(bench.take({"alpha"}),
              ElementsAre("alpha playerViewA 0 in 500 ms", "alpha playerViewB 0 in 500 ms",
                          "alpha container 0 in 500 ms", "alpha fpsLabel 0",
                          "alpha container 0 in 1000 ms"));
  bench.runTo(2499);
  EXPECT_THAT(bench.take({"pausePlayers"}), IsEmpty());
  bench.runTo(2500);
  EXPECT_THAT(bench.take({"pausePlayers"}), ElementsAre("pausePlayers"));
}

TEST(CommandVideo, MayBePlayedByName) {
  EngineBench bench;
  bench.engine().playVideo("3");
  EXPECT_THAT(bench.take(), ElementsAre("playVideo 3"));
}

TEST(CommandVideo, BackgroundIsHiddenOnlyIfItShows) {
  EngineBench bench;
  bench.views().setAlpha(ViewId::videoBackgroundView, 0.5);
  bench.process(look(1));
  EXPECT_EQ(bench.views().alpha(ViewId::videoBackgroundView), 0);
  bench.take();
  bench.process(look(1, {{&B::blue, 1}}));
  EXPECT_THAT(bench.take({"alpha"}), ElementsAre("alpha dimmerView 0.607843"));
}

TEST(CommandVibration, EachValueOnlyWhenItChanges) {
  EngineBench bench;
  const auto vibrate = [&](int value, int blue) {
    bench.take();
    bench.process(look(1, {{&B::vibrate, value}, {&B::blue, blue}}));
    EXPECT_EQ(bench.state().currentVibrate, value);
    return bench.take({"impact", "sound", "dispose"});
  };
  EXPECT_THAT(vibrate(0, 1), IsEmpty());
  EXPECT_THAT(vibrate(1, 2), ElementsAre("impact light", "dispose 1352"));
  EXPECT_THAT(vibrate(1, 3), IsEmpty());
  EXPECT_THAT(vibrate(2, 4), ElementsAre("impact heavy", "dispose 1352"));
  EXPECT_THAT(vibrate(3, 5), ElementsAre("sound 1352"));
  EXPECT_THAT(vibrate(3, 6), IsEmpty());
  EXPECT_THAT(vibrate(0, 7), ElementsAre("dispose 1352"));
  EXPECT_THAT(vibrate(4, 8), ElementsAre("dispose 1352"));
  EXPECT_THAT(vibrate(255, 9), ElementsAre("dispose 1352"));
}

TEST(CommandVibration, AlsoInMode0) {
  EngineBench bench;
  bench.process(look(0, {{&B::vibrate, 1}}));
  EXPECT_THAT(bench.take({"impact", "dispose"}), ElementsAre("impact light", "dispose 1352"));
}

}  // namespace
}  // namespace halvora
