// SPDX-License-Identifier: Apache-2.0
// What a player sends and when, in virtual time: to the millisecond.
#include "venue/live/show_player.h"

#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/virtual/virtual_run_loop.h"
#include "tests/support/passed_run_loop.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// Cues by hand, then three by time, then one by hand and one by time.
const char* const kShow = R"(application: 1
venue: 7
transmitter: 3
cues:
- {name: Doors, look: {mode: 1, speed: 1}}
- {name: Song, at: 0, look: {mode: 1, speed: 2}}
- {name: Verse, at: 0.25, look: {mode: 1, speed: 3}}
- {name: Chorus, at: 1, look: {mode: 1, speed: 4}}
- {name: Talk, look: {mode: 1, speed: 5}}
- {name: Encore, at: 3, look: {mode: 1, speed: 6}}
)";

class ShowPlayerTest : public testing::Test {
 protected:
  void begin(const std::string& text) {
    auto parsed = parseCueList(text, {});
    ASSERT_TRUE(std::holds_alternative<CueList>(parsed));
    show = std::get<CueList>(std::move(parsed));
    player = std::make_unique<ShowPlayer>(
        show, [](int, int) { return std::optional(12); }, loop, numbers,
        PlayerEnds{[this](const Broadcast& packet, bool isRepeat) {
                     packets.push_back(packet);
                     sent.push_back(std::to_string(loop.now() / milliseconds(1)) +
                                    (isRepeat ? "=" : ":") + describe(packet));
                   },
                   [this](const LiveStatus& status) {
                     changes.push_back((status.cue ? show.cues[*status.cue].name : "-") + " " +
                                       nameOf(status.state));
                   }});
  }
  static std::string describe(const Broadcast& packet) {
    if (packet.pixelMapId != 0) return "frame " + std::to_string(cueToken(packet));
    if (packet.master == 0) return packet.mode == 0 ? "end" : "black";
    return std::to_string(packet.speed) +
           (packet.master < 255 ? " at " + std::to_string(packet.master) : "");
  }
  void run(long long time) { loop.runFor(milliseconds(time)); }
  // New looks only.
  std::vector<std::string> looks() {
    std::vector<std::string> found;
    for (const std::string& line : std::exchange(sent, {})) {
      if (line.find('=') == std::string::npos) found.push_back(line);
    }
    return found;
  }

  VirtualRunLoop loop;
  PlainNumbers numbers{100};
  CueList show;
  std::vector<std::string> sent;
  std::vector<Broadcast> packets;
  std::vector<std::string> changes;
  std::unique_ptr<ShowPlayer> player;
};

TEST_F(ShowPlayerTest, NothingIsOnTheAirBeforeTheFirstGo) {
  begin(kShow);
  run(5000);
  EXPECT_THAT(sent, IsEmpty());
  EXPECT_THAT(changes, IsEmpty());
}

TEST_F(ShowPlayerTest, CuesByTimeFollowEachOtherAndOthersWaitForGo) {
  begin(kShow);
  EXPECT_EQ(player->obey("go"), "");
  run(1000);
  // The song is at 0, which the show's time has reached before anybody said so: it waits.
  EXPECT_THAT(looks(), ElementsAre("0:1"));
  EXPECT_EQ(player->obey("go"), "");
  EXPECT_EQ(player->untilNext(), milliseconds(250));
  run(9000);
  EXPECT_THAT(looks(), ElementsAre("1000:2", "1250:3", "2000:4"));
  EXPECT_FALSE(player->untilNext());
  EXPECT_EQ(player->obey("go"), "");
  run(9000);
  // The show's time stood at 1 s; the encore is at 3.
  EXPECT_THAT(looks(), ElementsAre("10000:5", "12000:6"));
  EXPECT_THAT(player->obey("go"), HasSubstr("no cue after the last"));
  EXPECT_THAT(changes, ElementsAre("Doors playing", "Song playing", "Verse playing",
                                   "Chorus playing", "Talk playing", "Encore playing"));
}

