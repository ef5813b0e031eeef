// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/services/sleep_watch.h"

#include <optional>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include "adapters/linux/services/owned_descriptor.h"
#include "tests/adapters/linux/bus/stranger.h"
#include "tests/adapters/linux/services/services_test.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kPath = "/org/freedesktop/login1";
constexpr const char* kManager = "org.freedesktop.login1.Manager";

struct SleepWatches : ServicesTest {
  SleepWatches() {
    login.answers["org.freedesktop.login1.Manager.Inhibit"] = [this](sd_bus_message* call) {
      int ends[2];
      if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) return -1;
      granted = OwnedDescriptor(ends[0]);
      grantedNumber = ends[0];
      const OwnedDescriptor given(ends[1]);
      return sd_bus_reply_method_return(call, "h", ends[1]);
    };
  }
  void watch() {
    sleep.emplace(
        loop, buses.system, "com.example.host", [this](bool isAsleep) { told.push_back(isAsleep); },
        SleepSettings{.delay = milliseconds(1), .pause = milliseconds(1)});
  }
  bool waitUntilWaitedFor() {
    return waitFor([&] { return sleep->isWaitedFor(); });
  }
  /// The other end of what was granted reads as ended when all of it are closed.
  bool isGrantClosed() const {
    char byte = 0;
    return read(grantedNumber, &byte, 1) == 0;
  }
  void say(bool isAsleep) {
    login.signal(kPath, kManager, "PrepareForSleep", isAsleep);
    settle();
  }

  FakeService login{loop, loop, bus.address(), "org.freedesktop.login1"};
  OwnedDescriptor granted;
  int grantedNumber = -1;
  std::vector<bool> told;
  std::optional<SleepWatch> sleep;
};

TEST_F(SleepWatches, AsksAgainWhereADelayIsRefused) {
  const auto grant = login.answers["org.freedesktop.login1.Manager.Inhibit"];
  int refusals = 2;
  login.answers["org.freedesktop.login1.Manager.Inhibit"] = [&](sd_bus_message* call) {
    return refusals-- > 0 ? sd_bus_reply_method_errorf(call, SD_BUS_ERROR_LIMITS_EXCEEDED, "later")
                          : grant(call);
  };
  login.appear();
  watch();
  EXPECT_TRUE(waitUntilWaitedFor());
  EXPECT_EQ(login.calls.size(), 3U);
}

TEST_F(SleepWatches, TellsOfSleepAndHoldsTheMachineForAMoment) {
  login.appear();
  watch();
  ASSERT_TRUE(waitUntilWaitedFor());
  EXPECT_THAT(login.calls, ElementsAre("Inhibit(sleep, com.example.host, "
                                       "Gives the screen and the torch back, delay)"));
  EXPECT_FALSE(isGrantClosed());
  say(true);
  EXPECT_THAT(told, ElementsAre(true));
  ASSERT_TRUE(waitFor([&] { return isGrantClosed(); })) << "the machine may sleep";
  say(false);
  EXPECT_THAT(told, ElementsAre(true, false));
  ASSERT_TRUE(waitUntilWaitedFor());
  EXPECT_EQ(login.calls.size(), 2U);
}

TEST_F(SleepWatches, ADaemonThatComesLaterIsHeard) {
  watch();
  settle();
  login.appear();
  ASSERT_TRUE(waitUntilWaitedFor());
  say(true);
  EXPECT_THAT(told, ElementsAre(true));
}

TEST_F(SleepWatches, ADaemonThatDoesNotWaitIsHeardToo) {
  login.answers.clear();
  login.appear();
  watch();
  ASSERT_TRUE(waitForCalls(login, 1));
  say(true);
  EXPECT_THAT(told, ElementsAre(true));
  EXPECT_FALSE(sleep->isWaitedFor());
}

TEST_F(SleepWatches, ADaemonThatDiesInItsSleepLeavesNobodyAsleep) {
  login.appear();
  watch();
  ASSERT_TRUE(waitUntilWaitedFor());
  say(true);
  login.die();
  ASSERT_TRUE(waitFor([&] { return told.size() == 2; }));
  EXPECT_FALSE(told.back());
}

TEST_F(SleepWatches, ABusThatGoesLeavesNobodyAsleep) {
  login.appear();
  watch();
  ASSERT_TRUE(waitUntilWaitedFor());
  say(true);
  bus.stop();
  ASSERT_TRUE(waitFor([&] { return told.size() == 2; }));
  EXPECT_FALSE(told.back());
}

TEST_F(SleepWatches, AStrangerIsNotBelieved) {
  login.appear();
  watch();
  ASSERT_TRUE(waitUntilWaitedFor());
  Stranger stranger(loop, bus.address());
  stranger.signal(login.caller, kPath, kManager, "PrepareForSleep",
                  [](sd_bus_message* message) { sd_bus_message_append(message, "b", 1); });
  ASSERT_TRUE(stranger.isThrough(login.caller));
  EXPECT_THAT(told, IsEmpty());
  stranger.sayGone(login.caller, "org.freedesktop.login1");
  ASSERT_TRUE(stranger.isThrough(login.caller));
  say(true);
  EXPECT_THAT(told, ElementsAre(true)) << "the daemon is still believed";
}

TEST_F(SleepWatches, ASignalWithoutAWordIsNone) {
  login.appear();
  watch();
  ASSERT_TRUE(waitUntilWaitedFor());
  login.signal(kPath, kManager, "PrepareForShutdown", true);
  settle();
  EXPECT_THAT(told, IsEmpty());
}

}  // namespace
}  // namespace halvora
