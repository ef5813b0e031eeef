// SPDX-License-Identifier: Apache-2.0
// Every scenario of the folder beside this file against the trace that was worked out for it.
// NAME.jsonl is played with the options in NAME.options, if there are any (ASSETS at the beginning
// of a word stands for the tests' own assets), and compared with NAME.expected.jsonl. A new pair of
// files is a new test.
#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/apps/halvora/tool_runner.h"
#include "tests/venue/show/trace_lines.h"

namespace halvora {
namespace {

constexpr std::string_view kExpectedEnding = ".expected.jsonl";

std::filesystem::path tracesFolder() { return toolTests() / "traces"; }

std::vector<std::string> scenarioNames() {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(tracesFolder())) {
    const std::string file = entry.path().filename().string();
    if (entry.path().extension() != ".jsonl" || file.ends_with(kExpectedEnding)) continue;
    names.push_back(entry.path().stem().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::vector<std::string> optionsOf(const std::string& name) {
  std::vector<std::string> options;
  const std::filesystem::path file = tracesFolder() / (name + ".options");
  if (!std::filesystem::exists(file)) return options;
  std::istringstream words(contentsOf(file));
  for (std::string word; words >> word;) {
    constexpr std::string_view kAssets = "ASSETS";
    if (word.starts_with(kAssets)) {
      word.replace(0, kAssets.size(), (toolTests() / "assets").string());
    }
    options.push_back(word);
  }
  return options;
}

class TraceFiles : public testing::TestWithParam<std::string> {};

TEST_P(TraceFiles, IsWhatThePhoneDoes) {
  std::vector<std::string> arguments = optionsOf(GetParam());
  arguments.insert(arguments.begin(),
                   {"trace", (tracesFolder() / (GetParam() + ".jsonl")).string()});
  const ToolRun run = runTool(arguments);

  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_EQ(run.error, "");
  EXPECT_THAT(flawsOfTrace(run.output), testing::IsEmpty());
  const std::string expected =
      contentsOf(tracesFolder() / (GetParam() + std::string(kExpectedEnding)));
  EXPECT_THAT(differences(expected, run.output), testing::IsEmpty());
}

// The name of a parameter may hold letters, digits and underscores only.
std::string testNameOf(const testing::TestParamInfo<std::string>& info) {
  std::string name = info.param;
  std::replace_if(
      name.begin(), name.end(),
      [](unsigned char character) { return std::isalnum(character) == 0; }, '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Scenario, TraceFiles, testing::ValuesIn(scenarioNames()), testNameOf);

TEST(TraceFolder, HasAnExpectedTraceForEveryScenarioAndNothingElse) {
  const std::vector<std::string> names = scenarioNames();
  EXPECT_FALSE(names.empty());
  for (const std::string& name : names) {
    EXPECT_TRUE(std::filesystem::exists(tracesFolder() / (name + std::string(kExpectedEnding))))
        << name << " has no expected trace";
  }
  for (const auto& entry : std::filesystem::directory_iterator(tracesFolder())) {
    const std::string file = entry.path().filename().string();
    const std::string name = file.ends_with(kExpectedEnding)
                                 ? file.substr(0, file.size() - kExpectedEnding.size())
                                 : entry.path().stem().string();
    EXPECT_TRUE(std::binary_search(names.begin(), names.end(), name))
        << file << " belongs to no scenario";
  }
}

}  // namespace
}  // namespace halvora
