// SPDX-License-Identifier: Apache-2.0
#include "tests/pixelmap/sample_video.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "adapters/standard/seeded_random.h"
#include "pixelmap/frame_time.h"

namespace halvora {

namespace {

class Frame final : public VideoFrame {
 public:
  explicit Frame(const VideoSample& sample) : sample_(sample) {}
  double seconds() const override { return sample_.seconds; }
  std::uint32_t width() const override { return sample_.width; }
  std::uint32_t height() const override { return sample_.height; }
  void sample(std::span<const PixelPosition> positions,
              std::span<std::uint32_t> words) const override {
    ASSERT_EQ(positions.size(), words.size());
    for (std::size_t at = 0; at < positions.size(); ++at) {
      ASSERT_LT(positions[at].x, sample_.width);
      ASSERT_LT(positions[at].y, sample_.height);
      words[at] = sample_.wordAt(positions[at]);
    }
  }

 private:
  const VideoSample& sample_;
};

class Reader final : public FrameReader {
 public:
  explicit Reader(std::span<const VideoSample> samples) : samples_(samples) {}
  std::unique_ptr<VideoFrame> next() override {
    if (samples_.empty()) return nullptr;
    auto frame = std::make_unique<Frame>(samples_.front());
    samples_ = samples_.subspan(1);
    return frame;
  }
  bool hasLostPictures() const override { return false; }

 private:
  std::span<const VideoSample> samples_;
};

}  // namespace

std::unique_ptr<FrameReader> SampleVideo::reader(const std::optional<MediaTimeRange>& range) const {
  EXPECT_FALSE(range.has_value()) << "this video is only ever read whole";
  return std::make_unique<Reader>(samples);
}

std::vector<std::unique_ptr<FrameReader>> SampleVideo::readers(int most) const {
  std::vector<std::unique_ptr<FrameReader>> stretches;
  const auto count = static_cast<std::size_t>(most);
  for (std::size_t at = 0; at < count; ++at) {
    const std::size_t begin = samples.size() * at / count;
    const std::size_t end = samples.size() * (at + 1) / count;
    stretches.push_back(std::make_unique<Reader>(std::span(samples).subspan(begin, end - begin)));
  }
  return stretches;
}

BuiltTables buildTables(const VideoAsset& asset, std::span<const SeatPosition> seats,
                        const BuildControl& control) {
  const auto frames = static_cast<std::size_t>(pixelMapFrameCount(asset.durationSeconds()));
  Words all(frames * seats.size(), 0);
  BuiltTables built{buildSeatTables(asset, seats, all, control), {}};
  if (built.end != BuildEnd::built) return built;
  for (std::size_t at = 0; at < all.size(); at += frames) {
    const auto begin = all.begin() + static_cast<std::ptrdiff_t>(at);
    built.tables.emplace_back(begin, begin + static_cast<std::ptrdiff_t>(frames));
  }
  return built;
}

Words buildTable(const VideoAsset& asset, SeatPosition seat, const BuildControl& control) {
  const BuiltTables built = buildTables(asset, {&seat, 1}, control);
  return built.tables.empty() ? Words() : built.tables.front();
}

Words expectedTable(const SampleVideo& video, SeatPosition seat) {
  const int count = pixelMapFrameCount(video.durationSeconds());
  std::vector<std::optional<std::uint32_t>> frames(static_cast<std::size_t>(count));
  for (const VideoSample& sample : video.samples) {
    const auto frame = pixelMapFrameAt(sample.seconds, count);
    if (!frame || sample.width == 0 || sample.height == 0) continue;
    const auto column = std::clamp<std::int64_t>(seat.x, 0, std::int64_t{sample.width} - 1);
    const auto row = std::clamp<std::int64_t>(seat.y, 0, std::int64_t{sample.height} - 1);
    frames[static_cast<std::size_t>(*frame)] =
        sample.wordAt({static_cast<std::uint32_t>(column), static_cast<std::uint32_t>(row)});
  }
  const auto first =
      std::find_if(frames.begin(), frames.end(), [](const auto& word) { return word.has_value(); });
  if (first == frames.end()) return {};
  Words table;
  std::uint32_t last = **first;
  for (const auto& word : frames) {
    last = word.value_or(last);
    table.push_back(last);
  }
  return table;
}

SampleVideo steadyVideo(double seconds, int samplesASecond) {
  std::vector<VideoSample> samples;
  for (int at = 0; at < seconds * samplesASecond; ++at) {
    samples.push_back({double{1} * at / samplesASecond, static_cast<std::uint8_t>(at)});
  }
  return {seconds, std::move(samples)};
}

SampleVideo oddVideo(std::uint64_t seed) {
  SeededRandom random(seed);
  const auto below = [&random](std::uint32_t bound) { return random.below(bound); };
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const double noTimes[] = {std::nan(""), kInfinity, -kInfinity, -1, -0.001, 1e6};
  std::vector<VideoSample> samples;
  // Ticks of a 240th: eight to a frame.
  std::uint32_t tick = below(40);
  VideoSample sample{0, 0, 16, 9};
  const std::uint32_t count = 1 + below(300);
  for (std::uint32_t at = 0; at < count; ++at) {
    sample.seconds = below(20) == 0 ? noTimes[below(6)] : tick / 240.0;
    sample.mark = static_cast<std::uint8_t>(below(256));
    if (below(10) == 0) sample.width = below(4) * 7;
    if (below(10) == 0) sample.height = below(4) * 5;
    samples.push_back(sample);
    tick += below(4) == 0 ? below(60) : below(9);
  }
  // Sometimes shorter than its samples, sometimes longer.
  const double seconds = tick / 240.0 * (0.5 + below(100) / 100.0);
  return {seconds, std::move(samples)};
}

std::vector<SeatPosition> manySeats(std::size_t count) {
  std::vector<SeatPosition> seats;
  for (std::size_t at = 0; at < count; ++at) {
    seats.push_back(
        {static_cast<std::int64_t>(at * 7 % 23) - 3, static_cast<std::int64_t>(at * 5 % 13) - 2});
  }
  return seats;
}

}  // namespace halvora
