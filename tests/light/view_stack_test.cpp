// SPDX-License-Identifier: Apache-2.0
#include "light/view_stack.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/virtual/virtual_run_loop.h"
#include "tests/light/light_room.h"

namespace halvora {
namespace {

constexpr ViewId kView = ViewId::goboView;
constexpr ViewId kOther = ViewId::dimmerView;

class ViewStackTest : public testing::Test, public ViewObserver {
 protected:
  ViewStackTest() { views_.setObserver(this); }

  ViewStack::Completion noting(const char* name) {
    return [this, name](bool finished) { note(std::string(name) + (finished ? " done" : " cut")); };
  }

  Events runFor(long long ms) {
    loop_.runFor(milliseconds(ms));
    return std::exchange(events_, {});
  }

  void alphaChanged(ViewId view, double alpha, Duration duration) override {
    char text[80];
    std::snprintf(text, sizeof text, "%s %g in %s", rowOf(view).name, alpha,
                  textOf(duration).c_str());
    note(text);
  }
  void hiddenChanged(ViewId view, bool hidden) override {
    note(std::string(rowOf(view).name) + (hidden ? " hidden" : " seen"));
  }
  void textChanged(ViewId view, const std::string& text) override {
    note(std::string(rowOf(view).name) + " says " + text);
  }
  void lightChanged(const MaybeColour& colour) override { note("light " + nameOf(colour)); }
  void lightAnimationStarted(const MaybeColour& to, Duration duration) override {
    note("light to " + nameOf(to) + " in " + textOf(duration));
  }
  void lightAnimationEnded(bool finished) override { note(finished ? "light there" : "light cut"); }

  void note(const std::string& what) { events_.push_back(textOf(loop_.now()) + " " + what); }

