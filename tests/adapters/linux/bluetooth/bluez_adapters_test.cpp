// SPDX-License-Identifier: Apache-2.0
// Machines with several adapters: which of them is scanned on.
#include <algorithm>
#include <string>

#include <gmock/gmock.h>

#include "tests/adapters/linux/bluetooth/scripted_central.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const BluezScene kTwo{BluezReach::there, {kOn, kOther}};
constexpr auto kFails = BluezOutcome::failed;
constexpr auto kRefuses = BluezOutcome::refused;

class BluezAdapters : public BluezCentralTest {
 protected:
  std::string adapter() const { return central->diagnostics().adapter; }
  // How often a scan was begun on it since the last look at the requests.
  static std::size_t startsOn(const std::string& adapter,
                              const std::vector<std::string>& requests) {
    return static_cast<std::size_t>(std::ranges::count(requests, "discover " + adapter));
  }
};

TEST_F(BluezAdapters, ABadAdapterThatIsPoweredGivesWayToAGoodOneAndItIsToldWhich) {
  bluez.startGivesOn["hci0"] = kFails;
  begin(kTwo);
  EXPECT_THAT(bluez.drain(), ElementsAre("discover hci0"));
  EXPECT_FALSE(isScanning());
  EXPECT_EQ(adapter(), "");
  loop.runFor(milliseconds(1000));
  EXPECT_THAT(bluez.drain(), ElementsAre("discover hci1"));
  EXPECT_TRUE(isScanning());
  EXPECT_EQ(adapter(), "hci1");
  EXPECT_THAT(central->diagnostics().adapters, ElementsAre("hci0", "hci1"));
  // Ten minutes of a show: nothing is gained by looking at the other one.
  passWithShow(600);
  EXPECT_THAT(bluez.drain(), IsEmpty());
  EXPECT_EQ(listener.packets.size(), 6000U);
  EXPECT_THAT(listener.states, ElementsAre(CentralState::poweredOn));
}

