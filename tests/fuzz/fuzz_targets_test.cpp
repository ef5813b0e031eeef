// SPDX-License-Identifier: Apache-2.0
// Every kept input of every fuzz target, and some thousand random ones: what was once found stays
// mended, and a target that is broken by a change is seen at once. `./fuzz` looks further.
#include <algorithm>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "engine/broadcast.h"
#include "tests/fuzz/judged_packets.h"
#include "tests/fuzz/kept_inputs.h"
#include "tests/support/source_tree.h"

namespace halvora {
namespace {

std::string fuzzFolder() { return sourceTree() + "/tests/fuzz"; }

class FuzzTargets : public testing::TestWithParam<FuzzTarget> {
 protected:
  static void expectGood(FuzzBytes bytes, const std::string& what) {
    try {
      EXPECT_EQ(GetParam().run(bytes), 0) << what;
    } catch (const FuzzFailure& failure) {
      ADD_FAILURE() << what << ": not so: " << failure.what() << "\n"
                    << NSDataToHex(bytes.first(std::min<std::size_t>(bytes.size(), 400)));
    }
  }
};

TEST_P(FuzzTargets, KeptInputsAreGood) {
  const auto inputs = keptInputsOf(GetParam(), fuzzFolder());
  EXPECT_FALSE(inputs.empty()) << "no seeds in tests/fuzz/seeds/" << GetParam().name;
  for (const KeptInput& input : inputs) expectGood(input.bytes, input.name);
}

TEST_P(FuzzTargets, RandomInputsAreGood) {
  Mutator mutator = mutatorOf(GetParam(), fuzzFolder(), 1);
  for (int run = 0; run < GetParam().testRuns && !HasFailure(); ++run) {
    expectGood(mutator.next(), "random input " + std::to_string(run));
  }
}

INSTANTIATE_TEST_SUITE_P(All, FuzzTargets,
                         testing::ValuesIn(fuzzTargets().begin(), fuzzTargets().end()),
                         [](const auto& instance) { return std::string(instance.param.name); });

// With a list of allowed transmitters and without.
TEST(FuzzPackets, AreJudgedByTheRules) {
  for (const std::uint64_t seed : {1U, 2U}) EXPECT_GT(judgePackets(200'000, seed), 100U);
}

TEST(FuzzWords, AreThereForEachTargetThatNamesThem) {
  for (const FuzzTarget& target : fuzzTargets()) {
    EXPECT_EQ(wordsOf(target, fuzzFolder()).empty(), target.words == nullptr) << target.name;
  }
}

TEST(FuzzMutator, GivesTheSameInputsForASeedAndKeepsToTheLength) {
  const std::vector<Mutator::Input> kept = {{1, 2, 3}, Mutator::Input(100, 7)};
  Mutator one(5, kept, {"word"}, 50);
  Mutator other(5, kept, {"word"}, 50);
  std::set<Mutator::Input> seen;
  for (int run = 0; run < 1000; ++run) {
    const FuzzBytes input = one.next();
    ASSERT_TRUE(std::ranges::equal(input, other.next()));
    ASSERT_LE(input.size(), 50U);
    seen.emplace(input.begin(), input.end());
  }
  EXPECT_GT(seen.size(), 700U);
}

}  // namespace
}  // namespace halvora
