// SPDX-License-Identifier: Apache-2.0
// A venue's seat map document, map.json, as bytes to the map: either layout, in one pass and
// without a tree of values in between. Pure functions; any thread.
#pragma once

#include <cstddef>
#include <string_view>

#include "halvora/platform/json.h"
#include "seats/seat_map.h"
#include "seats/seat_texts.h"

namespace halvora {

/// A longer document counts as none.
constexpr std::size_t kLargestSeatMap = std::size_t{64} << 20;

/// Without sections for a document that yields none, malformed ones included.
SeatMap parseSeatMapSectionsFromJSON(std::string_view document, const SeatMapTexts& texts,
                                     const JsonReader& json);

}  // namespace halvora
