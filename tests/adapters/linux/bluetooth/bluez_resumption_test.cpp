// SPDX-License-Identifier: Apache-2.0
// However long a show is not heard, and why: the cause's end brings it back within five seconds.
#include <gmock/gmock.h>

#include "tests/adapters/linux/bluetooth/scripted_central.h"

namespace halvora {
namespace {

using testing::Contains;
using testing::IsEmpty;
using testing::Not;

// What an engine does with a central: one scan a second after it began, and a restart each second
// while the radio is on.
class Resumption : public BluezCentralTest {
 protected:
  void beginAsEngine() {
    central.emplace(loop, bluez, settings);
    bluez.become(kThere);
    manager = central->makeManager(listener);
    cycle_ = {loop, loop.every(milliseconds(1000), [this] {
                if (listener.last() == CentralState::poweredOn) manager->restartScan(kRepeats);
              })};
    loop.runFor(milliseconds(2000));
    ASSERT_TRUE(hears());
    // Causes begin at any time between two cycles.
    loop.runFor(milliseconds(137));
  }
  bool hears() {
    const std::size_t before = listener.packets.size();
    if (isScanning()) bluez.advertise();
    return listener.packets.size() > before;
  }
  // A minute without, then back: how long until the show is heard again.
  Duration timeToHear() {
    const Duration back = loop.now();
    while (!hears() && loop.now() < back + milliseconds(60'000)) loop.runFor(milliseconds(1));
    return loop.now() - back;
  }
  void pass() {
    loop.runFor(milliseconds(60'000));
    EXPECT_FALSE(isScanning());
  }
  static constexpr Duration kLongest = milliseconds(5000);

 private:
  Timer cycle_;
};

TEST_F(Resumption, WhenPowerComesBack) {
  beginAsEngine();
  bluez.become({BluezReach::there, {kOff}});
  pass();
  bluez.become(kThere);
  EXPECT_LE(timeToHear(), kLongest);
}

TEST_F(Resumption, WhenTheAdapterIsPluggedInAgain) {
  beginAsEngine();
  bluez.become({BluezReach::there, {}});
  pass();
  bluez.become(kThere);
  EXPECT_LE(timeToHear(), kLongest);
}

TEST_F(Resumption, WhenTheDaemonIsBack) {
  beginAsEngine();
  bluez.lookFinds = {BluezReach::noDaemon, {}};
  bluez.become({BluezReach::noDaemon, {}});
  pass();
  bluez.become(kThere);
  EXPECT_LE(timeToHear(), kLongest);
}

TEST_F(Resumption, WhenTheDaemonAnswersAgainWhichNobodyTells) {
  beginAsEngine();
  bluez.lookFinds = {BluezReach::silent, {}};
  bluez.become({BluezReach::silent, {}});
  pass();
  bluez.lookFinds = kThere;
  EXPECT_LE(timeToHear(), kLongest);
}

TEST_F(Resumption, WhenTheBusIsBackWhichNobodyTells) {
  beginAsEngine();
  bluez.lookFinds = {BluezReach::noBus, {}};
  bluez.become({BluezReach::noBus, {}});
  pass();
  bluez.lookFinds = kThere;
  EXPECT_LE(timeToHear(), kLongest);
}

TEST_F(Resumption, WhenThePolicyAllowsItWhichNobodyTells) {
  beginAsEngine();
  bluez.lookFinds = {BluezReach::refused, {}};
  bluez.become({BluezReach::refused, {}});
  pass();
  EXPECT_EQ(listener.last(), CentralState::unauthorised);
  bluez.lookFinds = kThere;
  EXPECT_LE(timeToHear(), kLongest);
}

TEST_F(Resumption, WhenTheDaemonLetsUsScanWhichNobodyTells) {
  beginAsEngine();
  bluez.startGives = BluezOutcome::refused;
  pass();
  EXPECT_EQ(listener.last(), CentralState::unauthorised);
  EXPECT_EQ(central->authorization(), BluetoothAuthorization::denied);
  listener.states.clear();
  loop.runFor(milliseconds(60'000));
  EXPECT_THAT(listener.states, IsEmpty());
  listener.states.push_back(CentralState::unauthorised);
  bluez.startGives = BluezOutcome::done;
  EXPECT_LE(timeToHear(), kLongest);
}

// What is said in the gap of a needless restart is not heard.
TEST_F(Resumption, AScanThatIsAllowedAtLastHasItsTimeToHear) {
  bluez.startGives = BluezOutcome::refused;
  listener.onState = [this](CentralState state) {
    if (manager && state == CentralState::poweredOn) manager->scanForPeripherals(kRepeats);
  };
  begin();
  loop.runFor(milliseconds(10'000));
  ASSERT_EQ(listener.last(), CentralState::unauthorised);
  bluez.startGives = BluezOutcome::done;
  for (int step = 0; step < 500 && listener.last() != CentralState::poweredOn; ++step) {
    loop.runFor(milliseconds(10));
  }
  ASSERT_EQ(listener.last(), CentralState::poweredOn);
  bluez.drain();
  loop.runFor(settings.silence - milliseconds(50));
  EXPECT_THAT(bluez.drain(), Not(Contains("stop")));
}

TEST_F(Resumption, WhenScansSucceedAgain) {
  beginAsEngine();
  bluez.startGives = BluezOutcome::failed;
  pass();
  bluez.startGives = BluezOutcome::done;
  EXPECT_LE(timeToHear(), kLongest);
}

TEST_F(Resumption, WhenMonitorsAreReplacedByANewDaemons) {
  beginAsEngine();
  bluez.become({BluezReach::there, {kMonitored}});
  bluez.lookFinds = {BluezReach::noDaemon, {}};
  bluez.become({BluezReach::noDaemon, {}});
  pass();
  bluez.become({BluezReach::there, {kMonitored}});
  EXPECT_LE(timeToHear(), kLongest);
  EXPECT_THAT(bluez.drain(), Contains("monitor hci0"));
}

}  // namespace
}  // namespace halvora
