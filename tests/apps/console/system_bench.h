// SPDX-License-Identifier: Apache-2.0
// A Linux system of a test's own, on Qt's event loop: a bus that is the system's and the session's,
// with a fake of the Bluetooth daemon on it, and a transmitter in the air that repeats one look
// whenever somebody listens. Real time passes here; tests wait for what is to happen.
#pragma once

#include <QCoreApplication>
#include <QEventLoop>
#include <functional>
#include <string>

#include <gtest/gtest.h>

#include "adapters/qt/qt_descriptors.h"
#include "adapters/qt/qt_run_loop.h"
#include "engine/broadcast.h"
#include "tests/adapters/linux/bus/fake_bluez.h"
#include "tests/adapters/linux/bus/private_bus.h"
#include "tests/adapters/standard/temporary_folder.h"

namespace halvora {

class SystemBench : public testing::Test {
 protected:
  void SetUp() override {
    const bool isStarted = bus.start();
    if (bus.isMissing()) GTEST_SKIP() << "dbus-daemon is not installed";
    ASSERT_TRUE(isStarted);
  }

  /// The radio is there, and what is sent is heard by whoever scans.
  void send(const Broadcast& look) {
    sent = look;
    bluez.appear();
    bluez.addAdapter("hci0", true);
    air = Timer(loop, loop.every(milliseconds(50), [this] {
      if (!bluez.isDiscovering()) return;
      ++sent.sequence;
      const BroadcastBytes packet = encodeBroadcast(sent);
      bluez.advertise("C00000000001", {packet.begin() + 2, packet.end()});
    }));
  }
  /// False if it has not come true within a time that only a failure reaches.
  bool waitFor(const std::function<bool()>& isTrue) {
    const Duration latest = loop.now() + std::chrono::seconds(60);
    const Timer ticks(loop, loop.every(milliseconds(10), [] {}));
    while (!isTrue()) {
      if (loop.now() > latest) return false;
      QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
  }

  TemporaryFolder folder;
  PrivateBus bus;
  QtRunLoop loop;
  QtDescriptors descriptors;
  FakeBluez bluez{loop, descriptors, bus.address()};
  Broadcast sent;
  Timer air;
};

}  // namespace halvora
