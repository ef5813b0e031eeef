// SPDX-License-Identifier: Apache-2.0
// Packets as text: what a transmitter's bytes say, line by line.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>

#include "engine/signed_broadcast.h"

namespace halvora {

/// Whether the tag of a signed packet is good.
using TagCheck = std::function<bool(SignedBroadcastView packet)>;

/// One JSON object on one line: the fields as transmitted and what follows from them, its tag if it
/// has one and, where it can be checked, whether that is good; or why the data is no packet of
/// ours.
std::string describePacket(std::span<const std::uint8_t> data, const TagCheck& isTagGood = {});

}  // namespace halvora
