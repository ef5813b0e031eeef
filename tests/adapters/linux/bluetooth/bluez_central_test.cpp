// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/bluetooth/bluez_central.h"

#include <algorithm>
#include <string>

#include <gmock/gmock.h>

#include "tests/adapters/linux/bluetooth/scripted_central.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct StateRow {
  BluezScene scene;
  CentralState state;
  /// The same after the daemon was there once.
  CentralState later;
  BluetoothAuthorization authorization;
};

TEST_F(BluezCentralTest, WhatThereIsBecomesAState) {
  constexpr auto kAllowed = BluetoothAuthorization::allowedAlways;
  using R = BluezReach;
  using S = CentralState;
  const StateRow kRows[] = {
      {{R::asking, {}}, S::unknown, S::unknown, kAllowed},
      {{R::noBus, {}}, S::unsupported, S::resetting, kAllowed},
      {{R::noDaemon, {}}, S::unsupported, S::resetting, kAllowed},
      {{R::silent, {}}, S::unsupported, S::resetting, kAllowed},
      {{R::refused, {}}, S::unauthorised, S::unauthorised, BluetoothAuthorization::denied},
      {{R::there, {}}, S::unsupported, S::unsupported, kAllowed},
      {{R::there, {kOff}}, S::poweredOff, S::poweredOff, kAllowed},
      {{R::there, {kOn}}, S::poweredOn, S::poweredOn, kAllowed},
      {{R::there, {kOff, kOther}}, S::poweredOn, S::poweredOn, kAllowed},
  };
  for (const StateRow& row : kRows) {
    begin(row.scene);
    EXPECT_EQ(manager->state(), row.state);
    EXPECT_EQ(listener.last(), row.state);
    EXPECT_EQ(central->authorization(), row.authorization);
    bluez.become(kThere);
    bluez.become(row.scene);
    EXPECT_EQ(manager->state(), row.later);
    end();
  }
}

TEST_F(BluezCentralTest, AManagerReportsInTheFirstTurnAndThenChangesOnly) {
  central.emplace(loop, bluez);
  manager = central->makeManager(listener);
  EXPECT_THAT(listener.states, IsEmpty());
  loop.runFor(Duration::zero());
  bluez.become(kThere);
  bluez.become(kThere);
  bluez.become({BluezReach::there, {kOff}});
  EXPECT_THAT(listener.states, ElementsAre(CentralState::unknown, CentralState::poweredOn,
                                           CentralState::poweredOff));
}

TEST_F(BluezCentralTest, AChangeBeforeTheFirstReportIsPartOfIt) {
  central.emplace(loop, bluez);
  manager = central->makeManager(listener);
  bluez.become(kThere);
  loop.runFor(Duration::zero());
  EXPECT_THAT(listener.states, ElementsAre(CentralState::poweredOn));
}

TEST_F(BluezCentralTest, ADelegateMayGiveUpManagersWhileItIsTold) {
  begin();
  CentralListener second;
  std::unique_ptr<CentralManager> other = central->makeManager(second);
  loop.runFor(Duration::zero());
  listener.onState = [&](CentralState) {
    other.reset();
    manager.reset();
  };
  bluez.become({BluezReach::there, {kOff}});
  EXPECT_EQ(listener.last(), CentralState::poweredOff);
  EXPECT_THAT(second.states, ElementsAre(CentralState::poweredOn));
}

TEST_F(BluezCentralTest, ClosesTheServiceAsItGoes) {
  begin();
  EXPECT_TRUE(bluez.isOpen());
  end();
  EXPECT_FALSE(bluez.isOpen());
}

TEST_F(BluezCentralTest, OnlyManagersThatScanHear) {
  begin();
  CentralListener second;
  const auto other = central->makeManager(second);
  bluez.advertise();
  EXPECT_EQ(listener.packets.size(), 1U);
  EXPECT_THAT(second.packets, IsEmpty());
  manager->stopScan();
  other->scanForPeripherals(kRepeats);
  bluez.advertise();
  EXPECT_EQ(listener.packets.size(), 1U);
  EXPECT_EQ(second.packets.size(), 1U);
}

