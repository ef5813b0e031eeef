// SPDX-License-Identifier: Apache-2.0
// Seat maps as text: what the kit makes of a venue's document.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "platform/json.h"

namespace halvora {

/// Texts by key.
using StringTable = std::map<std::string, std::string, std::less<>>;

/// A flat JSON object of texts; members that are no texts count for nothing. None for a document
/// that is no such object.
std::optional<StringTable> readStringTable(std::string_view document, const JsonReader& json);

/// The sections of a seat map document as a JSON array on one line; "[]" for a document without.
/// Texts that `strings` lacks are the kit's own.
std::string dumpSeatMap(std::string_view document, const StringTable& strings,
                        const JsonReader& json);

}  // namespace halvora
