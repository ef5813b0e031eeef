// SPDX-License-Identifier: Apache-2.0
// The demo's command line. A value, read once at the start.
#pragma once

#include <optional>
#include <string>
#include <variant>

#include "platform/time.h"

namespace halvora {

struct DemoOptions {
  /// Each is empty where it was not given. Without a scenario the window is the console.
  std::string scenario;
  std::string assets;
  std::string contactSheet;
  std::string screenshot;
  std::optional<Duration> quitAfter;
};

/// Why there is nothing to run: a text for the user, and the exit status that goes with it.
struct DemoRefusal {
  std::string text;
  int status = 2;
};

std::variant<DemoOptions, DemoRefusal> parseOptions(int argumentCount, char** arguments);

}  // namespace halvora
