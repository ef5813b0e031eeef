// SPDX-License-Identifier: Apache-2.0
// `halvora crowd` as a venue crew uses it: a small venue, a show, and what is said of it.
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "engine/broadcast.h"
#include "tests/venue/crowd/crowd_bench.h"
#include "tests/venue/plan/lut_folder.h"

namespace halvora {
namespace {

namespace fs = std::filesystem;

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

// Two seats and two standing places of a video of three by two pixels.
constexpr const char* kMap = R"({"sections": [
  {"name": "A", "rows": [{"name": "1", "seats": [{"name": "1", "x": 0, "y": 0},
                                                 {"name": "2", "x": 1, "y": 0}]}]},
  {"name": "Standing", "rows": [{"name": "1", "seats": [{"name": "1", "x": 0, "y": 1},
                                                        {"name": "2", "x": 2, "y": 1}]}]}]})";

std::string packet(double at, const Broadcast& broadcast, const std::string& more = "") {
  return "{\"at\": " + std::to_string(at) + ", \"packet\": \"" +
         NSDataToHex(encodeBroadcast(broadcast)) + "\"" + more + "}\n";
}

Broadcast look(std::uint16_t sequence) {
  Broadcast broadcast;
  broadcast.applicationId = 1;
  broadcast.venueId = 7;
  broadcast.master = 255;
  broadcast.mode = 1;
  broadcast.sequence = sequence;
  broadcast.transmitter = 1;
  return broadcast;
}

Broadcast colour(std::uint16_t sequence, std::uint8_t red) {
  Broadcast broadcast = look(sequence);
  broadcast.red = red;
  return broadcast;
}

Broadcast mapFrame(std::uint16_t sequence, std::uint8_t frame) {
  Broadcast broadcast = look(sequence);
  broadcast.pixelMapId = 1;
  broadcast.minutes = frame;
  return broadcast;
}

struct CrowdRoom : testing::Test {
  CrowdRoom() {
    folder.write("HVAssets/Maps/Venue-7/map.json", kMap);
    folder.write("HVAssets/Maps/Venue-7/1/video.mp4", kPlaces);
  }

  std::string at(const std::string& name) const { return (folder.path() / name).string(); }

  ToolRun run(const std::string& show, const Words& options = {}, const ToolSetup& setup = {}) {
    Words words{"crowd", "--assets",   folder.path().string(),          "--venue",
                "7",     "--scenario", folder.write("show.jsonl", show)};
    words.insert(words.end(), options.begin(), options.end());
    const bool hasOut = std::find(words.begin(), words.end(), "--out") != words.end();
    if (!hasOut) words.insert(words.end(), {"--out", at("sheet.png")});
    const bool hasSize = std::find(words.begin(), words.end(), "--size") != words.end();
    if (!hasSize) words.insert(words.end(), {"--size", "64x32"});
    return runTool(words, setup);
  }
  rapidjson::Document report(const std::string& show, const Words& options = {}) {
    const ToolRun run = this->run(show, options);
    EXPECT_EQ(run.status, 0) << run.error;
    rapidjson::Document json = jsonOf(run.output);
    EXPECT_TRUE(json.IsObject()) << run.output;
    return json;
  }

  TestFolder folder;
  const std::string start = "{\"at\": 0, \"start\": true}\n";
  /// Ten a second for two seconds, no two alike.
  std::string busyShow() const {
    std::string show = start;
    for (std::uint16_t at = 0; at < 20; ++at) {
      show += packet(1.5 + at * 0.1, colour(static_cast<std::uint16_t>(at + 1),
                                            static_cast<std::uint8_t>(at * 10 + 5)));
    }
    return show;
  }
  std::string mapShow() const {
    std::string show = start;
    for (std::uint8_t frame = 1; frame <= 40; ++frame) {
      show += packet(1.5 + frame / 30.0, mapFrame(frame, frame));
    }
    return show;
  }
};

double number(const rapidjson::Value& value, const char* outer, const char* inner) {
  return value[outer][inner].GetDouble();
}

