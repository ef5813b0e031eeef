// SPDX-License-Identifier: Apache-2.0
#include "apps/console/venue_files.h"

#include <algorithm>
#include <new>

#include "pixelmap/frame_time.h"
#include "seats/seat_map_document.h"

namespace halvora {

namespace {

// Every n-th seat of each row, every other row by half of that further on: a pattern without
// gaps, as far as the rows are straight. What is left has no neighbours whose squares could meet.
std::vector<CrowdSeat> thinned(const std::vector<CrowdSeat>& seats, std::size_t count) {
  const std::size_t stride = (seats.size() + count - 1) / count;
  if (stride < 2) return seats;
  std::vector<CrowdSeat> left;
  std::size_t row = 0;
  std::size_t place = 0;
  for (std::size_t at = 0; at < seats.size(); ++at, ++place) {
    const CrowdSeat& seat = seats[at];
    if (at > 0 && (seat.row.data() != seats[at - 1].row.data() ||
                   seat.section.data() != seats[at - 1].section.data())) {
      ++row;
      place = 0;
    }
    if (place % stride != row % 2 * (stride / 2)) continue;
    left.push_back(seat);
    left.back().isStanding = false;
  }
  return left;
}

}  // namespace

std::unique_ptr<VenueFiles> readVenueFiles(const VenueOrder& order, const VideoAssets& videos,
                                           const JsonReader& json, Workers& workers,
                                           std::string& failure) {
  auto files = std::make_unique<VenueFiles>();
  if (order.document) {
    files->map = parseSeatMapSectionsFromJSON(*order.document, order.texts, json);
  }
  files->seats = seatsOf(files->map);
  files->seatCount = files->seats.size();
  if (files->seats.empty()) {
    failure = "This venue has no map that can be read";
    return nullptr;
  }
  if (order.phones > 0) files->seats = thinned(files->seats, order.phones);
  std::vector<SeatPosition> places;
  for (const CrowdSeat& seat : files->seats) places.push_back(seat.at);
  files->tables.emplace(places);

  std::vector<int> frames;
  int allFrames = 0;
  for (const PixelMapVideoEntry& map : order.maps) {
    const auto video = videos.open(map.videoURL);
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
    const auto end =
        files->tables->build(order.maps[at], videos, control,
                             [&files](std::size_t words) { return files->rooms.make(words); });
    if (end == VenueTables::End::cancelled) return nullptr;
    if (end == VenueTables::End::noRoom) {
      failure = "There is no room for the seats' tables in the temporary folder";
      return nullptr;
    }
    if (end == VenueTables::End::noMemory) throw std::bad_alloc();
    framesBefore += frames[at];
  }
  if (order.isCancelled()) return nullptr;
  return files;
}

}  // namespace halvora
