// SPDX-License-Identifier: Apache-2.0
// `halvora safety`: verdicts on one phone and on a hall, its page, and input that it refuses.
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include "tests/apps/halvora/tool_runner.h"
#include "tests/support/source_tree.h"

namespace halvora {
namespace {

using testing::HasSubstr;
using testing::Not;
using Words = std::vector<std::string>;

const std::string kMap = R"([{"displayName":"Stalls","rows":[{"displayName":"A","seats":[
  {"displayName":"1","xPos":1,"yPos":1},{"displayName":"2","xPos":2,"yPos":1}]}]},
  {"displayName":"Circle","rows":[{"displayName":"B","seats":[
  {"displayName":"1","xPos":1,"yPos":9},{"displayName":"2","xPos":2,"yPos":9}]}]}])";

struct Safety : testing::Test {
  TestFolder folder;

  std::string packet(const std::string& at, const Words& fields) const {
    Words words{"packet", "encode", "--applicationId", "1", "--master", "255"};
    words.insert(words.end(), fields.begin(), fields.end());
    std::string hex = runTool(words).output;
    hex.pop_back();
    return "{\"at\":" + at + ",\"packet\":\"" + hex + "\"}\n";
  }
  std::string show(const std::string& packets) {
    return folder.write("show.jsonl", "{\"at\":0,\"start\":true}\n" + packets);
  }
  ToolRun run(const std::string& show, const Words& options = {}) const {
    Words words{"safety", show, "--assets", folder.path().string()};
    words.insert(words.end(), options.begin(), options.end());
    return runTool(words);
  }
  static rapidjson::Document parsed(const ToolRun& run) {
    rapidjson::Document json;
    json.Parse(run.output.c_str());
    EXPECT_FALSE(json.HasParseError()) << run.output;
    return json;
  }
  /// A white screen, on and off each `half` seconds from 3 s on, for three seconds.
  std::string blinking(double half, const Words& lit, const Words& dark) const {
    std::string packets;
    int sequence = 0;
    for (double at = 3; at < 6; at += half) {
      Words fields = sequence % 2 == 0 ? lit : dark;
      fields.insert(fields.end(), {"--sequence", std::to_string(++sequence)});
      packets += packet(std::to_string(at), fields);
    }
    return packets;
  }
};

const Words kWhiteLook{"--mode", "1", "--red", "255", "--green", "255", "--blue", "255"};
const Words kBlackLook{"--mode", "1"};
const Words kRedLook{"--mode", "1", "--red", "255"};
const Words kTorchLook{"--mode", "1", "--ledMode", "1"};

TEST_F(Safety, PassesWhatFlashesThreeTimesASecond) {
  const ToolRun done = run(show(blinking(0.17, kWhiteLook, kBlackLook)));
  EXPECT_EQ(done.status, 0) << done.error;
  const auto json = parsed(done);
  EXPECT_STREQ(json["verdict"].GetString(), "pass");
  EXPECT_EQ(json["phone"]["general"].GetInt(), 3);
  EXPECT_EQ(json["phone"]["red"].GetInt(), 0);
  EXPECT_EQ(json["phones"].GetInt(), 1);
  EXPECT_EQ(json["seed"].GetInt(), 1);
  EXPECT_FALSE(json.HasMember("venue"));
}

TEST_F(Safety, FailsWhatFlashesFasterAndSaysFromWhenOn) {
  // The light fades in until 4 s: the first change is the first fall from a tenth on.
  const ToolRun done =
      run(show(packet("1.5", {"--mode", "1", "--sequence", "1"}) +
               packet("5", {"--mode", "5", "--speed", "235", "--red", "255", "--green", "255",
                            "--blue", "255", "--sequence", "2"})));
  EXPECT_EQ(done.status, 1);
  EXPECT_THAT(done.error, HasSubstr("more than three flashes"));
  const auto json = parsed(done);
  EXPECT_STREQ(json["verdict"].GetString(), "fail");
  // A change every 25 ms.
  EXPECT_EQ(json["phone"]["general"].GetInt(), 20);
  EXPECT_GE(json["phone"]["at"].GetDouble(), 5);
  EXPECT_LT(json["phone"]["at"].GetDouble(), 5.2);
}

TEST_F(Safety, PassesTheSameUnderTheLimit) {
  const ToolRun done = run(show(blinking(0.05, kWhiteLook, kBlackLook)), {"--flash", "limited"});
  EXPECT_EQ(done.status, 0) << done.error;
  EXPECT_EQ(parsed(done)["phone"]["general"].GetInt(), 3);
}