// Whoever missed the looks between and is still on the one that comes back shows it.
TEST_F(CrowdRoom, ALookThatComesBackIsShownByWhoeverNeverLeftIt) {
  std::string alternating = start;
  std::string distinct = start;
  for (std::uint16_t at = 1; at <= 40; ++at) {
    const double time = 1.5 + at * 0.1;
    alternating += packet(time, colour(at, static_cast<std::uint8_t>(at % 2 * 100 + 50)));
    distinct += packet(time, colour(at, static_cast<std::uint8_t>(at * 5)));
  }
  const Words air = {"--loss", "0.5", "--jitter", "80"};
  const auto looks = [&](const std::string& show) {
    const rapidjson::Document json = report(show, air);
    rapidjson::StringBuffer text;
    rapidjson::Writer<rapidjson::StringBuffer> writer(text);
    json["looks"].Accept(writer);
    return std::string(text.GetString());
  };
  const std::string expected = looks(distinct);
  EXPECT_THAT(expected, HasSubstr("\"count\":40"));
  EXPECT_EQ(looks(alternating), expected);
}

TEST_F(CrowdRoom, ThePhonesTogetherShowTheVideoExactly) {
  const auto json = report(mapShow());
  EXPECT_EQ(json["phones"].GetInt(), 4);
  EXPECT_GT(number(json, "pixelMap", "frames"), 30);
  EXPECT_EQ(number(json, "pixelMap", "exact"), number(json, "pixelMap", "frames"));
  EXPECT_EQ(number(json, "pixelMap", "squaredError"), 0);
  EXPECT_TRUE(json["pixelMap"]["psnr"].IsNull());
  EXPECT_FALSE(json["pixelMap"].HasMember("worstSeat"));
}

TEST_F(CrowdRoom, APhoneWithoutPacketsIsTheErrorOfThePicture) {
  const auto json = report(mapShow(), {"--loss", "0.7", "--seed", "3"});
  EXPECT_GT(number(json, "pixelMap", "squaredError"), 0);
  EXPECT_LT(number(json, "pixelMap", "exact"), number(json, "pixelMap", "frames"));
  ASSERT_TRUE(json["pixelMap"].HasMember("worstSeat"));
  EXPECT_GT(json["pixelMap"]["worstSeat"]["levels"].GetDouble(), 0);
  EXPECT_TRUE(json["pixelMap"]["psnr"].IsNumber());
}

// Opened a second time it gives other colours under the same size and time.
TEST_F(CrowdRoom, KeepsTablesForTheSameVideoAndSeats) {
  fs::create_directory(at("tables"));
  const Words kept = {"--tables", at("tables")};
  const std::string video = folder.write("HVAssets/Maps/Venue-7/1/video.mp4", kPlaces);
  const auto time = fs::last_write_time(video);
  EXPECT_EQ(report(mapShow(), kept)["pixelMap"]["squaredError"].GetInt64(), 0);
  const auto files = [&] {
    return std::distance(fs::directory_iterator(at("tables")), fs::directory_iterator());
  };
  EXPECT_EQ(files(), 1);
  const std::string sheet = contentsOf(at("sheet.png"));
  // The same bytes but for the colours: whoever reads the video again shows them.
  std::string other = kPlaces;
  other.replace(other.find("FF010100"), 8, "FF99FF99");
  folder.write("HVAssets/Maps/Venue-7/1/video.mp4", other);
  fs::last_write_time(video, time);
  report(mapShow(), kept);
  EXPECT_EQ(contentsOf(at("sheet.png")), sheet);
  EXPECT_EQ(files(), 1);
  // Of another time it is another video, and of fewer seats another table.
  fs::last_write_time(video, time + std::chrono::seconds(1));
  report(mapShow(), kept);
  EXPECT_NE(contentsOf(at("sheet.png")), sheet);
  EXPECT_EQ(files(), 2);
  report(mapShow(), {"--tables", at("tables"), "--phones", "2"});
  EXPECT_EQ(files(), 3);
  EXPECT_EQ(flawOfRefusal(run(mapShow(), {"--tables", at("nowhere")})), "");
}

