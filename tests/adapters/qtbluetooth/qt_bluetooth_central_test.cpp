// SPDX-License-Identifier: Apache-2.0
// The radio through Qt Bluetooth, against a scan that the test makes up: Qt's own needs a machine
// with a radio.
#include "adapters/qtbluetooth/qt_bluetooth_central.h"

#include <memory>
#include <new>
#include <span>
#include <stdexcept>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/virtual/virtual_run_loop.h"
#include "conformance/device_promises.h"
#include "tests/adapters/linux/bluetooth/central_listener.h"
#include "tests/engine/allocation_count.h"
#include "tests/support/passed_run_loop.h"

namespace halvora {
namespace {

constexpr std::uint16_t kShows = 0xC909;

class ScriptedScan final : public LowEnergyScan {
 public:
  void setListener(LowEnergyScanListener* listener) override { listener_ = listener; }
  CentralState state() const override { return state_; }
  void begin() override {
    ++begins;
    isOn = true;
    if (isRefused) become(CentralState::unauthorised);
    if (isRefused || failsAtOnce) finish();
  }
  void end() override { isOn = false; }

  void become(CentralState state) {
    if (std::exchange(state_, state) != state && listener_ != nullptr) {
      listener_->stateChanged(state);
    }
  }
  /// What Qt hands over: nothing without a scan.
  void tell(std::uint16_t company, std::span<const std::uint8_t> rest) {
    if (isOn && listener_ != nullptr) listener_->heard(company, rest);
  }
  void finish() {
    isOn = false;
    if (listener_ != nullptr) listener_->ended();
  }

  int begins = 0;
  bool isOn = false;
  bool failsAtOnce = false;
  /// By the system, for want of permission.
  bool isRefused = false;

 private:
  LowEnergyScanListener* listener_ = nullptr;
  CentralState state_ = CentralState::poweredOn;
};

/// Has no memory for a timer while that is said.
class ShortLoop final : public PassedRunLoop {
 public:
  ShortLoop() : PassedRunLoop(loop_) {}
  TimerId after(Duration delay, Task&& task) override {
    if (isShort) throw std::bad_alloc();
    return PassedRunLoop::after(delay, std::move(task));
  }
  void runFor(Duration duration) { loop_.runFor(duration); }

  bool isShort = false;

 private:
  VirtualRunLoop loop_;
};

struct World {
  ShortLoop loop;
  ScriptedScan scan;
  QtBluetoothCentral radio{loop, scan};
};

TEST(QtBluetooth, KeepsWhatTheConformanceSuiteAsksOfRadios) {
  const auto broken = conformance::checkRadio([] {
    auto world = std::make_shared<World>();
    World& its = *world;
    return conformance::RadioUnderTest{
        std::move(world), &its.radio, [&its] { its.loop.runFor(milliseconds(50)); },
        [&its](bool hasPower) {
          its.scan.become(hasPower ? CentralState::poweredOn : CentralState::poweredOff);
        },
        [&its](std::span<const std::uint8_t> packet) { its.scan.tell(kShows, packet.subspan(2)); }};
  });
  EXPECT_TRUE(broken.empty()) << conformance::textOf(broken);
}

class QtBluetoothScans : public testing::Test, protected World {
 protected:
  QtBluetoothScans() {
    manager = radio.makeManager(listener);
    loop.runFor(milliseconds(1));
  }
  void listen() { manager->scanForPeripherals({.allowDuplicates = true}); }

