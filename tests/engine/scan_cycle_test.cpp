// SPDX-License-Identifier: Apache-2.0
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/engine/engine_bench.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using B = Broadcast;

// Cycles run at whole seconds; the bench stands just after the one at 1000 ms.
class ScanCycle : public testing::Test {
 protected:
  ScanCycle() { bench_.listen(); }

  const PresenceState& presence() const { return bench_.presence(); }
  PacketFate hearAt(long long time, const Broadcast& broadcast) {
    bench_.runTo(time);
    return bench_.hearNext(broadcast);
  }

  EngineBench bench_;
};

TEST_F(ScanCycle, CountersMoveOnEveryCycle) {
  hearAt(1500, look(1));
  bench_.hearNext(look(1));
  bench_.hearNext(look(3));
  EXPECT_EQ(presence().broadcastCount, 3);
  EXPECT_EQ(presence().fps, 3);
  EXPECT_EQ(presence().activeFPS, 2);
  bench_.runTo(2000);
  EXPECT_EQ(presence().broadcastCount, 0);
  EXPECT_EQ(presence().fps, 0);
  EXPECT_EQ(presence().activeFPS, 0);
  EXPECT_EQ(presence().lastFPS, 3);
  EXPECT_EQ(presence().lastActiveFPS, 2);
  bench_.runTo(3000);
  EXPECT_EQ(presence().lastFPS, 0);
  EXPECT_EQ(presence().lastActiveFPS, 0);
}

TEST_F(ScanCycle, Mode9ShowsTheRateOfTheCycleBefore) {
  hearAt(1500, look(9));
  for (int copy = 0; copy < 11; ++copy) bench_.hearNext(look(9));
  bench_.runTo(2000);
  EXPECT_THAT(bench_.take({"text"}), ElementsAre("text fpsLabel 0"));
  bench_.runTo(3000);
  EXPECT_THAT(bench_.take({"text"}), ElementsAre("text fpsLabel 12"));
  EXPECT_EQ(bench_.views().text(ViewId::fpsLabel), "12");
}

TEST_F(ScanCycle, OtherModesLeaveTheLabelAlone) {
  hearAt(1500, look(10));
  bench_.runTo(4000);
  EXPECT_THAT(bench_.take({"text"}), IsEmpty());
}

TEST_F(ScanCycle, VenueIsLeftWithTheSeventhEmptyCycle) {
  hearAt(1500, look(1));
  bench_.runTo(2000);
  EXPECT_EQ(presence().outOfRangeCount, 0) << "the cycle heard a packet";
  bench_.runTo(8999);
  EXPECT_EQ(presence().outOfRangeCount, 6);
  EXPECT_TRUE(bench_.engine().isInsideVenue());
  EXPECT_EQ(bench_.screen().currentMode, 1U);
  bench_.runTo(9000);
  EXPECT_FALSE(bench_.engine().isInsideVenue());
  EXPECT_EQ(bench_.screen().currentMode, 0U);
  EXPECT_EQ(presence().outOfRangeCount, 0);
}

TEST_F(ScanCycle, WhoWatchesThePresenceIsToldWhenThePhoneComesAndGoes) {
  std::vector<std::string> told;
  const auto tell = [&](const char* who) {
    return [&, who] {
      told.push_back(std::string(who) + (bench_.engine().isInsideVenue() ? " inside" : " outside"));
    };
  };
  const auto one = bench_.engine().watchPresence(tell("one"));
  auto other = bench_.engine().watchPresence(tell("other"));
  bench_.runTo(1499);
  EXPECT_THAT(told, IsEmpty());
  bench_.runTo(1500);
  bench_.hearNext(look(0));
  EXPECT_THAT(told, IsEmpty()) << "the host is not told in the middle of a packet";
  bench_.runTo(2000);
  EXPECT_THAT(told, ElementsAre("one inside", "other inside"));
  bench_.hearNext(look(0, {{&B::speed, 9}}));
  bench_.runTo(8000);
  EXPECT_THAT(told, SizeIs(2)) << "nothing has changed";
  other.reset();
  bench_.runTo(12000);
  EXPECT_THAT(told, ElementsAre("one inside", "other inside", "one outside"));
}

