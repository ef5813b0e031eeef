// SPDX-License-Identifier: Apache-2.0
// The guard before a phone's outputs, on a virtual phone with an engine that a look is shown to.
#include "light/light_guard.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/virtual/virtual_phone.h"
#include "engine/show_engine.h"
#include "light/display_list.h"

namespace halvora {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Le;

constexpr Size kContainer{390, 844};

struct LightGuardTest : testing::Test {
  LightGuardTest() { engine.viewDidLoad(); }

  void show(std::uint8_t mode, std::uint8_t master = 255, std::uint8_t torch = 0,
            std::uint8_t vibrate = 0) {
    Broadcast look;
    look.applicationId = 1;
    look.master = master;
    look.red = look.green = look.blue = 255;
    look.mode = mode;
    look.speed = 255;
    look.ledMode = torch;
    look.ledSpeed = 255;
    look.vibrate = vibrate;
    EXPECT_EQ(engine.processEffect(look), PacketFate::processed);
  }
  void pass(int time) { EXPECT_TRUE(phone.loop.runFor(milliseconds(time))); }
  /// Of the light's own fill; 0 where nothing is drawn.
  double opacity() {
    const DisplayList list = displayListOf(engine.views(), kContainer);
    return list.empty() ? 0 : list.front().opacity;
  }

