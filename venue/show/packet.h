// SPDX-License-Identifier: Apache-2.0
// Packets as text: what a transmitter's bytes say, line by line.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace halvora {

/// One JSON object on one line: the fields as transmitted and what follows from them, or why the
/// data is no packet of ours.
std::string describePacket(std::span<const std::uint8_t> data);

}  // namespace halvora
