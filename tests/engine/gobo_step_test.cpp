// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/engine/engine_bench.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using B = Broadcast;

class GoboStep : public testing::Test {
 protected:
  const GoboState& gobo() const { return bench_.state().gobo; }
  double alpha() { return bench_.views().alpha(ViewId::goboView); }

  Acts acts() {
    Acts acts = bench_.take({"alpha", "changeGobo", "goboPulse", "goboPulseRandom"});
    std::erase_if(acts, [](const std::string& act) {
      return act.starts_with("alpha ") && !act.starts_with("alpha goboView");
    });
    return acts;
  }
  Acts actsOf(int mode, Changes changes) {
    bench_.take();
    bench_.process(look(mode, changes));
    return acts();
  }

  EngineBench bench_;
};

TEST_F(GoboStep, SteadyModesShowANewGoboAtOnce) {
  for (int mode = 1; mode <= 9; ++mode) {
    bench_.views().setAlpha(ViewId::goboView, 0);
    EXPECT_THAT(actsOf(mode, {{&B::gobo, mode}}),
                ElementsAre("alpha goboView 1", "changeGobo", "alpha goboView 1"));
    EXPECT_EQ(gobo().currentGobo, mode);
    EXPECT_FALSE(gobo().goboIsAnimating);
  }
}

TEST_F(GoboStep, SteadyModesUncoverAHiddenGoboWithoutChangingIt) {
  for (int mode = 1; mode <= 9; ++mode) {
    actsOf(mode, {{&B::gobo, 3}});
    bench_.views().setAlpha(ViewId::goboView, 0.5);
    EXPECT_THAT(actsOf(mode, {{&B::gobo, 3}, {&B::blue, 1}}), ElementsAre("alpha goboView 1"));
    EXPECT_THAT(actsOf(mode, {{&B::gobo, 3}, {&B::blue, 2}}), IsEmpty()) << "already fully visible";
  }
}

TEST_F(GoboStep, OtherModesDoNotUncoverAHiddenGobo) {
  for (const int mode : {10, 13, 20, 22}) {
    actsOf(mode, {{&B::gobo, 3}});
    bench_.views().setAlpha(ViewId::goboView, 0);
    EXPECT_THAT(actsOf(mode, {{&B::gobo, 3}, {&B::blue, 1}}), IsEmpty()) << mode;
  }
}

TEST_F(GoboStep, Mode0TakesNoNewGobo) {
  actsOf(1, {{&B::gobo, 3}});
  EXPECT_THAT(actsOf(0, {{&B::gobo, 4}}), IsEmpty());
  EXPECT_EQ(gobo().currentGobo, 3);
  EXPECT_EQ(alpha(), 1);
}

TEST_F(GoboStep, ChangeAmongTheFirstNineModesKeepsTheGobo) {
  actsOf(1, {{&B::gobo, 3}});
  EXPECT_THAT(actsOf(9, {{&B::gobo, 3}}), IsEmpty());
  EXPECT_THAT(actsOf(4, {{&B::gobo, 3}}), IsEmpty());
}

TEST_F(GoboStep, ChangeToAHigherModeAppliesTheGoboAgain) {
  actsOf(1, {{&B::gobo, 3}});
  EXPECT_THAT(actsOf(13, {{&B::gobo, 3}}), ElementsAre("changeGobo", "alpha goboView 1"));
  EXPECT_THAT(actsOf(13, {{&B::gobo, 3}, {&B::speed, 9}}), IsEmpty())
      << "a change of speed alone is none of the mode";
}

TEST_F(GoboStep, StoresGoboModeAndSpeed) {
  actsOf(13, {{&B::gobo, 3}, {&B::speed, 77}});
  EXPECT_EQ(gobo().currentGobo, 3);
  EXPECT_EQ(gobo().currentGoboMode, 13U);
  EXPECT_EQ(gobo().currentGoboSpeed, 77);
}

