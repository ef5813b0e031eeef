// SPDX-License-Identifier: Apache-2.0
// The lights where the kernel shows them, on a machine that umockdev makes up for this process
// alone (phone_lights.umockdev). Without it there is no telling what the machine has.
#include <cstdlib>

#include <gtest/gtest.h>

#include "adapters/linux/services/sysfs_light.h"

namespace halvora {
namespace {

class KernelLights : public testing::Test {
 protected:
  void SetUp() override {
    if (std::getenv("UMOCKDEV_DIR") == nullptr) GTEST_SKIP() << "not under umockdev-run";
  }
};

TEST_F(KernelLights, TheTorchIsFoundAmongThePhonesOwn) {
  const auto torch = findTorchLight(kLightClasses);
  ASSERT_TRUE(torch.has_value());
  EXPECT_EQ(torch->subsystem, "leds");
  EXPECT_EQ(torch->name, "white:flash");
  EXPECT_EQ(torch->most, 255U);
  EXPECT_EQ(torch->level(), 0U);
}

TEST_F(KernelLights, TheBacklightIsReadAsItIs) {
  const auto backlight = findBacklight(kLightClasses);
  ASSERT_TRUE(backlight.has_value());
  EXPECT_EQ(backlight->subsystem, "backlight");
  EXPECT_EQ(backlight->name, "panel");
  EXPECT_EQ(backlight->most, 4095U);
  EXPECT_EQ(backlight->level(), 1638U);
}

}  // namespace
}  // namespace halvora
