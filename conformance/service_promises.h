// SPDX-License-Identifier: Apache-2.0
// What a clock, a battery and a client for HTTP promise. The world that they tell of, or send into,
// is the caller's: another clock, a battery that it fills, a server that it runs.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "conformance/promises.h"
#include "halvora/platform/battery.h"
#include "halvora/platform/http.h"
#include "halvora/platform/time.h"
#include "halvora/platform/wall_clock.h"

namespace halvora::conformance {

/// A clock, and another one that is known to be right.
struct WallClockUnderTest {
  /// Outlives the clock.
  std::shared_ptr<void> world;
  std::unique_ptr<WallClock> clock;  ///< Of the world.
  /// Seconds since 1970 by the other clock, which may count whole ones only.
  std::function<double()> secondsNow;
  /// Lets at least that span pass.
  std::function<void(Duration span)> pass;
};

/// Seconds since 1970 in universal time, and a time that goes on.
std::vector<BrokenPromise> checkWallClock(const std::function<WallClockUnderTest()>& make);

/// A battery that the caller fills.
struct BatteryUnderTest {
  /// Outlives the battery.
  std::shared_ptr<void> world;
  std::unique_ptr<Battery> battery;  ///< Of the world.
  /// What the system says of it from now on; none where there is no battery any more.
  std::function<void(const std::optional<BatteryState>& state)> become;
};

/// The level as a share, whether it is fed, and that there may be none.
std::vector<BrokenPromise> checkBattery(const std::function<BatteryUnderTest()>& make);

/// A client, and a server that it can reach. The server sends whoever asks for "/moved" to
/// "/elsewhere", has a failure at "/failing", answers "/silent" never, and everything else with an
/// empty page.
struct HttpUnderTest {
  /// Outlives the client.
  std::shared_ptr<void> world;
  std::unique_ptr<HttpClient> client;  ///< May ask that server.
  /// Where the server is, without a slash at its end, such as "http://127.0.0.1:8080".
  std::string server;
  /// What the server was asked for so far, in order: paths with their queries, as they came.
  std::function<std::vector<std::string>()> asked;
  /// How many connections the server has open at present.
  std::function<int()> open;
  /// Lets both work until that is so, or for as long as a machine may take.
  std::function<void(const std::function<bool()>& isSo)> workUntil;
};

/// Each address asked for once, whatever the answer; what is no address dropped; requests that do
/// not wait for each other, and that end when they are given up.
std::vector<BrokenPromise> checkHttp(const std::function<HttpUnderTest()>& make);

}  // namespace halvora::conformance