TEST_F(GoboStep, NoGoboHidesAtOnceInMostModes) {
  for (const int mode : {1, 9, 11, 12, 13, 21, 50, 255}) {
    EngineBench bench;
    bench.process(look(3, {{&B::gobo, 5}}));
    bench.writableState().gobo.goboIsAnimating = true;
    bench.take();
    bench.process(look(mode));
    EXPECT_EQ(bench.views().alpha(ViewId::goboView), 0) << mode;
    EXPECT_FALSE(bench.state().gobo.goboIsAnimating) << mode;
    EXPECT_EQ(bench.state().gobo.currentGobo, 0) << mode;
    EXPECT_THAT(bench.take({"changeGobo", "goboPulse", "goboPulseRandom"}), IsEmpty()) << mode;
  }
}

TEST_F(GoboStep, NoGoboFadesOutInMode10) {
  actsOf(3, {{&B::gobo, 5}});
  EXPECT_THAT(actsOf(10, {{&B::speed, 255}}), ElementsAre("alpha goboView 0 in 200 ms"));
  EXPECT_TRUE(gobo().goboIsAnimating);
  bench_.runTo(199);
  EXPECT_TRUE(gobo().goboIsAnimating);
  bench_.runTo(200);
  EXPECT_FALSE(gobo().goboIsAnimating);
  EXPECT_EQ(alpha(), 0);
}

TEST_F(GoboStep, FadeOutThatIsRemovedIsOverToo) {
  actsOf(3, {{&B::gobo, 5}});
  actsOf(10, {{&B::speed, 0}});
  bench_.runTo(100);
  bench_.views().removeAnimations(ViewId::goboView);
  bench_.runTo(101);
  EXPECT_FALSE(gobo().goboIsAnimating);
}

TEST_F(GoboStep, FadesFollowTheSpeed) {
  EXPECT_THAT(actsOf(10, {{&B::gobo, 1}, {&B::speed, 255}}),
              ElementsAre("changeGobo", "alpha goboView 1 in 200 ms"));
  bench_.views().setAlpha(ViewId::goboView, 0);
  EXPECT_THAT(actsOf(10, {{&B::gobo, 2}, {&B::speed, 128}}),
              ElementsAre("changeGobo", "alpha goboView 1 in 2600 ms"));
  bench_.views().setAlpha(ViewId::goboView, 0);
  EXPECT_THAT(actsOf(10, {{&B::gobo, 3}, {&B::speed, 0}}),
              ElementsAre("changeGobo", "alpha goboView 1 in 5000 ms"));
}

TEST_F(GoboStep, Mode10FadesATransparentGoboIn) {
  EXPECT_THAT(actsOf(10, {{&B::gobo, 1}, {&B::speed, 255}}),
              ElementsAre("changeGobo", "alpha goboView 1 in 200 ms"));
  EXPECT_TRUE(gobo().goboIsAnimating);
  bench_.runTo(200);
  EXPECT_FALSE(gobo().goboIsAnimating);
  EXPECT_EQ(alpha(), 1);
}

TEST_F(GoboStep, Mode10CrossfadesAVisibleGobo) {
  actsOf(3, {{&B::gobo, 1}});
  EXPECT_THAT(actsOf(10, {{&B::gobo, 2}, {&B::speed, 255}}),
              ElementsAre("alpha goboView 0 in 200 ms"));
  bench_.runTo(199);
  EXPECT_THAT(acts(), IsEmpty());
  EXPECT_TRUE(gobo().goboIsAnimating);
  bench_.runTo(200);
  EXPECT_THAT(acts(), ElementsAre("changeGobo", "alpha goboView 1 in 200 ms"));
  bench_.runTo(399);
  EXPECT_TRUE(gobo().goboIsAnimating);
  bench_.runTo(400);
  EXPECT_FALSE(gobo().goboIsAnimating);
  EXPECT_EQ(alpha(), 1);
}

TEST_F(GoboStep, CrossfadeThatIsRemovedDoesNotComeBack) {
  actsOf(3, {{&B::gobo, 1}});
  actsOf(10, {{&B::gobo, 2}, {&B::speed, 255}});
  bench_.runTo(100);
  bench_.views().removeAnimations(ViewId::goboView);
  bench_.runTo(2000);
  EXPECT_THAT(acts(), IsEmpty());
  EXPECT_EQ(alpha(), 0);
}

