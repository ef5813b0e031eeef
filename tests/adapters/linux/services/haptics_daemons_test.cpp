// SPDX-License-Identifier: Apache-2.0
// Haptics with the daemons that phones have. Neither needs a motor to run.
#include <gmock/gmock.h>

#include "adapters/linux/services/linux_haptics.h"
#include "tests/adapters/linux/services/services_test.h"
#include "tests/adapters/linux/services/system_daemon.h"
#include "tests/adapters/standard/temporary_folder.h"

namespace halvora {
namespace {

using testing::HasSubstr;

class HapticsDaemons : public ServicesTest {
 protected:
  bool waitForName(const char* name) {
    const Duration latest = loop.now() + std::chrono::seconds(30);
    while (loop.now() < latest) {
      if (hasOwner(name)) return true;
    }
    return false;
  }

  TemporaryFolder home;
  SystemDaemon feedbackd{loop,
                         "/usr/libexec/feedbackd",
                         {{"DBUS_SESSION_BUS_ADDRESS", bus.address()},
                          {"DBUS_SYSTEM_BUS_ADDRESS", bus.address()},
                          {"GSETTINGS_BACKEND", "memory"},
                          {"G_MESSAGES_DEBUG", "all"},
                          {"HOME", home.path()},
                          {"XDG_RUNTIME_DIR", home.path()}}};
  SystemDaemon hfd{loop,
                   "/usr/libexec/hfd-service",
                   {{"DBUS_SYSTEM_BUS_ADDRESS", bus.address()},
                    {"HFD_VIBRATOR_IMPL", "dummy"},
                    {"HFD_LEDS_IMPL", "dummy"},
                    {"QT_LOGGING_TO_CONSOLE", "1"},
                    {"HOME", home.path()}}};
  LinuxHaptics haptics{loop, buses, "com.example.host", {.latest = std::chrono::hours(1)}};
};

TEST_F(HapticsDaemons, TheFeedbackDaemonTakesTouchesAsEvents) {
  if (!feedbackd.isInstalled()) GTEST_SKIP() << "feedbackd is not installed";
  ASSERT_TRUE(feedbackd.start());
  ASSERT_TRUE(waitForName("org.sigxcpu.Feedback")) << feedbackd.printed();
  haptics.impact(ImpactStyle::light);
  ASSERT_TRUE(waitFor([&] { return haptics.diagnostics().played == 1; })) << feedbackd.printed();
  EXPECT_EQ(haptics.diagnostics().way, HapticsWay::event);
  EXPECT_TRUE(waitFor([&] {
    return feedbackd.printed().find("'button-pressed' for 'com.example.host'") != std::string::npos;
  })) << feedbackd.printed();
  haptics.playSystemSound(kVibrationSound);
  haptics.disposeSystemSound(kVibrationSound);
  EXPECT_TRUE(waitFor([&] {
    return feedbackd.printed().find("Ending feedback for event '2'") != std::string::npos ||
           feedbackd.printed().find("non-existing event 2") != std::string::npos;
  })) << feedbackd.printed();
}

TEST_F(HapticsDaemons, TheVibratorDaemonVibratesForItsTime) {
  if (!hfd.isInstalled()) GTEST_SKIP() << "hfd-service is not installed";
  ASSERT_TRUE(hfd.start());
  ASSERT_TRUE(waitForName("com.lomiri.hfd")) << hfd.printed();
  haptics.impact(ImpactStyle::heavy);
  ASSERT_TRUE(waitFor([&] { return haptics.diagnostics().played == 1; })) << hfd.printed();
  EXPECT_EQ(haptics.diagnostics().way, HapticsWay::motor);
  EXPECT_TRUE(waitFor([&] { return hfd.printed().find("VibratorDummy on") != std::string::npos; }))
      << hfd.printed();
}

}  // namespace
}  // namespace halvora
