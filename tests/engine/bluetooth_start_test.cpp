// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/engine/engine_bench.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string bluetoothText(const EngineBench& bench) {
  return textOf(bench.presence().bluetoothState);
}

// Everything that start and the state reports do to defaults and radio.
Acts radioActs(EngineBench& bench) {
  return bench.take(
      {"set", "synchronize", "after", "every", "managerMade", "scan", "stopScan", "restartScan"});
}

TEST(Start, AllowedAlwaysBeginsToListen) {
  EngineBench bench;
  bench.log.isDetailed = true;
  bench.engine().start();
  EXPECT_THAT(radioActs(bench),
              ElementsAre("set bluetoothStatus host: outside", "after 1000 ms", "every 1000 ms",
                          "every 1000 ms", "after 4000 ms", "managerMade", "synchronize"));
  EXPECT_EQ(bluetoothText(bench), "ok");
  EXPECT_TRUE(bench.presence().scanningAllowed);
  EXPECT_TRUE(bench.engine().isPermissionGranted());
}

void expectNotAuthorised(BluetoothAuthorization authorization) {
  EngineBench bench({.authorization = authorization});
  bench.log.isDetailed = true;
  bench.engine().start();
  EXPECT_THAT(radioActs(bench),
              ElementsAre("set bluetoothStatus kit: not authorised", "synchronize"));
  EXPECT_EQ(bluetoothText(bench), "notAuthorised");
  EXPECT_FALSE(bench.presence().scanningAllowed);
  EXPECT_FALSE(bench.engine().isPermissionGranted());
  bench.runTo(6000);
  EXPECT_THAT(radioActs(bench), IsEmpty()) << "nothing is retried";
  EXPECT_FALSE(bench.phone.bluetooth.isScanning());
  EXPECT_FALSE(bench.state().video.videoCanPlay);
}

TEST(Start, NotYetDeterminedReportsNotAuthorisedAndDoesNotScan) {
  expectNotAuthorised(BluetoothAuthorization::notDetermined);
}

TEST(Start, RestrictedReportsNotAuthorised) {
  expectNotAuthorised(BluetoothAuthorization::restricted);
}

TEST(Start, DeniedReportsNotAuthorised) { expectNotAuthorised(BluetoothAuthorization::denied); }

TEST(Start, MayBeTriedAgainOncePermissionIsGiven) {
  EngineBench bench({.authorization = BluetoothAuthorization::denied});
  bench.engine().start();
  bench.phone.bluetooth.setAuthorization(BluetoothAuthorization::allowedAlways);
  bench.engine().start();
  EXPECT_EQ(bluetoothText(bench), "ok");
  bench.runTo(1000);
  EXPECT_TRUE(bench.phone.bluetooth.isScanning());
}

TEST(InitBluetoothPermission, StartsTheTimersAndMakesTheManagerLast) {
  EngineBench bench({.authorization = BluetoothAuthorization::notDetermined});
  bench.log.isDetailed = true;
  bench.engine().initBluetoothPermission();
  EXPECT_THAT(radioActs(bench), ElementsAre("after 1000 ms", "every 1000 ms", "every 1000 ms",
                                            "after 4000 ms", "managerMade"));
}

TEST(InitBluetoothPermission, FirstScanAndFirstCycleComeAfterOneSecond) {
  EngineBench bench;
  bench.engine().start();
  bench.runTo(999);
  EXPECT_FALSE(bench.phone.bluetooth.isScanning());
  bench.take();
  bench.runTo(1000);
  EXPECT_THAT(radioActs(bench), ElementsAre("scan with duplicates", "restartScan with duplicates"));
  bench.runTo(2000);
  EXPECT_THAT(radioActs(bench), ElementsAre("restartScan with duplicates"))
      << "the first scan comes once";
}

TEST(InitBluetoothPermission, RangeIsResetEverySecond) {
  EngineBench bench;
  bench.listen();
  for (const int second : {1, 2, 3}) {
    bench.runTo(second * 1000 + 500);
    bench.hearNext(look(1));
    bench.runTo(second * 1000 + 999);
    EXPECT_TRUE(bench.presence().transmitterFound);
    bench.runTo(second * 1000 + 1000);
    EXPECT_FALSE(bench.presence().transmitterFound);
  }
}

TEST(InitBluetoothPermission, VideoIsReadyAfterFourSeconds) {
  EngineBench bench;
  bench.engine().start();
  bench.runTo(3999);
  EXPECT_FALSE(bench.state().video.videoCanPlay);
  bench.runTo(4000);
  EXPECT_TRUE(bench.state().video.videoCanPlay);
}

TEST(InitBluetoothPermission, EachCallStartsTheTimersAnewOnOneManager) {
  EngineBench bench;
  bench.engine().initBluetoothPermission();
  bench.runTo(300);
  bench.engine().initBluetoothPermission();
  bench.runTo(1300);
  bench.take();
  bench.runTo(2300);
  EXPECT_THAT(radioActs(bench),
              ElementsAre("restartScan with duplicates", "restartScan with duplicates"));
  bench.hearNext(look(1));
  EXPECT_EQ(bench.presence().broadcastCount, 1) << "the manager before was let go";
}