  VirtualRunLoop loop_;
  TimerSet timers_{loop_};
  ViewStack views_{timers_};
  Events events_;
};

TEST_F(ViewStackTest, AnAnimationSetsItsValueAtOnceAndIsShownRunningToIt) {
  views_.animateAlpha({{kView, 1}}, {milliseconds(1000), {}, "fade"}, noting("fade"));
  EXPECT_EQ(views_.alpha(kView), 1);
  EXPECT_EQ(views_.shownAlpha(kView), 0);
  EXPECT_TRUE(views_.isAnimating());
  loop_.runFor(milliseconds(500));
  EXPECT_NEAR(views_.shownAlpha(kView), 0.5, 1e-6);
  loop_.runFor(milliseconds(499));
  EXPECT_GT(views_.shownAlpha(kView), 0.9);
  EXPECT_LT(views_.shownAlpha(kView), 1);
  EXPECT_EQ(runFor(1), (Events{"0 goboView 1 in 1000", "1000 fade done"}));
  EXPECT_EQ(views_.shownAlpha(kView), 1);
  EXPECT_FALSE(views_.isAnimating());
}

TEST_F(ViewStackTest, WhatIsShownNeverRunsBackwards) {
  views_.animateAlpha({{kView, 1}}, {milliseconds(100), {}, ""});
  double before = 0;
  for (int ms = 1; ms <= 100; ++ms) {
    loop_.runFor(milliseconds(1));
    ASSERT_GT(views_.shownAlpha(kView), before) << ms;
    before = views_.shownAlpha(kView);
  }
}

TEST_F(ViewStackTest, ADelayHoldsTheShownValueButNotTheSetOne) {
  views_.animateAlpha({{kView, 1}}, {milliseconds(100), milliseconds(50), ""}, noting("late"));
  EXPECT_EQ(views_.alpha(kView), 1);
  loop_.runFor(milliseconds(50));
  EXPECT_EQ(views_.shownAlpha(kView), 0);
  loop_.runFor(milliseconds(50));
  EXPECT_NEAR(views_.shownAlpha(kView), 0.5, 1e-6);
  EXPECT_EQ(runFor(50), (Events{"0 goboView 1 in 100", "150 late done"}));
}

TEST_F(ViewStackTest, SettingAValueDoesNotEndARunningAnimation) {
  views_.animateAlpha({{kView, 1}}, {milliseconds(100), {}, ""}, noting("fade"));
  loop_.runFor(milliseconds(50));
  views_.setAlpha(kView, 0.25);
  EXPECT_EQ(views_.alpha(kView), 0.25);
  EXPECT_NEAR(views_.shownAlpha(kView), 0.5, 1e-6);
  loop_.runFor(milliseconds(49));
  EXPECT_GT(views_.shownAlpha(kView), 0.9);
  EXPECT_EQ(runFor(1), (Events{"0 goboView 1 in 100", "50 goboView 0.25 in 0", "100 fade done"}));
  EXPECT_EQ(views_.shownAlpha(kView), 0.25);
}

TEST_F(ViewStackTest, RemovalEndsUnfinishedInATurnOfItsOwnAtTheSameTime) {
  views_.animateAlpha({{kView, 1}}, {milliseconds(100), {}, ""}, noting("fade"));
  runFor(30);
  loop_.soon([this] {
    views_.removeAnimations(kView);
    note("turn ends");
  });
  loop_.soon([this] { note("was due already"); });
  EXPECT_EQ(runFor(0), (Events{"30 turn ends", "30 was due already", "30 fade cut"}));
  EXPECT_EQ(views_.shownAlpha(kView), 1);
  EXPECT_FALSE(views_.isAnimating());
  EXPECT_EQ(runFor(1000), Events{});
}

TEST_F(ViewStackTest, RemovalOfNothingIsNothing) {
  views_.removeAnimations(kView);
  views_.removeLightAnimations();
  EXPECT_EQ(runFor(1000), Events{});
  EXPECT_EQ(loop_.turns(), 0U);
}

TEST_F(ViewStackTest, RemovingTwiceEndsOnce) {
  views_.animateAlpha({{kView, 1}}, {milliseconds(100), {}, ""}, noting("fade"));
  views_.removeAnimations(kView);
  views_.removeAnimations(kView);
  EXPECT_EQ(runFor(1000), (Events{"0 goboView 1 in 100", "0 fade cut"}));
}

TEST_F(ViewStackTest, ANewAnimationRemovesTheRunningOneAndGoesOnFromWhatIsShown) {
  views_.animateAlpha({{kView, 1}}, {milliseconds(100), {}, ""}, noting("first"));
  runFor(50);
  views_.animateAlpha({{kView, 0}}, {milliseconds(100), {}, ""}, noting("second"));
  EXPECT_NEAR(views_.shownAlpha(kView), 0.5, 1e-6);
  EXPECT_EQ(runFor(100), (Events{"50 goboView 0 in 100", "50 first cut", "150 second done"}));
  EXPECT_EQ(views_.shownAlpha(kView), 0);
}

TEST_F(ViewStackTest, AnAnimationOfAnotherViewIsNotDisturbed) {
  views_.animateAlpha({{kView, 1}}, {milliseconds(100), {}, ""}, noting("first"));
  views_.animateAlpha({{kOther, 1}}, {milliseconds(50), {}, ""}, noting("other"));
  views_.removeAnimations(kOther);
  runFor(0);
  EXPECT_EQ(runFor(100), Events{"100 first done"});
}

TEST_F(ViewStackTest, AnAnimationToTheValueAlreadySetRunsItsFullTime) {
  views_.animateAlpha({{kView, 0}}, {milliseconds(100), {}, ""}, noting("still"));
  EXPECT_TRUE(views_.isAnimating());
  EXPECT_EQ(runFor(99), Events{"0 goboView 0 in 100"});
  EXPECT_EQ(runFor(1), Events{"100 still done"});
}

TEST_F(ViewStackTest, SeveralValuesEndTogetherOnce) {
  views_.animateAlpha({{kView, 1}, {kOther, 0.5}}, {milliseconds(100), {}, ""}, noting("both"));
  EXPECT_EQ(views_.alpha(kOther), 0.5);
  loop_.runFor(milliseconds(50));
  EXPECT_NEAR(views_.shownAlpha(kView), 0.5, 1e-6);
  EXPECT_NEAR(views_.shownAlpha(kOther), 0.25, 1e-6);
  EXPECT_EQ(runFor(50),
            (Events{"0 goboView 1 in 100", "0 dimmerView 0.5 in 100", "100 both done"}));
}

TEST_F(ViewStackTest, OfSeveralValuesOneRemovedLeavesTheOtherRunningToItsEnd) {
  views_.animateAlpha({{kView, 1}, {kOther, 0.5}}, {milliseconds(100), {}, ""}, noting("both"));
  runFor(50);
  views_.removeAnimations(kOther);
  EXPECT_EQ(views_.shownAlpha(kOther), 0.5);
  EXPECT_NEAR(views_.shownAlpha(kView), 0.5, 1e-6);
  EXPECT_EQ(runFor(100), Events{"100 both cut"});
}

TEST_F(ViewStackTest, OfSeveralValuesAllRemovedItEndsAtOnce) {
  views_.animateAlpha({{kView, 1}, {kOther, 0.5}}, {milliseconds(100), {}, ""}, noting("both"));
  runFor(50);
  views_.removeAnimations(kOther);
  views_.animateAlpha({{kView, 0}}, {milliseconds(10), {}, ""}, noting("next"));
  EXPECT_EQ(runFor(100), (Events{"50 goboView 0 in 10", "50 both cut", "60 next done"}));
}

TEST_F(ViewStackTest, ACompletionMayStartTheNextAnimation) {
  views_.animateAlpha({{kView, 1}}, {milliseconds(100), {}, ""}, [this](bool finished) {
    if (!finished) return;
    views_.animateAlpha({{kView, 0}}, {milliseconds(200), {}, ""}, noting("back"));
  });
  EXPECT_EQ(runFor(1000),
            (Events{"0 goboView 1 in 100", "100 goboView 0 in 200", "300 back done"}));
}

TEST_F(ViewStackTest, ACompletionMayRemoveAnotherAnimation) {
  views_.animateAlpha({{kOther, 1}}, {milliseconds(500), {}, ""}, noting("other"));
  views_.animateAlpha({{kView, 1}}, {milliseconds(100), {}, ""},
                      [this](bool) { views_.removeAnimations(kOther); });
  runFor(0);
  EXPECT_EQ(runFor(1000), Events{"100 other cut"});
}

TEST_F(ViewStackTest, AnAnimationNeedsNoCompletion) {
  views_.animateAlpha({{kView, 1}}, {milliseconds(100), {}, ""});
  views_.animateLight(kWhite, milliseconds(100), {});
  runFor(100);
  EXPECT_FALSE(views_.isAnimating());
  EXPECT_EQ(views_.shownAlpha(kView), 1);
}

TEST_F(ViewStackTest, AnAnimationOfNoTimeEndsATenthOfAMillisecondLater) {
  views_.animateAlpha({{kView, 1}}, {}, noting("now"));
  EXPECT_EQ(views_.shownAlpha(kView), 1);
  EXPECT_EQ(runFor(1), (Events{"0 goboView 1 in 0", "0.1 now done"}));
}

TEST_F(ViewStackTest, TheLightRunsToItsColour) {
  views_.animateLight(kWhite, milliseconds(100), noting("light"));
  EXPECT_EQ(views_.lightColour(), MaybeColour(kWhite));
  EXPECT_EQ(views_.shownLight(), MaybeColour(kBlack));
  loop_.runFor(milliseconds(50));
  ASSERT_TRUE(views_.shownLight());
  EXPECT_TRUE(isNear(*views_.shownLight(), Colour{0.5F, 0.5F, 0.5F, 1}));
  EXPECT_EQ(runFor(50), (Events{"0 light white", "0 light to white in 100", "100 light there",
                                "100 light done"}));
  EXPECT_EQ(views_.shownLight(), MaybeColour(kWhite));
}

TEST_F(ViewStackTest, SettingTheLightDoesNotEndItsAnimation) {
  views_.animateLight(kWhite, milliseconds(100), noting("fade"));
  runFor(50);
  views_.setLightColour(kRed);
  EXPECT_EQ(views_.lightColour(), MaybeColour(kRed));
  EXPECT_TRUE(isNear(views_.shownLight().value_or(kBlack), Colour{0.5F, 0.5F, 0.5F, 1}));
  EXPECT_EQ(runFor(50), (Events{"50 light red", "100 light there", "100 fade done"}));
  EXPECT_EQ(views_.shownLight(), MaybeColour(kRed));
}

TEST_F(ViewStackTest, RemovingTheLightsAnimationShowsTheColourSet) {
  views_.animateLight(kWhite, milliseconds(100), noting("fade"));
  runFor(50);
  views_.removeLightAnimations();
  EXPECT_EQ(views_.shownLight(), MaybeColour(kWhite));
  EXPECT_EQ(events_, Events{});
  EXPECT_EQ(runFor(1000), (Events{"50 light cut", "50 fade cut"}));
}

TEST_F(ViewStackTest, ANewLightAnimationRemovesTheRunningOne) {
  views_.animateLight(kWhite, milliseconds(100), noting("first"));
  runFor(50);
  views_.animateLight(kRed, milliseconds(100), noting("second"));
  EXPECT_TRUE(isNear(views_.shownLight().value_or(kBlack), Colour{0.5F, 0.5F, 0.5F, 1}));
  EXPECT_EQ(runFor(100), (Events{"50 light red", "50 light to red in 100", "50 light cut",
                                 "50 first cut", "150 light there", "150 second done"}));
}

TEST_F(ViewStackTest, TheLightAndTheAlphasDoNotDisturbEachOther) {
  views_.animateLight(kWhite, milliseconds(100), noting("light"));
  views_.animateAlpha({{ViewId::lightView, 0}}, {milliseconds(50), {}, ""}, noting("alpha"));
  runFor(0);
  views_.removeAnimations(ViewId::lightView);
  EXPECT_EQ(runFor(100), (Events{"0 alpha cut", "100 light there", "100 light done"}));
}

TEST_F(ViewStackTest, AClearedLightShowsNothing) {
  views_.setLightColour(std::nullopt);
  EXPECT_EQ(views_.shownLight(), std::nullopt);
  EXPECT_EQ(runFor(0), Events{"0 light none"});
}

TEST_F(ViewStackTest, TheLightRunsOutOfAndIntoNothing) {
  views_.setLightColour(std::nullopt);
  views_.animateLight(kWhite, milliseconds(100), {});
  loop_.runFor(milliseconds(50));
  EXPECT_NEAR(views_.shownLight().value_or(kWhite).alpha, 0.5, 1e-6);
  loop_.runFor(milliseconds(50));
  views_.animateLight(std::nullopt, milliseconds(100), {});
  EXPECT_EQ(views_.lightColour(), std::nullopt);
  loop_.runFor(milliseconds(50));
  EXPECT_NEAR(views_.shownLight().value_or(kWhite).alpha, 0.5, 1e-6);
  loop_.runFor(milliseconds(50));
  EXPECT_EQ(views_.shownLight(), std::nullopt);
}

TEST_F(ViewStackTest, ItsInitialLightIsOpaqueBlack) {
  EXPECT_EQ(views_.lightColour(), MaybeColour(Colour{0, 0, 0, 1}));
}

TEST_F(ViewStackTest, HiddenAndTextAreReportedWhenSet) {
  views_.setHidden(kView, true);
  EXPECT_TRUE(views_.isHidden(kView));
  views_.setHidden(kView, false);
  EXPECT_FALSE(views_.isHidden(kView));
  EXPECT_EQ(views_.text(ViewId::fpsLabel), "");
  views_.setText(ViewId::fpsLabel, "60");
  views_.setText(ViewId::pairingCodeLabel, "1234");
  views_.setText(ViewId::fpsLabel, "59");
  EXPECT_EQ(views_.text(ViewId::fpsLabel), "59");
  EXPECT_EQ(views_.text(ViewId::pairingCodeLabel), "1234");
  EXPECT_EQ(runFor(0), (Events{"0 goboView hidden", "0 goboView seen", "0 fpsLabel says 60",
                               "0 pairingCodeLabel says 1234", "0 fpsLabel says 59"}));
}

TEST_F(ViewStackTest, WorksWithoutAnObserver) {
  views_.setObserver(nullptr);
  views_.setAlpha(kView, 0.5);
  views_.setHidden(kView, true);
  views_.setText(kView, "x");
  views_.setLightColour(kRed);
  views_.animateAlpha({{kView, 1}}, {milliseconds(10), {}, ""}, noting("alpha"));
  views_.animateLight(kWhite, milliseconds(10), noting("light"));
  EXPECT_EQ(runFor(10), (Events{"10 alpha done", "10 light done"}));
}

TEST_F(ViewStackTest, AThousandAnimationsLeaveNothingBehind) {
  for (int count = 0; count < 1000; ++count) {
    views_.animateAlpha({{kView, count % 2 == 0 ? 1.0 : 0.0}}, {milliseconds(10), {}, ""});
    views_.animateLight(count % 2 == 0 ? kWhite : kBlack, milliseconds(10), {});
    loop_.runFor(milliseconds(3));
  }
  loop_.runFor(milliseconds(10));
  EXPECT_FALSE(views_.isAnimating());
  EXPECT_EQ(views_.shownAlpha(kView), 0);
  const std::uint64_t turns = loop_.turns();
  loop_.runFor(milliseconds(1000));
  EXPECT_EQ(loop_.turns(), turns);
}

struct Face final : LightObserver {
  void lightChanged() override { ++told; }
  void lightEnds() override {}
  int told = 0;
};

TEST_F(ViewStackTest, AFaceHearsOfWhateverMayBeSeen) {
  Face face;
  views_.setFace(&face);
  const auto isTold = [&face](const auto& act) {
    const int before = face.told;
    act();
    return face.told > before;
  };
  const AnimationTiming second{milliseconds(1000), {}, "fade"};
  EXPECT_TRUE(isTold([&] { views_.setAlpha(kView, 0.5); }));
  EXPECT_TRUE(isTold([&] { views_.animateAlpha({{kView, 1}}, second); }));
  EXPECT_TRUE(isTold([&] { views_.setHidden(kView, true); }));
  EXPECT_TRUE(isTold([&] { views_.setText(ViewId::goboImage, std::string("/star.png")); }));
  EXPECT_TRUE(isTold([&] { views_.setLightColour(kWhite); }));
  EXPECT_TRUE(isTold([&] { views_.animateLight(kBlack, milliseconds(1000), {}); }));
  EXPECT_TRUE(isTold([&] { views_.lookAgain(); }));
  views_.setFace(nullptr);
  EXPECT_FALSE(isTold([&] { views_.setLightColour(kWhite); }));
}

}  // namespace
}  // namespace halvora
