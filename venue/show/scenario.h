// SPDX-License-Identifier: Apache-2.0
// Scenarios: what happens around a phone, as JSON Lines. Parsed whole before anything runs; a line
// that is not exactly what it should be rejects the file. Values, any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "halvora/platform/bluetooth.h"
#include "halvora/platform/json.h"
#include "halvora/platform/screen.h"
#include "halvora/platform/time.h"
#include "halvora/platform/user_defaults.h"

namespace halvora {

/// In bytes; a longer file is not read.
inline constexpr std::size_t kLargestScenario = std::size_t{256} << 20;

struct ScenarioDevice {
  double brightness = 0.5;
  bool torch = true;
  Size bounds{390, 844};
  BluetoothAuthorization authorization = BluetoothAuthorization::allowedAlways;
  CentralState state = CentralState::poweredOn;
};

/// The engine's view is loaded. Stands in no file: see `linesBeforeLoading`.
struct LoadAction {};
struct StartAction {};
struct BluetoothAction {
  std::optional<BluetoothAuthorization> authorization;
  std::optional<CentralState> state;
};
struct PacketAction {
  std::vector<std::uint8_t> data;
};
struct AppAction {
  bool isActive = false;
};
struct DefaultsAction {
  /// No value removes the key.
  std::vector<std::pair<std::string, std::optional<DefaultsValue>>> writes;
};
struct PrecomputeAction {
  std::int64_t venueId = 0;
  std::int64_t seatX = 0;
  std::int64_t seatY = 0;
};
struct InvalidateAction {
  std::int64_t venueId = 0;
};
struct PlayVideoAction {
  std::string name;
};

using ScenarioAction =
    std::variant<LoadAction, StartAction, BluetoothAction, PacketAction, AppAction, DefaultsAction,
                 PrecomputeAction, InvalidateAction, PlayVideoAction>;

struct ScenarioLine {
  /// 1-based, as an editor counts.
  std::size_t number = 0;
  ScenarioAction action;
  /// Seconds from the start; with `every` above 0 again at `at` + k × `every`, not after `until`.
  double at = 0;
  double every = 0;
  double until = 0;

  /// The time of occurrence k, from 0; none when there are fewer.
  std::optional<Duration> timeOf(std::uint64_t k) const;
  std::uint64_t occurrences() const;
};

struct Scenario {
  ScenarioDevice device;
  /// All lines but the device's, in their order.
  std::vector<ScenarioLine> lines;

  /// How many lines come before the engine's view is loaded: the defaults at 0 that stand first.
  std::size_t linesBeforeLoading() const;
  /// When the last action happens, repeats included.
  Duration lastAction() const;
};

struct ScenarioError {
  std::size_t line = 0;
  std::string what;
};

std::variant<Scenario, ScenarioError> parseScenario(std::string_view text, const JsonReader& json);

/// Bytes of hexadecimal text; white space and colons between whole bytes are ignored. None when it
/// is anything else.
std::optional<std::vector<std::uint8_t>> bytesOfHex(std::string_view text);

}  // namespace halvora
