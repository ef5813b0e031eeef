// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/key_chain.h"

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engine/signed_broadcast.h"
#include "halvora/platform/absent.h"
#include "tests/engine/engine_bench.h"
#include "tests/support/plain_codes.h"
#include "tests/venue/show/packet_lines.h"
#include "venue/show/packet.h"

namespace halvora {
namespace {

constexpr ChainKey kSecret = {7, 1, 2, 3};
const ChainFrame kFrame{
    258, 0x012345, {0xA0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}, 9};

std::vector<std::uint8_t> bytesOf(const ChainFrame& frame) {
  const auto bytes = frame.bytes();
  return {bytes.begin(), bytes.end()};
}

TEST(ChainFrame, HasItsKeyAndItsIntervalAndEndsWithItsTransmitter) {
  EXPECT_EQ(NSDataToHex(kFrame.bytes()), "09C90102CA012345A00102030405060708090A0B0C0D0E0F09");
  EXPECT_EQ(ChainFrame::in(kFrame.bytes()), kFrame);
}

TEST(ChainFrame, IsNothingElse) {
  const std::vector<std::uint8_t> good = bytesOf(kFrame);
  for (const std::size_t at : {0U, 1U, 4U}) {
    std::vector<std::uint8_t> data = good;
    data[at] ^= 1;
    EXPECT_FALSE(ChainFrame::in(data)) << at;
  }
  for (std::size_t size = 0; size < 64; ++size) {
    std::vector<std::uint8_t> data = good;
    data.resize(size);
    EXPECT_EQ(ChainFrame::in(data).has_value(), size == ChainFrame::kSize) << size;
  }
}

// A phone that knows nothing of such frames.
TEST(ChainFrame, IsPassedOverByAnEngine) {
  EngineBench bench;
  bench.listen();
  EXPECT_EQ(bench.hear(bytesOf(kFrame)), PacketFate::tooShort);
  EXPECT_FALSE(bench.controller().isInsideVenue());
  EXPECT_EQ(bench.hearNext(look(3)), PacketFate::processed);
  EXPECT_EQ(bench.hear(bytesOf(kFrame)), PacketFate::tooShort);
  EXPECT_EQ(bench.screen().currentMode, 3U) << "whatever was shown is shown";
  EXPECT_THAT(describePacket(kFrame.bytes()), testing::HasSubstr("\"rejected\""));
}

TEST(KeyChain, EachKeyFollowsFromTheNext) {
  const PlainCodes codes;
  const auto chain = KeyChain::of(kSecret, 20, codes);
  ASSERT_TRUE(chain);
  EXPECT_EQ(chain->at(20), kSecret);
  for (std::uint32_t at = 20; at > 0; --at) {
    EXPECT_EQ(keyBefore(chain->at(at), codes), chain->at(at - 1)) << at;
    EXPECT_NE(chain->at(at), chain->at(at - 1));
  }
  EXPECT_EQ(chain->at(0), chain->anchor());
}

TEST(KeyChain, NeedsACipherAndEndsSomewhere) {
  const PlainCodes codes;
  EXPECT_FALSE(KeyChain::of(kSecret, 2, absent::codes()));
  EXPECT_FALSE(KeyChain::of(kSecret, kLongestChain + 1, codes));
}

class ChainedShow : public testing::Test {
 protected:
  static Broadcast fields(int sequence, int transmitter = 9) {
    return look(1, {{&Broadcast::sequence, sequence}, {&Broadcast::transmitter, transmitter}});
  }
  /// The scenario's packets as they are sent.
  std::vector<std::pair<Duration, std::vector<std::uint8_t>>> sent(const Scenario& scenario) {
    const auto made = chainedShow(scenario, chain, codes, kEnd);
    std::vector<std::pair<Duration, std::vector<std::uint8_t>>> all;
    for (const ScenarioLine& line : made.value_or(Scenario{}).lines) {
      const auto* packet = std::get_if<PacketAction>(&line.action);
      if (packet != nullptr) all.emplace_back(*line.timeOf(0), packet->data);
    }
    return all;
  }