TEST_F(BluezCentralTest, LosingPowerEndsAScanOfAManager) {
  begin();
  bluez.become({BluezReach::there, {kOff}});
  bluez.advertise();
  EXPECT_THAT(listener.packets, IsEmpty()) << "what is on its way still";
  bluez.become(kThere);
  loop.runFor(milliseconds(1000));
  bluez.advertise();
  EXPECT_THAT(listener.packets, IsEmpty());
  manager->restartScan(kRepeats);
  bluez.advertise();
  EXPECT_EQ(listener.packets.size(), 1U);
}

TEST_F(BluezCentralTest, TheSystemScansOnThroughStopsAndStartsWhileAShowIsHeard) {
  begin();
  EXPECT_THAT(bluez.drain(), ElementsAre("discover hci0"));
  const Timer engine(loop, loop.every(milliseconds(1000), [this] {
    manager->stopScan();
    manager->scanForPeripherals(kRepeats);
  }));
  passWithShow(60);
  EXPECT_THAT(bluez.drain(), IsEmpty());
  EXPECT_EQ(listener.packets.size(), 600U);
  EXPECT_TRUE(isScanning());
  EXPECT_TRUE(central->diagnostics().isHearing);
}

TEST_F(BluezCentralTest, AScanThatPausesForLongIsEnded) {
  begin();
  bluez.drain();
  manager->stopScan();
  loop.runFor(milliseconds(1499));
  EXPECT_THAT(bluez.drain(), IsEmpty());
  loop.runFor(milliseconds(1));
  EXPECT_THAT(bluez.drain(), ElementsAre("stop"));
  EXPECT_FALSE(isScanning());
  manager->scanForPeripherals(kRepeats);
  loop.runFor(milliseconds(1000));
  EXPECT_THAT(bluez.drain(), ElementsAre("discover hci0"));
}

TEST_F(BluezCentralTest, TwoSecondsOfSilenceBeginTheScanAnewAndThenEverySecond) {
  begin();
  passWithShow(5);
  bluez.drain();
  loop.runFor(milliseconds(1999));
  EXPECT_THAT(bluez.drain(), IsEmpty());
  loop.runFor(milliseconds(1));
  EXPECT_THAT(bluez.drain(), ElementsAre("stop", "discover hci0"));
  EXPECT_FALSE(central->diagnostics().isHearing);
  loop.runFor(milliseconds(999));
  EXPECT_THAT(bluez.drain(), IsEmpty());
  loop.runFor(milliseconds(9001));
  EXPECT_EQ(bluez.drain().size(), 20U);
  EXPECT_EQ(central->diagnostics().restarts, 11U);
  EXPECT_EQ(central->diagnostics().starts, 12U);
  passWithShow(10);
  EXPECT_THAT(bluez.drain(), IsEmpty());
}

TEST_F(BluezCentralTest, AControllerThatReportsADeviceOnceAScanIsHeardInEverySecond) {
  begin();
  bluez.drain();
  passWithFirstReports(20);
  const auto heard = passWithFirstReports(60);
  ASSERT_GT(heard.size(), 60U);
  for (std::size_t at = 1; at < heard.size(); ++at) {
    EXPECT_LT(heard[at] - heard[at - 1], milliseconds(900));
  }
  // Runs that bring nothing do not end the haste at once.
  bluez.drain();
  loop.runFor(milliseconds(1700));
  EXPECT_GE(std::ranges::count(bluez.drain(), std::string("discover hci0")), 2);
  // With the show it is gone.
  loop.runFor(milliseconds(5000));
  bluez.drain();
  loop.runFor(milliseconds(10000));
  EXPECT_EQ(bluez.drain().size(), 20U);
}

TEST_F(BluezCentralTest, AShowThatIsHeardAllTheTimeIsNotInterruptedByWhatItsBeginningLookedLike) {
  begin();
  passWithFirstReports(5);
  passWithShow(2);
  bluez.drain();
  passWithShow(10);
  EXPECT_THAT(bluez.drain(), IsEmpty());
  // Nor are gaps in it.
  for (int gap = 0; gap < 10; ++gap) {
    loop.runFor(milliseconds(1500));
    bluez.advertise();
  }
  EXPECT_THAT(bluez.drain(), IsEmpty());
}