TEST_F(CrowdRoom, CutTablesAreBuiltAgain) {
  fs::create_directory(at("tables"));
  const Words kept = {"--tables", at("tables")};
  report(mapShow(), kept);
  const fs::path file = fs::directory_iterator(at("tables"))->path();
  const auto size = fs::file_size(file);
  fs::resize_file(file, size - 4);
  EXPECT_EQ(report(mapShow(), kept)["pixelMap"]["squaredError"].GetInt64(), 0);
  EXPECT_EQ(fs::file_size(file), size);
}

// As after a power cut: the size is right, and the bytes are not.
TEST_F(CrowdRoom, DamagedTablesAreBuiltAgain) {
  fs::create_directory(at("tables"));
  const Words kept = {"--tables", at("tables")};
  report(mapShow(), kept);
  const std::string sheet = contentsOf(at("sheet.png"));
  const fs::path file = fs::directory_iterator(at("tables"))->path();
  const std::string whole = contentsOf(file);
  const auto isMended = [&](const std::string& damaged) {
    std::ofstream(file, std::ios::binary) << damaged;
    report(mapShow(), kept);
    return contentsOf(at("sheet.png")) == sheet && contentsOf(file) == whole;
  };
  for (const std::size_t at : {std::size_t{0}, whole.size() / 2, whole.size() - 1}) {
    std::string flipped = whole;
    flipped[at] = static_cast<char>(flipped[at] ^ 0x10);
    EXPECT_TRUE(isMended(flipped)) << at;
  }
  EXPECT_TRUE(isMended(std::string(whole.size(), '\0')));
}

TEST_F(CrowdRoom, CountsWhatIsSentHeardAndLost) {
  const auto json = report(busyShow());
  EXPECT_EQ(number(json, "packets", "sent"), 20);
  EXPECT_EQ(number(json, "packets", "offered"), 80);
  EXPECT_EQ(number(json, "packets", "heard"), 80);
  EXPECT_EQ(number(json, "packets", "lost"), 0);
}

TEST_F(CrowdRoom, ALostPacketIsCountedAsLost) {
  const auto json = report(busyShow(), {"--loss", "0.5"});
  EXPECT_EQ(number(json, "packets", "offered"), 80);
  EXPECT_GT(number(json, "packets", "lost"), 20);
  EXPECT_EQ(number(json, "packets", "heard"), 80 - number(json, "packets", "lost"));
}

TEST_F(CrowdRoom, WithoutLossEveryLookIsShownAtOnce) {
  const auto json = report(busyShow());
  EXPECT_EQ(number(json, "looks", "count"), 20);
  for (const char* share : {"shownBy50", "shownBy95", "shownBy99"}) {
    EXPECT_EQ(json["looks"][share]["median"].GetInt(), 0) << share;
    EXPECT_EQ(json["looks"][share]["worst"].GetInt(), 0) << share;
    EXPECT_EQ(json["looks"][share]["never"].GetInt(), 0) << share;
  }
}

TEST_F(CrowdRoom, JitterIsTheTimeThatALookTakes) {
  const auto json = report(busyShow(), {"--jitter", "60"});
  EXPECT_GT(json["looks"]["shownBy99"]["worst"].GetInt(), 20);
  EXPECT_LE(json["looks"]["shownBy99"]["worst"].GetInt(), 60);
  EXPECT_LE(json["looks"]["shownBy50"]["median"].GetInt(),
            json["looks"]["shownBy99"]["median"].GetInt());
}

struct ShowRoom : CrowdRoom {
  ToolRun runShow(const Words& options) {
    Words words{"crowd",
                "--assets",
                folder.path().string(),
                "--venue",
                "7",
                "--show",
                folder.write("show.yaml", kCues),
                "--out",
                at("sheet.png"),
                "--size",
                "64x32"};
    words.insert(words.end(), options.begin(), options.end());
    return runTool(words);
  }
  rapidjson::Document reportShow(const Words& options = {}) {
    const ToolRun run = runShow(options);
    EXPECT_EQ(run.status, 0) << run.error;
    return jsonOf(run.output);
  }
  static constexpr const char* kCues =
      "application: 1\nvenue: 7\ntransmitter: 1\ncues:\n"
      "- {name: Dawn, at: 2, look: {mode: 1, colour: \"#ff0000\"}}\n"
      "- {name: Day, at: 3, fade: 0.5, look: {mode: 1, colour: \"#ffffff\", master: 90}}\n"
      "- {name: Dusk, at: 5, hold: 2, look: {mode: 1, colour: \"#0000ff\"}}\n";
};

