// SPDX-License-Identifier: Apache-2.0
#include "venue/show/flash_meter.h"

#include <algorithm>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "tests/fuzz/flash_judge.h"

namespace halvora {
namespace {

constexpr LinearColour kDark{0, 0, 0};
constexpr LinearColour kLit{1, 1, 1};
constexpr LinearColour kRedLight{1, 0, 0};

// Between two colours, so many times a second, for three seconds.
FlashFigures flashing(int aSecond, const LinearColour& one, const LinearColour& other) {
  EyeMeter meter;
  for (int at = 0; at < 3 * 2 * aSecond; ++at) {
    meter.add(milliseconds(1000) * at / (2 * aSecond), at % 2 == 0 ? one : other);
  }
  return meter.worst();
}
int general(int aSecond, const LinearColour& one, const LinearColour& other) {
  return flashing(aSecond, one, other).general.flashes;
}
int red(int aSecond, const LinearColour& one, const LinearColour& other) {
  return flashing(aSecond, one, other).red.flashes;
}

TEST(FlashMeter, CountsPairsOfOpposingChangesInTheBusiestSecond) {
  EXPECT_EQ(general(1, kDark, kLit), 1);
  EXPECT_EQ(general(3, kDark, kLit), 3);
  EXPECT_EQ(general(10, kDark, kLit), 10);
}

TEST(FlashMeter, LooksAtTheBusiestSecondOnlyAndSaysWhenItBegins) {
  EyeMeter meter;
  Duration time{};
  bool isLit = false;
  for (const int pause : {400, 400, 400, 50, 50, 50, 50, 50, 50, 400, 400, 400}) {
    meter.add(time, isLit ? kLit : kDark);
    isLit = !isLit;
    time += milliseconds(pause);
  }
  EXPECT_EQ(meter.worst().general, (FlashFigure{4, milliseconds(800)}));
}

TEST(FlashMeter, TwoChangesThatAreASecondApartArePairedAndNoFurther) {
  for (const int apart : {1000, 1001}) {
    EyeMeter meter;
    meter.add(milliseconds(0), kDark);
    meter.add(milliseconds(100), kLit);
    meter.add(milliseconds(100 + apart), kDark);
    EXPECT_EQ(meter.worst().general.flashes, apart == 1000 ? 1 : 0) << apart;
  }
}

TEST(FlashMeter, AChangeBelowATenthIsNone) {
  EXPECT_EQ(general(5, {0.3, 0.3, 0.3}, {0.39, 0.39, 0.39}), 0);
  EXPECT_EQ(general(5, {0.3, 0.3, 0.3}, {0.4, 0.4, 0.4}), 5);
}

TEST(FlashMeter, AChangeBetweenBrightLevelsIsNone) {
  EXPECT_EQ(general(5, {0.81, 0.81, 0.81}, kLit), 0);
  EXPECT_EQ(general(5, {0.79, 0.79, 0.79}, kLit), 5);
}

TEST(FlashMeter, ASlowRiseAndFallIsOneFlashHoweverManyStepsItHas) {
  EyeMeter meter;
  for (int at = 0; at <= 100; ++at) {
    const double level = at <= 50 ? at / 50.0 : (100 - at) / 50.0;
    meter.add(milliseconds(at * 9), {level, level, level});
  }
  EXPECT_EQ(meter.worst().general.flashes, 1);
}

TEST(FlashMeter, ASteadyRiseIsNoFlash) {
  EyeMeter meter;
  for (int at = 0; at <= 50; ++at) {
    const double level = at / 50.0;
    meter.add(milliseconds(at * 9), {level, level, level});
  }
  EXPECT_EQ(meter.worst(), FlashFigures{});
}

TEST(FlashMeter, ChangesFromTheFurthestLevelSinceTheBeginning) {
  EyeMeter meter;
  int time = 0;
  for (const double level : {0.5, 0.45, 0.55, 0.45}) {
    meter.add(milliseconds(time += 100), {level, level, level});
  }
  EXPECT_EQ(meter.worst().general.flashes, 1);
}

TEST(FlashMeter, ARiseThatGoesOnBelongsToTheSecondThatItGoesOnIn) {
  // The first of eight changes is the second half of a rise that began long before.
  EyeMeter meter;
  int time = 3000;
  meter.add(milliseconds(0), kDark);
  meter.add(milliseconds(100), {0.3, 0.3, 0.3});
  for (int at = 0; at < 8; ++at) {
    meter.add(milliseconds(time += 100), at % 2 == 0 ? kLit : LinearColour{0.3, 0.3, 0.3});
  }
  EXPECT_EQ(meter.worst().general, (FlashFigure{4, milliseconds(3100)}));
}

TEST(FlashMeter, WhatWasGoneBeforeASecondIsNoPartOfIt) {
  // From dark by way of a red's own neighbour, where no red is a change from what is just before
  // it, however long ago it was dark.
  constexpr LinearColour kNeighbour{1, 0.266, 0};
  const auto firstRedAfter = [&](int pause) {
    EyeMeter meter;
    meter.add(milliseconds(0), kDark);
    meter.add(milliseconds(100), kNeighbour);
    int time = 100 + pause;
    meter.add(milliseconds(time), kRedLight);
    meter.add(milliseconds(time + 100), kDark);
    return meter.worst().red.flashes;
  };
  EXPECT_EQ(firstRedAfter(800), 1);
  EXPECT_EQ(firstRedAfter(1500), 0);
}

TEST(FlashMeter, CountsWhatEachSecondHasByItselfWhateverTheLights) {
  std::mt19937 random(11);
  const auto share = [&random] { return static_cast<double>(random() % 100'000) / 100'000; };
  int most = 0;
  for (int run = 0; run < 3000; ++run) {
    EyeMeter meter;
    std::vector<JudgedLight> lights;
    const int longest = 20 + static_cast<int>(random() % 600);
    const bool isReddish = random() % 2 == 0;
    Duration time{};
    for (int light = 0; light < 40; ++light) {
      const LinearColour colour = random() % 4 == 0 ? LinearColour{}
                                  : isReddish ? LinearColour{share(), share() * 0.4, share() * 0.4}
                                              : LinearColour{share(), share(), share()};
      lights.push_back({time, {colour, false}});
      meter.add(time, colour);
      time += milliseconds(1 + static_cast<int>(random() % static_cast<unsigned>(longest)));
    }
    const JudgedFlashes judged = judge(lights);
    ASSERT_EQ(meter.worst().general.flashes, judged.general) << run;
    ASSERT_EQ(meter.worst().red.flashes, judged.red) << run;
    most = std::max({most, judged.general, judged.red});
  }
  EXPECT_GT(most, 10);
}

TEST(FlashMeter, OfMoreLightsThanItKeepsItCountsTheLast) {
  EyeMeter meter;
  for (int at = 0; at < 4000; ++at) meter.add(Duration{at}, at % 2 == 0 ? kDark : kLit);
  EXPECT_EQ(meter.worst().general.flashes, static_cast<int>(EyeMeter::kMostLights) / 2 - 1);
}

TEST(FlashMeter, SaturatedRedIsCountedApart) {
  EXPECT_EQ(red(4, kDark, kRedLight), 4);
  // Red's own luminance is a fifth of white's.
  EXPECT_EQ(general(4, kDark, kRedLight), 4);
  EXPECT_EQ(red(4, kDark, kLit), 0);
  EXPECT_EQ(red(4, kDark, {0, 0, 1}), 0);
  EXPECT_EQ(general(4, kDark, {0, 0, 1}), 0);
}

TEST(FlashMeter, RedIsRedHoweverDimUnlessTheEyeIsSaidToMissIt) {
  EXPECT_EQ(red(4, kDark, {0.002, 0, 0}), 4);
  EXPECT_EQ(general(4, kDark, {0.002, 0, 0}), 0);
  EyeMeter dull(0.0005);
  for (int at = 0; at < 10; ++at) {
    dull.add(milliseconds(at * 50), at % 2 == 0 ? kDark : LinearColour{0.002, 0, 0});
  }
  EXPECT_EQ(dull.worst(), FlashFigures{});
}

TEST(FlashMeter, RedAgainstWhatIsAsBrightIsARedFlashOnly) {
  const LinearColour grey{0.2126, 0.2126, 0.2126};
  EXPECT_EQ(red(4, grey, kRedLight), 4);
  EXPECT_EQ(general(4, grey, kRedLight), 0);
}

TEST(FlashMeter, RedAgainstItsNeighbourIsNone) {
  // R/(R+G+B) of 0.79 and 0.81, next to each other in the diagram.
  EXPECT_EQ(red(4, {1, 0.266, 0}, {1, 0.234, 0}), 0);
}

TEST(PhoneMeter, ALitTorchIsWhite) {
  PhoneMeter meter;
  for (int at = 0; at < 16; ++at) meter.add(milliseconds(at * 100), {{}, at % 2 == 1});
  EXPECT_EQ(meter.worst().general.flashes, 5);
  EXPECT_EQ(meter.worst().red.flashes, 0);
}

TEST(PhoneMeter, NeitherHidesBehindTheOther) {
  PhoneMeter screen;
  PhoneMeter torch;
  for (int at = 0; at < 40; ++at) {
    const bool isOn = at % 2 == 1;
    screen.add(milliseconds(at * 50), {isOn ? kLit : kDark, true});
    torch.add(milliseconds(at * 50), {kLit, isOn});
  }
  EXPECT_EQ(screen.worst().general.flashes, 10);
  EXPECT_EQ(torch.worst().general.flashes, 10);
}

TEST(PhoneMeter, BothTogetherFlashMoreThanEitherAlone) {
  PhoneMeter meter;
  for (int at = 0; at < 8; ++at) {
    const Duration time = milliseconds(at * 240);
    meter.add(time, {kLit, false});
    meter.add(time + milliseconds(60), {kDark, false});
    meter.add(time + milliseconds(120), {kDark, true});
    meter.add(time + milliseconds(180), {kDark, false});
  }
  EXPECT_EQ(meter.worst().general.flashes, 8);
}

TEST(FlashCurve, SaysOfEachMomentTheWorstSecondAroundIt) {
  EyeMeter meter;
  FlashCurve curve;
  for (int at = 0; at < 8; ++at) {
    meter.add(milliseconds(2000 + at * 50), at % 2 == 0 ? kDark : kLit, &curve);
  }
  const auto& points = curve.points();
  ASSERT_EQ(points.size(), 24U);
  EXPECT_EQ(points[19].general, 0);
  EXPECT_EQ(points[20].general, 3);
  EXPECT_EQ(points[23].general, 3);
}

TEST(FlashFigures, TheWorseOfTwoIsTaken) {
  FlashFigures one{{3, milliseconds(500)}, {0, {}}};
  one.take({{3, milliseconds(200)}, {2, milliseconds(900)}});
  EXPECT_EQ(one.general, (FlashFigure{3, milliseconds(200)}));
  EXPECT_EQ(one.red, (FlashFigure{2, milliseconds(900)}));
  EXPECT_EQ(one.at(), milliseconds(200));
  EXPECT_TRUE(one.areHarmless());
  one.take({{}, {4, milliseconds(900)}});
  EXPECT_FALSE(one.areHarmless());
  EXPECT_EQ(one.at(), milliseconds(900));
}

TEST(RelativeLuminance, WeighsTheChannels) {
  EXPECT_DOUBLE_EQ(relativeLuminance(kLit), 1);
  EXPECT_DOUBLE_EQ(relativeLuminance({1, 0, 0}), 0.2126);
  EXPECT_DOUBLE_EQ(relativeLuminance({0, 1, 0}), 0.7152);
  EXPECT_DOUBLE_EQ(relativeLuminance({0, 0, 1}), 0.0722);
}

}  // namespace
}  // namespace halvora
