// SPDX-License-Identifier: Apache-2.0
// The rules that the fuzz target and the soak check hold in an ordinary show, and are seen when one
// is broken.
#include "tests/support/engine_world.h"

#include <gtest/gtest.h>

#include "halvora/platform/haptics.h"
#include "halvora/platform/run_loop.h"
#include "halvora/platform/screen.h"
#include "halvora/platform/torch.h"

namespace halvora {
namespace {

Broadcast lookOf(std::uint8_t mode, std::uint16_t sequence) {
  return {.applicationId = 1,
          .venueId = 7,
          .master = 255,
          .red = 200,
          .mode = mode,
          .speed = 255,
          .sequence = sequence,
          .transmitter = 1};
}

class EngineWorldRules : public testing::Test {
 protected:
  void SetUp() override {
    world.start();
    world.pass(milliseconds(1500));
  }
  // What can only happen in a show.
  void show(std::uint8_t mode) {
    world.hear(lookOf(mode, ++sequence));
    // A packet in each cycle: empty ones would add up to a venue that is left.
    world.pass(milliseconds(900));
    ASSERT_EQ(world.engine().state().screen.currentMode, mode);
  }

  EngineWorld world{1};
  std::uint16_t sequence = 0;
};

TEST_F(EngineWorldRules, HoldThroughEveryModeAndTheEndOfTheShow) {
  for (std::uint8_t mode = 0; mode <= 50; ++mode) show(mode);
  world.pass(milliseconds(20'000));
  EXPECT_FALSE(world.engine().isInsideVenue());
  world.settle();
  EXPECT_EQ(world.complaint(), "");
}

TEST_F(EngineWorldRules, HoldForAPhoneThatIsNeverStarted) {
  EngineWorld other(2, false);
  other.pass(milliseconds(5000));
  other.settle();
  EXPECT_EQ(other.complaint(), "");
}

TEST_F(EngineWorldRules, AScreenThatIsMadeBrighterOutsideTheVenueIsSeen) {
  world.platform().screen->setBrightness(0.9);
  EXPECT_NE(world.complaint().find("no screen is made brighter outside"), std::string::npos);
}

TEST_F(EngineWorldRules, ALevelOutOfRangeIsSeen) {
  world.platform().screen->setBrightness(-0.5);
  EXPECT_NE(world.complaint().find("a screen's level is in range"), std::string::npos);
}

TEST_F(EngineWorldRules, ATorchOutsideTheVenueIsSeen) {
  world.platform().torch->setOn(true);
  EXPECT_NE(world.complaint().find("no torch goes on outside"), std::string::npos);
}

TEST_F(EngineWorldRules, ATouchOutsideTheVenueIsSeen) {
  world.platform().haptics->impact(ImpactStyle::light);
  EXPECT_NE(world.complaint().find("nothing is felt outside"), std::string::npos);
}

TEST_F(EngineWorldRules, LightOutsideTheVenueIsSeen) {
  world.views().setAlpha(ViewId::container, 1);
  world.pass(milliseconds(1000));
  EXPECT_NE(world.complaint().find("no light outside"), std::string::npos);
}

TEST_F(EngineWorldRules, AnAlphaOutOfRangeIsSeen) {
  world.views().setAlpha(ViewId::dimmerView, 1.5);
  world.pass(milliseconds(1000));
  EXPECT_NE(world.complaint().find("an alpha is in range"), std::string::npos);
}

TEST_F(EngineWorldRules, TimersWithoutEndAreSeen) {
  for (int count = 0; count < 100; ++count) {
    world.platform().runLoop->after(milliseconds(60'000), [] {});
  }
  world.pass(milliseconds(1000));
  EXPECT_NE(world.complaint().find("timers are bounded"), std::string::npos);
}

TEST_F(EngineWorldRules, ATimerThatAResetLeavesIsSeen) {
  world.platform().runLoop->every(milliseconds(1000), [] {});
  world.settle();
  EXPECT_NE(world.complaint().find("the timers of an idle engine"), std::string::npos);
}

TEST_F(EngineWorldRules, ATimerThatAnEngineLeavesIsSeen) {
  world.platform().runLoop->every(milliseconds(1000), [] {});
  world.beginAnew();
  EXPECT_NE(world.complaint().find("an engine that goes leaves no timer"), std::string::npos);
}

}  // namespace
}  // namespace halvora
