// SPDX-License-Identifier: Apache-2.0
#include "apps/halvora/transmit_command.h"

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "adapters/virtual/virtual_devices.h"
#include "adapters/virtual/virtual_run_loop.h"
#include "engine/broadcast.h"
#include "engine/signed_broadcast.h"
#include "tests/apps/halvora/tool_runner.h"
#include "tests/support/plain_codes.h"
#include "venue/air/transmitter.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

// What a transmitter is asked, and what becomes of it, in virtual time.
struct TransmitterScript {
  /// What there is to complain about when it is opened, or at that time.
  std::string failureAtOnce;
  long long failsAt = -1;
  std::string failureLater;
  /// Ctrl-C.
  long long interruptedAt = -1;
  /// How long a request takes.
  Duration answer = milliseconds(5);

  TransmitterSettings settings;
  std::vector<std::pair<long long, std::string>> shown;
  bool hasEnded = false;
};

class VirtualTransmitter final : public Transmitter {
 public:
  VirtualTransmitter(TransmitterScript& script, std::atomic<bool>& isInterrupted)
      : script_(script) {
    if (script.failsAt >= 0) {
      loop_.after(milliseconds(script.failsAt), [this] { failure_ = script_.failureLater; });
    }
    if (script.interruptedAt >= 0) {
      loop_.after(milliseconds(script.interruptedAt), [&isInterrupted] { isInterrupted = true; });
    }
  }
  RunLoop& loop() override { return loop_; }
  Date date() const override { return VirtualWallClock(loop_).now(); }
  void runUntil(const std::function<bool()>& isDone) override {
    while (!isDone() && loop_.now() < std::chrono::hours(1)) loop_.runFor(milliseconds(1));
  }
  void open(const TransmitterSettings& settings) override {
    script_.settings = settings;
    ask([this] { failure_ = script_.failureAtOnce; });
  }
  void show(std::span<const std::uint8_t> data) override {
    const auto time = std::chrono::duration_cast<std::chrono::milliseconds>(loop_.now()).count();
    script_.shown.emplace_back(time, NSDataToHex(data));
  }
  void end() override {
    ask([this] { script_.hasEnded = true; });
  }
  bool isBusy() const override { return isBusy_; }
  const std::string& failure() const override { return failure_; }

 private:
  template <class Answered>
  void ask(Answered answered) {
    isBusy_ = true;
    loop_.after(script_.answer, [this, answered] {
      isBusy_ = false;
      answered();
    });
  }

  TransmitterScript& script_;
  VirtualRunLoop loop_;
  bool isBusy_ = false;
  std::string failure_;
};

class Transmit : public testing::Test {
 protected:
  static constexpr const char* kRed = "09C91092000000FFFF0000010000000000000000000000000101";
  static constexpr const char* kBlue = "09C91092000000FF0000FF010000000000000000000000000201";

  ToolRun run(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "transmit");
    std::atomic<bool> isInterrupted = false;
    ToolSetup setup;
    setup.isInterrupted = &isInterrupted;
    setup.isOutputClosed = isOutputClosed;
    setup.codes = &codes;
    if (hasTransmitter) {
      setup.openTransmitter = [&] {
        return std::make_unique<VirtualTransmitter>(script, isInterrupted);
      };
    }
    return runTool(arguments, setup);
  }
  ToolRun runScenario(std::string_view lines, std::vector<std::string> more = {}) {
    more.insert(more.begin(), {"--scenario", folder.write("show.jsonl", lines)});
    return run(std::move(more));
  }
  /// What was on the air, with the milliseconds since the command was ready.
  std::vector<std::pair<long long, std::string>> shown() const {
    auto moved = script.shown;
    for (auto& [time, packet] : moved) time -= 5;
    return moved;
  }

  TransmitterScript script;
  PlainCodes codes;
  TestFolder folder;
  bool hasTransmitter = true;
  bool isOutputClosed = false;
};

TEST_F(Transmit, ShowsThePacketOfItsFieldsForAsLongAsItIsTold) {
  const ToolRun sent = run({"--applicationId", "4242", "--mode", "1", "--red", "255", "--master",
                            "255", "--transmitter", "1", "--for", "2.5"});
  EXPECT_EQ(sent.status, 0) << sent.error;
  ASSERT_EQ(script.shown.size(), 1U);
  EXPECT_EQ(script.shown[0].second, kRed);
  EXPECT_TRUE(script.hasEnded);
  EXPECT_EQ(script.settings.adapter, "");
  EXPECT_EQ(script.settings.interval, milliseconds(100));
  const auto lines = linesOf(sent.output);
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_THAT(lines[0], StartsWith(R"({"t":0,"applicationId":4242,)"));
  EXPECT_THAT(lines[0], HasSubstr(R"("sequence":1,"transmitter":1,)"));
}

