// SPDX-License-Identifier: Apache-2.0
// All seats of a map as a picture: a disc a seat at its position, a colour and a number a section,
// standing areas in a dashed box, seats that share a pixel in red. A pure function; any thread.
#pragma once

#include <cstdint>

#include "halvora/platform/image.h"
#include "seats/seat_map.h"

namespace halvora {

constexpr std::uint32_t kSmallestPlan = 200;
constexpr std::uint32_t kLargestPlan = 6000;

/// `size` is the longer side of the seats' part of the picture, in pixels; a list of the sections
/// comes below it. The map has seats.
Image drawSeatPlan(const SeatMap& map, std::uint32_t size);

}  // namespace halvora
