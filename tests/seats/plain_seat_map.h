// SPDX-License-Identifier: Apache-2.0
// The rules of seat maps applied to a tree of values, one after the other and without regard to
// speed: what the direct parse is checked against.
#pragma once

#include <string>
#include <vector>

#include "halvora/platform/json.h"
#include "seats/seat_texts.h"

namespace halvora {

/// The lines of the map, as linesOf gives them.
std::vector<std::string> plainSeatMapLines(const JsonValue& document, const SeatMapTexts& texts);

}  // namespace halvora
