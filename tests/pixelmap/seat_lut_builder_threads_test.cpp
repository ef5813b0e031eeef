// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <atomic>
#include <memory>
#include <mutex>
#include <new>
#include <numeric>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/standard/thread_workers.h"
#include "adapters/virtual/virtual_video.h"
#include "pixelmap/seat_lut_builder.h"
#include "tests/pixelmap/sample_video.h"
#include "tests/support/no_threads.h"

namespace halvora {
namespace {

constexpr SeatPosition kSeat{2, 1};

/// Builds with so many threads, which decode a stretch each.
class SeatLutBuilderThreads : public testing::TestWithParam<int> {
 protected:
  void expectTablesOf(const SampleVideo& video, std::size_t seatCount) {
    const auto seats = manySeats(seatCount);
    const BuiltTables built = buildTables(video, seats, {.workers = workers_});
    for (std::size_t at = 0; at < seats.size(); ++at) {
      const Words expected = expectedTable(video, seats[at]);
      ASSERT_EQ(built.tables.empty() ? Words() : built.tables[at], expected) << at;
    }
  }

  ThreadWorkers workers_{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Counts, SeatLutBuilderThreads, testing::Values(1, 2, 3, 7));

TEST_P(SeatLutBuilderThreads, ManySeatsEqualEachAlone) {
  const auto seats = manySeats(40);
  const SampleVideo video = steadyVideo(10, 30);
  InlineWorkers alone;
  const BuiltTables built = buildTables(video, seats, {.workers = workers_});
  ASSERT_EQ(built.tables.size(), seats.size());
  for (std::size_t at = 0; at < seats.size(); ++at) {
    ASSERT_EQ(built.tables[at], buildTable(video, seats[at], {.workers = alone})) << at;
  }
}

TEST_P(SeatLutBuilderThreads, GatheringApartGivesTheSame) {
  expectTablesOf(steadyVideo(10, 30), 511);
  expectTablesOf(steadyVideo(10, 30), 512);
  expectTablesOf(steadyVideo(10, 30), 601);
}

TEST_P(SeatLutBuilderThreads, LaterSampleOverwritesAcrossStretches) {
  // Of 60 samples a second two share a frame, at one or the other end of a stretch; of 240 eight,
  // which may be a stretch or more.
  for (int tenths = 1; tenths <= 12; ++tenths) {
    expectTablesOf(steadyVideo(tenths / 10.0, 60), 3);
    expectTablesOf(steadyVideo(tenths / 10.0, 240), 3);
  }
  expectTablesOf(steadyVideo(1.1, 60), 520);
}

TEST_P(SeatLutBuilderThreads, FewerFramesThanThreadsAreEnough) {
  for (int frames = 1; frames <= 8; ++frames) expectTablesOf(steadyVideo(frames / 30.0, 30), 2);
}

TEST_P(SeatLutBuilderThreads, SamplesOutOfOrderWithinAStretch) {
  // Every stretch begins with its first frame, goes on with its third, and ends with its first
  // once more.
  std::vector<VideoSample> samples;
  for (int stretch = 0; stretch < GetParam(); ++stretch) {
    for (const int frame : {0, 2, 1, 0}) {
      samples.push_back({(stretch * 3 + frame) / 30.0, static_cast<std::uint8_t>(samples.size())});
    }
  }
  expectTablesOf(SampleVideo(GetParam() / 10.0, samples), 2);
}

TEST_P(SeatLutBuilderThreads, OddVideosGiveWhatTheRuleSays) {
  for (std::uint64_t seed = 1; seed <= 40; ++seed) {
    SCOPED_TRACE(seed);
    expectTablesOf(oddVideo(seed), 18);
    if (HasFatalFailure()) return;
  }
  expectTablesOf(oddVideo(41), 530);
}

TEST_P(SeatLutBuilderThreads, NoFrameAtAllIsNoTable) {
  const SampleVideo video(1, {{-1, 1}, {2, 1}, {0.5, 1, 0, 9}, {0.6, 1, 16, 0}});
  EXPECT_EQ(buildTables(video, {&kSeat, 1}, {.workers = workers_}).end, BuildEnd::noFrames);
  EXPECT_EQ(buildTables(SampleVideo(1, {}), {&kSeat, 1}, {.workers = workers_}).end,
            BuildEnd::noFrames);
}

TEST_P(SeatLutBuilderThreads, ProgressCountsEveryFrameOnce) {
  std::mutex mutex;
  std::vector<int> progress;
  const auto count = [&](int done) {
    const std::lock_guard lock(mutex);
    progress.push_back(done);
  };
  buildTables(steadyVideo(4, 30), {&kSeat, 1}, {.workers = workers_, .onFrame = count});
  std::sort(progress.begin(), progress.end());
  std::vector<int> expected(120);
  std::iota(expected.begin(), expected.end(), 1);
  EXPECT_EQ(progress, expected);
}

TEST_P(SeatLutBuilderThreads, CancelledBuildEndsAtEachStretchsNextFrame) {
  for (const std::size_t seatCount : {std::size_t{1}, std::size_t{520}}) {
    const auto seats = manySeats(seatCount);
    std::atomic<bool> isCancelled{false};
    std::atomic<int> frames{0};
    std::atomic<int> framesSince{0};
    const BuildControl control{.workers = workers_,
                               .isCancelled = [&] { return isCancelled.load(); },
                               .onFrame =
                                   [&](int) {
                                     if (isCancelled) ++framesSince;
                                     if (++frames == 20) isCancelled = true;
                                   }};
    EXPECT_EQ(buildTables(steadyVideo(30, 30), seats, control).end, BuildEnd::cancelled);
    EXPECT_GE(frames, 20);
    // A frame that another thread had begun by then is still finished.
    EXPECT_LE(framesSince, workers_.count());
  }
}

TEST_P(SeatLutBuilderThreads, CancelledFromTheStartReadsNothing) {
  VirtualVideoAssets videos;
  videos.put("/video", VirtualVideo::ofPlaces(50, 4, 3));
  EXPECT_EQ(buildPixelMapSeatLUTForVideoURL(
                videos, "/video", kSeat, {.workers = workers_, .isCancelled = [] { return true; }}),
            nullptr);
  EXPECT_EQ(videos.counts.framesRead, 0);
}

/// A video of whose reading one step throws: so many steps in, of all readers together.
class ThrowingVideo final : public VideoAsset {
 public:
  enum class Step : std::uint8_t { reading, sampling };

