// SPDX-License-Identifier: Apache-2.0
// Shards of a crowd, put together, are the crowd: its report and its pictures, byte for byte.
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <regex>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/venue/crowd/crowd_bench.h"
#include "tests/venue/plan/lut_folder.h"

namespace halvora {
namespace {

namespace fs = std::filesystem;

using testing::HasSubstr;

std::string packet(double at, const Broadcast& broadcast) {
  return "{\"at\": " + std::to_string(at) + ", \"packet\": \"" +
         NSDataToHex(encodeBroadcast(broadcast)) + "\"}\n";
}

// Sections of any size, in which names come again, and seats that share pixels.
std::string randomMap(std::mt19937& random) {
  const auto draw = [&](unsigned most) { return static_cast<unsigned>(random() % (most + 1)); };
  std::string map = R"({"sections": [)";
  const unsigned sections = 1 + draw(4);
  for (unsigned section = 0; section < sections; ++section) {
    map += std::string(section > 0 ? "," : "") + R"({"name": ")" +
           (draw(3) == 0 ? "Standing" : "Block " + std::to_string(draw(2))) +
           R"(", "rows": [{"name": "1", "seats": [)";
    const unsigned seats = 1 + draw(40);
    for (unsigned seat = 0; seat < seats; ++seat) {
      map += std::string(seat > 0 ? "," : "") + R"({"name": ")" + std::to_string(seat) +
             R"(", "x": )" + std::to_string(draw(2)) + R"(, "y": )" + std::to_string(draw(1)) + "}";
    }
    map += "]}]}";
  }
  return map + "]}";
}

// Colours, effects and frames of a map, in any order.
std::string randomShow(std::mt19937& random) {
  std::string show = "{\"at\": 0, \"start\": true}\n";
  double time = 1.2;
  for (std::uint16_t at = 1; at <= 40; ++at) {
    Broadcast look = plainLook(at, static_cast<std::uint8_t>(random()));
    look.transmitter = static_cast<std::uint8_t>(1 + random() % 2);
    look.mode = static_cast<std::uint8_t>(random() % 12);
    look.speed = static_cast<std::uint8_t>(random());
    look.ledMode = static_cast<std::uint8_t>(random() % 4);
    if (random() % 3 == 0) look.pixelMapId = 1;
    look.minutes = static_cast<std::uint8_t>(random() % 4);
    show += packet(time, look);
    time += static_cast<double>(random() % 300) / 1000;
  }
  return show;
}

struct Shards : testing::Test {
  Shards() { folder.write("HVAssets/Maps/Venue-7/1/video.mp4", kPlaces); }

  std::string at(const std::string& name) const { return (folder.path() / name).string(); }
  ToolRun run(const std::string& out, Words options) const {
    Words words{"crowd",   "--assets", folder.path().string(),
                "--venue", "7",        "--size",
                "64x32",   "--fps",    "10",
                "--out",   at(out)};
    const bool hasShow = std::ranges::find(options, "--show") != options.end();
    if (!hasShow) words.insert(words.end(), {"--scenario", at("show.jsonl")});
    words.insert(words.end(), options.begin(), options.end());
    return runTool(words);
  }
  // What `run` makes, by so many shards.
  ToolRun runShards(const std::string& out, const Words& options, int count) const {
    Words merge{"crowd", "merge", "--out", at(out)};
    for (int shard = count; shard > 0; --shard) {
      const std::string name = std::to_string(shard) + "/" + std::to_string(count);
      Words words = options;
      words.insert(words.end(), {"--shard", name});
      const ToolRun part = run(out, words);
      EXPECT_EQ(part.status, 0) << part.error;
      EXPECT_FALSE(fs::exists(at(out)));
      merge.push_back(partOf(out, shard, count));
    }
    return runTool(merge);
  }
  std::string partOf(const std::string& out, int shard, int count) const {
    return at(out + ".shard-" + std::to_string(shard) + "-of-" + std::to_string(count));
  }
  static std::string withoutSpeed(const std::string& report) {
    return std::regex_replace(report, std::regex("\n  \"simulatedSecondsPerSecond.*\n"), "\n");
  }
  // All files below, with their contents.
  static std::string everythingIn(const fs::path& path) {
    if (!fs::is_directory(path)) return contentsOf(path);
    std::vector<fs::path> files(fs::directory_iterator(path), {});
    std::ranges::sort(files);
    std::string all;
    for (const fs::path& file : files) all += file.filename().string() + contentsOf(file);
    return all;
  }
  void expectTheSame(const Words& options, const std::string& kind = ".png") {
    const ToolRun whole = run("whole" + kind, options);
    ASSERT_EQ(whole.status, 0) << whole.error;
    for (const int count : {1, 2, 3, 7}) {
      const std::string out = "of" + std::to_string(count) + kind;
      const ToolRun merged = runShards(out, options, count);
      ASSERT_EQ(merged.status, 0) << merged.error;
      EXPECT_EQ(withoutSpeed(merged.output), withoutSpeed(whole.output)) << count;
      EXPECT_EQ(everythingIn(at(out)), everythingIn(at("whole" + kind))) << count;
      fs::remove_all(at(out));
    }
    fs::remove_all(at("whole" + kind));
  }

