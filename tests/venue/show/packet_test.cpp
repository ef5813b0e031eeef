// SPDX-License-Identifier: Apache-2.0
// `halvora packet`: what scripts rely on, byte by byte.
#include <array>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include "tests/apps/halvora/tool_runner.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::SizeIs;

// Every byte differs, so that no two fields can be mistaken for each other.
const std::string kPacket = "09C90102030405060708090A0B0C0D0E0F1011121314151617FE";
const std::string kNothing = "09C9" + std::string(48, '0');

struct Key {
  const char* name;
  int byte;
  int size;
};
constexpr std::array<Key, 22> kKeys = {{
    {"applicationId", 2, 2}, {"syncFlag", 4, 1},     {"venueId", 5, 1},  {"pixelMapId", 6, 1},
    {"master", 7, 1},        {"red", 8, 1},          {"green", 9, 1},    {"blue", 10, 1},
    {"mode", 11, 1},         {"speed", 12, 1},       {"ledMode", 13, 1}, {"ledSpeed", 14, 1},
    {"videoId", 15, 1},      {"minutes", 16, 1},     {"seconds", 17, 1}, {"hundredths", 18, 1},
    {"videoStatus", 19, 1},  {"gobo", 20, 1},        {"vibrate", 21, 1}, {"paletteId", 22, 1},
    {"sequence", 23, 2},     {"transmitter", 25, 1},
}};

std::vector<std::string> names(const rapidjson::Document& json) {
  std::vector<std::string> found;
  for (const auto& member : json.GetObject()) found.emplace_back(member.name.GetString());
  return found;
}

// The one line of a run that went well, read as JSON.
rapidjson::Document onlyLine(const ToolRun& run) {
  rapidjson::Document json;
  json.SetObject();
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_EQ(run.error, "");
  const std::vector<std::string> lines = linesOf(run.output);
  EXPECT_THAT(lines, SizeIs(1));
  if (lines.size() != 1) return json;
  json.Parse(lines[0].c_str());
  EXPECT_TRUE(json.IsObject()) << lines[0];
  if (!json.IsObject()) json.SetObject();
  return json;
}

rapidjson::Document decoded(const std::string& hex) {
  return onlyLine(runTool({"packet", "decode", hex}));
}

std::string encoded(const std::vector<std::string>& options) {
  std::vector<std::string> arguments{"packet", "encode"};
  arguments.insert(arguments.end(), options.begin(), options.end());
  const ToolRun run = runTool(arguments);
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_EQ(run.error, "");
  return run.output;
}

// A packet of zeros with these bytes put in.
std::string packetWith(const std::vector<std::pair<int, std::string>>& bytes) {
  std::string hex = kNothing;
  for (const auto& [at, text] : bytes)
    hex.replace(static_cast<std::size_t>(at) * 2, text.size(), text);
  return hex;
}

TEST(PacketDecode, PrintsEveryKeyInOrder) {
  std::vector<std::string> expected;
  for (const Key& key : kKeys) expected.emplace_back(key.name);
  for (const char* derived : {"broadcastKey", "transmitterKey", "cueMilliseconds", "cueToken",
                              "speedPercent", "ledSpeedPercent"}) {
    expected.emplace_back(derived);
  }
  std::vector<std::string> printed = names(decoded(kPacket));
  ASSERT_GE(printed.size(), expected.size());
  printed.resize(expected.size());
  EXPECT_THAT(printed, ElementsAreArray(expected));
}

TEST(PacketDecode, ReadsEveryFieldAsTransmitted) {
  const std::array<int, 22> expected = {0x0102, 0x03, 0x04, 0x05, 0x06,   0x07, 0x08, 0x09,
                                        0x0A,   0x0B, 0x0C, 0x0D, 0x0E,   0x0F, 0x10, 0x11,
                                        0x12,   0x13, 0x14, 0x15, 0x1617, 0xFE};
  const rapidjson::Document json = decoded(kPacket);
  for (std::size_t at = 0; at < kKeys.size(); ++at) {
    ASSERT_TRUE(json.HasMember(kKeys[at].name)) << kKeys[at].name;
    ASSERT_TRUE(json[kKeys[at].name].IsInt()) << kKeys[at].name;
    EXPECT_EQ(json[kKeys[at].name].GetInt(), expected[at]) << kKeys[at].name;
  }
}

