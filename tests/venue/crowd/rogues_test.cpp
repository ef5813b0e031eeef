// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/rogues.h"

#include <algorithm>
#include <set>
#include <string>
#include <variant>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engine/signed_broadcast.h"
#include "tests/support/plain_codes.h"
#include "tests/venue/show/packet_lines.h"
#include "venue/show/signed_show.h"

namespace halvora {
namespace {

constexpr Duration kEnd = milliseconds(200'000);
constexpr Date kNoon{1767268800};

Broadcast look(std::uint16_t sequence, std::uint8_t mode = 1) {
  Broadcast fields;
  fields.applicationId = 258;
  fields.venueId = 7;
  fields.mode = mode;
  fields.sequence = sequence;
  fields.transmitter = 7;
  return fields;
}

std::vector<std::uint8_t> dataOf(const ScenarioLine& line) {
  return std::get<PacketAction>(line.action).data;
}

/// A look a second, each sent ten times.
Scenario show() {
  Scenario scenario;
  for (int second = 2; second < 40; ++second) {
    scenario.lines.push_back(
        packetLine(second, look(static_cast<std::uint16_t>(second)), 0.1, second + 0.95));
  }
  return scenario;
}

std::optional<BroadcastKeyBytes> keyOf(const Broadcast& fields) {
  const BroadcastBytes data = encodeBroadcast(fields);
  BroadcastKeyBytes key{};
  std::copy_n(data.begin(), key.size(), key.begin());
  return key;
}

TEST(TrueShow, KnowsWhatIsOnTheAirAndWhatWasAMomentAgo) {
  Scenario scenario;
  scenario.lines = {packetLine(2, look(1, 1)), packetLine(4, look(2, 3)),
                    packetLine(6, look(3, 0))};
  const TrueShow truth(scenario, kEnd);
  EXPECT_EQ(truth.at(milliseconds(1999)), nullptr);
  EXPECT_EQ(truth.at(milliseconds(3999))->fields.mode, 1);
  EXPECT_EQ(truth.at(milliseconds(4000))->fields.mode, 3);
  const auto first = keyOf(look(1, 1));
  EXPECT_TRUE(truth.showed(first, milliseconds(3500), milliseconds(4500)));
  EXPECT_FALSE(truth.showed(first, milliseconds(4500), milliseconds(5500)));
  EXPECT_FALSE(truth.showed(std::nullopt, milliseconds(4500), milliseconds(5500)));
  EXPECT_TRUE(truth.showed(std::nullopt, milliseconds(6500), milliseconds(7500))) << "mode 0";
  EXPECT_TRUE(truth.showed(std::nullopt, milliseconds(0), milliseconds(1000))) << "before it";
}

TEST(TrueShow, KnowsWhenItComesToALook) {
  Scenario scenario;
  scenario.lines = {packetLine(2, look(1, 1)),  packetLine(4, look(2, 3)),
                    packetLine(6, look(3, 1)),  packetLine(8, look(4, 3)),
                    packetLine(10, look(5, 5)), packetLine(12, look(6, 3))};
  const TrueShow truth(scenario, std::chrono::seconds(20));
  const auto red = keyOf(look(1, 1));
  const auto blue = keyOf(look(2, 3));
  const auto other = keyOf(look(5, 5));
  const auto time = [&](std::uint16_t number, const auto& before, int near) {
    return truth.timeOf(*blue, number, before, std::chrono::seconds(near));
  };
  constexpr std::optional<BroadcastKeyBytes> kAny;
  EXPECT_EQ(time(2, kAny, 0), milliseconds(4000));
  EXPECT_EQ(time(1000, kAny, 0), milliseconds(4000));
  EXPECT_EQ(time(4, kAny, 0), milliseconds(8000)) << "by its number";
  EXPECT_EQ(time(1000, red, 5), milliseconds(4000));
  EXPECT_EQ(time(1000, red, 7), milliseconds(8000));
  EXPECT_EQ(time(1000, red, 19), milliseconds(8000));
  EXPECT_EQ(time(1000, other, 0), milliseconds(12'000));
  EXPECT_EQ(time(2, other, 0), milliseconds(12'000));
  EXPECT_EQ(time(2, blue, 0), std::nullopt);
  EXPECT_EQ(truth.timeOf(*keyOf(look(1, 9)), 1, kAny, {}), std::nullopt);
}

TEST(Rogues, AreNamedByKindAndTime) {
  EXPECT_EQ(rogueKinds().size(), 15U);
  const auto rogue = rogueOf("ahead@12.5");
  ASSERT_TRUE(rogue);
  EXPECT_EQ(kindOf(*rogue), "ahead");
  EXPECT_EQ(rogue->at, milliseconds(12'500));
  for (const char* text : {"", "ahead", "ahead@", "ahead@x", "ahead@-1", "@5", "nobody@5",
                           "ahead@1e300", "ahead@5s"}) {
    EXPECT_FALSE(rogueOf(text)) << text;
  }
}

TEST(Rogues, EachSendsWhatTheShowDoesNotAndOnlyInItsTime) {
  const Scenario scenario = show();
  const TrueShow truth(scenario, kEnd);
  std::set<std::vector<std::uint8_t>> all;
  for (const RogueKind& kind : rogueKinds()) {
    const auto rogue = rogueOf(std::string(kind.name) + "@20");
    ASSERT_TRUE(rogue) << kind.name;
    const Scenario attacked = withRogues(scenario, truth, {&*rogue, 1});
    EXPECT_GT(attacked.lines.size(), scenario.lines.size()) << kind.name;
    EXPECT_TRUE(std::ranges::is_sorted(attacked.lines, {}, &ScenarioLine::at)) << kind.name;
    for (const ScenarioLine& line : attacked.lines) {
      if (line.every > 0) continue;
      EXPECT_GE(line.at, 20) << kind.name;
      EXPECT_LT(line.at, 30) << kind.name;
      EXPECT_EQ(formatOf(dataOf(line)), BroadcastFormat::valid) << kind.name;
      all.insert(dataOf(line));
    }
  }
  EXPECT_GT(all.size(), 1000U);
}

TEST(Rogues, HaveNothingToSendBeforeTheShow) {
  const Scenario scenario = show();
  const TrueShow truth(scenario, kEnd);
  const auto rogue = rogueOf("far-packet@1");
  EXPECT_EQ(withRogues(scenario, truth, {&*rogue, 1}).lines.size(), scenario.lines.size());
}

TEST(Rogues, ThatBeginBeforeTheShowActOnItsFirstLook) {
  const Scenario scenario = show();
  const TrueShow truth(scenario, kEnd);
  for (const RogueKind& kind : rogueKinds()) {
    const auto rogue = rogueOf(std::string(kind.name) + "@0");
    for (const ScenarioLine& line : withRogues(scenario, truth, {&*rogue, 1}).lines) {
      EXPECT_GE(line.at, 2) << kind.name;
    }
  }
}

TEST(SignedShow, SignsEachRepeatForItsMinute) {
  const PlainCodes codes;
  const auto code = codes.withKey(ShowKey(std::array<std::uint8_t, ShowKey::kSize>{}));
  Scenario scenario;
  scenario.lines = {packetLine(50, look(1), 5, 130)};
  const Scenario made = signedShow(scenario, *code, kNoon, kEnd);
  ASSERT_EQ(made.lines.size(), 3U);
  std::uint64_t occurrences = 0;
  for (std::uint32_t minute = 0; minute < 3; ++minute) {
    const ScenarioLine& line = made.lines[minute];
    const auto wanted = signBroadcast(look(1), 29454480 + minute, *code);
    EXPECT_THAT(dataOf(line), testing::ElementsAreArray(wanted)) << minute;
    for (std::uint64_t k = 0; k < line.occurrences(); ++k) {
      EXPECT_EQ(*line.timeOf(k) / milliseconds(60'000), minute);
      EXPECT_EQ(*line.timeOf(k), scenario.lines[0].timeOf(occurrences++));
    }
  }
  EXPECT_EQ(occurrences, scenario.lines[0].occurrences());
}

TEST(SignedShow, LeavesAloneWhatIsNoPlainPacket) {
  const PlainCodes codes;
  const auto code = codes.withKey(ShowKey(std::array<std::uint8_t, ShowKey::kSize>{}));
  Scenario scenario;
  scenario.lines.push_back({.action = StartAction{}});
  scenario.lines.push_back({.action = PacketAction{{0x4C, 0x00, 0x01}}, .at = 1});
  scenario.lines.push_back(
      {.action = PacketAction{std::vector<std::uint8_t>(kSignedBroadcast, 0x09)}, .at = 2});
  const Scenario made = signedShow(scenario, *code, kNoon, kEnd);
  ASSERT_EQ(made.lines.size(), 3U);
  for (std::size_t at = 1; at < 3; ++at) {
    EXPECT_EQ(dataOf(made.lines[at]), dataOf(scenario.lines[at]));
  }
}

}  // namespace
}  // namespace halvora
