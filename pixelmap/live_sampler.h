// SPDX-License-Identifier: Apache-2.0
// Fills a seat's colours frame by frame while its table is still being built: the frames from the
// present one on first, then those before it. Starting and stopping are for the main thread; the
// frames are decoded on the queue that is handed in.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "halvora/colour.h"
#include "halvora/platform/serial_queues.h"
#include "halvora/platform/video_asset.h"
#include "pixelmap/seat_lut.h"
#include "pixelmap/seat_lut_files.h"

namespace halvora {

class PixelMapAssets;

/// What the sampler and its decoding share, under their lock.
struct LiveSamplerState {
  std::mutex lock;
  /// Counts starts and stops; decoding that began under another one is over.
  std::uint64_t pixelMapLiveGeneration = 0;
  std::string pixelMapLiveRequestedKey;
  /// The video's, when it was opened.
  std::optional<VideoFileSignature> signature;
  int pixelMapLiveFrameCount = 0;
  std::vector<std::uint32_t> pixelMapLiveFrameData;
  /// 1 where a frame has its colour.
  std::vector<std::uint8_t> pixelMapLiveHasColorData;
  /// Starts and decodings that came to nothing because memory was short, or there was no thread.
  std::uint64_t failures = 0;
};

struct LiveRequest {
  std::string videoPath;
  std::int64_t venueId;
  std::int64_t pixelMapId;
  std::string cacheKey;
  SeatPosition seat;
  std::int64_t centerFrame;
  /// Of the video now; a sampler of another is not left alone.
  std::optional<VideoFileSignature> signature = {};
};

class LiveSampler {
 public:
  LiveSampler(PixelMapAssets& assets, const VideoAssets& videos)
      : assets_(assets), videos_(videos) {}
  ~LiveSampler() { stopPixelMapLiveSampler(); }
  LiveSampler(const LiveSampler&) = delete;
  LiveSampler& operator=(const LiveSampler&) = delete;

  /// Leaves a sampler of the same key and video alone, without looking into the video: every packet
  /// asks. The frame in the centre is decoded at once, on the calling thread. Where memory is short
  /// the sampler stops, and where there is no thread it has no other frame.
  void startPixelMapLiveSamplerForVideoURL(const LiveRequest& request, SerialQueue& queue);
  void stopPixelMapLiveSampler();
  /// None for a frame that has not come yet; a frame without a colour is transparent black.
  MaybeColour colorFromLivePixelMapSeatBufferForFrameIndex(std::int64_t frameIndex) const;
  std::uint64_t failures() const;

 private:
  void start(const LiveRequest& request, SerialQueue& queue);
  void noteFailure();

  PixelMapAssets& assets_;
  const VideoAssets& videos_;
  std::shared_ptr<LiveSamplerState> state_ = std::make_shared<LiveSamplerState>();
};

}  // namespace halvora
