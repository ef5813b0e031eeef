// SPDX-License-Identifier: Apache-2.0
// A central on a private bus with the fake daemon. Real time passes here; tests wait for what is to
// happen, with a bound that only a failure reaches.
#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "adapters/linux/bluetooth/bluez_central.h"
#include "adapters/linux/bus/bluez_daemon.h"
#include "adapters/linux/bus/bus_connection.h"
#include "adapters/linux/poll_run_loop.h"
#include "tests/adapters/linux/bluetooth/central_listener.h"
#include "tests/adapters/linux/bus/fake_bluez.h"
#include "tests/adapters/linux/bus/private_bus.h"

namespace halvora {

class BluezBusTest : public testing::Test {
 protected:
  /// What follows the company's id in a packet, and the packet as it is on the air.
  using Bytes = FakeBluez::Bytes;
  static constexpr const char* kShow = "C00000000001";
  static constexpr const char* kForeign = "C0FFEE000001";
  static constexpr std::uint16_t kForeignCompany = 0x004C;
  static constexpr ScanOptions kRepeats{.allowDuplicates = true};

  static Bytes rest(std::uint8_t number) { return {0x01, 0x02, number}; }
  static Bytes packet(std::uint8_t number) { return {0x09, 0xC9, 0x01, 0x02, number}; }

  void SetUp() override {
    const bool isStarted = bus.start();
    if (bus.isMissing()) GTEST_SKIP() << "dbus-daemon is not installed";
    ASSERT_TRUE(isStarted);
  }
  void TearDown() override {
    manager.reset();
    central.reset();
  }

  /// A central with a manager, on a daemon that may be there or not.
  void makeCentral() {
    central = std::make_unique<BluezCentral>(loop, daemon, settings);
    manager = central->makeManager(listener);
  }
  bool waitFor(const std::function<bool()>& isTrue) {
    return loop.runUntil(isTrue, std::chrono::seconds(30));
  }
  bool waitForState(CentralState state) {
    return waitFor([&] { return listener.last() == state; });
  }
  /// Scans as soon as there is power, and goes on when it comes back, as the engine does.
  void scanWheneverPossible() {
    listener.onState = [this](CentralState state) {
      if (state == CentralState::poweredOn) manager->scanForPeripherals(kRepeats);
    };
  }
  /// Discovers, or has its monitor activated.
  bool waitForScan() {
    return waitFor([&] { return central->diagnostics().isScanning; });
  }
  bool waitForPackets(std::size_t count) {
    return waitFor([&] { return listener.packets.size() >= count; });
  }
  /// The daemon with one powered adapter, and a scan on it.
  void scan(bool hasMonitors = false) {
    bluez.appear();
    bluez.addAdapter("hci0", true, hasMonitors);
    scanWheneverPossible();
    makeCentral();
    ASSERT_TRUE(waitForScan());
  }
  /// Somebody else, who goes on for as long as the answer is kept, has looked around before us and
  /// seen a transmitter of the show.
  std::unique_ptr<BusConnection> lookAroundBefore(bool hasMonitors = false) {
    bluez.appear();
    bluez.addAdapter("hci0", true, hasMonitors);
    auto other = std::make_unique<BusConnection>(loop, loop);
    other->open(bus.address(), [] {});
    sd_bus_call_method_async(other->bus(), nullptr, "org.bluez", "/org/bluez/hci0",
                             "org.bluez.Adapter1", "StartDiscovery", nullptr, nullptr, "");
    other->sent();
    EXPECT_TRUE(waitFor([&] { return bluez.isDiscovering(); }));
    bluez.advertise(kShow, rest(1));
    return other;
  }
  std::size_t calls(const std::string& method) const {
    return static_cast<std::size_t>(std::count(bluez.calls.begin(), bluez.calls.end(), method));
  }

  PrivateBus bus;
  PollRunLoop loop;
  FakeBluez bluez{loop, loop, bus.address()};
  BluezDaemon daemon{loop, loop, bus.address()};
  BluezSettings settings;
  CentralListener listener;
  std::unique_ptr<BluezCentral> central;
  std::unique_ptr<CentralManager> manager;
};

}  // namespace halvora
