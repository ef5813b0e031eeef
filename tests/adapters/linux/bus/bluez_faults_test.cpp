// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include "tests/adapters/linux/bus/bluez_bus_test.h"
#include "tests/adapters/linux/bus/garbage_bus.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

class BluezFaults : public BluezBusTest {
 protected:
  // What begins a scan anew here is the fault, never that nothing was heard.
  BluezFaults() {
    settings.betweenStarts = milliseconds(1);
    settings.silence = std::chrono::hours(1);
  }
  // Hears whatever is said from now on.
  bool hears(std::uint8_t number) {
    listener.packets.clear();
    bluez.advertise(kShow, rest(number));
    return waitForPackets(1) && listener.packets.front() == packet(number);
  }
  bool hearsAgain(std::uint8_t number) {
    return waitForState(CentralState::poweredOn) && waitForScan() && hears(number);
  }
};

TEST_F(BluezFaults, WithoutADaemonTheRadioIsUnsupportedUntilOneAppears) {
  scanWheneverPossible();
  makeCentral();
  ASSERT_TRUE(waitForState(CentralState::unsupported));
  EXPECT_EQ(central->authorization(), BluetoothAuthorization::allowedAlways);
  EXPECT_THAT(central->diagnostics().errors.last,
              testing::HasSubstr("org.freedesktop.DBus.Error.ServiceUnknown"));
  bluez.appear();
  bluez.addAdapter("hci0", true);
  EXPECT_TRUE(hearsAgain(1));
}

TEST_F(BluezFaults, WithoutAnAdapterTheRadioIsUnsupportedUntilOneIsPluggedIn) {
  bluez.appear();
  scanWheneverPossible();
  makeCentral();
  ASSERT_TRUE(waitForState(CentralState::unsupported));
  bluez.addAdapter("hci1", true);
  EXPECT_TRUE(hearsAgain(1));
}

TEST_F(BluezFaults, AnAdapterWithoutPowerIsOffUntilItIsSwitchedOn) {
  bluez.appear();
  bluez.addAdapter("hci0", false);
  scanWheneverPossible();
  makeCentral();
  ASSERT_TRUE(waitForState(CentralState::poweredOff));
  EXPECT_EQ(calls("StartDiscovery"), 0U);
  bluez.setPowered("hci0", true);
  EXPECT_TRUE(hearsAgain(1));
}

TEST_F(BluezFaults, PowerThatComesBackIsFollowedByANewScan) {
  scan();
  bluez.setPowered("hci0", false);
  ASSERT_TRUE(waitForState(CentralState::poweredOff));
  EXPECT_FALSE(central->diagnostics().isScanning);
  bluez.setPowered("hci0", true);
  EXPECT_TRUE(hearsAgain(1));
  EXPECT_EQ(calls("StartDiscovery"), 2U);
}

TEST_F(BluezFaults, AMonitorOutlivesThePower) {
  scan(true);
  bluez.setPowered("hci0", false);
  ASSERT_TRUE(waitForState(CentralState::poweredOff));
  bluez.setPowered("hci0", true);
  EXPECT_TRUE(hearsAgain(1));
  EXPECT_EQ(calls("RegisterMonitor"), 1U);
}

TEST_F(BluezFaults, AnAdapterThatIsUnpluggedAndBackIsScannedOnAgain) {
  scan();
  bluez.removeAdapter("hci0");
  ASSERT_TRUE(waitForState(CentralState::unsupported));
  bluez.addAdapter("hci0", true);
  EXPECT_TRUE(hearsAgain(1));
}

TEST_F(BluezFaults, AnAdapterThatIsUnpluggedAndBackGetsItsMonitorAnew) {
  scan(true);
  bluez.removeAdapter("hci0");
  ASSERT_TRUE(waitForState(CentralState::unsupported));
  bluez.addAdapter("hci0", true, true);
  EXPECT_TRUE(hearsAgain(1));
  EXPECT_TRUE(bluez.hasMonitor());
  EXPECT_EQ(central->diagnostics().errors.count, 0U);
}

TEST_F(BluezFaults, ADaemonThatAnswersWithNonsenseIsAskedAgain) {
  bluez.errors["GetManagedObjects"] = SD_BUS_ERROR_UNKNOWN_OBJECT;
  bluez.appear();
  bluez.addAdapter("hci0", true);
  scanWheneverPossible();
  makeCentral();
  ASSERT_TRUE(waitForState(CentralState::unsupported));
  bluez.errors.clear();
  EXPECT_TRUE(hearsAgain(1));
}

