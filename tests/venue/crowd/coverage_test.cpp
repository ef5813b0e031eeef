// SPDX-License-Identifier: Apache-2.0
// How well seats could hear a show, where every silence is known.
#include "venue/crowd/coverage.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/venue/crowd/crowd_bench.h"
#include "tests/venue/plan/lut_folder.h"

namespace halvora {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;

// Transmitters 1 and 2 at 1 and 1.05 s, and so on to 3 s: a tenth of a second between repeats.
Scenario twoTransmitters() {
  Scenario scenario;
  std::size_t number = 0;
  for (int at = 0; at <= 20; ++at) {
    for (std::uint8_t transmitter = 1; transmitter <= 2; ++transmitter) {
      Broadcast look = plainLook(1, 255);
      look.transmitter = transmitter;
      const BroadcastBytes bytes = encodeBroadcast(look);
      ScenarioLine line;
      line.number = ++number;
      line.action = PacketAction{{bytes.begin(), bytes.end()}};
      line.at = 1 + at * 0.1 + (transmitter - 1) * 0.05;
      scenario.lines.push_back(line);
    }
  }
  return scenario;
}

struct CoverageOfARow : testing::Test {
  Coverage coverage(const AirSettings& settings, Duration from = {}) {
    const auto air = Air::of(twoTransmitters(), settings, milliseconds(5000));
    return coverageOf(*air, seats, 0, from, workers, [] { return true; });
  }
  // The first seat is in reach of 1, the second of both, the third of 2, the last of none.
  AirSettings reaches() const {
    AirSettings settings;
    settings.reaches = {{1, {0, 0}, 1.5}, {2, {2, 0}, 1.5}};
    return settings;
  }

  std::vector<CrowdSeat> seats = {{{0, 0}, "A"}, {{1, 0}, "A"}, {{3, 0}, "A"}, {{9, 0}, "A"}};
  InlineWorkers workers;
};

TEST_F(CoverageOfARow, IsTheLongestTimeWithoutAPacket) {
  const Coverage found = coverage(reaches());
  EXPECT_EQ(found.pause, milliseconds(50));
  EXPECT_THAT(found.silences, ElementsAre(100, 50, 100, Coverage::kNothing));
}

TEST_F(CoverageOfARow, ADeadTransmitterIsSilentToTheEnd) {
  AirSettings settings = reaches();
  settings.dead = {{1, milliseconds(1250)}};
  const Coverage found = coverage(settings);
  EXPECT_EQ(found.pause, milliseconds(50));
  // Heard last at 1.2 s; the show goes on to 3.05.
  EXPECT_THAT(found.silences, ElementsAre(1850, 100, 100, Coverage::kNothing));
}

TEST_F(CoverageOfARow, CountsFromTheTimeThatIsLookedAt) {
  AirSettings settings = reaches();
  settings.dead = {{1, milliseconds(1250)}};
  EXPECT_EQ(coverage(settings, milliseconds(2000)).silences[0], Coverage::kNothing);
  EXPECT_THAT(coverage(settings, milliseconds(4000)).silences, Each(Coverage::kNothing));
}

TEST_F(CoverageOfARow, LossMakesSilences) {
  AirSettings settings;
  settings.loss = 0.5;
  for (const std::uint32_t silence : coverage(settings).silences) {
    EXPECT_GT(silence, 50U);
    EXPECT_LT(silence, 1500U);
  }
  settings.loss = 1;
  EXPECT_THAT(coverage(settings).silences, Each(Coverage::kNothing));
}

// The picture has its seats above and a line of the legend for each colour below.
TEST_F(CoverageOfARow, IsDrawnInItsColours) {
  const Image picture =
      drawCoverage({milliseconds(50), {100, 50, 1500, Coverage::kNothing}}, seats, 320, 64);
  EXPECT_EQ(picture.width, 320U);
  EXPECT_GT(picture.height, 64U + 6 * 8);
  const auto redAt = [&](std::uint32_t x, std::uint32_t y) {
    return picture.rgba[(std::size_t{y} * picture.width + x) * 4];
  };
  EXPECT_EQ(redAt(27, 32), 49);
  EXPECT_EQ(redAt(116, 32), 253);
  EXPECT_EQ(redAt(293, 32), 122);
}

struct CoverageCommand : testing::Test {
  CoverageCommand() {
    folder.write("HVAssets/Maps/Venue-7/map.json", mapOfSeats(12));
    folder.write("show.yaml",
                 "application: 1\nvenue: 7\ntransmitter: 1\ncues:\n"
                 "- {name: Day, at: 1, hold: 4, look: {mode: 1, colour: \"#ffffff\"}}\n");
  }
  std::string at(const std::string& name) const { return (folder.path() / name).string(); }
  ToolRun run(const Words& options) const {
    Words words{"crowd",         "--assets", folder.path().string(),
                "--venue",       "7",        "--show",
                at("show.yaml"), "--size",   "64x32"};
    words.insert(words.end(), options.begin(), options.end());
    return runTool(words);
  }

  TestFolder folder;
};

TEST_F(CoverageCommand, AloneSimulatesNobody) {
  const ToolRun run = this->run({"--coverage", at("coverage.png"), "--dead", "1@3.05"});
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_THAT(run.output, HasSubstr("\"pause\": 100"));
  EXPECT_THAT(run.output, HasSubstr("\"silence\": 2000,\n      \"seats\": 12"));
  EXPECT_THAT(run.output, HasSubstr("\"silence\": null,\n      \"seats\": 0")) << "no end to it";
  EXPECT_TRUE(std::filesystem::exists(at("coverage.png")));
}

TEST_F(CoverageCommand, OfShardsIsThatOfTheWhole) {
  const Words air = {"--loss", "0.4",           "--reach",    "1@0,0,1",
                     "--out",  at("sheet.png"), "--coverage", at("coverage.png")};
  ASSERT_EQ(run(air).status, 0);
  const std::string whole = contentsOf(at("coverage.png"));
  std::filesystem::remove(at("coverage.png"));
  Words merge{"crowd", "merge", "--out", at("sheet.png"), "--coverage", at("coverage.png")};
  for (const char* shard : {"1", "2", "3"}) {
    Words words = air;
    words.insert(words.end(), {"--shard", std::string(shard) + "/3"});
    ASSERT_EQ(run(words).status, 0);
    EXPECT_FALSE(std::filesystem::exists(at("coverage.png")));
    merge.push_back(at("sheet.png.shard-" + std::string(shard) + "-of-3"));
  }
  const ToolRun merged = runTool(merge);
  EXPECT_EQ(merged.status, 0) << merged.error;
  EXPECT_EQ(contentsOf(at("coverage.png")), whole);
  EXPECT_THAT(merged.output, HasSubstr("\"coverage\": {"));
}

TEST_F(CoverageCommand, RefusesWhatCannotBeMade) {
  EXPECT_EQ(flawOfRefusal(run({})), "");
  EXPECT_EQ(flawOfRefusal(run({"--coverage", at("no/folder/x.png")})), "");
  EXPECT_EQ(flawOfRefusal(run({"--coverage", at("x.png"), "--out", at("x.png")})), "");
  EXPECT_EQ(flawOfRefusal(run({"--coverage", at("x.png"), "--shard", "1/2"})), "");
}

}  // namespace
}  // namespace halvora
