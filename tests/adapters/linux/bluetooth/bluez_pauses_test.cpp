// SPDX-License-Identifier: Apache-2.0
// What a scan counts and when it forgets it again: pauses after failures, looks, monitors, haste.
#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <utility>

#include <gmock/gmock.h>

#include "tests/adapters/linux/bluetooth/scripted_central.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const BluezScene kMonitors{BluezReach::there, {kMonitored}};

class BluezPauses : public BluezCentralTest {};

TEST_F(BluezPauses, AManagerThatGoesWhileItScansEndsTheScanAndHearsNothingMore) {
  begin();
  CentralListener second;
  auto other = central->makeManager(second);
  other->scanForPeripherals(kRepeats);
  bluez.drain();
  manager.reset();
  bluez.advertise();
  EXPECT_THAT(listener.packets, IsEmpty());
  EXPECT_EQ(second.packets.size(), 1U);
  passWithShow(3);
  EXPECT_THAT(bluez.drain(), IsEmpty());
  other.reset();
  loop.runFor(milliseconds(1499));
  EXPECT_THAT(bluez.drain(), IsEmpty());
  loop.runFor(milliseconds(1));
  EXPECT_THAT(bluez.drain(), ElementsAre("stop"));
}

TEST_F(BluezPauses, ADelegateThatThrowsIsCountedAndHarmsNobody) {
  begin();
  CentralListener second;
  const auto other = central->makeManager(second);
  loop.runFor(Duration::zero());
  other->scanForPeripherals(kRepeats);
  listener.onPacket = [] { throw std::runtime_error("a host's"); };
  listener.onState = [](CentralState) { throw std::runtime_error("a host's"); };
  bluez.advertise();
  bluez.advertise();
  EXPECT_EQ(second.packets.size(), 2U);
  EXPECT_EQ(listener.packets.size(), 2U);
  EXPECT_EQ(central->diagnostics().delegateFailures, 2U);
  bluez.become({BluezReach::there, {kOff}});
  EXPECT_EQ(second.last(), CentralState::poweredOff);
  EXPECT_EQ(central->diagnostics().delegateFailures, 3U);
}

TEST_F(BluezPauses, ADelegateMayThrowAtItsFirstReport) {
  central.emplace(loop, bluez);
  bluez.become(kThere);
  listener.onState = [](CentralState) { throw std::runtime_error("a host's"); };
  manager = central->makeManager(listener);
  loop.runFor(Duration::zero());
  EXPECT_EQ(central->diagnostics().delegateFailures, 1U);
  EXPECT_EQ(listener.last(), CentralState::poweredOn);
}

