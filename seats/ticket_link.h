// SPDX-License-Identifier: Apache-2.0
// The seat that a link of a ticket names. A pure function over text that anybody may have written;
// any thread.
#pragma once

#include <optional>
#include <string_view>

#include "seats/seat_finder.h"

namespace halvora {

/// The query items `section`, `row` and `seat`, percent-decoded, of which each has to be there with
/// 1 to 64 bytes; the first of several counts. None for any other link, for escapes that are none,
/// and beyond 2048 bytes.
std::optional<TicketSeat> ticketSeatOf(std::string_view link);

}  // namespace halvora
