// SPDX-License-Identifier: Apache-2.0
// Reads a venue for the crowd on the console, with the tables of all of its pixel maps. In the
// background.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "halvora/platform/json.h"
#include "halvora/platform/video_asset.h"
#include "halvora/platform/workers.h"
#include "pixelmap/pixel_map_assets.h"
#include "seats/seat_texts.h"
#include "venue/crowd/crowd_venue.h"

namespace halvora {

/// What is read, and who is told.
struct VenueOrder {
  /// The map's text; none where it cannot be read.
  std::optional<std::string> document;
  SeatMapTexts texts;
  std::vector<PixelMapVideoEntry> maps;
  /// About so many phones, evenly spread; 0 for one a seat.
  std::size_t phones = 0;
  /// Both are asked and told on any thread. The share is of 1.
  std::function<bool()> isCancelled;
  std::function<void(double share)> progress;
};

/// Null, and why not in `failure`; null without a word when it was cancelled. A map whose video
/// cannot be read has no tables: its phones show black.
std::unique_ptr<CrowdVenue> readVenueFiles(const VenueOrder& order, const VideoAssets& videos,
                                           const JsonReader& json, Workers& workers,
                                           std::string& failure);

}  // namespace halvora
