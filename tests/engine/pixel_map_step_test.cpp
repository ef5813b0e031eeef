// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/engine/engine_bench.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using B = Broadcast;

// Seconds are the high byte of a frame, minutes the low one.
Broadcast frame(int minutes, Changes changes = {}) {
  return changed(look(3, {{&B::pixelMapId, 5}, {&B::minutes, minutes}}), changes);
}

class PixelMapStep : public testing::Test {
 protected:
  PixelMapStep() {
    bench_.seat("A", "12", "34");
    bench_.seatColours = {{1, colourOfBytes(1, 0, 0)}, {2, colourOfBytes(2, 0, 0)}};
  }

  Acts actsOf(const Broadcast& broadcast) {
    bench_.take();
    bench_.process(broadcast);
    return bench_.take({"seatColour", "light", "ledMode"});
  }
  const SeatState& seat() const { return bench_.state().seat; }

  EngineBench bench_;
};

TEST_F(PixelMapStep, ChangeToMode21WithANewFrameEntersTheModeTwice) {
  EXPECT_THAT(actsOf(frame(2)),
              ElementsAre("seatColour 0", "light 0 0 0", "seatColour 2", "light 2 0 0"));
  EXPECT_EQ(seat().currentVideoMinutes, 2);
  EXPECT_EQ(seat().currentPixelMapId, 5);
}

TEST_F(PixelMapStep, NewFrameEntersTheModeOnce) {
  actsOf(frame(2));
  EXPECT_THAT(actsOf(frame(1)), ElementsAre("seatColour 1", "light 1 0 0"));
  EXPECT_THAT(actsOf(frame(0, {{&B::seconds, 2}})), ElementsAre("seatColour 512", "light 0 0 0"))
      << "a frame without a colour is black";
}

TEST_F(PixelMapStep, NewMapEntersTheModeOnce) {
  actsOf(frame(2));
  EXPECT_THAT(actsOf(frame(2, {{&B::pixelMapId, 6}})), ElementsAre("seatColour 2", "light 2 0 0"));
  EXPECT_EQ(seat().currentPixelMapId, 6);
}

TEST_F(PixelMapStep, SameFrameAndMapDoNothing) {
  actsOf(frame(2));
  EXPECT_THAT(actsOf(frame(2, {{&B::hundredths, 50}})), IsEmpty());
}

TEST_F(PixelMapStep, ReturnToMode21AtTheSameFrameEntersOnce) {
  actsOf(frame(2));
  actsOf(look(1));
  EXPECT_EQ(seat().currentVideoMinutes, 2) << "other modes do not store a frame";
  EXPECT_EQ(seat().currentPixelMapId, 5);
  EXPECT_THAT(actsOf(frame(2)), ElementsAre("seatColour 2", "light 2 0 0"));
}

TEST_F(PixelMapStep, NoCueIsFrame1) {
  EXPECT_THAT(actsOf(frame(0)),
              ElementsAre("seatColour 0", "light 0 0 0", "seatColour 1", "light 1 0 0"));
}

TEST_F(PixelMapStep, SpeedOfTheLookIsKept) {
  actsOf(frame(2, {{&B::speed, 128}}));
  EXPECT_EQ(bench_.screen().currentMode, 21U);
  EXPECT_EQ(bench_.screen().currentModeSpeed, 128);
  EXPECT_EQ(bench_.screen().currentPerc, 50);
}

TEST_F(PixelMapStep, Mode21WithoutASectionIsBlackAndStopsTheEffects) {
  bench_.seat("", "12", "34");
  bench_.process(look(2));
  EXPECT_TRUE(bench_.screen().runEffectAnimation);
  EXPECT_THAT(actsOf(look(21, {{&B::minutes, 2}})), ElementsAre("light 0 0 0", "light 0 0 0"));
  EXPECT_FALSE(bench_.screen().runEffectAnimation);
}

TEST_F(PixelMapStep, Mode21WithANegativeSeatIsBlack) {
  bench_.seat("A", "-1", "34");
  EXPECT_THAT(actsOf(look(21, {{&B::minutes, 2}})), ElementsAre("light 0 0 0", "light 0 0 0"));
}

TEST_F(PixelMapStep, TorchMode9FollowsTheFrameInAnyScreenMode) {
  // Once because the frame is new, and, behind the steady colour, once because the torch mode is.
  EXPECT_THAT(actsOf(look(1, {{&B::minutes, 7}, {&B::ledMode, 9}, {&B::ledSpeed, 20}})),
              ElementsAre("ledMode 9 20", "light 255 0 0", "ledMode 9 20"));
  EXPECT_THAT(actsOf(look(1, {{&B::minutes, 8}, {&B::ledMode, 9}, {&B::ledSpeed, 20}})),
              ElementsAre("ledMode 9 20", "light 255 0 0"));
  EXPECT_THAT(actsOf(look(1, {{&B::minutes, 8}, {&B::ledMode, 9}, {&B::ledSpeed, 21}})),
              ElementsAre("light 255 0 0", "ledMode 9 21"));
}

TEST_F(PixelMapStep, TorchMode9StoresFrameAndMap) {
  bench_.seat("A", "-1", "-1");
  actsOf(look(1, {{&B::pixelMapId, 4}, {&B::minutes, 7}, {&B::ledMode, 9}}));
  EXPECT_EQ(seat().currentVideoMinutes, 7);
  EXPECT_EQ(seat().currentPixelMapId, 4);
}

TEST_F(PixelMapStep, OtherLooksStoreNeitherFrameNorMap) {
  bench_.seat("A", "-1", "-1");
  actsOf(look(1, {{&B::pixelMapId, 4}, {&B::minutes, 7}, {&B::ledMode, 4}}));
  EXPECT_EQ(seat().currentVideoMinutes, 0);
  EXPECT_EQ(seat().currentPixelMapId, 0);
}

}  // namespace
}  // namespace halvora