TEST_F(BluezPauses, LooksForADaemonBeginWithAShortPauseAgainOnceItWasThere) {
  bluez.lookFinds = {BluezReach::noBus, {}};
  begin({BluezReach::noBus, {}});
  loop.runFor(milliseconds(10'000));
  bluez.become(kThere);
  bluez.drain();
  bluez.become({BluezReach::noBus, {}});
  loop.runFor(milliseconds(250));
  EXPECT_THAT(bluez.drain(), ElementsAre("look"));
}

TEST_F(BluezPauses, ADaemonThatHasComeIsNotLookedForAnyMore) {
  begin({BluezReach::noBus, {}});
  bluez.become(kThere);
  loop.runFor(milliseconds(1000));
  EXPECT_THAT(bluez.drain(), testing::Not(testing::Contains("look")));
}

TEST_F(BluezPauses, ANewDaemonIsAskedAtOnceHoweverOftenTheOldOneFailed) {
  settings.betweenStarts = milliseconds(1);
  bluez.startGives = BluezOutcome::failed;
  begin();
  // The third failure, which the next start is to follow after two seconds.
  loop.runFor(milliseconds(1500));
  EXPECT_EQ(bluez.drain().size(), 3U);
  loop.runFor(milliseconds(10));
  bluez.become({BluezReach::noDaemon, {}});
  bluez.become(kThere);
  manager->scanForPeripherals(kRepeats);
  loop.runFor(milliseconds(1));
  EXPECT_THAT(bluez.drain(), ElementsAre("discover hci0"));
  // And its first failure is a first one.
  loop.runFor(milliseconds(500));
  EXPECT_THAT(bluez.drain(), ElementsAre("discover hci0"));
}

TEST_F(BluezPauses, AfterASuccessTheNextFailureIsAFirstOne) {
  settings.betweenStarts = milliseconds(1);
  settings.silence = std::chrono::hours(1);
  bluez.startGives = BluezOutcome::failed;
  begin();
  loop.runFor(milliseconds(3400));
  bluez.startGives = BluezOutcome::done;
  loop.runFor(milliseconds(100));
  ASSERT_TRUE(isScanning());
  loop.runFor(milliseconds(1));
  bluez.drain();
  bluez.startGives = BluezOutcome::failed;
  bluez.wakeUp();
  loop.runFor(Duration::zero());
  EXPECT_THAT(bluez.drain(), ElementsAre("stop", "discover hci0"));
  loop.runFor(milliseconds(499));
  EXPECT_THAT(bluez.drain(), IsEmpty());
  loop.runFor(milliseconds(1));
  EXPECT_THAT(bluez.drain(), ElementsAre("discover hci0"));
}

TEST_F(BluezPauses, AScanThatIsAllowedAgainGoesOnUntilAnEngineMayHaveTakenItUp) {
  bluez.startGives = BluezOutcome::refused;
  begin();
  loop.runFor(milliseconds(8999));
  ASSERT_EQ(listener.last(), CentralState::unauthorised);
  bluez.startGives = BluezOutcome::done;
  loop.runFor(milliseconds(1));
  ASSERT_EQ(listener.last(), CentralState::poweredOn);
  bluez.drain();
  loop.runFor(milliseconds(1400));
  EXPECT_THAT(bluez.drain(), IsEmpty());
  // Who has heard something has no reason to begin anew.
  bluez.advertise();
  manager->scanForPeripherals(kRepeats);
  bluez.advertise();
  EXPECT_EQ(listener.packets.size(), 1U);
  EXPECT_THAT(bluez.drain(), IsEmpty());
}

TEST_F(BluezPauses, AnActivatedMonitorForgivesTheFailuresBeforeIt) {
  bluez.answersItself = false;
  begin(kMonitors);
  // One that is never activated, one that is, one that is never again.
  for (const bool isActivated : {false, true, false}) {
    EXPECT_THAT(bluez.drain(), ElementsAre("monitor hci0"));
    bluez.answer();
    if (isActivated) bluez.activate();
    loop.runFor(milliseconds(isActivated ? 10'000 : 2000));
    EXPECT_THAT(bluez.drain(), ElementsAre("stop"));
    bluez.answer();
  }
  EXPECT_THAT(bluez.drain(), ElementsAre("monitor hci0"));
}

TEST_F(BluezPauses, MonitorsThatAreReleasedBeforeTheyWereActivatedGiveWayToDiscovery) {
  bluez.answersItself = false;
  begin(kMonitors);
  for (int attempt = 0; attempt < 2; ++attempt) {
    EXPECT_THAT(bluez.drain(), ElementsAre("monitor hci0"));
    bluez.answer();
    bluez.release();
    loop.runFor(milliseconds(1000));
    EXPECT_THAT(bluez.drain(), ElementsAre("stop"));
    bluez.answer();
  }
  EXPECT_THAT(bluez.drain(), ElementsAre("discover hci0"));
}

TEST_F(BluezPauses, MonitorsThatAreReleasedAfterTheyWereActivatedAreRegisteredAgain) {
  begin(kMonitors);
  for (int round = 0; round < 5; ++round) {
    loop.runFor(milliseconds(1000));
    bluez.release();
    loop.runFor(milliseconds(1000));
  }
  EXPECT_THAT(bluez.drain(), testing::Contains("monitor hci0").Times(6));
}

TEST_F(BluezPauses, AReleaseAfterAnActivationIsNoFailure) {
  bluez.answersItself = false;
  begin(kMonitors);
  bluez.answer();
  bluez.activate();
  bluez.release();
  loop.runFor(milliseconds(1000));
  bluez.answer();
  // One that is never activated is the first failure.
  bluez.answer();
  loop.runFor(milliseconds(2000));
  bluez.drain();
  bluez.answer();
  EXPECT_THAT(bluez.drain(), ElementsAre("monitor hci0"));
}

TEST_F(BluezPauses, WhoDoesNotListenAnywayKeepsNoScanAlive) {
  begin();
  bluez.drain();
  manager->stopScan();
  loop.runFor(milliseconds(1000));
  central->makeManager(listener).reset();
  loop.runFor(milliseconds(499));
  EXPECT_THAT(bluez.drain(), IsEmpty());
  loop.runFor(milliseconds(1));
  EXPECT_THAT(bluez.drain(), ElementsAre("stop"));
}

TEST_F(BluezPauses, WithoutPowerNothingIsWaitedFor) {
  begin();
  bluez.become({BluezReach::there, {kOff}});
  loop.runFor(Duration::zero());
  const std::uint64_t turns = loop.turns();
  loop.runFor(std::chrono::hours(1));
  EXPECT_EQ(loop.turns(), turns);
}

TEST_F(BluezPauses, OnlyReportsOfTheFirstSecondMakeHaste) {
  for (const auto& [late, pause] : {std::pair{1000, 600}, {1001, 1000}}) {
    SCOPED_TRACE(late);
    begin();
    loop.runFor(milliseconds(late));
    bluez.advertise();
    loop.runFor(milliseconds(2000));
    EXPECT_THAT(bluez.drain(), ElementsAre("discover hci0", "stop", "discover hci0"));
    loop.runFor(milliseconds(pause - 1));
    EXPECT_THAT(bluez.drain(), IsEmpty());
    loop.runFor(milliseconds(1));
    EXPECT_THAT(bluez.drain(), testing::Contains("stop"));
    end();
  }
}

TEST_F(BluezPauses, HasteLastsForTwoSecondsOfSilence) {
  begin();
  passWithFirstReports(10);
  bluez.drain();
  while (bluez.drain().empty()) loop.runFor(milliseconds(10));
  loop.runFor(milliseconds(100));
  bluez.advertise();
  // After 0.6, 1.2 and 1.8 s; the run that then ends was silent for too long.
  loop.runFor(milliseconds(1990));
  EXPECT_THAT(bluez.drain(), testing::Contains("discover hci0").Times(3));
  loop.runFor(milliseconds(700));
  EXPECT_THAT(bluez.drain(), testing::Not(testing::Contains("discover hci0")));
}

TEST_F(BluezPauses, AReportLateInARunEndsTheHaste) {
  begin();
  passWithFirstReports(10);
  // Until a run begins.
  bluez.drain();
  while (bluez.drain().empty()) loop.runFor(milliseconds(10));
  for (int report = 0; report < 3; ++report) {
    loop.runFor(milliseconds(400));
    bluez.advertise();
  }
  bluez.drain();
  loop.runFor(milliseconds(1990));
  EXPECT_THAT(bluez.drain(), IsEmpty());
  loop.runFor(milliseconds(10));
  EXPECT_THAT(bluez.drain(), ElementsAre("stop", "discover hci0"));
}

TEST_F(BluezPauses, AMonitorOnAnAdapterThatLostItsPowerGivesWayAtOnceToAnAdapterThatHasIt) {
  begin(kMonitors);
  passWithShow(3);
  bluez.drain();
  bluez.become({BluezReach::there, {{"hci0", false, true}, kOther}});
  loop.runFor(Duration::zero());
  EXPECT_THAT(bluez.drain(), ElementsAre("stop", "discover hci1"));
}

// How often the daemon is asked to scan in two minutes of silence.
class BluezStartLimit : public BluezPauses {
 protected:
  std::uint64_t startsInTwoMinutes() {
    begin();
    loop.runFor(std::chrono::minutes(2));
    return central->diagnostics().starts;
  }
};

TEST_F(BluezStartLimit, WithoutOneSilenceBeginsAScanEverySecond) {
  EXPECT_EQ(startsInTwoMinutes(), 120U);
}

TEST_F(BluezStartLimit, WithOneAScanGoesOnUntilAnotherMayBegin) {
  settings.startLimit = {5, milliseconds(30'000)};
  EXPECT_EQ(startsInTwoMinutes(), 21U);
  EXPECT_TRUE(isScanning());
}

TEST_F(BluezStartLimit, FailuresCountToo) {
  settings.startLimit = {5, milliseconds(30'000)};
  bluez.startGives = BluezOutcome::failed;
  EXPECT_EQ(startsInTwoMinutes(), 21U);
}

}  // namespace
}  // namespace halvora
