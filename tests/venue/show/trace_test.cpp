// SPDX-License-Identifier: Apache-2.0
// `halvora trace` as a whole: its options, chance, the example show, and output that fails.
#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include "tests/apps/halvora/tool_runner.h"
#include "tests/support/source_tree.h"
#include "tests/venue/show/trace_lines.h"

namespace halvora {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

using Words = std::vector<std::string>;

const std::string kStart = "{\"at\":0,\"start\":true}\n";
/// Random flashes in red, as slow as they come.
const std::string kFlashes =
    "{\"at\":1.2,\"packet\":\"09C90102000700FFFF0000030000000000000000000000000107\","
    "\"every\":0.5,\"until\":60}\n";
/// The same as fast as they come.
const std::string kFastFlashes =
    "{\"at\":1.2,\"packet\":\"09C90102000700FFFF000003FF00000000000000000000000107\","
    "\"every\":0.5,\"until\":10}\n";

struct Trace : testing::Test {
  TestFolder folder;
  std::string show = folder.write("show.jsonl", kStart + kFlashes);

  ToolRun run(const Words& options) const {
    Words words{"trace", show};
    words.insert(words.end(), options.begin(), options.end());
    return runTool(words);
  }
  std::string trace(const Words& options) const {
    const ToolRun done = run(options);
    EXPECT_EQ(done.status, 0) << done.error;
    EXPECT_EQ(done.error, "");
    EXPECT_THAT(flawsOfTrace(done.output), IsEmpty());
    return done.output;
  }
};

rapidjson::Document parsed(const std::string& line) {
  rapidjson::Document json;
  json.Parse(line.c_str());
  return json;
}

/// The values of a key in a trace, each as JSON text after its time and key.
std::vector<std::string> linesWith(const std::string& trace, const std::string& key) {
  std::vector<std::string> found;
  for (const std::string& line : linesOf(trace)) {
    if (parsed(line).HasMember(key.c_str())) found.push_back(line);
  }
  return found;
}

TEST_F(Trace, SameSeedSameTrace) {
  EXPECT_EQ(trace({"--random", "42"}), trace({"--random", "42"}));
  EXPECT_EQ(trace({"--random", "0"}), trace({"--random", "000"}));
}

TEST_F(Trace, OtherSeedOtherTrace) {
  EXPECT_NE(trace({"--random", "42"}), trace({"--random", "43"}));
  EXPECT_NE(trace({"--random", "1"}), trace({"--random", "18446744073709551615"}));
}

TEST_F(Trace, SeedIsOneWhereNoneIsGiven) { EXPECT_EQ(trace({}), trace({"--random", "1"})); }

TEST_F(Trace, SeededDrawsLieBetweenTheirLimits) {
  std::vector<long long> flashes;
  for (const std::string& line : linesWith(trace({"--until", "59"}), "light")) {
    const rapidjson::Document json = parsed(line);
    if (json["light"][0].GetDouble() == 1) flashes.push_back(json["t"].GetInt64());
  }
  ASSERT_GE(flashes.size(), 10U);
  std::vector<long long> pauses;
  for (std::size_t at = 1; at < flashes.size(); ++at) {
    pauses.push_back(flashes[at] - flashes[at - 1]);
  }
  EXPECT_LE(*std::max_element(pauses.begin(), pauses.end()), 5000);
  std::sort(pauses.begin(), pauses.end());
  EXPECT_GT(std::unique(pauses.begin(), pauses.end()) - pauses.begin(), 5);
}

// Every pause is 0.1 ms: ten thousand steps a second, each with its own flash-back.
TEST_F(Trace, LeastPausesComeToAnEnd) {
  show = folder.write("fast.jsonl", kStart + kFastFlashes);
  const std::string written = trace({"--random", "min", "--until", "1.7"});
  // One flash at 1200.1 ms; then from 1290.1 to 1700.0 ms a flash-back and a flash each 0.1 ms.
  EXPECT_EQ(linesWith(written, "light").size(), 1U + 2U * 4100U);
}

TEST_F(Trace, UntilCutsTheSameTraceShort) {
  const std::vector<std::string> whole = linesOf(trace({"--until", "30"}));
  const std::vector<std::string> part = linesOf(trace({"--until", "20"}));
  ASSERT_LT(part.size(), whole.size());
  EXPECT_TRUE(std::equal(part.begin(), part.end(), whole.begin()));
  EXPECT_LE(parsed(part.back())["t"].GetInt64(), 20000);
  EXPECT_GT(parsed(whole[part.size()])["t"].GetInt64(), 20000);
}

TEST_F(Trace, EveryCounterHasAHostOfItsOwn) {
  show = folder.write("active.jsonl", kStart + "{\"at\":0.5,\"app\":\"active\"}\n" + kFastFlashes);
  const std::string written = trace({"--random", "max", "--until", "4"});
  std::vector<std::string> urls;
  for (const std::string& line : linesWith(written, "get")) {
    urls.emplace_back(parsed(line)["get"].GetString());
  }
  ASSERT_EQ(urls.size(), 3U);
  for (const std::string& url : urls) EXPECT_THAT(url, HasSubstr("/?appID=com.example.host"));
  std::sort(urls.begin(), urls.end());
  EXPECT_EQ(std::unique(urls.begin(), urls.end()), urls.end());
  for (const std::string& line : linesWith(written, "defaults")) {
    const rapidjson::Document json = parsed(line);
    ASSERT_TRUE(json.HasMember("value")) << line;
    if (std::string_view(json["defaults"].GetString()).ends_with("Date")) {
      EXPECT_TRUE(json["value"].IsInt64()) << line;
    }
  }
}

TEST_F(Trace, LevelsAreRoundedToFourDecimals) {
  // Master 1, red 1, green 127, blue 254.
  show = folder.write("dim.jsonl", kStart +
                                       "{\"at\":1.2,\"packet\":"
                                       "\"09C90102000700"
                                       "01017FFE010000000000000000000000000107\"}\n");
  const std::string written = trace({"--until", "2"});
  EXPECT_THAT(written, HasSubstr("\"light\":[0.0039,0.498,0.9961,1]"));
  EXPECT_THAT(written, HasSubstr("\"brightness\":0.0039}"));
  EXPECT_THAT(written, HasSubstr("\"alpha\":0.9961"));
}

class TraceRefused : public testing::TestWithParam<Words> {};

TEST_P(TraceRefused, LeavesStandardOutputAlone) {
  const TestFolder folder;
  const std::string show = folder.write("show.jsonl", kStart);
  Words words{"trace", show};
  words.insert(words.end(), GetParam().begin(), GetParam().end());
  EXPECT_EQ(flawOfRefusal(runTool(words)), "");
}

INSTANTIATE_TEST_SUITE_P(
    Options, TraceRefused,
    testing::Values(Words{"--random"}, Words{"--random", ""}, Words{"--random", "mean"},
                    Words{"--random", "1.5"}, Words{"--random", "MIN"},
                    Words{"--random", "18446744073709551616"}, Words{"--random", "1\n2"},
                    Words{"--until"}, Words{"--until", ""}, Words{"--until", "-1"},
                    Words{"--until", "soon"}, Words{"--until", "nan"}, Words{"--until", "inf"},
                    Words{"--until", "5s"}, Words{"--until", "1", "--until", "2"}, Words{"--allow"},
                    Words{"--assets"}, Words{"--assets", "missing-folder"}, Words{"--documents"},
                    Words{"--speed", "3"}, Words{"another.jsonl"}));

TEST_F(Trace, AFileIsNoFolder) {
  EXPECT_EQ(flawOfRefusal(run({"--assets", show})), "");
  EXPECT_EQ(flawOfRefusal(run({"--documents", show})), "");
}

TEST_F(Trace, ALineFeedInAFileNameDoesNotMakeTwoLines) {
  EXPECT_EQ(flawOfRefusal(runTool({"trace", (folder.path() / "a\nb").string()})), "");
  EXPECT_EQ(flawOfRefusal(runTool({"trace", folder.write("c\nd", "x")})), "");
}

TEST_F(Trace, OptionsMayComeFirst) {
  EXPECT_EQ(runTool({"trace", "--until", "5", show}).output, trace({"--until", "5"}));
}

TEST_F(Trace, NothingIsWrittenBesideTheScenario) {
  trace({"--documents", (folder.path() / "documents").string(), "--until", "5"});
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path())) {
    if (entry.is_regular_file()) {
      EXPECT_EQ(entry.path().string(), show);
    }
  }
}

