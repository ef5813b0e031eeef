// SPDX-License-Identifier: Apache-2.0
#include "light/random_number.h"

#include <set>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/standard/seeded_random.h"
#include "adapters/virtual/virtual_devices.h"

namespace halvora {
namespace {

using Rule = ScriptedRandom::Rule;

TEST(RandomNumber, From0To300CanBe0And300) {
  ScriptedRandom least(Rule::least);
  ScriptedRandom greatest(Rule::greatest);
  EXPECT_EQ(randomNumberBetween(least, 0, 300), 0);
  EXPECT_EQ(randomNumberBetween(greatest, 0, 300), 300);
  EXPECT_EQ(greatest.log.entries, std::vector<std::uint32_t>{301});
}

TEST(RandomNumber, BothBoundsAreIncluded) {
  ScriptedRandom least(Rule::least);
  ScriptedRandom greatest(Rule::greatest);
  EXPECT_EQ(randomNumberBetween(least, 200, 500), 200);
  EXPECT_EQ(randomNumberBetween(greatest, 200, 500), 500);
}

TEST(RandomNumber, OfOneNumberIsThatNumber) {
  ScriptedRandom random(Rule::greatest);
  EXPECT_EQ(randomNumberBetween(random, 7, 7), 7);
}

TEST(RandomNumber, NegativeBoundsWorkInUnsignedArithmetic) {
  ScriptedRandom least(Rule::least);
  ScriptedRandom greatest(Rule::greatest);
  EXPECT_EQ(randomNumberBetween(least, -3, 2), -3);
  EXPECT_EQ(randomNumberBetween(greatest, -3, 2), 2);
}

TEST(RandomNumber, AWholeWidthOfBoundsWrapsToADrawOfNothing) {
  ScriptedRandom random(Rule::greatest);
  EXPECT_EQ(randomNumberBetween(random, 0, -1), 0);
  EXPECT_EQ(random.log.entries, std::vector<std::uint32_t>{0});
}

TEST(RandomNumber, ReachesEveryNumberBetweenItsBoundsAndNoOther) {
  SeededRandom random(5);
  std::set<int> drawn;
  for (int count = 0; count < 500; ++count) drawn.insert(randomNumberBetween(random, 10, 14));
  EXPECT_EQ(drawn, (std::set<int>{10, 11, 12, 13, 14}));
}

}  // namespace
}  // namespace halvora
