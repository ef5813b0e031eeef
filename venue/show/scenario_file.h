// SPDX-License-Identifier: Apache-2.0
// A scenario out of a file or a pipe. Main thread.
#pragma once

#include <atomic>
#include <string>
#include <variant>

#include "halvora/platform/json.h"
#include "venue/base/outside.h"
#include "venue/show/scenario.h"

namespace halvora {

/// The scenario, or what to end with: the file, and the line and what is wrong with it.
std::variant<Scenario, CommandResult> readScenario(const std::string& path, const JsonReader& json,
                                                   const std::atomic<bool>& isInterrupted);

}  // namespace halvora
