// SPDX-License-Identifier: Apache-2.0
// Services of a system on one private bus, which is the system's and the session's. Real time
// passes here; tests wait for what is to happen, with a bound that only a failure reaches.
#pragma once

#include <functional>
#include <string>

#include <gtest/gtest.h>

#include "adapters/linux/bus/bus.h"
#include "adapters/linux/poll_run_loop.h"
#include "tests/adapters/linux/bus/private_bus.h"
#include "tests/adapters/linux/services/fake_service.h"

namespace halvora {

/// For what never gets as far as a bus.
class NoDescriptors final : public Descriptors {
 public:
  WatchId watch(int, DescriptorEvents, Task&&) override { return 0; }
  void forget(WatchId) override {}
};

class ServicesTest : public testing::Test {
 protected:
  void SetUp() override {
    const bool isStarted = bus.start();
    if (bus.isMissing()) GTEST_SKIP() << "dbus-daemon is not installed";
    ASSERT_TRUE(isStarted);
  }

  bool waitFor(const std::function<bool()>& isTrue) {
    // Not all that is waited for wakes the loop.
    const Timer looks(loop, loop.every(milliseconds(10), [] {}));
    return loop.runUntil(isTrue, std::chrono::seconds(30));
  }
  bool waitForCalls(const FakeService& service, std::size_t count) {
    return waitFor([&] { return service.calls.size() >= count; });
  }

  /// Asks the bus who is there; what was sent to it before has been handed on by then.
  bool hasOwner(const char* name) {
    static constexpr BusObject kBus{"org.freedesktop.DBus", "/org/freedesktop/DBus",
                                    "org.freedesktop.DBus"};
    Bus asked(loop, loop, bus.address());
    BusCall call;
    int isThere = 0;
    call.send(asked, asked.newCall(kBus, "NameHasOwner", "s", name), milliseconds(20'000),
              [&isThere](sd_bus_message* reply) { sd_bus_message_read(reply, "b", &isThere); });
    EXPECT_TRUE(waitFor([&] { return !call.isPending(); }));
    return isThere != 0;
  }
  /// Lets what was sent come, and its answers, and what is sent because of them.
  void settle() {
    for (int round = 0; round < 8; ++round) hasOwner("org.freedesktop.DBus");
  }

  PrivateBus bus;
  PollRunLoop loop;
  /// Shared by all that a test asks; both are the one.
  Buses buses{loop, loop, {bus.address(), bus.address()}};
};

}  // namespace halvora
