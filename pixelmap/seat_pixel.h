// SPDX-License-Identifier: Apache-2.0
// Which pixel of a frame a seat looks at. A pure function of its arguments.
#pragma once

#include <algorithm>
#include <cstdint>

#include "halvora/platform/video_asset.h"

namespace halvora {

/// The seat's own place, or the nearest one in a frame of this size, which is not empty.
inline PixelPosition seatPixel(std::int64_t x, std::int64_t y, std::uint32_t width,
                               std::uint32_t height) {
  const auto within = [](std::int64_t position, std::uint32_t size) {
    return static_cast<std::uint32_t>(
        std::clamp<std::int64_t>(position, 0, std::int64_t{size} - 1));
  };
  return {within(x, width), within(y, height)};
}

}  // namespace halvora
