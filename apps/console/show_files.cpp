// SPDX-License-Identifier: Apache-2.0
#include "apps/console/show_files.h"

#include <system_error>
#include <utility>

#include "adapters/standard/standard_files.h"
#include "text/asset_paths.h"

namespace halvora {

namespace {

namespace fs = std::filesystem;

constexpr Duration kAfterLastAction = milliseconds(2000);
constexpr const char* kExampleShow = "example-show.jsonl";

// In the tree, and where they are installed.
constexpr const char* kPlaces[] = {"assets/demo", "share/halvora/demo"};

fs::path assetsAbove(fs::path folder) {
  std::error_code error;
  for (;; folder = folder.parent_path()) {
    for (const char* place : kPlaces) {
      if (fs::is_directory(folder / place / kAssetFolder, error)) return folder / place;
    }
    if (folder == folder.parent_path()) return {};
  }
}

}  // namespace

Duration ShowFiles::end() const { return scenario.lastAction() + kAfterLastAction; }

std::variant<ShowFiles, DemoRefusal> openShow(const DemoOptions& options,
                                              const fs::path& programFolder,
                                              const JsonReader& json) {
  std::error_code error;
  fs::path assets = options.assets;
  if (assets.empty()) assets = assetsAbove(programFolder);
  if (assets.empty()) assets = assetsAbove(fs::current_path(error));
  if (assets.empty()) {
    return DemoRefusal{"no assets/demo above the program or from here upwards (see --assets)"};
  }
  if (!fs::is_directory(assets, error)) {
    return DemoRefusal{assets.string() + ": no such folder (--assets)"};
  }
  // Seat tables are kept by the path of their video, which must not depend on the current folder.
  assets = fs::absolute(assets, error).lexically_normal();
  // The desk needs no show: a folder of a venue's assets is enough.
  const bool isDesk =
      options.scenario.empty() && options.contactSheet.empty() && options.frames.empty();
  if (isDesk && !fs::exists(fs::symlink_status(assets / kExampleShow, error))) {
    return ShowFiles{assets.string(), {}, {}};
  }
  const fs::path file =
      options.scenario.empty() ? assets / kExampleShow : fs::path(options.scenario);
  const auto text = readFile(file.string(), kLargestScenario);
  if (!text) return DemoRefusal{file.string() + ": cannot be read"};
  auto parsed = parseScenario(*text, json);
  if (const auto* bad = std::get_if<ScenarioError>(&parsed)) {
    return DemoRefusal{file.string() + ":" + std::to_string(bad->line) + ": " + bad->what};
  }
  return ShowFiles{assets.string(), file.filename().string(),
                   std::get<Scenario>(std::move(parsed))};
}

}  // namespace halvora
