// SPDX-License-Identifier: Apache-2.0
#include "venue/show/palette_names.h"

#include <utility>

#include "adapters/standard/standard_files.h"
#include "text/asset_paths.h"

namespace halvora {

namespace {

std::string textOf(const JsonValue* value) {
  return value != nullptr && value->text() != nullptr ? *value->text() : std::string();
}

}  // namespace

std::vector<NamedPalette> readPaletteNames(const std::string& assets, const JsonReader& json) {
  std::vector<NamedPalette> palettes;
  const auto text = readFile(assets + "/" + kPaletteFile, kLargestPaletteFile);
  const auto document = text ? json.parse(*text) : std::nullopt;
  const JsonValue* list = document ? document->find("palettes") : nullptr;
  if (list == nullptr || list->array() == nullptr) return palettes;
  for (const JsonValue& entry : *list->array()) {
    const JsonValue* id = entry.find("id");
    if (id == nullptr || id->integer() == nullptr) continue;
    NamedPalette palette{*id->integer(), textOf(entry.find("name")), {}};
    const JsonValue* colours = entry.find("colours");
    if (colours != nullptr && colours->array() != nullptr) {
      for (const JsonValue& colour : *colours->array()) palette.colours.push_back(textOf(&colour));
    }
    palettes.push_back(std::move(palette));
  }
  return palettes;
}

}  // namespace halvora
