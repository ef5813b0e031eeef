// SPDX-License-Identifier: Apache-2.0
// What `halvora crowd` says of attackers, exact against guarded against signed.
#include <filesystem>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidjson/document.h>
#include <sys/stat.h>

#include "engine/broadcast.h"
#include "tests/venue/crowd/crowd_bench.h"
#include "tests/venue/crowd/shown_crowd.h"
#include "tests/venue/plan/lut_folder.h"

namespace halvora {
namespace {

using testing::HasSubstr;
using testing::Not;

const std::string kKey = "5A00C1D2E3F405162738495A6B7C8D9E";

class CrowdRogues : public ShownCrowd {
 protected:
  CrowdRogues()
      : ShownCrowd(30, 8, [](int at) {
          return plainLook(static_cast<std::uint16_t>(at + 1), 200,
                           static_cast<std::uint8_t>(30 * at));
        }) {}
  std::string keyFile(mode_t mode = S_IRUSR) {
    std::string file = folder.write("show.key", kKey);
    EXPECT_EQ(chmod(file.c_str(), mode), 0);
    return file;
  }
  rapidjson::Document attacked(const std::string& kind, Words options) {
    options.insert(options.end(), {"--rogue", kind + "@10"});
    const ToolRun run = this->run(options);
    EXPECT_EQ(run.status, 0) << run.error;
    return jsonOf(run.output);
  }
};

TEST_F(CrowdRogues, ReportHowManyPhonesAreLostAndForHowLong) {
  const auto exact = attacked("far-stream", {});
  EXPECT_EQ(exact["rogues"]["phonesLost"].GetUint64(), 30U);
  EXPECT_EQ(exact["rogues"]["mostAtOnce"].GetUint64(), 30U);
  EXPECT_EQ(exact["rogues"]["from"].GetInt64(), 10'000);
  EXPECT_GT(exact["rogues"]["meanSeconds"].GetDouble(), 20) << "to the end of the show";
  EXPECT_TRUE(exact["rogues"]["allBackAfter"].IsNull());
  EXPECT_STREQ(exact["rogues"]["kinds"][0].GetString(), "far-stream");
  const auto guarded = attacked("far-stream", {"--policy", "guarded"});
  EXPECT_EQ(guarded["rogues"]["phonesLost"].GetUint64(), 0U);
  EXPECT_EQ(guarded["rogues"]["meanSeconds"].GetDouble(), 0);
  EXPECT_EQ(guarded["rogues"]["allBackAfter"].GetInt64(), 0);
}

TEST_F(CrowdRogues, OneWhoFitsInCostsAGuardedCrowdTimeAndASignedOneNothing) {
  const auto guarded = attacked("ahead", {"--policy", "guarded"});
  EXPECT_EQ(guarded["rogues"]["phonesLost"].GetUint64(), 30U);
  ASSERT_TRUE(guarded["rogues"]["allBackAfter"].IsInt64());
  EXPECT_GT(guarded["rogues"]["allBackAfter"].GetInt64(), 1000);
  EXPECT_LT(guarded["rogues"]["allBackAfter"].GetInt64(), 14'500);
  const Words key = {"--show-key", keyFile(), "--authentication", "require"};
  for (const char* kind : {"ahead", "twin", "replay", "next-packet"}) {
    EXPECT_EQ(attacked(kind, key)["rogues"]["phonesLost"].GetUint64(), 0U) << kind;
  }
}

TEST_F(CrowdRogues, NobodyAttacksUnasked) {
  EXPECT_FALSE(jsonOf(run({}).output).HasMember("rogues"));
}

TEST_F(CrowdRogues, RefuseWhatIsNoAttackerAndNoKey) {
  for (const Words& options :
       {Words{"--rogue", "nobody@5"}, Words{"--rogue", "ahead"}, Words{"--policy", "careful"},
        Words{"--show-key", keyFile(0644)}, Words{"--show-key", folder.write("short", "5A")}}) {
    EXPECT_EQ(flawOfRefusal(run(options)), "") << options.back();
  }
}

TEST_F(CrowdRogues, TheKeyIsNowhereInTheReport) {
  const ToolRun done = run({"--show-key", keyFile(), "--until", "6"});
  EXPECT_EQ(done.status, 0) << done.error;
  EXPECT_THAT(done.output + done.error + done.messages, Not(HasSubstr(kKey.substr(4, 8))));
}

}  // namespace
}  // namespace halvora
