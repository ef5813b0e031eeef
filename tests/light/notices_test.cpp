// SPDX-License-Identifier: Apache-2.0
#include "light/notices.h"

#include <memory>
#include <string>
#include <tuple>
#include <utility>

#include <gtest/gtest.h>

#include "tests/light/light_room.h"

namespace halvora {
namespace {

constexpr ViewId kNotice = ViewId::mapNoSeatOverlayView;
constexpr ViewId kHint = ViewId::lowLightHintLabel;

/// The two notices alone, in a show of mode 3, polled twice a second once `poll` is called. An
/// event is a change of either notice.
class NoticeRoom final : private ViewObserver {
 public:
  NoticeRoom() {
    screen.currentMode = 3;
    views.setObserver(this);
  }
  void poll() {
    timers.every(milliseconds(500), [this] { notices.updateLowLightHintState(); });
  }
  Events runTo(long long ms) {
    loop.runUntil(milliseconds(ms));
    return std::exchange(events, {});
  }
  /// Polls in the dark until the hint is shown, which is at 5500.
  void darken() {
    poll();
    EXPECT_EQ(runTo(5499), Events{});
    EXPECT_EQ(runTo(6000), (Events{"5500 hint shown", "5500 hint to 1 in 500"}));
  }

  VirtualRunLoop loop;
  TimerSet timers{loop};
  ViewStack views{timers};
  ScreenState screen;
  Notices notices{screen, views, timers};
  Events events;

