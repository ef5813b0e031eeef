// SPDX-License-Identifier: Apache-2.0
// `halvora crowd --delayed-proof`: what phones show of a show whose keys are disclosed later.
#include <filesystem>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include "engine/broadcast.h"
#include "tests/venue/crowd/crowd_bench.h"
#include "tests/venue/crowd/shown_crowd.h"
#include "tests/venue/plan/lut_folder.h"

namespace halvora {
namespace {

using testing::HasSubstr;

class ProvenCrowd : public ShownCrowd {
 protected:
  // With the torch on.
  ProvenCrowd()
      : ShownCrowd(40, 6, [](int at) {
          Broadcast look = plainLook(static_cast<std::uint16_t>(at + 1), 200,
                                     static_cast<std::uint8_t>(40 * at));
          look.ledMode = 1;
          return look;
        }) {}
  rapidjson::Document report(const Words& options) {
    const ToolRun run = this->run(options);
    EXPECT_EQ(run.status, 0) << run.error;
    rapidjson::Document json = jsonOf(run.output);
    EXPECT_TRUE(json.IsObject()) << run.output;
    return json;
  }
};

TEST_F(ProvenCrowd, IsNothingUnasked) {
  const auto json = report({"--until", "8"});
  EXPECT_FALSE(json.HasMember("proof"));
  EXPECT_EQ(json["mostTorches"].GetUint64(), 40U);
}

TEST_F(ProvenCrowd, WhatIsUnprovenLightsNoTorch) {
  EXPECT_EQ(report({"--delayed-proof", "--until", "4"})["mostTorches"].GetUint64(), 0U);
  const auto json = report({"--delayed-proof", "--until", "8"});
  EXPECT_EQ(json["mostTorches"].GetUint64(), 40U);
  EXPECT_EQ(json["proof"]["phones"].GetUint64(), 40U);
  EXPECT_EQ(json["proof"]["delay"]["never"].GetUint64(), 0U);
  EXPECT_GT(json["proof"]["delay"]["50"].GetInt64(), 1000);
  EXPECT_LT(json["proof"]["delay"]["99"].GetInt64(), 4000);
  EXPECT_EQ(json["proof"]["shareSinceFirst"].GetDouble(), 1);
}

TEST_F(ProvenCrowd, WorksWhereThreePacketsInTenAreLost) {
  const auto json = report({"--delayed-proof", "--loss", "0.3"});
  EXPECT_LT(json["proof"]["delay"]["95"].GetInt64(), 6000);
  EXPECT_EQ(json["proof"]["delay"]["never"].GetUint64(), 0U);
  EXPECT_GT(json["proof"]["shareSinceFirst"].GetDouble(), 0.99);
  EXPECT_EQ(json["proof"]["forged"].GetUint64(), 0U);
}

TEST_F(ProvenCrowd, AStrangerWithoutATagNeverHasFullLight) {
  const auto json = report({"--delayed-proof", "--loss", "0.1", "--rogue", "far-stream@10"});
  EXPECT_EQ(json["rogues"]["phonesLost"].GetUint64(), 40U);
  EXPECT_GT(json["proof"]["strangeSeconds"].GetDouble(), 10);
  EXPECT_EQ(json["proof"]["strangeFullSeconds"].GetDouble(), 0);
}

TEST_F(ProvenCrowd, AForgersLookIsNeverProvenAndSoonFoundOut) {
  const auto json = report({"--delayed-proof", "--loss", "0.1", "--rogue", "bad-tags@10"});
  EXPECT_GT(json["proof"]["strangeSeconds"].GetDouble(), 10);
  EXPECT_GT(json["proof"]["forged"].GetUint64(), 0U);
  EXPECT_EQ(json["proof"]["strangeProven"].GetUint64(), 0U);
  EXPECT_LT(json["proof"]["longestStrangeFull"].GetDouble(), 5);
}

// It is old, and yet the show's.
TEST_F(ProvenCrowd, ALookThatAGuardedPhoneHoldsIsNoStrangers) {
  const auto json =
      report({"--delayed-proof", "--policy", "guarded", "--rogue", "bad-tags@10", "--loss", "0.3"});
  EXPECT_GT(json["rogues"]["meanSeconds"].GetDouble(), 1);
  EXPECT_EQ(json["proof"]["strangeProven"].GetUint64(), 0U);
  EXPECT_LT(json["proof"]["strangeFullSeconds"].GetDouble(), 1);
}

TEST_F(ProvenCrowd, IsTheSameOnAnyNumberOfThreads) {
  const Words options = {"--delayed-proof", "--loss", "0.4", "--rogue", "bad-tags@10"};
  const auto text = [&](const char* threads) {
    Words all = options;
    all.insert(all.end(), {"--threads", threads});
    const std::string output = run(all).output;
    return output.substr(0, output.find("simulatedSecondsPerSecond"));
  };
  EXPECT_EQ(text("1"), text("3"));
}

TEST_F(ProvenCrowd, RefusesWhatItCannotGoWith) {
  for (const Words& others :
       {Words{"--air", "100"}, Words{"--interval", "100"}, Words{"--shard", "1/2"}}) {
    Words options{"--delayed-proof"};
    options.insert(options.end(), others.begin(), others.end());
    const ToolRun run = this->run(options);
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.output, "");
    EXPECT_THAT(run.error, HasSubstr("--delayed-proof does not go with " + others.front()));
  }
}

}  // namespace
}  // namespace halvora
