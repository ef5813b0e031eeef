// SPDX-License-Identifier: Apache-2.0
// Tables that a process with many engines holds ready for all of them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/pixelmap/pixel_map_bench.h"

namespace halvora {
namespace {

using testing::ElementsAre;

const Words kReady{0xFF00FF00, 0xFF0000FF};
constexpr Colour kGreen{0, 1, 0, 1};

struct ReadyTables : testing::Test {
  PixelMapBench bench;
  void makeReady(const std::string& map) {
    bench.ready.tables[PixelMapBench::keyOf(map)] = lutOf(kReady);
  }
};

TEST_F(ReadyTables, AreInForceAtOnceWithNothingDecodedAndNothingStored) {
  bench.putMap("5", {0xFFFF0000});
  makeReady("5");
  bench.preload(5);
  bench.settle();
  EXPECT_EQ(bench.colour(0), kGreen);
  EXPECT_EQ(bench.state().pixelMapSeatLUTFrameCount, 2);
  EXPECT_EQ(bench.opens(), 0);
  EXPECT_FALSE(bench.isSaved("5"));
}

TEST_F(ReadyTables, ComeBeforeThoseOnDisk) {
  bench.putMapWithTable("5", {0xFFFF0000});
  makeReady("5");
  bench.preload(5);
  EXPECT_EQ(wordsOf(bench.state().pixelMapSeatLUTActiveData), kReady);
}

TEST_F(ReadyTables, OfOtherSeatsAndMapsChangeNothing) {
  bench.putMapWithTable("5", {0xFFFF0000});
  makeReady("6");
  bench.preload(5);
  EXPECT_EQ(wordsOf(bench.state().pixelMapSeatLUTActiveData), Words{0xFFFF0000});
}

TEST_F(ReadyTables, AreNotBuiltAheadAgain) {
  bench.putMap("5", {0xFFFF0000});
  bench.putMap("6", {0xFFFF0000});
  makeReady("5");
  bench.precompute();
  bench.settle();
  EXPECT_FALSE(bench.isSaved("5"));
  EXPECT_TRUE(bench.isSaved("6"));
  EXPECT_EQ(bench.opens(), 1);
}

TEST_F(ReadyTables, MayBePartsOfOneBlock) {
  const auto block = std::make_shared<const Words>(Words{1, 2, 3, 4});
  const std::span<const std::uint32_t> part = std::span(*block).subspan(1, 2);
  SeatLut lut(part, block);
  EXPECT_EQ(block.use_count(), 2);
  EXPECT_THAT(lut.words(), ElementsAre(2, 3));
  EXPECT_EQ(lut, SeatLut(part, nullptr));
  lut = nullptr;
  EXPECT_EQ(block.use_count(), 1);
  EXPECT_FALSE(lut);
}

}  // namespace
}  // namespace halvora
