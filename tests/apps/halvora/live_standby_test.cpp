// SPDX-License-Identifier: Apache-2.0
// A player that stands by, in virtual time: what it says and obeys, and what it takes over.
#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/apps/halvora/tool_runner.h"
#include "tests/apps/halvora/virtual_crew.h"
#include "venue/live/sequence_numbers.h"
#include "venue/live/show_place.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

// The virtual machine's clock when it begins.
constexpr double kBegin = 59.85;

class LiveStandby : public testing::Test {
 protected:
  LiveStandby() {
    auto opened = openSequenceJournal(journal, 1, nullptr);
    player = std::get<std::unique_ptr<SequenceNumbers>>(std::move(opened));
    for (int at = 0; at < 4; ++at) player->next();
  }
  // It was at that cue for so long when the machine's clock began.
  void wasAt(const std::string& cue, Duration time, PlayerPlace how = {}) {
    ShowPlace place;
    place.date = {kBegin};
    place.cueName = cue;
    place.player = how;
    if (!cue.empty()) place.player.cue = 0;
    place.player.cueTime = time;
    keep(place);
  }
  void keep(const ShowPlace& place) { folder.write("j.place", packPlace(place)); }
  ToolRun standBy(std::vector<std::string> options = {}) {
    options.insert(options.begin(), {"live", folder.write("show.yaml", show), "--standby",
                                     "--journal", journal, "--control", "-"});
    if (std::ranges::find(options, "--air") == options.end()) {
      options.insert(options.end(), {"--air", "stdout"});
    }
    ToolSetup setup;
    setup.openLive = [this] { return std::make_unique<VirtualGround>(crew); };
    return runTool(options, setup);
  }
  void dieAt(long long time) {
    crew.events.emplace_back(time, [this] { player.reset(); });
  }

  TestFolder folder;
  const std::string journal = (folder.path() / "j").string();
  std::string show =
      "application: 1\ncues:\n"
      "- {name: One, look: {mode: 1, colour: \"#ff0000\"}}\n"
      "- {name: Two, at: 0, look: {mode: 1, colour: \"#00ff00\"}}\n"
      "- {name: Three, at: 5, look: {mode: 1, colour: \"#0000ff\"}}\n";
  std::unique_ptr<SequenceNumbers> player;
  Crew crew;
};

// Time since the takeover, colour and sequence number of each line.
std::vector<std::string> briefly(const std::string& output) {
  std::vector<std::string> lines;
  for (const std::string& line : linesOf(output)) {
    const std::string packet = line.substr(line.find("packet") + 9, 52);
    lines.push_back(line.substr(5, line.find(',') - 5) + " " + packet.substr(16, 6) + " " +
                    packet.substr(46, 4));
  }
  return lines;
}

TEST_F(LiveStandby, GoesOnWhereTheOtherPlayerWasAndAboveItsNumbers) {
  wasAt("Two", milliseconds(4000));
  dieAt(730);
  crew.lines = {{1250, "quit"}};
  const ToolRun run = standBy();
  EXPECT_EQ(run.status, 0) << run.error;
  // Seen at the next look, 740; the third cue is due 5 s after the second one began.
  EXPECT_THAT(briefly(run.output),
              ElementsAre("0 00FF00 0005", "100 00FF00 0005", "200 00FF00 0005", "260 0000FF 0006",
                          "360 0000FF 0006", "460 0000FF 0006"));
  EXPECT_THAT(linesOf(run.messages),
              ElementsAre("halvora: stands by for the player that has " + journal,
                          "halvora: the player is gone; this one goes on",
                          HasSubstr("\"cue\":\"Two\",\"state\":\"playing\""),
                          HasSubstr("\"cue\":\"Three\",\"state\":\"playing\"")));
  EXPECT_EQ(crew.osc, "") << "nobody asked for a port";
  // It ended as it should.
  EXPECT_FALSE(std::filesystem::exists(journal + ".place"));
}

TEST_F(LiveStandby, CuesThatWereDueMeanwhileFollowAtOnce) {
  wasAt("Two", milliseconds(4000));
  dieAt(5000);
  crew.lines = {{5050, "quit"}};
  EXPECT_THAT(briefly(standBy().output), ElementsAre("0 00FF00 0005", "0 0000FF 0006"));
}

TEST_F(LiveStandby, WhatIsHeldOrBlackStaysSo) {
  PlayerPlace held;
  held.isHeld = true;
  PlayerPlace dark;
  dark.isBlack = true;
  wasAt("Two", milliseconds(4000), held);
  dieAt(1000);
  crew.lines = {{1030, "resume"}, {2060, "quit"}};
  EXPECT_THAT(linesOf(standBy().messages).back(), HasSubstr("\"Three\",\"state\":\"playing\""));

  player = std::get<std::unique_ptr<SequenceNumbers>>(openSequenceJournal(journal, 1, nullptr));
  crew.events.clear();
  dieAt(1000);
  wasAt("One", milliseconds(0), dark);
  crew.lines = {{1030, "go"}, {1040, "release"}, {1050, "quit"}};
  const ToolRun black = standBy();
  EXPECT_THAT(briefly(black.output), ElementsAre(HasSubstr(" 000000 "), HasSubstr(" FF0000 ")));
  EXPECT_THAT(black.messages, HasSubstr("\"go\" is not obeyed during blackout"));
}