TEST_F(ShowRoom, SaysOfEachCueHowItWasFollowedBySection) {
  const auto json = reportShow();
  const auto& cues = json["cues"];
  ASSERT_EQ(cues.Size(), 3U);
  EXPECT_STREQ(cues[1]["cue"].GetString(), "Day");
  EXPECT_EQ(cues[1]["t"].GetInt(), 3000);
  EXPECT_EQ(cues[1]["phones"].GetInt(), 4);
  for (const auto& cue : cues.GetArray()) {
    for (const char* share : {"shownBy50", "shownBy95", "shownBy99"}) {
      EXPECT_EQ(cue[share].GetInt(), 0) << cue["cue"].GetString() << " " << share;
    }
    ASSERT_EQ(cue["sections"].Size(), 2U);
    EXPECT_EQ(cue["sections"][0]["phones"].GetInt(), 2);
    EXPECT_EQ(cue["sections"][1]["shownBy99"].GetInt(), 0);
  }
  EXPECT_STREQ(cues[0]["sections"][0]["section"].GetString(), "A");
}

TEST_F(ShowRoom, ADeadTransmitterLeavesTheHallBehind) {
  const auto json = reportShow({"--dead", "1@4"});
  EXPECT_EQ(json["cues"][1]["shownBy99"].GetInt(), 0);
  EXPECT_TRUE(json["cues"][2]["shownBy50"].IsNull());
  EXPECT_TRUE(json["cues"][2]["sections"][0]["shownBy50"].IsNull());
}

TEST_F(ShowRoom, AZoneIsHeardInItsSectionsOnly) {
  const auto json = reportShow({"--zone", "1=Standing"});
  EXPECT_EQ(json["cues"][0]["shownBy50"].GetInt(), 0);
  EXPECT_TRUE(json["cues"][0]["shownBy95"].IsNull());
  EXPECT_TRUE(json["cues"][0]["sections"][0]["shownBy50"].IsNull());
  EXPECT_EQ(json["cues"][0]["sections"][1]["shownBy99"].GetInt(), 0);
  const auto both = reportShow({"--zone", "1=Standing", "--zone", "1=A"});
  EXPECT_EQ(both["cues"][0]["shownBy99"].GetInt(), 0);
  EXPECT_EQ(flawOfRefusal(runShow({"--zone", "1=Gallery"})), "");
  EXPECT_EQ(flawOfRefusal(runShow({"--zone", "Standing"})), "");
}

TEST_F(ShowRoom, ASlowControllerIsFollowedLater) {
  const auto json = reportShow({"--air", "700"});
  // It sends at 2, 2.7, 3.4, 4.1, 4.8 and 5.5 seconds.
  EXPECT_EQ(json["cues"][0]["shownBy50"].GetInt(), 0);
  EXPECT_EQ(json["cues"][1]["shownBy50"].GetInt(), 400);
  EXPECT_EQ(json["cues"][2]["shownBy50"].GetInt(), 500);
}

TEST_F(ShowRoom, TheSameSeedGivesTheSameCuesWhateverTheThreads) {
  const Words air = {"--loss", "0.6", "--jitter", "40", "--threads"};
  const auto cues = [&](const char* threads) {
    Words options = air;
    options.emplace_back(threads);
    const rapidjson::Document json = reportShow(options);
    rapidjson::StringBuffer text;
    rapidjson::Writer<rapidjson::StringBuffer> writer(text);
    json["cues"].Accept(writer);
    return std::string(text.GetString());
  };
  EXPECT_EQ(cues("1"), cues("3"));
}

