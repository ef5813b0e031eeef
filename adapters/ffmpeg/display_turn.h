// SPDX-License-Identifier: Apache-2.0
// How a picture is turned and mirrored on its way to the screen. A value; any thread.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "halvora/platform/image.h"
#include "halvora/platform/video_asset.h"

namespace halvora {

struct DisplayTurn {
  /// Whether the picture's rows become columns.
  bool isTransposed = false;
  /// Whether its columns, and its rows, run backwards.
  bool isXReversed = false;
  bool isYReversed = false;

  /// By the matrix of a track header, as nine numbers in its order. Steps of 90 degrees and mirrors
  /// count, anything else does not.
  static DisplayTurn ofMatrix(std::span<const std::int32_t, 9> matrix);
  bool operator==(const DisplayTurn&) const = default;
};

/// The whole picture, turned; opaque.
Image turnedImage(const VideoFrame& frame, DisplayTurn turn);

}  // namespace halvora
