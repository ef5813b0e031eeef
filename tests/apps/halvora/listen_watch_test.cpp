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
  /// The lines with one of those keys.
  std::vector<std::string> said(const std::vector<std::string>& arguments,
                                const std::vector<std::string>& keys = {"finding"}) {
    const ToolRun done = run(arguments);
    EXPECT_EQ(done.status, 0) << done.error;
    std::vector<std::string> found;
    for (const std::string& line : linesOf(done.output)) {
      const bool isOne = std::ranges::any_of(keys, [&](const std::string& key) {
        return line.find("\"" + key + "\":") != std::string::npos;
      });
      if (isOne) found.push_back(line);
    }
    return found;
  }
  std::string keyFile() {
    std::string file = folder.write("show.key", std::string(32, '0'));
    EXPECT_EQ(chmod(file.c_str(), S_IRUSR), 0);
    return file;
  }
  void hearSignedAt(long long time, const Broadcast& look) {
    const auto code = codes.withKey(ShowKey(std::array<std::uint8_t, ShowKey::kSize>{}));
    air.packets.push_back({time, textOf(signBroadcast(look, 29454480, *code))});
  }

  VirtualAir air;
  PlainCodes codes;
  TestFolder folder;
};

TEST_F(ListenWatch, SaysNothingUnasked) {
  hearFrom(100, 4000, fields(1));
  hearAt(4500, fields(9000));
  EXPECT_THAT(said({"--for", "5"}, {"finding", "trust"}), IsEmpty());
}

TEST_F(ListenWatch, SaysWhenAPhoneWouldTrustTheShow) {
  hearFrom(100, 4000, fields(1));
  EXPECT_THAT(said({"--for", "5", "--watch"}, {"finding", "trust"}),
              ElementsAre(R"({"t":99,"trust":"unproven"})", R"({"t":3099,"trust":"trusted"})"));
}

TEST_F(ListenWatch, SaysThatTwoWhoContradictEachOtherContestTheShow) {
  hearFrom(100, 6000, fields(1));
  // Once the first is trusted, somebody says something else under its numbers.
  hearFrom(4150, 1500, fields(1, 99));
  EXPECT_THAT(said({"--for", "6", "--watch"}, {"trust"}),
              ElementsAre(R"({"t":99,"trust":"unproven"})", R"({"t":3099,"trust":"trusted"})",
                          HasSubstr(R"("trust":"contested")")));
}

TEST_F(ListenWatch, TrustsAGoodTagAtOnce) {
  hearSignedAt(100, fields(1));
  EXPECT_THAT(said({"--for", "2", "--show-key", keyFile()}, {"finding", "trust"}),
              ElementsAre(R"({"t":99,"trust":"trusted"})"));
}

TEST_F(ListenWatch, TheKeyIsNowhereInWhatIsPrintedNorRecorded) {
  const std::string key = "5A00C1D2E3F405162738495A6B7C8D9E";
  const std::string file = folder.write("other.key", key);
  ASSERT_EQ(chmod(file.c_str(), S_IRUSR), 0);
  hearSignedAt(100, fields(1));
  const std::string record = (folder.path() / "heard.jsonl").string();
  const ToolRun done = run({"--for", "1", "--show-key", file, "--record", record});
  EXPECT_EQ(done.status, 0) << done.error;
  EXPECT_THAT(done.output + done.error + done.messages + contentsOf(record),
              testing::Not(HasSubstr(key.substr(4, 8))));
}