TEST_F(ShowRoom, RefusesWhatItCannotShow) {
  EXPECT_EQ(flawOfRefusal(runShow({"--scenario", "x"})), "");
  EXPECT_EQ(flawOfRefusal(runShow({"--dead", "1"})), "");
  EXPECT_EQ(flawOfRefusal(runShow({"--dead", "256@1"})), "");
  EXPECT_EQ(flawOfRefusal(runShow({"--air", "0"})), "");
  EXPECT_EQ(flawOfRefusal(runShow({"--air", "9", "--interval", "9"})), "");
  folder.write("show.yaml", "cues: 1\n");
  EXPECT_EQ(flawOfRefusal(runTool({"crowd", "--assets", folder.path().string(), "--venue", "7",
                                   "--show", at("show.yaml"), "--out", at("sheet.png")})),
            "");
}

TEST_F(CrowdRoom, ALookThatIsNeverHeardIsNeverShown) {
  const auto json = report(start + packet(1.5, colour(1, 200)), {"--loss", "1"});
  EXPECT_EQ(json["looks"]["shownBy50"]["never"].GetInt(), 1);
  EXPECT_TRUE(json["looks"]["shownBy50"]["median"].IsNull());
  EXPECT_EQ(number(json, "dark", "share"), 1);
}

TEST_F(CrowdRoom, ANewerLookCountsForTheOnesItReplaced) {
  // One phone alone hears the first look; the others have it over with when the second one comes.
  Broadcast second = colour(2, 200);
  second.transmitter = 2;
  const auto json =
      report(start + packet(1.5, colour(1, 100)) + packet(1.6, second), {"--reach", "1@0,0,0.5"});
  EXPECT_EQ(number(json, "looks", "count"), 2);
  EXPECT_EQ(json["looks"]["shownBy50"]["worst"].GetInt(), 100);
  EXPECT_EQ(json["looks"]["shownBy99"]["worst"].GetInt(), 100);
  EXPECT_EQ(json["looks"]["shownBy99"]["never"].GetInt(), 0);
}

TEST_F(CrowdRoom, RepeatsMakeUpForLoss) {
  const std::string show = start + packet(1.5, colour(1, 200));
  const auto once = report(show, {"--loss", "0.6", "--until", "6"});
  const auto often = report(show, {"--loss", "0.6", "--interval", "50", "--until", "6"});
  EXPECT_EQ(once["looks"]["shownBy99"]["never"].GetInt(), 1);
  EXPECT_EQ(often["looks"]["shownBy99"]["never"].GetInt(), 0);
}

TEST_F(CrowdRoom, SaysTheSameForOneSeedWhateverTheNumberOfThreads) {
  folder.write("HVAssets/Maps/Venue-7/map.json", mapOfSeats(kSeveralBlocks));
  const Words options{"--loss", "0.3", "--jitter", "30", "--late", "0.5,1", "--leave", "0.5"};
  const auto textWith = [&](const char* threads) {
    Words all = options;
    all.insert(all.end(), {"--threads", threads});
    auto json = report(mapShow(), all);
    json.RemoveMember("simulatedSecondsPerSecond");
    EXPECT_EQ(json["phones"].GetUint(), kSeveralBlocks);
    EXPECT_GT(number(json, "packets", "lost"), 0);
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    json.Accept(writer);
    return std::string(buffer.GetString()) + contentsOf(at("sheet.png"));
  };
  const std::string one = textWith("1");
  EXPECT_EQ(textWith("3"), one);
  EXPECT_EQ(textWith("4"), one);
}

TEST_F(CrowdRoom, ThePhonesOfAllBlocksShowTheVideoExactly) {
  folder.write("HVAssets/Maps/Venue-7/map.json", mapOfSeats(kSeveralBlocks));
  const auto json = report(mapShow(), {"--threads", "2"});
  EXPECT_EQ(json["phones"].GetUint(), kSeveralBlocks);
  EXPECT_GT(number(json, "pixelMap", "frames"), 30);
  EXPECT_EQ(number(json, "pixelMap", "exact"), number(json, "pixelMap", "frames"));
}

TEST_F(CrowdRoom, AnotherSeedIsAnotherCrowd) {
  const auto one = report(busyShow(), {"--loss", "0.5", "--seed", "1"});
  const auto other = report(busyShow(), {"--loss", "0.5", "--seed", "2"});
  EXPECT_NE(number(one, "packets", "lost"), number(other, "packets", "lost"));
}