TEST_F(LiveStandby, ObeysNothingButQuitBefore) {
  crew.lines = {{10, "go"}, {20, "panic"}, {30, " quit "}, {2000, "next"}};
  const ToolRun run = standBy();
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_EQ(run.output, "");
  EXPECT_THAT(linesOf(run.messages),
              ElementsAre(HasSubstr("stands by"),
                          "halvora: \"go\" is not obeyed while another player has the show",
                          "halvora: \"panic\" is not obeyed while another player has the show"));
  EXPECT_EQ(player->next(), 5);
}

// Whoever quits a show wants its end.
TEST_F(LiveStandby, EndsWithAPlayerThatEndsAsItShould) {
  wasAt("One", {});
  crew.events.emplace_back(90, [this] { std::filesystem::remove(journal + ".place"); });
  dieAt(100);
  const ToolRun run = standBy();
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_EQ(run.output, "");
  EXPECT_THAT(run.messages, HasSubstr("the player has ended as it should"));
}

// Its disk was full from the beginning, say.
TEST_F(LiveStandby, GoesOnForAPlayerThatCouldNeverKeepItsPlace) {
  dieAt(100);
  crew.lines = {{200, "goto One"}, {250, "quit"}};
  const ToolRun run = standBy();
  EXPECT_THAT(run.messages, HasSubstr("where it was cannot be read; give goto NAME"));
  EXPECT_THAT(briefly(run.output), ElementsAre("100 FF0000 0005"));
}

TEST_F(LiveStandby, SaysWhatItCannotTakeOver) {
  folder.write("j.place", "nonsense");
  dieAt(100);
  crew.lines = {{200, "goto One"}, {250, "quit"}};
  const ToolRun run = standBy();
  EXPECT_THAT(run.messages, HasSubstr("where it was cannot be read; give goto NAME"));
  EXPECT_THAT(briefly(run.output), ElementsAre("100 FF0000 0005"));

  player = std::get<std::unique_ptr<SequenceNumbers>>(openSequenceJournal(journal, 1, nullptr));
  wasAt("Nowhere", milliseconds(10));
  const ToolRun other = standBy();
  EXPECT_THAT(other.messages, HasSubstr("its cue \"Nowhere\" is none of this show"));
  EXPECT_THAT(linesOf(other.output), SizeIs(1));
}

TEST_F(LiveStandby, BeforeTheFirstGoItTakesOverSilently) {
  wasAt("", {});
  dieAt(100);
  crew.lines = {{500, "quit"}};
  const ToolRun run = standBy();
  EXPECT_EQ(run.output, "");
  EXPECT_THAT(linesOf(run.messages).back(), HasSubstr("\"cue\":null,\"state\":\"ready\""));
}

TEST_F(LiveStandby, AnAdapterIsReadyBeforeAndEachZoneHasItsLook) {
  show =
      "application: 1\ntransmitter: 1\ncues:\n"
      "- {name: Stalls, look: {mode: 1, speed: 1}}\n"
      "- {name: Balcony, transmitter: 2, look: {mode: 1, speed: 2}}\n";
  ShowPlace place;
  place.date = {kBegin};
  place.cueName = "Balcony";
  place.player.cue = 1;
  place.zones.resize(2);
  place.zones[0] = {1, {}};
  place.zones[0].look.mode = 1;
  place.zones[1] = {2, place.zones[0].look};
  keep(place);
  dieAt(100);
  crew.lines = {{150, "quit"}};
  const ToolRun run = standBy({"--air", "hci0=1", "--air", "hci1=2"});
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_THAT(crew.shown, ElementsAre("hci0 5/1", "hci1 7/2", "hci0 off", "hci1 off"));
}

TEST_F(LiveStandby, TakesThePortForOscOnlyWhenItPlays) {
  wasAt("One", {});
  dieAt(100);
  crew.lines = {{150, "quit"}};
  crew.hasOsc = false;
  crew.events.emplace_back(50, [this] { EXPECT_EQ(crew.osc, ""); });
  const ToolRun run = standBy({"--osc", "9000"});
  EXPECT_EQ(crew.osc, "127.0.0.1 9000");
  EXPECT_THAT(run.messages, HasSubstr("--osc: no OSC here; the show goes on, and it is tried"));
  EXPECT_THAT(linesOf(run.output), SizeIs(1));
}