TEST_F(ScanCycle, WhoWatchesThePresenceIsToldWhenAShowWantsTheScreenAndWhenItDoesNot) {
  bench_.runTo(1500);
  bench_.hearNext(look(0));
  bench_.runTo(1600);
  std::vector<bool> wants;
  const auto watch = bench_.engine().watchPresence(
      [&] { wants.push_back(bench_.engine().prefersStatusBarHidden()); });
  bench_.hearNext(look(1));
  EXPECT_THAT(wants, IsEmpty()) << "not in the middle of a packet";
  bench_.runTo(1700);
  EXPECT_THAT(wants, ElementsAre(true));
  bench_.hearNext(look(2));
  bench_.runTo(1800);
  EXPECT_THAT(wants, ElementsAre(true));
  bench_.hearNext(look(0));
  bench_.runTo(1900);
  EXPECT_THAT(wants, ElementsAre(true, false));
}

TEST_F(ScanCycle, WhoWatchesThePresenceIsToldOfAPermission) {
  int told = 0;
  const auto watch = bench_.engine().watchPresence([&] { ++told; });
  bench_.runTo(1200);
  bench_.phone.bluetooth.setAuthorization(BluetoothAuthorization::denied);
  bench_.phone.bluetooth.setState(CentralState::unauthorised);
  bench_.runTo(1300);
  EXPECT_EQ(told, 1);
  EXPECT_FALSE(bench_.engine().isPermissionGranted());
  bench_.phone.application.becomeActive();
  bench_.runTo(1400);
  EXPECT_EQ(told, 2) << "it may have been allowed in the meantime";
}

TEST_F(ScanCycle, WhoWatchesThePresenceMayThrowOrDestroyTheEngine) {
  int told = 0;
  const auto thrower = bench_.engine().watchPresence([] { throw std::runtime_error("host"); });
  const auto destroyer = bench_.engine().watchPresence([&] {
    EXPECT_EQ(bench_.engine().diagnostics().failedCallbacks, 1U);
    ++told;
    bench_.destroyEngine();
  });
  const auto last = bench_.engine().watchPresence([&] { ++told; });
  bench_.runTo(1500);
  bench_.hearNext(look(1));
  bench_.runTo(9000);
  EXPECT_EQ(told, 1);
}

TEST_F(ScanCycle, EmptyCyclesNeedNotBeConsecutive) {
  hearAt(1500, look(1));
  hearAt(5500, look(1));
  EXPECT_EQ(presence().outOfRangeCount, 3);
  bench_.runTo(6000);
  EXPECT_EQ(presence().outOfRangeCount, 3) << "an accepted packet does not clear it";
  bench_.runTo(9999);
  EXPECT_TRUE(presence().insideVenue);
  bench_.runTo(10000);
  EXPECT_FALSE(presence().insideVenue);
}

TEST_F(ScanCycle, StalePacketsKeepThePhoneInside) {
  hearAt(1500, look(1));
  for (long long time = 2500; time < 20000; time += 1000) {
    bench_.runTo(time);
    bench_.hear(look(1, {{&B::sequence, 1}}));
  }
  EXPECT_EQ(presence().outOfRangeCount, 0);
  EXPECT_TRUE(presence().insideVenue);
}

TEST_F(ScanCycle, PacketsThatAreNotObeyedDoNotKeepThePhoneInside) {
  hearAt(1500, look(1));
  bench_.engine().setAllowedTransmitterIds({"1:1"});
  for (long long time = 2500; time < 9000; time += 1000) hearAt(time, look(1));
  bench_.runTo(9000);
  EXPECT_FALSE(presence().insideVenue);
}

