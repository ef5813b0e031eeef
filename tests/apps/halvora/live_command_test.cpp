// SPDX-License-Identifier: Apache-2.0
// `halvora live` as crews and scripts use it, in virtual time.
#include "apps/halvora/live_command.h"

#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/apps/halvora/tool_runner.h"
#include "tests/apps/halvora/virtual_crew.h"
#include "tests/support/plain_codes.h"
#include "venue/live/command_input.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

const char* const kShow =
    "application: 4242\nvenue: 7\ntransmitter: 1\ncues:\n"
    "- {name: One, look: {mode: 1, colour: \"#ff0000\"}}\n"
    "- {name: Two, look: {mode: 1, colour: \"#00ff00\"}}\n";

class LiveCommandTest : public testing::Test {
 protected:
  ToolRun play(std::vector<std::string> options) {
    options.insert(options.begin(), {"live", folder.write("show.yaml", show)});
    ToolSetup setup;
    setup.openLive = [this] { return std::make_unique<VirtualGround>(crew); };
    setup.codes = &codes;
    return runTool(options, setup);
  }

  TestFolder folder;
  std::string show = kShow;
  Crew crew;
  PlainCodes codes;
};

TEST_F(LiveCommandTest, PrintsEachPacketAtItsTimeAndEachChange) {
  crew.lines = {{50, "go"}, {270, "go"}, {400, "quit"}};
  const ToolRun run = play({"--air", "stdout", "--control", "-"});
  EXPECT_EQ(run.status, 0) << run.error;
  const std::string one = "09C91092000700FFFF0000010000000000000000000000";
  const std::string two = "09C91092000700FF00FF00010000000000000000000000";
  EXPECT_THAT(linesOf(run.output), ElementsAre("{\"t\":50,\"packet\":\"" + one + "000101\"}",
                                               "{\"t\":150,\"packet\":\"" + one + "000101\"}",
                                               "{\"t\":250,\"packet\":\"" + one + "000101\"}",
                                               "{\"t\":270,\"packet\":\"" + two + "000201\"}",
                                               "{\"t\":370,\"packet\":\"" + two + "000201\"}"));
  EXPECT_THAT(linesOf(run.messages),
              ElementsAre("{\"t\":50,\"cue\":\"One\",\"state\":\"playing\"}",
                          "{\"t\":270,\"cue\":\"Two\",\"state\":\"playing\"}"));
}

TEST_F(LiveCommandTest, AnUnknownCommandIsOneLineAndChangesNothing) {
  crew.lines = {{0, "go"}, {10, "jump"}, {20, "goto Three"}, {30, "quit"}};
  const ToolRun run = play({"--air", "stdout", "--control", "-"});
  EXPECT_EQ(linesOf(run.output).size(), 1U);
  EXPECT_THAT(linesOf(run.messages),
              ElementsAre(HasSubstr("playing"), StartsWith("halvora: \"jump\" is no command"),
                          "halvora: no cue is called \"Three\""));
}

// What a stranger sends over OSC is shown on the crew's terminal.
TEST_F(LiveCommandTest, ARefusalHoldsNoControlCharacters) {
  crew.lines = {{0, "\x1B[2Jgo\a\x7F"}, {10, "goto \x1B]0;x\n"}, {30, "quit"}};
  const ToolRun run = play({"--air", "stdout", "--control", "-"});
  EXPECT_THAT(linesOf(run.messages), ElementsAre(StartsWith("halvora: \"?[2Jgo??\" is no command"),
                                                 "halvora: no cue is called \"?]0;x\""));
}

TEST_F(LiveCommandTest, LossOfControlLeavesTheLookOnTheAir) {
  crew.lines = {{0, "go"}, {1000, "quit"}};
  crew.inputEnds = 10;
  const ToolRun run = play({"--air", "stdout", "--control", "-"});
  EXPECT_EQ(linesOf(run.output).size(), 10U);
  EXPECT_THAT(run.messages, HasSubstr("standard input has ended; the show goes on as it is"));
}