TEST_F(LiveStandby, RefusesWhereThereIsNobodyToStandByFor) {
  player.reset();
  const ToolRun run = standBy();
  EXPECT_EQ(flawOfRefusal(run), "");
  EXPECT_THAT(run.error, HasSubstr("no player has this journal"));
  ToolSetup setup;
  setup.openLive = [this] { return std::make_unique<VirtualGround>(crew); };
  const std::string file = folder.write("show.yaml", show);
  for (const std::vector<std::string>& without :
       {std::vector<std::string>{"--air", "stdout"}, {"--air", "hci0", "--no-journal"}}) {
    std::vector<std::string> words{"live", file, "--standby", "--control", "-"};
    words.insert(words.end(), without.begin(), without.end());
    const ToolRun refused = runTool(words, setup);
    EXPECT_EQ(flawOfRefusal(refused), "");
    EXPECT_THAT(refused.error, HasSubstr("--standby goes with the journal"));
  }
}

// What an earlier show has left is nothing to go on from.
TEST_F(LiveStandby, APlayerThatBeginsForgetsWhereAnEarlierOneWas) {
  player.reset();
  wasAt("Two", milliseconds(4000));
  crew.lines = {{100, "quit"}};
  ShowPlace during;
  crew.events.emplace_back(50, [this, &during] {
    const auto place = unpackPlace(contentsOf(journal + ".place"));
    ASSERT_TRUE(place);
    during = *place;
  });
  ToolSetup setup;
  setup.openLive = [this] { return std::make_unique<VirtualGround>(crew); };
  const ToolRun run = runTool({"live", folder.write("show.yaml", show), "--journal", journal,
                               "--control", "-", "--air", "stdout"},
                              setup);
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_EQ(run.output, "");
  EXPECT_FALSE(during.player.cue);
}

class LivePlace : public LiveStandby {
 protected:
  LivePlace() { player.reset(); }
  ToolRun play(std::vector<std::string> airs, ToolSetup setup = {}) {
    setup.openLive = [this] { return std::make_unique<VirtualGround>(crew); };
    std::vector<std::string> words{
        "live", folder.write("show.yaml", show), "--journal", journal, "--control", "-"};
    for (std::string& air : airs) words.insert(words.end(), {"--air", std::move(air)});
    return runTool(words, setup);
  }
};

TEST_F(LivePlace, SaysOnceThatItCannotBeKeptAndOnceThatItCanAgain) {
  // Nothing is put in the place of a folder.
  folder.write("j.place/file", "");
  crew.lines = {{100, "go"}, {1500, "go"}, {5000, "quit"}};
  crew.events.emplace_back(3500, [this] { std::filesystem::remove_all(journal + ".place"); });
  const ToolRun run = play({"stdout"});
  EXPECT_EQ(run.status, 0) << run.error;
  const auto count = [&](const char* what) {
    return std::ranges::count_if(linesOf(run.messages), [what](const std::string& line) {
      return line.find(what) != std::string::npos;
    });
  };
  EXPECT_EQ(count("j.place: cannot be written; who stands by would need a goto"), 1);
  EXPECT_EQ(count("j.place: is written again"), 1);
}

// Its time and its date, so that a clock that is set in between changes little.
TEST_F(LivePlace, IsKeptEverySecond) {
  crew.lines = {{100, "go"}, {9300, "quit"}};
  std::optional<ShowPlace> place;
  crew.events.emplace_back(8500,
                           [this, &place] { place = unpackPlace(contentsOf(journal + ".place")); });
  play({"stdout"});
  ASSERT_TRUE(place);
  EXPECT_EQ(place->player.cueTime, milliseconds(7900));
  EXPECT_DOUBLE_EQ(place->date.secondsSince1970, kBegin + 8);
}

TEST_F(LivePlace, StaysWhereNobodyReadsThePacketsAnyMore) {
  crew.lines = {{100, "go"}, {5000, "quit"}};
  ToolSetup setup;
  int lines = 0;
  setup.output = [&lines](std::string_view) { return ++lines < 5; };
  const ToolRun run = play({"stdout"}, setup);
  EXPECT_EQ(run.status, 1);
  EXPECT_TRUE(std::filesystem::exists(journal + ".place"));
}

TEST_F(LivePlace, StandardOutputThatIsGoneTakesNoRadioOffTheAir) {
  crew.lines = {{100, "go"}, {5000, "go"}, {6000, "quit"}};
  ToolSetup setup;
  int lines = 0;
  setup.output = [&lines](std::string_view) { return ++lines < 5; };
  const ToolRun run = play({"hci0", "stdout"}, setup);
  EXPECT_THAT(run.messages,
              HasSubstr("standard output cannot be written; the show goes on without it"));
  EXPECT_THAT(crew.shown, ElementsAre(HasSubstr("hci0 5/"), HasSubstr("hci0 6/"), "hci0 off"));
  EXPECT_FALSE(std::filesystem::exists(journal + ".place"));
}

}  // namespace
}  // namespace halvora