TEST_F(Transmit, ASequenceNumberMayBeGivenEvenOneThatNobodyObeys) {
  EXPECT_EQ(run({"--sequence", "0", "--for", "0"}).status, 0);
  EXPECT_EQ(run({"--sequence", "65535", "--for", "1"}).status, 0);
  ASSERT_EQ(script.shown.size(), 1U);
  EXPECT_THAT(script.shown[0].second, testing::EndsWith("FFFF00"));
}

TEST_F(Transmit, SignsWithAKeyAnewInEveryMinute) {
  const std::string file = folder.write("show.key", std::string(32, '0'));
  ASSERT_EQ(chmod(file.c_str(), S_IRUSR), 0);
  const ToolRun sent = run({"--mode", "1", "--for", "130", "--show-key", file});
  EXPECT_EQ(sent.status, 0) << sent.error;
  const auto code = codes.withKey(ShowKey(std::array<std::uint8_t, ShowKey::kSize>{}));
  ASSERT_EQ(script.shown.size(), 3U);
  for (std::uint32_t minute = 0; minute < 3; ++minute) {
    const Broadcast fields{.mode = 1, .sequence = 1};
    EXPECT_EQ(script.shown[minute].second,
              NSDataToHex(signBroadcast(fields, 29454480 + minute, *code)));
    EXPECT_LE(script.shown[minute].first, 60'000 * minute + 300) << "soon after it began";
  }
  EXPECT_EQ(linesOf(sent.output).size(), 3U);
}

TEST_F(Transmit, TheKeyIsNowhereInWhatIsPrintedNorOnTheAir) {
  const std::string key = "5A00C1D2E3F405162738495A6B7C8D9E";
  const std::string file = folder.write("show.key", key);
  ASSERT_EQ(chmod(file.c_str(), S_IRUSR), 0);
  const ToolRun sent = run({"--mode", "1", "--for", "130", "--show-key", file});
  ASSERT_EQ(script.shown.size(), 3U);
  std::string all = sent.output + sent.error + sent.messages;
  for (const auto& [time, packet] : script.shown) all += packet;
  EXPECT_THAT(all, testing::Not(HasSubstr(key.substr(4, 8))));
}

TEST_F(Transmit, SignsThePacketsOfAScenarioThatHaveNoTagYet) {
  const std::string file = folder.write("show.key", std::string(32, '0'));
  ASSERT_EQ(chmod(file.c_str(), S_IRUSR), 0);
  const std::string longer = std::string(kBlue) + "AABBCC";
  EXPECT_EQ(runScenario("{\"at\":0,\"packet\":\"" + std::string(kRed) +
                            "\"}\n{\"at\":1,\"packet\":\"" + longer + "\"}\n",
                        {"--show-key", file})
                .status,
            0);
  ASSERT_EQ(script.shown.size(), 2U);
  EXPECT_EQ(script.shown[0].second.size(), 58U);
  EXPECT_EQ(script.shown[1].second, longer);
}

TEST_F(Transmit, RefusesAKeyThatOthersMayReadBeforeAnythingIsOnTheAir) {
  const std::string file = folder.write("show.key", std::string(32, '0'));
  ASSERT_EQ(chmod(file.c_str(), 0644), 0);
  EXPECT_EQ(flawOfRefusal(run({"--mode", "1", "--show-key", file})), "");
  EXPECT_TRUE(script.shown.empty());
}

TEST_F(Transmit, GoesOnUntilTheUserEndsIt) {
  script.interruptedAt = 3'000'000;
  const ToolRun sent = run({"--mode", "1"});
  EXPECT_EQ(sent.status, 0);
  EXPECT_EQ(sent.error, "");
  EXPECT_EQ(script.shown.size(), 1U);
  EXPECT_TRUE(script.hasEnded);
}

TEST_F(Transmit, AScenarioGoesOnTheAirPacketByPacketAtItsTimes) {
  const ToolRun sent = runScenario(std::string(R"({"at":0,"start":true})") + "\n" +
                                   R"({"at":2,"every":0.1,"until":2.9,"packet":")" + kRed +
                                   "\"}\n" + R"({"at":3.25,"packet":")" + kBlue + "\"}\n");
  EXPECT_EQ(sent.status, 0) << sent.error;
  EXPECT_THAT(shown(), ElementsAre(std::pair(2000LL, std::string(kRed)),
                                   std::pair(3250LL, std::string(kBlue))));
  EXPECT_TRUE(script.hasEnded);
  const auto lines = linesOf(sent.output);
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_THAT(lines[0], StartsWith(R"({"t":2000,)"));
  EXPECT_THAT(lines[1], StartsWith(R"({"t":3250,)"));
}

