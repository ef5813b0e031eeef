// SPDX-License-Identifier: Apache-2.0
// A venue's document with texts for the names that it lacks, as the kit would read it on a phone
// with these texts. Any thread.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "halvora/platform/json.h"
#include "seats/seat_map.h"

namespace halvora {

/// Texts by key.
using StringTable = std::map<std::string, std::string, std::less<>>;

/// A flat JSON object of texts; members that are no texts count for nothing. None for a document
/// that is no such object.
std::optional<StringTable> readStringTable(std::string_view document, const JsonReader& json);

/// The map as the kit reads it. Texts that `strings` lacks are the kit's own.
SeatMap seatMapOf(std::string_view document, const StringTable& strings, const JsonReader& json);

}  // namespace halvora
