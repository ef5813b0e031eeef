// SPDX-License-Identifier: Apache-2.0
// Commands out of the messages of Open Sound Control, as desks and show controllers send them.
// Values, any thread.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace halvora {

/// Larger datagrams are none of ours.
inline constexpr std::size_t kLargestOsc = 4096;

/// Whether this program can read them at all.
bool readsOsc();

/// One a message, in their order: /halvora/go is "go", /halvora/goto with a text is "goto TEXT",
/// any other address stands as it is, for a refusal. A number of 0 is a button that was let go, and
/// no command. Empty for what is no message.
std::vector<std::string> commandsOfOsc(std::span<const std::uint8_t> datagram);

}  // namespace halvora