TEST_F(CrowdRoom, PhonesThatComeLateMissWhatWasSentBefore) {
  const auto json = report(busyShow(), {"--late", "1,3"});
  EXPECT_LT(number(json, "packets", "offered"), 80);
  EXPECT_GT(number(json, "packets", "offered"), 0);
}

TEST_F(CrowdRoom, PhonesThatLeaveMissWhatIsSentLater) {
  const auto json = report(busyShow(), {"--leave", "1"});
  EXPECT_LT(number(json, "packets", "offered"), 80);
}

TEST_F(CrowdRoom, PhonesOutOfATransmittersReachStayDark) {
  const auto json = report(busyShow(), {"--reach", "1@0,0,1"});
  EXPECT_EQ(number(json, "packets", "heard"), 60);
  EXPECT_NEAR(number(json, "dark", "worst"), 1, 1e-9);
  EXPECT_NEAR(number(json, "dark", "share"), 0.25, 0.1);
}

TEST_F(CrowdRoom, ObeysOnlyTheTransmittersThatItMay) {
  const auto json = report(busyShow(), {"--allow", "1:2"});
  EXPECT_EQ(json["looks"]["shownBy50"]["never"].GetInt(), 20);
  EXPECT_EQ(number(json, "dark", "share"), 1);
}

TEST_F(CrowdRoom, CountsTheFlashesOfAPhoneAndOfTheCrowd) {
  // Red and black by turns, five times a second, which all phones show at once.
  std::string show = start;
  for (std::uint16_t at = 0; at < 40; ++at) {
    show += packet(3 + at * 0.1, colour(static_cast<std::uint16_t>(at + 1), at % 2 == 0 ? 255 : 0));
  }
  const auto json = report(show);
  EXPECT_EQ(json["flashes"]["phone"]["red"].GetInt(), 5);
  EXPECT_EQ(json["flashes"]["crowd"]["red"].GetInt(), 5);
  EXPECT_EQ(report(start + packet(2, colour(1, 255)))["flashes"]["crowd"]["general"].GetInt(), 0);
}

TEST_F(CrowdRoom, WhatIsAsBlueAsItIsRedIsNoRedFlash) {
  std::string show = start;
  for (std::uint16_t at = 0; at < 40; ++at) {
    Broadcast purple = colour(static_cast<std::uint16_t>(at + 1), at % 2 == 0 ? 255 : 0);
    purple.blue = purple.red;
    show += packet(3 + at * 0.1, purple);
  }
  const auto json = report(show);
  for (const char* whose : {"phone", "crowd"}) {
    EXPECT_EQ(json["flashes"][whose]["red"].GetInt(), 0) << whose;
    EXPECT_EQ(json["flashes"][whose]["general"].GetInt(), 5) << whose;
  }
}

TEST_F(CrowdRoom, ASinglePhoneIsComparedWithTheVideoToo) {
  const auto json = report(mapShow(), {"--phones", "1"});
  EXPECT_GT(number(json, "pixelMap", "frames"), 30);
  EXPECT_EQ(number(json, "pixelMap", "exact"), number(json, "pixelMap", "frames"));
}

TEST_F(CrowdRoom, ASeatOfTheScenarioIsNobodysHere) {
  const std::string seat =
      "{\"at\": 0, \"defaults\": {\"selectedSection\": null, \"xPos\": \"2\", \"yPos\": \"1\"}}\n";
  const auto json = report(seat + mapShow());
  EXPECT_EQ(number(json, "pixelMap", "squaredError"), 0);
}

TEST_F(CrowdRoom, FewerPhonesAreSpreadOverTheSeats) {
  EXPECT_EQ(report(busyShow(), {"--phones", "2"})["phones"].GetInt(), 2);
  EXPECT_EQ(report(busyShow(), {"--phones", "2"})["seats"].GetInt(), 4);
}

TEST_F(CrowdRoom, WritesAFolderOfPictures) {
  const auto json =
      report(busyShow(), {"--out", at("frames"), "--fps", "10", "--until", "1", "--size", "64x32"});
  EXPECT_EQ(json["framesWritten"].GetInt(), 11);
  EXPECT_THAT(contentsOf(at("frames/frame-000001.png")), StartsWith("P6 64 32 255\n"));
  EXPECT_TRUE(fs::exists(at("frames/frame-000011.png")));
  EXPECT_FALSE(fs::exists(at("frames/frame-000012.png")));
}

