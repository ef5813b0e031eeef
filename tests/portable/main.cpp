// SPDX-License-Identifier: Apache-2.0
// Plays every scenario of a folder and prints the traces one after the other, so that what this
// program prints where there is no Linux can be compared with what it prints here. Needs the core,
// and the adapters that are written in standard C++ only.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "adapters/json/exact_json_reader.h"
#include "adapters/standard/seeded_random.h"
#include "adapters/standard/standard_files.h"
#include "adapters/virtual/virtual_devices.h"
#include "halvora/platform/absent.h"
#include "venue/show/scenario.h"
#include "venue/show/trace.h"

namespace halvora {
namespace {

constexpr std::size_t kLargestFile = std::size_t{1} << 24;

struct Case {
  std::string chance = "1";
  TraceOptions options;
};

std::unique_ptr<Random> randomOf(const std::string& chance) {
  using Rule = ScriptedRandom::Rule;
  if (chance == "min") return std::make_unique<ScriptedRandom>(Rule::least);
  if (chance == "max") return std::make_unique<ScriptedRandom>(Rule::greatest);
  return std::make_unique<SeededRandom>(std::stoull(chance));
}

// As the command takes them, each with its value. ASSETS stands for the folder of the tests'.
Case caseOf(const std::string& text, const std::string& assets) {
  Case found;
  std::istringstream words(text);
  for (std::string option, value; words >> option >> value;) {
    constexpr std::string_view kAssets = "ASSETS";
    if (value.starts_with(kAssets)) value.replace(0, kAssets.size(), assets);
    if (option == "--assets") found.options.assets = value;
    if (option == "--documents") found.options.documents = value;
    if (option == "--allow") found.options.allowedTransmitterIds.push_back(value);
    if (option == "--until") found.options.until = fromSeconds(std::stod(value));
    if (option == "--random") found.chance = value;
  }
  return found;
}

// Names without the ending, in the order of their letters everywhere.
std::vector<std::string> scenarioNames(const std::string& folder) {
  constexpr std::string_view kEnding = ".jsonl";
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    const std::string name = entry.path().filename().string();
    if (!name.ends_with(kEnding) || name.ends_with(".expected.jsonl")) continue;
    names.push_back(name.substr(0, name.size() - kEnding.size()));
  }
  std::sort(names.begin(), names.end());
  return names;
}

bool play(const std::string& path, const std::string& assets) {
  StandardFiles files;
  const ExactJsonReader json;
  const std::optional<std::string> document = files.read(path + ".jsonl", kLargestFile);
  if (!document) return false;
  const auto scenario = parseScenario(*document, json);
  if (!std::holds_alternative<Scenario>(scenario)) return false;
  const Case wanted = caseOf(files.read(path + ".options", kLargestFile).value_or(""), assets);
  const TraceEnd end =
      runTrace(std::get<Scenario>(scenario), wanted.options, randomOf(wanted.chance),
               {json, absent::images(), &files},
               [](std::string_view lines) { std::fwrite(lines.data(), 1, lines.size(), stdout); });
  return end == TraceEnd::whole;
}

int playAll(const std::string& folder, const std::string& assets) {
  const std::vector<std::string> names = scenarioNames(folder);
  for (const std::string& name : names) {
    std::printf("%s\n", name.c_str());
    if (!play(folder + "/" + name, assets)) {
      std::fprintf(stderr, "%s: cannot be played\n", name.c_str());
      return 1;
    }
  }
  std::fprintf(stderr, "%zu scenarios\n", names.size());
  return names.empty() ? 1 : 0;
}

}  // namespace
}  // namespace halvora

int main(int argumentCount, char** arguments) {
  if (argumentCount != 3) {
    std::fprintf(stderr, "usage: halvora_portable SCENARIOS ASSETS\n");
    return 2;
  }
  return halvora::playAll(arguments[1], arguments[2]);
}
