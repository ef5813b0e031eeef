// SPDX-License-Identifier: Apache-2.0
#include "adapters/virtual/virtual_bluetooth.h"

#include <array>
#include <functional>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/virtual/virtual_run_loop.h"

namespace halvora {
namespace {

constexpr std::array<std::uint8_t, 3> kPacket{0x09, 0xC9, 0x01};
constexpr ScanOptions kDuplicates{.allowDuplicates = true};

class Listener final : public CentralManagerDelegate {
 public:
  void centralManagerDidUpdateState(CentralState state) override {
    states.push_back(state);
    if (onState) onState();
  }
  void didDiscoverPeripheral(const Advertisement& advertisement) override {
    ++packets;
    if (advertisement.manufacturerData) {
      bytes.assign(advertisement.manufacturerData->begin(), advertisement.manufacturerData->end());
    }
    if (onPacket) onPacket();
  }

  std::vector<CentralState> states;
  std::vector<std::uint8_t> bytes;
  int packets = 0;
  std::function<void()> onState;
  std::function<void()> onPacket;
};

class RadioTest : public testing::Test {
 protected:
  VirtualRunLoop loop_;
  VirtualBluetooth radio_{loop_};
  Listener listener_;
};

TEST_F(RadioTest, AManagerReportsItsStateInTheNextTurn) {
  const auto manager = radio_.makeManager(listener_);
  EXPECT_TRUE(listener_.states.empty());
  EXPECT_EQ(manager->state(), CentralState::poweredOn);
  loop_.runUntil(Duration::zero());
  EXPECT_EQ(listener_.states, std::vector{CentralState::poweredOn});
  loop_.runUntil(milliseconds(1000));
  EXPECT_EQ(listener_.states.size(), 1U);
}

TEST_F(RadioTest, AManagerThatIsGoneReportsNothing) {
  radio_.makeManager(listener_).reset();
  loop_.runUntil(milliseconds(10));
  radio_.setState(CentralState::poweredOff);
  EXPECT_TRUE(listener_.states.empty());
  EXPECT_FALSE(radio_.isScanning());
}

TEST_F(RadioTest, AChangeOfStateIsReportedAtOnceAndOnlyAChange) {
  const auto manager = radio_.makeManager(listener_);
  loop_.runUntil(Duration::zero());
  radio_.setState(CentralState::poweredOff);
  radio_.setState(CentralState::poweredOff);
  radio_.setState(CentralState::poweredOn);
  EXPECT_EQ(listener_.states, (std::vector{CentralState::poweredOn, CentralState::poweredOff,
                                           CentralState::poweredOn}));
}

TEST_F(RadioTest, IsHeardOnlyWhileAManagerScans) {
  EXPECT_FALSE(radio_.advertise(kPacket));
  const auto manager = radio_.makeManager(listener_);
  EXPECT_FALSE(radio_.advertise(kPacket));
  manager->scanForPeripherals(kDuplicates);
  EXPECT_TRUE(radio_.advertise(kPacket));
  EXPECT_EQ(listener_.bytes, std::vector<std::uint8_t>(kPacket.begin(), kPacket.end()));
  manager->stopScan();
  EXPECT_FALSE(radio_.advertise(kPacket));
  EXPECT_EQ(listener_.packets, 1);
}

TEST_F(RadioTest, IsHeardOnlyWhilePoweredOnAndALostScanDoesNotComeBack) {
  const auto manager = radio_.makeManager(listener_);
  manager->scanForPeripherals(kDuplicates);
  radio_.setState(CentralState::poweredOff);
  EXPECT_FALSE(radio_.advertise(kPacket));
  radio_.setState(CentralState::poweredOn);
  EXPECT_FALSE(radio_.advertise(kPacket));
  manager->restartScan(kDuplicates);
  EXPECT_TRUE(radio_.advertise(kPacket));
}

TEST_F(RadioTest, AScanAskedForWithoutPowerNeverBegins) {
  for (const CentralState state :
       {CentralState::unknown, CentralState::resetting, CentralState::unsupported,
        CentralState::unauthorised, CentralState::poweredOff}) {
    radio_.setState(state);
    const auto manager = radio_.makeManager(listener_);
    manager->scanForPeripherals(kDuplicates);
    radio_.setState(CentralState::poweredOn);
    EXPECT_FALSE(radio_.isScanning());
  }
}

TEST_F(RadioTest, AnAdvertisementMayHaveNoManufacturerData) {
  const auto manager = radio_.makeManager(listener_);
  manager->scanForPeripherals(kDuplicates);
  EXPECT_TRUE(radio_.advertise(Advertisement{}));
  EXPECT_EQ(listener_.packets, 1);
  EXPECT_TRUE(listener_.bytes.empty());
}

TEST_F(RadioTest, EveryManagerHearsAPacket) {
  Listener other;
  const auto first = radio_.makeManager(listener_);
  const auto second = radio_.makeManager(other);
  second->scanForPeripherals(kDuplicates);
  radio_.advertise(kPacket);
  EXPECT_EQ(listener_.packets, 0);
  first->scanForPeripherals(kDuplicates);
  radio_.advertise(kPacket);
  EXPECT_EQ(listener_.packets, 1);
  EXPECT_EQ(other.packets, 2);
}

TEST_F(RadioTest, AManagerThatGoesWithinAPacketTakesItFromNobodyElse) {
  Listener other;
  Listener last;
  auto first = radio_.makeManager(listener_);
  auto second = radio_.makeManager(other);
  const auto third = radio_.makeManager(last);
  for (CentralManager* manager : {first.get(), second.get(), third.get()}) {
    manager->scanForPeripherals(kDuplicates);
  }
  listener_.onPacket = [&] { first.reset(); };
  EXPECT_TRUE(radio_.advertise(kPacket));
  EXPECT_EQ(other.packets, 1);
  EXPECT_EQ(last.packets, 1);
  other.onPacket = [&] { second.reset(); };
  EXPECT_TRUE(radio_.advertise(kPacket));
  EXPECT_EQ(last.packets, 2);
  EXPECT_TRUE(radio_.isScanning());
  EXPECT_TRUE(radio_.advertise(kPacket));
  EXPECT_EQ(std::vector({listener_.packets, other.packets, last.packets}), (std::vector{1, 2, 3}));
}

TEST_F(RadioTest, ADelegateMayGiveUpAnotherManagerWhenThePowerGoes) {
  Listener other;
  const auto first = radio_.makeManager(listener_);
  auto second = radio_.makeManager(other);
  loop_.runUntil(Duration::zero());
  listener_.onState = [&second] { second.reset(); };
  radio_.setState(CentralState::poweredOff);
  EXPECT_EQ(listener_.states.back(), CentralState::poweredOff);
  EXPECT_EQ(other.states, std::vector{CentralState::poweredOn});
}

TEST_F(RadioTest, WritesDownWhatWasAskedOfIt) {
  const auto manager = radio_.makeManager(listener_);
  manager->scanForPeripherals(kDuplicates);
  manager->restartScan(kDuplicates);
  manager->stopScan();
  EXPECT_EQ(radio_.log.drain(), (std::vector{RadioAct::managerMade, RadioAct::scanStarted,
                                             RadioAct::scanRestarted, RadioAct::scanStopped}));
  EXPECT_TRUE(radio_.log.entries.empty());
  radio_.log.isKept = false;
  manager->stopScan();
  EXPECT_TRUE(radio_.log.entries.empty());
}

TEST_F(RadioTest, PermissionIsWhatItWasSetTo) {
  EXPECT_EQ(radio_.authorization(), BluetoothAuthorization::allowedAlways);
  radio_.setAuthorization(BluetoothAuthorization::denied);
  EXPECT_EQ(radio_.authorization(), BluetoothAuthorization::denied);
}

TEST(CentralManager, ARestartIsAStopAndAScanWhereAnAdapterSaysNothingElse) {
  class Plain final : public CentralManager {
   public:
    CentralState state() const override { return CentralState::poweredOn; }
    void scanForPeripherals(const ScanOptions& options) override {
      acts.push_back(options.allowDuplicates ? 2 : 1);
    }
    void stopScan() override { acts.push_back(0); }
    std::vector<int> acts;
  };
  Plain manager;
  manager.restartScan(kDuplicates);
  EXPECT_EQ(manager.acts, (std::vector<int>{0, 2}));
}

}  // namespace
}  // namespace halvora
