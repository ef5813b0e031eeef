// SPDX-License-Identifier: Apache-2.0
// What a phone emits, as `halvora trace --shown` writes it, and the flash policy of its host.
#include <algorithm>
#include <cmath>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include "tests/apps/halvora/tool_runner.h"
#include "tests/support/source_tree.h"
#include "venue/show/flash_meter.h"

namespace halvora {
namespace {

using testing::HasSubstr;

struct Shown {
  Duration time{};
  PhoneLight light;
  double backlight = 0;
};

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

std::vector<Shown> shownIn(const std::string& trace) {
  std::vector<Shown> found;
  for (const std::string& line : linesOf(trace)) {
    rapidjson::Document json;
    json.Parse(line.c_str());
    if (!json.HasMember("shown")) continue;
    const auto& shown = json["shown"];
    const double backlight = shown["backlight"].GetDouble();
    const auto level = [&](unsigned at) {
      return linearOfLevel(shown["screen"][at].GetDouble()) * backlight;
    };
    found.push_back({milliseconds(json["t"].GetInt64()),
                     {{level(0), level(1), level(2)}, shown["torch"].GetBool()},
                     backlight});
  }
  return found;
}

FlashFigures worstOf(const std::string& trace) {
  PhoneMeter meter;
  for (const Shown& shown : shownIn(trace)) meter.add(shown.time, shown.light);
  return meter.worst();
}

/// All lines but those that a flash policy may change.
std::string othersOf(const std::string& trace) {
  std::string others;
  for (const std::string& line : linesOf(trace)) {
    const bool isOfPolicy = line.find("\"shown\"") != std::string::npos ||
                            line.find("\"brightness\"") != std::string::npos ||
                            line.find("\"torch\"") != std::string::npos;
    if (!isOfPolicy) others += line + "\n";
  }
  return others;
}

struct TraceShown : testing::Test {
  TestFolder folder;

  /// A show of one look, sent at 1.2 s unless another time is given, and 6 s long.
  std::string showOf(const std::vector<std::string>& fields, const std::string& at = "1.2") {
    std::vector<std::string> words{"packet", "encode", "--applicationId", "1", "--sequence", "7"};
    words.insert(words.end(), fields.begin(), fields.end());
    const std::string packet = linesOf(runTool(words).output).front();
    return folder.write("show.jsonl", R"({"at":0,"start":true})"
                                      "\n"
                                      R"({"at":)" +
                                          at + R"(,"packet":")" + packet + "\"}\n");
  }
  static std::string trace(const std::string& show, std::vector<std::string> options) {
    std::vector<std::string> words{"trace", show};
    const bool hasEnd = std::ranges::find(options, "--until") != options.end();
    if (!hasEnd) words.insert(words.end(), {"--until", "8"});
    words.insert(words.end(), options.begin(), options.end());
    const ToolRun done = runTool(words);
    EXPECT_EQ(done.status, 0) << done.error;
    return done.output;
  }
};

const std::vector<std::string> kStrobe{"--mode", "5",   "--speed", "255", "--master", "255",
                                       "--red",  "255", "--green", "255", "--blue",   "255"};
const std::vector<std::string> kTorchStrobe{"--mode", "1", "--ledMode", "5", "--ledSpeed", "255"};
const std::vector<std::string> kSlowPulse{"--mode", "17",    "--speed", "60",     "--master",
                                          "255",    "--red", "200",     "--blue", "90"};

TEST_F(TraceShown, IsTheMeanOfTheScreenWithBacklightAndTorch) {
  const std::string show = showOf(
      {"--mode", "1", "--master", "128", "--red", "255", "--green", "128", "--ledMode", "1"});
  const auto shown = shownIn(trace(show, {"--shown"}));
  ASSERT_GT(shown.size(), 100U);
  EXPECT_TRUE(shown.back().light.torch);
  EXPECT_NEAR(shown.back().light.screen.red, linearOfLevel(128 / 255.0), 1e-3);
  EXPECT_NEAR(shown.back().light.screen.green, linearOfLevel(128 * 128 / 255.0 / 255.0), 1e-3);
  EXPECT_EQ(shown.back().light.screen.blue, 0);
  EXPECT_EQ(shown.back().backlight, 1);
}

TEST_F(TraceShown, SaysNothingOfWhatHasNotChanged) {
  const std::string show = showOf({"--mode", "1", "--master", "255", "--red", "255"});
  for (const Shown& shown : shownIn(trace(show, {"--shown"}))) {
    EXPECT_LE(shown.time, milliseconds(2200)) << "the fade is over, and the light stands still";
  }
}

TEST_F(TraceShown, LooksAHundredAndTwentyTimesASecondWhileSomethingMoves) {
  const std::string show = showOf({"--mode", "1", "--master", "255", "--red", "255"});
  int looks = 0;
  for (const Shown& shown : shownIn(trace(show, {"--shown"}))) {
    if (shown.time > milliseconds(1500) && shown.time <= milliseconds(1750)) ++looks;
  }
  EXPECT_EQ(looks, 30);
}

// As a recording of an evening is.
TEST_F(TraceShown, LooksAtTheSameMomentsHoursLater) {
  const std::string show = showOf({"--mode", "1", "--master", "255", "--red", "255"}, "7200.2");
  int looks = 0;
  for (const Shown& shown : shownIn(trace(show, {"--shown", "--until", "7203"}))) {
    if (shown.time < milliseconds(7200'250) || shown.time > milliseconds(7201'000)) continue;
    const auto time = static_cast<double>(shown.time / milliseconds(1));
    EXPECT_NEAR(time, std::round(time * 0.12) / 0.12, 1) << "a multiple of 1/120 s";
    ++looks;
  }
  EXPECT_GT(looks, 80);
}

TEST_F(TraceShown, AStrobeIsLimitedToThreeFlashes) {
  for (const auto& look : {kStrobe, kTorchStrobe}) {
    const std::string show = showOf(look);
    const std::string exact = trace(show, {"--shown"});
    const std::string limited = trace(show, {"--shown", "--flash", "limited"});
    EXPECT_GE(worstOf(exact).general.flashes, 40);
    EXPECT_EQ(worstOf(limited).general.flashes, 3);
    EXPECT_EQ(othersOf(limited), othersOf(exact));
  }
}

TEST_F(TraceShown, WhatKeepsToTheLimitStaysAsItIs) {
  const std::string show = showOf(kSlowPulse);
  const std::string exact = trace(show, {"--shown"});
  EXPECT_GT(shownIn(exact).size(), 100U);
  EXPECT_EQ(trace(show, {"--shown", "--flash", "limited"}), exact);
  EXPECT_EQ(trace(show, {"--shown", "--flash", "exact"}), exact);
}

TEST_F(TraceShown, WhoLooksChangesNothing) {
  const std::string show = showOf(kStrobe);
  std::string unseen;
  for (const std::string& line : linesOf(trace(show, {"--shown", "--flash", "limited"}))) {
    if (line.find("\"shown\"") == std::string::npos) unseen += line + "\n";
  }
  EXPECT_EQ(trace(show, {"--flash", "limited"}), unseen);
}

TEST_F(TraceShown, RefusesAPolicyThatIsNone) {
  const std::string show = showOf(kStrobe);
  const ToolRun refused = runTool({"trace", show, "--flash", "gentle"});
  EXPECT_EQ(refused.status, 2);
  EXPECT_EQ(refused.output, "");
  EXPECT_THAT(refused.error, HasSubstr("--flash must be limited or exact, not \"gentle\""));
}

}  // namespace
}  // namespace halvora
