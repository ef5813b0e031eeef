// SPDX-License-Identifier: Apache-2.0
#include "pixelmap/seat_lut_maker.h"

#include <algorithm>
#include <utility>

#include "halvora/platform/bundle.h"

namespace halvora {

namespace {

std::optional<SeatLutFailure> failureOf(BuildEnd end) {
  switch (end) {
    case BuildEnd::noVideo:
      return SeatLutFailure::noVideo;
    case BuildEnd::noFrames:
      return SeatLutFailure::noFrames;
    case BuildEnd::noMemory:
      return SeatLutFailure::noMemory;
    case BuildEnd::built:
    case BuildEnd::cancelled:
      break;
  }
  return std::nullopt;
}

}  // namespace

SeatLutMaker::SeatLutMaker(const Platform& platform, const SeatLutSource* ready)
    : ready_(ready),
      videos_(platform.videoAssets),
      workers_(platform.workers),
      files_(platform.files, platform.json, platform.bundles->documents) {}

SeatLut SeatLutMaker::findKept(const std::string& videoPath, SeatPosition seat,
                               const std::string& key) {
  SeatLut lut = pixelMapSeatLUTCache_.find(key);
  if (lut) return lut;
  lut = files_.loadPersistedPixelMapSeatLUTForVideoURL(videoPath, seat);
  if (lut) pixelMapSeatLUTCache_.store(key, lut);
  return lut;
}

SeatLut SeatLutMaker::buildAndPersist(const std::string& videoPath, SeatPosition seat,
                                      BuildEnd& end) noexcept {
  end = BuildEnd::noMemory;
  SeatLut lut;
  try {
    const auto signature = files_.pixelMapVideoFileSignatureForURL(videoPath);
    lut = buildPixelMapSeatLUTForVideoURL(
        videos_, videoPath, seat,
        {.workers = workers_, .isCancelled = [this] { return isEnding(); }}, &end);
    if (lut) {
      files_.removeLeftovers(videoPath);
      save(lut, videoPath, seat, signature);
    }
  } catch (...) {
    end = BuildEnd::noMemory;
  }
  if (const auto failure = failureOf(end)) count(*failure);
  return lut;
}

void SeatLutMaker::save(const SeatLut& lut, const std::string& videoPath, SeatPosition seat,
                        const std::optional<VideoFileSignature>& builtFrom) noexcept {
  bool isSaved = false;
  try {
    isSaved = builtFrom && files_.persistPixelMapSeatLUTData(lut, videoPath, seat, builtFrom);
  } catch (...) {
    // The table counts all the same.
  }
  if (!isSaved) count(SeatLutFailure::notSaved);
}

void SeatLutMaker::prepare(const std::string& videoPath, SeatPosition seat) noexcept {
  try {
    if (ready_ != nullptr && ready_->find(videoPath, seat)) return;
    SeatLut lut = files_.loadPersistedPixelMapSeatLUTForVideoURL(videoPath, seat);
    BuildEnd end = BuildEnd::built;
    if (!lut) lut = buildAndPersist(videoPath, seat, end);
    if (!lut) return;
    pixelMapSeatLUTCache_.store(pixelMapSeatLUTCacheKeyForVideoPath(videoPath, seat),
                                std::move(lut));
  } catch (...) {
    count(SeatLutFailure::noMemory);
  }
}

SeatLutFailures SeatLutMaker::failures() const {
  SeatLutFailures failures;
  std::ranges::copy(failures_, failures.counts.begin());
  return failures;
}

}  // namespace halvora