TEST(ExampleShow, GoesFromStartedToDark) {
  const std::filesystem::path demo = std::filesystem::path(sourceTree()) / "assets" / "demo";
  const ToolRun run =
      runTool({"trace", (demo / "example-show.jsonl").string(), "--assets", demo.string()});
  ASSERT_EQ(run.status, 0) << run.error;
  EXPECT_THAT(flawsOfTrace(run.output), IsEmpty());

  const std::vector<std::string> callbacks = linesWith(run.output, "callback");
  ASSERT_FALSE(callbacks.empty());
  EXPECT_STREQ(parsed(callbacks.front())["callback"].GetString(), "lightShowStarted");
  EXPECT_STREQ(parsed(callbacks.back())["callback"].GetString(), "lightShowStopped");

  double container = -1;
  for (const std::string& line : linesWith(run.output, "view")) {
    const rapidjson::Document json = parsed(line);
    if (json["view"] == "container") container = json["alpha"].GetDouble();
  }
  EXPECT_EQ(container, 0);
}

TEST(ExampleShow, IsTheSameEveryTime) {
  const std::filesystem::path demo = std::filesystem::path(sourceTree()) / "assets" / "demo";
  const Words words{
      "trace", (demo / "example-show.jsonl").string(), "--assets", demo.string(), "--random", "7"};
  EXPECT_EQ(runTool(words).output, runTool(words).output);
}

class FailingOutput : public testing::TestWithParam<Words> {};

TEST_P(FailingOutput, IsExitStatusOneAndOneLine) {
  const TestFolder folder;
  const std::string show = folder.write("show.jsonl", kStart + kFastFlashes);
  Words words = GetParam();
  std::replace(words.begin(), words.end(), std::string("SHOW"), show);
  int calls = 0;
  const ToolRun result = runTool(words, {.output = [&calls](std::string_view) {
                                   ++calls;
                                   return false;
                                 }});
  EXPECT_EQ(result.status, 1);
  EXPECT_FALSE(result.error.empty());
  EXPECT_EQ(result.error.find('\n'), std::string::npos);
  EXPECT_EQ(calls, 1) << "went on writing";
}

INSTANTIATE_TEST_SUITE_P(Commands, FailingOutput,
                         testing::Values(Words{"packet", "decode", "09C9"},
                                         Words{"packet", "encode", "--mode", "1"},
                                         Words{"trace", "SHOW", "--until", "3"}));

}  // namespace
}  // namespace halvora