TEST_F(GoboStep, NewGoboDuringAFadeInRemovesThatFade) {
  actsOf(10, {{&B::gobo, 1}, {&B::speed, 0}});
  bench_.runTo(2500);
  EXPECT_NEAR(bench_.views().shownAlpha(ViewId::goboView), 0.5, 1e-6);
  EXPECT_THAT(actsOf(10, {{&B::gobo, 2}, {&B::speed, 0}}),
              ElementsAre("alpha goboView 0 in 5000 ms"));
  bench_.runTo(7499);
  EXPECT_THAT(acts(), IsEmpty());
  bench_.runTo(7500);
  EXPECT_THAT(acts(), ElementsAre("changeGobo", "alpha goboView 1 in 5000 ms"));
}

TEST_F(GoboStep, Mode11Pulses) {
  EXPECT_THAT(actsOf(11, {{&B::gobo, 1}}), ElementsAre("goboPulse"));
  EXPECT_THAT(actsOf(11, {{&B::gobo, 1}, {&B::blue, 1}}), IsEmpty());
  EXPECT_THAT(actsOf(11, {{&B::gobo, 2}}), ElementsAre("goboPulse"));
}

TEST_F(GoboStep, Mode12PulsesAfterARandomDelay) {
  bench_.process(look(12, {{&B::gobo, 1}}));
  EXPECT_THAT(bench_.take({"draw", "goboPulseRandom", "changeGobo"}),
              ElementsAre("draw 3901", "goboPulseRandom"));
  EXPECT_EQ(gobo().goboDelay, 0.1F);
}

TEST_F(GoboStep, Mode12DelaysFourSecondsAtMost) {
  EngineBench bench({.random = ScriptedRandom::Rule::greatest});
  bench.process(look(12, {{&B::gobo, 1}}));
  EXPECT_EQ(bench.state().gobo.goboDelay, 4.0F);
}

TEST_F(GoboStep, PixelMapHidesTheGoboAndItComesBackAfterwards) {
  for (const int mode : {21, 50}) {
    actsOf(3, {{&B::gobo, 4}});
    bench_.writableState().gobo.goboIsAnimating = true;
    EXPECT_THAT(actsOf(mode, {{&B::gobo, 4}}), ElementsAre("alpha goboView 0"));
    EXPECT_FALSE(gobo().goboIsAnimating);
    EXPECT_EQ(gobo().currentGobo, 0);
    EXPECT_EQ(gobo().currentGoboMode, static_cast<std::uint32_t>(mode));
    EXPECT_THAT(actsOf(3, {{&B::gobo, 4}}),
                ElementsAre("alpha goboView 1", "changeGobo", "alpha goboView 1"));
  }
}

TEST_F(GoboStep, EveryOtherModeShowsItAtOnce) {
  for (const int mode : {13, 14, 15, 16, 17, 18, 19, 20, 22, 49, 51, 255}) {
    EngineBench bench;
    bench.writableState().gobo.goboIsAnimating = true;
    bench.process(look(mode, {{&B::gobo, 4}}));
    EXPECT_EQ(bench.views().alpha(ViewId::goboView), 1) << mode;
    EXPECT_FALSE(bench.state().gobo.goboIsAnimating) << mode;
    EXPECT_THAT(bench.take({"changeGobo"}), ElementsAre("changeGobo")) << mode;
  }
}

TEST_F(GoboStep, ChangeOfModeOrSpeedReachesTheGoboEvenWhereItStays) {
  actsOf(1, {{&B::gobo, 4}});
  actsOf(5, {{&B::gobo, 4}, {&B::speed, 70}});
  EXPECT_EQ(gobo().currentGoboMode, 5U);
  EXPECT_EQ(gobo().currentGoboSpeed, 70);
  actsOf(5, {{&B::gobo, 4}, {&B::speed, 80}});
  EXPECT_EQ(gobo().currentGoboSpeed, 80);
}

}  // namespace
}  // namespace halvora