  ExactJsonReader json;
  VirtualPhone phone{json};
  ShowEngine engine{phone.platform()};
};

TEST_F(LightGuardTest, IsNotThereWithoutLimits) {
  EXPECT_EQ(engine.views().filter(), nullptr);
  show(1, 255, 1);
  EXPECT_THAT(phone.screen.log.drain(), ElementsAre(1.0, 0.99, 1.0));
  EXPECT_TRUE(phone.torch.isOn);
}

TEST_F(LightGuardTest, WritesTheSameWhenTheTurnIsOver) {
  engine.setLimits({.flash = FlashPolicy::limited});
  show(1, 255, 1);
  EXPECT_THAT(phone.screen.log.drain(), IsEmpty());
  EXPECT_EQ(phone.platform().screen->brightness(), 0.5);
  pass(0);
  EXPECT_THAT(phone.screen.log.drain(), ElementsAre(1.0, 0.99, 1.0));
  EXPECT_TRUE(phone.torch.isOn);
}

TEST_F(LightGuardTest, KeepsATorchToThreeFlashesASecondWithoutAnyFace) {
  engine.setLimits({.flash = FlashPolicy::limited});
  show(1, 255, 5);
  pass(1500);
  phone.torch.log.drain();
  pass(1001);
  EXPECT_LE(phone.torch.log.drain().size(), 7U);
}

TEST_F(LightGuardTest, HasOneTimerForAllThatItHolds) {
  show(5, 255, 5);
  pass(2000);
  const std::size_t before = phone.loop.pending();
  engine.setLimits({.flash = FlashPolicy::limited});
  pass(500);
  EXPECT_LE(phone.loop.pending(), before + 1);
}

// No turn, no timer and no write more than without it.
TEST_F(LightGuardTest, DoesNothingWhereNothingChanges) {
  const auto turnsInAMinute = [this](FlashPolicy policy) {
    engine.setLimits({.flash = policy});
    show(1, 255, 1);
    pass(5000);
    phone.screen.log.drain();
    phone.torch.log.drain();
    const std::uint64_t before = phone.loop.turns();
    pass(60'000);
    EXPECT_THAT(phone.screen.log.drain(), IsEmpty());
    EXPECT_THAT(phone.torch.log.drain(), IsEmpty());
    return phone.loop.turns() - before;
  };
  const std::uint64_t exact = turnsInAMinute(FlashPolicy::exact);
  const std::size_t pending = phone.loop.pending();
  EXPECT_EQ(turnsInAMinute(FlashPolicy::limited), exact);
  EXPECT_EQ(phone.loop.pending(), pending);
}

TEST_F(LightGuardTest, CapsTheBacklightAndLetsTheShowBelieveItsOwn) {
  engine.setLimits({.mostBrightness = 0.6});
  show(1);
  pass(100);
  EXPECT_THAT(phone.screen.log.drain(), Each(Le(0.6)));
  EXPECT_EQ(phone.screen.brightness(), 0.6);
  engine.setLimits({});
  EXPECT_EQ(phone.screen.brightness(), 1);
}

TEST_F(LightGuardTest, GentleLightHasNeitherTorchNorMotor) {
  engine.setViewerLimits(kGentleLight);
  for (std::uint8_t touch = 1; touch <= 3; ++touch) {
    show(touch, 255, 1, touch);
    pass(100);
    EXPECT_FALSE(phone.torch.isOn);
  }
  for (const HapticAct act : phone.haptics.log.drain()) EXPECT_EQ(act, HapticAct::dispose);
  engine.setViewerLimits({});
  pass(0);
  EXPECT_TRUE(phone.torch.isOn);
}

TEST_F(LightGuardTest, AHostCannotLoosenWhatItsViewerSet) {
  engine.setViewerLimits(kGentleLight);
  engine.setLimits({.flash = FlashPolicy::exact, .mostBrightness = 1});
  EXPECT_EQ(engine.guard().limits(), kGentleLight);
}

TEST_F(LightGuardTest, LeavingFadesOutWithin300MillisecondsAndPutsTheTorchOut) {
  show(1, 255, 1);
  pass(2000);
  EXPECT_EQ(opacity(), 1);
  engine.leave();
  EXPECT_FALSE(phone.torch.isOn);
  pass(150);
  EXPECT_NEAR(opacity(), 0.5, 0.01);
  EXPECT_TRUE(Light(engine.views()).isAnimating());
  pass(150);
  EXPECT_EQ(opacity(), 0);
  EXPECT_FALSE(Light(engine.views()).isAnimating());
  show(1, 255, 0);
  show(1, 255, 1);
  pass(500);
  EXPECT_EQ(opacity(), 0);
  EXPECT_FALSE(phone.torch.isOn);
  engine.guard().comeBack();
  pass(300);
  EXPECT_EQ(opacity(), 1);
  EXPECT_TRUE(phone.torch.isOn);
}

// Who stays out reads on, and is not to do that at the show's brightness.
TEST_F(LightGuardTest, LeavingGivesTheBacklightBackUntilTheyComeBack) {
  show(1);
  pass(2000);
  EXPECT_EQ(phone.screen.brightness(), 1);
  engine.leave();
  EXPECT_EQ(phone.screen.brightness(), 0.5);
  show(1, 200);
  pass(500);
  EXPECT_EQ(phone.screen.brightness(), 0.5);
  engine.guard().comeBack();
  pass(0);
  EXPECT_NEAR(phone.screen.brightness(), 200 / 255.0, 1e-9);
}

TEST_F(LightGuardTest, AShowThatBeginsWithoutThemLeavesTheBacklightAlone) {
  engine.leave();
  pass(500);
  show(1);
  pass(2000);
  EXPECT_EQ(phone.screen.brightness(), 0.5);
}

// A show that goes on without them never changed it, so it has nothing to give back either.
TEST_F(LightGuardTest, WhoStaysOutOfAShowSetsTheirOwnBacklight) {
  engine.leave();
  show(1);
  pass(500);
  phone.screen.setBrightness(0.8);
  for (int time = 0; time < 3; ++time) {
    show(1, 200);
    show(1, 100);
    pass(500);
    EXPECT_EQ(phone.screen.brightness(), 0.8);
  }
  engine.guard().comeBack();
  pass(0);
  EXPECT_NEAR(phone.screen.brightness(), 100 / 255.0, 1e-9);
}

TEST_F(LightGuardTest, IsGoneAgainOnceItsViewerIsBack) {
  show(1);
  pass(2000);
  engine.leave();
  pass(500);
  engine.guard().comeBack();
  pass(300);
  EXPECT_EQ(engine.views().filter(), nullptr);
  phone.screen.log.drain();
  show(1);
  // In its own turn, as without a guard.
  EXPECT_THAT(phone.screen.log.drain(), ElementsAre(1.0, 0.99));
}

TEST_F(LightGuardTest, WhoHasLeftSetsTheirOwnBacklight) {
  show(1);
  pass(2000);
  engine.leave();
  pass(500);
  EXPECT_EQ(phone.screen.brightness(), 0.5);
  phone.screen.setBrightness(0.8);
  show(1, 200);
  pass(500);
  EXPECT_EQ(phone.screen.brightness(), 0.8);
}

TEST_F(LightGuardTest, ABacklightThatItsUserHasMovedSinceTheShowIsNotGivenBack) {
  engine.setLimits({.flash = FlashPolicy::limited});
  show(1);
  pass(2000);
  show(0);
  pass(5000);
  phone.screen.setBrightness(0.3);
  for (int time = 0; time < 3; ++time) {
    phone.application.resignActive();
    pass(500);
    EXPECT_EQ(phone.screen.brightness(), 0.3);
    phone.application.becomeActive();
    pass(500);
    EXPECT_EQ(phone.screen.brightness(), 0.3);
  }
}

// What they had set before they left is theirs, and so is what they set afterwards, even where it
// is what the show had once.
TEST_F(LightGuardTest, ABacklightThatWasTheirsBeforeTheyWentStaysTheirs) {
  engine.setLimits({.flash = FlashPolicy::limited});
  const auto turnUpWhileGone = [this](const auto& go, const auto& comeBack) {
    show(1, 254);
    show(1);
    pass(2000);
    phone.screen.setBrightness(0.6);
    go();
    pass(500);
    phone.screen.setBrightness(0.95);
    for (std::uint8_t master = 10; master < 13; ++master) {
      show(1, master);
      pass(500);
      EXPECT_EQ(phone.screen.brightness(), 0.95);
    }
    comeBack();
    pass(500);
  };
  turnUpWhileGone([this] { engine.leave(); }, [this] { engine.guard().comeBack(); });
  turnUpWhileGone([this] { phone.application.resignActive(); },
                  [this] { phone.application.becomeActive(); });
}

// A backlight is a question to the system, and a frame is not to wait for it.
TEST(LightGuardReads, AskTheBacklightTenTimesASecondAtMost) {
  struct CountingScreen final : Screen {
    Size bounds() const override { return kContainer; }
    double brightness() const override {
      ++reads;
      return level;
    }
    void setBrightness(double written) override { level = written; }
    float currentEDRHeadroom() const override { return 1; }
    double level = 0.5;
    mutable int reads = 0;
  };
  for (const LightLimits& limits : {LightLimits{.flash = FlashPolicy::limited},
                                    LightLimits{.mostBrightness = 0.6}, kGentleLight}) {
    for (const bool isGone : {false, true}) {
      ExactJsonReader json;
      VirtualPhone phone(json);
      CountingScreen screen;
      Platform platform = phone.platform();
      platform.screen = screen;
      ShowEngine engine(platform);
      engine.viewDidLoad();
      engine.setLimits(limits);
      Broadcast look;
      look.applicationId = 1;
      look.master = 255;
      look.mode = 17;
      look.paletteId = 1;
      EXPECT_EQ(engine.processEffect(look), PacketFate::processed);
      if (isGone) engine.leave();
      EXPECT_TRUE(phone.loop.runFor(milliseconds(1000)));
      screen.reads = 0;
      for (int frame = 0; frame < 600; ++frame) {
        EXPECT_TRUE(phone.loop.runFor(Duration{16'667}));
        displayListOf(engine.views(), kContainer);
      }
      EXPECT_LE(screen.reads, 101);
    }
  }
}

TEST_F(LightGuardTest, GivesThePhoneBackWhileItsApplicationIsAway) {
  engine.setLimits({.flash = FlashPolicy::limited});
  show(1, 255, 1);
  pass(2000);
  EXPECT_EQ(phone.screen.brightness(), 1);
  phone.application.resignActive();
  EXPECT_EQ(phone.screen.brightness(), 0.5);
  EXPECT_FALSE(phone.torch.isOn);
  EXPECT_FALSE(phone.application.isIdleTimerDisabled);
  show(1, 200, 1);
  pass(500);
  EXPECT_EQ(phone.screen.brightness(), 0.5);
  EXPECT_FALSE(phone.torch.isOn);
  phone.application.becomeActive();
  pass(0);
  EXPECT_NEAR(phone.screen.brightness(), 200 / 255.0, 1e-9);
  EXPECT_TRUE(phone.torch.isOn);
}

TEST_F(LightGuardTest, GivingThePhoneBackIsNoFourthFlash) {
  phone.screen.setBrightness(1);
  ShowEngine second(phone.platform());
  second.viewDidLoad();
  second.setLimits({.flash = FlashPolicy::limited});
  Broadcast look;
  look.applicationId = 1;
  look.master = 199;
  look.red = look.green = look.blue = 255;
  look.mode = 1;
  second.processEffect(look);
  look.master = 200;
  second.processEffect(look);
  pass(3000);
  EXPECT_LT(phone.screen.brightness(), 1);
  phone.screen.log.drain();
  for (int time = 0; time < 40; ++time) {
    phone.application.resignActive();
    pass(10);
    phone.application.becomeActive();
    pass(10);
  }
  EXPECT_LE(phone.screen.log.drain().size(), 7U);
}

TEST(LightGuardEnd, AnEngineThatGoesGivesThePhoneBack) {
  for (const FlashPolicy policy : {FlashPolicy::exact, FlashPolicy::limited}) {
    ExactJsonReader json;
    VirtualPhone phone(json);
    {
      ShowEngineOptions options;
      options.limits.flash = policy;
      ShowEngine engine(phone.platform(), options);
      engine.viewDidLoad();
      Broadcast look;
      look.applicationId = 1;
      look.master = 255;
      look.mode = 1;
      look.ledMode = 1;
      engine.processEffect(look);
      EXPECT_TRUE(phone.loop.runFor(milliseconds(10)));
      EXPECT_TRUE(phone.torch.isOn);
    }
    const bool isLimited = policy == FlashPolicy::limited;
    EXPECT_EQ(phone.torch.isOn, !isLimited);
    EXPECT_EQ(phone.screen.brightness(), isLimited ? 0.5 : 1);
    EXPECT_EQ(phone.application.isIdleTimerDisabled, !isLimited);
  }
}

}  // namespace
}  // namespace halvora