TEST(PacketDecode, TransmitsWhatTheEngineWouldOverrule) {
  const rapidjson::Document json = decoded(packetWith({{11, "03"}, {15, "2A"}, {6, "05"}}));
  EXPECT_EQ(json["mode"].GetInt(), 3);
  EXPECT_EQ(json["videoId"].GetInt(), 42);
}

TEST(PacketDecode, DerivesKeysCueAndPercentages) {
  const rapidjson::Document json = decoded(packetWith(
      {{2, "0102"}, {12, "80"}, {14, "FF"}, {16, "01"}, {17, "02"}, {18, "03"}, {25, "07"}}));
  EXPECT_STREQ(json["broadcastKey"].GetString(), "09C9010200000000000000008000FF0001020300000000");
  EXPECT_STREQ(json["transmitterKey"].GetString(), "258:7");
  EXPECT_EQ(json["cueMilliseconds"].GetInt(), 62030);
  EXPECT_EQ(json["cueToken"].GetInt(), 513);
  EXPECT_EQ(json["speedPercent"].GetInt(), 50);
  EXPECT_EQ(json["ledSpeedPercent"].GetInt(), 0);
}

TEST(PacketDecode, CueTokenIsNeverZero) {
  const rapidjson::Document json = decoded(kNothing);
  EXPECT_EQ(json["cueToken"].GetInt(), 1);
  EXPECT_EQ(json["cueMilliseconds"].GetInt(), 0);
  EXPECT_EQ(json["speedPercent"].GetInt(), 100);
}

TEST(PacketDecode, LargestCue) {
  const rapidjson::Document json = decoded(packetWith({{16, "FF"}, {17, "FF"}, {18, "FF"}}));
  EXPECT_EQ(json["cueMilliseconds"].GetInt(), 255 * 60000 + 255 * 1000 + 255 * 10);
  EXPECT_EQ(json["cueToken"].GetInt(), 65535);
}

TEST(PacketDecode, LargestTransmitterKey) {
  const rapidjson::Document json = decoded(packetWith({{2, "FFFF"}, {25, "FF"}}));
  EXPECT_STREQ(json["transmitterKey"].GetString(), "65535:255");
}

// The exact halves do not occur, so that nearest is all there is to it.
TEST(PacketDecode, PercentagesOfEverySpeed) {
  for (int speed = 0; speed < 256; ++speed) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    const std::string byte{kDigits[speed / 16], kDigits[speed % 16]};
    const rapidjson::Document json = decoded(packetWith({{12, byte}, {14, byte}}));
    const int expected = 100 - (speed * 200 + 255) / 510;
    ASSERT_EQ(json["speedPercent"].GetInt(), expected) << speed;
    ASSERT_EQ(json["ledSpeedPercent"].GetInt(), expected) << speed;
  }
}

TEST(PacketDecode, TakesEitherCase) {
  const std::string lower = "09c90102030405060708090a0b0c0d0e0f1011121314151617fe";
  EXPECT_EQ(runTool({"packet", "decode", lower}).output,
            runTool({"packet", "decode", kPacket}).output);
  EXPECT_STREQ(decoded(lower)["broadcastKey"].GetString(), kPacket.substr(0, 46).c_str());
}

TEST(PacketDecode, IgnoresWhiteSpaceAndColonsBetweenWholeBytes) {
  const std::string plain = runTool({"packet", "decode", kPacket}).output;
  for (const char* between : {":", " ", "\t", "\n", "\r\n", " : ", "  "}) {
    std::string hex;
    for (std::size_t at = 0; at < kPacket.size(); at += 2) {
      hex += (at == 0 ? "" : between) + kPacket.substr(at, 2);
    }
    const ToolRun run = runTool({"packet", "decode", hex});
    EXPECT_EQ(run.status, 0) << run.error;
    EXPECT_EQ(run.output, plain) << '"' << between << '"';
  }
}

TEST(PacketDecode, EveryArgumentIsOnePacket) {
  const ToolRun run = runTool({"packet", "decode", kPacket, "09C9", kNothing, kPacket});
  EXPECT_EQ(run.status, 0) << run.error;
  const std::vector<std::string> lines = linesOf(run.output);
  ASSERT_THAT(lines, SizeIs(4));
  EXPECT_EQ(lines[0], lines[3]);
  EXPECT_NE(lines[0], lines[2]);
  EXPECT_EQ(runTool({"packet", "decode", "09C9"}).output, lines[1] + "\n");
}

