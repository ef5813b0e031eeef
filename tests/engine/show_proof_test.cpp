// SPDX-License-Identifier: Apache-2.0
// What an engine that has the show's key obeys.
#include <algorithm>
#include <array>
#include <cstdint>
#include <random>
#include <span>
#include <vector>

#include <gtest/gtest.h>

#include "engine/air_gate.h"
#include "tests/engine/air_bench.h"

namespace halvora {
namespace {

using B = Broadcast;

TEST(RequiredProof, OnlyWhatIsSignedForThisShowIsObeyed) {
  AirBench bench(signedAir(Authentication::require));
  bench.hear(trueLook(1, 3));
  bench.hearSigned(trueLook(1, 3), 0, 2);
  EXPECT_EQ(bench.mode(), 0U);
  EXPECT_EQ(bench.doubts(AirDoubt::untagged), 1U);
  EXPECT_EQ(bench.doubts(AirDoubt::badTag), 1U);
  EXPECT_FALSE(bench.engine().isInsideVenue());
  bench.hearSigned(trueLook(1, 3));
  EXPECT_EQ(bench.mode(), 3U);
  EXPECT_EQ(bench.trust(), AirTrust::trusted);
  EXPECT_EQ(bench.air().goodTags, 1U);
}

TEST(RequiredProof, TakesItsOwnMinuteAndTheOneOnEitherSide) {
  for (int minutes = -3; minutes <= 3; ++minutes) {
    AirBench bench(signedAir(Authentication::require));
    bench.hearSigned(trueLook(1, 3), minutes);
    EXPECT_EQ(bench.mode() == 3, minutes >= -1 && minutes <= 1) << minutes;
  }
}

TEST(RequiredProof, AReplayDiesWithinTwoMinutes) {
  // The clock stands at a whole minute: the packet is as young in it as it can be, or as old.
  for (const int second : {2, 30, 59}) {
    AirBench bench(signedAir(Authentication::require));
    bench.runTo(second * 1000);
    const auto recorded = bench.signedData(trueLook(5, 9));
    bench.runFor(120'000);
    bench.hear(recorded);
    EXPECT_EQ(bench.mode(), 0U) << second;
    EXPECT_EQ(bench.doubts(AirDoubt::badTag), 1U) << second;
  }
}

TEST(RequiredProof, AReplayWithinThemCannotGoBack) {
  AirBench bench(signedAir(Authentication::require));
  const auto recorded = bench.signedData(trueLook(5, 9));
  bench.hearSigned(trueLook(6, 3));
  bench.hear(recorded);
  bench.runFor(4000);
  bench.hear(recorded);
  EXPECT_EQ(bench.mode(), 3U);
  EXPECT_EQ(bench.doubts(AirDoubt::replayed), 2U);
  bench.hearSigned(trueLook(7, 4));
  EXPECT_EQ(bench.mode(), 4U);
  bench.runFor(10'000);
  bench.hear(recorded);
  EXPECT_EQ(bench.mode(), 0U) << "nor once the show was dropped";
}

TEST(RequiredProof, AShowThatWasOutOfReachIsShownUnderTheSameNumber) {
  AirBench bench(signedAir(Authentication::require));
  bench.hearSigned(trueLook(6, 3));
  bench.runFor(10'000);
  ASSERT_EQ(bench.mode(), 0U) << "dropped";
  bench.hearSigned(trueLook(6, 3));
  EXPECT_EQ(bench.mode(), 3U);
}

TEST(RequiredProof, TheFirstGoodPacketSetsTheOrder) {
  AirBench bench(signedAir(Authentication::prefer));
  bench.hear(trueLook(60000, 9));
  EXPECT_EQ(bench.mode(), 9U) << "nothing is proven yet";
  bench.hearSigned(trueLook(5, 3));
  EXPECT_EQ(bench.mode(), 3U);
  bench.hearSigned(trueLook(6, 4));
  EXPECT_EQ(bench.mode(), 4U);
}

TEST(RequiredProof, AShowBegunAnewIsFollowedInItsNextMinute) {
  AirBench bench(signedAir(Authentication::require));
  bench.hearSigned(trueLook(500, 3));
  bench.hearSigned(trueLook(1, 4));
  EXPECT_EQ(bench.mode(), 3U) << "as a replay would be";
  bench.runFor(5000);
  bench.hearSigned(trueLook(1, 4), 1);
  EXPECT_EQ(bench.mode(), 4U);
}

TEST(RequiredProof, TransmittersAPacketApartAsTheMinuteChangesDoNotTakeItBack) {
  AirBench bench(signedAir(Authentication::require));
  bench.hearSigned(trueLook(10, 3));
  bench.hearSigned(trueLook(9, 4, {{&B::transmitter, 8}}), 1);
  EXPECT_EQ(bench.mode(), 3U);
}

TEST(RequiredProof, WithoutAKeyNothingIsObeyed) {
  AirOptions options = signedAir(Authentication::require);
  options.showKey.reset();
  AirBench bench(options);
  bench.hearSigned(trueLook(1, 3));
  EXPECT_EQ(bench.mode(), 0U);
}

TEST(PreferredProof, WhatHasNoneIsObeyedUntilSomethingHas) {
  AirBench bench(signedAir(Authentication::prefer));
  bench.hear(trueLook(1, 3));
  EXPECT_EQ(bench.mode(), 3U);
  bench.hearSigned(trueLook(2, 4), 0, 2);
  EXPECT_EQ(bench.mode(), 4U) << "to a phone whose clock is wrong all tags are bad";
  EXPECT_EQ(bench.trust(), AirTrust::unproven);
  bench.hearSigned(trueLook(3, 5));
  EXPECT_EQ(bench.mode(), 5U);
  EXPECT_EQ(bench.trust(), AirTrust::trusted);
  bench.hear(trueLook(4, 6));
  bench.hearSigned(trueLook(4, 6), 0, 2);
  EXPECT_EQ(bench.mode(), 5U);
}

TEST(PreferredProof, IsForgottenAfterTenSeconds) {
  AirBench bench(signedAir(Authentication::prefer));
  bench.hearSigned(trueLook(3, 5));
  // Presence is not what this is about.
  const auto recorded = bench.signedData(trueLook(2, 9));
  bench.runFor(6000);
  bench.hear(recorded);
  bench.runFor(3900);
  bench.hear(trueLook(4, 6));
  EXPECT_EQ(bench.mode() == 6, false) << "9.9 s";
  bench.runFor(200);
  bench.hear(trueLook(4, 6));
  EXPECT_EQ(bench.mode(), 6U) << "10.1 s, whatever was replayed meanwhile";
}

TEST(PreferredProof, IsProofInGuardedAirToo) {
  AirBench bench(signedAir(Authentication::prefer, AirPolicy::guarded));
  bench.repeat(trueLook(500, 9), 4000);
  bench.hearSigned(trueLook(30000, 3));
  EXPECT_EQ(bench.mode(), 3U) << "whatever the guard thinks of the step";
  bench.hear(trueLook(30001, 4));
  EXPECT_EQ(bench.mode(), 3U) << "nor does it matter what the guard had learnt";
}

/// Garbage of a signed packet's length, under the show's own key, so many a second.
class Flood : public testing::Test {
 protected:
  void flood(int count) {
    for (int at = 0; at < count; ++at) {
      auto data = bench_.signedData(trueLook(static_cast<int>(chance_() % 65536), 9), 0, 2);
      data[7] = static_cast<std::uint8_t>(chance_());
      bench_.hear(data);
    }
  }

  std::mt19937 chance_{1};
  AirBench bench_{signedAir(Authentication::require)};
};

TEST_F(Flood, ANewLookNeedsTwoGoodTagsOfDifferentNumbers) {
  bench_.hearSigned(trueLook(1, 3));
  EXPECT_EQ(bench_.mode(), 3U);
  flood(11);
  bench_.hearSigned(trueLook(2, 4));
  EXPECT_EQ(bench_.mode(), 3U);
  EXPECT_EQ(bench_.doubts(AirDoubt::unconfirmed), 1U);
  bench_.hearSigned(trueLook(2, 4));
  EXPECT_EQ(bench_.mode(), 3U) << "the same number again is no second one";
  bench_.hearSigned(trueLook(3, 4));
  EXPECT_EQ(bench_.mode(), 4U);
}

TEST_F(Flood, TenASecondAreNone) {
  flood(10);
  bench_.hearSigned(trueLook(2, 4));
  EXPECT_EQ(bench_.mode(), 4U);
}

TEST_F(Flood, EachSecondIsCountedByItself) {
  flood(6);
  bench_.runFor(1000);
  flood(6);
  bench_.hearSigned(trueLook(2, 4));
  EXPECT_EQ(bench_.mode(), 4U) << "six in each of two seconds are none";
}

TEST_F(Flood, GoesOnForTheSecondAfterIt) {
  bench_.hearSigned(trueLook(1, 3));
  flood(11);
  bench_.runFor(1000);
  flood(1);
  bench_.hearSigned(trueLook(2, 4));
  EXPECT_EQ(bench_.mode(), 3U);
  EXPECT_EQ(bench_.doubts(AirDoubt::unconfirmed), 1U);
}

TEST_F(Flood, IsOverTwoSecondsAfterItsLast) {
  flood(100);
  bench_.runFor(2000);
  bench_.hearSigned(trueLook(2, 4));
  EXPECT_EQ(bench_.mode(), 4U);
}

TEST_F(Flood, NeverShutsOutAShowThatRaisesItsNumbers) {
  int sequence = 0;
  for (int round = 0; round < 100; ++round) {
    flood(100);
    const int mode = 3 + round / 5 % 2;
    bench_.hearSigned(trueLook(++sequence, mode));
    bench_.runFor(100);
    if (round % 5 >= 1) {
      EXPECT_EQ(bench_.mode(), static_cast<unsigned>(mode)) << round;
    }
  }
}

TEST_F(Flood, NeverShutsOutAShowThatRepeatsItsNumbers) {
  for (int sequence = 1; sequence < 10; ++sequence) {
    const unsigned mode = 3U + static_cast<unsigned>(sequence % 2);
    long long shown = 0;
    for (int round = 0; round < 30; ++round) {
      flood(50);
      bench_.hearSigned(trueLook(sequence, static_cast<int>(mode)));
      if (shown == 0 && bench_.mode() == mode) shown = round;
      bench_.runFor(100);
    }
    EXPECT_EQ(bench_.mode(), mode) << sequence;
    EXPECT_LE(shown, 11) << sequence;
  }
}

// By chance one tag in 2^24 is good. That one must not take the show away.
TEST_F(Flood, AGoodTagByChanceIsNotObeyed) {
  bench_.hearSigned(trueLook(1, 3));
  flood(50);
  bench_.hearSigned(trueLook(30000, 9));
  EXPECT_EQ(bench_.mode(), 3U);
  for (int sequence = 2; sequence < 12; ++sequence) {
    flood(50);
    bench_.hearSigned(trueLook(sequence, 4));
    bench_.runFor(100);
  }
  EXPECT_EQ(bench_.mode(), 4U);
}

// Whoever measures how long a phone takes must not learn how much of a tag was right.
TEST(ShowProof, ABadTagCostsTheSameWhereverItDiffers) {
  AirBench bench(signedAir(Authentication::require));
  for (std::size_t byte = 0; byte < kTagSize; ++byte) {
    for (int bit = 0; bit < 8; ++bit) {
      auto data = bench.signedData(trueLook(1, 3));
      data[kTagOffset + byte] ^= static_cast<std::uint8_t>(1 << bit);
      bench.codes.asked = 0;
      bench.hear(data);
      EXPECT_EQ(bench.codes.asked, 3U) << "one of each minute, at byte " << byte;
    }
  }
  EXPECT_EQ(bench.doubts(AirDoubt::badTag), 24U);
  EXPECT_EQ(bench.mode(), 0U);
}

/// Whether those bytes stand anywhere in an object.
template <class Object>
bool holds(const Object& object, std::span<const std::uint8_t> bytes) {
  const auto* const begin = reinterpret_cast<const std::uint8_t*>(&object);
  const std::span<const std::uint8_t> room(begin, sizeof(Object));
  return !std::ranges::search(room, bytes).empty();
}

// The cipher has it, by which it is checked; nothing else keeps a copy.
TEST(ShowProof, NothingOfTheEngineKeepsTheKey) {
  std::array<std::uint8_t, ShowKey::kSize> bytes{};
  for (std::size_t at = 0; at < bytes.size(); ++at)
    bytes[at] = static_cast<std::uint8_t>(0xA0 + at);
  const AirOptions options{.policy = AirPolicy::guarded,
                           .authentication = Authentication::require,
                           .showKey = ShowKey(bytes)};
  ASSERT_TRUE(holds(options, bytes)) << "as the host hands it over";
  const PlainCodes codes;
  const auto gate = makeAirGate(options, codes);
  EXPECT_FALSE(holds(*gate, bytes));
  AirBench bench(options);
  EXPECT_FALSE(holds(bench.engine(), bytes));
  EXPECT_FALSE(holds(bench.engine().scanner(), bytes));
}

TEST(ShowProof, ChecksAPacketThatIsRepeatedOnce) {
  AirBench bench(signedAir(Authentication::require));
  bench.hearSigned(trueLook(1, 3));
  const auto data = bench.signedData(trueLook(1, 3));
  bench.codes.asked = 0;
  for (int again = 0; again < 100; ++again) bench.hear(data);
  EXPECT_EQ(bench.codes.asked, 0U);
  EXPECT_EQ(bench.air().goodTags, 101U);
}

}  // namespace
}  // namespace halvora
