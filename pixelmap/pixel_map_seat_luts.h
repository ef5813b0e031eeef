// SPDX-License-Identifier: Apache-2.0
// The seat's colours during a show and before it: makes the table of the pixel map on the air the
// active one (from memory, from disk, or by building it), answers which colour the seat has in a
// frame, and builds a venue's tables ahead. Owned by the engine; main thread. Tables are built on
// the engine's queue, by jobs that do nothing once the engine is gone.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "halvora/platform/platform.h"
#include "halvora/platform/serial_queues.h"
#include "halvora/platform/time.h"
#include "light/show_parts.h"
#include "pixelmap/live_sampler.h"
#include "pixelmap/pixel_map_assets.h"
#include "pixelmap/seat_lut.h"
#include "pixelmap/seat_lut_failure.h"
#include "pixelmap/seat_lut_files.h"
#include "pixelmap/seat_lut_jobs.h"
#include "pixelmap/seat_lut_precomputes.h"

namespace halvora {

/// The table in force. Main thread.
struct SeatLutState {
  /// The key last asked for, and that of the active table.
  std::string pixelMapSeatLUTRequestedKey;
  std::string pixelMapSeatLUTLoadedKey;
  SeatLut pixelMapSeatLUTActiveData;
  int pixelMapSeatLUTFrameCount = 0;
};

/// What the tables ask and tell of the show that they are for.
class SeatLutListener {
 public:
  virtual ~SeatLutListener() = default;
  /// The frame on the air, around which live sampling begins.
  virtual int currentVideoMinutes() const = 0;
  /// Another table, or none, is in force: the light may have to change.
  virtual void refreshMode21ColorIfNeeded() = 0;
};

class PixelMapSeatLuts final : public SeatLutPart, private SeatLutJobsListener {
 public:
  /// Before all else a table is looked for in `ready`, if there is one. Platform, listener and
  /// tables must outlive this.
  PixelMapSeatLuts(const Platform& platform, SeatLutListener& listener,
                   const SeatLutSource* ready = nullptr);
  PixelMapSeatLuts(Platform&&, SeatLutListener&, const SeatLutSource* = nullptr) = delete;
  ~PixelMapSeatLuts() override;
  PixelMapSeatLuts(const PixelMapSeatLuts&) = delete;
  PixelMapSeatLuts& operator=(const PixelMapSeatLuts&) = delete;

  /// Where tables are built and live frames decoded; before anything else. The queues must go
  /// before this does, and `end` must be called before they go.
  void useQueues(SerialQueue& lutDecode, SerialQueue& liveDecode);
  /// Lets a build that is under way end at its next frame, because nobody will want it.
  void end();

  void preloadPixelMapSeatLUTForVenueId(int venueId, int pixelMapId, std::int64_t seatX,
                                        std::int64_t seatY) override;
  void clearActiveSeatLUT() override;
  void stopPixelMapLiveSampler() override;
  MaybeColour colorFromActivePixelMapSeatLUTForFrameIndex(int frameIndex) override;

  /// The two are called, copied and destroyed on the main thread. They may do anything, but for
  /// destroying the engine's platform. Where the work cannot begin, `completion` is told of fewer
  /// maps than there are.
  void precomputePixelMapLUTsForVenueId(std::int64_t venueId, SeatPosition seat,
                                        PrecomputeProgress progress,
                                        PrecomputeCompletion completion);
  void invalidatePixelMapSeatLUTCacheForVenueId(std::int64_t venueId);
  /// Another one with each precompute that has maps to go through and with each invalidation: what
  /// was begun under an earlier one has been given up.
  std::uint64_t precomputeGeneration() const;
  /// Whether a precompute has been begun that has neither ended nor been given up.
  bool isPrecomputing() const;

  /// Empty before the first pixel map.
  const SeatLutState& state() const;
  SeatLutFailures failures() const;
  const LiveSampler& liveSampler() { return sampler(); }
  PixelMapAssets& assets();

 private:
  struct Work;
  struct FoundVideo;

  Work& work();
  LiveSampler& sampler();
  const std::shared_ptr<SeatLutJobs>& jobs();
  const FoundVideo& findVideo(int venueId, int pixelMapId, SeatPosition seat);
  bool adopt(const std::string& key, const SeatLut& lut);
  void buildSoon(const FoundVideo& video);
  void workBegins() override;
  void workEnded() override;
  void built(const std::string& key, const SeatLut& lut) override;

  const Platform& platform_;
  const SeatLutSource* const ready_;
  SeatLutListener& listener_;
  /// Made for the first pixel map; most phones that ever listen see none.
  std::unique_ptr<Work> work_;
  /// What background jobs may reach, and only through weak references. Made for the first job.
  std::shared_ptr<SeatLutJobs> jobs_;
  SerialQueue* pixelMapLUTDecodeQueue_ = nullptr;
  SerialQueue* pixelMapLiveDecodeQueue_ = nullptr;
};

}  // namespace halvora
