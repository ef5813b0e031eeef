// SPDX-License-Identifier: Apache-2.0
// Packets by the thousand million before a whole engine: each is judged as the rules in their
// plainest form judge it. One thread.
#pragma once

#include <cstdint>

namespace halvora {

/// How many were looks that the engine took over; throws FuzzFailure where a packet was judged
/// otherwise than by the rules.
std::uint64_t judgePackets(std::uint64_t count, std::uint64_t seed);

}  // namespace halvora
