// SPDX-License-Identifier: Apache-2.0
#include "tests/pixelmap/pixel_map_bench.h"

#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "pixelmap/seat_lut_files.h"

namespace halvora {

namespace {

const ExactJsonReader& jsonReader() {
  static const ExactJsonReader kReader;
  return kReader;
}

VirtualPhoneSetup phoneSetup() {
  VirtualPhoneSetup setup;
  setup.documents = "/documents";
  return setup;
}

}  // namespace

PixelMapBench::PixelMapBench() : phone(jsonReader(), phoneSetup()) {
  phone.mainBundle.folder = "/main";
  luts_ = std::make_unique<PixelMapSeatLuts>(platform, calls_, &ready);
  luts_->useQueues(lutQueue, liveQueue);
  luts_->assets().debugTextListener = [this](const std::optional<std::string>& text) {
    if (text) log.add(*text);
  };
}

PixelMapBench::~PixelMapBench() = default;

std::string PixelMapBench::videoOf(const std::string& map, int venue) {
  return "/main/HVAssets/Maps/Venue-" + std::to_string(venue) + "/" + map + "/video.mp4";
}

std::string PixelMapBench::keyOf(const std::string& map, SeatPosition seat) {
  return videoOf(map) + "|" + std::to_string(seat.x) + "|" + std::to_string(seat.y);
}

std::string PixelMapBench::dataOf(const std::string& map, SeatPosition seat) {
  VirtualFiles none;
  return SeatLutFiles(none, jsonReader(), "/documents")
      .pixelMapSeatLUTDataURLForVideoURL(videoOf(map), seat);
}

void PixelMapBench::putMap(const std::string& map, const Words& words,
                           std::function<void(std::size_t)> onFrame, int venue) {
  VirtualVideo video = VirtualVideo::ofWords(words);
  video.onFrame = std::move(onFrame);
  phone.virtualFiles.put(videoOf(map, venue), "video " + map, 1e9);
  phone.virtualVideos.put(videoOf(map, venue), std::move(video));
}

void PixelMapBench::putMapWithTable(const std::string& map, const Words& words, SeatPosition seat) {
  putMap(map, words);
  const SeatLutFiles files(phone.virtualFiles, jsonReader(), "/documents");
  EXPECT_TRUE(files.persistPixelMapSeatLUTData(lutOf(words), videoOf(map), seat));
}

void PixelMapBench::destroy() {
  luts_->end();
  luts_.reset();
}

void PixelMapBench::precompute(SeatPosition seat, int venue, const std::string& name) {
  luts_->precomputePixelMapLUTsForVenueId(
      venue, seat,
      [this, name](int done, int total, const std::string& mapId) {
        log.add(name + std::to_string(done) + "/" + std::to_string(total) + " " + mapId);
      },
      [this, name](int done, int total) {
        log.add(name + "done " + std::to_string(done) + "/" + std::to_string(total));
      });
}

void PixelMapBench::settle() {
  lutQueue.runAll();
  liveQueue.runAll();
  turn();
}

}  // namespace halvora
