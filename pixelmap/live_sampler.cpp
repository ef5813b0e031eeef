// SPDX-License-Identifier: Apache-2.0
#include "pixelmap/live_sampler.h"

#include <algorithm>
#include <new>
#include <utility>

#include "pixelmap/frame_time.h"
#include "pixelmap/pixel_map_assets.h"
#include "pixelmap/seat_pixel.h"

namespace halvora {

namespace {

// One start's share of the work: what it may write, for as long as nobody has started or stopped
// the sampler since.
struct Sampling {
  std::shared_ptr<LiveSamplerState> state;
  std::uint64_t generation;
  const std::string& key;

  bool isWantedLocked() const {
    return state->pixelMapLiveGeneration == generation && state->pixelMapLiveRequestedKey == key;
  }
  bool isWanted() const {
    const std::lock_guard lock(state->lock);
    return isWantedLocked();
  }
  void store(int frame, std::uint32_t word) const {
    const std::lock_guard lock(state->lock);
    const auto at = static_cast<std::size_t>(frame);
    const bool fits =
        at < state->pixelMapLiveFrameData.size() && at < state->pixelMapLiveHasColorData.size();
    if (!isWantedLocked() || !fits) return;
    state->pixelMapLiveFrameData[at] = word;
    state->pixelMapLiveHasColorData[at] = 1;
  }
};

void decodeRange(const Sampling& sampling, const VideoAsset& asset, SeatPosition seat,
                 int frameCount, int begin, int end) {
  if (begin >= end || !sampling.isWanted()) return;
  const auto reader =
      asset.reader(MediaTimeRange{pixelMapFrameTime(begin), pixelMapFrameTime(end)});
  if (!reader) return;
  while (const auto frame = reader->next()) {
    if (!sampling.isWanted()) return;
    const auto number = pixelMapFrameAt(frame->seconds(), frameCount);
    if (!number || frame->width() == 0 || frame->height() == 0) continue;
    const PixelPosition position = seatPixel(seat.x, seat.y, frame->width(), frame->height());
    std::uint32_t word = 0;
    frame->sample({&position, 1}, {&word, 1});
    sampling.store(*number, word);
  }
}

// What the queue is handed: it outlives neither request nor sampler without noticing.
struct DecodeJob {
  std::weak_ptr<LiveSamplerState> state;
  std::uint64_t generation;
  LiveRequest request;
  const VideoAssets& videos;

  void run() const noexcept {
    const Sampling sampling{state.lock(), generation, request.cacheKey};
    if (!sampling.state) return;
    try {
      decode(sampling);
    } catch (...) {
      const std::lock_guard lock(sampling.state->lock);
      ++sampling.state->failures;
    }
  }

 private:
  void decode(const Sampling& sampling) const {
    if (!sampling.isWanted()) return;
    const auto asset = videos.open(request.videoPath);
    if (!asset) return;
    const int frameCount = pixelMapFrameCount(asset->durationSeconds());
    const int center = normalizedPixelMapFrameIndex(request.centerFrame, frameCount);
    decodeRange(sampling, *asset, request.seat, frameCount, center, frameCount);
    decodeRange(sampling, *asset, request.seat, frameCount, 0, center);
  }
};

}  // namespace

void LiveSampler::startPixelMapLiveSamplerForVideoURL(const LiveRequest& request,
                                                      SerialQueue& queue) {
  {
    const std::lock_guard lock(state_->lock);
    const bool isRunning = !request.cacheKey.empty() &&
                           state_->pixelMapLiveRequestedKey == request.cacheKey &&
                           state_->signature == request.signature;
    if (isRunning) return;
  }
  try {
    start(request, queue);
  } catch (const std::bad_alloc&) {
    stopPixelMapLiveSampler();
    noteFailure();
  }
}

void LiveSampler::start(const LiveRequest& request, SerialQueue& queue) {
  const auto asset = request.videoPath.empty() || request.cacheKey.empty()
                         ? nullptr
                         : videos_.open(request.videoPath);
  if (!asset) {
    stopPixelMapLiveSampler();
    return;
  }
  const int frameCount = pixelMapFrameCount(asset->durationSeconds());
  const int center = normalizedPixelMapFrameIndex(request.centerFrame, frameCount);
  std::string key = request.cacheKey;
  std::vector<std::uint32_t> words(static_cast<std::size_t>(frameCount), kNoColourWord);
  std::vector<std::uint8_t> hasColour(static_cast<std::size_t>(frameCount), 0);
  std::uint64_t generation = 0;
  {
    const std::lock_guard lock(state_->lock);
    generation = ++state_->pixelMapLiveGeneration;
    state_->pixelMapLiveRequestedKey = std::move(key);
    state_->signature = request.signature;
    state_->pixelMapLiveFrameCount = frameCount;
    state_->pixelMapLiveFrameData = std::move(words);
    state_->pixelMapLiveHasColorData = std::move(hasColour);
  }
  const MaybeColour colour = assets_.colorFromPixelMapVideoFrameForVenueId(
      request.venueId, request.pixelMapId, center, request.seat.x, request.seat.y);
  if (colour) {
    Sampling{state_, generation, request.cacheKey}.store(center, wordOfColour(*colour));
  }
  auto job = std::make_unique<DecodeJob>(DecodeJob{state_, generation, request, videos_});
  if (!queue.dispatch([job = std::move(job)] { job->run(); })) noteFailure();
}

void LiveSampler::stopPixelMapLiveSampler() {
  const std::lock_guard lock(state_->lock);
  ++state_->pixelMapLiveGeneration;
  state_->pixelMapLiveRequestedKey.clear();
  // Given back, not only emptied: shows mostly run from finished tables.
  state_->pixelMapLiveFrameData = {};
  state_->pixelMapLiveHasColorData = {};
  state_->pixelMapLiveFrameCount = 0;
}

void LiveSampler::noteFailure() {
  const std::lock_guard lock(state_->lock);
  ++state_->failures;
}

std::uint64_t LiveSampler::failures() const {
  const std::lock_guard lock(state_->lock);
  return state_->failures;
}

MaybeColour LiveSampler::colorFromLivePixelMapSeatBufferForFrameIndex(
    std::int64_t frameIndex) const {
  const std::lock_guard lock(state_->lock);
  if (state_->pixelMapLiveFrameCount <= 0 || state_->pixelMapLiveFrameData.empty() ||
      state_->pixelMapLiveHasColorData.empty()) {
    return std::nullopt;
  }
  const auto at = static_cast<std::size_t>(
      normalizedPixelMapFrameIndex(frameIndex, state_->pixelMapLiveFrameCount));
  if (state_->pixelMapLiveHasColorData[at] == 0) return std::nullopt;
  return colourOfWord(state_->pixelMapLiveFrameData[at]);
}

}  // namespace halvora
