// SPDX-License-Identifier: Apache-2.0
// The two versions that a venue's map document states: of its seats, and of its pixel maps.
// Stateless; any thread.
#pragma once

#include <optional>
#include <string_view>

#include "halvora/platform/json.h"
#include "seats/seat_storage.h"

namespace halvora {

/// Each version counts as 1 where it is missing, no number, or below 1. None for a document that is
/// malformed or no object.
std::optional<MapVersionInfo> mapVersionInfoFromJSON(std::string_view document,
                                                     const JsonReader& json);

}  // namespace halvora
