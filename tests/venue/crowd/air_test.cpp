// SPDX-License-Identifier: Apache-2.0
// What a crowd hears of what is sent.
#include "venue/crowd/air.h"

#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"

namespace halvora {
namespace {

using testing::ElementsAre;

constexpr SeatPosition kSeat{10, 10};
constexpr Duration kEnd = milliseconds(10'000);

std::string hexOf(std::uint8_t transmitter, std::uint8_t red, std::uint16_t sequence) {
  Broadcast broadcast;
  broadcast.applicationId = 1;
  broadcast.mode = 1;
  broadcast.red = red;
  broadcast.sequence = sequence;
  broadcast.transmitter = transmitter;
  return NSDataToHex(encodeBroadcast(broadcast));
}

std::string line(double at, const std::string& hex, const std::string& more = "") {
  return "{\"at\": " + std::to_string(at) + ", \"packet\": \"" + hex + "\"" + more + "}\n";
}

std::optional<Air> airOf(const std::string& text, const AirSettings& settings = {}) {
  const ExactJsonReader json;
  auto scenario = parseScenario(text, json);
  EXPECT_TRUE(std::holds_alternative<Scenario>(scenario));
  return Air::of(std::get<Scenario>(scenario), settings, kEnd);
}

std::vector<int> timesOf(const Air& air) {
  std::vector<int> times;
  for (const Sent& sent : air.sent()) {
    times.push_back(static_cast<int>(sent.time / milliseconds(1)));
  }
  return times;
}

// One packet a millisecond.
std::optional<Air> busyAir(const AirSettings& settings) {
  return airOf(line(0, hexOf(1, 1, 1), ", \"every\": 0.001, \"until\": 4.999"), settings);
}

TEST(Air, WithoutLossEveryPhoneHearsEverythingAtItsTime) {
  const auto air = airOf(line(0.5, hexOf(1, 1, 1)) + line(1.5, hexOf(1, 2, 2)));
  ASSERT_TRUE(air);
  for (std::uint32_t phone = 0; phone < 50; ++phone) {
    EXPECT_EQ(air->arrival(0, phone, kSeat), milliseconds(500));
    EXPECT_EQ(air->arrival(1, phone, kSeat), milliseconds(1500));
  }
}

// Times and colours.
std::vector<std::pair<int, int>> sentBy(const Air& air) {
  std::vector<std::pair<int, int>> sent;
  for (const Sent& one : air.sent()) {
    sent.emplace_back(one.time / milliseconds(1), air.packet(one).broadcast->red);
  }
  return sent;
}

TEST(Air, AControllerSendsItsNewestPacketAgainAndAgain) {
  std::string frames;
  for (int at = 0; at < 10; ++at) {
    frames += line(9 + at * 0.033,
                   hexOf(1, static_cast<std::uint8_t>(at), static_cast<std::uint16_t>(at + 1)));
  }
  const auto air = airOf(frames, {.controller = milliseconds(150)});
  ASSERT_TRUE(air);
  EXPECT_THAT(sentBy(*air), ElementsAre(std::pair(9000, 0), std::pair(9150, 4), std::pair(9300, 9),
                                        std::pair(9450, 9), std::pair(9600, 9), std::pair(9750, 9),
                                        std::pair(9900, 9)));
  EXPECT_EQ(air->looks().size(), 3U);
}

TEST(Air, ADeadTransmitterIsSilentFromItsTimeOn) {
  const std::string every = ", \"every\": 1, \"until\": 3";
  const auto air = airOf(line(1, hexOf(1, 1, 1), every) + line(1, hexOf(2, 2, 1), every),
                         {.interval = milliseconds(5000), .dead = {{1, milliseconds(2000)}}});
  ASSERT_TRUE(air);
  EXPECT_THAT(sentBy(*air), ElementsAre(std::pair(1000, 1), std::pair(1000, 2), std::pair(2000, 2),
                                        std::pair(3000, 2), std::pair(8000, 2)));
}

TEST(Air, WithAllLostNobodyHearsAnything) {
  const auto air = busyAir({.loss = 1});
  ASSERT_TRUE(air);
  for (std::size_t sent = 0; sent < air->sent().size(); ++sent) {
    EXPECT_FALSE(air->arrival(sent, 3, kSeat));
  }
}

TEST(Air, LosesTheShareThatWasAskedForOfPhonesAndOfPackets) {
  const auto air = busyAir({.loss = 0.3});
  ASSERT_TRUE(air);
  ASSERT_EQ(air->sent().size(), 5000);
  int ofOnePhone = 0;
  int ofOnePacket = 0;
  for (std::uint32_t at = 0; at < 5000; ++at) {
    ofOnePhone += air->arrival(at, 7, kSeat) ? 0 : 1;
    ofOnePacket += air->arrival(7, at, kSeat) ? 0 : 1;
  }
  // Four standard deviations of 5000 draws at 0.3 are 130.
  EXPECT_NEAR(ofOnePhone, 1500, 130);
  EXPECT_NEAR(ofOnePacket, 1500, 130);
}

TEST(Air, JitterDelaysByAtMostSoMuchAndUsesItAll) {
  const auto air = busyAir({.jitter = milliseconds(40)});
  ASSERT_TRUE(air);
  Duration least = milliseconds(1000);
  Duration most{};
  for (std::size_t sent = 0; sent < air->sent().size(); ++sent) {
    const auto arrival = air->arrival(sent, 2, kSeat);
    ASSERT_TRUE(arrival);
    const Duration late = *arrival - air->sent()[sent].time;
    least = std::min(least, late);
    most = std::max(most, late);
  }
  EXPECT_GE(least, Duration::zero());
  EXPECT_LT(least, milliseconds(1));
  EXPECT_GT(most, milliseconds(39));
  EXPECT_LE(most, milliseconds(40));
}

TEST(Air, AnotherSeedIsAnotherAir) {
  const auto one = busyAir({.loss = 0.5, .seed = 1});
  const auto other = busyAir({.loss = 0.5, .seed = 2});
  ASSERT_TRUE(one && other);
  int different = 0;
  for (std::size_t sent = 0; sent < 1000; ++sent) {
    different += one->arrival(sent, 1, kSeat) != other->arrival(sent, 1, kSeat) ? 1 : 0;
  }
  EXPECT_NEAR(different, 500, 64);
}

TEST(Air, RepeatsTheLastPacketOfEachTransmitterUntilItsNext) {
  const auto air = airOf(line(0, hexOf(1, 1, 1)) + line(0.05, hexOf(2, 1, 1)) +
                             line(0.25, hexOf(1, 2, 2)) + line(9.9, hexOf(2, 2, 2)),
                         {.interval = milliseconds(100)});
  ASSERT_TRUE(air);
  std::vector<int> ofTwo;
  std::vector<int> ofOne;
  for (const Sent& sent : air->sent()) {
    auto& times = air->packet(sent).broadcast->transmitter == 1 ? ofOne : ofTwo;
    if (sent.time < milliseconds(600)) {
      times.push_back(static_cast<int>(sent.time / milliseconds(1)));
    }
  }
  EXPECT_THAT(ofOne, ElementsAre(0, 100, 200, 250, 350, 450, 550));
  EXPECT_THAT(ofTwo, ElementsAre(50, 150, 250, 350, 450, 550));
  EXPECT_LT(air->sent().back().time, kEnd);
}

TEST(Air, CountsOneLookForTransmittersThatShowTheSame) {
  const auto air =
      airOf(line(0, hexOf(1, 1, 1)) + line(0.1, hexOf(2, 1, 1)) + line(0.2, hexOf(1, 2, 2)) +
            line(0.3, hexOf(2, 2, 2)) + line(0.4, hexOf(1, 1, 3)));
  ASSERT_TRUE(air);
  std::vector<std::uint32_t> looks;
  for (const Sent& sent : air->sent()) looks.push_back(sent.look);
  EXPECT_THAT(looks, ElementsAre(0, 0, 1, 1, 2));
  EXPECT_THAT(air->looks(), ElementsAre(Duration{}, milliseconds(200), milliseconds(400)));
}

TEST(Air, DataOfOthersIsSentButIsNoLook) {
  const auto air = airOf(line(0, "4C000215") + line(0.1, hexOf(1, 1, 1)));
  ASSERT_TRUE(air);
  EXPECT_FALSE(air->packet(air->sent()[0]).broadcast);
  EXPECT_EQ(air->looks().size(), 1);
}

TEST(Air, ATransmitterWithAReachIsHeardWithinItOnly) {
  const auto air =
      airOf(line(0, hexOf(1, 1, 1)) + line(0, hexOf(2, 1, 1)), {.reaches = {{1, {100, 100}, 50}}});
  ASSERT_TRUE(air);
  EXPECT_TRUE(air->arrival(0, 1, {150, 100}));
  EXPECT_FALSE(air->arrival(0, 1, {151, 100}));
  EXPECT_TRUE(air->arrival(1, 1, {151, 100}));
}

TEST(Air, WhatComesAfterTheEndIsNotSent) {
  const auto air = airOf(line(9.99, hexOf(1, 1, 1), ", \"every\": 0.01, \"until\": 20"));
  ASSERT_TRUE(air);
  EXPECT_THAT(timesOf(*air), ElementsAre(9990, 10'000));
}

TEST(Air, AShowThatSendsTooMuchIsRefused) {
  std::string show;
  for (int at = 0; at < 60; ++at) {
    show += line(0, hexOf(1, 1, 1), ", \"every\": 0.0001, \"until\": 9");
  }
  EXPECT_FALSE(airOf(show));
  EXPECT_FALSE(airOf(line(0, hexOf(1, 1, 1)), {.interval = Duration(1)}));
}

}  // namespace
}  // namespace halvora