TEST_F(CrowdRoom, AContactSheetIsOnePicture) {
  const auto json = report(busyShow());
  EXPECT_EQ(json["framesWritten"].GetInt(), 24);
  EXPECT_THAT(contentsOf(at("sheet.png")), StartsWith("P6 286 234 255\n"));
}

struct Refused : CrowdRoom {
  void expectRefused(const ToolRun& run, const std::string& what) {
    EXPECT_EQ(flawOfRefusal(run), "");
    EXPECT_THAT(run.error, HasSubstr(what));
    for (const auto& entry : fs::directory_iterator(folder.path())) {
      EXPECT_FALSE(entry.path().filename().string().starts_with("sheet")) << entry.path();
    }
  }
};

TEST_F(Refused, AVenueWithoutAMap) {
  fs::remove(at("HVAssets/Maps/Venue-7/map.json"));
  expectRefused(run(busyShow()), "map.json: cannot be read");
}

TEST_F(Refused, AMapWithoutSeats) {
  folder.write("HVAssets/Maps/Venue-7/map.json", "{\"sections\": []}");
  expectRefused(run(busyShow()), "map.json: has no seats");
}

TEST_F(Refused, AShowWhosePixelMapHasNoVideo) {
  fs::remove(at("HVAssets/Maps/Venue-7/1/video.mp4"));
  expectRefused(run(mapShow()), "Venue-7/1/video.mp4: missing");
}

TEST_F(Refused, AFolderThatWasMadeForItGoesAgainAndOneThatWasThereStays) {
  fs::remove(at("HVAssets/Maps/Venue-7/1/video.mp4"));
  expectRefused(run(mapShow(), {"--out", at("new")}), "video.mp4: missing");
  EXPECT_FALSE(fs::exists(at("new")));
  fs::create_directory(at("old"));
  expectRefused(run(mapShow(), {"--out", at("old")}), "video.mp4: missing");
  EXPECT_TRUE(fs::is_empty(at("old")));
}

TEST_F(Refused, AVideoThatIsNone) {
  folder.write("HVAssets/Maps/Venue-7/1/video.mp4", "not a video");
  expectRefused(run(mapShow()), "video.mp4: cannot be read as a video");
}

TEST_F(Refused, AShowOfColoursNeedsNoVideo) {
  fs::remove_all(at("HVAssets/Maps/Venue-7/1"));
  EXPECT_EQ(run(busyShow()).status, 0);
}

TEST_F(Refused, AScenarioWithABrokenLine) {
  expectRefused(run(start + "{\"at\": 1}\n"), "show.jsonl:2: ");
}

TEST_F(Refused, AnOutputFolderThatCannotBeWritten) {
  folder.write("file", "");
  expectRefused(run(busyShow(), {"--out", at("file") + "/frames"}), "file/frames: cannot be");
  expectRefused(run(busyShow(), {"--out", at("missing/sheet.png")}), "sheet.png: cannot be");
}

TEST_F(Refused, AMovieWithoutAnythingThatWritesMovies) {
  expectRefused(run(busyShow(), {"--out", at("crowd.mp4")}), "crowd.mp4: cannot be written");
}

TEST_F(Refused, MorePhonesThanSeats) {
  expectRefused(run(busyShow(), {"--phones", "5"}), "venue 7 has only 4 seats");
}

