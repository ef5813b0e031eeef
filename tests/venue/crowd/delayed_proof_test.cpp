// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/delayed_proof.h"

#include <algorithm>
#include <optional>
#include <random>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/engine/engine_bench.h"
#include "tests/support/plain_codes.h"

namespace halvora {
namespace {

using Standing = DelayedProof::Standing;
using Data = std::vector<std::uint8_t>;

constexpr ChainKey kSecret = {7, 1, 2, 3};
/// More than two hours.
constexpr std::uint32_t kIntervals = 8000;

/// A show that signs, and a phone that has heard of its row's beginning.
class ProvenLater : public testing::Test {
 protected:
  static Broadcast fields(int look, int sequence, int transmitter = 7) {
    return halvora::look(1, {{&Broadcast::red, look & 255},
                             {&Broadcast::green, look >> 8 & 255},
                             {&Broadcast::sequence, sequence},
                             {&Broadcast::transmitter, transmitter}});
  }
  Data signedBy(const Broadcast& packet, std::uint32_t interval) const {
    const auto code = codeOf(chain.at(interval), codes);
    const auto data = signBroadcast(packet, interval, *code);
    return {data.begin(), data.end()};
  }
  /// What the show sends then.
  Data shown(const Broadcast& packet) const { return signedBy(packet, KeyChain::intervalAt(show)); }
  std::optional<Data> disclosed() const {
    const std::uint32_t interval = KeyChain::intervalAt(show);
    if (interval <= kChainDelay) return std::nullopt;
    return frameOf(interval - kChainDelay);
  }
  Data frameOf(std::uint32_t interval) const {
    const auto bytes = ChainFrame{258, interval, chain.at(interval), 7}.bytes();
    return {bytes.begin(), bytes.end()};
  }

  /// The phone obeys it.
  void obey(const Data& data, bool isNew = true) {
    current = data;
    proof.hold(data, isNew, phone);
  }
  /// Both clocks, of which the phone's is fast or slow.
  void pass(int time) {
    show += milliseconds(time);
    phone += Duration(static_cast<std::int64_t>(1000.0 * time * pace));
  }
  /// The show as it is, ten times a second and its key four times, of which some is not heard.
  void play(int time, const Broadcast& packet, int loss = 0) {
    for (int at = 0; at < time; at += 50, pass(50)) {
      const bool isLost = static_cast<int>(chance() % 100) < loss;
      const auto key = disclosed();
      if (at % 250 == 0 && key && !isLost) proof.hear(*key, phone);
      if (at % 100 == 50 && !isLost) obey(shown(packet), false);
    }
  }
  Standing standing() const { return proof.standingOf(current, phone); }