TEST_F(LiveCommandTest, SeveralAirsAreTransmittersThatCountUp) {
  crew.lines = {{0, "go"}, {50, "quit"}};
  const ToolRun run =
      play({"--air", "hci0", "--air", "stdout", "--air", "hci1", "--control", "-", "--no-journal"});
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_THAT(linesOf(run.output), ElementsAre(HasSubstr("000102\"}")));
  EXPECT_THAT(crew.shown, ElementsAre("hci0 1/1", "hci1 1/3", "hci0 off", "hci1 off"));
}

// The bytes of colour, sequence and transmitter of each line, in their order.
std::vector<std::string> briefly(const std::string& output) {
  std::vector<std::string> lines;
  for (const std::string& line : linesOf(output)) {
    const std::string packet = line.substr(line.find("packet") + 9, 52);
    lines.push_back(packet.substr(16, 6) + " " + packet.substr(46, 4) + " " + packet.substr(50));
  }
  return lines;
}

const char* const kZones =
    "application: 4242\nvenue: 7\ntransmitter: 1\ncues:\n"
    "- {name: Stalls, look: {mode: 1, colour: \"#ff0000\"}}\n"
    "- {name: Balcony, transmitter: 2, look: {mode: 1, colour: \"#00ff00\"}}\n"
    "- {name: Both, transmitter: 255, look: {mode: 1, colour: \"#0000ff\"}}\n";

TEST_F(LiveCommandTest, AZoneHasItsOwnCuesAndThoseForAll) {
  show = kZones;
  crew.lines = {{0, "go"}, {10, "go"}, {20, "go"}, {30, "quit"}};
  const ToolRun run = play({"--air", "stdout=1", "--air", "stdout=2", "--control", "-"});
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_THAT(briefly(run.output),
              ElementsAre("FF0000 0001 01",                    // the stalls alone
                          "FF0000 0001 01", "00FF00 0002 02",  // they keep their look
                          "0000FF 0003 01", "0000FF 0003 02"));
}

TEST_F(LiveCommandTest, ZonesAreBlackTogetherAndHaveTheirLooksBack) {
  show = kZones;
  crew.lines = {{0, "go"}, {10, "go"}, {20, "blackout"}, {30, "release"}, {40, "quit"}};
  const ToolRun run = play({"--air", "stdout=1", "--air", "stdout=2", "--control", "-"});
  EXPECT_THAT(briefly(run.output),
              ElementsAre("FF0000 0001 01", "FF0000 0001 01", "00FF00 0002 02",  // two cues
                          "000000 0003 01", "000000 0003 02",                    // black
                          "00FF00 0004 02", "FF0000 0005 01"));
}

TEST_F(LiveCommandTest, RefusesZonesThatCannotBe) {
  show = kZones;
  for (const auto& airs : std::vector<std::vector<std::string>>{
           {"stdout=1", "stdout=3"}, {"stdout=1", "stdout"}, {"stdout=255"}, {"stdout=x"}}) {
    std::vector<std::string> options{"--control", "-"};
    for (const std::string& air : airs) options.insert(options.end(), {"--air", air});
    EXPECT_EQ(flawOfRefusal(play(options)), "") << airs.front();
  }
}

TEST_F(LiveCommandTest, OneOptionMayNameSeveralAirs) {
  crew.lines = {{0, "go"}, {50, "quit"}};
  const ToolRun run = play({"--air", "hci0", "stdout", "hci1", "--control", "-", "--no-journal"});
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_THAT(crew.shown, ElementsAre("hci0 1/1", "hci1 1/3", "hci0 off", "hci1 off"));
}

TEST_F(LiveCommandTest, WhoSpeaksForTheVenueDoesSoOnEveryAir) {
  show = "application: 1\ntransmitter: 1\ncues:\n- {name: a, transmitter: 255, look: {}}\n";
  crew.lines = {{0, "go"}, {50, "quit"}};
  const ToolRun run = play({"--air", "stdout", "--air", "stdout", "--control", "-"});
  EXPECT_THAT(linesOf(run.output), ElementsAre(HasSubstr("0001FF\"}"), HasSubstr("0001FF\"}")));
}

TEST_F(LiveCommandTest, GoesOnAboveTheJournal) {
  const std::string journal = (folder.path() / "j").string();
  crew.lines = {{0, "go"}, {50, "quit"}};
  for (const char* number : {"000101", "000201", "000301"}) {
    const ToolRun run = play({"--air", "stdout", "--control", "-", "--journal", journal});
    EXPECT_THAT(linesOf(run.output), ElementsAre(HasSubstr(number)));
  }
  const ToolRun above =
      play({"--air", "stdout", "--control", "-", "--journal", journal, "--sequence", "4660"});
  EXPECT_THAT(linesOf(above.output), ElementsAre(HasSubstr("123401")));
}