TEST_F(Refused, NumbersOutOfTheirRange) {
  for (const auto& [option, value] :
       std::vector<std::pair<std::string, std::string>>{{"--loss", "1.1"},
                                                        {"--loss", "-0.1"},
                                                        {"--loss", "some"},
                                                        {"--jitter", "-1"},
                                                        {"--interval", "0"},
                                                        {"--reach", "1@2,3"},
                                                        {"--reach", "x@1,2,3"},
                                                        {"--late", "0.5"},
                                                        {"--late", "2,1"},
                                                        {"--leave", "2"},
                                                        {"--seed", "-1"},
                                                        {"--threads", "0"},
                                                        {"--fps", "0"},
                                                        {"--fps", "2.5"},
                                                        {"--fps", "121"},
                                                        {"--phones", "10000001"},
                                                        {"--threads", "257"},
                                                        {"--leave", "1.01"},
                                                        {"--reach", "256@1,2,3"},
                                                        {"--reach", "1@1000001,2,3"},
                                                        {"--reach", "1@1,1000001,3"},
                                                        {"--reach", "1@1,-1000001,3"},
                                                        {"--reach", "1@1,2,1000001"},
                                                        {"--size", "64"},
                                                        {"--size", "65x32"},
                                                        {"--size", "64x32x2"},
                                                        {"--until", "-1"},
                                                        {"--phones", "0"}}) {
    expectRefused(run(busyShow(), {option, value}), option);
  }
}

TEST_F(Refused, AVenueBeyondItsRange) {
  for (const char* venue : {"0", "1000000001"}) {
    const ToolRun run = runTool({"crowd", "--assets", folder.path().string(), "--venue", venue,
                                 "--scenario", at("none.jsonl"), "--out", at("sheet.png")});
    expectRefused(run, "--venue must be");
  }
}

TEST_F(Refused, ASizeThatIsNoNumberNamesTheOption) {
  expectRefused(run(busyShow(), {"--size", "widexhigh"}), "--size must be");
}

// Calls `act` once, while the crowd runs.
Terminal whileSimulating(std::function<void()> act) {
  return {.write =
              [act = std::move(act), isDone = false](std::string_view text) mutable {
                if (text.find("simulating") == std::string_view::npos) return;
                if (!std::exchange(isDone, true)) act();
              },
          .now = [time = Duration{}]() mutable { return time += milliseconds(200); }};
}

TEST_F(Refused, APictureThatCannotBeWrittenEndsTheRun) {
  const ToolRun run = this->run(busyShow(), {"--out", at("frames")},
                                {.terminal = whileSimulating([this] {
                                   fs::create_directories(at("frames/frame-000040.png/in"));
                                 })});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.output, "");
  EXPECT_THAT(run.error, EndsWith("frames: cannot be written"));
  EXPECT_TRUE(fs::exists(at("frames/frame-000039.png")));
  EXPECT_FALSE(fs::exists(at("frames/frame-000041.png")));
}

TEST_F(Refused, ASheetThatCannotBeWrittenInTheEndIsSaid) {
  const ToolRun run = this->run(
      busyShow(), {},
      {.terminal = whileSimulating([this] { fs::create_directories(at("sheet.png/in")); })});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.output, "");
  EXPECT_THAT(run.error, EndsWith("sheet.png: cannot be written"));
}

TEST_F(Refused, NoRoomForTheTables) {
  const char* before = std::getenv("TMPDIR");
  const std::optional<std::string> kept =
      before != nullptr ? std::optional<std::string>(before) : std::nullopt;
  setenv("TMPDIR", at("missing").c_str(), 1);
  const ToolRun run = this->run(mapShow());
  if (kept) {
    setenv("TMPDIR", kept->c_str(), 1);
  } else {
    unsetenv("TMPDIR");
  }
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.output, "");
  EXPECT_EQ(run.error, "no room for the seat tables in the temporary folder");
  EXPECT_FALSE(fs::exists(at("sheet.png")));
}

TEST_F(CrowdRoom, InterruptedItKeepsTheFramesSoFar) {
  std::atomic<bool> isInterrupted{false};
  int shown = 0;
  Duration time{};
  const Terminal terminal{
      .write =
          [&](std::string_view text) {
            if (text.find("simulating") != std::string_view::npos && ++shown == 2) {
              isInterrupted = true;
            }
          },
      .now = [&] { return time += milliseconds(200); }};
  const ToolRun run = this->run(busyShow(), {"--out", at("frames"), "--size", "64x32"},
                                {.isInterrupted = &isInterrupted, .terminal = terminal});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.error, "interrupted");
  EXPECT_TRUE(fs::exists(at("frames/frame-000030.png")));
  EXPECT_FALSE(fs::exists(at("frames/frame-000151.png")));
  EXPECT_THAT(run.output, EndsWith("}\n"));
}

}  // namespace
}  // namespace halvora