  CentralListener listener;
  std::unique_ptr<CentralManager> manager;
};

TEST_F(QtBluetoothScans, OneScanIsForAllAndEndsWithTheLast) {
  EXPECT_EQ(scan.begins, 0);
  listen();
  CentralListener other;
  auto second = radio.makeManager(other);
  second->scanForPeripherals({.allowDuplicates = true});
  EXPECT_EQ(scan.begins, 1);
  manager->stopScan();
  EXPECT_TRUE(scan.isOn);
  second.reset();
  EXPECT_FALSE(scan.isOn);
}

TEST_F(QtBluetoothScans, ARunningScanIsNotBegunAnew) {
  listen();
  for (int time = 0; time < 100; ++time) manager->restartScan({.allowDuplicates = true});
  EXPECT_EQ(scan.begins, 1);
}

TEST_F(QtBluetoothScans, OfOtherCompaniesAndOfWhatIsTooLongNothingIsHandedOn) {
  listen();
  scan.tell(0x004C, std::vector<std::uint8_t>{1, 2, 3});
  scan.tell(kShows, std::vector<std::uint8_t>(2000, 7));
  EXPECT_TRUE(listener.packets.empty());
  scan.tell(kShows, std::vector<std::uint8_t>{1, 2, 3});
  ASSERT_EQ(listener.packets.size(), 1U);
  EXPECT_EQ(listener.packets[0], (std::vector<std::uint8_t>{0x09, 0xC9, 1, 2, 3}));
}

TEST_F(QtBluetoothScans, AScanThatEndsByItselfIsBegunAnewLessAndLessOften) {
  scan.failsAtOnce = true;
  listen();
  EXPECT_EQ(scan.begins, 1);
  // After 1, 2, 4, 8, 16, 32 and 64 seconds.
  loop.runFor(milliseconds(999));
  EXPECT_EQ(scan.begins, 1);
  loop.runFor(milliseconds(1));
  EXPECT_EQ(scan.begins, 2);
  loop.runFor(milliseconds(126'000));
  EXPECT_EQ(scan.begins, 8);
  loop.runFor(milliseconds(640'000));
  EXPECT_EQ(scan.begins, 18);
  // What is heard ends the patience.
  scan.failsAtOnce = false;
  loop.runFor(milliseconds(64'000));
  ASSERT_TRUE(scan.isOn);
  scan.tell(kShows, std::vector<std::uint8_t>{1});
  scan.finish();
  loop.runFor(milliseconds(1000));
  EXPECT_TRUE(scan.isOn);
}

TEST_F(QtBluetoothScans, WithoutPowerNothingIsTriedAgain) {
  scan.failsAtOnce = true;
  listen();
  scan.become(CentralState::poweredOff);
  loop.runFor(milliseconds(600'000));
  EXPECT_EQ(scan.begins, 1);
}

TEST_F(QtBluetoothScans, ARefusalIsSaid) {
  EXPECT_EQ(radio.authorization(), BluetoothAuthorization::allowedAlways);
  scan.isRefused = true;
  listen();
  EXPECT_EQ(radio.authorization(), BluetoothAuthorization::denied);
  EXPECT_EQ(listener.last(), CentralState::unauthorised);
  EXPECT_FALSE(scan.isOn);
}

TEST_F(QtBluetoothScans, WhatWasRefusedIsTriedAgainLessAndLessOften) {
  scan.isRefused = true;
  listen();
  loop.runFor(milliseconds(999));
  EXPECT_EQ(scan.begins, 1);
  // After 1, 2, 4, 8, 16, 32 and 64 seconds.
  loop.runFor(milliseconds(126'001));
  EXPECT_EQ(scan.begins, 8);
  // The user has granted it; that shows in the first device that is found.
  scan.isRefused = false;
  loop.runFor(milliseconds(64'000));
  EXPECT_TRUE(scan.isOn);
  EXPECT_EQ(listener.last(), CentralState::unauthorised);
  scan.become(CentralState::poweredOn);
  EXPECT_EQ(listener.last(), CentralState::poweredOn);
  EXPECT_EQ(radio.authorization(), BluetoothAuthorization::allowedAlways);
  listen();
  EXPECT_TRUE(scan.isOn);
  scan.tell(kShows, std::vector<std::uint8_t>{1});
  EXPECT_EQ(listener.packets.size(), 1U);
}

TEST_F(QtBluetoothScans, ForNobodyNothingIsTriedAgain) {
  scan.isRefused = true;
  listen();
  manager.reset();
  loop.runFor(milliseconds(600'000));
  EXPECT_EQ(scan.begins, 1);
  // Whoever comes later has it tried.
  scan.isRefused = false;
  manager = radio.makeManager(listener);
  EXPECT_TRUE(scan.isOn);
  manager.reset();
  EXPECT_FALSE(scan.isOn);
}

TEST_F(QtBluetoothScans, WantOfMemoryReachesNeitherQtNorTheNextScan) {
  listen();
  loop.isShort = true;
  scan.finish();
  EXPECT_EQ(radio.failures(), 1U);
  loop.isShort = false;
  // As the engine does once a second.
  manager->restartScan({.allowDuplicates = true});
  EXPECT_EQ(scan.begins, 2);
  EXPECT_TRUE(scan.isOn);
}

TEST_F(QtBluetoothScans, ADelegateThatThrowsHarmsNoOther) {
  listen();
  listener.onPacket = [] { throw std::runtime_error("packet"); };
  listener.onState = [](CentralState) { throw std::runtime_error("state"); };
  CentralListener other;
  const auto second = radio.makeManager(other);
  loop.runFor(milliseconds(1));
  second->scanForPeripherals({.allowDuplicates = true});
  scan.tell(kShows, std::vector<std::uint8_t>{1});
  EXPECT_EQ(other.packets.size(), 1U);
  scan.become(CentralState::poweredOff);
  EXPECT_EQ(other.last(), CentralState::poweredOff);
  EXPECT_EQ(radio.failures(), 2U);
}

TEST_F(QtBluetoothScans, APacketTakesNothingFromTheHeap) {
  if (!countsAllocations()) GTEST_SKIP() << "a sanitizer owns the heap";
  struct Counter final : CentralManagerDelegate {
    void centralManagerDidUpdateState(CentralState /*state*/) override {}
    void didDiscoverPeripheral(const Advertisement& /*advertisement*/) override { ++packets; }
    int packets = 0;
  } counter;
  const auto counting = radio.makeManager(counter);
  loop.runFor(milliseconds(1));
  counting->scanForPeripherals({.allowDuplicates = true});
  const std::vector<std::uint8_t> packet(24, 1);
  std::uint64_t allocations = 0;
  {
    const AllocationCount count;
    for (int time = 0; time < 100; ++time) scan.tell(kShows, packet);
    allocations = count.allocations();
  }
  EXPECT_EQ(allocations, 0U);
  EXPECT_EQ(counter.packets, 100);
}

}  // namespace
}  // namespace halvora