TEST_F(LiveCommandTest, SignsEachPacketForTheMinuteThatItIsSentIn) {
  const std::string key = folder.write("key", "000102030405060708090A0B0C0D0E0F");
  ASSERT_EQ(chmod(key.c_str(), S_IRUSR | S_IWUSR), 0);
  crew.lines = {{0, "go"}, {250, "quit"}};
  const ToolRun run = play({"--air", "stdout", "--control", "-", "--show-key", key});
  ASSERT_EQ(run.status, 0) << run.error;
  std::vector<std::string> lines = linesOf(run.output);
  ASSERT_EQ(lines.size(), 3U);
  const char* const epochs[] = {"0", "0", "1"};
  for (std::size_t at = 0; at < lines.size(); ++at) {
    const std::size_t begin = lines[at].find("09C9");
    const std::string packet = lines[at].substr(begin, lines[at].find('"', begin) - begin);
    EXPECT_EQ(packet.size(), 58U);
    ToolSetup setup;
    setup.codes = &codes;
    EXPECT_THAT(
        runTool({"packet", "decode", packet, "--show-key", key, "--epoch", epochs[at]}, setup)
            .output,
        HasSubstr("\"tagValid\":true"));
  }
  EXPECT_EQ(play({"--air", "stdout", "--control", "-", "--show-key", "nowhere"}).status, 2);
}

TEST_F(LiveCommandTest, TheKeyIsNowhereInWhatIsPrintedNorInTheJournal) {
  const std::string text = "5A00C1D2E3F405162738495A6B7C8D9E";
  const std::string key = folder.write("key", text);
  ASSERT_EQ(chmod(key.c_str(), S_IRUSR | S_IWUSR), 0);
  const std::string journal = (folder.path() / "journal").string();
  crew.lines = {{0, "go"}, {250, "quit"}};
  const ToolRun run =
      play({"--air", "stdout", "--control", "-", "--journal", journal, "--show-key", key});
  ASSERT_EQ(run.status, 0) << run.error;
  EXPECT_THAT(run.output + run.error + run.messages + contentsOf(journal),
              testing::Not(HasSubstr(text.substr(4, 8))));
}

TEST_F(LiveCommandTest, NeverBeginsWithoutItsJournal) {
  const ToolRun run = play(
      {"--air", "stdout", "--control", "-", "--journal", (folder.path() / "none" / "j").string()});
  EXPECT_EQ(flawOfRefusal(run), "");
  EXPECT_THAT(run.error, HasSubstr("journal cannot be written"));
}

TEST_F(LiveCommandTest, ThereIsAStatusLineWhereThereIsATerminal) {
  crew.hasTerminal = true;
  crew.lines = {{0, "go"}, {1500, "quit"}};
  show = "application: 1\ncues:\n- {name: One, at: 0, look: {}}\n- {name: Two, at: 9, look: {}}\n";
  std::string terminal;
  ToolSetup setup;
  setup.openLive = [this] { return std::make_unique<VirtualGround>(crew); };
  setup.terminal = {[&](std::string_view text) { terminal += text; }, [] { return Duration{}; }};
  const ToolRun run = runTool({"live", folder.write("show.yaml", show), "--air", "stdout"}, setup);
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_THAT(run.messages, IsEmpty());
  EXPECT_THAT(terminal, HasSubstr("ready  next: One"));
  EXPECT_THAT(terminal, HasSubstr("playing  1/2 One  next: Two in 9 s"));
  EXPECT_THAT(terminal, HasSubstr("playing  1/2 One  next: Two in 8 s"));
}

