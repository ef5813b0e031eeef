// SPDX-License-Identifier: Apache-2.0
// In place of the reader, where there is no library for these messages.
#include "venue/live/osc_message.h"

namespace halvora {

bool readsOsc() { return false; }

std::vector<std::string> commandsOfOsc(std::span<const std::uint8_t> /*datagram*/) { return {}; }

}  // namespace halvora