TEST_F(ShowPlayerTest, EachLookIsRepeatedUntilTheNext) {
  begin(kShow);
  player->obey("goto Song");
  run(450);
  EXPECT_THAT(sent, ElementsAre("0:2", "100=2", "200=2", "250:3", "350=3", "450=3"));
  EXPECT_EQ(packets[0].sequence, 100);
  EXPECT_EQ(packets[2].sequence, 100);
  EXPECT_EQ(packets[3].sequence, 101);
  EXPECT_EQ(packets[0].transmitter, 3);
}

TEST_F(ShowPlayerTest, HoldStopsTimeAndResumeGoesOnWithWhatWasLeft) {
  begin(kShow);
  player->obey("goto Verse");
  run(500);
  player->obey("hold");
  EXPECT_FALSE(player->untilNext());
  run(10000);
  looks();
  EXPECT_EQ(player->obey("resume"), "");
  run(1000);
  EXPECT_THAT(looks(), ElementsAre("10750:4"));
  EXPECT_THAT(player->obey("resume"), HasSubstr("nothing is held"));
}

TEST_F(ShowPlayerTest, WhatIsHeldStaysOnTheAir) {
  begin(kShow);
  player->obey("goto Verse");
  run(50);
  player->obey("hold");
  sent.clear();
  run(300);
  EXPECT_THAT(sent, ElementsAre("100=3", "200=3", "300=3"));
}

TEST_F(ShowPlayerTest, BackAndGotoTakeTheirTimeWithThem) {
  begin(kShow);
  player->obey("goto Chorus");
  run(100);
  EXPECT_EQ(player->obey("back"), "");
  run(800);
  EXPECT_THAT(looks(), ElementsAre("0:4", "100:3", "850:4"));
  player->obey("goto Doors");
  EXPECT_THAT(player->obey("back"), HasSubstr("no cue before"));
}

TEST_F(ShowPlayerTest, UnknownWordsChangeNothing) {
  begin(kShow);
  player->obey("go");
  run(10);
  sent.clear();
  changes.clear();
  for (const char* line : {"", "stop", "Go", "go now", "goto", "goto Nowhere", "goto doors", "quit",
                           "release", "hold on", "\x01"}) {
    EXPECT_NE(player->obey(line), "") << line;
  }
  EXPECT_THAT(player->obey("goto Nowhere"), HasSubstr("no cue is called \"Nowhere\""));
  EXPECT_THAT(sent, IsEmpty());
  EXPECT_THAT(changes, IsEmpty());
  EXPECT_EQ(player->obey("  goto   Song \r"), "");
}

TEST_F(ShowPlayerTest, BlackoutIsAtOnceAndLatched) {
  begin(kShow);
  player->obey("goto Song");
  run(130);
  EXPECT_EQ(player->obey("blackout"), "");
  for (const char* line : {"go", "back", "goto Doors", "hold", "resume"}) {
    EXPECT_THAT(player->obey(line), HasSubstr("not obeyed during blackout"));
  }
  EXPECT_EQ(player->obey("blackout"), "");
  run(400);
  EXPECT_THAT(sent, ElementsAre("0:2", "100=2", "130:black", "230=black", "330=black", "430=black",
                                "530=black"));
  const Broadcast& black = packets.back();
  EXPECT_EQ(
      black,
      (Broadcast{.applicationId = 1, .venueId = 7, .mode = 1, .sequence = 101, .transmitter = 3}));
  // Under the black the show went on.
  EXPECT_EQ(player->obey("release"), "");
  run(0);
  EXPECT_EQ(sent.back(), "530:3");
  EXPECT_EQ(packets.back().sequence, 102);
  EXPECT_THAT(changes,
              ElementsAre("Song playing", "Song blackout", "Verse blackout", "Verse playing"));
}