 private:
  void note(ViewId view, const std::string& what) {
    EXPECT_TRUE(view == kNotice || view == kHint);
    events.push_back(textOf(loop.now()) + (view == kNotice ? " notice " : " hint ") + what);
  }
  void alphaChanged(ViewId view, double alpha, Duration duration) override {
    const std::string text = alpha == 1 ? "1" : alpha == 0 ? "0" : "between";
    note(view, duration > Duration::zero() ? "to " + text + " in " + textOf(duration) : text);
  }
  void hiddenChanged(ViewId view, bool hidden) override { note(view, hidden ? "hidden" : "shown"); }
};

struct FrameCase {
  Size screen;
  Rect notice;
  Rect hint;
};

// The notice is W − 48 wide within 220 to 280, and 124 high; the hint W − 48 wide and 20 high.
constexpr FrameCase kFrames[] = {
    {{390, 844}, {55, 360, 280, 124}, {24, 412, 342, 20}},
    {{844, 390}, {282, 133, 280, 124}, {24, 185, 796, 20}},
    {{328, 600}, {24, 238, 280, 124}, {24, 290, 280, 20}},
    {{320, 568}, {24, 222, 272, 124}, {24, 274, 272, 20}},
    {{268, 500}, {24, 188, 220, 124}, {24, 240, 220, 20}},
    {{240, 320}, {10, 98, 220, 124}, {24, 150, 192, 20}},
    {{1024, 1366}, {372, 621, 280, 124}, {24, 673, 976, 20}},
};

void expectFrame(const Rect& frame, const Rect& expected) {
  EXPECT_DOUBLE_EQ(frame.x, expected.x);
  EXPECT_DOUBLE_EQ(frame.y, expected.y);
  EXPECT_DOUBLE_EQ(frame.width, expected.width);
  EXPECT_DOUBLE_EQ(frame.height, expected.height);
}

TEST(NoticeLook, FramesFollowTheScreen) {
  for (const FrameCase& frame : kFrames) {
    SCOPED_TRACE(frame.screen.width);
    expectFrame(frameOf(kNotice, frame.screen), frame.notice);
    expectFrame(frameOf(ViewId::mapNoSeatOverlayLabel, frame.screen), frame.notice);
    expectFrame(frameOf(kHint, frame.screen), frame.hint);
  }
}

TEST(NoticeLook, ColoursAndSizes) {
  EXPECT_EQ(rowOf(ViewId::mapNoSeatOverlayLabel).colour, (Colour{1, 1, 1, 0.4F}));
  EXPECT_EQ(rowOf(ViewId::mapNoSeatOverlayLabel).fontSize, 14);
  EXPECT_EQ(rowOf(kHint).colour, (Colour{1, 1, 1, 0.16F}));
  EXPECT_EQ(rowOf(kHint).fontSize, 13);
  EXPECT_EQ(rowOf(kNotice).colour.alpha, 0) << "clear";
}

TEST(NoticeLook, RestHiddenAndTransparentWithTheirTexts) {
  NoticeRoom room;
  room.notices.build(std::make_shared<const std::string>("a seat"),
                     std::make_shared<const std::string>("still on"));
  EXPECT_EQ(room.views.text(ViewId::mapNoSeatOverlayLabel), "a seat");
  EXPECT_EQ(room.views.text(kHint), "still on");
  for (const ViewId view : {kNotice, kHint}) {
    EXPECT_TRUE(room.views.isHidden(view));
    EXPECT_EQ(room.views.alpha(view), 0);
  }
}

TEST(NoSeatNotice, FadesInAndOut) {
  NoticeRoom room;
  room.notices.showMapNoSeatOverlay();
  EXPECT_EQ(room.runTo(1000), (Events{"0 notice shown", "0 notice 0", "0 notice to 1 in 160"}));
  room.notices.hideMapNoSeatOverlay();
  EXPECT_EQ(room.runTo(2000), (Events{"1000 notice to 0 in 120", "1120 notice hidden"}));
}

TEST(NoSeatNotice, IsNotShownTwiceNorHiddenTwice) {
  NoticeRoom room;
  room.notices.hideMapNoSeatOverlay();
  EXPECT_EQ(room.runTo(1000), Events{});
  room.notices.showMapNoSeatOverlay();
  room.runTo(2000);
  room.notices.showMapNoSeatOverlay();
  EXPECT_EQ(room.runTo(3000), Events{});
}

TEST(NoSeatNotice, HiddenWhileItFadesInIsHiddenAfterItsFadeOut) {
  NoticeRoom room;
  room.notices.showMapNoSeatOverlay();
  room.runTo(80);
  room.notices.hideMapNoSeatOverlay();
  EXPECT_DOUBLE_EQ(room.views.shownAlpha(kNotice), 0.5) << "from where it was";
  EXPECT_EQ(room.runTo(1000), (Events{"80 notice to 0 in 120", "200 notice hidden"}));
}

TEST(NoSeatNotice, AskedForWhileItFadesOutIsNotShown) {
  NoticeRoom room;
  room.notices.showMapNoSeatOverlay();
  room.runTo(1000);
  room.notices.hideMapNoSeatOverlay();
  room.runTo(1060);
  room.notices.showMapNoSeatOverlay();
  EXPECT_EQ(room.runTo(5000), Events{"1120 notice hidden"}) << "it was not hidden yet";
}

TEST(LowLightHint, FadesInAndOut) {
  NoticeRoom room;
  room.notices.showLowLightHintOverlay();
  EXPECT_TRUE(room.notices.lowLightHintIsVisible());
  EXPECT_EQ(room.runTo(1000), (Events{"0 hint shown", "0 hint to 1 in 500"}));
  room.notices.hideLowLightHintOverlayImmediate(false);
  EXPECT_FALSE(room.notices.lowLightHintIsVisible());
  EXPECT_EQ(room.runTo(2000), (Events{"1000 hint to 0 in 450", "1450 hint hidden"}));
}

TEST(LowLightHint, VanishesAtOnceWhenAsked) {
  NoticeRoom room;
  room.notices.showLowLightHintOverlay();
  room.runTo(250);
  room.notices.hideLowLightHintOverlayImmediate(true);
  EXPECT_EQ(room.runTo(2000), (Events{"250 hint 0", "250 hint hidden"}));
}

TEST(LowLightHint, IsNotShownTwiceNorHiddenTwice) {
  NoticeRoom room;
  room.notices.hideLowLightHintOverlayImmediate(true);
  room.notices.hideLowLightHintOverlayImmediate(false);
  EXPECT_EQ(room.runTo(1000), Events{});
  room.notices.showLowLightHintOverlay();
  room.runTo(2000);
  room.notices.showLowLightHintOverlay();
  EXPECT_EQ(room.runTo(3000), Events{});
  room.notices.hideLowLightHintOverlayImmediate(false);
  room.notices.hideLowLightHintOverlayImmediate(true);
  EXPECT_EQ(room.runTo(9000), (Events{"3000 hint to 0 in 450", "3450 hint hidden"}));
}

TEST(LowLightHint, HiddenWhileItFadesInFadesOutFromThere) {
  NoticeRoom room;
  room.notices.showLowLightHintOverlay();
  room.runTo(250);
  room.notices.hideLowLightHintOverlayImmediate(false);
  EXPECT_DOUBLE_EQ(room.views.shownAlpha(kHint), 0.5);
  EXPECT_EQ(room.runTo(2000), (Events{"250 hint to 0 in 450", "700 hint hidden"}));
}

TEST(LowLightPoll, HintComesFiveSecondsAfterTheFirstDarkPoll) {
  NoticeRoom room;
  room.darken();
  EXPECT_EQ(room.runTo(60'000), Events{});
}

TEST(LowLightPoll, DarknessIsMeasuredInStepsOfHalfASecond) {
  // Dark 1 ms before a poll or at once after it: 5.001 s and 5.499 s until the hint.
  for (const auto& [dark, shown] : {std::pair{2999, "8000"}, {3001, "8500"}}) {
    NoticeRoom room;
    room.views.setLightColour(kRed);
    room.poll();
    EXPECT_EQ(room.runTo(dark), Events{});
    room.views.setLightColour(kBlack);
    EXPECT_EQ(room.runTo(20'000), (Events{std::string(shown) + " hint shown",
                                          std::string(shown) + " hint to 1 in 500"}));
  }
}

TEST(LowLightPoll, HintVanishesWithTheFirstPollInTheLight) {
  NoticeRoom room;
  room.darken();
  room.runTo(7001);
  room.views.setLightColour(kRed);
  EXPECT_EQ(room.runTo(30'000), (Events{"7500 hint 0", "7500 hint hidden"}));
}

TEST(LowLightPoll, LightBetweenTwoPollsIsNotSeen) {
  NoticeRoom room;
  room.poll();
  room.runTo(3001);
  room.views.setLightColour(kRed);
  room.runTo(3499);
  room.views.setLightColour(kBlack);
  EXPECT_EQ(room.runTo(5500).size(), 2U);
}

TEST(LowLightPoll, LightAtAPollBeginsTheCountAnew) {
  NoticeRoom room;
  room.poll();
  room.runTo(4999);
  room.views.setLightColour(kRed);
  room.runTo(5000);
  room.views.setLightColour(kBlack);
  EXPECT_EQ(room.runTo(10'499), Events{});
  EXPECT_EQ(room.runTo(10'500), (Events{"10500 hint shown", "10500 hint to 1 in 500"}));
}

TEST(LowLightPoll, HintComesAgainAfterAnotherFiveSeconds) {
  NoticeRoom room;
  room.darken();
  room.views.setLightColour(kRed);
  room.runTo(6600);
  room.views.setLightColour(kBlack);
  EXPECT_EQ(room.runTo(11'999), Events{});
  EXPECT_EQ(room.runTo(12'000), (Events{"12000 hint shown", "12000 hint to 1 in 500"}));
}

TEST(LowLightPoll, DarkScreenInMode0NeverShowsTheHint) {
  NoticeRoom room;
  room.screen.currentMode = 0;
  room.poll();
  EXPECT_EQ(room.runTo(60'000), Events{});
}

TEST(LowLightPoll, EndOfTheShowHidesTheHintAndTheCount) {
  NoticeRoom room;
  room.darken();
  room.screen.currentMode = 0;
  EXPECT_EQ(room.runTo(7000), (Events{"6500 hint 0", "6500 hint hidden"}));
  room.screen.currentMode = 1;
  EXPECT_EQ(room.runTo(12'499), Events{});
  EXPECT_EQ(room.runTo(12'500).size(), 2U);
}

TEST(LowLightPoll, HintStaysAwayUnderTheNotice) {
  NoticeRoom room;
  room.screen.currentMode = 50;
  room.notices.showMapNoSeatOverlay();
  room.runTo(1);
  room.poll();
  EXPECT_EQ(room.runTo(60'000), Events{});
}

TEST(LowLightPoll, NoticeHidesTheHintAtOnce) {
  NoticeRoom room;
  room.darken();
  room.screen.currentMode = 50;
  room.notices.showMapNoSeatOverlay();
  EXPECT_EQ(room.runTo(20'000),
            (Events{"6000 notice shown", "6000 notice 0", "6000 notice to 1 in 160", "6500 hint 0",
                    "6500 hint hidden"}));
}

TEST(LowLightPoll, CountBeginsOnceTheNoticeIsAskedToGo) {
  NoticeRoom room;
  room.screen.currentMode = 50;
  room.notices.showMapNoSeatOverlay();
  room.poll();
  room.runTo(2450);
  room.screen.currentMode = 22;
  room.notices.hideMapNoSeatOverlay();
  EXPECT_EQ(room.runTo(7499), (Events{"2450 notice to 0 in 120", "2570 notice hidden"}));
  EXPECT_EQ(room.runTo(7500).size(), 2U) << "at 2500 its alpha was 0, though it still faded";
}

TEST(LowLightPoll, NoticeIsVisibleOnlyAboveOneHundredth) {
  for (const auto& [alpha, hidden, showsHint] :
       {std::tuple{0.01, false, true}, {0.0101, false, false}, {1.0, true, true}}) {
    NoticeRoom room;
    room.views.setHidden(kNotice, hidden);
    room.views.setAlpha(kNotice, alpha);
    room.poll();
    room.runTo(6000);
    EXPECT_EQ(room.notices.lowLightHintIsVisible(), showsHint) << alpha << hidden;
  }
}

TEST(NearBlack, IsEveryChannelBelow15) {
  const auto isNearBlack = [](const MaybeColour& light) {
    NoticeRoom room;
    room.views.setLightColour(light);
    return room.notices.isDisplayedLightNearBlack();
  };
  EXPECT_TRUE(isNearBlack(colourOfBytes(14, 14, 14)));
  EXPECT_FALSE(isNearBlack(colourOfBytes(15, 0, 0)));
  EXPECT_FALSE(isNearBlack(colourOfBytes(0, 15, 0)));
  EXPECT_FALSE(isNearBlack(colourOfBytes(0, 0, 15)));
  EXPECT_TRUE(isNearBlack(kBlack));
  EXPECT_FALSE(isNearBlack(kWhite));
  EXPECT_TRUE(isNearBlack(std::nullopt)) << "no light at all";
  EXPECT_FALSE(isNearBlack(Colour{1, 1, 1, 0})) << "the alpha does not count";
  EXPECT_TRUE(isNearBlack(Colour{0, 0, 0, 0}));
}

TEST(NearBlack, LevelsAreRoundedToTheNearest) {
  NoticeRoom room;
  const auto isNearBlack = [&room](float level) {
    room.views.setLightColour(Colour{0, level, 0, 1});
    return room.notices.isDisplayedLightNearBlack();
  };
  EXPECT_TRUE(isNearBlack(14.49F / 255));
  EXPECT_FALSE(isNearBlack(14.51F / 255));
  const float half = 14.5F / 255;
  ASSERT_EQ(half * 255, 14.5F);
  EXPECT_TRUE(isNearBlack(half)) << "a tie goes to the even level, 14";
}

TEST(NearBlack, JudgesTheLightAsSetNotAsShown) {
  NoticeRoom room;
  room.views.animateLight(kRed, milliseconds(1000), {});
  EXPECT_FALSE(room.notices.isDisplayedLightNearBlack());
  room.runTo(2000);
  room.views.animateLight(kBlack, milliseconds(1000), {});
  EXPECT_TRUE(room.notices.isDisplayedLightNearBlack());
}

TEST(NearBlack, LightClearedDuringAShowBringsTheHint) {
  NoticeRoom room;
  room.views.setLightColour(std::nullopt);
  room.darken();
}

}  // namespace
}  // namespace halvora