TEST_F(BluezCentralTest, ARestartThatTheEngineAsksForChangesNothingOfThat) {
  begin();
  bluez.drain();
  const Timer engine(loop,
                     loop.every(milliseconds(1000), [this] { manager->restartScan(kRepeats); }));
  loop.runFor(milliseconds(1999));
  EXPECT_THAT(bluez.drain(), IsEmpty());
  loop.runFor(milliseconds(8001));
  EXPECT_EQ(central->diagnostics().restarts, 9U);
}

TEST_F(BluezCentralTest, ASettingBoundsTheStartsForSystemsThatStarveThem) {
  settings.betweenStarts = milliseconds(6000);
  begin();
  loop.runFor(milliseconds(5999));
  EXPECT_EQ(central->diagnostics().starts, 1U);
  loop.runFor(milliseconds(54'001));
  EXPECT_EQ(central->diagnostics().starts, 11U);
}

TEST_F(BluezCentralTest, TheBoundHoldsForPowerThatComesAndGoes) {
  settings.betweenStarts = milliseconds(6000);
  begin();
  for (int change = 0; change < 100; ++change) {
    bluez.become({BluezReach::there, {kOff}});
    bluez.become(change % 2 == 0 ? BluezScene{BluezReach::noDaemon, {}} : kThere);
    bluez.become(kThere);
    manager->scanForPeripherals(kRepeats);
    loop.runFor(milliseconds(600));
  }
  EXPECT_EQ(central->diagnostics().starts, 11U);
}

TEST_F(BluezCentralTest, AMonitorIsRegisteredAnewLessOften) {
  begin({BluezReach::there, {kMonitored}});
  EXPECT_THAT(bluez.drain(), ElementsAre("monitor hci0"));
  loop.runFor(milliseconds(9999));
  EXPECT_THAT(bluez.drain(), IsEmpty());
  loop.runFor(milliseconds(1));
  EXPECT_THAT(bluez.drain(), ElementsAre("stop", "monitor hci0"));
}

TEST_F(BluezCentralTest, AMonitorScansOnceItIsActivated) {
  bluez.answersItself = false;
  begin({BluezReach::there, {kMonitored}});
  bluez.answer();
  EXPECT_FALSE(isScanning());
  bluez.activate();
  EXPECT_TRUE(isScanning());
}

TEST_F(BluezCentralTest, MonitorsThatAreNeverActivatedGiveWayToDiscovery) {
  bluez.answersItself = false;
  begin({BluezReach::there, {kMonitored}});
  for (int attempt = 0; attempt < 2; ++attempt) {
    EXPECT_THAT(bluez.drain(), ElementsAre("monitor hci0"));
    bluez.answer();
    loop.runFor(milliseconds(2000));
    EXPECT_THAT(bluez.drain(), ElementsAre("stop"));
    bluez.answer();
  }
  EXPECT_THAT(bluez.drain(), ElementsAre("discover hci0"));
  bluez.answer();
  EXPECT_TRUE(isScanning());
  // A new daemon may do better.
  bluez.become({BluezReach::noDaemon, {}});
  bluez.become({BluezReach::there, {kMonitored}});
  manager->scanForPeripherals(kRepeats);
  loop.runFor(milliseconds(1000));
  EXPECT_THAT(bluez.drain(), ElementsAre("monitor hci0"));
}

TEST_F(BluezCentralTest, AReleasedMonitorIsRegisteredAnewNotFasterThanOnceASecond) {
  begin({BluezReach::there, {kMonitored}});
  bluez.drain();
  bluez.release();
  EXPECT_FALSE(isScanning());
  loop.runFor(milliseconds(999));
  EXPECT_THAT(bluez.drain(), IsEmpty());
  loop.runFor(milliseconds(1));
  EXPECT_THAT(bluez.drain(), ElementsAre("stop", "monitor hci0"));
  EXPECT_TRUE(isScanning());
  loop.runFor(milliseconds(5000));
  bluez.release();
  loop.runFor(Duration::zero());
  EXPECT_THAT(bluez.drain(), ElementsAre("stop", "monitor hci0"));
}

TEST_F(BluezCentralTest, FailuresAreTriedAgainWithGrowingPauses) {
  settings.betweenStarts = milliseconds(100);
  bluez.startGives = BluezOutcome::failed;
  begin();
  std::vector<Duration> times;
  while (loop.now() < milliseconds(10'000)) {
    if (!bluez.drain().empty()) times.push_back(loop.now());
    loop.runFor(milliseconds(1));
  }
  ASSERT_GE(times.size(), 6U);
  times.resize(6);
  EXPECT_THAT(times, ElementsAre(milliseconds(0), milliseconds(500), milliseconds(1500),
                                 milliseconds(3500), milliseconds(5500), milliseconds(7500)));
  EXPECT_EQ(listener.last(), CentralState::poweredOn);
}

TEST_F(BluezCentralTest, ARequestThatIsNotAnsweredYetHoldsUpTheNext) {
  bluez.answersItself = false;
  begin();
  manager->stopScan();
  loop.runFor(milliseconds(10'000));
  EXPECT_THAT(bluez.drain(), ElementsAre("discover hci0"));
  bluez.answer();
  loop.runFor(milliseconds(1500));
  EXPECT_THAT(bluez.drain(), ElementsAre("stop"));
}

TEST_F(BluezCentralTest, PowerThatGoesWhileAScanBeginsLeavesNothingBehind) {
  bluez.answersItself = false;
  begin();
  bluez.become({BluezReach::there, {kOff}});
  bluez.answer(BluezOutcome::failed);
  bluez.drain();
  loop.runFor(milliseconds(10'000));
  EXPECT_THAT(bluez.drain(), IsEmpty());
  bluez.become(kThere);
  manager->scanForPeripherals(kRepeats);
  EXPECT_THAT(bluez.drain(), ElementsAre("discover hci0"));
}

TEST_F(BluezCentralTest, AScanStaysOnItsAdapterWhileItCan) {
  begin({BluezReach::there, {kOff, kOther}});
  EXPECT_THAT(bluez.drain(), ElementsAre("discover hci1"));
  bluez.become({BluezReach::there, {kOn, kOther}});
  passWithShow(3);
  EXPECT_THAT(bluez.drain(), IsEmpty());
  bluez.become({BluezReach::there, {kOn}});
  loop.runFor(milliseconds(1000));
  EXPECT_THAT(bluez.drain(), ElementsAre("abandon", "discover hci0"));
  EXPECT_THAT(listener.states, ElementsAre(CentralState::poweredOn));
}

TEST_F(BluezCentralTest, WakingUpBeginsARunningScanAnewAtOnce) {
  begin();
  passWithShow(3);
  bluez.drain();
  bluez.wakeUp();
  loop.runFor(Duration::zero());
  EXPECT_THAT(bluez.drain(), ElementsAre("stop", "discover hci0"));
}

TEST_F(BluezCentralTest, LooksForADaemonWithGrowingPausesThatEndAtTwoSeconds) {
  bluez.lookFinds = {BluezReach::noBus, {}};
  begin({BluezReach::noBus, {}});
  std::vector<Duration> times;
  while (loop.now() < milliseconds(10'000)) {
    if (!bluez.drain().empty()) times.push_back(loop.now());
    loop.runFor(milliseconds(1));
  }
  EXPECT_THAT(times, ElementsAre(milliseconds(250), milliseconds(750), milliseconds(1750),
                                 milliseconds(3750), milliseconds(5750), milliseconds(7750),
                                 milliseconds(9750)));
}

TEST_F(BluezCentralTest, ADaemonThatIsNotThereIsWaitedForWithoutAWord) {
  begin({BluezReach::noDaemon, {}});
  loop.runFor(std::chrono::hours(1));
  EXPECT_THAT(bluez.drain(), IsEmpty());
}

TEST_F(BluezCentralTest, NothingIsAskedWhileNobodyWantsToHear) {
  begin();
  manager->stopScan();
  loop.runFor(milliseconds(2000));
  bluez.drain();
  const std::uint64_t turns = loop.turns();
  loop.runFor(std::chrono::hours(1));
  EXPECT_THAT(bluez.drain(), IsEmpty());
  EXPECT_EQ(loop.turns(), turns);
}

}  // namespace
}  // namespace halvora
