// SPDX-License-Identifier: Apache-2.0
// A central in virtual time, on a daemon that is a script.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/linux/bluetooth/bluez_central.h"
#include "adapters/virtual/virtual_run_loop.h"
#include "tests/adapters/linux/bluetooth/central_listener.h"
#include "tests/adapters/linux/bluetooth/scripted_bluez.h"

namespace halvora {

inline constexpr ScanOptions kRepeats{.allowDuplicates = true};
inline const BluezAdapter kOn{"hci0", true, false};
inline const BluezAdapter kOff{"hci0", false, false};
inline const BluezAdapter kMonitored{"hci0", true, true};
inline const BluezAdapter kOther{"hci1", true, false};
inline const BluezScene kThere{BluezReach::there, {kOn}};

class BluezCentralTest : public testing::Test {
 protected:
  // A central whose daemon is as `scene` says, with a manager that scans if it may.
  void begin(const BluezScene& scene = kThere) {
    central.emplace(loop, bluez, settings);
    bluez.become(scene);
    manager = central->makeManager(listener);
    loop.runFor(Duration::zero());
    manager->scanForPeripherals(kRepeats);
    loop.runFor(Duration::zero());
  }
  void end() {
    manager.reset();
    central.reset();
  }
  void TearDown() override { end(); }

  // Time passes with a show in the air, ten packets a second.
  void passWithShow(long long seconds) {
    for (long long packet = 0; packet < seconds * 10; ++packet) {
      loop.runFor(milliseconds(100));
      bluez.advertise();
    }
  }
  // The same under a controller that reports a device once, as a scan begins. When it was heard.
  std::vector<Duration> passWithFirstReports(long long seconds) {
    std::vector<Duration> heard;
    Duration report = loop.now();
    for (long long step = 0; step < seconds * 100; ++step) {
      loop.runFor(milliseconds(10));
      for (const std::string& request : bluez.drain()) {
        if (request.starts_with("discover")) report = loop.now() + milliseconds(100);
      }
      if (loop.now() != report) continue;
      bluez.advertise();
      heard.push_back(loop.now());
    }
    return heard;
  }
  bool isScanning() const { return central->diagnostics().isScanning; }

  VirtualRunLoop loop;
  ScriptedBluez bluez{loop};
  BluezSettings settings;
  CentralListener listener;
  std::optional<BluezCentral> central;
  std::unique_ptr<CentralManager> manager;
};

}  // namespace halvora
