// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include "tests/adapters/linux/bus/bluez_bus_test.h"

namespace halvora {
namespace {

using testing::ElementsAre;

class BluezDiscovery : public BluezBusTest {};

TEST_F(BluezDiscovery, AsksForRepeatsOnLowEnergyBeforeItStarts) {
  scan();
  EXPECT_THAT(bluez.calls,
              ElementsAre("GetManagedObjects", "SetDiscoveryFilter", "StartDiscovery"));
  EXPECT_EQ(bluez.transport, "le");
  EXPECT_TRUE(bluez.wantsRepeats);
  EXPECT_TRUE(bluez.isDiscovering());
}

TEST_F(BluezDiscovery, HearsTheFirstSightOfADeviceAndWhatItSaysLater) {
  scan();
  bluez.advertise(kShow, rest(1));
  bluez.advertise(kShow, rest(2));
  ASSERT_TRUE(waitForPackets(2));
  EXPECT_THAT(listener.packets, ElementsAre(packet(1), packet(2)));
}

TEST_F(BluezDiscovery, HearsEveryRepeat) {
  scan();
  for (int report = 0; report < 100; ++report) bluez.advertise(kShow, rest(7));
  ASSERT_TRUE(waitForPackets(100));
  EXPECT_THAT(listener.packets, testing::Each(packet(7)));
  EXPECT_EQ(central->diagnostics().signalCounts.ours, 100U);
}

TEST_F(BluezDiscovery, HandsOnNothingOfOthersAndKeepsNothingOfThem) {
  scan();
  for (int device = 0; device < 500; ++device) {
    const std::string number = std::to_string(100'000 + device);
    bluez.advertise("C0FFEE" + number, {1, 2, 3}, kForeignCompany);
    bluez.advertise("C0FFEE" + number, {4, 5, 6}, kForeignCompany);
  }
  bluez.advertise(kShow, rest(1));
  ASSERT_TRUE(waitForPackets(1));
  EXPECT_THAT(listener.packets, ElementsAre(packet(1)));
  EXPECT_EQ(central->diagnostics().signalCounts.foreign, 1000U);
  EXPECT_EQ(daemon.keptDevices(), 0U);
}

TEST_F(BluezDiscovery, FindsOurCompanyBesideAnother) {
  scan();
  bluez.signal(bluez.pathOf(kShow), "org.freedesktop.DBus.Properties", "PropertiesChanged",
               [](sd_bus_message* message) {
                 sd_bus_message_append(message, "sa{sv}as", "org.bluez.Device1", 1,
                                       "ManufacturerData", "a{qv}", 2, 0x004C, "ay", 1, 5, 0xC909,
                                       "ay", 3, 0x01, 0x02, 0x09, 0);
               });
  ASSERT_TRUE(waitForPackets(1));
  EXPECT_THAT(listener.packets, ElementsAre(packet(9)));
}

TEST_F(BluezDiscovery, WhatTheDaemonRemembersIsNotInTheAir) {
  const auto other = lookAroundBefore();
  scanWheneverPossible();
  makeCentral();
  ASSERT_TRUE(waitForScan());
  bluez.advertise(kShow, rest(2));
  ASSERT_TRUE(waitForPackets(1));
  EXPECT_THAT(listener.packets, ElementsAre(packet(2)));
}

TEST_F(BluezDiscovery, ADeviceThatWasForgottenIsSeenForTheFirstTimeAgain) {
  scan();
  bluez.advertise(kShow, rest(1));
  bluez.expire(kShow);
  bluez.advertise(kShow, rest(1));
  ASSERT_TRUE(waitForPackets(2));
  EXPECT_THAT(listener.packets, ElementsAre(packet(1), packet(1)));
}

TEST_F(BluezDiscovery, BeginsAnewWhenAControllerHoldsRepeatsBack) {
  settings.silence = milliseconds(20);
  settings.betweenStarts = milliseconds(20);
  bluez.holdsRepeatsBack = true;
  scan();
  // The air is full of one transmitter, of which the controller tells once a scan.
  const Timer air(loop, loop.every(milliseconds(1), [this] { bluez.advertise(kShow, rest(3)); }));
  ASSERT_TRUE(waitForPackets(4));
  EXPECT_GE(central->diagnostics().restarts, 3U);
}

TEST_F(BluezDiscovery, StopsWhenNobodyListensAnyMore) {
  scan();
  manager.reset();
  ASSERT_TRUE(waitFor([&] { return !bluez.isDiscovering(); }));
  EXPECT_EQ(bluez.calls.back(), "StopDiscovery");
  EXPECT_FALSE(central->diagnostics().isScanning);
}

TEST_F(BluezDiscovery, EndsWithTheCentral) {
  scan();
  manager.reset();
  central.reset();
  EXPECT_TRUE(waitFor([&] { return !bluez.isDiscovering(); }));
  EXPECT_EQ(calls("StopDiscovery"), 0U);
}

TEST_F(BluezDiscovery, AManagerMayGoWhileItHears) {
  scan();
  listener.onPacket = [this] { manager.reset(); };
  bluez.advertise(kShow, rest(1));
  bluez.advertise(kShow, rest(2));
  ASSERT_TRUE(waitFor([&] { return central->diagnostics().signalCounts.ours == 2; }));
  EXPECT_THAT(listener.packets, ElementsAre(packet(1)));
}

TEST_F(BluezDiscovery, TheTimeOfTheLastPacketIsKept) {
  scan();
  EXPECT_FALSE(central->diagnostics().lastShowPacket);
  EXPECT_FALSE(central->diagnostics().isHearing);
  const Duration before = loop.now();
  bluez.advertise(kShow, rest(1));
  ASSERT_TRUE(waitForPackets(1));
  ASSERT_TRUE(central->diagnostics().lastShowPacket);
  EXPECT_GE(*central->diagnostics().lastShowPacket, before);
}

}  // namespace
}  // namespace halvora
