// SPDX-License-Identifier: Apache-2.0
// The tool's own radio and transmitter, and the commands on them, on a private bus with the fake
// daemon. Real time passes here; tests wait for what is to happen.
#include "venue/air/system_radio.h"

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "adapters/linux/poll_run_loop.h"
#include "tests/adapters/linux/bluetooth/central_listener.h"
#include "tests/adapters/linux/bus/fake_bluez.h"
#include "tests/adapters/linux/bus/private_bus.h"
#include "tests/apps/halvora/tool_runner.h"
#include "venue/air/system_transmitter.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* kShow = "C00000000001";
/// Transmitter 7 of application 258, without the company's id.
const FakeBluez::Bytes kPacket = {1, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                                  0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 7};

// Radio and transmitter have loops of their own; the daemon is on the same.
PollRunLoop& pollLoopOf(RunLoop& loop) { return dynamic_cast<PollRunLoop&>(loop); }

// The system's radio with the daemon that it hears through, which goes first.
class RadioWithDaemon final : public Radio {
 public:
  RadioWithDaemon(const std::string& adapter, const std::string& address,
                  const std::function<void(FakeBluez&)>& prepare,
                  std::function<void(FakeBluez&)> turn)
      : radio_(openSystemRadio(adapter, address)),
        bluez_(pollLoopOf(radio_->loop()), pollLoopOf(radio_->loop()), address),
        turn_(std::move(turn)) {
    bluez_.appear();
    prepare(bluez_);
  }
  RunLoop& loop() override { return radio_->loop(); }
  BluetoothCentral& bluetooth() override { return radio_->bluetooth(); }
  RadioAdapters adapters() const override { return radio_->adapters(); }
  void runUntil(const std::function<bool()>& isDone) override {
    radio_->runUntil([&] {
      turn_(bluez_);
      return isDone();
    });
  }

 private:
  std::unique_ptr<Radio> radio_;
  FakeBluez bluez_;
  std::function<void(FakeBluez&)> turn_;
};

class SystemRadios : public testing::Test {
 protected:
  void SetUp() override {
    const bool isStarted = bus.start();
    if (bus.isMissing()) GTEST_SKIP() << "dbus-daemon is not installed";
    ASSERT_TRUE(isStarted);
  }

  // `halvora listen` with two adapters, hci0 and hci1, of which hci1 hears. Ends when it has
  // printed `last`, or after so many seconds as only a failure takes.
  ToolRun listen(std::vector<std::string> arguments, const std::string& last = {}) {
    ToolRun run;
    std::atomic<bool> isInterrupted = false;
    ToolSetup setup;
    setup.isInterrupted = &isInterrupted;
    setup.openRadio = [&](const std::string& adapter) {
      return std::make_unique<RadioWithDaemon>(
          adapter, bus.address(),
          [this](FakeBluez& bluez) {
            for (const char* name : {"hci0", "hci1"}) bluez.addAdapter(name, isOn);
            bluez.broken = broken;
            bluez.ear = "hci1";
          },
          [&](FakeBluez& bluez) {
            if (bluez.isDiscovering()) bluez.advertise(kShow, kPacket);
            isInterrupted = isInterrupted || (endsAfter > 0 && bluez.calls.size() >= endsAfter);
          });
    };
    setup.output = [&](std::string_view text) {
      run.output += text;
      isInterrupted = isInterrupted || (!last.empty() && text.find(last) != std::string::npos);
      return true;
    };
    arguments.insert(arguments.begin(), {"listen", "--for", "60"});
    const ToolRun ended = runTool(arguments, setup);
    run.status = ended.status;
    run.error = ended.error;
    return run;
  }

  PrivateBus bus;
  bool isOn = true;
  std::set<std::string> broken;
  std::size_t endsAfter = 0;
};

TEST_F(SystemRadios, ABadAdapterGivesWayToAGoodOneAndListenSaysWhich) {
  broken = {"hci0"};
  const auto lines = linesOf(listen({}, "\"sequence\"").output);
  ASSERT_GE(lines.size(), 3U);
  EXPECT_THAT(lines[0], HasSubstr(R"("adapter":"hci1"})"));
  EXPECT_THAT(lines[1], HasSubstr(R"("applicationId":258,)"));
  EXPECT_THAT(lines.back(), HasSubstr(R"("summary":"258:7")"));
}

TEST_F(SystemRadios, ListenKeepsToTheAdapterThatIsNamed) {
  const auto lines = linesOf(listen({"--adapter", "hci1"}, "\"sequence\"").output);
  ASSERT_GE(lines.size(), 2U);
  EXPECT_THAT(lines[0], HasSubstr(R"("adapter":"hci1"})"));
}

TEST_F(SystemRadios, ListenSaysWhichAdaptersThereAreWhereTheOneThatIsNamedIsNot) {
  const ToolRun run = listen({"--adapter", "hci7"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.output, "");
  EXPECT_EQ(run.error,
            "no Bluetooth adapter called hci7; this machine has hci0 and hci1: name one of these "
            "with --adapter, or none");
}

TEST_F(SystemRadios, ListenSaysThatTheAdapterThatIsNamedIsOff) {
  isOn = false;
  EXPECT_EQ(listen({"--adapter", "hci1"}).error, "the Bluetooth adapter hci1 is switched off");
  EXPECT_EQ(listen({}).error, "Bluetooth is switched off");
}

TEST_F(SystemRadios, ListenSaysSoWhereNoAdapterScans) {
  broken = {"hci0", "hci1"};
  // The objects, and twice a filter and a start.
  endsAfter = 5;
  const ToolRun run = listen({});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.output, "");
  EXPECT_EQ(run.error,
            "no Bluetooth adapter of hci0 and hci1 scans: org.bluez.Error.Failed: Input/output "
            "error");
}

TEST_F(SystemRadios, WithoutADaemonThereAreNoAdapters) {
  const auto radio = openSystemRadio({}, bus.address());
  CentralListener listener;
  const auto manager = radio->bluetooth().makeManager(listener);
  radio->runUntil([&] { return listener.last() == CentralState::unsupported; });
  EXPECT_TRUE(radio->adapters().all.empty());
  EXPECT_EQ(radio->adapters().scanning, "");
  EXPECT_THAT(radio->adapters().error, StartsWith("org.freedesktop.DBus.Error.ServiceUnknown"));
}

TEST_F(SystemRadios, TheTransmitterPutsAPacketOnTheAirAndTakesItOff) {
  const auto transmitter = openSystemTransmitter(bus.address());
  PollRunLoop& loop = pollLoopOf(transmitter->loop());
  FakeBluez bluez(loop, loop, bus.address());
  bluez.appear();
  bluez.addAdapter("hci0", true);
  transmitter->open({});
  EXPECT_TRUE(transmitter->isBusy());
  transmitter->runUntil([&] { return !transmitter->isBusy(); });
  EXPECT_EQ(transmitter->failure(), "");
  transmitter->show(FakeBluez::Bytes{0x09, 0xC9, 1});
  transmitter->runUntil([&] { return bluez.isAdvertising() && !transmitter->isBusy(); });
  EXPECT_THAT(bluez.aired, ElementsAre(FakeBluez::Bytes{0x09, 0xC9, 1}));
  transmitter->end();
  transmitter->runUntil([&] { return !transmitter->isBusy(); });
  EXPECT_FALSE(bluez.isAdvertising());
  EXPECT_EQ(transmitter->failure(), "");
}

}  // namespace
}  // namespace halvora
