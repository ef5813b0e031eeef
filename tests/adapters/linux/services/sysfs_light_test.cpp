// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/services/sysfs_light.h"

#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/adapters/standard/temporary_folder.h"

namespace halvora {
namespace {

class SysfsLights : public testing::Test {
 protected:
  void add(const std::string& light, const std::string& most, const std::string& level,
           const std::string& type = {}) {
    folder.write(light + "/max_brightness", most);
    folder.write(light + "/brightness", level);
    if (!type.empty()) folder.write(light + "/type", type);
  }
  std::string torch() {
    const auto light = findTorchLight(folder.path());
    return light ? light->name : "none";
  }
  std::string backlight() {
    const auto light = findBacklight(folder.path());
    return light ? light->name : "none";
  }

  TemporaryFolder folder;
};

TEST_F(SysfsLights, ThereAreNoneWithoutTheFolder) {
  EXPECT_EQ(torch(), "none");
  EXPECT_EQ(backlight(), "none");
}

TEST_F(SysfsLights, ATorchIsKnownByItsFunction) {
  add("leds/input3::capslock", "1\n", "0\n");
  add("leds/flash", "10\n", "0\n");
  add("leds/white:status", "10\n", "0\n");
  add("leds/torch:white:status", "10\n", "0\n");
  EXPECT_EQ(torch(), "none");
  add("leds/led:torch_0", "200\n", "0\n");
  EXPECT_EQ(torch(), "led:torch_0");
  add("leds/white:flash-0", "100\n", "0\n");
  EXPECT_EQ(torch(), "white:flash-0");
}

TEST_F(SysfsLights, OfSeveralTorchesAWhiteOneThatLastsIsTaken) {
  add("leds/yellow:flash", "1\n", "0\n");
  add("leds/yellow:torch", "2\n", "0\n");
  EXPECT_EQ(torch(), "yellow:torch");
  add("leds/white:flash", "3\n", "0\n");
  EXPECT_EQ(torch(), "white:flash");
  add("leds/white:torch-1", "4\n", "0\n");
  add("leds/white:torch", "5\n", "0\n");
  add("leds/camera:white:torch", "6\n", "0\n");
  EXPECT_EQ(torch(), "camera:white:torch");
}

TEST_F(SysfsLights, ABacklightIsTakenByItsTypeAndThenByItsName) {
  add("backlight/aa", "15\n", "7\n");
  EXPECT_EQ(backlight(), "aa");
  add("backlight/intel_backlight", "4882\n", "2441\n", "raw\n");
  EXPECT_EQ(backlight(), "intel_backlight");
  add("backlight/vendor", "10\n", "5\n", "platform\n");
  EXPECT_EQ(backlight(), "vendor");
  add("backlight/acpi_video1", "7\n", "3\n", "firmware\n");
  add("backlight/acpi_video0", "7\n", "3\n", "firmware\n");
  EXPECT_EQ(backlight(), "acpi_video0");
  const auto light = findBacklight(folder.path());
  EXPECT_EQ(light->subsystem, "backlight");
  EXPECT_EQ(light->most, 7U);
  EXPECT_EQ(light->level(), 3U);
}

TEST_F(SysfsLights, WhatDoesNotReadAsALightIsNone) {
  for (const char* most :
       {"", "0\n", "-5\n", "+5\n", " 5\n", "5 \n", "ten\n", "0x10\n", "1e3\n", "2147483648\n",
        "99999999999999999999\n", "00000000000000000000000000000005\n"}) {
    add("backlight/screen", most, "0\n");
    EXPECT_EQ(backlight(), "none") << most;
  }
  for (const char* level : {"", "-1\n", "8\n", "seven\n", "4294967296\n"}) {
    add("backlight/screen", "7\n", level);
    EXPECT_EQ(backlight(), "none") << level;
  }
  add("backlight/screen", "2147483647", "7");
  EXPECT_EQ(backlight(), "screen");
}

TEST_F(SysfsLights, NamesThatTheKernelDoesNotGiveAreRefused) {
  add("leds/white flash:flash", "1\n", "0\n");
  add("leds/white\n:flash", "1\n", "0\n");
  EXPECT_EQ(torch(), "none");
}

TEST_F(SysfsLights, AFileThatNeverAnswersIsNotWaitedFor) {
  add("leds/white:flash", "1\n", "0\n");
  const std::string level = folder.path() + "/leds/white:flash/brightness";
  std::filesystem::remove(level);
  ASSERT_EQ(mkfifo(level.c_str(), 0600), 0);
  EXPECT_EQ(torch(), "none");
}

TEST_F(SysfsLights, ALightThatIsGoneHasNoLevel) {
  add("leds/white:flash", "1\n", "1\n");
  const auto light = findTorchLight(folder.path());
  ASSERT_TRUE(light.has_value());
  EXPECT_EQ(light->level(), 1U);
  std::filesystem::remove_all(light->folder);
  EXPECT_FALSE(light->level().has_value());
}

}  // namespace
}  // namespace halvora
