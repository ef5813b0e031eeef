// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/bus/bus.h"

#include <cstdlib>
#include <memory>
#include <string>

#include "adapters/virtual/virtual_run_loop.h"
#include "tests/adapters/linux/services/services_test.h"

namespace halvora {
namespace {

constexpr BusObject kBus{"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus"};

TEST(UnreachableBus, IsLookedForOnceASecondAtMost) {
  VirtualRunLoop loop;
  NoDescriptors none;
  int losses = 0;
  Bus bus(loop, none, "unix:path=");
  const BusObserver observer(
      bus, {[] { ADD_FAILURE() << "there is no such bus"; }, [&losses] { ++losses; }});
  for (int look = 0; look < 1000; ++look) {
    EXPECT_EQ(bus.reach(), nullptr);
    loop.runFor(milliseconds(10));
  }
  EXPECT_EQ(losses, 10);
  BusCall call;
  EXPECT_FALSE(call.send(bus, bus.newCall(kBus, "GetId"), milliseconds(1),
                         [](sd_bus_message*) { ADD_FAILURE() << "there is nobody to answer"; }));
  EXPECT_FALSE(call.isPending());
}

class SharedBus : public ServicesTest {
 protected:
  int opened = 0;
  int lost = 0;
  std::unique_ptr<Bus> asked;
  std::unique_ptr<BusObserver> observer;

  void connect() {
    asked = std::make_unique<Bus>(loop, loop, bus.address());
    observer = std::make_unique<BusObserver>(
        *asked, BusObserver::Events{[this] { ++opened; }, [this] { ++lost; }});
  }
};

TEST_F(SharedBus, IsConnectedToWithTheFirstCallAndAgainWhenItIsBack) {
  connect();
  EXPECT_EQ(opened, 0);
  ASSERT_NE(asked->reach(), nullptr);
  ASSERT_NE(asked->reach(), nullptr);
  EXPECT_EQ(opened, 1);
  const BusObserver later(*asked, {[this] { ++opened; }, [] {}});
  EXPECT_EQ(opened, 2);
  bus.stop();
  ASSERT_TRUE(waitFor([&] { return lost == 1; }));
  ASSERT_TRUE(bus.start());
  EXPECT_TRUE(waitFor([&] { return asked->reach() != nullptr; }));
  EXPECT_EQ(opened, 4);
}

TEST_F(SharedBus, ACallThatIsDroppedIsNotHeardOf) {
  connect();
  BusCall call;
  const auto fail = [](sd_bus_message*) { ADD_FAILURE() << "it was dropped"; };
  ASSERT_TRUE(call.send(*asked, asked->newCall(kBus, "GetId"), milliseconds(5000), fail));
  call.drop();
  EXPECT_FALSE(call.isPending());
  settle();
}

TEST_F(SharedBus, ACallThatNobodyAnswersEndsInItsTime) {
  FakeService mute(loop, loop, bus.address(), "org.example.Mute");
  mute.isHanging = true;
  mute.appear();
  connect();
  BusCall call;
  bool isEnded = false;
  const BusObject object{"org.example.Mute", "/", "org.example.Mute"};
  ASSERT_TRUE(call.send(*asked, asked->newCall(object, "Speak"), milliseconds(20),
                        [&isEnded](sd_bus_message* reply) { isEnded = isError(reply); }));
  EXPECT_TRUE(waitFor([&] { return isEnded; }));
  EXPECT_FALSE(call.isPending());
}

TEST_F(SharedBus, ItsLossEndsAllCallsBeforeItIsToldOf) {
  FakeService mute(loop, loop, bus.address(), "org.example.Mute");
  mute.isHanging = true;
  mute.appear();
  connect();
  BusCall calls[3];
  int ended = 0;
  const BusObject object{"org.example.Mute", "/", "org.example.Mute"};
  const auto end = [&](sd_bus_message* reply) {
    EXPECT_TRUE(isError(reply));
    EXPECT_EQ(lost, 0);
    ++ended;
    // Whichever of these two is told first drops the other.
    if (!calls[0].isPending() || !calls[1].isPending()) {
      calls[0].drop();
      calls[1].drop();
    }
  };
  for (BusCall& call : calls) {
    ASSERT_TRUE(call.send(*asked, asked->newCall(object, "Speak"), milliseconds(60'000), end));
  }
  ASSERT_TRUE(waitForCalls(mute, 3));
  bus.stop();
  ASSERT_TRUE(waitFor([&] { return lost == 1; }));
  EXPECT_EQ(ended, 2);
  for (const BusCall& call : calls) EXPECT_FALSE(call.isPending());
}

TEST(BusAddressesOfTheEnvironment, ASessionIsFoundByItsAddressOrItsFolder) {
  const auto kept = [](const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? std::string(value) : std::string();
  };
  const std::string address = kept("DBUS_SESSION_BUS_ADDRESS");
  const std::string folder = kept("XDG_RUNTIME_DIR");
  setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=one", 1);
  setenv("XDG_RUNTIME_DIR", "two", 1);
  EXPECT_EQ(BusAddresses::ofEnvironment().session, "unix:path=one");
  unsetenv("DBUS_SESSION_BUS_ADDRESS");
  EXPECT_EQ(BusAddresses::ofEnvironment().session, "unix:path=two/bus");
  unsetenv("XDG_RUNTIME_DIR");
  EXPECT_EQ(BusAddresses::ofEnvironment().session.rfind("unix:path=/run/user/", 0), 0U);
  EXPECT_EQ(BusAddresses::ofEnvironment().system, "");
  if (!address.empty()) setenv("DBUS_SESSION_BUS_ADDRESS", address.c_str(), 1);
  if (!folder.empty()) setenv("XDG_RUNTIME_DIR", folder.c_str(), 1);
}

}  // namespace
}  // namespace halvora
