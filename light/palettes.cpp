// SPDX-License-Identifier: Apache-2.0
#include "light/palettes.h"

#include <algorithm>

#include "halvora/platform/json.h"

namespace halvora {

std::vector<Palette> parsePalettes(const JsonValue& document) {
  std::vector<Palette> palettes;
  const JsonValue* list = document.find("palettes");
  if (list == nullptr || list->array() == nullptr) return palettes;
  for (const JsonValue& entry : *list->array()) {
    const JsonValue* id = entry.find("id");
    const JsonValue* colours = entry.find("colours");
    if (id == nullptr || !id->wholeNumber() || colours == nullptr) continue;
    if (colours->array() == nullptr || colours->array()->empty()) continue;
    Palette palette{*id->wholeNumber(), {}};
    for (const JsonValue& colour : *colours->array()) {
      palette.colours.push_back(colour.text() != nullptr ? colorFromHexString(*colour.text())
                                                         : kBlack);
    }
    palettes.push_back(std::move(palette));
  }
  return palettes;
}

void choosePaletteColour(ColourState& state, const std::vector<Palette>& palettes, Random& random,
                         std::uint32_t paletteId, const Colour& rgb) {
  const bool changed = paletteId != state.currentPaletteId;
  if (!changed && namesPalette(paletteId)) return;
  state.currentPaletteId = paletteId;

  const auto found = namesPalette(paletteId)
                         ? std::find_if(palettes.begin(), palettes.end(),
                                        [&](const Palette& p) { return p.id == paletteId; })
                         : palettes.end();
  if (found == palettes.end()) {
    state.colorsArray = nullptr;
    state.currentColour = rgb;
    return;
  }
  state.colorsArray = &found->colours;
  state.currentPaletteIndex = random.below(static_cast<std::uint32_t>(found->colours.size()));
  state.currentColour = found->colours[state.currentPaletteIndex];
}

void setNextPaletteColor(ColourState& state, Random& random) {
  if (state.colorsArray == nullptr) return;
  const auto count = static_cast<std::uint32_t>(state.colorsArray->size());
  std::uint32_t index = random.below(count);
  if (index == state.currentPaletteIndex) index = index == 0 ? 1 : index - 1;
  // A palette of one colour has nowhere to step to.
  if (index >= count) index = 0;
  state.currentPaletteIndex = index;
  state.currentColour = (*state.colorsArray)[index];
}

}  // namespace halvora
