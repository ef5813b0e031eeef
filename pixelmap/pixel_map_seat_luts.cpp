// SPDX-License-Identifier: Apache-2.0
#include "pixelmap/pixel_map_seat_luts.h"

#include <algorithm>
#include <atomic>
#include <map>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "halvora/platform/run_loop.h"
#include "pixelmap/seat_lut_builder.h"
#include "pixelmap/seat_lut_files.h"
#include "pixelmap/seat_lut_maker.h"

namespace halvora {

namespace {

// How often the main thread looks for results of which it was not told.
constexpr Duration kWatch = milliseconds(1000);

}  // namespace

/// What jobs have in common with the main thread.
struct PixelMapSeatLuts::Shared {
  Shared(const Platform& platform, const SeatLutSource* ready)
      : runLoop(platform.runLoop), maker(platform, ready) {}

  /// Has the main thread take what there is of a job. Where it cannot be told, its watch sees it.
  template <class Job>
  void tell(const std::shared_ptr<Job>& job) noexcept {
    try {
      runLoop.post([job] {
        if (!job->shared.expired()) job->luts->take(job);
      });
    } catch (...) {
      maker.count(SeatLutFailure::noMemory);
    }
  }

  RunLoop& runLoop;
  SeatLutMaker maker;
  /// A precompute of another generation is cancelled.
  std::atomic<std::uint64_t> pixelMapPersistentPrecomputeGeneration{0};
};

/// A table on its way. The queue's until it has ended, then the main thread's.
struct PixelMapSeatLuts::Build {
  static void run(const std::shared_ptr<Build>& self) noexcept {
    const auto here = self->shared.lock();
    if (!here) return;
    self->lut = here->maker.buildAndPersist(self->videoURL, self->seat, self->end);
    self->hasEnded = true;
    here->tell(self);
  }

  std::weak_ptr<Shared> shared;
  PixelMapSeatLuts* luts;
  std::string videoURL;
  std::string key;
  SeatPosition seat;
  SeatLut lut = nullptr;
  BuildEnd end = BuildEnd::cancelled;
  std::atomic<bool> hasEnded{false};
};

/// A table that was asked for and is not there.
struct PixelMapSeatLuts::Attempt {
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

/// A precompute's share that the queue knows: nothing of the host's.
struct PixelMapSeatLuts::PrecomputeJob {
  enum class State : std::uint8_t { running, cancelled, ended };

  static void run(const std::shared_ptr<PrecomputeJob>& self) noexcept {
    const auto here = self->shared.lock();
    if (!here) return;
    for (const PixelMapVideoEntry& entry : self->entries) {
      if (here->maker.isEnding() ||
          here->pixelMapPersistentPrecomputeGeneration != self->generation) {
        self->state = State::cancelled;
        here->tell(self);
        return;
      }
      here->maker.prepare(entry.videoURL, self->seat);
      ++self->done;
      here->tell(self);
    }
    self->state = State::ended;
    here->tell(self);
  }

  std::weak_ptr<Shared> shared;
  PixelMapSeatLuts* luts;
  std::vector<PixelMapVideoEntry> entries;
  SeatPosition seat;
  std::uint64_t generation = 0;
  std::atomic<int> done{0};
  std::atomic<State> state{State::running};
};

/// What the host wants to know of it. Main thread.
struct PixelMapSeatLuts::Precompute {
  std::shared_ptr<PrecomputeJob> job;
  PrecomputeProgress progress;
  PrecomputeCompletion completion;
  /// Maps that it has been told of.
  int told = 0;
};

/// The video looked up last, so that a show does not go through folders at every packet.
struct PixelMapSeatLuts::FoundVideo {
  int venueId = -1;
  int pixelMapId = -1;
  SeatPosition seat;
  std::string url;
  std::string key;
};

struct PixelMapSeatLuts::Work {
  explicit Work(const Platform& platform)
      : assets(platform.bundles, platform.files, platform.videoAssets, platform.images) {}