  static constexpr Duration kEnd = milliseconds(10'000);
  PlainCodes codes;
  KeyChain chain = *KeyChain::of(kSecret, 11, codes);
};

TEST_F(ChainedShow, SignsEachPacketForItsSecond) {
  Scenario show;
  show.lines = {packetLine(1, fields(1), 0.1, 9)};
  std::size_t packets = 0;
  for (const auto& [time, data] : sent(show)) {
    if (ChainFrame::in(data)) continue;
    const std::uint32_t interval = KeyChain::intervalAt(time);
    const auto code = codeOf(chain.at(interval), codes);
    EXPECT_THAT(data, testing::ElementsAreArray(signBroadcast(fields(1), interval, *code)));
    ++packets;
  }
  EXPECT_GT(packets, 50U);
}

TEST_F(ChainedShow, DisclosesAKeyTwoSecondsAfterItsOwn) {
  Scenario show;
  show.lines = {packetLine(0, fields(1), 0.1, 9.9)};
  std::size_t frames = 0;
  for (const auto& [time, data] : sent(show)) {
    const auto frame = ChainFrame::in(data);
    if (!frame) continue;
    EXPECT_EQ(frame->interval + kChainDelay, KeyChain::intervalAt(time));
    EXPECT_EQ(frame->key, chain.at(frame->interval));
    EXPECT_EQ(frame->transmitter, 9);
    ++frames;
  }
  EXPECT_GE(frames, 24U) << "one a quarter of a second, as far as repeats allow";
  EXPECT_LE(frames, 33U);
}

TEST_F(ChainedShow, DisclosesFourTimesASecond) {
  Scenario show;
  show.lines = {packetLine(2, fields(1), 0.125, 9.9)};
  std::vector<Duration> times;
  for (const auto& [time, data] : sent(show)) {
    if (ChainFrame::in(data)) times.push_back(time);
  }
  ASSERT_EQ(times.size(), 32U);
  for (std::size_t at = 0; at < times.size(); ++at) {
    EXPECT_EQ(times[at], milliseconds(2125 + 250 * static_cast<int>(at)));
  }
}

TEST_F(ChainedShow, SendsNoMoreThanBeforeAndTakesRepeatsBeforeLooks) {
  Scenario show;
  for (int at = 0; at < 9; ++at) {
    show.lines.push_back(packetLine(at, fields(at + 1), 0.1, at + 0.95));
  }
  const auto all = sent(show);
  EXPECT_EQ(all.size(), 90U);
  for (int at = 0; at < 9; ++at) {
    const auto& [time, data] = all[static_cast<std::size_t>(at) * 10];
    EXPECT_EQ(time, milliseconds(1000 * at));
    EXPECT_FALSE(ChainFrame::in(data)) << "a new look is never held up where it is repeated";
  }
}

TEST_F(ChainedShow, FindsRoomForKeysWhereNothingIsRepeated) {
  Scenario show;
  for (int at = 0; at < 270; ++at) {
    show.lines.push_back(packetLine(at / 30.0, fields(at + 1), 0, 0));
  }
  const auto all = sent(show);
  const auto frames = std::ranges::count_if(
      all, [](const auto& one) { return ChainFrame::in(one.second).has_value(); });
  EXPECT_EQ(all.size(), 270U);
  EXPECT_GE(frames, 18);
}

TEST_F(ChainedShow, EachTransmitterDisclosesForItself) {
  Scenario show;
  show.lines = {packetLine(0, fields(1), 0.1, 9.9), packetLine(0.05, fields(1, 8), 0.1, 9.9)};
  std::map<int, int> frames;
  for (const auto& [time, data] : sent(show)) {
    if (const auto frame = ChainFrame::in(data)) ++frames[frame->transmitter];
  }
  EXPECT_GE(frames[8], 24);
  EXPECT_GE(frames[9], 24);
}

TEST_F(ChainedShow, LeavesAloneWhatIsNoPacketOfAShow) {
  Scenario show;
  show.lines.push_back({.action = StartAction{}});
  show.lines.push_back({.action = PacketAction{{0x4C, 0x00, 0x01}}, .at = 3});
  const auto made = chainedShow(show, chain, codes, kEnd);
  ASSERT_TRUE(made);
  ASSERT_EQ(made->lines.size(), 2U);
  EXPECT_TRUE(std::holds_alternative<StartAction>(made->lines[0].action));
  EXPECT_THAT(std::get<PacketAction>(made->lines[1].action).data,
              testing::ElementsAre(0x4C, 0x00, 0x01));
  show.lines.push_back(packetLine(4, fields(1), 0, 0));
  EXPECT_FALSE(chainedShow(show, chain, absent::codes(), kEnd));
}

}  // namespace
}  // namespace halvora
