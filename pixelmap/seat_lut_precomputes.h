// SPDX-License-Identifier: Apache-2.0
// Tables built ahead of the show, for a host that wants to know how far they are. Owned by the
// engine's seat tables; main thread. The work runs on the queue, and what the host handed in never
// goes there.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "halvora/platform/serial_queues.h"
#include "halvora/precompute.h"
#include "pixelmap/pixel_map_assets.h"
#include "pixelmap/seat_lut.h"
#include "pixelmap/seat_lut_jobs.h"

namespace halvora {

class SeatLutPrecomputes {
 public:
  explicit SeatLutPrecomputes(SeatLutJobsListener& listener);
  ~SeatLutPrecomputes();
  SeatLutPrecomputes(const SeatLutPrecomputes&) = delete;
  SeatLutPrecomputes& operator=(const SeatLutPrecomputes&) = delete;

  /// Prepares the seat's table of each of these videos, one after the other. Nothing but a word to
  /// `completion` where there are none, or no queue. The two are called in turns of their own and
  /// may do anything, but for destroying the engine's platform.
  void begin(std::vector<PixelMapVideoEntry> videos, SeatPosition seat, SerialQueue* queue,
             const std::shared_ptr<SeatLutJobs>& jobs, PrecomputeProgress progress,
             PrecomputeCompletion completion);
  /// Whether one of that generation has been begun that has not ended.
  bool isPrecomputing(std::uint64_t generation) const;

  bool isUnderWay() const { return !precomputes_.empty(); }
  /// Tells the host of one thing; false where there is none to tell.
  bool takeNext();

 private:
  friend struct SeatLutJobs;
  struct Job;
  struct Precompute;

  bool take(const std::shared_ptr<Job>& job);

  SeatLutJobsListener& listener_;
  /// In the order in which they were asked for.
  std::vector<std::shared_ptr<Precompute>> precomputes_;
};

}  // namespace halvora
