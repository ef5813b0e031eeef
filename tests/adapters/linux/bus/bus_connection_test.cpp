// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/bus/bus_connection.h"

#include <functional>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "adapters/linux/bus/bluez_monitor.h"
#include "adapters/linux/bus/bus_name.h"
#include "adapters/linux/poll_run_loop.h"
#include "tests/adapters/linux/bus/garbage_bus.h"
#include "tests/adapters/linux/bus/private_bus.h"
#include "tests/adapters/linux/bus/stranger.h"

namespace halvora {
namespace {

using testing::ElementsAre;

constexpr const char* kName = "org.example.Service";
constexpr const char* kSignal = "type='signal',interface='org.example.Service'";

class BusConnections : public testing::Test {
 protected:
  void SetUp() override {
    const bool isStarted = bus.start();
    if (bus.isMissing()) GTEST_SKIP() << "dbus-daemon is not installed";
    ASSERT_TRUE(isStarted);
    open();
  }
  void open() {
    connection.open(bus.address(), [this] { ++lost; });
  }
  bool waitFor(const std::function<bool()>& isTrue) {
    return loop.runUntil(isTrue, std::chrono::seconds(30));
  }
  std::string ownName() {
    const char* name = nullptr;
    EXPECT_GE(sd_bus_get_unique_name(connection.bus(), &name), 0);
    return name != nullptr ? name : "";
  }
  void emit() {
    ASSERT_GE(sd_bus_emit_signal(connection.bus(), "/", kName, "Said", ""), 0);
    connection.sent();
  }
  BusMessage askForId() {
    sd_bus_message* message = nullptr;
    sd_bus_message_new_method_call(connection.bus(), &message, "org.freedesktop.DBus", "/",
                                   "org.freedesktop.DBus", "GetId");
    return BusMessage(message);
  }

