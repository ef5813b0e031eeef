// SPDX-License-Identifier: Apache-2.0
// A video of which every sample has a time and a size of its own, the builds of tables from it, and
// the rule of the table in its plainest form to compare them with. A test owns one.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "halvora/platform/video_asset.h"
#include "pixelmap/seat_lut_builder.h"
#include "tests/pixelmap/seat_lut_bench.h"

namespace halvora {

/// Its pixels tell the sample and their place: 0xFF, mark, column, row.
struct VideoSample {
  double seconds = 0;
  std::uint8_t mark = 0;
  std::uint32_t width = 16;
  std::uint32_t height = 9;

  std::uint32_t wordAt(PixelPosition place) const {
    return 0xFF000000U | std::uint32_t{mark} << 16 | (place.x & 255) << 8 | (place.y & 255);
  }
};

class SampleVideo final : public VideoAsset {
 public:
  SampleVideo(double durationSeconds, std::vector<VideoSample> all)
      : samples(std::move(all)), durationSeconds_(durationSeconds) {}

  double durationSeconds() const override { return durationSeconds_; }
  std::unique_ptr<FrameReader> reader(const std::optional<MediaTimeRange>& range) const override;
  /// Stretches of as equal length as can be.
  std::vector<std::unique_ptr<FrameReader>> readers(int most) const override;
  std::unique_ptr<FrameGenerator> generator() const override { return nullptr; }

  const std::vector<VideoSample> samples;

 private:
  double durationSeconds_;
};

struct BuiltTables {
  BuildEnd end;
  /// One a seat.
  std::vector<Words> tables;
};

BuiltTables buildTables(const VideoAsset& asset, std::span<const SeatPosition> seats,
                        const BuildControl& control);
/// The table of one seat; none where the build gave none.
Words buildTable(const VideoAsset& asset, SeatPosition seat, const BuildControl& control);

/// What the table of a seat has to be, sample by sample.
Words expectedTable(const SampleVideo& video, SeatPosition seat);

/// So many samples a second for that many seconds, as a camera would give them; the marks count.
SampleVideo steadyVideo(double seconds, int samplesASecond);
/// A video of some seconds as no camera would make it: several samples for a frame and none for
/// others, sizes that change or are zero, times that are none. The samples of a video are in the
/// order of their times, where they have one.
SampleVideo oddVideo(std::uint64_t seed);

/// So many seats, here and there in the picture and beyond its edges.
std::vector<SeatPosition> manySeats(std::size_t count);

}  // namespace halvora
