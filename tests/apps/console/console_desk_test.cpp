// SPDX-License-Identifier: Apache-2.0
// The operator's desk without a window: which bytes go out for which controls, and what a recording
// of them holds.
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/virtual/virtual_devices.h"
#include "apps/console/show_desk.h"
#include "apps/console/show_recording.h"
#include "light/mode_tables.h"
#include "venue/show/scenario.h"
#include "venue/show/show_words.h"

namespace halvora {
namespace {

constexpr Duration kNow{};

struct ShowDeskTest : testing::Test {
  Broadcast sent(Duration now = kNow) {
    const auto packets = desk.send(now);
    EXPECT_EQ(packets.size(), 1U);
    return decodeBroadcast(packets.at(0));
  }

  ScriptedRandom chance;
  ShowDesk desk{chance};
};

TEST_F(ShowDeskTest, BeginsWithALookThatShines) {
  const Broadcast first = sent();
  EXPECT_NE(first.applicationId, 0);
  EXPECT_EQ(first.syncFlag, 0);
  EXPECT_NE(first.mode, 0);
  EXPECT_EQ(first.master, 255);
  // A phone begins at 0, and only a higher number is newer.
  EXPECT_GT(first.sequence, 0);
}

TEST_F(ShowDeskTest, EveryFieldOfALookGoesOut) {
  std::uint16_t value = 40;
  for (const BroadcastField& field : kBroadcastFields) {
    const bool isNumberedByTheDesk =
        field.value == &Broadcast::sequence || field.value == &Broadcast::transmitter;
    EXPECT_EQ(desk.set(field.name, ++value), !isNumberedByTheDesk) << field.name;
    if (isNumberedByTheDesk) continue;
    EXPECT_EQ(field.value.of(sent()), value) << field.name;
  }
  EXPECT_FALSE(desk.set("brightness", 1));
}

TEST_F(ShowDeskTest, ValuesStayInTheirFields) {
  desk.set("red", 300);
  desk.set("green", -5);
  desk.set("applicationId", 70000);
  const Broadcast packet = sent();
  EXPECT_EQ(packet.red, 255);
  EXPECT_EQ(packet.green, 0);
  EXPECT_EQ(packet.applicationId, 65535);
}

TEST_F(ShowDeskTest, TheSequenceRisesWithTheLookAlone) {
  const std::uint16_t first = sent().sequence;
  EXPECT_EQ(sent().sequence, first);
  desk.set("mode", 5);
  EXPECT_EQ(sent().sequence, first + 1);
  EXPECT_EQ(sent().sequence, first + 1);
  desk.set("mode", 5);
  EXPECT_EQ(sent().sequence, first + 1);
  desk.setLoss(30);
  desk.setTransmitters(3);
  EXPECT_EQ(decodeBroadcast(desk.send(kNow).at(2)).sequence, first + 1);
}

TEST_F(ShowDeskTest, GoesOnAfterSomebodyElsesPacket) {
  sent();
  desk.goOnAfter(900);
  EXPECT_EQ(sent().sequence, 901);
  // A phone takes a number that begins anew for a newer one.
  desk.goOnAfter(65535);
  EXPECT_EQ(sent().sequence, 0);
}

TEST_F(ShowDeskTest, AllTransmittersSayTheSameOrOneIsHeard) {
  desk.setTransmitters(3);
  const auto all = desk.send(kNow);
  ASSERT_EQ(all.size(), 3U);
  for (std::size_t at = 0; at < all.size(); ++at) {
    Broadcast packet = decodeBroadcast(all[at]);
    EXPECT_EQ(packet.transmitter, at + 1);
    packet.transmitter = 1;
    EXPECT_EQ(packet, decodeBroadcast(all[0]));
  }
  desk.setSender(2);
  EXPECT_EQ(sent().transmitter, 2);
  // The one that was to send is not there any more.
  desk.setTransmitters(1);
  EXPECT_EQ(sent().transmitter, 1);
  desk.setTransmitters(100);
  EXPECT_EQ(desk.transmitters(), kMostTransmitters);
}

TEST(ShowDesk, TheAirLosesSoManyOfAHundred) {
  for (const int percent : {0, 1, 37, 100}) {
    std::vector<std::uint32_t> draws;
    for (std::uint32_t draw = 0; draw < 100; ++draw) draws.push_back(draw);
    ScriptedRandom chance(ScriptedRandom::Rule::least, draws);
    ShowDesk desk(chance);
    desk.setLoss(percent);
    int lost = 0;
    for (int packet = 0; packet < 100; ++packet) lost += desk.losesPacket() ? 1 : 0;
    EXPECT_EQ(lost, percent);
  }
}

TEST_F(ShowDeskTest, AMapRunsThirtyFramesASecondRoundAndRound) {
  desk.showFrame(1);
  desk.playFrames(300, milliseconds(5000));
  EXPECT_EQ(cueToken(sent(milliseconds(5000))), 1);
  EXPECT_EQ(cueToken(sent(milliseconds(6000))), 31);
  EXPECT_EQ(cueToken(sent(milliseconds(14900))), 298);
  EXPECT_EQ(cueToken(sent(milliseconds(15000))), 1);
  EXPECT_EQ(cueToken(sent(milliseconds(26000))), 31);
}

TEST_F(ShowDeskTest, AMapIsHeldAndGoesOnWhereItIs) {
  desk.showFrame(700);
  EXPECT_EQ(cueToken(sent()), 700);
  desk.playFrames(900, milliseconds(0));
  EXPECT_EQ(cueToken(sent(milliseconds(1000))), 730);
  desk.holdFrame();
  EXPECT_EQ(cueToken(sent(milliseconds(9000))), 730);
  desk.playFrames(900, milliseconds(9000));
  EXPECT_TRUE(desk.isPlaying());
  EXPECT_EQ(cueToken(sent(milliseconds(10000))), 760);
  desk.showFrame(5);
  EXPECT_FALSE(desk.isPlaying());
  desk.playFrames(0, milliseconds(10000));
  EXPECT_FALSE(desk.isPlaying());
  EXPECT_EQ(cueToken(sent(milliseconds(11000))), 5);
}

TEST(DeskWords, EveryModeOfTheTablesHasAName) {
  // The pixel map's own mode follows from the map and is none to choose.
  EXPECT_EQ(kModeNames.size(), kModes.size() - 1);
  EXPECT_EQ(kModeNames.size(), kPixelMapMode);
}

TEST(DeskWords, FieldsAreExplained) {
  Broadcast packet;
  packet.applicationId = 258;
  packet.transmitter = 7;
  packet.master = 128;
  packet.mode = 5;
  packet.speed = 255;
  packet.ledMode = 200;
  packet.paletteId = 51;
  packet.gobo = 3;
  const auto meaning = [&packet](std::string_view name) {
    for (const BroadcastField& field : kBroadcastFields) {
      if (field.name == name) return meaningOf(field, packet);
    }
    return std::string("no such field");
  };
  EXPECT_EQ(meaning("master"), "50 %");
  EXPECT_EQ(meaning("mode"), "Strobe");
  EXPECT_EQ(meaning("speed"), "0 % slow");
  EXPECT_EQ(meaning("ledSpeed"), "100 % slow");
  EXPECT_EQ(meaning("ledMode"), "unknown");
  EXPECT_EQ(meaning("paletteId"), "colour is RGB");
  EXPECT_EQ(meaning("gobo"), "picture 3");
  EXPECT_EQ(meaning("transmitter"), "key 258:7");
}

TEST(ShowRecording, IsAScenarioOfTheSamePackets) {
  ScriptedRandom chance;
  ShowDesk desk(chance);
  desk.setTransmitters(2);
  const DefaultsDictionary seat = {{"selectedSection", std::string("\"A\" \\ left")},
                                   {"xPos", std::string("12")}};
  ShowRecording recording(milliseconds(70000), seat);
  std::vector<std::vector<std::uint8_t>> sent;
  for (int round = 0; round < 5; ++round) {
    desk.set("red", round / 2 * 10);
    for (const BroadcastBytes& packet : desk.send(kNow)) {
      sent.emplace_back(packet.begin(), packet.end());
      recording.add(milliseconds(70000) + round * kPacketPause, packet);
    }
  }
  EXPECT_EQ(recording.packets(), 10);

  const auto parsed = parseScenario(recording.text(), ExactJsonReader());
  const auto* scenario = std::get_if<Scenario>(&parsed);
  ASSERT_NE(scenario, nullptr) << std::get<ScenarioError>(parsed).what;
  ASSERT_EQ(scenario->lines.size(), 12U);
  // The seat counts before the engine's view is loaded.
  EXPECT_EQ(scenario->linesBeforeLoading(), 1U);
  EXPECT_EQ(*std::get<DefaultsAction>(scenario->lines[0].action).writes.at(0).second,
            DefaultsValue(std::string("\"A\" \\ left")));
  EXPECT_TRUE(std::holds_alternative<StartAction>(scenario->lines[1].action));
  for (std::size_t at = 0; at < sent.size(); ++at) {
    const ScenarioLine& line = scenario->lines[at + 2];
    EXPECT_EQ(std::get<PacketAction>(line.action).data, sent[at]);
    EXPECT_EQ(line.timeOf(0), kRecordingLead + static_cast<int>(at / 2) * kPacketPause);
  }
}

}  // namespace
}  // namespace halvora
