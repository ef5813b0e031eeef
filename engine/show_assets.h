// SPDX-License-Identifier: Apache-2.0
// What a show takes from the bundles once and never changes: equal for all engines of a process, so
// that one copy may serve them all. Values, any thread.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "halvora/platform/bundle.h"
#include "halvora/platform/json.h"
#include "light/palettes.h"

namespace halvora {

struct ShowAssets {
  std::vector<Palette> palettes;
  /// What the code's label shows before there is a code.
  std::string pairingCode = "0000";
  std::string mapNoSeatText;
  std::string lowLightText;
  /// Where players find clips: a folder of the main bundle; empty for nowhere.
  std::string clipFolder;
};

/// Whatever is wrong with the palettes' file, the show goes on in the commands' own colours.
std::shared_ptr<const ShowAssets> loadShowAssets(const Bundles& bundles, const JsonReader& json);

/// The kit's own text for a key, or `fallback` when its table has none.
std::string kitText(const Bundles& bundles, std::string_view key, std::string_view fallback);

}  // namespace halvora