TEST_F(BluezFaults, AnotherAdapterTakesOver) {
  scan();
  bluez.addAdapter("hci1", true);
  bluez.removeAdapter("hci0");
  ASSERT_TRUE(waitFor([&] { return calls("StartDiscovery") == 2; }));
  ASSERT_TRUE(waitForScan());
  EXPECT_TRUE(hears(1));
  EXPECT_THAT(listener.states, ElementsAre(CentralState::unknown, CentralState::poweredOn));
}

TEST_F(BluezFaults, ADaemonThatIsKilledIsResettingUntilTheNextOne) {
  scan();
  bluez.die();
  ASSERT_TRUE(waitForState(CentralState::resetting));
  EXPECT_FALSE(central->diagnostics().isScanning);
  bluez.appear();
  EXPECT_TRUE(hearsAgain(1));
}

TEST_F(BluezFaults, ADaemonThatIsRestartedGetsTheMonitorAnew) {
  scan(true);
  bluez.quit();
  ASSERT_TRUE(waitForState(CentralState::resetting));
  bluez.appear();
  EXPECT_TRUE(hearsAgain(1));
  EXPECT_TRUE(bluez.hasMonitor());
}

TEST_F(BluezFaults, ABusThatIsLostIsFoundAgain) {
  scan();
  bluez.die();
  bus.stop();
  ASSERT_TRUE(waitForState(CentralState::resetting));
  ASSERT_TRUE(bus.start());
  bluez.appear();
  EXPECT_TRUE(hearsAgain(1));
}

TEST_F(BluezFaults, ABusThatSaysAnythingButMessagesIsNone) {
  GarbageBus garbage(loop);
  BluezDaemon broken(loop, loop, garbage.address());
  central = std::make_unique<BluezCentral>(loop, broken);
  manager = central->makeManager(listener);
  EXPECT_TRUE(waitForState(CentralState::unsupported));
  EXPECT_EQ(broken.reach(), BluezReach::noBus);
  TearDown();
}

TEST_F(BluezFaults, AScanThatCannotEvenBeAskedForCostsTheConnectionAndIsTakenUpOnTheNext) {
  bluez.appear();
  bluez.addAdapter("hci0", true);
  makeCentral();
  ASSERT_TRUE(waitForState(CentralState::poweredOn));
  scanWheneverPossible();
  bluez.die();
  bus.stop();
  // Before anything has told that the bus is gone.
  manager->scanForPeripherals(kRepeats);
  EXPECT_FALSE(central->diagnostics().isScanning);
  ASSERT_TRUE(waitForState(CentralState::resetting));
  ASSERT_TRUE(bus.start());
  bluez.appear();
  EXPECT_TRUE(hearsAgain(1));
}

TEST_F(BluezFaults, AMonitorThatCannotBeShownCostsTheConnection) {
  bluez.appear();
  bluez.addAdapter("hci0", true, true);
  makeCentral();
  ASSERT_TRUE(waitForState(CentralState::poweredOn));
  // There is one already.
  daemon.start("/org/bluez/hci0", BluezMethod::monitor);
  daemon.start("/org/bluez/hci0", BluezMethod::monitor);
  ASSERT_TRUE(waitForState(CentralState::resetting));
  scanWheneverPossible();
  EXPECT_TRUE(hearsAgain(1));
}

TEST_F(BluezFaults, AnAdapterWhoseStartsFailGivesWayToOneWhoseStartsDoNot) {
  bluez.appear();
  bluez.addAdapter("hci0", true);
  bluez.addAdapter("hci1", true);
  bluez.broken.insert("hci0");
  bluez.ear = "hci1";
  scanWheneverPossible();
  makeCentral();
  EXPECT_TRUE(hearsAgain(1));
  EXPECT_EQ(central->diagnostics().adapter, "hci1");
  EXPECT_THAT(central->diagnostics().adapters, ElementsAre("hci0", "hci1"));
  EXPECT_THAT(central->diagnostics().errors.last, StartsWith("org.bluez.Error.Failed"));
}

TEST_F(BluezFaults, WithoutABusTheRadioIsUnsupportedUntilThereIsOne) {
  bus.stop();
  scanWheneverPossible();
  makeCentral();
  ASSERT_TRUE(waitForState(CentralState::unsupported));
  ASSERT_TRUE(bus.start());
  bluez.appear();
  bluez.addAdapter("hci0", true);
  EXPECT_TRUE(hearsAgain(1));
}

TEST_F(BluezFaults, APolicyThatForbidsTheDaemonIsNoPermission) {
  bus.stop();
  ASSERT_TRUE(
      bus.start("<policy context=\"mandatory\"><deny send_destination=\"org.bluez\" "
                "send_type=\"method_call\"/></policy>"));
  bluez.appear();
  bluez.addAdapter("hci0", true);
  makeCentral();
  ASSERT_TRUE(waitForState(CentralState::unauthorised));
  EXPECT_EQ(central->authorization(), BluetoothAuthorization::denied);
  EXPECT_TRUE(bluez.calls.empty());
}

