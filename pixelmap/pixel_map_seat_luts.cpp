// SPDX-License-Identifier: Apache-2.0
#include "pixelmap/pixel_map_seat_luts.h"

#include <algorithm>
#include <atomic>
#include <map>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "pixelmap/seat_lut_builder.h"
#include "pixelmap/seat_lut_cache.h"
#include "pixelmap/seat_lut_files.h"
#include "platform/run_loop.h"

namespace halvora {

struct PixelMapSeatLuts::Shared {
  Shared(const Platform& platform, const SeatLutSource* readyTables)
      : ready(readyTables),
        runLoop(platform.runLoop),
        videos(platform.videoAssets),
        workers(platform.workers),
        files(platform.files, platform.json, platform.bundles.documents) {}

  SeatLut findReady(const std::string& videoURL, SeatPosition seat) const {
    return ready != nullptr ? ready->find(videoURL, seat) : nullptr;
  }
  SeatLut build(const std::string& videoURL, SeatPosition seat) const {
    return buildPixelMapSeatLUTForVideoURL(
        videos, videoURL, seat,
        {.workers = workers, .isCancelled = [this] { return isEnding.load(); }});
  }
  SeatLut buildAndPersist(const std::string& videoURL, SeatPosition seat) const {
    const auto signature = files.pixelMapVideoFileSignatureForURL(videoURL);
    SeatLut lut = build(videoURL, seat);
    if (lut && signature) files.persistPixelMapSeatLUTData(lut, videoURL, seat, signature);
    return lut;
  }