  PixelMapAssets assets;
  std::unique_ptr<LiveSampler> sampler;
  SeatLutState state;
  /// Tables that are not there, by key: every packet of their maps asks anew.
  std::map<std::string, Attempt, std::less<>> attempts;
  /// In the order in which they were asked for.
  std::vector<std::shared_ptr<Precompute>> precomputes;
  /// While anything is under way.
  Timer watch;
  FoundVideo foundVideo;
};

PixelMapSeatLuts::PixelMapSeatLuts(const Platform& platform, SeatLutListener& listener,
                                   const SeatLutSource* ready)
    : platform_(platform), ready_(ready), listener_(listener) {}

PixelMapSeatLuts::~PixelMapSeatLuts() { end(); }

PixelMapSeatLuts::Work& PixelMapSeatLuts::work() {
  if (!work_) work_ = std::make_unique<Work>(platform_);
  return *work_;
}

const std::shared_ptr<PixelMapSeatLuts::Shared>& PixelMapSeatLuts::shared() {
  if (!shared_) shared_ = std::make_shared<Shared>(platform_, ready_);
  return shared_;
}

const SeatLutState& PixelMapSeatLuts::state() const {
  static const SeatLutState kNone;
  return work_ ? work_->state : kNone;
}

LiveSampler& PixelMapSeatLuts::sampler() {
  Work& here = work();
  if (!here.sampler) {
    here.sampler = std::make_unique<LiveSampler>(here.assets, platform_.videoAssets);
  }
  return *here.sampler;
}

PixelMapAssets& PixelMapSeatLuts::assets() { return work().assets; }

void PixelMapSeatLuts::useQueues(SerialQueue& lutDecode, SerialQueue& liveDecode) {
  pixelMapLUTDecodeQueue_ = &lutDecode;
  pixelMapLiveDecodeQueue_ = &liveDecode;
}

void PixelMapSeatLuts::end() {
  if (shared_) shared_->maker.end();
  stopPixelMapLiveSampler();
  if (work_) work_->watch.invalidate();
}

SeatLutFailures PixelMapSeatLuts::failures() const {
  SeatLutFailures failures = shared_ ? shared_->maker.failures() : SeatLutFailures();
  if (work_ && work_->sampler) {
    failures.counts[static_cast<std::size_t>(SeatLutFailure::noMemory)] +=
        work_->sampler->failures();
  }
  return failures;
}

void PixelMapSeatLuts::clearActiveSeatLUT() {
  if (work_) work_->state = {};
}

void PixelMapSeatLuts::stopPixelMapLiveSampler() {
  if (work_ && work_->sampler) work_->sampler->stopPixelMapLiveSampler();
}

void PixelMapSeatLuts::preloadPixelMapSeatLUTForVenueId(int venueId, int pixelMapId,
                                                        std::int64_t seatX, std::int64_t seatY) {
  if (seatX < 0 || seatY < 0) return;
  const FoundVideo& video = findVideo(venueId, pixelMapId, {seatX, seatY});
  if (video.url.empty()) {
    assets().setPixelMapDebugText("Missing video.mp4 (Venue-" + std::to_string(venueId) + "/" +
                                  std::to_string(pixelMapId) + ") using JPG fallback");
    clearActiveSeatLUT();
    stopPixelMapLiveSampler();
    return;
  }
  assets().setPixelMapDebugText(std::nullopt);
  SeatLut lut = ready_ != nullptr ? ready_->find(video.url, video.seat) : nullptr;
  if (!lut) lut = shared()->maker.findKept(video.url, video.seat, video.key);
  if (!lut) {
    // A copy: what a listener does may look for another video.
    buildSoon(FoundVideo(video));
    return;
  }
  work().state.pixelMapSeatLUTRequestedKey = video.key;
  if (adopt(video.key, lut)) listener_.refreshMode21ColorIfNeeded();
}

// The phone goes black at once rather than show another map's colour.
void PixelMapSeatLuts::buildSoon(const FoundVideo& video) {
  Work& here = work();
  const bool wasRequested = here.state.pixelMapSeatLUTRequestedKey == video.key;
  clearActiveSeatLUT();
  here.state.pixelMapSeatLUTRequestedKey = video.key;
  const auto signature = shared()->maker.files().pixelMapVideoFileSignatureForURL(video.url);
  const bool isAskedFor = !isResting(video, signature);
  if (!isAskedFor) {
    stopPixelMapLiveSampler();
  } else if (pixelMapLiveDecodeQueue_ != nullptr) {
    sampler().startPixelMapLiveSamplerForVideoURL(
        {video.url, video.venueId, video.pixelMapId, video.key, video.seat,
         listener_.currentVideoMinutes(), signature},
        *pixelMapLiveDecodeQueue_);
  }
  if (!wasRequested) listener_.refreshMode21ColorIfNeeded();
  if (isAskedFor) requestBuild(video, signature);
}

// Whether a build of that very video has failed only just now. Opening it for every packet would
// cost more than the show.
bool PixelMapSeatLuts::isResting(const FoundVideo& video,
                                 const std::optional<VideoFileSignature>& signature) {
  const auto& attempts = work().attempts;
  const auto found = attempts.find(video.key);
  if (found == attempts.end() || found->second.build) return false;
  return found->second.signature == signature &&
         platform_.runLoop->now() < found->second.restsUntil;
}

const PixelMapSeatLuts::FoundVideo& PixelMapSeatLuts::findVideo(int venueId, int pixelMapId,
                                                                SeatPosition seat) {
  FoundVideo& found = work().foundVideo;
  const bool isSame = !found.url.empty() && found.venueId == venueId &&
                      found.pixelMapId == pixelMapId && found.seat == seat;
  if (!isSame) {
    std::string url = assets().pixelMapVideoURLForVenueId(venueId, pixelMapId);
    std::string key = pixelMapSeatLUTCacheKeyForVideoPath(url, seat);
    found = {venueId, pixelMapId, seat, std::move(url), std::move(key)};
  }
  return found;
}

// True if another table was in force before.
bool PixelMapSeatLuts::adopt(const std::string& key, const SeatLut& lut) {
  SeatLutState& state = work().state;
  const bool isNew = state.pixelMapSeatLUTLoadedKey != key;
  state.pixelMapSeatLUTLoadedKey = key;
  state.pixelMapSeatLUTActiveData = lut;
  state.pixelMapSeatLUTFrameCount = frameCountOf(lut);
  stopPixelMapLiveSampler();
  return isNew;
}

void PixelMapSeatLuts::requestBuild(const FoundVideo& video,
                                    const std::optional<VideoFileSignature>& signature) {
  if (pixelMapLUTDecodeQueue_ == nullptr) return;
  Attempt& attempt = work().attempts[video.key];
  if (attempt.build) return;
  if (attempt.signature != signature) attempt.rest = {};
  attempt.signature = signature;
  SeatLutFailure failure = SeatLutFailure::noMemory;
  try {
    beginWatch();
    attempt.build = std::make_shared<Build>();
    Build& build = *attempt.build;
    build.shared = shared();
    build.luts = this;
    build.videoURL = video.url;
    build.key = video.key;
    build.seat = video.seat;
    if (pixelMapLUTDecodeQueue_->dispatch([job = attempt.build] { Build::run(job); })) return;
    failure = SeatLutFailure::noThread;
  } catch (const std::bad_alloc&) {
    // As it was said.
  }
  shared()->maker.count(failure);
  attempt.failed(platform_.runLoop->now());
  endWatch();
}

// False where it has been taken already, or is not there yet.
bool PixelMapSeatLuts::take(const std::shared_ptr<Build>& build) {
  if (!build->hasEnded.exchange(false)) return false;
  auto& attempts = work().attempts;
  const auto attempt = attempts.find(build->key);
  if (attempt != attempts.end() && attempt->second.build == build) {
    if (build->lut || build->end == BuildEnd::cancelled) {
      attempts.erase(attempt);
    } else {
      attempt->second.failed(platform_.runLoop->now());
    }
  }
  endWatch();
  if (state().pixelMapSeatLUTRequestedKey != build->key || !build->lut) return true;
  shared()->maker.cache().store(build->key, build->lut);
  if (adopt(build->key, build->lut)) listener_.refreshMode21ColorIfNeeded();
  return true;
}

// Results of which the main thread could not be told for want of memory would be waited for for
// ever.
void PixelMapSeatLuts::beginWatch() {
  Timer& watch = work().watch;
  if (watch.isValid()) return;
  watch = Timer(platform_.runLoop, platform_.runLoop->every(kWatch, [this] {
    // What is taken may have the host destroy this.
    const std::weak_ptr<Shared> weak = shared_;
    while (!weak.expired() && takeNext()) {
    }
  }));
}

void PixelMapSeatLuts::endWatch() {
  const auto isUnderWay = [](const auto& row) { return row.second.build != nullptr; };
  Work& here = work();
  if (here.precomputes.empty() && std::ranges::none_of(here.attempts, isUnderWay)) {
    here.watch.invalidate();
  }
}

bool PixelMapSeatLuts::takeNext() {
  const Work& here = work();
  for (const auto& [key, attempt] : here.attempts) {
    if (attempt.build && attempt.build->hasEnded) return take(std::shared_ptr(attempt.build));
  }
  return std::ranges::any_of(here.precomputes, [this](const auto& precompute) {
    return take(std::shared_ptr(precompute->job));
  });
}

MaybeColour PixelMapSeatLuts::colorFromActivePixelMapSeatLUTForFrameIndex(int frameIndex) {
  const SeatLutState& table = state();
  if (!table.pixelMapSeatLUTActiveData || table.pixelMapSeatLUTFrameCount <= 0) {
    return std::nullopt;
  }
  const int frame = std::max(frameIndex, 0) % table.pixelMapSeatLUTFrameCount;
  const std::uint32_t word =
      table.pixelMapSeatLUTActiveData.words()[static_cast<std::size_t>(frame)];
  return word == kNoColourWord ? std::nullopt : std::optional(colourOfWord(word));
}

void PixelMapSeatLuts::precomputePixelMapLUTsForVenueId(std::int64_t venueId, SeatPosition seat,
                                                        PrecomputeProgress progress,
                                                        PrecomputeCompletion completion) {
  std::vector<PixelMapVideoEntry> entries;
  if (venueId >= 1 && seat.x >= 0 && seat.y >= 0) {
    entries = assets().pixelMapVideoEntriesForVenueId(venueId);
  }
  const bool hasWork = !entries.empty() && pixelMapLUTDecodeQueue_ != nullptr;
  if (!hasWork) entries.clear();
  auto job = std::make_shared<PrecomputeJob>();
  job->shared = shared();
  job->luts = this;
  job->entries = std::move(entries);
  job->seat = seat;
  auto precompute =
      std::make_shared<Precompute>(Precompute{job, std::move(progress), std::move(completion)});
  beginWatch();
  work().precomputes.push_back(std::move(precompute));
  if (hasWork) {
    work().foundVideo = {};
    job->generation = ++shared()->pixelMapPersistentPrecomputeGeneration;
    if (pixelMapLUTDecodeQueue_->dispatch([job] { PrecomputeJob::run(job); })) return;
    shared()->maker.count(SeatLutFailure::noThread);
  }
  job->state = PrecomputeJob::State::ended;
  shared()->tell(job);
}

// Tells the host of one thing, each in a turn of its own; false where there is none to tell.
bool PixelMapSeatLuts::take(const std::shared_ptr<PrecomputeJob>& job) {
  auto& precomputes = work().precomputes;
  const auto found = std::ranges::find(precomputes, job, &Precompute::job);
  if (found == precomputes.end()) return false;
  // What the host does may be the end of this, or begin another.
  const std::shared_ptr<Precompute> precompute = *found;
  const PrecomputeJob::State state = job->state;
  const int done = job->done;
  const auto total = static_cast<int>(job->entries.size());
  if (precompute->told < done) {
    const int told = ++precompute->told;
    if (!precompute->progress) return true;
    precompute->progress(told, total, job->entries[static_cast<std::size_t>(told - 1)].mapId);
    return true;
  }
  if (state == PrecomputeJob::State::running) return false;
  precomputes.erase(found);
  endWatch();
  if (state == PrecomputeJob::State::ended && precompute->completion) {
    precompute->completion(done, total);
  }
  return true;
}

std::uint64_t PixelMapSeatLuts::precomputeGeneration() const {
  return shared_ ? shared_->pixelMapPersistentPrecomputeGeneration.load() : 0;
}

// One that a newer one or an invalidation has ended is under way no more.
bool PixelMapSeatLuts::isPrecomputing() const {
  return work_ && std::ranges::any_of(work_->precomputes, [this](const auto& precompute) {
           const PrecomputeJob& job = *precompute->job;
           return !job.entries.empty() && job.generation == precomputeGeneration();
         });
}

void PixelMapSeatLuts::invalidatePixelMapSeatLUTCacheForVenueId(std::int64_t venueId) {
  if (venueId < 1) return;
  struct Removal {
    void run() const {
      const auto here = shared.lock();
      if (!here) return;
      for (const PixelMapVideoEntry& entry : entries)
        here->maker.files().removeTables(entry.videoURL);
    }

    std::weak_ptr<Shared> shared;
    std::vector<PixelMapVideoEntry> entries;
  };
  const auto removal = std::make_shared<const Removal>(
      Removal{shared(), assets().pixelMapVideoEntriesForVenueId(venueId)});
  ++shared()->pixelMapPersistentPrecomputeGeneration;
  shared()->maker.cache().clear();
  clearActiveSeatLUT();
  work().attempts.clear();
  work().foundVideo = {};
  endWatch();
  if (pixelMapLUTDecodeQueue_ == nullptr) return;
  // Tables that stayed would be taken for the new ones.
  if (!pixelMapLUTDecodeQueue_->dispatch([removal] { removal->run(); })) removal->run();
}

}  // namespace halvora