TEST_F(BluezFaults, ADaemonThatRefusesToScanIsNoPermissionUntilItAgrees) {
  bluez.errors["StartDiscovery"] = SD_BUS_ERROR_ACCESS_DENIED;
  bluez.appear();
  bluez.addAdapter("hci0", true);
  scanWheneverPossible();
  makeCentral();
  ASSERT_TRUE(waitForState(CentralState::unauthorised));
  EXPECT_EQ(central->authorization(), BluetoothAuthorization::denied);
  bluez.errors.clear();
  EXPECT_TRUE(hearsAgain(1));
  EXPECT_EQ(central->authorization(), BluetoothAuthorization::allowedAlways);
}

TEST_F(BluezFaults, AScanThatFailsIsTriedAgain) {
  bluez.errors["SetDiscoveryFilter"] = "org.bluez.Error.NotReady";
  bluez.appear();
  bluez.addAdapter("hci0", true);
  scanWheneverPossible();
  makeCentral();
  ASSERT_TRUE(waitFor([&] { return calls("SetDiscoveryFilter") == 1; }));
  bluez.errors.clear();
  EXPECT_TRUE(hearsAgain(1));
  EXPECT_EQ(central->diagnostics().errors.last, "org.bluez.Error.NotReady: as the test wants it");
}

TEST_F(BluezFaults, ADiscoveryThatADeadDaemonLeftBehindIsNoScanOfOurs) {
  bluez.hasLeftOverDiscovery = true;
  bluez.appear();
  bluez.addAdapter("hci0", true);
  scanWheneverPossible();
  makeCentral();
  ASSERT_TRUE(waitFor([&] { return calls("StartDiscovery") == 2; }));
  EXPECT_FALSE(central->diagnostics().isScanning);
  EXPECT_THAT(central->diagnostics().errors.last, StartsWith("org.bluez.Error.InProgress"));
  bluez.hasLeftOverDiscovery = false;
  ASSERT_TRUE(waitForScan());
  EXPECT_TRUE(hearsAgain(1));
}

TEST_F(BluezFaults, ADiscoveryWhoseAnswerCameTooLateIsEndedAndBegunAnew) {
  bluez.losesAnswers = 1;
  scan();
  EXPECT_THAT(bluez.calls, ElementsAre("GetManagedObjects", "SetDiscoveryFilter", "StartDiscovery",
                                       "StopDiscovery", "SetDiscoveryFilter", "StartDiscovery"));
  EXPECT_TRUE(hearsAgain(1));
}

/// The system's login daemon, as far as it tells of sleep.
class BluezAndSleep : public BluezFaults {
 protected:
  void SetUp() override {
    BluezFaults::SetUp();
    if (IsSkipped() || HasFatalFailure()) return;
    scan();
    login.open(bus.address(), [] {});
    ASSERT_GE(sd_bus_request_name(login.bus(), "org.freedesktop.login1", 0), 0);
  }
  void say(const char* types, int isGoingToSleep) {
    ASSERT_GE(
        sd_bus_emit_signal(login.bus(), "/org/freedesktop/login1", "org.freedesktop.login1.Manager",
                           "PrepareForSleep", types, isGoingToSleep),
        0);
    login.sent();
  }
  /// Whether all that was said has been handed on.
  bool isThrough() {
    const std::string target = bluez.discoveryClient();
    bool isAnswered = false;
    const BusSlot slot =
        login.call(login.newCall({target.c_str(), "/", "org.freedesktop.DBus.Peer"}, "Ping"),
                   BusConnection::kUsualTime, [&](sd_bus_message*) { isAnswered = true; });
    return waitFor([&] { return isAnswered; });
  }

  BusConnection login{loop, loop};
};

TEST_F(BluezAndSleep, WakingFromSuspendBeginsTheScanAnew) {
  say("b", 1);
  ASSERT_TRUE(isThrough());
  EXPECT_EQ(central->diagnostics().restarts, 0U);
  say("b", 0);
  ASSERT_TRUE(waitFor([&] { return calls("StartDiscovery") == 2; }));
  EXPECT_EQ(central->diagnostics().restarts, 1U);
  EXPECT_TRUE(hearsAgain(1));
}

TEST_F(BluezAndSleep, ASignalThatSaysNothingIsNone) {
  say("", 0);
  say("u", 0);
  ASSERT_TRUE(isThrough());
  EXPECT_EQ(central->diagnostics().restarts, 0U);
  EXPECT_EQ(calls("StartDiscovery"), 1U);
}

}  // namespace
}  // namespace halvora