TEST(PacketDecode, LongerDataEndsWithItsTransmitter) {
  const rapidjson::Document json = decoded(packetWith({{2, "0102"}, {25, "07"}}) + "AABB09");
  EXPECT_EQ(json["transmitter"].GetInt(), 9);
  EXPECT_STREQ(json["transmitterKey"].GetString(), "258:9");
  EXPECT_EQ(json["sequence"].GetInt(), 0);
}

class PacketRejected : public testing::TestWithParam<std::string> {};

TEST_P(PacketRejected, IsOneKeyAndNoFailure) {
  const rapidjson::Document json = decoded(GetParam());
  EXPECT_THAT(names(json), ElementsAre("rejected"));
  ASSERT_TRUE(json.HasMember("rejected") && json["rejected"].IsString());
  EXPECT_NE(json["rejected"].GetStringLength(), 0U);
}

INSTANTIATE_TEST_SUITE_P(Data, PacketRejected,
                         testing::Values("09C9", "09", "C9", kPacket.substr(0, 50),
                                         "09C8" + kPacket.substr(4), "C909" + kPacket.substr(4),
                                         "08C9" + kPacket.substr(4), std::string(52, '0'), "FF"));

class PacketUnreadable : public testing::TestWithParam<std::vector<std::string>> {};

TEST_P(PacketUnreadable, IsRefusedAndNothingIsWritten) {
  std::vector<std::string> arguments{"packet"};
  arguments.insert(arguments.end(), GetParam().begin(), GetParam().end());
  EXPECT_EQ(flawOfRefusal(runTool(arguments)), "");
}

using Words = std::vector<std::string>;
INSTANTIATE_TEST_SUITE_P(
    Decode, PacketUnreadable,
    testing::Values(Words{"decode"}, Words{"decode", "9"}, Words{"decode", kPacket + "0"},
                    Words{"decode", kPacket.substr(1)}, Words{"decode", "0 9C9"},
                    Words{"decode", "0:9C:9"}, Words{"decode", "09G9"}, Words{"decode", "0x09C9"},
                    Words{"decode", "09-C9"}, Words{"decode", "09,C9"}, Words{"decode", "09.C9"},
                    Words{"decode", "-1"}, Words{"decode", "09\xC3\xA9"},
                    Words{"decode", kPacket, "zz"}, Words{"decode", "zz", kPacket},
                    Words{"decode", kPacket, "", "9"}, Words{"decode", "{}"},
                    Words{"decode", "--hex", kPacket}));
// The command line's library reads some punctuation as its own; here it is not hexadecimal.
INSTANTIATE_TEST_SUITE_P(Brackets, PacketUnreadable,
                         testing::Values(Words{"decode", "[" + kPacket + "]"},
                                         Words{"decode", "[09C9,09C9]"}, Words{"decode", "[]"},
                                         Words{"decode", "\"" + kPacket + "\""}));
// What was given is quoted in the complaint, which stays one line all the same.
INSTANTIATE_TEST_SUITE_P(LineFeeds, PacketUnreadable,
                         testing::Values(Words{"decode", "zz\nyy"}, Words{"decode", "zz\n"},
                                         Words{"encode", "--mode", "1\n2"}, Words{"encode", "a\nb"},
                                         Words{"a\nb"}));
INSTANTIATE_TEST_SUITE_P(
    Encode, PacketUnreadable,
    testing::Values(
        Words{"encode", "--mode"}, Words{"encode", "--mode", ""}, Words{"encode", "--mode", "256"},
        Words{"encode", "--mode", "-1"}, Words{"encode", "--mode", "-0"},
        Words{"encode", "--mode", "+1"}, Words{"encode", "--mode", "0x10"},
        Words{"encode", "--mode", "1F"}, Words{"encode", "--mode", "1.0"},
        Words{"encode", "--mode", "1e2"}, Words{"encode", "--mode", " 1"},
        Words{"encode", "--mode", "1 "}, Words{"encode", "--mode", "[1]"},
        Words{"encode", "--mode", "1,2"}, Words{"encode", "--mode", "true"},
        Words{"encode", "--mode", "99999999999999999999"},
        Words{"encode", "--mode", "18446744073709551617"},
        Words{"encode", "--mode", "1", "--mode", "1"},
        Words{"encode", "--mode", "1", "--mode", "2"}, Words{"encode", "--mode", "1", "2"},
        Words{"encode", "--applicationId", "65536"}, Words{"encode", "--sequence", "65536"},
        Words{"encode", "--sequence", "-1"}, Words{"encode", "--transmitter", "256"}));
