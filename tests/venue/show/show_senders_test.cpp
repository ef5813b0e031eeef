// SPDX-License-Identifier: Apache-2.0
#include "venue/show/show_senders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engine/broadcast.h"
#include "tests/venue/show/packet_lines.h"

namespace halvora {
namespace {

constexpr Duration kPause = milliseconds(1500);

ScenarioLine lineOf(double at, std::uint8_t transmitter, double every = 0, double until = 0) {
  Broadcast fields;
  fields.applicationId = 258;
  fields.venueId = 7;
  fields.transmitter = transmitter;
  return packetLine(at, fields, every, until);
}

ShowSenders sendersOf(std::vector<ScenarioLine> lines) {
  Scenario scenario;
  scenario.lines = std::move(lines);
  return {scenario, scenario.lastAction(), kPause};
}

TEST(ShowSenders, AreThoseOfTheScenarioInTheOrderInWhichTheyBegin) {
  const ShowSenders senders = sendersOf({lineOf(1, 9), lineOf(2, 7), lineOf(3, 9)});
  EXPECT_THAT(senders.keys(), testing::ElementsAre("258:9", "258:7"));
  EXPECT_EQ(senders.venueId(), 7);
}

TEST(ShowSenders, SendWhereNoPauseIsLongerThanItMayBe) {
  const ShowSenders senders =
      sendersOf({lineOf(1, 9, 0.5, 4), lineOf(5.5, 9), lineOf(8, 9, 1, 12)});
  const auto isSending = [&](int from, int to) {
    return senders.isSending(0, milliseconds(from), milliseconds(to));
  };
  EXPECT_TRUE(isSending(1000, 5500)) << "a second and a half is no pause";
  EXPECT_FALSE(isSending(900, 1500)) << "not begun";
  EXPECT_FALSE(isSending(5000, 6000)) << "a pause of two seconds and a half";
  EXPECT_FALSE(isSending(6000, 7000));
  EXPECT_TRUE(isSending(8000, 12'000));
  EXPECT_FALSE(isSending(11'000, 12'001)) << "over";
}

TEST(ShowSenders, HaveNoVenueWhereTheyNameSeveralOrNone) {
  ScenarioLine elsewhere = lineOf(2, 9);
  std::get<PacketAction>(elsewhere.action).data[5] = 8;
  EXPECT_EQ(sendersOf({lineOf(1, 9), elsewhere, lineOf(3, 9)}).venueId(), std::nullopt);
  EXPECT_EQ(sendersOf({}).venueId(), std::nullopt);
}

}  // namespace
}  // namespace halvora
