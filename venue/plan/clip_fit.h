// SPDX-License-Identifier: Apache-2.0
// Whether a clip fits to a hall: its size, its rate and its length, and a copy that does. Main
// thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "venue/base/outside.h"
#include "venue/plan/artwork.h"

namespace halvora {

struct ClipFacts {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  /// Of pictures that came out, and the time from the first to the last of them.
  std::uint64_t pictures = 0;
  double span = 0;
  double seconds = 0;
  bool hasLostPictures = false;
  bool isEven = true;

  double framesPerSecond() const;
};

/// Reads all of it. Or what to end with: it is no video, or the user has had enough.
std::variant<ClipFacts, CommandResult> readClip(const std::string& file, const Outside& outside);

/// What it lacks for that canvas, a line each; empty where it fits.
std::vector<std::string> lacksOf(const ClipFacts& clip, ArtworkCanvas canvas);

/// Writes a copy of that size and rate: the clip fills the canvas, and what does not fit at its
/// longer sides is cut off, the same on both. Or what to end with; then nothing is left.
std::optional<CommandResult> convertClip(const std::string& file, const std::string& out,
                                         ArtworkCanvas canvas, const Outside& outside);

}  // namespace halvora