INSTANTIATE_TEST_SUITE_P(
    UnknownKeys, PacketUnreadable,
    testing::Values(Words{"encode", "--tempo", "1"}, Words{"encode", "--Mode", "1"},
                    Words{"encode", "--mod", "1"}, Words{"encode", "-mode", "1"},
                    Words{"encode", "mode", "1"}, Words{"encode", "--cueToken", "1"},
                    Words{"encode", "--broadcastKey", "1"}, Words{"encode", "--speedPercent", "1"},
                    Words{"encode", kPacket}));
INSTANTIATE_TEST_SUITE_P(Words, PacketUnreadable,
                         testing::Values(Words{}, Words{"recode", kPacket},
                                         Words{"decode", kPacket, "encode"}));

TEST(PacketEncode, WhatIsNotGivenIsZero) { EXPECT_EQ(encoded({}), kNothing + "\n"); }

TEST(PacketEncode, PutsEveryKeyWhereItBelongs) {
  for (const Key& key : kKeys) {
    const std::string option = std::string("--") + key.name;
    EXPECT_EQ(encoded({option, "1"}),
              packetWith({{key.byte, key.size == 2 ? "0001" : "01"}}) + "\n")
        << key.name;
    EXPECT_EQ(encoded({option, key.size == 2 ? "65535" : "255"}),
              packetWith({{key.byte, key.size == 2 ? "FFFF" : "FF"}}) + "\n")
        << key.name;
    const std::string larger = key.size == 2 ? "65536" : "256";
    EXPECT_EQ(flawOfRefusal(runTool({"packet", "encode", option, larger})), "") << key.name;
  }
}

TEST(PacketEncode, PrintsUpperCase) {
  EXPECT_EQ(encoded({"--red", "160", "--green", "159", "--blue", "171"}),
            packetWith({{8, "A09FAB"}}) + "\n");
}

TEST(PacketEncode, TwoBytesHaveTheHighOneFirst) {
  EXPECT_EQ(encoded({"--applicationId", "258", "--sequence", "772", "--transmitter", "7"}),
            packetWith({{2, "0102"}, {23, "030407"}}) + "\n");
}

TEST(PacketEncode, LeadingZerosAreDigits) {
  EXPECT_EQ(encoded({"--mode", "007"}), packetWith({{11, "07"}}) + "\n");
  EXPECT_EQ(encoded({"--mode", std::string(40, '0') + "255"}), packetWith({{11, "FF"}}) + "\n");
  EXPECT_EQ(encoded({"--sequence", "0000065535"}), packetWith({{23, "FFFF"}}) + "\n");
  EXPECT_EQ(encoded({"--mode", "00"}), kNothing + "\n");
}

TEST(PacketEncode, OrderOfTheKeysIsFree) {
  EXPECT_EQ(encoded({"--speed", "128", "--mode", "3"}), encoded({"--mode", "3", "--speed", "128"}));
}

TEST(PacketEncode, ValuesNeedNoMeaning) {
  EXPECT_EQ(encoded({"--mode", "99", "--syncFlag", "77", "--paletteId", "200"}),
            packetWith({{4, "4D"}, {11, "63"}, {22, "C8"}}) + "\n");
}

TEST(PacketRoundTrip, DecodingGivesWhatWasEncoded) {
  std::vector<std::string> options;
  for (std::size_t at = 0; at < kKeys.size(); ++at) {
    options.push_back(std::string("--") + kKeys[at].name);
    options.push_back(std::to_string(kKeys[at].size == 2 ? 60000 + at : 11 * at + 3));
  }
  std::string hex = encoded(options);
  ASSERT_EQ(hex.size(), 53U);
  hex.pop_back();
  const rapidjson::Document json = decoded(hex);
  for (std::size_t at = 0; at < kKeys.size(); ++at) {
    ASSERT_TRUE(json.HasMember(kKeys[at].name));
    EXPECT_EQ(std::to_string(json[kKeys[at].name].GetInt()), options[at * 2 + 1]);
  }
}

TEST(PacketRoundTrip, EncodingGivesWhatWasDecoded) {
  const rapidjson::Document json = decoded(kPacket);
  std::vector<std::string> options;
  for (const Key& key : kKeys) {
    options.push_back(std::string("--") + key.name);
    options.push_back(std::to_string(json[key.name].GetInt()));
  }
  EXPECT_EQ(encoded(options), kPacket + "\n");
}

}  // namespace
}  // namespace halvora
