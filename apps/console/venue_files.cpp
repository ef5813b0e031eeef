// SPDX-License-Identifier: Apache-2.0
#include "apps/console/venue_files.h"

#include <algorithm>

#include "pixelmap/frame_time.h"

namespace halvora {

std::unique_ptr<CrowdVenue> readVenueFiles(const VenueOrder& order, const VideoAssets& videos,
                                           const JsonReader& json, Workers& workers,
                                           std::string& failure) {
  auto venue = std::make_unique<CrowdVenue>(order.document.value_or(""), order.texts, json,
                                            order.phones, thinned);
  if (venue->seatCount() == 0) {
    failure = "This venue has no map that can be read";
    return nullptr;
  }
  std::vector<int> frames;
  int allFrames = 0;
  for (const PixelMapVideoEntry& map : order.maps) {
    const auto video = videos.open(map.videoPath);
    frames.push_back(video ? pixelMapFrameCount(video->durationSeconds()) : 0);
    allFrames += frames.back();
  }
  int framesBefore = 0;
  for (std::size_t at = 0; at < order.maps.size(); ++at) {
    const BuildControl control{
        .workers = workers,
        .isCancelled = order.isCancelled,
        .onFrame = [&order, framesBefore, allFrames](int done) {
          order.progress(static_cast<double>(framesBefore + done) / std::max(allFrames, 1));
        }};
    const auto end = venue->build(order.maps[at], videos, control);
    if (end == VenueTables::End::cancelled) return nullptr;
    if (end == VenueTables::End::noRoom) {
      failure = "There is no room for the seats' tables in the temporary folder";
      return nullptr;
    }
    framesBefore += frames[at];
  }
  if (order.isCancelled()) return nullptr;
  return venue;
}

}  // namespace halvora
