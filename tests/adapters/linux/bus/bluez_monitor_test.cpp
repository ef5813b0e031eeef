// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include "tests/adapters/linux/bus/bluez_bus_test.h"

namespace halvora {
namespace {

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::Not;

class BluezMonitors : public BluezBusTest {};

TEST_F(BluezMonitors, AreUsedWhereThereAreAnyAndNothingIsDiscoveredBeside) {
  scan(true);
  EXPECT_TRUE(bluez.hasMonitor());
  EXPECT_FALSE(bluez.isDiscovering());
  EXPECT_THAT(bluez.calls, ElementsAre("GetManagedObjects", "RegisterMonitor"));
}

TEST_F(BluezMonitors, TellOfFirstSightChangesAndRepeats) {
  scan(true);
  for (const std::uint8_t number : Bytes{1, 1, 2, 2, 2, 3}) bluez.advertise(kShow, rest(number));
  ASSERT_TRUE(waitForPackets(6));
  EXPECT_THAT(listener.packets,
              ElementsAre(packet(1), packet(1), packet(2), packet(2), packet(2), packet(3)));
}

TEST_F(BluezMonitors, CountEachReportOnceInEitherOrder) {
  bluez.tellsFoundFirst = true;
  scan(true);
  for (const std::uint8_t number : Bytes{1, 2, 3, 3, 4, 5, 5}) bluez.advertise(kShow, rest(number));
  ASSERT_TRUE(waitFor([&] { return central->diagnostics().signalCounts.ours == 12; }));
  // Which of two reports is the repeat cannot be told; how many there were can.
  EXPECT_EQ(listener.packets.size(), 7U);
  EXPECT_EQ(listener.packets.back(), packet(5));
}

TEST_F(BluezMonitors, LeaveTheCrowdToTheDaemon) {
  scan(true);
  for (int device = 0; device < 500; ++device) {
    bluez.advertise("C0FFEE" + std::to_string(100'000 + device), {1, 2, 3}, kForeignCompany);
  }
  bluez.advertise(kShow, rest(1));
  ASSERT_TRUE(waitForPackets(1));
  EXPECT_EQ(central->diagnostics().signalCounts.foreign, 0U);
  EXPECT_EQ(daemon.keptDevices(), 1U);
}

TEST_F(BluezMonitors, KeepABoundedNumberOfTransmitters) {
  scan(true);
  const std::size_t many = ShowDevices::kMost + 50;
  for (std::size_t device = 0; device < many; ++device) {
    bluez.advertise("C00000" + std::to_string(100'000 + device), rest(1));
  }
  ASSERT_TRUE(waitForPackets(many));
  EXPECT_EQ(daemon.keptDevices(), ShowDevices::kMost);
}

TEST_F(BluezMonitors, ATransmitterThatWasKnownBeforeIsAskedForOnce) {
  const auto other = lookAroundBefore(true);
  scanWheneverPossible();
  makeCentral();
  ASSERT_TRUE(waitForScan());
  bluez.advertise(kShow, rest(1));
  ASSERT_TRUE(waitForPackets(1));
  bluez.advertise(kShow, rest(1));
  ASSERT_TRUE(waitForPackets(2));
  EXPECT_THAT(listener.packets, Each(packet(1)));
  EXPECT_EQ(calls("Get"), 1U);
}

TEST_F(BluezMonitors, AreRegisteredAnewWhenTheyAreReleased) {
  settings.betweenStarts = milliseconds(1);
  scan(true);
  bluez.releaseMonitors();
  ASSERT_TRUE(waitFor([&] { return calls("RegisterMonitor") == 2 && bluez.hasMonitor(); }));
  ASSERT_TRUE(waitForScan());
  bluez.advertise(kShow, rest(1));
  EXPECT_TRUE(waitForPackets(1));
  EXPECT_FALSE(bluez.isDiscovering());
}

TEST_F(BluezMonitors, ThatAreRefusedGiveWayToDiscovery) {
  settings.betweenStarts = milliseconds(1);
  bluez.errors["RegisterMonitor"] = "org.bluez.Error.Failed";
  scan(true);
  EXPECT_TRUE(bluez.isDiscovering());
  EXPECT_EQ(calls("RegisterMonitor"), 2U);
  EXPECT_EQ(central->diagnostics().errors.count, 2U);
  EXPECT_EQ(central->diagnostics().errors.last, "org.bluez.Error.Failed: as the test wants it");
  bluez.advertise(kShow, rest(1));
  EXPECT_TRUE(waitForPackets(1));
}

TEST_F(BluezMonitors, AreTakenBackWhenNobodyListens) {
  scan(true);
  bluez.advertise(kShow, rest(1));
  ASSERT_TRUE(waitForPackets(1));
  EXPECT_EQ(daemon.keptDevices(), 1U);
  manager.reset();
  EXPECT_TRUE(waitFor([&] { return !bluez.hasMonitor(); }));
  EXPECT_EQ(daemon.keptDevices(), 0U);
  EXPECT_EQ(bluez.calls.back(), "UnregisterMonitor");
}

TEST_F(BluezMonitors, HearNobodyButTheDaemon) {
  scan(true);
  BusConnection stranger(loop, loop);
  stranger.open(bus.address(), [] {});
  const char* own = nullptr;
  ASSERT_GE(sd_bus_get_unique_name(stranger.bus(), &own), 0);
  bluez.advertise(kShow, rest(1));
  ASSERT_TRUE(waitForPackets(1));
  // A stranger says that the device was found again, and that the monitor is released.
  struct Answer {
    int errors = 0;
  } answer;
  const auto count = [](sd_bus_message* reply, void* data, sd_bus_error*) {
    if (sd_bus_message_get_error(reply) != nullptr) ++static_cast<Answer*>(data)->errors;
    return 0;
  };
  const std::string target = bluez.monitorClient();
  for (const char* member : {"DeviceFound", "Release"}) {
    const bool isFound = std::string(member) == "DeviceFound";
    ASSERT_GE(sd_bus_call_method_async(stranger.bus(), nullptr, target.c_str(),
                                       "/org/halvora/monitors/show",
                                       "org.bluez.AdvertisementMonitor1", member, count, &answer,
                                       isFound ? "o" : "", bluez.pathOf(kShow).c_str()),
              0);
  }
  stranger.sent();
  ASSERT_TRUE(waitFor([&] { return answer.errors == 2; }));
  EXPECT_EQ(listener.packets.size(), 1U);
  EXPECT_TRUE(central->diagnostics().isScanning);
  EXPECT_THAT(bluez.calls, Not(Contains("UnregisterMonitor")));
}

}  // namespace
}  // namespace halvora