  ThrowingVideo(const SampleVideo& video, Step step, int after)
      : video_(video), step_(step), left_(after) {}
  double durationSeconds() const override { return video_.durationSeconds(); }
  std::unique_ptr<FrameReader> reader(const std::optional<MediaTimeRange>& range) const override {
    return video_.reader(range);
  }
  std::vector<std::unique_ptr<FrameReader>> readers(int most) const override {
    auto readers = video_.readers(most);
    for (auto& reader : readers) reader = std::make_unique<Reader>(*this, std::move(reader));
    return readers;
  }
  std::unique_ptr<FrameGenerator> generator() const override { return nullptr; }

 private:
  struct Frame final : VideoFrame {
    Frame(const ThrowingVideo& its, std::unique_ptr<VideoFrame> frame)
        : video(its), inner(std::move(frame)) {}
    double seconds() const override { return inner->seconds(); }
    std::uint32_t width() const override { return inner->width(); }
    std::uint32_t height() const override { return inner->height(); }
    void sample(std::span<const PixelPosition> positions,
                std::span<std::uint32_t> words) const override {
      video.go(Step::sampling);
      inner->sample(positions, words);
    }
    const ThrowingVideo& video;
    std::unique_ptr<VideoFrame> inner;
  };
  struct Reader final : FrameReader {
    Reader(const ThrowingVideo& its, std::unique_ptr<FrameReader> reader)
        : video(its), inner(std::move(reader)) {}
    std::unique_ptr<VideoFrame> next() override {
      video.go(Step::reading);
      auto frame = inner->next();
      return frame ? std::make_unique<Frame>(video, std::move(frame)) : nullptr;
    }
    bool hasLostPictures() const override { return inner->hasLostPictures(); }
    const ThrowingVideo& video;
    std::unique_ptr<FrameReader> inner;
  };

  void go(Step step) const {
    if (step == step_ && --left_ < 0) throw std::bad_alloc();
  }

  const SampleVideo& video_;
  Step step_;
  mutable std::atomic<int> left_;
};

TEST_P(SeatLutBuilderThreads, MemoryThatRunsShortEndsTheBuildAndNobodyWaits) {
  const SampleVideo video = steadyVideo(3, 30);
  // One thread a stretch; and two, of which either may be the one that fails.
  for (const std::size_t seatCount : {std::size_t{2}, std::size_t{520}}) {
    const auto seats = manySeats(seatCount);
    for (const auto step : {ThrowingVideo::Step::reading, ThrowingVideo::Step::sampling}) {
      for (const int after : {0, 1, 5, 40, 89}) {
        const ThrowingVideo failing(video, step, after);
        std::vector<std::uint32_t> table(seatCount * 90);
        EXPECT_EQ(buildSeatTables(failing, seats, table, {.workers = workers_}), BuildEnd::noMemory)
            << seatCount << " " << after;
      }
    }
  }
}

TEST_P(SeatLutBuilderThreads, WithoutThreadsTheTablesAreTheSame) {
  const NoThreads none;
  expectTablesOf(steadyVideo(2, 30), 3);
  expectTablesOf(steadyVideo(2, 30), 520);
}

}  // namespace
}  // namespace halvora
