// SPDX-License-Identifier: Apache-2.0
// The seat tables of one engine on a virtual phone, with queues that work when the test says so and
// a log of what the engine was told. A test owns one.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "adapters/virtual/virtual_phone.h"
#include "pixelmap/pixel_map_seat_luts.h"
#include "pixelmap/seat_lut_files.h"
#include "tests/pixelmap/seat_lut_bench.h"
#include "tests/pixelmap/seat_lut_calls.h"
#include "tests/support/step_queue.h"

namespace halvora {

class PixelMapBench {
 public:
  /// The seat that `preload` asks for.
  static constexpr SeatPosition kSeat{2, 1};

  PixelMapBench();
  ~PixelMapBench();
  PixelMapBench(const PixelMapBench&) = delete;
  PixelMapBench& operator=(const PixelMapBench&) = delete;

  static std::string videoOf(const std::string& map, int venue = 7);
  static std::string keyOf(const std::string& map, SeatPosition seat = kSeat);
  /// The saved table of a map and seat.
  static std::string dataOf(const std::string& map, SeatPosition seat = kSeat);

  /// A map of venue 7, or another, whose video has these opaque colours; `onFrame` is called before
  /// each frame that is read.
  void putMap(const std::string& map, const Words& words,
              std::function<void(std::size_t)> onFrame = {}, int venue = 7);
  /// The same, with the table of the seat on disk.
  void putMapWithTable(const std::string& map, const Words& words, SeatPosition seat = kSeat);

  PixelMapSeatLuts& luts() { return *luts_; }
  const SeatLutState& state() const { return luts_->state(); }
  /// What an engine does when it goes: no queue works on.
  void destroy();

  void preload(int map, SeatPosition seat = kSeat) {
    luts_->preloadPixelMapSeatLUTForVenueId(7, map, seat.x, seat.y);
  }
  void precompute(SeatPosition seat = kSeat, int venue = 7, const std::string& name = "");
  /// Runs what was posted to the main thread.
  void turn() { phone.loop.runFor({}); }
  /// Lets both queues work until nothing is left, then runs what they posted.
  void settle();

  /// The frame's colour as red, green, blue; none.
  MaybeColour colour(int frame) {
    return luts_->colorFromActivePixelMapSeatLUTForFrameIndex(frame);
  }
  bool isSaved(const std::string& map, SeatPosition seat = kSeat) const {
    return phone.virtualFiles.attributes(dataOf(map, seat)).has_value();
  }
  int framesRead() const { return phone.virtualVideos.counts.framesRead; }
  int opens() const { return phone.virtualVideos.counts.opens; }

  /// Tables that are ready before all else, by "video|x|y".
  struct ReadyTables final : SeatLutSource {
    SeatLut find(std::string_view videoPath, SeatPosition seat) const override {
      const auto found = tables.find(pixelMapSeatLUTCacheKeyForVideoPath(videoPath, seat));
      return found == tables.end() ? nullptr : found->second;
    }
    std::map<std::string, SeatLut> tables;
  };

  VirtualPhone phone;
  const Platform platform = phone.platform();
  ReadyTables ready;
  StepQueue lutQueue{"lut"};
  StepQueue liveQueue{"live"};
  int currentVideoMinutes = 0;
  /// "refresh" and the map in force, "missing" texts, and what precompute reports.
  Log<std::string> log;

 private:
  SeatLutCalls calls_{[this] { log.add("refresh " + state().pixelMapSeatLUTLoadedKey); },
                      &currentVideoMinutes};
  std::unique_ptr<PixelMapSeatLuts> luts_;
};

}  // namespace halvora