TEST_F(ListenWatch, SaysThatNothingIsProvenAnyMore) {
  hearSignedAt(100, fields(1));
  EXPECT_THAT(said({"--for", "11", "--show-key", keyFile()}, {"trust"}),
              ElementsAre(R"({"t":99,"trust":"trusted"})", R"({"t":10250,"trust":"unproven"})"));
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

TEST_F(ListenWatch, SaysTheRateAndTheLossOfEachInTheEnd) {
  hearFrom(100, 1000, fields(1));
  for (int at = 0; at < 5; ++at) hearAt(150 + 100 * at, fields(10 + 2 * at, 1, 9));
  EXPECT_THAT(said({"--for", "2", "--watch"}, {"summary"}),
              ElementsAre(R"({"t":2000,"summary":"258:7","packets":10,"repeats":9,"lost":0,)"
                          R"("restarts":0,"perSecond":5})",
                          R"({"t":2000,"summary":"258:9","packets":5,"repeats":0,"lost":4,)"
                          R"("restarts":0,"perSecond":2.5})"));
}

TEST_F(ListenWatch, CountsTransmittersThatSomebodyMakesUpTogether) {
  for (int at = 0; at < 5000; ++at) {
    Broadcast look = fields(1, 1, at % 256);
    look.applicationId = static_cast<std::uint16_t>(at / 256);
    hearAt(100, look);
  }
  const auto lines = said({"--for", "1"}, {"summary"});
  EXPECT_THAT(lines, SizeIs(4097));
  EXPECT_EQ(lines.back(), R"({"t":1000,"summary":"others","packets":904})");
}

TEST_F(ListenWatch, SaysThatOneNumberSaysTwoThings) {
  for (int at = 0; at < 5; ++at) {
    hearAt(100 + 100 * at, fields(10));
    hearAt(150 + 100 * at, fields(10, 99));
  }
  const auto lines = said({"--for", "1", "--watch"});
  ASSERT_THAT(lines, SizeIs(1));
  EXPECT_THAT(lines[0], HasSubstr(R"("finding":"two senders","transmitter":"258:7",)"
                                  R"("detail":"10 says two things"})"));
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
  /// A line of a scenario: that look every tenth of a second.
  static std::string sends(const std::string& at, const Broadcast& look, const std::string& until) {
    return "{\"at\":" + at + ",\"packet\":\"" + NSDataToHex(encodeBroadcast(look)) +
           "\",\"every\":0.1,\"until\":" + until + "}\n";
  }
  void SetUp() override {
    std::string lines = "{\"at\":0,\"start\":true}\n";
    for (int look = 0; look < 5; ++look) {
      lines += sends(std::to_string(2 + 2 * look), fields(1 + look, 10 * look),
                     std::to_string(4 + 2 * look));
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

/// When it was said, of lines of which each begins with its time.
double secondsOf(const std::string& line) { return std::stod(line.substr(5)) / 1000; }

// Somebody recorded it at the rehearsal.
TEST_F(ListenExpect, AnOldPacketDoesNotMisleadIt) {
  hearAt(100, fields(5, 40));
  hearFrom(200, 800, fields(1, 0));
  for (int look = 1; look < 5; ++look) {
    hearFrom(2000 * look - 1000, 2000, fields(1 + look, 10 * look));
  }
  EXPECT_THAT(differences("8"), testing::Each(HasSubstr("jump")));
}

TEST_F(ListenExpect, WhoComesInTheMiddleOfALookIsRightFromTheNextOn) {
  hearFrom(100, 100, fields(1, 0));
  for (int look = 1; look < 5; ++look)
    hearFrom(200 + 2000 * (look - 1), 2000, fields(1 + look, 10 * look));
  EXPECT_THAT(differences("8"), IsEmpty());
}

TEST_F(ListenExpect, AShowThatIsBegunAgainIsRightFromItsNextLookOn) {
  for (int look = 0; look < 3; ++look) hearFrom(100 + 500 * look, 500, fields(1 + look, 10 * look));
  hearFrom(1600, 1000, fields(1, 0));
  for (int look = 1; look < 5; ++look) {
    hearFrom(600 + 2000 * look, 2000, fields(1 + look, 10 * look));
  }
  EXPECT_THAT(differences("9"), testing::Each(HasSubstr("jump")));
}

// A player's numbers go on from the evening before.
TEST_F(ListenExpect, WhateverItsNumbersAreAShowIsKnownByItsLooks) {
  for (int look = 0; look < 5; ++look) {
    hearFrom(500 + 2000 * look, 2000, fields(2001 + 3 * look, 10 * look));
  }
  EXPECT_THAT(differences("10"), IsEmpty());
}

// Each GO says anew how far the show is.
TEST_F(ListenExpect, AShowThatIsPlayedByHandIsRightAtEachOfItsSteps) {
  hearFrom(500, 5000, fields(2001, 0));
  hearFrom(5500, 500, fields(2002, 10));
  hearFrom(6000, 500, fields(2003, 20));
  hearFrom(6500, 2000, fields(2004, 30));
  const auto lines = differences("8.4");
  ASSERT_THAT(lines, SizeIs(1)) << "it was late once";
  EXPECT_THAT(lines[0], HasSubstr(R"("finding":"other look")"));
}

TEST_F(ListenExpect, OfSeveralAdaptersEachHasANumberOfItsOwn) {
  for (int look = 0; look < 5; ++look) {
    hearFrom(500 + 2000 * look, 2000, fields(2001 + look, 10 * look));
    if (look < 2) hearFrom(550 + 2000 * look, 2000, fields(2001 + look, 10 * look, 8));
  }
  std::vector<std::string> lines;
  for (const std::string& line : said({"--for", "8", "--expect", show, "--airs", "2"})) {
    if (line.find("finding") != std::string::npos) lines.push_back(line);
  }
  ASSERT_THAT(lines, SizeIs(1));
  EXPECT_THAT(lines[0], HasSubstr(R"("finding":"silent","transmitter":"258:8")"));
  for (const char* airs : {"0", "33", "many"}) {
    const ToolRun refused = run({"--expect", show, "--airs", airs});
    EXPECT_EQ(flawOfRefusal(refused), "") << airs;
    EXPECT_THAT(refused.error, HasSubstr("--airs must be 1 to 32"));
  }
  EXPECT_THAT(run({"--airs", "2"}).error, HasSubstr("--airs goes with --expect"));
}

// A transmitter that hangs repeats what it has.
TEST_F(ListenExpect, AShowThatStandsStillIsNeverRight) {
  hearShow(500, 1);
  hearFrom(2500, 2000, fields(2, 10));
  hearFrom(4500, 10'000, fields(2, 10));
  const auto lines = differences("14");
  ASSERT_THAT(lines, SizeIs(1));
  EXPECT_THAT(lines[0], HasSubstr(R"("finding":"other look")"));
  EXPECT_LT(secondsOf(lines[0]), 6.5) << "its look was over at 4.5";
}

// Each verdict, with the show on the air beside it, within two seconds of what is wrong.
TEST_F(ListenExpect, SaysWithinTwoSecondsWhoIsNotOfTheShow) {
  hearShow(500, 5);
  hearFrom(3050, 1000, fields(2, 10, 9));
  const auto lines = differences("6");
  ASSERT_THAT(lines, SizeIs(1));
  EXPECT_THAT(lines[0], HasSubstr(R"("finding":"unknown sender","transmitter":"258:9")"));
  EXPECT_LT(secondsOf(lines[0]), 5.05);
}

TEST_F(ListenExpect, SaysWithinTwoSecondsWhatIsOfAnotherVenue) {
  Broadcast elsewhere = fields(2, 10);
  elsewhere.venueId = 8;
  hearShow(500, 5);
  hearAt(3050, elsewhere);
  const auto lines = differences("6");
  ASSERT_THAT(lines, SizeIs(1));
  EXPECT_THAT(lines[0], HasSubstr(R"("finding":"wrong venue","transmitter":"258:7")"));
  EXPECT_LT(secondsOf(lines[0]), 5.05);
}

TEST_F(ListenExpect, SaysWithinTwoSecondsWhereNumbersJump) {
  hearShow(500, 5);
  hearAt(3050, fields(9000, 10));
  const auto lines = differences("6");
  ASSERT_THAT(lines, SizeIs(1));
  EXPECT_THAT(lines[0],
              HasSubstr(R"("finding":"jump","transmitter":"258:7","detail":"2 to 9000")"));
  EXPECT_LT(secondsOf(lines[0]), 5.05);
}

TEST_F(ListenExpect, SaysWithinTwoSecondsThatTwoSendUnderOneNumber) {
  hearShow(500, 5);
  hearFrom(3050, 1000, fields(200, 99));
  const auto lines = differences("6");
  ASSERT_THAT(lines, SizeIs(2));
  EXPECT_THAT(lines[0], HasSubstr(R"("finding":"jump","transmitter":"258:7","detail":"200 to 2")"));
  EXPECT_THAT(lines[1], HasSubstr(R"("finding":"two senders","transmitter":"258:7")"));
  EXPECT_LT(secondsOf(lines[1]), 5.05);
}

// What it was silent about before is another matter.
TEST_F(ListenExpect, SaysWhatElseIsShownSoonAfterASilence) {
  hearShow(2500, 1);
  hearFrom(4500, 3000, fields(2, 99));
  const auto lines = differences("7");
  ASSERT_THAT(lines, SizeIs(2));
  EXPECT_THAT(lines[0], HasSubstr(R"("finding":"silent","detail":"nothing of it was heard")"));
  EXPECT_THAT(lines[1], HasSubstr(R"("finding":"other look","detail":"09C9)"));
}

TEST_F(ListenExpect, AStepThatChangesNothingIsNoneForWhoStandsStill) {
  std::string lines = "{\"at\":0,\"start\":true}\n";
  for (int look = 0; look < 5; ++look) {
    lines += sends(std::to_string(2 + 2 * look), fields(1 + look, 10 * std::max(0, look - 1)),
                   std::to_string(4 + 2 * look));
  }
  show = folder.write("slow.jsonl", lines);
  hearFrom(500, 8000, fields(1, 0));
  const auto found = differences("8");
  ASSERT_THAT(found, SizeIs(1));
  EXPECT_THAT(found[0], HasSubstr(R"("finding":"other look")"));
  EXPECT_LT(secondsOf(found[0]), 6.5) << "its look was over at 4.5";
}

TEST_F(ListenExpect, OfWhoIsNotOfTheShowNoLookIsExpected) {
  hearShow(500, 5);
  hearFrom(550, 9000, fields(1, 0, 8));
  const auto lines = differences("9");
  ASSERT_THAT(lines, SizeIs(1));
  EXPECT_THAT(lines[0], HasSubstr(R"("finding":"unknown sender","transmitter":"258:8")"));
}

/// The same show by two transmitters.
class ListenExpectTwo : public ListenExpect {
 protected:
  void SetUp() override {
    std::string lines = "{\"at\":0,\"start\":true}\n";
    for (int transmitter = 7; transmitter <= 8; ++transmitter) {
      lines += sends("2", fields(1, 50, transmitter), "10");
    }
    show = folder.write("two.jsonl", lines);
  }
};

TEST_F(ListenExpectTwo, SaysWithinTwoSecondsWhichTransmitterIsMissing) {
  hearFrom(500, 8000, fields(1, 50, 7));
  hearFrom(550, 3000, fields(1, 50, 8));
  const auto lines = differences("8");
  ASSERT_THAT(lines, SizeIs(1));
  EXPECT_THAT(lines[0], HasSubstr(R"("finding":"silent","transmitter":"258:8",)"
                                  R"("detail":"others of the show are heard"})"));
  EXPECT_GT(secondsOf(lines[0]), 4.95);
  EXPECT_LT(secondsOf(lines[0]), 5.55);
}

TEST_F(ListenExpectTwo, MissesOneAfterASecondAndAHalf) {
  hearFrom(500, 8000, fields(1, 50, 7));
  hearFrom(500, 3100, fields(1, 50, 8));
  const auto lines = differences("8");
  ASSERT_THAT(lines, SizeIs(1));
  EXPECT_EQ(secondsOf(lines[0]), 5) << "it was heard at 3.5 for the last time";
}

TEST_F(ListenExpectTwo, SaysSoOfOneThatWasNeverHeard) {
  hearFrom(500, 4000, fields(1, 50, 7));
  const auto lines = differences("4");
  ASSERT_THAT(lines, SizeIs(1));
  EXPECT_THAT(lines[0], HasSubstr(R"("finding":"silent","transmitter":"258:8")"));
  EXPECT_LT(secondsOf(lines[0]), 2.5);
}

TEST_F(ListenExpectTwo, MissesNobodyWhoseTimeIsOver) {
  hearFrom(500, 8000, fields(1, 50, 7));
  hearFrom(550, 8000, fields(1, 50, 8));
  EXPECT_THAT(differences("10"), testing::Each(testing::Not(HasSubstr("258:8"))));
}

// As where a controller hangs and goes on with the packet that it had, beside one that goes on.
TEST_F(ListenExpect, SaysWithinTwoSecondsWhichOfTwoTransmittersStandsStill) {
  const std::vector<std::string> both = {"--expect", show, "--allow", "258:7", "--allow", "258:8"};
  hearShow(500, 5);
  for (int look = 0; look < 5; ++look)
    hearFrom(550 + 2000 * look, 2000, fields(1 + look, 10 * look, 8));
  const auto differ = [&](const char* seconds) {
    std::vector<std::string> words = both;
    words.insert(words.end(), {"--for", seconds});
    std::vector<std::string> found;
    for (const std::string& line : said(words)) {
      if (line.find("finding") != std::string::npos) found.push_back(line);
    }
    return found;
  };
  EXPECT_THAT(differ("10"), IsEmpty());
  air.packets.clear();
  hearShow(500, 5);
  hearFrom(550, 2000, fields(1, 0, 8));
  hearFrom(2550, 8000, fields(2, 10, 8));
  const auto lines = differ("10");
  ASSERT_THAT(lines, SizeIs(1));
  EXPECT_THAT(lines[0],
              HasSubstr(R"("finding":"other look","transmitter":"258:8","detail":"09C9)"));
  EXPECT_THAT(lines[0], HasSubstr("; others of the show are right"));
  EXPECT_GT(secondsOf(lines[0]), 5.95) << "its look was over at 4.5";
  EXPECT_LT(secondsOf(lines[0]), 6.5);
}

// From the look of one to that of the other there is a step that the show makes too.
TEST_F(ListenExpect, SaysSoWhereTheShowComesBackToTheLookThatStandsStill) {
  std::string lines = "{\"at\":0,\"start\":true}\n";
  for (int look = 0; look < 4; ++look) {
    const int red = 10 + 10 * (look % 2);
    lines +=
        sends(std::to_string(2 + 4 * look), fields(1 + look, red), std::to_string(6 + 4 * look));
    hearFrom(420 + 4000 * look, 4000, fields(1 + look, red));
    hearFrom(470 + 4000 * look, 4000, fields(std::min(1 + look, 2), look == 0 ? 10 : 20, 8));
  }
  show = folder.write("turns.jsonl", lines);
  std::vector<std::string> found;
  for (const std::string& line :
       said({"--expect", show, "--allow", "258:7", "--allow", "258:8", "--for", "12"})) {
    if (line.find("finding") != std::string::npos) found.push_back(line);
  }
  ASSERT_THAT(found, SizeIs(1));
  EXPECT_THAT(found[0], HasSubstr(R"("finding":"other look","transmitter":"258:8")"));
  EXPECT_GT(secondsOf(found[0]), 9.9) << "its look was over at 8.4";
  EXPECT_LT(secondsOf(found[0]), 10.4);
}

TEST_F(ListenExpect, AZoneMayKeepItsLookWhileAnotherHasANewOne) {
  show = folder.write("zones.jsonl", "{\"at\":0,\"start\":true}\n" +
                                         sends("2", fields(1, 10, 7), "3.9") +
                                         sends("4", fields(2, 99, 8), "12"));
  hearFrom(500, 9000, fields(1, 10, 7));
  hearFrom(2500, 7000, fields(2, 99, 8));
  EXPECT_THAT(differences("9"), IsEmpty());
}

// Its time begins when its look is due, and not before.
TEST_F(ListenExpect, OneThatComesLaterHasAMomentForItsFirstLook) {
  show = folder.write("later.jsonl", "{\"at\":0,\"start\":true}\n" +
                                         sends("2", fields(1, 10, 7), "12") +
                                         sends("6", fields(2, 99, 8), "12"));
  hearFrom(500, 9000, fields(1, 10, 7));
  hearFrom(550, 5000, fields(1, 77, 8));
  hearFrom(5550, 4000, fields(2, 99, 8));
  EXPECT_THAT(differences("9"), IsEmpty());
}

TEST_F(ListenExpect, RefusesWhatIsNoScenarioAndNoVenue) {
  EXPECT_EQ(flawOfRefusal(run({"--expect", folder.path().string() + "/none"})), "");
  EXPECT_EQ(flawOfRefusal(run({"--venue", "256"})), "");
  EXPECT_EQ(flawOfRefusal(run({"--show-key", folder.path().string() + "/none"})), "");
}

}  // namespace
}  // namespace halvora
