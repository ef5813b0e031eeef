// SPDX-License-Identifier: Apache-2.0
// The demo's command line. A value, read once at the start.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <variant>

#include "halvora/platform/time.h"

namespace halvora {

struct DemoOptions {
  /// Each is empty where it was not given. Without a scenario the window is the console.
  std::string scenario;
  std::string assets;
  std::string contactSheet;
  std::string screenshot;
  std::string frames;
  Duration step = milliseconds(500);
  std::optional<Duration> quitAfter;
  /// No console: the phone is this machine, and hears what is really in the air.
  bool isOnSystemRadio = false;
  /// The adapter of that radio, such as "hci1"; empty for whichever works.
  std::string adapter;
  /// The console opens the venue, with about so many phones; 0 for one a seat.
  std::optional<std::size_t> venue;
  /// The show file that the console opens.
  std::string show;
  /// The pixel map that the console begins with; 0 for none.
  int map = 0;
};

/// Why there is nothing to run: a text for the user, and the exit status that goes with it.
struct DemoRefusal {
  std::string text;
  int status = 2;
};

std::variant<DemoOptions, DemoRefusal> parseOptions(int argumentCount, char** arguments);

}  // namespace halvora
