// SPDX-License-Identifier: Apache-2.0
// Any bytes as a scenario: it is refused with the line, or its times keep their order and their
// bounds.
#include <algorithm>
#include <string>
#include <variant>

#include "adapters/json/exact_json_reader.h"
#include "tests/fuzz/fuzz_targets.h"
#include "venue/show/scenario.h"

namespace halvora {

namespace {

void checkDevice(const ScenarioDevice& device) {
  require(device.brightness >= 0 && device.brightness <= 1, "a brightness is a share");
  require(device.bounds.width >= 0 && device.bounds.height >= 0, "a screen has a size");
  require(static_cast<int>(device.authorization) <= 3 && static_cast<int>(device.state) <= 5,
          "a radio has a state");
}

void checkTimes(const ScenarioLine& line) {
  require(line.at >= 0 && line.at <= 1e9 && line.every >= 0, "a time is within the show");
  const std::uint64_t count = line.occurrences();
  require(count >= 1 && count <= 100'000'002, "a line happens a bounded number of times");
  const auto first = line.timeOf(0);
  const auto last = line.timeOf(count - 1);
  require(first && last && *first <= *last, "a line's times are in order");
  require(!line.timeOf(count), "a line ends");
}

}  // namespace

int fuzzScenario(FuzzBytes bytes) {
  const std::string_view text = textOf(bytes);
  const auto lines = static_cast<std::size_t>(std::ranges::count(text, '\n')) + 1;
  const ExactJsonReader json;
  const auto parsed = parseScenario(text, json);
  if (const auto* error = std::get_if<ScenarioError>(&parsed)) {
    require(error->line >= 1 && error->line <= lines && !error->what.empty(),
            "a scenario is refused with a line and a reason");
    return 0;
  }
  const auto& scenario = std::get<Scenario>(parsed);
  checkDevice(scenario.device);
  double previous = 0;
  for (const ScenarioLine& line : scenario.lines) {
    require(line.number >= 1 && line.number <= lines, "a line has its number");
    require(line.at >= previous, "lines are in order");
    previous = line.at;
    checkTimes(line);
    require(*line.timeOf(line.occurrences() - 1) <= scenario.lastAction(), "the last is last");
  }
  require(scenario.linesBeforeLoading() <= scenario.lines.size(), "what comes first is of it");
  return 0;
}

}  // namespace halvora
