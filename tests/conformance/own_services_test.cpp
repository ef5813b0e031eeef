// SPDX-License-Identifier: Apache-2.0
// The kit's own clocks, battery and client for HTTP, of the machine and in memory, keep what the
// conformance suite asks of anybody's. Qt's client is tested beside its other tests.
#include <cmath>
#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/linux/poll_run_loop.h"
#include "adapters/linux/services/linux_battery.h"
#include "adapters/standard/system_clock.h"
#include "adapters/virtual/virtual_devices.h"
#include "adapters/virtual/virtual_run_loop.h"
#include "conformance/service_promises.h"
#include "tests/adapters/standard/temporary_folder.h"

namespace halvora {
namespace {

using namespace conformance;  // NOLINT(google-build-using-namespace): nothing else is tested here

void expectKept(const std::vector<BrokenPromise>& broken) {
  EXPECT_TRUE(broken.empty()) << textOf(broken);
}

TEST(ConformanceOfWallClocks, HoldsForTheSystems) {
  expectKept(checkWallClock([] {
    return WallClockUnderTest{nullptr, std::make_unique<SystemWallClock>(),
                              [] { return static_cast<double>(std::time(nullptr)); },
                              [](Duration span) {
                                PollRunLoop loop;
                                loop.runUntil([] { return false; }, span);
                              }};
  }));
}

TEST(ConformanceOfWallClocks, HoldsInMemory) {
  expectKept(checkWallClock([] {
    auto loop = std::make_shared<VirtualRunLoop>();
    VirtualRunLoop& its = *loop;
    auto clock = std::make_unique<VirtualWallClock>(its);
    const double begin = clock->begin.secondsSince1970;
    return WallClockUnderTest{std::move(loop), std::move(clock),
                              [&its, begin] { return begin + toSeconds(its.now()); },
                              [&its](Duration span) { its.runFor(span); }};
  }));
}

TEST(ConformanceOfBatteries, HoldsForTheKernels) {
  expectKept(checkBattery([] {
    auto supplies = std::make_shared<TemporaryFolder>();
    const TemporaryFolder& its = *supplies;
    auto battery = std::make_unique<LinuxBattery>(its.path());
    return BatteryUnderTest{
        std::move(supplies), std::move(battery), [&its](const std::optional<BatteryState>& state) {
          if (!state) {
            // What is left is the socket that a desktop hangs on.
            its.write("BAT0/type", "Mains\n");
            return;
          }
          const bool isFull = state->level >= 1;
          its.write("BAT0/type", "Battery\n");
          its.write("BAT0/capacity", std::to_string(std::lround(state->level * 100)) + "\n");
          its.write("BAT0/status", !state->isFed ? "Discharging\n"
                                   : isFull      ? "Full\n"
                                                 : "Charging\n");
        }};
  }));
}

TEST(ConformanceOfHttp, HoldsInMemory) {
  expectKept(checkHttp([] {
    static constexpr const char* kServer = "http://server.example";
    auto client = std::make_unique<VirtualHttp>();
    const VirtualHttp& its = *client;
    // What it notes comes to a server if it is the address of one.
    const auto asked = [&its] {
      std::vector<std::string> paths;
      for (const std::string& url : its.log.entries) {
        if (url.starts_with(kServer)) paths.push_back(url.substr(std::string(kServer).size()));
      }
      return paths;
    };
    // It sends nothing, so there is nothing to wait for, nor left open when it goes.
    return HttpUnderTest{nullptr, std::move(client), kServer,
                         asked,   [] { return 0; },  [](const auto& /*isSo*/) {}};
  }));
}

}  // namespace
}  // namespace halvora