TEST_F(ScanCycle, OutsideNothingIsCounted) {
  bench_.runTo(20000);
  EXPECT_EQ(presence().outOfRangeCount, 0);
  EXPECT_THAT(bench_.take({"alpha", "set", "torch"}), IsEmpty());
}

TEST_F(ScanCycle, ScanIsRestartedAsOneAct) {
  bench_.take();
  bench_.runTo(2000);
  EXPECT_THAT(bench_.take({"scan", "stopScan", "restartScan"}),
              ElementsAre("restartScan with duplicates"));
  EXPECT_THAT(bench_.phone.bluetooth.log.entries,
              ElementsAre(RadioAct::managerMade, RadioAct::scanStarted, RadioAct::scanRestarted,
                          RadioAct::scanRestarted));
}

TEST_F(ScanCycle, RestartKeepsTheBroadcast) {
  hearAt(1500, look(1));
  EXPECT_EQ(hearAt(2500, look(1)), PacketFate::sameBroadcast);
}

TEST_F(ScanCycle, BluetoothOffDuringAShowKeepsEverything) {
  hearAt(1500, look(5, {{&B::speed, 255}, {&B::ledMode, 4}}));
  bench_.runTo(3500);
  EXPECT_EQ(presence().outOfRangeCount, 1);
  bench_.phone.bluetooth.setState(CentralState::poweredOff);
  bench_.take();
  bench_.runTo(30000);
  EXPECT_THAT(bench_.take({"alpha", "brightness", "torch", "set", "restartScan", "text"}),
              IsEmpty());
  EXPECT_EQ(bench_.screen().currentMode, 5U);
  EXPECT_EQ(bench_.views().alpha(ViewId::container), 1);
  EXPECT_TRUE(presence().insideVenue);
  EXPECT_EQ(presence().outOfRangeCount, 1);
  EXPECT_TRUE(bench_.screen().runEffectAnimation);
}

TEST_F(ScanCycle, FirstCycleAfterBluetoothReturnsRestartsTheScan) {
  hearAt(1500, look(5));
  bench_.phone.bluetooth.setState(CentralState::poweredOff);
  bench_.runTo(10500);
  bench_.phone.bluetooth.setState(CentralState::poweredOn);
  EXPECT_FALSE(bench_.phone.bluetooth.isScanning());
  bench_.take();
  bench_.runTo(11000);
  EXPECT_THAT(bench_.take({"scan", "restartScan"}), ElementsAre("restartScan with duplicates"));
  EXPECT_EQ(bench_.hearNext(look(5)), PacketFate::sameBroadcast) << "the show simply goes on";
  bench_.runTo(12000);
  EXPECT_EQ(presence().outOfRangeCount, 0);
}

TEST_F(ScanCycle, PermissionWithdrawnDuringAShowKeepsEverything) {
  hearAt(1500, look(1));
  bench_.phone.bluetooth.setState(CentralState::unauthorised);
  bench_.runTo(30000);
  EXPECT_EQ(bench_.screen().currentMode, 1U);
  EXPECT_TRUE(presence().insideVenue);
}

const UsageEndpoints kEndpoints{"https://opens.example", "https://devices.example",
                                "https://signals.example"};

TEST(ScanCycleUsage, ReceivedSignalIsSentOnceADayFromTheCycleAfterAPacket) {
  EngineBench bench({.usageEndpoints = kEndpoints});
  bench.listen();
  bench.runTo(1500);
  bench.hearNext(look(1));
  bench.runTo(2999);
  EXPECT_THAT(bench.take({"get"}), IsEmpty());
  bench.runTo(3000);
  EXPECT_THAT(bench.take({"get"}),
              ElementsAre("get https://signals.example/?appID=com.example.host"));
  for (const int second : {3, 4, 5}) {
    bench.runTo(second * 1000 + 500);
    bench.hearNext(look(1));
  }
  bench.runTo(9000);
  EXPECT_THAT(bench.take({"get"}), IsEmpty());
}

