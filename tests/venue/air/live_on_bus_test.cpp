// SPDX-License-Identifier: Apache-2.0
// `halvora live` as a process, on a private bus with the fake daemon: what is on an adapter's air
// when a player dies, and when it is ended.
#include <algorithm>
#include <csignal>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "adapters/linux/poll_run_loop.h"
#include "engine/broadcast.h"
#include "tests/adapters/linux/bus/fake_bluez.h"
#include "tests/adapters/linux/bus/private_bus.h"
#include "tests/apps/halvora/live_process.h"
#include "tests/apps/halvora/tool_runner.h"
#include "venue/air/system_transmitter.h"

namespace halvora {
namespace {

using testing::Contains;
using testing::Not;

class LiveOnBus : public testing::Test {
 protected:
  void SetUp() override {
    const bool isStarted = bus.start();
    if (bus.isMissing()) GTEST_SKIP() << "dbus-daemon is not installed";
    ASSERT_TRUE(isStarted);
    bluez.appear();
    bluez.addAdapter("hci0", true);
  }
  LiveProcessSetup player(std::vector<std::string> more = {}) const {
    std::vector<std::string> words{file, "--air", "hci0", "--journal", journal, "--control", "-"};
    words.insert(words.end(), more.begin(), more.end());
    return {.words = std::move(words),
            .makeAdvertiser = [address = bus.address()](RunLoop& runLoop, Descriptors& watched) {
              return makeSystemAdvertiser(runLoop, watched, address);
            }};
  }
  // The daemon has its turns meanwhile.
  bool waitFor(LiveProcess& process, const std::function<bool()>& isSo) {
    return process.waitFor([&] { return loop.runUntil(isSo, milliseconds(5)); });
  }
  bool waitForPlace(LiveProcess& process) {
    return waitFor(process, [&] { return std::filesystem::exists(journal + ".place"); });
  }
  int numberOnAir() const {
    if (bluez.aired.empty()) return 0;
    return decodeBroadcast(bluez.aired.back()).sequence;
  }

  TestFolder folder;
  const std::string journal = (folder.path() / "j").string();
  const std::string file = folder.write(
      "show.yaml",
      "application: 1\ntransmitter: 3\ncues:\n- {name: One, look: {mode: 1, speed: 9}}\n");
  PrivateBus bus;
  PollRunLoop loop;
  FakeBluez bluez{loop, loop, bus.address()};
};

TEST_F(LiveOnBus, WhoStoodByAdvertisesTheLookOfThePlayerThatWasKilled) {
  LiveProcess first(player());
  ASSERT_TRUE(waitForPlace(first));
  LiveProcess second(player({"--standby"}));
  ASSERT_TRUE(waitFor(second, [&] { return second.hasSaid("stands by"); }));
  first.tell("go");
  ASSERT_TRUE(waitFor(first, [&] { return numberOnAir() == 1; }));
  // It is written down a moment after it is on the air.
  ASSERT_TRUE(waitFor(
      first, [&] { return contentsOf(journal + ".place").find("One") != std::string::npos; }));
  EXPECT_EQ(std::ranges::count(bluez.calls, "RegisterAdvertisement"), 1);
  first.signal(SIGKILL);
  ASSERT_TRUE(waitFor(second, [&] { return numberOnAir() > 1; }));
  const Broadcast packet = decodeBroadcast(bluez.aired.back());
  EXPECT_EQ(packet.speed, 9);
  EXPECT_EQ(packet.transmitter, 3);
  EXPECT_EQ(packet.sequence, 1025);
  EXPECT_EQ(std::ranges::count(bluez.calls, "RegisterAdvertisement"), 2);
}

TEST_F(LiveOnBus, ASignalTakesItOffTheAir) {
  LiveProcess only(player());
  ASSERT_TRUE(waitForPlace(only));
  only.tell("go");
  ASSERT_TRUE(waitFor(only, [&] { return numberOnAir() == 1; }));
  EXPECT_THAT(bluez.calls, Not(Contains("UnregisterAdvertisement")));
  only.signal(SIGTERM);
  ASSERT_TRUE(waitFor(only, [&] { return !bluez.isAdvertising(); }));
  EXPECT_THAT(bluez.calls, Contains("UnregisterAdvertisement"));
  EXPECT_EQ(only.end(), 0);
  EXPECT_FALSE(std::filesystem::exists(journal + ".place"));
}

}  // namespace
}  // namespace halvora
