// SPDX-License-Identifier: Apache-2.0
// The torch, the haptics, the backlight and the radio of a Linux phone, over the services of a
// private bus, keep what the conformance suite asks of anybody's.
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/linux/bluetooth/bluez_central.h"
#include "adapters/linux/bus/bluez_daemon.h"
#include "adapters/linux/services/linux_backlight.h"
#include "adapters/linux/services/linux_haptics.h"
#include "adapters/linux/services/linux_torch.h"
#include "conformance/device_promises.h"
#include "conformance/phone_promises.h"
#include "tests/adapters/linux/bus/fake_bluez.h"
#include "tests/adapters/linux/services/fake_login.h"
#include "tests/adapters/linux/services/services_test.h"

namespace halvora {
namespace {

using namespace conformance;  // NOLINT(google-build-using-namespace): nothing else is tested here

constexpr const char* kLamp = "leds/white:flash";

class LinuxConformance : public ServicesTest {
 protected:
  static void expectKept(const std::vector<BrokenPromise>& broken) {
    EXPECT_TRUE(broken.empty()) << textOf(broken);
  }
};

TEST_F(LinuxConformance, OfTheTorchHolds) {
  expectKept(checkTorch([&] {
    auto login = std::make_shared<FakeLogin>(loop, loop, bus.address());
    FakeLogin& its = *login;
    its.addLight(kLamp, 31, 0);
    its.appear();
    return TorchUnderTest{
        std::move(login),
        std::make_unique<LinuxTorch>(loop, buses.system, findTorchLight(its.lights())),
        [this] { settle(); }, [&its] { return its.levelOf(kLamp) > 0; }};
  }));
  expectKept(
      checkNoTorch([&] { return std::make_unique<LinuxTorch>(loop, buses.system, std::nullopt); }));
}

TEST_F(LinuxConformance, OfTheHapticsHolds) {
  struct World {
    World(PollRunLoop& loop, const std::string& address)
        : feedback(loop, loop, address, "org.sigxcpu.Feedback") {}
    FakeService feedback;
    int felt = 0;
  };
  expectKept(checkHaptics([&] {
    auto world = std::make_shared<World>(loop, bus.address());
    World& its = *world;
    its.feedback.answers["org.sigxcpu.Feedback.Haptic.Vibrate"] = [&its](sd_bus_message* call) {
      // Strengths and lengths; none of them ends what goes on.
      sd_bus_message_skip(call, "s");
      sd_bus_message_enter_container(call, 'a', "(du)");
      if (sd_bus_message_at_end(call, 0) == 0) ++its.felt;
      return sd_bus_reply_method_return(call, "b", 1);
    };
    its.feedback.appear();
    return HapticsUnderTest{
        std::move(world),
        std::make_unique<LinuxHaptics>(loop, buses, "com.example.host",
                                       HapticsSettings{.latest = std::chrono::hours(1)}),
        [this] { settle(); }, [&its] { return its.felt; }};
  }));
}

TEST_F(LinuxConformance, OfTheBacklightHolds) {
  struct Lit final : Screen {
    explicit Lit(LinuxBacklight& its) : backlight(its) {}
    Size bounds() const override { return {}; }
    double brightness() const override { return backlight.level(); }
    void setBrightness(double level) override { backlight.setLevel(level); }
    float currentEDRHeadroom() const override { return 1; }
    LinuxBacklight& backlight;
  };
  FakeLogin login(loop, loop, bus.address());
  login.addLight("backlight/panel", 200, 100);
  login.appear();
  LinuxBacklight backlight(loop, buses.system, *findBacklight(login.lights()));
  expectKept(checkScreen([&] { return std::make_unique<Lit>(backlight); }));
}

TEST_F(LinuxConformance, OfTheRadioHolds) {
  // Real time passes here: a second between two scans is more than the suite waits for.
  static const BluezSettings kHasty{.betweenStarts = Duration::zero()};
  struct World {
    World(PollRunLoop& loop, const std::string& address)
        : bluez(loop, loop, address), daemon(loop, loop, address), radio(loop, daemon, kHasty) {}
    FakeBluez bluez;
    BluezDaemon daemon;
    BluezCentral radio;
  };
  expectKept(checkRadio([&] {
    auto world = std::make_shared<World>(loop, bus.address());
    World& its = *world;
    its.bluez.appear();
    its.bluez.addAdapter("hci0", true);
    return RadioUnderTest{std::move(world), &its.radio, [this] { settle(); },
                          [&its](bool hasPower) { its.bluez.setPowered("hci0", hasPower); },
                          // What follows the company's id; the daemon hands that over as a number.
                          [&its](std::span<const std::uint8_t> packet) {
                            its.bluez.advertise("C00000000001", {packet.begin() + 2, packet.end()});
                          }};
  }));
}

}  // namespace
}  // namespace halvora
