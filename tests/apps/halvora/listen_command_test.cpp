// SPDX-License-Identifier: Apache-2.0
#include "apps/halvora/listen_command.h"

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/apps/halvora/tool_runner.h"
#include "tests/venue/air/virtual_radio.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class Listen : public testing::Test {
 protected:
  // Transmitter 7 of application 258.
  static std::string packet(std::uint16_t sequence, char transmitter = 7) {
    std::string bytes = "\x09\xC9\x01\x02";
    bytes.resize(23);
    bytes += static_cast<char>(sequence >> 8);
    bytes += static_cast<char>(sequence & 0xFF);
    return bytes + transmitter;
  }

  ToolRun run(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "listen");
    std::atomic<bool> isInterrupted = false;
    ToolSetup setup;
    setup.isInterrupted = &isInterrupted;
    setup.isOutputClosed = isOutputClosed;
    if (hasRadio) {
      setup.openRadio = [&](const std::string& adapter) {
        named = adapter;
        return std::make_unique<VirtualRadio>(air, isInterrupted);
      };
    }
    return runTool(arguments, setup);
  }

  VirtualAir air;
  /// The adapter that was asked for.
  std::string named;
  bool hasRadio = true;
  bool isOutputClosed = false;
};

TEST_F(Listen, PrintsWhatIsHeardWithItsTime) {
  air.packets = {{1000, packet(5)}, {1250, packet(6)}};
  const ToolRun listened = run({"--for", "2"});
  EXPECT_EQ(listened.status, 0);
  const auto lines = linesOf(listened.output);
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_THAT(lines[0], testing::StartsWith(R"({"t":999,"applicationId":258,)"));
  EXPECT_THAT(lines[0], HasSubstr(R"("sequence":5,"transmitter":7,"broadcastKey":"09C90102)"));
  EXPECT_THAT(lines[1], testing::StartsWith(R"({"t":1249,)"));
}

TEST_F(Listen, SumsUpEachTransmitterAtTheEnd) {
  air.packets = {{100, packet(5)},        {200, packet(5)},   {300, packet(6)},
                 {400, packet(10)},       {500, packet(2)},   {600, packet(9, 8)},
                 {700, packet(65535, 9)}, {800, packet(1, 9)}};
  const auto lines = linesOf(run({"--for", "2"}).output);
  ASSERT_EQ(lines.size(), 11U);
  EXPECT_EQ(lines[8], R"({"t":2000,"summary":"258:7","packets":5,"repeats":1,"lost":3,)"
                      R"("restarts":1,"perSecond":2.5})");
  EXPECT_EQ(lines[9], R"({"t":2000,"summary":"258:8","packets":1,"repeats":0,"lost":0,)"
                      R"("restarts":0,"perSecond":0.5})");
  EXPECT_EQ(lines[10], R"({"t":2000,"summary":"258:9","packets":2,"repeats":0,"lost":1,)"
                       R"("restarts":0,"perSecond":1})");
}

TEST_F(Listen, EndsWhenTheUserSaysSoAndSumsUp) {
  air.packets = {{100, packet(5)}, {5000, packet(6)}};
  air.interruptedAt = 1001;
  const ToolRun listened = run({});
  EXPECT_EQ(listened.status, 0);
  EXPECT_EQ(listened.error, "");
  const auto lines = linesOf(listened.output);
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_THAT(lines[1], testing::StartsWith(R"({"t":1000,"summary":"258:7","packets":1,)"));
}

TEST_F(Listen, SaysWhyAPacketIsNoneAndNothingOfOthers) {
  air.packets = {{100, std::string("\x09\xC9\x01", 3)}, {200, std::string("\x4C\x00\x01", 3)}};
  EXPECT_THAT(linesOf(run({"--for", "1"}).output),
              ElementsAre(R"({"t":99,"rejected":"only 3 bytes; a show packet has 26 or more"})"));
}

TEST_F(Listen, GoesOnThroughARadioThatIsSwitchedOffAndOn) {
  air.packets = {{1000, packet(1)}, {3000, packet(2)}, {5000, packet(3)}};
  air.acts[2000] = [](VirtualBluetooth& radio) { radio.setState(CentralState::poweredOff); };
  air.acts[4000] = [](VirtualBluetooth& radio) { radio.setState(CentralState::poweredOn); };
  const auto lines = linesOf(run({"--for", "6"}).output);
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_THAT(lines[2], HasSubstr(R"("packets":2,"repeats":0,"lost":1)"));
}

TEST_F(Listen, SaysWhichAdapterItScansOnAndWhenAnotherTakesOver) {
  air.adapters = {{"hci0", "hci1"}, "hci0", {}};
  air.packets = {{1000, packet(1)}, {3000, packet(2)}};
  air.acts[2000] = [this](VirtualBluetooth&) { air.adapters.scanning.clear(); };
  air.acts[2500] = [this](VirtualBluetooth&) { air.adapters.scanning = "hci1"; };
  const auto lines = linesOf(run({"--for", "6"}).output);
  ASSERT_EQ(lines.size(), 5U);
  EXPECT_EQ(lines[0], R"({"t":250,"adapter":"hci0"})");
  EXPECT_THAT(lines[1], HasSubstr(R"("sequence":1,)"));
  EXPECT_THAT(lines[2], HasSubstr(R"("adapter":"hci1"})"));
  EXPECT_THAT(lines[3], HasSubstr(R"("sequence":2,)"));
  EXPECT_EQ(named, "");
}

TEST_F(Listen, SaysTheAdapterBeforeTheFirstPacket) {
  air.adapters = {{"hci0"}, "hci0", {}};
  air.packets = {{100, packet(1)}};
  const auto lines = linesOf(run({"--for", "1", "--adapter", "hci0"}).output);
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_EQ(lines[0], R"({"t":99,"adapter":"hci0"})");
  EXPECT_EQ(named, "hci0");
}

TEST_F(Listen, ARecordingHasNoWordOfTheAdapter) {
  const TestFolder folder;
  const std::string file = (folder.path() / "show.jsonl").string();
  air.adapters = {{"hci0"}, "hci0", {}};
  air.packets = {{100, packet(1)}};
  EXPECT_EQ(run({"--for", "1", "--record", file}).status, 0);
  EXPECT_EQ(linesOf(contentsOf(file)).size(), 2U);
}

TEST_F(Listen, NamesTheAdaptersThatThereAreInOneLine) {
  air.state = CentralState::unsupported;
  air.adapters.all = {"hci0", "hci1", "hci2"};
  EXPECT_EQ(run({"--adapter", "hci7"}).error,
            "no Bluetooth adapter called hci7; this machine has hci0, hci1 and hci2: name one of "
            "these with --adapter, or none");
  air.adapters.all = {"hci0"};
  EXPECT_EQ(run({"--adapter", "a\nb"}).error,
            "no Bluetooth adapter called a?b; this machine has hci0: name one of these with "
            "--adapter, or none");
  air.adapters.all = {};
  EXPECT_EQ(run({"--adapter", "hci7"}).error, "no Bluetooth adapter, or no Bluetooth service");
}

TEST_F(Listen, WithoutARadioItSaysWhyInOneLine) {
  struct Row {
    CentralState state;
    const char* error;
  };
  const TestFolder folder;
  const std::string file = folder.write("before.jsonl", "what was there");
  for (const Row& row :
       {Row{CentralState::unsupported, "no Bluetooth adapter, or no Bluetooth service"},
        Row{CentralState::poweredOff, "Bluetooth is switched off"},
        Row{CentralState::unauthorised, "the system does not allow this user to use Bluetooth"}}) {
    air.state = row.state;
    const ToolRun listened = run({"--record", file});
    EXPECT_EQ(listened.status, 1);
    EXPECT_EQ(listened.error, row.error);
    EXPECT_EQ(listened.output, "");
    EXPECT_EQ(contentsOf(file), "what was there");
  }
  hasRadio = false;
  EXPECT_EQ(run({}).error, "this halvora was built without Bluetooth");
  EXPECT_EQ(run({}).status, 1);
}

TEST_F(Listen, WaitsForARadioThatIsNotKnownYet) {
  air.state = CentralState::unknown;
  air.packets = {{1000, packet(1)}};
  air.acts[500] = [](VirtualBluetooth& radio) { radio.setState(CentralState::poweredOn); };
  EXPECT_EQ(linesOf(run({"--for", "1"}).output).size(), 2U);
}

TEST_F(Listen, ARecordingIsAScenarioThatTraceReplays) {
  const TestFolder folder;
  const std::string file = (folder.path() / "show.jsonl").string();
  air.packets = {{101, packet(5)}, {1235, packet(6)}};
  EXPECT_EQ(run({"--for", "2", "--record", file}).status, 0);
  const auto lines = linesOf(contentsOf(file));
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_EQ(lines[0], R"({"at":0,"start":true})");
  EXPECT_THAT(lines[1], testing::StartsWith(R"({"at":2.1,"packet":"09C90102)"));
  EXPECT_THAT(lines[2], testing::StartsWith(R"({"at":3.234,"packet":"09C90102)"));
  const ToolRun traced = runTool({"trace", file});
  EXPECT_EQ(traced.status, 0) << traced.error;
  EXPECT_THAT(traced.output, HasSubstr(R"("insideVenue":true)"));
}

TEST_F(Listen, ARecordingThatCannotBeWrittenIsAFailure) {
  const TestFolder folder;
  const ToolRun listened =
      run({"--for", "1", "--record", (folder.path() / "missing" / "show.jsonl").string()});
  EXPECT_EQ(listened.status, 1);
  EXPECT_THAT(listened.error, testing::EndsWith("show.jsonl: cannot be written"));
}

TEST_F(Listen, EndsWhenNobodyReads) {
  isOutputClosed = true;
  air.packets = {{100, packet(5)}};
  const ToolRun listened = run({});
  EXPECT_EQ(listened.status, 1);
  EXPECT_EQ(listened.error, "standard output cannot be written");
}

TEST_F(Listen, RefusesATimeThatIsNone) {
  for (const char* seconds : {"-1", "soon", "1s", "1e10"}) {
    EXPECT_EQ(flawOfRefusal(run({"--for", seconds})), "") << seconds;
  }
}

}  // namespace
}  // namespace halvora
