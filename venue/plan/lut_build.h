// SPDX-License-Identifier: Apache-2.0
// Builds seat tables from a video, all in one pass over it, and keeps them as the kit does, or
// writes the bytes of one into a file. Main thread; decodes on threads of its own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "pixelmap/seat_lut.h"
#include "venue/base/outside.h"

namespace halvora {

/// The frames to look at, where it is not all of them.
struct LutSeed {
  std::int64_t center = 0;
  std::int64_t radius = 0;
};

/// Checked: paths are absolute, the video can be read.
struct LutBuildRequest {
  std::string video;
  /// At least one; only one with `raw`.
  std::vector<SeatPosition> seats;
  std::string documents;
  /// Where the bytes of the table go in place of the documents folder; empty for the latter.
  std::string raw;
  /// Only with `raw`.
  std::optional<LutSeed> seed;
  /// 0 for as many as the machine has processors.
  int threads = 0;
  /// Tables beyond these bytes lie in a file, on the file system of the documents.
  std::size_t mostHeapBytes = std::size_t{128} << 20;
};

/// Prints a line for each seat that was kept. Where it fails, what it wrote is gone again.
CommandResult buildLuts(const LutBuildRequest& request, const Outside& outside,
                        const Output& output);

}  // namespace halvora
