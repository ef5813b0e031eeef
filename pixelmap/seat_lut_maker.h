// SPDX-License-Identifier: Apache-2.0
// Where an engine's seat tables come from: memory, disk, or a build; and what kept them from
// coming. Any thread; what is for a background queue throws nothing, because nobody there could
// catch it.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <optional>
#include <string>

#include "halvora/platform/platform.h"
#include "pixelmap/seat_lut.h"
#include "pixelmap/seat_lut_builder.h"
#include "pixelmap/seat_lut_cache.h"
#include "pixelmap/seat_lut_failure.h"
#include "pixelmap/seat_lut_files.h"

namespace halvora {

class SeatLutMaker {
 public:
  /// What the platform refers to, and the tables, must outlive this.
  SeatLutMaker(const Platform& platform, const SeatLutSource* ready);

  /// From memory, else from disk and then also in memory; null for neither.
  SeatLut findKept(const std::string& videoPath, SeatPosition seat, const std::string& key);

  /// Builds the table and keeps it on disk, as far as that is possible. On a queue.
  SeatLut buildAndPersist(const std::string& videoPath, SeatPosition seat, BuildEnd& end) noexcept;
  /// Sees to it that the table is ready, or on disk and in memory. On a queue.
  void prepare(const std::string& videoPath, SeatPosition seat) noexcept;

  /// Lets a build that is under way end at its next frame, and those to come before their first.
  void end() { isEnding_ = true; }
  bool isEnding() const { return isEnding_; }

  void count(SeatLutFailure failure) { ++failures_[static_cast<std::size_t>(failure)]; }
  SeatLutFailures failures() const;

  const SeatLutFiles& files() const { return files_; }
  SeatLutCache& cache() { return pixelMapSeatLUTCache_; }

 private:
  void save(const SeatLut& lut, const std::string& videoPath, SeatPosition seat,
            const std::optional<VideoFileSignature>& builtFrom) noexcept;

  const SeatLutSource* const ready_;
  const VideoAssets& videos_;
  Workers& workers_;
  const SeatLutFiles files_;
  SeatLutCache pixelMapSeatLUTCache_;
  std::atomic<bool> isEnding_{false};
  std::array<std::atomic<std::uint32_t>, kSeatLutFailureCount> failures_{};
};

}  // namespace halvora
