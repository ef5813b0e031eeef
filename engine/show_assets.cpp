// SPDX-License-Identifier: Apache-2.0
#include "engine/show_assets.h"

#include <optional>

#include "halvora/platform/json.h"
#include "text/asset_paths.h"

namespace halvora {

namespace {

std::vector<Palette> loadPalettes(const Bundle& bundle, const JsonReader& json) {
  const auto text = bundle.readResource(kPaletteFile, kLargestPaletteFile);
  if (!text) return {};
  const std::optional<JsonValue> document = json.parse(*text);
  return document ? parsePalettes(*document) : std::vector<Palette>();
}

}  // namespace

std::shared_ptr<const ShowAssets> loadShowAssets(const Bundles& bundles, const JsonReader& json) {
  auto assets = std::make_shared<ShowAssets>();
  assets->palettes = loadPalettes(bundles.main, json);
  assets->mapNoSeatText = kitText(bundles, "hv_map_no_seat_overlay_message",
                                  "No seat selected for this part of the light show.\n"
                                  "Keep the app open to continue taking part.");
  assets->lowLightText =
      kitText(bundles, "hv_low_light_hint", "Light show active. Please keep the app open.");
  assets->clipFolder = bundles.main.location(kAssetFolder);
  return assets;
}

std::string kitText(const Bundles& bundles, std::string_view key, std::string_view fallback) {
  std::string text = bundles.kit.localizedString(key);
  return text.empty() || text == key ? std::string(fallback) : text;
}

}  // namespace halvora