TEST(ScanCycleUsage, NothingIsSentWhereNothingWasHeard) {
  EngineBench bench({.usageEndpoints = kEndpoints});
  bench.listen();
  bench.runTo(10000);
  EXPECT_THAT(bench.take({"get"}), IsEmpty());
}

TEST(ActiveApplication, CountsTheOpeningWhereScanningIsAllowed) {
  EngineBench bench({.usageEndpoints = kEndpoints});
  bench.listen();
  bench.phone.application.becomeActive();
  EXPECT_THAT(bench.take({"get"}),
              ElementsAre("get https://opens.example/?appID=com.example.host",
                          "get https://devices.example/?appID=com.example.host"));
  bench.phone.application.becomeActive();
  EXPECT_THAT(bench.take({"get"}),
              ElementsAre("get https://opens.example/?appID=com.example.host"));
}

TEST(ActiveApplication, CountsNothingWhereScanningIsNotAllowed) {
  EngineBench bench(
      {.authorization = BluetoothAuthorization::denied, .usageEndpoints = kEndpoints});
  bench.engine().start();
  bench.phone.application.becomeActive();
  EXPECT_THAT(bench.take({"get"}), IsEmpty());
  EXPECT_TRUE(bench.presence().resetApp);
}

TEST(UsageReports, SwitchedOffNothingIsSentNorNotedAndWhatIsUnderWayIsGivenUp) {
  EngineBench bench({.usageEndpoints = kEndpoints});
  bench.listen();
  EXPECT_TRUE(bench.engine().usageReports());
  bench.take();
  bench.engine().setUsageReports(false);
  EXPECT_THAT(bench.take({"cancel"}), ElementsAre("cancel requests"));
  bench.phone.application.becomeActive();
  bench.runTo(1500);
  bench.hearNext(look(1));
  EXPECT_TRUE(bench.presence().insideVenue) << "the show goes on";
  bench.runTo(9000);
  EXPECT_THAT(bench.take({"get"}), IsEmpty());
  for (const char* key : {"LastAppOpenCallDate", "LastReceivedSignalCallDate"}) {
    EXPECT_EQ(bench.phone.defaults.find(key), nullptr) << key;
  }
}

TEST(UsageReports, SwitchedOnAgainTheyAreSentFromThenOn) {
  EngineBench bench({.usageEndpoints = kEndpoints});
  bench.listen();
  bench.engine().setUsageReports(false);
  bench.phone.application.becomeActive();
  bench.take();
  bench.engine().setUsageReports(true);
  EXPECT_THAT(bench.take({"get", "cancel"}), IsEmpty());
  bench.phone.application.becomeActive();
  EXPECT_THAT(bench.take({"get"}),
              ElementsAre("get https://opens.example/?appID=com.example.host",
                          "get https://devices.example/?appID=com.example.host"));
}

TEST(UsageReports, MayBeOffFromTheStart) {
  EngineBench bench;
  ShowEngine quiet(bench.phone.platform(), {{kEndpoints, false}});
  EXPECT_FALSE(quiet.usageReports());
  quiet.viewDidLoad();
  quiet.start();
  bench.runTo(1000);
  bench.phone.application.becomeActive();
  EXPECT_THAT(bench.phone.http.log.entries, IsEmpty());
}

TEST(ActiveApplication, ResigningLetsTheScreenSleepAgain) {
  EngineBench bench;
  bench.process(look(1));
  EXPECT_TRUE(bench.phone.application.isIdleTimerDisabled);
  bench.take();
  bench.phone.application.resignActive();
  EXPECT_THAT(bench.take(), ElementsAre("idleTimerDisabled false"));
  EXPECT_FALSE(bench.phone.application.isIdleTimerDisabled);
}

}  // namespace
}  // namespace halvora
