// SPDX-License-Identifier: Apache-2.0
#include "venue/show/scenario_file.h"

#include <utility>

#include "venue/base/input_file.h"

namespace halvora {

std::variant<Scenario, CommandResult> readScenario(const std::string& path, const JsonReader& json,
                                                   const std::atomic<bool>& isInterrupted) {
  auto text = readInput(path, kLargestScenario, isInterrupted);
  if (auto* refusal = std::get_if<CommandResult>(&text)) return std::move(*refusal);
  auto parsed = parseScenario(std::get<std::string>(text), json);
  if (const auto* bad = std::get_if<ScenarioError>(&parsed)) {
    return unusable(path + ":" + std::to_string(bad->line) + ": " + bad->what);
  }
  return std::get<Scenario>(std::move(parsed));
}

}  // namespace halvora
