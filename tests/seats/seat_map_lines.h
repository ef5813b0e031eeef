// SPDX-License-Identifier: Apache-2.0
// Seat maps as lines of text, a line a seat, so that a test can say what it expects.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "seats/seat_map_document.h"

namespace halvora {

/// "SECTION | ROW | SEAT X,Y" for every seat, in the order of the map.
std::vector<std::string> linesOf(const SeatMap& map);

SeatMap seatMapOf(std::string_view document, const SeatMapTexts& texts = {});

/// The lines of a document's map.
std::vector<std::string> linesOfDocument(std::string_view document, const SeatMapTexts& texts = {});

}  // namespace halvora
