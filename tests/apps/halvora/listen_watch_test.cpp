// SPDX-License-Identifier: Apache-2.0
// What `halvora listen` says of the air to a crew.
#include <algorithm>
#include <array>
#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "engine/signed_broadcast.h"
#include "tests/apps/halvora/tool_runner.h"
#include "tests/support/plain_codes.h"
#include "tests/venue/air/virtual_radio.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class ListenWatch : public testing::Test {
 protected:
  static Broadcast fields(int sequence, int red = 1, int transmitter = 7) {
    Broadcast look;
    look.applicationId = 258;
    look.venueId = 7;
    look.mode = 1;
    look.red = static_cast<std::uint8_t>(red);
    look.sequence = static_cast<std::uint16_t>(sequence);
    look.transmitter = static_cast<std::uint8_t>(transmitter);
    return look;
  }
  template <class Bytes>
  static std::string textOf(const Bytes& bytes) {
    return {bytes.begin(), bytes.end()};
  }
  void hearAt(long long time, const Broadcast& look) {
    air.packets.push_back({time, textOf(encodeBroadcast(look))});
  }
  /// Every tenth of a second, from a time on, for so long.
  void hearFrom(long long time, long long length, const Broadcast& look) {
    for (long long at = time; at < time + length; at += 100) hearAt(at, look);
  }

  ToolRun run(std::vector<std::string> arguments) {
    std::ranges::stable_sort(air.packets, {}, &VirtualAir::Packet::at);
    arguments.insert(arguments.begin(), "listen");
    std::atomic<bool> isInterrupted = false;
    ToolSetup setup;
    setup.isInterrupted = &isInterrupted;
    setup.codes = &codes;
    setup.openRadio = [&](const std::string&) {
      return std::make_unique<VirtualRadio>(air, isInterrupted);
    };
    return runTool(arguments, setup);
  }
  std::vector<std::string> said(const std::vector<std::string>& arguments) {
    const ToolRun done = run(arguments);
    EXPECT_EQ(done.status, 0) << done.error;
    std::vector<std::string> found;
    for (const std::string& line : linesOf(done.output)) {
      if (line.find("\"finding\":") != std::string::npos ||
          line.find("\"trust\":") != std::string::npos) {
        found.push_back(line);
      }
    }
    return found;
  }

  VirtualAir air;
  PlainCodes codes;
  TestFolder folder;
};

TEST_F(ListenWatch, SaysNothingUnasked) {
  hearFrom(100, 4000, fields(1));
  hearAt(4500, fields(9000));
  EXPECT_THAT(said({"--for", "5"}), IsEmpty());
}

TEST_F(ListenWatch, SaysWhenAPhoneWouldTrustTheShow) {
  hearFrom(100, 4000, fields(1));
  EXPECT_THAT(said({"--for", "5", "--watch"}), ElementsAre(R"({"t":3099,"trust":"trusted"})"));
}

TEST_F(ListenWatch, TrustsAGoodTagAtOnce) {
  const std::string file = folder.write("show.key", std::string(32, '0'));
  ASSERT_EQ(chmod(file.c_str(), S_IRUSR), 0);
  const auto code = codes.withKey(ShowKey(std::array<std::uint8_t, ShowKey::kSize>{}));
  air.packets.push_back({100, textOf(signBroadcast(fields(1), 29454480, *code))});
  EXPECT_THAT(said({"--for", "2", "--show-key", file}),
              ElementsAre(R"({"t":99,"trust":"trusted"})"));
}