TEST_F(BluezAdapters, InTenMinutesOfSilenceTheBadOneIsTriedLessAndLess) {
  bluez.startGivesOn["hci0"] = kFails;
  begin(kTwo);
  std::vector<Duration> tries;
  Duration deaf{};
  for (; loop.now() < std::chrono::minutes(10); loop.runFor(milliseconds(100))) {
    if (startsOn("hci0", bluez.drain()) > 0) tries.push_back(loop.now());
    if (!isScanning()) deaf += milliseconds(100);
  }
  EXPECT_LE(tries.size(), 17U);
  EXPECT_GE(tries.size(), 12U);
  EXPECT_GE(tries.back() - tries.end()[-2], std::chrono::minutes(1));
  EXPECT_LE(deaf, milliseconds(20'000));
}

TEST_F(BluezAdapters, ThatAllFailAreTriedInTurnEachWithItsOwnPauses) {
  settings.betweenStarts = milliseconds(100);
  bluez.startGives = kFails;
  begin(kTwo);
  std::vector<std::string> tries;
  for (; loop.now() < milliseconds(4000); loop.runFor(milliseconds(100))) {
    for (const std::string& request : bluez.drain()) {
      tries.push_back(std::to_string(loop.now() / milliseconds(1)) + " " + request);
    }
  }
  EXPECT_THAT(tries, ElementsAre("0 discover hci0", "100 discover hci1", "500 discover hci0",
                                 "600 discover hci1", "1500 discover hci0", "1600 discover hci1",
                                 "3500 discover hci0", "3600 discover hci1"));
}

TEST_F(BluezAdapters, OfThreeThatFailNoneIsPassedOver) {
  bluez.startGives = kFails;
  begin({BluezReach::there, {kOn, kOther, {"hci2", true, false}}});
  loop.runFor(std::chrono::minutes(1));
  const auto requests = bluez.drain();
  EXPECT_NEAR(static_cast<double>(startsOn("hci0", requests)), 20, 1);
  EXPECT_NEAR(static_cast<double>(startsOn("hci1", requests)), 20, 1);
  EXPECT_NEAR(static_cast<double>(startsOn("hci2", requests)), 20, 1);
}

TEST_F(BluezAdapters, ASubstituteIsLeftInPeaceWhileTheShowsAdapterHasNoPower) {
  const BluezAdapter other{"hci1", true, true};
  begin({BluezReach::there, {kMonitored, other}});
  passWithShow(2);
  bluez.become({BluezReach::there, {{"hci0", false, true}, other}});
  loop.runFor(milliseconds(1000));
  bluez.drain();
  loop.runFor(milliseconds(8000));
  EXPECT_THAT(bluez.drain(), IsEmpty());
}

TEST_F(BluezAdapters, TheShowsAdapterIsReturnedToWhenItsSubstituteHearsNothing) {
  begin(kTwo);
  passWithShow(5);
  bluez.startGivesOn["hci0"] = kFails;
  bluez.wakeUp();
  loop.runFor(milliseconds(1000));
  EXPECT_EQ(adapter(), "hci1");
  bluez.startGivesOn.clear();
  bluez.drain();
  loop.runFor(milliseconds(1990));
  EXPECT_EQ(startsOn("hci0", bluez.drain()), 0U);
  loop.runFor(milliseconds(10));
  EXPECT_THAT(bluez.drain(), ElementsAre("stop", "discover hci0"));
  EXPECT_EQ(adapter(), "hci0");
  // It is the better one, and stayed on in silence.
  loop.runFor(std::chrono::minutes(1));
  EXPECT_EQ(startsOn("hci1", bluez.drain()), 0U);
}

TEST_F(BluezAdapters, ASubstituteThatHearsTheShowIsStayedOnInLaterSilence) {
  bluez.startGivesOn["hci0"] = kFails;
  begin(kTwo);
  loop.runFor(milliseconds(1000));
  passWithShow(2);
  bluez.startGivesOn.clear();
  bluez.drain();
  loop.runFor(std::chrono::minutes(10));
  EXPECT_EQ(startsOn("hci0", bluez.drain()), 0U);
  // Until it fails in turn.
  bluez.startGivesOn["hci1"] = kFails;
  loop.runFor(milliseconds(3000));
  EXPECT_EQ(adapter(), "hci0");
}

TEST_F(BluezAdapters, APowerThatIsBackIsReturnedToInSilence) {
  begin(kTwo);
  passWithShow(2);
  bluez.become({BluezReach::there, {kOff, kOther}});
  loop.runFor(milliseconds(1000));
  EXPECT_EQ(adapter(), "hci1");
  bluez.become(kTwo);
  loop.runFor(milliseconds(3000));
  EXPECT_EQ(adapter(), "hci0");
}

TEST_F(BluezAdapters, ABetterOneIsReturnedToUnderMonitorsAsSoon) {
  const BluezAdapter other{"hci1", true, true};
  begin({BluezReach::there, {kMonitored, other}});
  passWithShow(2);
  bluez.startGivesOn["hci0"] = kFails;
  bluez.wakeUp();
  loop.runFor(milliseconds(1000));
  EXPECT_EQ(adapter(), "hci1");
  bluez.startGivesOn.clear();
  loop.runFor(milliseconds(2000));
  EXPECT_EQ(adapter(), "hci0");
}

TEST_F(BluezAdapters, OneThatIsPluggedInAgainIsTriedAsIfItWereNew) {
  bluez.startGives = kFails;
  begin();
  loop.runFor(milliseconds(10'000));
  bluez.become({BluezReach::there, {}});
  bluez.startGives = BluezOutcome::done;
  loop.runFor(milliseconds(1000));
  bluez.become(kThere);
  manager->scanForPeripherals(kRepeats);
  loop.runFor(Duration::zero());
  EXPECT_TRUE(isScanning());
}

TEST_F(BluezAdapters, OneThatRefusesIsNoRefusalWhileAnotherMayAgree) {
  bluez.startGivesOn["hci0"] = kRefuses;
  begin(kTwo);
  loop.runFor(milliseconds(1000));
  EXPECT_EQ(adapter(), "hci1");
  EXPECT_THAT(listener.states, ElementsAre(CentralState::poweredOn));
  EXPECT_EQ(central->authorization(), BluetoothAuthorization::allowedAlways);
}

TEST_F(BluezAdapters, ARefusalOfAllIsOneUntilAnyAgrees) {
  bluez.startGives = kRefuses;
  begin(kTwo);
  loop.runFor(milliseconds(1000));
  EXPECT_EQ(listener.last(), CentralState::unauthorised);
  bluez.drain();
  loop.runFor(milliseconds(9000));
  const auto requests = bluez.drain();
  EXPECT_EQ(startsOn("hci0", requests), 3U);
  EXPECT_EQ(startsOn("hci1", requests), 3U);
  bluez.startGivesOn["hci1"] = BluezOutcome::done;
  loop.runFor(milliseconds(3000));
  EXPECT_EQ(listener.last(), CentralState::poweredOn);
}

TEST_F(BluezAdapters, MonitorsThatComeToNothingOnOneAreStillAskedForOnAnother) {
  const BluezAdapter other{"hci1", true, true};
  bluez.startGivesOn["hci0"] = kFails;
  begin({BluezReach::there, {kMonitored, other}});
  loop.runFor(milliseconds(1000));
  EXPECT_THAT(bluez.drain(), ElementsAre("monitor hci0", "monitor hci1"));
}

TEST_F(BluezAdapters, TheOneThatIsNamedIsTheOnlyOne) {
  settings.adapter = "hci1";
  bluez.startGives = kFails;
  begin(kTwo);
  loop.runFor(std::chrono::minutes(1));
  const auto requests = bluez.drain();
  EXPECT_EQ(startsOn("hci0", requests), 0U);
  EXPECT_GT(startsOn("hci1", requests), 20U);
  bluez.startGives = BluezOutcome::done;
  loop.runFor(milliseconds(2000));
  EXPECT_EQ(adapter(), "hci1");
}

TEST_F(BluezAdapters, TheOneThatIsNamedIsWaitedFor) {
  settings.adapter = "hci1";
  begin(kThere);
  EXPECT_EQ(listener.last(), CentralState::unsupported);
  loop.runFor(std::chrono::hours(1));
  EXPECT_THAT(bluez.drain(), IsEmpty());
  EXPECT_THAT(central->diagnostics().adapters, ElementsAre("hci0"));
  bluez.become({BluezReach::there, {kOn, {"hci1", false, false}}});
  EXPECT_EQ(listener.last(), CentralState::poweredOff);
  bluez.become(kTwo);
  EXPECT_EQ(listener.last(), CentralState::poweredOn);
  manager->scanForPeripherals(kRepeats);
  loop.runFor(Duration::zero());
  EXPECT_THAT(bluez.drain(), ElementsAre("discover hci1"));
  // When it goes, nothing takes its place.
  bluez.become(kThere);
  loop.runFor(milliseconds(5000));
  EXPECT_EQ(listener.last(), CentralState::unsupported);
  EXPECT_THAT(bluez.drain(), ElementsAre("abandon"));
}

TEST_F(BluezAdapters, ANameIsTheWholeOfAPathsLastPart) {
  settings.adapter = "hci1";
  begin({BluezReach::there, {{"/org/bluez/hci10", true, false}, {"/org/bluez/hci1", true, false}}});
  EXPECT_THAT(bluez.drain(), ElementsAre("discover /org/bluez/hci1"));
  EXPECT_EQ(adapter(), "hci1");
}

}  // namespace
}  // namespace halvora
