// SPDX-License-Identifier: Apache-2.0
// Pixel-map videos count as 30 frames a second, whatever they were made with: frame N is on show at
// N / 30 seconds. Any thread.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>

#include "halvora/platform/video_asset.h"

namespace halvora {

inline constexpr double kPixelMapFramesPerSecond = 30.0;
inline constexpr std::int32_t kPixelMapTimescale = 600;
inline constexpr int kMostPixelMapFrames = 65025;

/// The index modulo the count, never negative; 0 for a count below 1.
constexpr int normalizedPixelMapFrameIndex(std::int64_t index, int frameCount) {
  if (frameCount < 1) return 0;
  const auto rest = static_cast<int>(index % frameCount);
  return rest < 0 ? rest + frameCount : rest;
}

/// The frames of a video of that duration, 1 to 65025; 1 for a duration that is none.
inline int pixelMapFrameCount(double durationSeconds) {
  if (!std::isfinite(durationSeconds) || durationSeconds <= 0) return 1;
  const double frames = std::round(durationSeconds * kPixelMapFramesPerSecond);
  return static_cast<int>(std::clamp(frames, 1.0, double{kMostPixelMapFrames}));
}

/// The frame that a sample presented at that time belongs to; none for a time that is not finite,
/// negative, or of a frame not below the count.
inline std::optional<int> pixelMapFrameAt(double seconds, int frameCount) {
  if (!std::isfinite(seconds) || seconds < 0) return std::nullopt;
  const double frame = std::round(seconds * kPixelMapFramesPerSecond);
  return frame < frameCount ? std::optional(static_cast<int>(frame)) : std::nullopt;
}

constexpr MediaTime pixelMapFrameTime(int frame) {
  return {std::int64_t{frame} * (kPixelMapTimescale / 30), kPixelMapTimescale};
}

}  // namespace halvora