TEST_F(ListenWatch, SaysWhoIsNotOfTheShowOnce) {
  hearFrom(100, 900, fields(1));
  hearFrom(150, 800, fields(1, 1, 9));
  const auto lines = said({"--for", "1", "--allow", "258:7"});
  EXPECT_THAT(lines, ElementsAre(R"({"t":149,"finding":"unknown sender","transmitter":"258:9",)"
                                 R"("detail":"not one of the show's"})"));
}

TEST_F(ListenWatch, SaysWhatIsOfAnotherVenue) {
  Broadcast elsewhere = fields(1, 1, 9);
  elsewhere.venueId = 8;
  hearAt(100, fields(1));
  hearAt(150, elsewhere);
  EXPECT_THAT(said({"--for", "1", "--venue", "7"}),
              ElementsAre(R"({"t":149,"finding":"wrong venue","transmitter":"258:9",)"
                          R"("detail":"venue 8"})"));
}

TEST_F(ListenWatch, SaysWhereNumbersJump) {
  hearAt(100, fields(1));
  hearAt(200, fields(1025));
  hearAt(300, fields(5000));
  EXPECT_THAT(said({"--for", "1", "--watch"}),
              ElementsAre(R"({"t":299,"finding":"jump","transmitter":"258:7",)"
                          R"("detail":"1025 to 5000"})"));
}

TEST_F(ListenWatch, TellsTwoSendersUnderOneNumberFromARestart) {
  for (int at = 0; at < 10; ++at) {
    hearAt(100 + 100 * at, fields(10 + at / 5));
    hearAt(150 + 100 * at, fields(300 + at));
  }
  const auto lines = said({"--for", "2", "--watch"});
  EXPECT_THAT(lines, testing::Contains(HasSubstr(R"("finding":"two senders")")));
  air.packets.clear();
  hearFrom(100, 500, fields(300));
  hearFrom(600, 500, fields(1));
  for (const std::string& line : said({"--for", "2", "--watch"})) {
    EXPECT_THAT(line, testing::Not(HasSubstr("two senders")));
  }
}

class ListenExpect : public ListenWatch {
 protected:
  void SetUp() override {
    std::string lines = "{\"at\":0,\"start\":true}\n";
    for (int look = 0; look < 5; ++look) {
      lines += "{\"at\":" + std::to_string(2 + 2 * look) + ",\"packet\":\"" +
               NSDataToHex(encodeBroadcast(fields(1 + look, 10 * look))) +
               "\",\"every\":0.1,\"until\":" + std::to_string(4 + 2 * look) + "}\n";
    }
    show = folder.write("show.jsonl", lines);
  }
  /// What should be on the air, from the first look at that time.
  void hearShow(long long from, int looks) {
    for (int look = 0; look < looks; ++look) {
      hearFrom(from + 2000 * look, 2000, fields(1 + look, 10 * look));
    }
  }
  std::vector<std::string> differences(const char* seconds) {
    std::vector<std::string> found;
    for (const std::string& line : said({"--for", seconds, "--expect", show})) {
      if (line.find("finding") != std::string::npos) found.push_back(line);
    }
    return found;
  }

  std::string show;
};

TEST_F(ListenExpect, IsSilentAboutAShowAsItShouldBe) {
  hearShow(500, 5);
  EXPECT_THAT(differences("10"), IsEmpty());
}

TEST_F(ListenExpect, SaysWithinTwoSecondsThatNothingIsHeard) {
  const auto lines = differences("2");
  ASSERT_THAT(lines, SizeIs(1));
  EXPECT_THAT(lines[0], HasSubstr(R"("finding":"silent","detail":"nothing of it was heard")"));
}

TEST_F(ListenExpect, SaysWithinTwoSecondsThatTheShowFellSilent) {
  hearShow(500, 2);
  const auto lines = differences("6.5");
  ASSERT_THAT(lines, SizeIs(1));
  EXPECT_THAT(lines[0], HasSubstr(R"("finding":"silent","detail":"nothing is heard")"));
}

TEST_F(ListenExpect, SaysWithinTwoSecondsWhatElseIsShown) {
  hearShow(500, 2);
  hearFrom(4500, 2000, fields(3, 99));
  const auto lines = differences("6.5");
  ASSERT_THAT(lines, SizeIs(1));
  EXPECT_THAT(lines[0], HasSubstr(R"("finding":"other look","detail":"09C9)"));
  EXPECT_THAT(lines[0], HasSubstr(" instead of 09C9"));
}

TEST_F(ListenExpect, RefusesWhatIsNoScenarioAndNoVenue) {
  EXPECT_EQ(flawOfRefusal(run({"--expect", folder.path().string() + "/none"})), "");
  EXPECT_EQ(flawOfRefusal(run({"--venue", "256"})), "");
  EXPECT_EQ(flawOfRefusal(run({"--show-key", folder.path().string() + "/none"})), "");
}

}  // namespace
}  // namespace halvora
