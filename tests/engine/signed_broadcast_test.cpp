// SPDX-License-Identifier: Apache-2.0
#include "engine/signed_broadcast.h"

#include <cmath>
#include <limits>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/engine/engine_bench.h"
#include "tests/support/plain_codes.h"

namespace halvora {
namespace {

using B = Broadcast;
using testing::ElementsAreArray;

/// Keeps what it is asked of.
class Listening final : public MessageCode {
 public:
  Code of(std::span<const std::uint8_t> message) override {
    asked.assign(message.begin(), message.end());
    return {0xA1, 0xB2, 0xC3, 0xD4};
  }
  std::vector<std::uint8_t> asked;
};

TEST(SignedBroadcast, IsThePlainOneWithATagBeforeItsLastByte) {
  Listening code;
  const Broadcast fields = look(3, {{&B::sequence, 0x1234}, {&B::transmitter, 9}});
  const BroadcastBytes plain = encodeBroadcast(fields);
  const SignedBroadcastBytes whole = signBroadcast(fields, 0x01020304, code);
  std::vector<std::uint8_t> expected(plain.begin(), plain.begin() + 25);
  expected.insert(expected.end(), {0xA1, 0xB2, 0xC3, 9});
  EXPECT_THAT(whole, ElementsAreArray(expected));
}

TEST(SignedBroadcast, SignsItsBytesThenItsTransmitterThenTheMinuteHighByteFirst) {
  Listening code;
  const Broadcast fields = look(3, {{&B::transmitter, 9}});
  const BroadcastBytes plain = encodeBroadcast(fields);
  static_cast<void>(signBroadcast(fields, 0x01020304, code));
  std::vector<std::uint8_t> expected(plain.begin(), plain.begin() + 25);
  expected.insert(expected.end(), {9, 1, 2, 3, 4});
  EXPECT_EQ(code.asked, expected);
}

TEST(SignedBroadcast, IsGoodInItsOwnMinuteAndAsItWasOnly) {
  PlainCode code(1);
  PlainCode other(2);
  SignedBroadcastBytes whole = signBroadcast(look(3), 100, code);
  EXPECT_TRUE(isTagGood(whole, 100, code));
  EXPECT_FALSE(isTagGood(whole, 101, code));
  EXPECT_FALSE(isTagGood(whole, 99, code));
  EXPECT_FALSE(isTagGood(whole, 100, other));
  for (std::uint8_t& byte : whole) {
    byte ^= 1;
    EXPECT_FALSE(isTagGood(whole, 100, code));
    byte ^= 1;
  }
}

/// Knows how often it was looked at.
struct WatchedTag {
  PacketTag bytes{};
  mutable int looks = 0;
  std::uint8_t operator[](std::size_t at) const {
    ++looks;
    return bytes[at];
  }
};

TEST(SignedBroadcast, EveryByteOfATagIsLookedAtWhereverItDiffers) {
  const PacketTag wanted = {0xA1, 0xB2, 0xC3};
  const WatchedTag same{wanted};
  EXPECT_TRUE(isSameTag(wanted, same));
  EXPECT_EQ(same.looks, 3);
  for (std::size_t at = 0; at < kTagSize; ++at) {
    WatchedTag other{wanted};
    other.bytes[at] ^= 0x10;
    EXPECT_FALSE(isSameTag(wanted, other)) << at;
    EXPECT_EQ(other.looks, 3) << at;
  }
}

TEST(SignedBroadcast, HasExactlyItsLength) {
  for (std::size_t size = kShortestBroadcast; size < 40; ++size) {
    const std::vector<std::uint8_t> data(size);
    EXPECT_EQ(signedBroadcastIn(data).has_value(), size == 29) << size;
  }
}

TEST(SignedBroadcast, CountsWholeMinutesSince1970) {
  EXPECT_EQ(epochOf({0}), 0U);
  EXPECT_EQ(epochOf({59.999}), 0U);
  EXPECT_EQ(epochOf({60}), 1U);
  EXPECT_EQ(epochOf({1767268800}), 29454480U) << "noon of 1 January 2026";
  EXPECT_EQ(epochOf({-1}), 0U);
  EXPECT_EQ(epochOf({1e300}), 4294967295U);
  EXPECT_EQ(epochOf({std::numeric_limits<double>::infinity()}), 4294967295U);
  EXPECT_EQ(epochOf({std::nan("")}), 0U);
}

// A phone from before tags, or one whose host has no key.
TEST(SignedBroadcast, IsReadByAPhoneThatKnowsNothingOfTags) {
  PlainCode code(1);
  EngineBench bench;
  bench.controller().setAllowedTransmitterIds({"258:7"});
  bench.listen();
  const auto heard = [&](const Broadcast& fields) {
    const SignedBroadcastBytes whole = signBroadcast(fields, 100, code);
    return bench.hear(std::vector<std::uint8_t>(whole.begin(), whole.end()));
  };
  EXPECT_EQ(heard(look(1, {{&B::sequence, 1}, {&B::red, 200}})), PacketFate::processed);
  EXPECT_EQ(bench.screen().currentMode, 1U);
  EXPECT_EQ(heard(look(1, {{&B::sequence, 1}, {&B::red, 200}})), PacketFate::staleSequence);
  EXPECT_EQ(heard(look(3, {{&B::sequence, 2}})), PacketFate::processed);
  EXPECT_EQ(bench.screen().currentMode, 3U);
  EXPECT_EQ(heard(look(5, {{&B::sequence, 3}, {&B::transmitter, 8}})), PacketFate::notAllowed)
      << "the transmitter number is the last byte, behind the tag";
}

}  // namespace
}  // namespace halvora
