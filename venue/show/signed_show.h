// SPDX-License-Identifier: Apache-2.0
// A show as a transmitter sends it that has the show's key: each packet signed for the minute in
// which it is sent. Values; one thread.
#pragma once

#include "halvora/platform/message_codes.h"
#include "halvora/platform/time.h"
#include "venue/show/scenario.h"

namespace halvora {

/// The same scenario with its packets signed, up to `end`; it begins at that date. Repeats that
/// reach over the end of a minute become a line for each minute. What is no packet of ours, or is
/// signed already, stays as it is.
Scenario signedShow(const Scenario& scenario, MessageCode& code, Date begin, Duration end);

}  // namespace halvora