TEST_F(LiveCommandTest, RefusesWhatCannotBePlayed) {
  EXPECT_THAT(play({"--air", "stdout"}).error, HasSubstr("nobody can give commands"));
  EXPECT_THAT(play({"--air", "stdout", "--control", "x"}).error, HasSubstr("--control must be -"));
  EXPECT_THAT(play({"--control", "-"}).error, HasSubstr("--air"));
  EXPECT_THAT(play({"--air", "hci0", "--air", "hci0", "--control", "-"}).error,
              HasSubstr("there twice"));
  EXPECT_THAT(play({"--air", "stdout", "--control", "-", "--sequence", "0"}).error,
              HasSubstr("--sequence"));
  show = "transmitter: 254\ncues:\n- {name: a, look: {}}\n";
  EXPECT_THAT(play({"--air", "stdout", "--air", "stdout", "--control", "-"}).error,
              HasSubstr("transmitter 254 leaves no numbers for 2 airs"));
  show = "cues: 3\n";
  EXPECT_EQ(flawOfRefusal(play({"--air", "stdout", "--control", "-"})), "");
}

TEST_F(LiveCommandTest, ADeskPlaysItOverOsc) {
  crew.lines = {{0, "go"}, {50, "/other"}, {60, "quit"}};
  const ToolRun run = play({"--air", "stdout", "--osc", "9000"});
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_EQ(crew.osc, "127.0.0.1 9000");
  EXPECT_EQ(linesOf(run.output).size(), 1U);
  EXPECT_THAT(run.messages, StartsWith("halvora: \"/other\" is no command"));
  play({"--air", "stdout", "--osc", "9000", "--osc-bind", "::"});
  EXPECT_EQ(crew.osc, ":: 9000");
  EXPECT_THAT(play({"--air", "stdout", "--osc", "0"}).error, HasSubstr("--osc must be a port"));
  EXPECT_THAT(play({"--air", "stdout", "--osc-bind", "::"}).error, HasSubstr("goes with --osc"));
  crew.hasOsc = false;
  const ToolRun without = play({"--air", "stdout", "--osc", "9000"});
  EXPECT_EQ(without.status, 1);
  EXPECT_EQ(without.error, "--osc: no OSC here");
}

TEST_F(LiveCommandTest, ALightingDeskPlaysIt) {
  crew.levels = {{0, {0}}, {10, {255}}, {50, {0, 0, 0, 200}}, {60, {0}}};
  crew.lines = {{100, "quit"}};
  const ToolRun run = play({"--air", "stdout", "--ola", "3", "--control", "-"});
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_EQ(crew.universe, 3U);
  EXPECT_THAT(linesOf(run.messages),
              ElementsAre(HasSubstr("(olad) is there"), HasSubstr("\"playing\""),
                          HasSubstr("\"blackout\""), HasSubstr("\"playing\"")));
  EXPECT_EQ(flawOfRefusal(play({"--air", "stdout", "--ola", "x"})), "");
  crew.hasOla = false;
  EXPECT_THAT(play({"--air", "stdout", "--ola", "1"}).error, HasSubstr("built without"));
}

TEST_F(LiveCommandTest, BeginsOnlyWithAllItsAdapters) {
  crew.lost = "hci1";
  const ToolRun run = play({"--air", "hci0", "--air", "hci1", "--control", "-", "--no-journal"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.error, "hci1: no such adapter");
  crew.hasBluetooth = false;
  EXPECT_THAT(play({"--air", "hci0", "--control", "-", "--no-journal"}).error,
              HasSubstr("without Bluetooth"));
}

TEST(CommandLines, TakesWholeLinesOutOfPieces) {
  std::vector<std::string> lines;
  const auto take = [&](std::string_view line) { lines.emplace_back(line); };
  CommandLines input;
  input.add("g", take);
  input.add("o\n\n  \nblack", take);
  input.add("out\r\nrel", take);
  EXPECT_THAT(lines, ElementsAre("go", "blackout\r"));
  input.end(take);
  EXPECT_THAT(lines, ElementsAre("go", "blackout\r", "rel"));
  input.add(std::string(5000, 'x'), take);
  input.add(std::string(5000, 'y') + "\ngo\n", take);
  ASSERT_EQ(lines.size(), 5U);
  EXPECT_EQ(lines[3].size(), CommandLines::kLongest);
  EXPECT_EQ(lines[4], "go");
}

TEST(CommandKeys, EachMeansACommand) {
  EXPECT_EQ(commandOfKey(' '), "go");
  EXPECT_EQ(commandOfKey('p'), "panic");
  EXPECT_EQ(commandOfKey('x'), "");
}

}  // namespace
}  // namespace halvora