TEST_F(Transmit, RepeatsOfTwoPacketsTakeTurns) {
  runScenario(std::string(R"({"at":1,"every":1,"until":3,"packet":")") + kRed + "\"}\n" +
              R"({"at":1.5,"every":1,"until":3,"packet":")" + kBlue + "\"}\n");
  const std::string red = kRed;
  const std::string blue = kBlue;
  EXPECT_THAT(shown(),
              ElementsAre(std::pair(1000LL, red), std::pair(1500LL, blue), std::pair(2000LL, red),
                          std::pair(2500LL, blue), std::pair(3000LL, red)));
}

TEST_F(Transmit, AScenarioMayBeCutShortOrHeldLonger) {
  const std::string lines = std::string(R"({"at":1,"packet":")") + kRed + "\"}\n" +
                            R"({"at":2,"packet":")" + kBlue + "\"}\n";
  runScenario(lines, {"--for", "1.5"});
  EXPECT_EQ(script.shown.size(), 1U);
  EXPECT_TRUE(script.hasEnded);
}

TEST_F(Transmit, TakesTheAdapterAndTheIntervalThatAreAskedFor) {
  run({"--adapter", "hci1", "--interval", "20", "--for", "0"});
  EXPECT_EQ(script.settings.adapter, "hci1");
  EXPECT_EQ(script.settings.interval, milliseconds(20));
}

TEST_F(Transmit, WithoutARadioItSaysWhyInOneLine) {
  script.failureAtOnce = "no Bluetooth adapter";
  const ToolRun sent = run({"--mode", "1"});
  EXPECT_EQ(sent.status, 1);
  EXPECT_EQ(sent.error, "no Bluetooth adapter");
  EXPECT_EQ(sent.output, "");
  EXPECT_THAT(script.shown, IsEmpty());
  hasTransmitter = false;
  EXPECT_EQ(run({}).status, 1);
  EXPECT_EQ(run({}).error, "this halvora was built without Bluetooth");
}

TEST_F(Transmit, EndsWithWhatTookItOffTheAir) {
  script.failsAt = 1500;
  script.failureLater = "the Bluetooth service has gone";
  const ToolRun sent = run({"--mode", "1"});
  EXPECT_EQ(sent.status, 1);
  EXPECT_EQ(sent.error, "the Bluetooth service has gone");
  EXPECT_EQ(linesOf(sent.output).size(), 1U);
}

TEST_F(Transmit, EndsWhenNobodyReads) {
  isOutputClosed = true;
  const ToolRun sent = run({"--mode", "1"});
  EXPECT_EQ(sent.status, 1);
  EXPECT_EQ(sent.error, "standard output cannot be written");
  EXPECT_TRUE(script.hasEnded);
}

TEST_F(Transmit, RefusesWhatCannotBeSentBeforeAnythingIs) {
  const std::vector<std::vector<std::string>> refused = {
      {"--mode", "256"},      {"--mode", "-1"},       {"--for", "-1"},
      {"--for", "soon"},      {"--interval", "19"},   {"--interval", "10241"},
      {"--interval", "fast"}, {"--scenario", "none"}, {"--colour", "1"},
  };
  for (const auto& arguments : refused) {
    EXPECT_EQ(flawOfRefusal(run(arguments)), "") << arguments.front() << " " << arguments.back();
  }
  const std::string packet = std::string(R"({"at":1,"packet":")") + kRed + "\"}\n";
  EXPECT_EQ(flawOfRefusal(runScenario(packet, {"--mode", "1"})), "");
  EXPECT_EQ(flawOfRefusal(runScenario(R"({"at":0,"start":true})"
                                      "\n")),
            "");
  EXPECT_EQ(flawOfRefusal(runScenario("{}\n")), "");
  const ToolRun tooLong =
      runScenario(packet + R"({"at":2,"packet":")" + std::string(60, '0') + "\"}\n");
  EXPECT_EQ(flawOfRefusal(tooLong), "");
  EXPECT_THAT(tooLong.error,
              testing::EndsWith("show.jsonl:2: 30 bytes; an advertisement holds 2 to 29"));
  EXPECT_EQ(flawOfRefusal(runScenario(R"({"at":2,"packet":"09"})"
                                      "\n")),
            "");
  EXPECT_THAT(script.shown, IsEmpty());
}

}  // namespace
}  // namespace halvora
