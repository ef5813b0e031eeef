// SPDX-License-Identifier: Apache-2.0
// Palettes and the colour in force. The engine owns one ColourState and the palettes it loaded at
// start-up; both live on the main thread.
#pragma once

#include <cstdint>
#include <vector>

#include "halvora/colour.h"
#include "halvora/platform/json.h"
#include "halvora/platform/random.h"

namespace halvora {

struct Palette {
  std::int64_t id = 0;
  std::vector<Colour> colours;
};

/// The palettes of a document {"palettes": [{"id": 1, "colours": ["#RRGGBB", …]}, …]}, in its
/// order. An entry without an id or without colours is left out, so that its id falls back to a
/// command's own colour; a colour that is no text is black.
std::vector<Palette> parsePalettes(const JsonValue& document);

struct ColourState {
  MaybeColour currentColour;
  /// The active palette's colours; null while a command's own colour is shown. Points into the
  /// engine's palettes.
  const std::vector<Colour>* colorsArray = nullptr;
  std::uint32_t currentPaletteId = 0;
  std::uint32_t currentPaletteIndex = 0;
  /// The level of the screen that a running show asked for, 0 to 1.
  double currentMaster = 1.0;
  float currentHeadroom = 1.0F;
};

/// Palette ids that name a palette; 0 and the ids above mean a command's own colour.
constexpr bool namesPalette(std::uint32_t paletteId) { return paletteId >= 1 && paletteId <= 50; }

/// Takes over a command's palette and colour: a new palette draws one of its colours, the palette
/// in force keeps the colour drawn last, anything else shows `rgb`.
void choosePaletteColour(ColourState& state, const std::vector<Palette>& palettes, Random& random,
                         std::uint32_t paletteId, const Colour& rgb);

/// Draws the next colour of the active palette, never the same one twice running where it has two;
/// nothing without one.
void setNextPaletteColor(ColourState& state, Random& random);

}  // namespace halvora