  TestFolder folder;
};

TEST_F(Shards, AreTheWholeCrowdWhateverVenueAndShow) {
  for (unsigned seed = 1; seed <= 4; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    folder.write("HVAssets/Maps/Venue-7/map.json", randomMap(random));
    folder.write("show.jsonl", randomShow(random));
    expectTheSame({"--loss", "0.3", "--jitter", "70", "--late", "0.3,2", "--leave", "0.2",
                   "--reach", "2@1,1,1", "--seed", std::to_string(seed)});
  }
}

TEST_F(Shards, MakeTheSameFolderOfPictures) {
  std::mt19937 random(9);
  folder.write("HVAssets/Maps/Venue-7/map.json", randomMap(random));
  folder.write("show.jsonl", randomShow(random));
  expectTheSame({"--loss", "0.2"}, "");
}

TEST_F(Shards, HaveMorePhonesThanABlockOrNone) {
  std::mt19937 random(4);
  folder.write("show.jsonl", randomShow(random));
  for (const std::size_t seats : {std::size_t{3}, kSeveralBlocks}) {
    folder.write("HVAssets/Maps/Venue-7/map.json", mapOfSeats(seats));
    expectTheSame({"--loss", "0.2", "--until", "4"});
  }
}

TEST_F(Shards, AgreeAboutAttackersAndCues) {
  folder.write("HVAssets/Maps/Venue-7/map.json", mapOfSeats(150));
  folder.write("show.yaml",
               "application: 1\nvenue: 7\ntransmitter: 1\ncues:\n"
               "- {name: Dawn, at: 2, look: {mode: 1, colour: \"#ff0000\"}}\n"
               "- {name: Day, at: 3, fade: 0.5, look: {mode: 5, speed: 90, master: 90}}\n"
               "- {name: Dusk, at: 4, hold: 2, look: {mode: 1, colour: \"#0000ff\"}}\n");
  expectTheSame(
      {"--show", at("show.yaml"), "--loss", "0.6", "--late", "0.5,3", "--rogue", "ahead@2.5"});
}

TEST_F(Shards, LookFromTheSameTimeOn) {
  std::mt19937 random(5);
  folder.write("HVAssets/Maps/Venue-7/map.json", randomMap(random));
  folder.write("show.jsonl", randomShow(random));
  expectTheSame({"--loss", "0.2", "--from", "2.03"});
}

// The end of the whole run: its pictures, and its figures as far as they lie there.
TEST_F(Shards, WhatIsLookedAtLaterIsTheEndOfTheWhole) {
  std::mt19937 random(6);
  folder.write("HVAssets/Maps/Venue-7/map.json", randomMap(random));
  folder.write("show.jsonl", randomShow(random));
  ASSERT_EQ(run("whole", {"--loss", "0.2"}).status, 0);
  const ToolRun later = run("later", {"--loss", "0.2", "--from", "3.01"});
  ASSERT_EQ(later.status, 0) << later.error;
  const auto count = [](const fs::path& pictures) {
    return std::distance(fs::directory_iterator(pictures), fs::directory_iterator());
  };
  const auto frames = count(at("later"));
  const auto before = count(at("whole")) - frames;
  EXPECT_EQ(before, 31);
  EXPECT_THAT(later.output, HasSubstr("\"frames\": " + std::to_string(frames) + ","));
  const auto picture = [&](const char* name, std::int64_t number) {
    char file[32];
    std::snprintf(file, sizeof file, "/frame-%06lld.png", static_cast<long long>(number));
    return contentsOf(at(name + std::string(file)));
  };
  for (std::int64_t at = 1; at <= frames; ++at) {
    EXPECT_EQ(picture("later", at), picture("whole", at + before)) << at;
  }
  EXPECT_EQ(flawOfRefusal(run("x.png", {"--from", "9", "--until", "8"})), "");
}

struct BadShards : Shards {
  BadShards() {
    folder.write("HVAssets/Maps/Venue-7/map.json", mapOfSeats(9));
    std::mt19937 random(1);
    folder.write("show.jsonl", randomShow(random));
  }
  std::string part(int shard, const Words& options = {}) {
    Words words = options;
    words.insert(words.end(), {"--shard", std::to_string(shard) + "/2"});
    EXPECT_EQ(run("out.png", words).status, 0);
    return partOf("out.png", shard, 2);
  }
  // The one line of a refusal, which leaves nothing behind.
  std::string refusalOf(Words parts, const std::string& out = "merged.png") {
    Words words{"crowd", "merge", "--out", at(out)};
    words.insert(words.end(), parts.begin(), parts.end());
    const ToolRun run = runTool(words);
    EXPECT_EQ(flawOfRefusal(run), "");
    EXPECT_FALSE(fs::exists(at(out)));
    return run.error;
  }
};

