// SPDX-License-Identifier: Apache-2.0
#include "pixelmap/seat_lut_precomputes.h"

#include <algorithm>
#include <atomic>
#include <utility>

namespace halvora {

/// A precompute's share that the queue knows: nothing of the host's.
struct SeatLutPrecomputes::Job {
  enum class State : std::uint8_t { running, cancelled, ended };

  static void run(const std::shared_ptr<Job>& self) noexcept {
    const auto here = self->jobs.lock();
    if (!here) return;
    for (const PixelMapVideoEntry& video : self->videos) {
      if (here->maker.isEnding() || here->precomputeGeneration != self->generation) {
        self->state = State::cancelled;
        here->tell(self);
        return;
      }
      here->maker.prepare(video.videoPath, self->seat);
      ++self->done;
      here->tell(self);
    }
    self->state = State::ended;
    here->tell(self);
  }

  std::weak_ptr<SeatLutJobs> jobs;
  SeatLutPrecomputes* owner;
  std::vector<PixelMapVideoEntry> videos;
  SeatPosition seat;
  std::uint64_t generation = 0;
  std::atomic<int> done{0};
  std::atomic<State> state{State::running};
};

/// What the host wants to know of it. Main thread.
struct SeatLutPrecomputes::Precompute {
  std::shared_ptr<Job> job;
  PrecomputeProgress progress;
  PrecomputeCompletion completion;
  /// Maps that it has been told of.
  int told = 0;
};

SeatLutPrecomputes::SeatLutPrecomputes(SeatLutJobsListener& listener) : listener_(listener) {}

SeatLutPrecomputes::~SeatLutPrecomputes() = default;

void SeatLutPrecomputes::begin(std::vector<PixelMapVideoEntry> videos, SeatPosition seat,
                               SerialQueue* queue, const std::shared_ptr<SeatLutJobs>& jobs,
                               PrecomputeProgress progress, PrecomputeCompletion completion) {
  const bool hasWork = !videos.empty() && queue != nullptr;
  if (!hasWork) videos.clear();
  auto job = std::make_shared<Job>();
  job->jobs = jobs;
  job->owner = this;
  job->videos = std::move(videos);
  job->seat = seat;
  auto precompute =
      std::make_shared<Precompute>(Precompute{job, std::move(progress), std::move(completion)});
  listener_.workBegins();
  precomputes_.push_back(std::move(precompute));
  if (hasWork) {
    job->generation = ++jobs->precomputeGeneration;
    if (queue->dispatch([job] { Job::run(job); })) return;
    jobs->maker.count(SeatLutFailure::noThread);
  }
  job->state = Job::State::ended;
  jobs->tell(job);
}

// Each in a turn of its own.
bool SeatLutPrecomputes::take(const std::shared_ptr<Job>& job) {
  const auto found = std::ranges::find(precomputes_, job, &Precompute::job);
  if (found == precomputes_.end()) return false;
  // What the host does may be the end of this, or begin another.
  const std::shared_ptr<Precompute> precompute = *found;
  const Job::State state = job->state;
  const int done = job->done;
  const auto total = static_cast<int>(job->videos.size());
  if (precompute->told < done) {
    const int told = ++precompute->told;
    if (!precompute->progress) return true;
    precompute->progress(told, total, job->videos[static_cast<std::size_t>(told - 1)].mapId);
    return true;
  }
  if (state == Job::State::running) return false;
  precomputes_.erase(found);
  listener_.workEnded();
  if (state == Job::State::ended && precompute->completion) precompute->completion(done, total);
  return true;
}

bool SeatLutPrecomputes::takeNext() {
  return std::ranges::any_of(precomputes_, [this](const auto& precompute) {
    return take(std::shared_ptr(precompute->job));
  });
}

// One that a newer one or an invalidation has ended is under way no more.
bool SeatLutPrecomputes::isPrecomputing(std::uint64_t generation) const {
  return std::ranges::any_of(precomputes_, [generation](const auto& precompute) {
    const Job& job = *precompute->job;
    return !job.videos.empty() && job.generation == generation;
  });
}

}  // namespace halvora
