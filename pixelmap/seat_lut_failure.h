// SPDX-License-Identifier: Apache-2.0
// What can keep a seat from its table, and how often it did. Values, any thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace halvora {

/// What has kept seats from their tables.
enum class SeatLutFailure : std::uint8_t {
  /// The video could not be opened.
  noVideo,
  /// None of its frames could be read.
  noFrames,
  /// Memory was short; nothing is said of the video.
  noMemory,
  /// No thread could be had for the work.
  noThread,
  /// The table is there, but could not be kept on disk.
  notSaved,
};
inline constexpr std::size_t kSeatLutFailureCount = 5;

/// How often each has happened since the engine was made.
struct SeatLutFailures {
  std::array<std::uint64_t, kSeatLutFailureCount> counts{};
  std::uint64_t operator[](SeatLutFailure failure) const {
    return counts[static_cast<std::size_t>(failure)];
  }
};

}  // namespace halvora