  const SeatLutSource* const ready;
  RunLoop& runLoop;
  const VideoAssets& videos;
  Workers& workers;
  const SeatLutFiles files;
  SeatLutCache pixelMapSeatLUTCache;
  std::atomic<bool> isEnding{false};
  std::mutex lock;
  /// A precompute of another generation is cancelled. Under the lock.
  std::uint64_t pixelMapPersistentPrecomputeGeneration = 0;
};

struct PixelMapSeatLuts::PrecomputeRun {
  std::weak_ptr<Shared> shared;
  PixelMapSeatLuts* luts;
  std::uint64_t generation;
  std::vector<PixelMapVideoEntry> entries;
  SeatPosition seat;
  PrecomputeProgress progress;
  PrecomputeCompletion completion;
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
  /// Builds that have been asked for and not yet ended, by key: every packet of a map without a
  /// table asks anew.
  std::map<std::string, std::uint64_t, std::less<>> building;
  std::uint64_t builds = 0;
  /// The generation of the precompute under way; 0 for none.
  std::uint64_t precomputeUnderWay = 0;
  FoundVideo foundVideo;
};

PixelMapSeatLuts::PixelMapSeatLuts(const Platform& platform, Listener listener,
                                   const SeatLutSource* ready)
    : platform_(platform), ready_(ready), listener_(std::move(listener)) {}

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
  if (shared_) shared_->isEnding = true;
  stopPixelMapLiveSampler();
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
  if (!lut) lut = shared()->pixelMapSeatLUTCache.find(video.key);
  if (!lut) {
    lut = shared()->files.loadPersistedPixelMapSeatLUTForVideoURL(video.url, video.seat);
    if (lut) shared()->pixelMapSeatLUTCache.store(video.key, lut);
  }
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
  if (pixelMapLiveDecodeQueue_ != nullptr) {
    sampler().startPixelMapLiveSamplerForVideoURL(
        {video.url, video.venueId, video.pixelMapId, video.key, video.seat,
         listener_.currentVideoMinutes()},
        *pixelMapLiveDecodeQueue_);
  }
  if (!wasRequested) listener_.refreshMode21ColorIfNeeded();
  requestBuild(video);
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

void PixelMapSeatLuts::requestBuild(const FoundVideo& video) {
  if (pixelMapLUTDecodeQueue_ == nullptr || work().building.contains(video.key)) return;
  struct Job {
    std::weak_ptr<Shared> weak;
    PixelMapSeatLuts* luts;
    std::uint64_t number;
    std::string videoURL;
    std::string key;
    SeatPosition seat;
    SeatLut lut;
  };
  auto job = std::make_unique<Job>(
      Job{shared(), this, ++work().builds, video.url, video.key, video.seat, nullptr});
  work().building[video.key] = job->number;
  pixelMapLUTDecodeQueue_->dispatch([job = std::move(job)]() mutable {
    const auto shared = job->weak.lock();
    if (!shared) return;
    job->lut = shared->buildAndPersist(job->videoURL, job->seat);
    shared->runLoop.post([job = std::move(job)] {
      if (job->weak.expired()) return;
      job->luts->buildEnded(job->number, job->key, job->lut);
    });
  });
}

void PixelMapSeatLuts::buildEnded(std::uint64_t number, const std::string& key,
                                  const SeatLut& lut) {
  auto& builds = work().building;
  const auto building = builds.find(key);
  if (building != builds.end() && building->second == number) builds.erase(building);
  if (state().pixelMapSeatLUTRequestedKey != key || !lut) return;
  shared()->pixelMapSeatLUTCache.store(key, lut);
  if (adopt(key, lut)) listener_.refreshMode21ColorIfNeeded();
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
  if (entries.empty() || pixelMapLUTDecodeQueue_ == nullptr) {
    reportCompletion(std::move(completion), 0, 0);
    return;
  }
  work().foundVideo = {};
  std::uint64_t generation = 0;
  {
    const std::lock_guard lock(shared()->lock);
    generation = ++shared()->pixelMapPersistentPrecomputeGeneration;
  }
  auto run = std::make_unique<PrecomputeRun>(
      PrecomputeRun{shared(), this, generation, std::move(entries), seat, std::move(progress),
                    std::move(completion)});
  pixelMapLUTDecodeQueue_->dispatch([run = std::move(run)] { precompute(*run); });
  work().precomputeUnderWay = generation;
}

// On the queue.
void PixelMapSeatLuts::precompute(const PrecomputeRun& run) {
  const auto shared = run.shared.lock();
  if (!shared) return;
  const auto total = static_cast<int>(run.entries.size());
  int done = 0;
  for (const PixelMapVideoEntry& entry : run.entries) {
    {
      const std::lock_guard lock(shared->lock);
      if (shared->pixelMapPersistentPrecomputeGeneration != run.generation) return;
    }
    if (shared->isEnding) return;
    if (!shared->findReady(entry.videoURL, run.seat)) {
      SeatLut lut = shared->files.loadPersistedPixelMapSeatLUTForVideoURL(entry.videoURL, run.seat);
      if (!lut) lut = shared->buildAndPersist(entry.videoURL, run.seat);
      if (lut) {
        shared->pixelMapSeatLUTCache.store(
            pixelMapSeatLUTCacheKeyForVideoPath(entry.videoURL, run.seat), std::move(lut));
      }
    }
    ++done;
    struct Report {
      std::weak_ptr<Shared> shared;
      PrecomputeProgress progress;
      int done;
      int total;
      std::string mapId;
    };
    auto report =
        std::make_unique<Report>(Report{run.shared, run.progress, done, total, entry.mapId});
    shared->runLoop.post([report = std::move(report)] {
      if (report->shared.expired() || !report->progress) return;
      report->progress(report->done, report->total, report->mapId);
    });
  }
  struct End {
    std::weak_ptr<Shared> shared;
    PixelMapSeatLuts* luts;
    std::uint64_t generation;
    PrecomputeCompletion completion;
    int done;
    int total;
  };
  auto end =
      std::make_unique<End>(End{run.shared, run.luts, run.generation, run.completion, done, total});
  shared->runLoop.post([end = std::move(end)] {
    if (end->shared.expired()) return;
    std::uint64_t& underWay = end->luts->work().precomputeUnderWay;
    if (underWay == end->generation) underWay = 0;
    if (end->completion) end->completion(end->done, end->total);
  });
}

std::uint64_t PixelMapSeatLuts::precomputeGeneration() const {
  if (!shared_) return 0;
  const std::lock_guard lock(shared_->lock);
  return shared_->pixelMapPersistentPrecomputeGeneration;
}

bool PixelMapSeatLuts::isPrecomputing() const { return work_ && work_->precomputeUnderWay != 0; }

void PixelMapSeatLuts::reportCompletion(PrecomputeCompletion completion, int done, int total) {
  if (!completion) return;
  auto boxed = std::make_unique<PrecomputeCompletion>(std::move(completion));
  platform_.runLoop.post(
      [boxed = std::move(boxed), done, total, weak = std::weak_ptr<Shared>(shared())] {
        if (!weak.expired()) (*boxed)(done, total);
      });
}

void PixelMapSeatLuts::invalidatePixelMapSeatLUTCacheForVenueId(std::int64_t venueId) {
  if (venueId < 1) return;
  std::vector<PixelMapVideoEntry> entries = assets().pixelMapVideoEntriesForVenueId(venueId);
  {
    const std::lock_guard lock(shared()->lock);
    ++shared()->pixelMapPersistentPrecomputeGeneration;
    shared()->pixelMapSeatLUTCache.clear();
    clearActiveSeatLUT();
  }
  work().building.clear();
  work().precomputeUnderWay = 0;
  work().foundVideo = {};
  if (pixelMapLUTDecodeQueue_ == nullptr) return;
  struct Removal {
    std::weak_ptr<Shared> shared;
    std::vector<PixelMapVideoEntry> entries;
  };
  auto removal = std::make_unique<Removal>(Removal{shared(), std::move(entries)});
  pixelMapLUTDecodeQueue_->dispatch([removal = std::move(removal)] {
    const auto shared = removal->shared.lock();
    if (!shared) return;
    for (const PixelMapVideoEntry& entry : removal->entries) {
      shared->files.removeTables(entry.videoURL);
    }
  });
}

}  // namespace halvora
