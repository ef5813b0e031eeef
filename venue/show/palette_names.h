// SPDX-License-Identifier: Apache-2.0
// The palettes as people choose them, by name: the engine reads the same file and needs no names.
// Values, any thread.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "halvora/platform/json.h"

namespace halvora {

struct NamedPalette {
  std::int64_t id = 0;
  /// Empty where the file has none.
  std::string name;
  /// As they are written; empty for one that is no text.
  std::vector<std::string> colours;
};

/// Those with an id, in the order of the file. Empty where there is no file in that folder of
/// assets, or nothing in it can be read.
std::vector<NamedPalette> readPaletteNames(const std::string& assets, const JsonReader& json);

}  // namespace halvora
