// SPDX-License-Identifier: Apache-2.0
// `halvora trace` under the policies for the air.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "engine/signed_broadcast.h"
#include "tests/apps/halvora/tool_runner.h"
#include "tests/support/plain_codes.h"
#include "venue/base/json_line.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Words = std::vector<std::string>;

/// Of noon of 1 January 2026, when traces begin.
constexpr std::uint32_t kEpoch = 29454480;
const std::string kKey = "000102030405060708090A0B0C0D0E0F";

class TraceAir : public testing::Test {
 protected:
  void SetUp() override {
    keyFile_ = folder_.write("show.key", kKey + "\n");
    ASSERT_EQ(chmod(keyFile_.c_str(), S_IRUSR), 0);
  }

  static std::string lineOf(double at, std::span<const std::uint8_t> data,
                            const std::string& more = {}) {
    return "{\"at\":" + levelText(at) + ",\"packet\":\"" + NSDataToHex(data) + "\"" + more + "}\n";
  }
  static Broadcast red(std::uint16_t sequence, std::uint8_t level) {
    Broadcast look;
    look.applicationId = 258;
    look.venueId = 7;
    look.master = look.mode = 1;
    look.red = level;
    look.sequence = sequence;
    look.transmitter = 7;
    return look;
  }
  static std::string plain(double at, const Broadcast& look, const std::string& more = {}) {
    return lineOf(at, encodeBroadcast(look), more);
  }
  std::string tagged(double at, const Broadcast& look, std::uint32_t epoch = kEpoch) const {
    std::array<std::uint8_t, ShowKey::kSize> bytes{};
    for (std::size_t place = 0; place < bytes.size(); ++place) {
      bytes[place] = static_cast<std::uint8_t>(place);
    }
    return lineOf(at, signBroadcast(look, epoch, *codes_.withKey(ShowKey(bytes))));
  }

  ToolRun run(const std::string& packets, Words options) const {
    options.insert(options.begin(), {"trace", folder_.write("show.jsonl", kStart + packets)});
    ToolSetup setup;
    setup.codes = &codes_;
    return runTool(options, setup);
  }
  std::vector<std::string> linesWith(const std::string& key, const std::string& packets,
                                     const Words& options) const {
    const ToolRun done = run(packets, options);
    EXPECT_EQ(done.status, 0) << done.error;
    std::vector<std::string> found;
    for (const std::string& line : linesOf(done.output)) {
      if (line.find("\"" + key + "\":") != std::string::npos) found.push_back(line);
    }
    return found;
  }

  const std::string kStart = "{\"at\":0,\"start\":true}\n";
  PlainCodes codes_;
  TestFolder folder_;
  std::string keyFile_;
};

TEST_F(TraceAir, ExactIsWhatATraceIsWithoutAWord) {
  const std::string show = plain(2, red(1, 255)) + plain(3, red(40000, 51)) + plain(4, red(2, 1));
  EXPECT_EQ(run(show, {"--air", "exact"}).output, run(show, {}).output);
}

TEST_F(TraceAir, GuardedSaysWhatWasNotObeyedAndWhy) {
  Broadcast elsewhere = red(3, 51);
  elsewhere.venueId = 8;
  const std::string show = plain(2, red(1, 255), R"(,"every":0.1,"until":6)") +
                           plain(6.5, red(40000, 51)) + plain(6.6, elsewhere) +
                           plain(7, red(2, 102));
  EXPECT_THAT(linesWith("light", show, {"--air", "guarded"}),
              ElementsAre(R"({"t":2000,"light":[1,0,0,1]})", R"({"t":7000,"light":[0.4,0,0,1]})"));
  EXPECT_THAT(
      linesWith("fate", show, {"--air", "guarded"}),
      ElementsAre(R"({"t":6500,"fate":"out of step"})", R"({"t":6600,"fate":"other show"})"));
  EXPECT_THAT(linesWith("fate", show, {}), IsEmpty());
}

TEST_F(TraceAir, RequireObeysGoodTagsOnly) {
  const std::string show = plain(2, red(1, 255)) + tagged(3, red(2, 51)) +
                           tagged(4, red(3, 102), kEpoch + 2) + tagged(5, red(1, 102)) +
                           tagged(6, red(4, 204), kEpoch + 1);
  const Words options{"--show-key", keyFile_, "--authentication", "require"};
  EXPECT_THAT(linesWith("light", show, options), ElementsAre(R"({"t":3000,"light":[0.2,0,0,1]})",
                                                             R"({"t":6000,"light":[0.8,0,0,1]})"));
  EXPECT_THAT(linesWith("fate", show, options),
              ElementsAre(R"({"t":2000,"fate":"untagged"})", R"({"t":4000,"fate":"bad tag"})",
                          R"({"t":5000,"fate":"replayed"})"));
}

TEST_F(TraceAir, PreferIsWhatAKeyIsForUnlessItSaysOtherwise) {
  const std::string show = plain(2, red(1, 255)) + tagged(3, red(2, 51)) + plain(4, red(3, 102));
  const auto preferred = linesWith("light", show, {"--show-key", keyFile_});
  EXPECT_THAT(preferred,
              ElementsAre(R"({"t":2000,"light":[1,0,0,1]})", R"({"t":3000,"light":[0.2,0,0,1]})"));
  EXPECT_EQ(linesWith("light", show, {"--show-key", keyFile_, "--authentication", "prefer"}),
            preferred);
}

TEST_F(TraceAir, WithoutTheKeySignedPacketsAreReadAsTheyAlwaysWere) {
  EXPECT_THAT(linesWith("light", tagged(2, red(1, 255)), {}),
              ElementsAre(R"({"t":2000,"light":[1,0,0,1]})"));
}

TEST_F(TraceAir, TheKeyIsNowhereInWhatIsPrinted) {
  for (const ToolRun& done : {run(tagged(2, red(1, 255)), {"--show-key", keyFile_}),
                              run("x", {"--show-key", keyFile_})}) {
    EXPECT_THAT(done.output + done.error, Not(HasSubstr(kKey.substr(4, 8))));
  }
}

TEST_F(TraceAir, OptionsThatMakeNoSenseAreRefused) {
  const std::string open = folder_.write("open.key", kKey);
  ASSERT_EQ(chmod(open.c_str(), 0644), 0);
  for (const Words& options :
       {Words{"--air", "careful"}, Words{"--air", ""}, Words{"--authentication", "require"},
        Words{"--show-key", keyFile_, "--authentication", "off"},
        Words{"--show-key", folder_.path().string() + "/none"}, Words{"--show-key", open}}) {
    EXPECT_EQ(flawOfRefusal(run(plain(2, red(1, 255)), options)), "") << options.back();
  }
}

}  // namespace
}  // namespace halvora
