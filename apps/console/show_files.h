// SPDX-License-Identifier: Apache-2.0
// What a show is made of on disk: the folder of assets and the scenario in it, found and read
// whole before anything is shown. Main thread.
#pragma once

#include <QImage>
#include <cstdint>
#include <filesystem>
#include <string>
#include <variant>

#include "apps/console/options.h"
#include "halvora/platform/json.h"
#include "halvora/platform/time.h"
#include "venue/show/scenario.h"

namespace halvora {

/// The window and the contact sheet draw the same chances.
inline constexpr std::uint64_t kShowSeed = 1;

struct ShowFiles {
  /// The folder that holds HVAssets.
  std::string assets;
  /// The scenario's file name, for people.
  std::string name;
  Scenario scenario;

  /// When the last look has faded.
  Duration end() const;
};

/// Without an assets option, assets/demo is looked for from the program's folder upwards, then from
/// the current one.
std::variant<ShowFiles, DemoRefusal> openShow(const DemoOptions& options,
                                              const std::filesystem::path& programFolder,
                                              const JsonReader& json);

}  // namespace halvora