TEST_F(ShowPlayerTest, PanicEndsTheShowOnAllPhonesAndStopsItsTime) {
  begin(kShow);
  player->obey("goto Song");
  run(130);
  EXPECT_EQ(player->obey("panic"), "");
  EXPECT_EQ(player->obey("panic"), "");
  EXPECT_THAT(player->obey("blackout"), HasSubstr("not obeyed during panic"));
  run(500);
  sent.erase(sent.begin(), sent.begin() + 2);
  EXPECT_THAT(sent,
              ElementsAre("130:black", "230=black", "330=black", "430:end", "530=end", "630=end"));
  EXPECT_EQ(player->obey("release"), "");
  run(1000);
  EXPECT_THAT(looks(), ElementsAre("130:black", "430:end", "630:2"));
  EXPECT_EQ(player->obey("resume"), "");
  run(300);
  EXPECT_THAT(looks(), ElementsAre("1750:3"));
  EXPECT_THAT(changes, ElementsAre("Song playing", "Song panic", "Song held", "Song playing",
                                   "Verse playing"));
}

TEST_F(ShowPlayerTest, PanicDuringBlackoutAndAnEarlyRelease) {
  begin(kShow);
  player->obey("blackout");
  player->obey("panic");
  run(50);
  player->obey("release");
  run(1000);
  // Nothing was played, so there is nothing to go back to, and the end is not sent any more.
  EXPECT_THAT(looks(), ElementsAre("0:black", "0:black"));
  EXPECT_THAT(changes, ElementsAre("- blackout", "- panic", "- ready"));
}

TEST_F(ShowPlayerTest, MapsPlayToTheirLastFrameAndStopWithHold) {
  begin("application: 1\ncues:\n- {name: a, look: {mode: 1, map: {id: 1, from: 9}}}\n");
  player->obey("go");
  run(50);
  player->obey("hold");
  run(1000);
  player->obey("resume");
  run(1000);
  EXPECT_THAT(looks(), ElementsAre("0:frame 9", "33:frame 10", "1067:frame 11", "1100:frame 12"));
}

TEST_F(ShowPlayerTest, AFadeBeginsAtWhatIsOnTheAir) {
  begin(
      "application: 1\ncues:\n- {name: a, look: {mode: 1, speed: 9, master: 100}}\n"
      "- {name: b, fade: 0.4, look: {mode: 1, speed: 9, master: 200}}\n"
      "- {name: c, fade: 0.2, look: {mode: 1, speed: 9, master: 50}}\n");
  player->obey("go");
  player->obey("go");
  run(150);
  player->obey("go");
  run(500);
  EXPECT_THAT(looks(), ElementsAre("0:9 at 100", "0:9 at 125", "100:9 at 150", "150:9 at 100",
                                   "250:9 at 50"));
}

// A loop that stood still: the show is where it would be, and nothing is sent in a rush.
class LateLoop final : public PassedRunLoop {
 public:
  using PassedRunLoop::PassedRunLoop;
  Duration now() const override { return PassedRunLoop::now() + late; }

  Duration late{};
};

TEST_F(ShowPlayerTest, AfterAStandstillTheNewestFrameCounts) {
  LateLoop late(loop);
  auto parsed =
      parseCueList("application: 1\ncues:\n- {name: a, look: {mode: 1, map: {id: 1}}}\n", {});
  show = std::get<CueList>(std::move(parsed));
  std::vector<int> frames;
  ShowPlayer latePlayer(show, [](int, int) { return std::nullopt; }, late, numbers,
                        {[&](const Broadcast& packet, bool isRepeat) {
                           if (!isRepeat) frames.push_back(cueToken(packet));
                         },
                         [](const LiveStatus&) {}});
  latePlayer.obey("go");
  late.late = milliseconds(500);
  run(40);
  EXPECT_THAT(frames, ElementsAre(1, 17));
}

}  // namespace
}  // namespace halvora