  PlainCodes codes;
  KeyChain chain = *KeyChain::of(kSecret, kIntervals, codes);
  Duration show{};
  Duration phone = milliseconds(123'456'789);
  double pace = 1;
  Data current;
  std::mt19937 chance{1};
  std::optional<DelayedProof> whole{std::in_place, 258, chain.anchor(), codes};
  DelayedProof& proof = *whole;
};

TEST_F(ProvenLater, AShowIsProvenAfterItsKeysWereDisclosed) {
  pass(20'300);
  play(1500, fields(1, 1));
  EXPECT_EQ(standing(), Standing::unproven) << "no key of what was heard";
  play(2500, fields(1, 1));
  EXPECT_EQ(standing(), Standing::proven);
  obey(shown(fields(2, 2)));
  EXPECT_EQ(standing(), Standing::vouched) << "a new look of the same transmitter";
  play(4000, fields(2, 2));
  EXPECT_EQ(standing(), Standing::proven);
  EXPECT_EQ(proof.counts().forged, 0U);
}

TEST_F(ProvenLater, ProofIsForgottenWhereNoMoreKeysAreHeard) {
  pass(20'000);
  play(5000, fields(1, 1));
  ASSERT_EQ(standing(), Standing::proven);
  pass(5000);
  EXPECT_EQ(standing(), Standing::unproven);
}

TEST_F(ProvenLater, WhatHasNoTagIsNeverVouchedFor) {
  pass(20'000);
  play(5000, fields(1, 1));
  const BroadcastBytes plain = encodeBroadcast(fields(66, 2));
  obey({plain.begin(), plain.end()});
  EXPECT_EQ(standing(), Standing::unproven);
  play(5000, fields(1, 1));
  EXPECT_EQ(standing(), Standing::proven) << "and changes nothing for the show";
}

TEST_F(ProvenLater, AnotherApplicationOrTransmitterIsNotVouchedFor) {
  pass(20'000);
  play(5000, fields(1, 1));
  Broadcast elsewhere = fields(66, 2);
  elsewhere.applicationId = 259;
  obey(shown(elsewhere));
  EXPECT_EQ(standing(), Standing::unproven);
  obey(shown(fields(66, 2, 8)));
  EXPECT_EQ(standing(), Standing::unproven);
}

TEST_F(ProvenLater, AForgedLookIsFoundOutOnceItsKeyIsThere) {
  pass(20'000);
  play(5000, fields(1, 1));
  Data forged = shown(fields(66, 2));
  forged[kTagOffset] ^= 1;
  obey(forged);
  EXPECT_EQ(standing(), Standing::vouched) << "nobody can know yet";
  int seconds = 0;
  for (; standing() != Standing::unproven && seconds < 20; ++seconds) {
    play(1000, fields(1, 1));
    current = forged;
  }
  EXPECT_LE(seconds, 4);
  EXPECT_EQ(proof.counts().forged, 1U);
  obey(shown(fields(3, 3)));
  EXPECT_EQ(standing(), Standing::unproven) << "its transmitter is in dispute";
  play(4000, fields(3, 3));
  EXPECT_EQ(standing(), Standing::proven) << "the true look is proven itself all the same";
  play(10'000, fields(3, 3));
  obey(shown(fields(4, 4)));
  EXPECT_EQ(standing(), Standing::vouched) << "the dispute is over";
}

TEST_F(ProvenLater, ATrueLookWithAFalseTagDisputesNothing) {
  pass(20'000);
  play(5000, fields(1, 1));
  Data forged = shown(fields(1, 1));
  forged[kTagOffset] ^= 1;
  obey(forged, false);
  play(5000, fields(1, 1));
  obey(shown(fields(2, 2)));
  EXPECT_EQ(proof.counts().forged, 1U);
  EXPECT_EQ(standing(), Standing::vouched);
}

TEST_F(ProvenLater, ADisclosedKeySignsNothingAnyMore) {
  pass(20'000);
  play(5000, fields(1, 1));
  // The newest that anybody but the show can have.
  const std::uint32_t known = KeyChain::intervalAt(show) - kChainDelay;
  obey(signedBy(fields(66, 2), known));
  play(5000, fields(1, 1));
  current = signedBy(fields(66, 2), known);
  EXPECT_EQ(standing(), Standing::unproven);
  EXPECT_EQ(proof.counts().forged, 1U);
}

TEST_F(ProvenLater, WhatWasRecordedIsFoundOut) {
  pass(20'000);
  play(1000, fields(5, 1));
  const Data recorded = shown(fields(9, 1));
  play(5000, fields(1, 2));
  obey(recorded);
  play(5000, fields(1, 2));
  current = recorded;
  EXPECT_EQ(standing(), Standing::unproven);
}

// Who comes in is told keys of a minute ago, by somebody who knows all keys since.
TEST_F(ProvenLater, OldKeysThatAreToldAgainEndWithTheFirstTrueOne) {
  pass(120'000);
  for (int at = 0; at < 5000; at += 250, pass(250)) {
    const std::uint32_t old = KeyChain::intervalAt(show) - 60;
    proof.hear(frameOf(old), phone);
    obey(signedBy(fields(66, 1), old + kChainDelay));
  }
  EXPECT_EQ(standing(), Standing::proven) << "a phone that hears nobody else";
  proof.hear(*disclosed(), phone);
  EXPECT_EQ(standing(), Standing::unproven);
  play(4000, fields(1, 1));
  EXPECT_EQ(standing(), Standing::proven);
}

TEST_F(ProvenLater, APhonesClockMayBeFastOrSlow) {
  for (const double wrong : {1.0002, 0.9998}) {
    whole.emplace(258, chain.anchor(), codes);
    show = milliseconds(3000);
    pace = wrong;
    for (int second = 0; second < 7200; ++second, pass(1000)) proof.hear(*disclosed(), phone);
    play(6000, fields(1, 1));
    EXPECT_EQ(standing(), Standing::proven) << wrong;
    EXPECT_EQ(proof.counts().forged, 0U) << wrong;
  }
}

TEST_F(ProvenLater, FramesThatAreOfNoRowCostABoundedTimeAndChangeNothing) {
  pass(20'000);
  play(5000, fields(1, 1));
  const std::uint64_t keys = proof.counts().keys;
  codes.asked = 0;
  for (int at = 0; at < 10'000; ++at) {
    ChainFrame frame{258, 30'000, {}, 7};
    for (std::uint8_t& byte : frame.key) byte = static_cast<std::uint8_t>(chance());
    proof.hear(frame.bytes(), phone);
  }
  EXPECT_LE(codes.asked, DelayedProof::kStepsASecond);
  EXPECT_EQ(proof.counts().keys, keys);
  EXPECT_EQ(standing(), Standing::proven);
}

TEST_F(ProvenLater, AFloodOfForgedPacketsTakesNoRoomAndIsNeverProven) {
  pass(20'000);
  play(5000, fields(1, 1));
  for (int at = 0; at < 10'000; ++at) {
    Data garbage = shown(fields(66, at + 2));
    garbage[kTagOffset] ^= static_cast<std::uint8_t>(1 + chance() % 255);
    obey(garbage);
    if (at % 10 == 0) pass(1);
    if (at % 2500 == 0) proof.hear(*disclosed(), phone);
    EXPECT_NE(standing(), Standing::proven);
  }
  EXPECT_LT(sizeof(DelayedProof), 2560U) << "all of it";
}

// A hundred strangers who hear everything, know every disclosed key and send what they like, beside
// a show of which up to half is lost.
TEST_F(ProvenLater, NoStrangersLookIsEverProvenAndNoneIsVouchedForLong) {
  int longest = 0;
  for (unsigned seed = 1; seed <= 100; ++seed) {
    chance.seed(seed);
    whole.emplace(258, chain.anchor(), codes);
    show = milliseconds(static_cast<int>(20'000 + chance() % 1'000'000));
    const int loss = static_cast<int>(chance() % 51);
    play(6000, fields(1, 1), loss);
    Data recorded = shown(fields(1, 1));
    int vouched = 0;
    for (int round = 0; round < 300; ++round) {
      const std::uint32_t known = KeyChain::intervalAt(show) - kChainDelay;
      const Broadcast strange = fields(60'000 + static_cast<int>(chance() % 5), round + 2);
      Data data = signedBy(strange, known - static_cast<std::uint32_t>(chance() % 4));
      if (chance() % 3 == 0) data[kTagOffset] = static_cast<std::uint8_t>(chance());
      if (chance() % 5 == 0)
        proof.hear(frameOf(known - static_cast<std::uint32_t>(chance() % 9)), phone);
      if (chance() % 7 == 0) obey(recorded);
      obey(data);
      ASSERT_NE(standing(), Standing::proven) << seed;
      vouched = standing() == Standing::vouched ? vouched + 100 : 0;
      longest = std::max(longest, vouched);
      play(100, fields(1, 1), loss);
    }
  }
  EXPECT_LT(longest, 8000) << "milliseconds";
  EXPECT_GT(longest, 0) << "else nobody attacked";
}

}  // namespace
}  // namespace halvora
