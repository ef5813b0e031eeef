// SPDX-License-Identifier: Apache-2.0
// What the background jobs of one engine's seat tables have in common with its main thread. Jobs
// hold it weakly and do nothing once it is gone.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "halvora/platform/platform.h"
#include "halvora/platform/run_loop.h"
#include "pixelmap/seat_lut_maker.h"

namespace halvora {

struct SeatLutJobs {
  SeatLutJobs(const Platform& platform, const SeatLutSource* ready)
      : runLoop(platform.runLoop), maker(platform, ready) {}

  /// Has the main thread take what there is of a job, in a turn of its own. Where it cannot be
  /// told, its watch sees it. Any thread.
  template <class Job>
  void tell(const std::shared_ptr<Job>& job) noexcept {
    try {
      runLoop.post([job] {
        if (!job->jobs.expired()) job->owner->take(job);
      });
    } catch (...) {
      maker.count(SeatLutFailure::noMemory);
    }
  }

  RunLoop& runLoop;
  SeatLutMaker maker;
  /// A precompute of another generation is cancelled.
  std::atomic<std::uint64_t> precomputeGeneration{0};
};

/// Hears of the jobs. Main thread.
class SeatLutJobsListener {
 public:
  virtual ~SeatLutJobsListener() = default;
  /// Something is under way from now on; may throw for want of memory, and then it does not begin.
  virtual void workBegins() = 0;
  /// Something is not under way any more.
  virtual void workEnded() = 0;
  /// A table that a look has asked for is there. What is done then may be the end of its builds.
  virtual void built(const std::string& key, const SeatLut& lut) = 0;
};

}  // namespace halvora