  PrivateBus bus;
  PollRunLoop loop;
  BusConnection connection{loop, loop};
  int lost = 0;
};

TEST_F(BusConnections, WhatASignalsHandlerThrowsIsCountedAndCostsTheConnection) {
  const BusSlot slot = connection.match(kSignal, [](sd_bus_message*) { throw std::bad_alloc(); });
  emit();
  ASSERT_TRUE(waitFor([&] { return lost == 1; }));
  EXPECT_EQ(connection.failures(), 1U);
  EXPECT_EQ(connection.bus(), nullptr);
}

TEST_F(BusConnections, WhatAnAnswersHandlerThrowsIsCountedAndCostsTheConnection) {
  const BusSlot slot = connection.call(askForId(), BusConnection::kUsualTime,
                                       [](sd_bus_message*) { throw std::string("anything"); });
  ASSERT_TRUE(waitFor([&] { return lost == 1; }));
  EXPECT_EQ(connection.failures(), 1U);
  // The next connection is as good as new.
  open();
  bool isAnswered = false;
  const BusSlot next = connection.call(askForId(), BusConnection::kUsualTime,
                                       [&](sd_bus_message*) { isAnswered = true; });
  ASSERT_TRUE(waitFor([&] { return isAnswered; }));
  EXPECT_EQ(lost, 1);
  EXPECT_EQ(connection.failures(), 1U);
}

TEST_F(BusConnections, AHandlerThatHasThrownIsNotCalledAgainBeforeThat) {
  int calls = 0;
  const BusSlot slot = connection.match(kSignal, [&](sd_bus_message*) {
    ++calls;
    throw std::bad_alloc();
  });
  for (int signal = 0; signal < 100; ++signal) emit();
  ASSERT_TRUE(waitFor([&] { return lost == 1; }));
  EXPECT_EQ(calls, 1);
}

TEST_F(BusConnections, AHandlerMayDropItsOwnSlotAndGoOn) {
  const auto kept = std::make_shared<int>(7);
  BusSlot slot;
  int seen = 0;
  slot = connection.match(kSignal, [&, kept](sd_bus_message*) {
    slot.reset();
    seen = *kept;
  });
  emit();
  ASSERT_TRUE(waitFor([&] { return seen == 7; }));
  EXPECT_EQ(kept.use_count(), 1);
}

TEST_F(BusConnections, ASlotThatOutlivesItsConnectionFreesWhatItKept) {
  const auto kept = std::make_shared<int>(7);
  BusSlot slot = connection.match(kSignal, [kept](sd_bus_message*) {});
  connection.close();
  EXPECT_EQ(kept.use_count(), 2);
  slot.reset();
  EXPECT_EQ(kept.use_count(), 1);
}

TEST_F(BusConnections, ARuleThatTheLibraryDoesNotTakeCostsTheConnection) {
  EXPECT_EQ(connection.match("no rule at all", [](sd_bus_message*) {}), nullptr);
  EXPECT_TRUE(waitFor([&] { return lost == 1; }));
  EXPECT_EQ(connection.failures(), 0U);
}

TEST_F(BusConnections, ACallThatCannotBeSentCostsTheConnection) {
  EXPECT_EQ(connection.call(nullptr, BusConnection::kUsualTime, [](sd_bus_message*) {}), nullptr);
  EXPECT_TRUE(waitFor([&] { return lost == 1; }));
}

TEST_F(BusConnections, WhatCannotBeToldCostsTheConnection) {
  connection.tell(nullptr);
  EXPECT_TRUE(waitFor([&] { return lost == 1; }));
}

TEST_F(BusConnections, ABusThatSaysAnythingButMessagesIsLost) {
  GarbageBus garbage(loop);
  connection.open(garbage.address(), [this] { ++lost; });
  bool isAnswered = false;
  const BusSlot slot = connection.call(askForId(), BusConnection::kUsualTime,
                                       [&](sd_bus_message*) { isAnswered = true; });
  ASSERT_TRUE(waitFor([&] { return lost == 1; }));
  EXPECT_FALSE(isAnswered);
  EXPECT_EQ(connection.bus(), nullptr);
}

// An owner, "" for nobody.
struct Owners {
  std::vector<std::string> all;
  NameChanged noting() {
    return [this](std::string_view, std::string_view now) { all.emplace_back(now); };
  }
};

TEST_F(BusConnections, WhoHasANameIsToldByTheBusAndByNobodyElse) {
  Owners owners;
  const BusSlot slot = watchName(connection, kName, owners.noting());
  Stranger stranger(loop, bus.address());
  ASSERT_TRUE(stranger.isThrough(ownName()));
  for (const char* member : {"NameOwnerChanged", "NameLost"}) {
    stranger.signal(ownName(), "/org/freedesktop/DBus", "org.freedesktop.DBus", member,
                    [](sd_bus_message* m) { sd_bus_message_append(m, "sss", kName, "", ":1.99"); });
  }
  ASSERT_TRUE(stranger.isThrough(ownName()));
  EXPECT_TRUE(owners.all.empty());
  BusConnection service(loop, loop);
  service.open(bus.address(), [] {});
  ASSERT_GE(sd_bus_request_name(service.bus(), kName, 0), 0);
  service.sent();
  ASSERT_TRUE(waitFor([&] { return owners.all.size() == 1; }));
  const char* own = nullptr;
  ASSERT_GE(sd_bus_get_unique_name(service.bus(), &own), 0);
  EXPECT_EQ(owners.all.front(), own);
  service.close();
  ASSERT_TRUE(waitFor([&] { return owners.all.size() == 2; }));
  EXPECT_EQ(owners.all.back(), "");
}

TEST_F(BusConnections, WhoHasANameAlreadyCanBeAskedFor) {
  std::optional<std::string> owner;
  const auto note = [&](std::string_view now) { owner = now; };
  const BusSlot nobody = askForOwner(connection, kName, note);
  const BusSlot itself = askForOwner(connection, ownName(), note);
  ASSERT_TRUE(waitFor([&] { return owner.has_value(); }));
  EXPECT_EQ(*owner, ownName());
}

// What a monitor's owner does when it has no memory.
class ThrowingCalls final : public BluezMonitorCalls {
 public:
  bool isFromDaemon(sd_bus_message*) const override { return true; }
  void monitorActivated() override { throw std::bad_alloc(); }
  void monitorReleased() override { throw std::bad_alloc(); }
  void deviceFound(std::string_view) override { throw std::bad_alloc(); }
  void callFailed() noexcept override { ++failures; }
  int failures = 0;
};

TEST_F(BusConnections, WhatAMonitorsOwnerThrowsIsCountedAndTheCallAnswered) {
  ThrowingCalls calls;
  BluezMonitor monitor(calls);
  ASSERT_TRUE(monitor.show(connection.bus()));
  Stranger daemon(loop, bus.address());
  for (const char* member : {"Activate", "Release"}) {
    EXPECT_TRUE(daemon.call(ownName(), "/org/halvora/monitors/show",
                            "org.bluez.AdvertisementMonitor1", member));
  }
  EXPECT_EQ(calls.failures, 2);
  EXPECT_FALSE(daemon.call(ownName(), "/org/halvora/monitors/show",
                           "org.bluez.AdvertisementMonitor1", "DeviceFound"));
  EXPECT_EQ(calls.failures, 2);
  EXPECT_EQ(lost, 0);
}

}  // namespace
}  // namespace halvora
