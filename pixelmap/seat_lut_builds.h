// SPDX-License-Identifier: Apache-2.0
// Tables that a look has asked for and that are not there: each is built once at a time, and one
// that could not be had is asked for again only after a rest that doubles. Owned by the engine's
// seat tables; main thread. The builds run on the queue.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "halvora/platform/serial_queues.h"
#include "halvora/platform/time.h"
#include "pixelmap/seat_lut.h"
#include "pixelmap/seat_lut_files.h"
#include "pixelmap/seat_lut_jobs.h"

namespace halvora {

/// The video of a pixel map, and what its table is kept under for a seat.
struct SeatVideo {
  std::string url;
  std::string key;
  SeatPosition seat;
};

class SeatLutBuilds {
 public:
  /// A table that could not be had is asked for again after the first of these, then after twice as
  /// long, up to the last, by whatever packet comes then; at once where the video is another.
  static constexpr Duration kFirstRest = milliseconds(1000);
  static constexpr Duration kLongestRest = milliseconds(64'000);

  SeatLutBuilds(RunLoop& loop, SeatLutJobsListener& listener);
  ~SeatLutBuilds();
  SeatLutBuilds(const SeatLutBuilds&) = delete;
  SeatLutBuilds& operator=(const SeatLutBuilds&) = delete;

  /// Whether a build of that very video has failed only just now. Opening it for every packet would
  /// cost more than the show.
  bool isResting(const std::string& key, const std::optional<VideoFileSignature>& signature) const;
  /// Has the table built, unless it is being built.
  void request(const SeatVideo& video, const std::optional<VideoFileSignature>& signature,
               SerialQueue& queue, const std::shared_ptr<SeatLutJobs>& jobs);
  /// Whatever is under way is wanted no more.
  void forget();

  bool isUnderWay() const;
  /// Takes one result that is there; false for none.
  bool takeNext();

 private:
  friend struct SeatLutJobs;
  struct Build;
  struct Attempt;

  bool take(const std::shared_ptr<Build>& build);

  RunLoop& loop_;
  SeatLutJobsListener& listener_;
  /// By key: every packet of their maps asks anew.
  std::map<std::string, Attempt, std::less<>> attempts_;
};

}  // namespace halvora
