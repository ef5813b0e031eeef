// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/services/linux_battery.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/adapters/standard/temporary_folder.h"

namespace halvora {
namespace {

struct LinuxBatteries : testing::Test {
  void add(const std::string& name, const char* type, const char* capacity, const char* status,
           const char* scope = "") {
    folder.write(name + "/type", std::string(type) + "\n");
    folder.write(name + "/capacity", std::string(capacity) + "\n");
    folder.write(name + "/status", std::string(status) + "\n");
    if (*scope != '\0') folder.write(name + "/scope", std::string(scope) + "\n");
  }
  std::optional<BatteryState> state() { return LinuxBattery(folder.path()).state(); }

  TemporaryFolder folder;
};

TEST_F(LinuxBatteries, ADesktopHasNone) {
  EXPECT_EQ(state(), std::nullopt);
  folder.write("AC/type", "Mains\n");
  folder.write("AC/online", "1\n");
  EXPECT_EQ(state(), std::nullopt);
  EXPECT_EQ(LinuxBattery("/nowhere").state(), std::nullopt);
}

TEST_F(LinuxBatteries, APhoneSaysItsLevel) {
  add("battery", "Battery", "19", "Discharging");
  EXPECT_EQ(state(), (BatteryState{0.19, false}));
}

TEST_F(LinuxBatteries, ChargingOrPluggedInIsFed) {
  add("battery", "Battery", "5", "Charging");
  EXPECT_EQ(state(), (BatteryState{0.05, true}));
  add("battery", "Battery", "80", "Not charging");
  EXPECT_EQ(state(), (BatteryState{0.8, false}));
  folder.write("usb/type", "USB\n");
  folder.write("usb/online", "1\n");
  EXPECT_EQ(state(), (BatteryState{0.8, true}));
}

TEST_F(LinuxBatteries, AMouseIsNoPhone) {
  add("mouse", "Battery", "3", "Discharging", "Device");
  EXPECT_EQ(state(), std::nullopt);
}

TEST_F(LinuxBatteries, OfTwoTheFullerCounts) {
  add("BAT0", "Battery", "4", "Discharging");
  add("BAT1", "Battery", "60", "Discharging");
  EXPECT_EQ(state(), (BatteryState{0.6, false}));
}

TEST_F(LinuxBatteries, WhatDoesNotReadAsALevelIsNone) {
  for (const char* capacity : {"", "101", "-1", "full", "99999999999"}) {
    add("battery", "Battery", capacity, "Discharging");
    EXPECT_EQ(state(), std::nullopt) << capacity;
  }
}

// No machine has so many; what a folder without end holds is not all read.
TEST_F(LinuxBatteries, TheHundredthIsTheLastThatIsAsked) {
  for (int number = 100; number < 201; ++number) {
    add("supply" + std::to_string(number), "Mains", "", "");
  }
  add("supply199", "Battery", "40", "Discharging");
  ASSERT_TRUE(state());
  EXPECT_EQ(state()->level, 0.4);
  add("supply199", "Mains", "", "");
  add("supply200", "Battery", "40", "Discharging");
  EXPECT_EQ(state(), std::nullopt);
}

}  // namespace
}  // namespace halvora
