// SPDX-License-Identifier: Apache-2.0
#include "pixelmap/seat_lut_builds.h"

#include <algorithm>
#include <new>
#include <utility>

namespace halvora {

/// A table on its way. The queue's until it has ended, then the main thread's.
struct SeatLutBuilds::Build {
  static void run(const std::shared_ptr<Build>& self) noexcept {
    const auto here = self->jobs.lock();
    if (!here) return;
    self->lut = here->maker.buildAndPersist(self->video.url, self->video.seat, self->end);
    self->hasEnded = true;
    here->tell(self);
  }

  std::weak_ptr<SeatLutJobs> jobs;
  SeatLutBuilds* owner;
  SeatVideo video;
  SeatLut lut = nullptr;
  BuildEnd end = BuildEnd::cancelled;
  std::atomic<bool> hasEnded{false};
};

/// A table that was asked for and is not there.
struct SeatLutBuilds::Attempt {
  void failed(Duration now) {
    build.reset();
    rest = std::min(rest > Duration::zero() ? rest * 2 : kFirstRest, kLongestRest);
    restsUntil = now + rest;
  }

  /// Null while none is under way.
  std::shared_ptr<Build> build;
  /// The video's, when the last build of it was asked for.
  std::optional<VideoFileSignature> signature;
  Duration rest{};
  Duration restsUntil{};
};

SeatLutBuilds::SeatLutBuilds(RunLoop& loop, SeatLutJobsListener& listener)
    : loop_(loop), listener_(listener) {}

SeatLutBuilds::~SeatLutBuilds() = default;

void SeatLutBuilds::forget() { attempts_.clear(); }

bool SeatLutBuilds::isResting(const std::string& key,
                              const std::optional<VideoFileSignature>& signature) const {
  const auto found = attempts_.find(key);
  if (found == attempts_.end() || found->second.build) return false;
  return found->second.signature == signature && loop_.now() < found->second.restsUntil;
}

void SeatLutBuilds::request(const SeatVideo& video,
                            const std::optional<VideoFileSignature>& signature, SerialQueue& queue,
                            const std::shared_ptr<SeatLutJobs>& jobs) {
  Attempt& attempt = attempts_[video.key];
  if (attempt.build) return;
  if (attempt.signature != signature) attempt.rest = {};
  attempt.signature = signature;
  SeatLutFailure failure = SeatLutFailure::noMemory;
  try {
    listener_.workBegins();
    attempt.build = std::make_shared<Build>();
    attempt.build->jobs = jobs;
    attempt.build->owner = this;
    attempt.build->video = video;
    if (queue.dispatch([job = attempt.build] { Build::run(job); })) return;
    failure = SeatLutFailure::noThread;
  } catch (const std::bad_alloc&) {
    // As it was said.
  }
  jobs->maker.count(failure);
  attempt.failed(loop_.now());
  listener_.workEnded();
}

// False where it has been taken already, or is not there yet.
bool SeatLutBuilds::take(const std::shared_ptr<Build>& build) {
  if (!build->hasEnded.exchange(false)) return false;
  const auto attempt = attempts_.find(build->video.key);
  if (attempt != attempts_.end() && attempt->second.build == build) {
    if (build->lut || build->end == BuildEnd::cancelled) {
      attempts_.erase(attempt);
    } else {
      attempt->second.failed(loop_.now());
    }
  }
  listener_.workEnded();
  if (build->lut) listener_.built(build->video.key, build->lut);
  return true;
}

bool SeatLutBuilds::isUnderWay() const {
  return std::ranges::any_of(attempts_,
                             [](const auto& row) { return row.second.build != nullptr; });
}

bool SeatLutBuilds::takeNext() {
  for (const auto& [key, attempt] : attempts_) {
    if (attempt.build && attempt.build->hasEnded) return take(std::shared_ptr(attempt.build));
  }
  return false;
}

}  // namespace halvora
