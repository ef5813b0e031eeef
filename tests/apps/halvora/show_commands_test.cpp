// SPDX-License-Identifier: Apache-2.0
// `halvora show` as crews and scripts use it: the demo's shows, what is written, what is refused.
#include "apps/halvora/show_commands.h"

#include <filesystem>
#include <string>
#include <variant>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "tests/apps/halvora/tool_runner.h"
#include "tests/support/source_tree.h"
#include "venue/show/scenario.h"

namespace halvora {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

struct SentLine {
  double at = 0;
  double every = 0;
  double until = 0;
  std::vector<std::uint8_t> packet;

  friend bool operator==(const SentLine&, const SentLine&) = default;
};

std::vector<SentLine> packetsIn(const std::string& file) {
  const auto parsed = parseScenario(contentsOf(file), ExactJsonReader());
  std::vector<SentLine> lines;
  if (!std::holds_alternative<Scenario>(parsed)) return lines;
  for (const ScenarioLine& line : std::get<Scenario>(parsed).lines) {
    if (const auto* packet = std::get_if<PacketAction>(&line.action)) {
      lines.push_back({line.at, line.every, line.until, packet->data});
    }
  }
  return lines;
}

class DemoShow : public testing::TestWithParam<const char*> {};

TEST_P(DemoShow, CompilesToThePacketsOfItsScenario) {
  const std::string show = sourceTree() + "/assets/demo/" + GetParam();
  const TestFolder folder;
  const std::string compiled = (folder.path() / "show.jsonl").string();
  // The demo's maps are of a codec that this program does not read.
  const ToolRun run =
      runTool({"show", "compile", show + ".yaml", "--out", compiled, "--assets",
               folder
                   .write("HVAssets/palettes.json",
                          contentsOf(sourceTree() + "/assets/demo/HVAssets/palettes.json"))
                   .substr(0, folder.path().string().size())});
  ASSERT_EQ(run.status, 0) << run.error;
  EXPECT_THAT(run.output, IsEmpty());
  const auto expected = packetsIn(show + ".jsonl");
  const auto sent = packetsIn(compiled);
  ASSERT_EQ(sent.size(), expected.size());
  for (std::size_t at = 0; at < sent.size(); ++at) {
    EXPECT_TRUE(sent[at] == expected[at])
        << "packet " << at << ", expected at " << expected[at].at << ", is at " << sent[at].at;
  }
}

INSTANTIATE_TEST_SUITE_P(Shows, DemoShow, testing::Values("example-show", "pixel-map-show"),
                         [](const auto& param) {
                           std::string name = param.param;
                           std::erase(name, '-');
                           return name;
                         });

const char* const kShow =
    "application: 4242\nvenue: 7\ntransmitter: 1\ncues:\n"
    "- {name: a, at: 0, look: {mode: 1, colour: \"#ff0000\"}}\n"
    "- {name: b, at: 2.5, hold: 1.5, look: {mode: 1, master: 50 %}}\n";

TEST(ShowCheck, CountsWhatAShowSends) {
  const TestFolder folder;
  const ToolRun run = runTool({"show", "check", folder.write("s.yaml", kShow)});
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_EQ(run.output,
            "{\"cues\":2,\"seconds\":4,\"packets\":2,\"warnings\":[],\"transmissions\":40}\n");
}

TEST(ShowCheck, TellsEveryFaultOnALineOfItsOwn) {
  const TestFolder folder;
  const std::string file =
      folder.write("s.yaml", "cues:\n- {name: a, look: {mode: 77}}\n- {name: b, look: red}\n");
  const ToolRun run = runTool({"show", "check", file});
  EXPECT_EQ(run.status, 2);
  EXPECT_THAT(run.output, IsEmpty());
  const auto lines = linesOf(run.error + "\n");
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_THAT(lines[0], StartsWith(file + ":2: cue \"a\": \"mode\" must be "));
  EXPECT_THAT(lines[1], StartsWith(file + ":3: cue \"b\": \"look\" must be "));
}

TEST(ShowCheck, MeasuresMapsInTheAssetsAboveTheShow) {
  const TestFolder folder;
  // Three frames of a video, as this program's videos are made of words.
  folder.write("HVAssets/Maps/Venue-7/2/video.mp4", "words 1 1 3\nff0000ff ff0000ff ff0000ff\n");
  const auto check = [&](const std::string& look) {
    return runTool({"show", "check",
                    folder.write("shows/s.yaml",
                                 "application: 1\nvenue: 7\ncues:\n- {name: a, at: "
                                 "0, hold: 0.1, look: {mode: 1, map: {" +
                                     look + "}}}\n")});
  };
  EXPECT_EQ(check("id: 2").status, 0);
  EXPECT_THAT(check("id: 2, from: 2").error, HasSubstr("map 2 ends at frame 3"));
  EXPECT_EQ(flawOfRefusal(check("id: 3")), "");
  EXPECT_THAT(check("id: 3").error, HasSubstr("shows/s.yaml:4: cue \"a\": venue 7 has no video"));
}

TEST(ShowCheck, WarnsOfPalettesThatTheAssetsLack) {
  const TestFolder folder;
  const std::string file = folder.write("shows/s.yaml",
                                        "application: 1\ncues:\n- {name: a, at: 0, hold: 1, look: "
                                        "{mode: 17, palette: 3}}\n");
  EXPECT_THAT(runTool({"show", "check", file}).output, HasSubstr("\"warnings\":[]"));
  folder.write("HVAssets/readme", "");
  EXPECT_THAT(runTool({"show", "check", file}).output, HasSubstr("cue \\\"a\\\" has palette 3"));
  folder.write("HVAssets/palettes.json",
               R"({"palettes":[{"id":3,"name":"Sunrise","colours":["#FF4E50"]}]})");
  EXPECT_THAT(runTool({"show", "check", file}).output, HasSubstr("\"warnings\":[]"));
}

TEST(ShowCompile, WritesNothingForAShowThatCannotBePlayed) {
  const TestFolder folder;
  const std::string out = (folder.path() / "out.jsonl").string();
  EXPECT_EQ(flawOfRefusal(
                runTool({"show", "compile", folder.write("s.yaml", "cues: 1\n"), "--out", out})),
            "");
  EXPECT_EQ(flawOfRefusal(runTool({"show", "compile", folder.write("s.yaml", kShow), "--out", out,
                                   "--sequence", "65536"})),
            "");
  EXPECT_EQ(flawOfRefusal(
                runTool({"show", "compile", (folder.path() / "none.yaml").string(), "--out", out})),
            "");
  EXPECT_FALSE(std::filesystem::exists(out));
}

TEST(ShowCompile, CountsFromTheSequenceNumberAndIsHeardByAPhone) {
  const TestFolder folder;
  const std::string out = (folder.path() / "out.jsonl").string();
  const ToolRun run = runTool(
      {"show", "compile", folder.write("s.yaml", kShow), "--out", out, "--sequence", "500"});
  ASSERT_EQ(run.status, 0) << run.error;
  EXPECT_THAT(contentsOf(out), HasSubstr("01F401\""));
  EXPECT_THAT(contentsOf(out), HasSubstr("01F501\""));
  const ToolRun trace = runTool({"trace", out});
  EXPECT_THAT(trace.output, HasSubstr("\"light\":[1,0,0,1]"));
}

}  // namespace
}  // namespace halvora
