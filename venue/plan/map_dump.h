// SPDX-License-Identifier: Apache-2.0
// Seat maps as text: what the kit makes of a venue's document.
#pragma once

#include <string>
#include <string_view>

#include "halvora/platform/json.h"
#include "venue/plan/named_map.h"

namespace halvora {

/// The sections of a seat map document as a JSON array on one line; "[]" for a document without.
/// Texts that `strings` lacks are the kit's own.
std::string dumpSeatMap(std::string_view document, const StringTable& strings,
                        const JsonReader& json);

}  // namespace halvora
