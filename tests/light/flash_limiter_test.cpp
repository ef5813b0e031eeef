// SPDX-License-Identifier: Apache-2.0
#include "light/flash_limiter.h"

#include <gtest/gtest.h>

namespace halvora {
namespace {

constexpr Levels kWhiteScreen{1, 1, 1};
constexpr Levels kRedScreen{1, 0, 0};
/// As bright as that red.
constexpr Levels kGreyScreen{0.498, 0.498, 0.498};

struct FlashLimiterTest : testing::Test {
  ShownLight at(int time, const Levels& screen, bool torch = false, double backlight = 1) {
    return limiter.decide({{screen, backlight, torch}, false}, milliseconds(time));
  }
  bool isShown(int time, const Levels& screen) { return at(time, screen).isAsWanted; }
  /// Three flashes within 300 ms, dark at their end.
  void flashThreeTimes(int from) {
    for (int flash = 0; flash < 3; ++flash) {
      EXPECT_TRUE(isShown(from + flash * 100, kWhiteScreen));
      EXPECT_TRUE(isShown(from + flash * 100 + 50, {}));
    }
  }

  FlashLimiter limiter{Emission{{}, 1, false}};
};

TEST_F(FlashLimiterTest, LetsThreeFlashesASecondPassForEver) {
  for (int flash = 0; flash < 300; ++flash) {
    const int begin = flash * 1000 / 3;
    EXPECT_TRUE(isShown(begin, kWhiteScreen)) << flash;
    EXPECT_TRUE(isShown(begin + 166, {})) << flash;
  }
}

TEST_F(FlashLimiterTest, HoldsTheFourthRiseUntilTheFirstIsMoreThanASecondAgo) {
  flashThreeTimes(0);
  const ShownLight held = at(300, kWhiteScreen);
  EXPECT_FALSE(held.isAsWanted);
  EXPECT_EQ(held.emission.screen, Levels{});
  EXPECT_EQ(limiter.retryAfter(), milliseconds(701));
  EXPECT_FALSE(isShown(1000, kWhiteScreen));
  EXPECT_TRUE(isShown(1001, kWhiteScreen));
  EXPECT_EQ(limiter.retryAfter(), std::nullopt);
}

TEST_F(FlashLimiterTest, GoesToTheNewestWishAndNotThroughThoseBetween) {
  flashThreeTimes(0);
  at(300, kWhiteScreen);
  at(400, kRedScreen);
  EXPECT_EQ(at(1001, kGreyScreen).emission.screen, kGreyScreen);
}

TEST_F(FlashLimiterTest, NeverDelaysDarkness) {
  for (int step = 0; step < 500; ++step) {
    const int time = step * 20;
    at(time, kWhiteScreen, step % 3 == 0);
    const ShownLight dark = at(time + 7, {});
    EXPECT_EQ(dark.emission.screen, Levels{});
    EXPECT_FALSE(dark.emission.torch);
  }
}

TEST_F(FlashLimiterTest, StopsARiseJustBelowTheThreshold) {
  flashThreeTimes(0);
  double brightest = 0;
  for (int step = 1; step <= 60; ++step) {
    const double level = step / 60.0;
    const ShownLight shown = at(300 + step * 8, {level, level, level});
    brightest = screenLight(shown.emission).luminance();
    EXPECT_LT(brightest, 0.1);
  }
  EXPECT_GT(brightest, 0.08);
}

TEST_F(FlashLimiterTest, CountsTheBacklightAsLight) {
  for (int flash = 0; flash < 3; ++flash) {
    EXPECT_TRUE(at(flash * 100, kWhiteScreen, false, 1).isAsWanted);
    EXPECT_TRUE(at(flash * 100 + 50, kWhiteScreen, false, 0.1).isAsWanted);
  }
  const ShownLight held = at(300, kWhiteScreen, false, 1);
  EXPECT_EQ(held.emission.backlight, 0.1);
  EXPECT_EQ(held.emission.screen, kWhiteScreen);
}

TEST_F(FlashLimiterTest, LeavesAColourAloneThatHidesNoFlash) {
  // Equally bright, and neither of them red.
  for (int step = 0; step < 100; ++step) {
    EXPECT_TRUE(isShown(step * 20, step % 2 == 0 ? kGreyScreen : Levels{0, 0.545, 0}));
  }
}

TEST_F(FlashLimiterTest, HoldsARedThatIsNoBrighterThanWhatItFlashesWith) {
  int held = 0;
  for (int step = 0; step < 20; ++step) {
    if (!isShown(step * 50, step % 2 == 0 ? kGreyScreen : kRedScreen)) ++held;
  }
  EXPECT_GE(held, 6);
}

TEST_F(FlashLimiterTest, HasOneAccountForScreenAndTorch) {
  flashThreeTimes(0);
  EXPECT_FALSE(at(400, {}, true).emission.torch);
  EXPECT_TRUE(at(1001, {}, true).emission.torch);
}

TEST_F(FlashLimiterTest, KeepsTheScreenOfAPhoneWhoseTorchIsLit) {
  at(0, {}, true);
  int shown = 0;
  for (int step = 1; step <= 40; ++step) {
    const ShownLight light = at(step * 25, step % 2 == 0 ? Levels{} : kWhiteScreen, true);
    EXPECT_TRUE(light.emission.torch);
    if (light.emission.screen == kWhiteScreen) ++shown;
  }
  EXPECT_EQ(shown, 3);
}

TEST_F(FlashLimiterTest, PutsAScreenOutThatIsOnItsWayToBlackAndMayNotGoThere) {
  // Red has been to and fro three times, and the screen is white.
  for (int flash = 0; flash < 3; ++flash) {
    at(flash * 100, kRedScreen);
    at(flash * 100 + 50, kGreyScreen);
  }
  const ShownLight held = at(300, kRedScreen);
  EXPECT_EQ(held.emission.screen, kGreyScreen);
  const ShownLight fading = limiter.decide({{{0.4, 0, 0}, 1, false}, true}, milliseconds(310));
  EXPECT_EQ(fading.emission.screen, Levels{});
  EXPECT_EQ(fading.screen, ShownScreen::dark);
}

TEST_F(FlashLimiterTest, AClockThatJumpsBackOpensNothing) {
  flashThreeTimes(5000);
  EXPECT_FALSE(isShown(100, kWhiteScreen));
  EXPECT_FALSE(isShown(850, kWhiteScreen));
  EXPECT_TRUE(isShown(851, kWhiteScreen));
}

TEST_F(FlashLimiterTest, DoesNotMindHowOftenItIsAsked) {
  FlashLimiter rare{Emission{{}, 1, false}};
  flashThreeTimes(0);
  for (int flash = 0; flash < 3; ++flash) {
    rare.decide({{kWhiteScreen, 1, false}, false}, milliseconds(flash * 100));
    rare.decide({{{}, 1, false}, false}, milliseconds(flash * 100 + 50));
  }
  for (int time = 300; time <= 1000; ++time) EXPECT_FALSE(isShown(time, kWhiteScreen));
  EXPECT_TRUE(isShown(1001, kWhiteScreen));
  EXPECT_TRUE(rare.decide({{kWhiteScreen, 1, false}, false}, milliseconds(1001)).isAsWanted);
}

}  // namespace
}  // namespace halvora
