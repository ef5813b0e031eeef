// SPDX-License-Identifier: Apache-2.0
#include "pixelmap/pixel_map_seat_luts.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "halvora/platform/run_loop.h"
#include "pixelmap/seat_lut_builds.h"

namespace halvora {

namespace {

// How often the main thread looks for results of which it was not told.
constexpr Duration kWatch = milliseconds(1000);

}  // namespace

/// The video looked up last, so that a show does not go through folders at every packet.
struct PixelMapSeatLuts::FoundVideo {
  int venueId = -1;
  int pixelMapId = -1;
  SeatVideo video;
};

struct PixelMapSeatLuts::Work {
  Work(const Platform& platform, PixelMapSeatLuts& luts)
      : assets(platform.bundles, platform.videoAssets, platform.images),
        builds(platform.runLoop, luts),
        precomputes(luts) {}

  bool isUnderWay() const { return builds.isUnderWay() || precomputes.isUnderWay(); }

  PixelMapAssets assets;
  std::unique_ptr<LiveSampler> sampler;
  SeatLutState state;
  SeatLutBuilds builds;
  SeatLutPrecomputes precomputes;
  /// While anything is under way.
  Timer watch;
  FoundVideo foundVideo;
};

PixelMapSeatLuts::PixelMapSeatLuts(const Platform& platform, SeatLutListener& listener,
                                   const SeatLutSource* ready)
    : platform_(platform), ready_(ready), listener_(listener) {}

PixelMapSeatLuts::~PixelMapSeatLuts() { end(); }

PixelMapSeatLuts::Work& PixelMapSeatLuts::work() {
  if (!work_) work_ = std::make_unique<Work>(platform_, *this);
  return *work_;
}

const std::shared_ptr<SeatLutJobs>& PixelMapSeatLuts::jobs() {
  if (!jobs_) jobs_ = std::make_shared<SeatLutJobs>(platform_, ready_);
  return jobs_;
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
  if (jobs_) jobs_->maker.end();
  stopPixelMapLiveSampler();
  if (work_) work_->watch.invalidate();
}

SeatLutFailures PixelMapSeatLuts::failures() const {
  SeatLutFailures failures = jobs_ ? jobs_->maker.failures() : SeatLutFailures();
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
  const FoundVideo& found = findVideo(venueId, pixelMapId, {seatX, seatY});
  const SeatVideo& video = found.video;
  if (video.url.empty()) {
    assets().setPixelMapDebugText("Missing video.mp4 (Venue-" + std::to_string(venueId) + "/" +
                                  std::to_string(pixelMapId) + ") using JPG fallback");
    clearActiveSeatLUT();
    stopPixelMapLiveSampler();
    return;
  }
  assets().setPixelMapDebugText(std::nullopt);
  SeatLut lut = ready_ != nullptr ? ready_->find(video.url, video.seat) : nullptr;
  if (!lut) lut = jobs()->maker.findKept(video.url, video.seat, video.key);
  if (!lut) {
    // A copy: what a listener does may look for another video.
    buildSoon(FoundVideo(found));
    return;
  }
  work().state.pixelMapSeatLUTRequestedKey = video.key;
  if (adopt(video.key, lut)) listener_.refreshMode21ColorIfNeeded();
}

// The phone goes black at once rather than show another map's colour.
void PixelMapSeatLuts::buildSoon(const FoundVideo& found) {
  Work& here = work();
  const SeatVideo& video = found.video;
  const bool wasRequested = here.state.pixelMapSeatLUTRequestedKey == video.key;
  clearActiveSeatLUT();
  here.state.pixelMapSeatLUTRequestedKey = video.key;
  const auto signature = jobs()->maker.files().pixelMapVideoFileSignatureForURL(video.url);
  const bool isAskedFor = !here.builds.isResting(video.key, signature);
  if (!isAskedFor) {
    stopPixelMapLiveSampler();
  } else if (pixelMapLiveDecodeQueue_ != nullptr) {
    sampler().startPixelMapLiveSamplerForVideoURL(
        {video.url, found.venueId, found.pixelMapId, video.key, video.seat,
         listener_.currentVideoMinutes(), signature},
        *pixelMapLiveDecodeQueue_);
  }
  if (!wasRequested) listener_.refreshMode21ColorIfNeeded();
  if (isAskedFor && pixelMapLUTDecodeQueue_ != nullptr) {
    here.builds.request(video, signature, *pixelMapLUTDecodeQueue_, jobs());
  }
}

const PixelMapSeatLuts::FoundVideo& PixelMapSeatLuts::findVideo(int venueId, int pixelMapId,
                                                                SeatPosition seat) {
  FoundVideo& found = work().foundVideo;
  const bool isSame = !found.video.url.empty() && found.venueId == venueId &&
                      found.pixelMapId == pixelMapId && found.video.seat == seat;
  if (!isSame) {
    std::string url = assets().pixelMapVideoURLForVenueId(venueId, pixelMapId);
    std::string key = pixelMapSeatLUTCacheKeyForVideoPath(url, seat);
    found = {venueId, pixelMapId, {std::move(url), std::move(key), seat}};
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

void PixelMapSeatLuts::built(const std::string& key, const SeatLut& lut) {
  if (state().pixelMapSeatLUTRequestedKey != key) return;
  jobs()->maker.cache().store(key, lut);
  if (adopt(key, lut)) listener_.refreshMode21ColorIfNeeded();
}

// Results of which the main thread could not be told for want of memory would be waited for for
// ever.
void PixelMapSeatLuts::workBegins() {
  Timer& watch = work().watch;
  if (watch.isValid()) return;
  watch = Timer(platform_.runLoop, platform_.runLoop->every(kWatch, [this] {
    // What is taken may have the host destroy this.
    const std::weak_ptr<SeatLutJobs> weak = jobs_;
    while (!weak.expired() && (work().builds.takeNext() || work().precomputes.takeNext())) {
    }
  }));
}

void PixelMapSeatLuts::workEnded() {
  if (!work().isUnderWay()) work().watch.invalidate();
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
  if (!entries.empty() && pixelMapLUTDecodeQueue_ != nullptr) work().foundVideo = {};
  work().precomputes.begin(std::move(entries), seat, pixelMapLUTDecodeQueue_, jobs(),
                           std::move(progress), std::move(completion));
}

std::uint64_t PixelMapSeatLuts::precomputeGeneration() const {
  return jobs_ ? jobs_->precomputeGeneration.load() : 0;
}

bool PixelMapSeatLuts::isPrecomputing() const {
  return work_ && work_->precomputes.isPrecomputing(precomputeGeneration());
}

void PixelMapSeatLuts::invalidatePixelMapSeatLUTCacheForVenueId(std::int64_t venueId) {
  if (venueId < 1) return;
  struct Removal {
    void run() const {
      const auto here = jobs.lock();
      if (!here) return;
      for (const PixelMapVideoEntry& entry : entries)
        here->maker.files().removeTables(entry.videoPath);
    }

    std::weak_ptr<SeatLutJobs> jobs;
    std::vector<PixelMapVideoEntry> entries;
  };
  const auto removal = std::make_shared<const Removal>(
      Removal{jobs(), assets().pixelMapVideoEntriesForVenueId(venueId)});
  ++jobs()->precomputeGeneration;
  jobs()->maker.cache().clear();
  clearActiveSeatLUT();
  work().builds.forget();
  work().foundVideo = {};
  workEnded();
  if (pixelMapLUTDecodeQueue_ == nullptr) return;
  // Tables that stayed would be taken for the new ones.
  if (!pixelMapLUTDecodeQueue_->dispatch([removal] { removal->run(); })) removal->run();
}

}  // namespace halvora
