// SPDX-License-Identifier: Apache-2.0
#include "pixelmap/seat_lut_cache.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/pixelmap/seat_lut_bench.h"

namespace halvora {
namespace {

using testing::ElementsAre;

/// The keys 1 to `count` stored in that order, each with its number as a table.
void fill(SeatLutCache& cache, std::uint32_t count) {
  for (std::uint32_t key = 1; key <= count; ++key) cache.store(std::to_string(key), lutOf({key}));
}

/// The keys of 1 to 9 that are there. Asking changes what is evicted next.
std::vector<int> keysIn(SeatLutCache& cache) {
  std::vector<int> keys;
  for (int key = 1; key <= 9; ++key) {
    if (cache.find(std::to_string(key))) keys.push_back(key);
  }
  return keys;
}

TEST(SeatLutCache, GivesBackWhatWasStoredLast) {
  SeatLutCache cache;
  EXPECT_EQ(cache.find("1"), nullptr);
  const SeatLut first = lutOf({1});
  cache.store("1", first);
  EXPECT_EQ(cache.find("1"), first);
  EXPECT_EQ(cache.find("11"), nullptr);
  const SeatLut second = lutOf({2});
  cache.store("1", second);
  EXPECT_EQ(cache.find("1"), second);
}

TEST(SeatLutCache, HoldsEight) {
  SeatLutCache cache;
  fill(cache, 8);
  EXPECT_THAT(keysIn(cache), ElementsAre(1, 2, 3, 4, 5, 6, 7, 8));
}

TEST(SeatLutCache, NinthPushesOutTheOldest) {
  SeatLutCache cache;
  fill(cache, 9);
  EXPECT_THAT(keysIn(cache), ElementsAre(2, 3, 4, 5, 6, 7, 8, 9));
}

TEST(SeatLutCache, NinthPushesOutTheOneNotUsedForLongest) {
  SeatLutCache cache;
  fill(cache, 8);
  cache.find("1");
  cache.store("2", lutOf({22}));
  cache.store("9", lutOf({9}));
  EXPECT_THAT(keysIn(cache), ElementsAre(1, 2, 4, 5, 6, 7, 8, 9));
}

TEST(SeatLutCache, StoringAnewPushesNothingOut) {
  SeatLutCache cache;
  fill(cache, 8);
  cache.store("5", lutOf({55}));
  EXPECT_THAT(keysIn(cache), ElementsAre(1, 2, 3, 4, 5, 6, 7, 8));
}

TEST(SeatLutCache, WhoeverHoldsATableKeepsIt) {
  SeatLutCache cache;
  fill(cache, 1);
  const SeatLut held = cache.find("1");
  fill(cache, 9);
  cache.clear();
  EXPECT_EQ(wordsOf(held), Words{1});
}

TEST(SeatLutCache, ClearingForgetsAll) {
  SeatLutCache cache;
  fill(cache, 8);
  cache.clear();
  EXPECT_THAT(keysIn(cache), ElementsAre());
  fill(cache, 8);
  EXPECT_EQ(keysIn(cache).size(), 8U);
}

}  // namespace
}  // namespace halvora