TEST(InitBluetoothPermission, PermissionGivenLateBeginsTheScanWithTheNextCycle) {
  EngineBench bench({.authorization = BluetoothAuthorization::notDetermined,
                     .state = CentralState::unauthorised});
  bench.engine().initBluetoothPermission();
  bench.runTo(2500);
  EXPECT_EQ(bluetoothText(bench), "notAuthorised");
  EXPECT_THAT(bench.take({"scan", "restartScan", "stopScan"}), IsEmpty());
  bench.phone.bluetooth.setAuthorization(BluetoothAuthorization::allowedAlways);
  bench.phone.bluetooth.setState(CentralState::poweredOn);
  EXPECT_TRUE(bench.presence().scanningAllowed);
  bench.runTo(2999);
  EXPECT_FALSE(bench.phone.bluetooth.isScanning());
  bench.runTo(3000);
  EXPECT_TRUE(bench.phone.bluetooth.isScanning());
}

TEST(IsPermissionGranted, ExactlyWhenAllowedAlways) {
  EngineBench bench;
  for (const auto authorization :
       {BluetoothAuthorization::notDetermined, BluetoothAuthorization::restricted,
        BluetoothAuthorization::denied, BluetoothAuthorization::allowedAlways}) {
    bench.phone.bluetooth.setAuthorization(authorization);
    EXPECT_EQ(bench.engine().isPermissionGranted(),
              authorization == BluetoothAuthorization::allowedAlways);
  }
}

TEST(CentralState, PoweredOnIsOutsideTheVenueInTheHostsWords) {
  EngineBench bench({.state = CentralState::poweredOff});
  bench.engine().initBluetoothPermission();
  bench.runTo(100);
  bench.take();
  bench.phone.bluetooth.setState(CentralState::poweredOn);
  EXPECT_THAT(radioActs(bench), ElementsAre("set bluetoothStatus host: outside", "synchronize"));
  EXPECT_EQ(bluetoothText(bench), "ok");
  EXPECT_TRUE(bench.presence().scanningAllowed);
}

TEST(CentralState, UnauthorisedIsSaidInTheKitsWords) {
  EngineBench bench;
  bench.listen();
  bench.phone.bluetooth.setState(CentralState::unauthorised);
  EXPECT_THAT(radioActs(bench),
              ElementsAre("set bluetoothStatus kit: not authorised", "synchronize"));
  EXPECT_EQ(bluetoothText(bench), "notAuthorised");
  EXPECT_TRUE(bench.presence().scanningAllowed) << "only powering on and start touch it";
}

TEST(CentralState, EveryOtherStateIsOffInTheKitsWords) {
  for (const auto state : {CentralState::unknown, CentralState::resetting,
                           CentralState::unsupported, CentralState::poweredOff}) {
    EngineBench bench;
    bench.listen();
    bench.phone.bluetooth.setState(state);
    EXPECT_THAT(radioActs(bench), ElementsAre("set bluetoothStatus kit: off", "synchronize"));
    EXPECT_EQ(bluetoothText(bench), "off");
    EXPECT_TRUE(bench.presence().scanningAllowed);
  }
}

TEST(CentralState, IsReportedInTheFirstTurn) {
  EngineBench bench({.state = CentralState::poweredOff});
  bench.engine().start();
  EXPECT_EQ(bluetoothText(bench), "ok");
  bench.runTo(0);
  EXPECT_EQ(bluetoothText(bench), "off");
  EXPECT_EQ(bench.defaultsText("bluetoothStatus"), "kit: off");
}

TEST(CentralState, TextWithoutATranslationIsItsKey) {
  EngineBench bench;
  bench.phone.mainBundle.strings.clear();
  bench.phone.kitBundle.strings.clear();
  bench.engine().start();
  EXPECT_EQ(bench.defaultsText("bluetoothStatus"), "outside_venue");
  bench.runTo(0);
  bench.phone.bluetooth.setState(CentralState::poweredOff);
  EXPECT_EQ(bench.defaultsText("bluetoothStatus"), "bluetooth_off");
  bench.phone.bluetooth.setState(CentralState::unauthorised);
  EXPECT_EQ(bench.defaultsText("bluetoothStatus"), "bluetooth_notAuthorised");
}

TEST(StartScan, DoesNothingBeforeBluetoothIsKnown) {
  EngineBench bench;
  bench.engine().scanner().startScan();
  EXPECT_THAT(bench.take(), IsEmpty());
}

TEST(StartScan, DoesNothingWhileBluetoothIsOff) {
  EngineBench bench;
  bench.listen();
  bench.hearNext(look(1));
  bench.phone.bluetooth.setState(CentralState::poweredOff);
  bench.take();
  bench.engine().scanner().startScan();
  EXPECT_THAT(bench.take(), IsEmpty());
  EXPECT_NE(bench.engine().scanner().currentBroadcast(), "");
}

TEST(StartScan, DoesNothingWhileScanningIsNotAllowed) {
  EngineBench bench;
  bench.listen();
  bench.phone.bluetooth.setAuthorization(BluetoothAuthorization::denied);
  bench.engine().start();
  EXPECT_FALSE(bench.presence().scanningAllowed);
  bench.take();
  bench.engine().scanner().startScan();
  EXPECT_THAT(bench.take(), IsEmpty());
}

TEST(StartScan, EmptiesTheBroadcastAndScansWithDuplicates) {
  EngineBench bench;
  bench.listen();
  EXPECT_EQ(bench.hearNext(look(1)), PacketFate::processed);
  EXPECT_EQ(bench.hearNext(look(1)), PacketFate::sameBroadcast);
  bench.take();
  bench.engine().scanner().startScan();
  EXPECT_THAT(bench.take(), ElementsAre("scan with duplicates"));
  EXPECT_EQ(bench.engine().scanner().currentBroadcast(), "");
  EXPECT_EQ(bench.hearNext(look(1)), PacketFate::processed) << "the same look counts as new";
}

}  // namespace
}  // namespace halvora