TEST_F(Safety, CountsRedAndTorch) {
  EXPECT_EQ(parsed(run(show(blinking(0.1, kRedLook, kBlackLook))))["phone"]["red"].GetInt(), 5);
  const auto torch = parsed(run(show(blinking(0.1, kTorchLook, kBlackLook))));
  EXPECT_EQ(torch["phone"]["general"].GetInt(), 5);
  EXPECT_EQ(torch["phone"]["red"].GetInt(), 0);
}

TEST_F(Safety, JudgesAHallItsMeanAndItsWorstSection) {
  folder.write("HVAssets/Maps/Venue-7/map.json", kMap);
  const ToolRun done =
      run(show(blinking(0.1, kWhiteLook, kBlackLook)), {"--venue", "7", "--no-progress"});
  EXPECT_EQ(done.status, 1);
  const auto json = parsed(done);
  EXPECT_EQ(json["phones"].GetInt(), 4);
  for (const char* whose : {"phone", "venue", "section"}) {
    EXPECT_EQ(json[whose]["general"].GetInt(), 5) << whose;
    EXPECT_GE(json[whose]["at"].GetDouble(), 3) << whose;
  }
  EXPECT_STREQ(json["section"]["name"].GetString(), "Section 1");
}

TEST_F(Safety, AHallAndItsPhonesKeepTheLimit) {
  folder.write("HVAssets/Maps/Venue-7/map.json", kMap);
  const ToolRun done =
      run(show(packet("2", {"--mode", "5", "--speed", "255", "--red", "255", "--green", "90",
                            "--ledMode", "5", "--ledSpeed", "200", "--sequence", "1"})),
          {"--venue", "7", "--flash", "limited", "--no-progress"});
  EXPECT_EQ(done.status, 0) << done.output;
  EXPECT_EQ(parsed(done)["phone"]["general"].GetInt(), 3);
}

TEST_F(Safety, WritesAPageThatNeedsNothingElse) {
  const std::string page = folder.path().string() + "/page.html";
  const ToolRun done = run(show(blinking(0.05, kRedLook, kBlackLook)), {"--html", page});
  EXPECT_EQ(done.status, 1);
  std::ifstream file(page);
  const std::string html(std::istreambuf_iterator<char>(file), {});
  EXPECT_THAT(html, HasSubstr("<!doctype html>"));
  EXPECT_THAT(html, HasSubstr("Fail"));
  EXPECT_THAT(html, HasSubstr("<polyline"));
  EXPECT_THAT(html, HasSubstr(", mode 1 at speed 0, master 255"));
  EXPECT_THAT(html, Not(HasSubstr("http")));
}

TEST_F(Safety, APageThatCannotBeWrittenIsRefusedAndNothingPrinted) {
  const ToolRun done = run(show(blinking(0.5, kWhiteLook, kBlackLook)),
                           {"--html", folder.path().string() + "/none/page.html"});
  EXPECT_EQ(done.status, 2);
  EXPECT_EQ(done.output, "");
  EXPECT_THAT(done.error, HasSubstr("cannot be written (--html)"));
}

TEST_F(Safety, RefusesWhatItCannotJudge) {
  const std::string good = show(blinking(0.5, kWhiteLook, kBlackLook));
  const std::string silent = folder.write("silent.jsonl", "{\"at\":0,\"start\":true}\n");
  struct Case {
    ToolRun done;
    const char* error;
  };
  const Case cases[] = {
      {run(silent), "no packet of a show in it"},
      {run(folder.path().string() + "/none.jsonl"), "none.jsonl"},
      {run(good, {"--flash", "gentle"}), "--flash must be limited or exact, not \"gentle\""},
      {run(good, {"--venue", "x"}), "--venue must be a whole number"},
      {run(good, {"--venue", "8"}), "Venue-8/map.json: cannot be read"},
      {run(good, {"--phones", "3"}), "--phones needs a --venue"},
      {run(good, {"--seed", "-1"}), "--seed must be a whole number"},
      {run(good, {"--until", "soon"}), "--until must be seconds"},
      {run(good, {"--until", "-1"}), "--until must be seconds"},
      {run(good, {"--until", "86401"}), "--until must be seconds"},
      {runTool({"safety", good, "--assets", folder.path().string() + "/none"}),
       "no such folder (--assets)"},
      {runTool({"safety", good}), "--assets"},
  };
  for (const Case& one : cases) {
    EXPECT_EQ(one.done.status, 2) << one.error;
    EXPECT_EQ(one.done.output, "") << one.error;
    EXPECT_THAT(one.done.error, HasSubstr(one.error));
  }
}

}  // namespace
}  // namespace halvora