TEST_F(BadShards, AreToldApartAndAllThere) {
  const std::string first = part(1);
  const std::string second = part(2);
  EXPECT_THAT(refusalOf({first}), HasSubstr("shard 2 of 2 is missing"));
  EXPECT_THAT(refusalOf({first, second, first}), HasSubstr("shard 1 of 2 is there twice"));
  EXPECT_THAT(refusalOf({first, part(2, {"--loss", "0.5"})}),
              HasSubstr("was run with --loss 0.5, but"));
  folder.write("HVAssets/Maps/Venue-7/map.json", mapOfSeats(10));
  EXPECT_THAT(refusalOf({first, part(2)}), HasSubstr("was run with map "));
}

TEST_F(BadShards, OfASheetMakeNoMovie) {
  EXPECT_THAT(refusalOf({part(1), part(2)}, "merged"), HasSubstr("pictures of a sheet only"));
}

TEST_F(BadShards, OptionsThatAreNoShard) {
  for (const char* shard : {"0/2", "3/2", "1/513", "1", "1/2/3", "a/b", "/", "-1/2"}) {
    EXPECT_EQ(flawOfRefusal(run("out.png", {"--shard", shard})), "") << shard;
  }
  EXPECT_THAT(refusalOf({at("show.jsonl")}), HasSubstr("no part of a crowd"));
  EXPECT_THAT(refusalOf({at("nothing")}), HasSubstr("cannot be read"));
  EXPECT_THAT(refusalOf({folder.path().string()}), HasSubstr("cannot be read"));
}

TEST_F(BadShards, CutShortAnywhereAreRefused) {
  const std::string other = part(2);
  const std::string whole = contentsOf(part(1));
  for (std::size_t size = 0; size < whole.size(); size += 1 + whole.size() / 97) {
    folder.write("cut", std::string_view(whole).substr(0, size));
    refusalOf({at("cut"), other});
  }
}

TEST_F(BadShards, DamagedAnywhereAreRefused) {
  const std::string other = part(2);
  const std::string whole = contentsOf(part(1));
  std::mt19937 random(7);
  for (int time = 0; time < 200; ++time) {
    std::string bytes = whole;
    for (int flips = 1 + time % 3; flips > 0; --flips) {
      bytes[random() % bytes.size()] ^= static_cast<char>(1 << random() % 8);
    }
    if (bytes == whole) continue;
    folder.write("damaged", bytes);
    refusalOf({at("damaged"), other});
  }
}

// Where the records of a part end: each is a kind, its length, its bytes and the file's
// fingerprint.
std::vector<std::size_t> endsOfRecords(const std::string& part) {
  std::vector<std::size_t> ends;
  for (std::size_t at = 8; at + 13 <= part.size(); ends.push_back(at)) {
    std::size_t size = 0;
    for (std::size_t byte = 4; byte > 0; --byte) {
      size = size << 8 | static_cast<unsigned char>(part[at + byte]);
    }
    at += 13 + size;
  }
  return ends;
}

// Each record is a good one, and the shards of both runs have as many.
TEST_F(BadShards, PutTogetherFromTwoRunsAreRefused) {
  const std::string one = contentsOf(part(1));
  const std::string lossy = contentsOf(part(1, {"--loss", "0.5"}));
  const std::string other = part(2);
  const auto ends = endsOfRecords(one);
  const auto lossyEnds = endsOfRecords(lossy);
  ASSERT_EQ(ends.size(), lossyEnds.size());
  ASSERT_EQ(ends.back(), one.size());
  for (std::size_t record = 0; record + 1 < ends.size(); ++record) {
    folder.write("mixed", one.substr(0, ends[record]) + lossy.substr(lossyEnds[record]));
    EXPECT_THAT(refusalOf({at("mixed"), other}),
                HasSubstr("mixed: is damaged or was cut short; run its shard again"));
  }
  // One record is missing.
  folder.write("short", one.substr(0, ends[1]) + one.substr(ends[2]));
  EXPECT_THAT(refusalOf({at("short"), other}), HasSubstr("short: is damaged"));
}

TEST_F(BadShards, AShardThatIsInterruptedLeavesNothing) {
  const std::atomic<bool> isInterrupted = true;
  ToolSetup setup;
  setup.isInterrupted = &isInterrupted;
  const ToolRun run = runTool({"crowd", "--assets", folder.path().string(), "--venue", "7", "--out",
                               at("out.png"), "--scenario", at("show.jsonl"), "--shard", "1/2"},
                              setup);
  EXPECT_NE(run.status, 0);
  EXPECT_FALSE(fs::exists(partOf("out.png", 1, 2)));
}

}  // namespace
}  // namespace halvora
