// SPDX-License-Identifier: Apache-2.0
// A phone that never comes to rest ends the simulation instead of going on for ever.
#include <optional>

#include <gtest/gtest.h>

#include "halvora/platform/absent.h"
#include "tests/venue/crowd/crowd_bench.h"
#include "venue/crowd/crowd.h"

namespace halvora {
namespace {

// Each start has timers of its own, and those of so many fall due at one instant.
constexpr double kStarts = 400'000;

bool runsWith(double starts) {
  CrowdBench bench;
  const std::vector<CrowdSeat> seats = CrowdBench::rowOf(1);
  const CrowdParts parts = bench.parts();
  Scenario scenario;
  // Within the half microsecond that is rounded to no time.
  scenario.lines.push_back({1, StartAction{}, 0, 0.49e-6 / starts, 0.49e-6});
  const std::optional<Air> air = Air::of(scenario, {}, milliseconds(3000));
  const VenueTables tables{std::span<const SeatPosition>()};
  const PixelMapAssets assets(bench.bundles, absent::videoAssets(), absent::images());
  Crowd crowd({parts, seats, scenario, *air, tables, assets, bench.workers},
              {.end = milliseconds(3000)});
  bool isGood = true;
  while (isGood && !crowd.isOver()) isGood = crowd.run();
  return isGood;
}

TEST(RestlessCrowd, IsGivenUp) { EXPECT_FALSE(runsWith(kStarts)); }

TEST(RestlessCrowd, APhoneWithMuchToDoIsNot) { EXPECT_TRUE(runsWith(1000)); }

}  // namespace
}  // namespace halvora
