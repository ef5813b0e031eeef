// SPDX-License-Identifier: Apache-2.0
// The limiter at the edges of what can be told apart: reds that are hardly there, and wishes that
// follow each other within a millisecond.
#include <cmath>
#include <cstdint>
#include <random>

#include <gtest/gtest.h>

#include "light/flash_limiter.h"
#include "venue/show/flash_meter.h"

namespace halvora {
namespace {

PhoneLight lightOf(const Emission& emission) {
  const LinearLight light = screenLight(emission);
  return {{light.red, light.green, light.blue}, emission.torch};
}

struct FlashEdges : testing::Test {
  double share() { return static_cast<double>(random() % 1'000'001) / 1'000'000; }
  // A red of any depth beside a colour of any depth, or nothing.
  Levels dim() {
    const double depth = std::pow(10.0, -6 * share());
    switch (random() % 4) {
      case 0:
        return {};
      case 1:
        return {depth, 0, 0};
      case 2:
        return {depth, depth * share(), 0};
      default:
        return {depth * share(), depth * share(), depth * share()};
    }
  }
  /// Wishes for so long, each that long after the one before; what comes out to a meter.
  FlashFigures worst(int wishes, Duration longest, bool isDim) {
    FlashLimiter limiter{Emission{{}, 1, false}};
    PhoneMeter meter;
    Duration now{};
    for (int wish = 0; wish < wishes; ++wish) {
      const Levels bright{share(), share(), share()};
      const Levels screen = isDim ? dim() : random() % 2 == 0 ? Levels{} : bright;
      const Emission wanted{screen, 1, !isDim && random() % 3 == 0};
      const ShownLight shown = limiter.decide({wanted, false}, now);
      if (!shown.isAsWanted) ++held;
      if (screenLight(wanted).isDark()) {
        EXPECT_TRUE(screenLight(shown.emission).isDark());
      }
      meter.add(now, lightOf(shown.emission));
      now += Duration{
          1 + static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(longest.count()))};
    }
    return meter.worst();
  }

  std::mt19937_64 random{7};
  int held = 0;
};

// No level is so low that a red there is none: the rule knows no least luminance, and neither does
// the limiter.
TEST_F(FlashEdges, ARedIsARedHoweverDark) {
  for (int run = 0; run < 400; ++run) {
    const FlashFigures figures = worst(60, milliseconds(160), true);
    ASSERT_TRUE(figures.areHarmless()) << run << ": " << figures.red.flashes;
  }
  EXPECT_GT(held, 1000);
  FlashLimiter limiter{Emission{{}, 1, false}};
  int shown = 0;
  for (int flash = 0; flash < 10; ++flash) {
    const Emission red{{0.0002, 0, 0}, 0.01, false};
    if (limiter.decide({red, false}, milliseconds(flash * 100)).emission == red) ++shown;
    limiter.decide({Emission{{}, 0.01, false}, false}, milliseconds(flash * 100 + 50));
  }
  EXPECT_EQ(shown, 3);
}

// To the microsecond, which is what the loop's clock tells.
TEST_F(FlashEdges, WishesWithinAMillisecondKeepThePromise) {
  for (int run = 0; run < 60; ++run) {
    const FlashFigures figures = worst(6000, milliseconds(1), false);
    ASSERT_TRUE(figures.areHarmless()) << run << ": " << figures.general.flashes;
  }
  for (int run = 0; run < 400; ++run) {
    const FlashFigures figures = worst(100, milliseconds(200), false);
    ASSERT_TRUE(figures.areHarmless()) << run << ": " << figures.general.flashes;
  }
  EXPECT_GT(held, 1000);
}

}  // namespace
}  // namespace halvora
