// SPDX-License-Identifier: Apache-2.0
// Makes seat tables from a video: of one seat or of a whole venue in one pass over all frames, or a
// quick partial one around a frame. Everything here works on the calling thread and those of the
// workers, shares no state, and belongs on a background queue.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>

#include "halvora/platform/video_asset.h"
#include "halvora/platform/workers.h"
#include "pixelmap/seat_lut.h"

namespace halvora {

struct BuildControl {
  Workers& workers;
  /// Asked before each frame, on any of the workers' threads; true ends the build with no table.
  std::function<bool()> isCancelled = {};
  /// Told after each frame how many have been decoded so far, on any of the workers' threads. A
  /// second pass begins to count anew.
  std::function<void(int framesDone)> onFrame = {};
};

enum class BuildEnd : std::uint8_t {
  built,
  /// There is no such video.
  noVideo,
  /// None of its frames can be read.
  noFrames,
  cancelled,
  /// Nothing is wrong with the video, as far as was seen.
  noMemory,
};

/// Fills the tables of many seats in one pass, or in two where the first has lost pictures: they
/// count as missing only if they are missing again. `table` has one row of
/// `pixelMapFrameCount(asset.durationSeconds())` words a seat, in the order of the seats, all 0; a
/// seat outside of the picture gets the pixel at the edge nearest to it. Besides the table it needs
/// room for 64 words a seat and worker. Where there are no threads, this one does everything. Where
/// the end is not `built`, the table is worth nothing.
BuildEnd buildSeatTables(const VideoAsset& asset, std::span<const SeatPosition> seats,
                         std::span<std::uint32_t> table, const BuildControl& control);

/// The whole table of one seat, or null. `end`, if given, receives how the build ended. Throws
/// nothing that the control's own functions do not.
SeatLut buildPixelMapSeatLUTForVideoURL(const VideoAssets& videos, const std::string& videoPath,
                                        SeatPosition seat, const BuildControl& control,
                                        BuildEnd* end = nullptr);

/// The frames within `radius` of `centerFrame`, modulo the video's frames; the others have no
/// colour. Null where none could be had. Unlike the whole table, a seat outside of the picture has
/// no colour. Throws std::bad_alloc where memory is short.
SeatLut buildSeedPixelMapSeatLUTForVideoURL(const VideoAssets& videos, const std::string& videoPath,
                                            SeatPosition seat, std::int64_t centerFrame,
                                            std::int64_t radius);

}  // namespace halvora
