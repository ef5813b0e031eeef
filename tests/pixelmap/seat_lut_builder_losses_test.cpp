// SPDX-License-Identifier: Apache-2.0
// What becomes of a table when pictures of the video do not come out: the same ones every time, as
// damage has it, or now these and now those, as a decoder does that is short of memory.
#include <memory>
#include <set>
#include <span>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/standard/thread_workers.h"
#include "tests/pixelmap/sample_video.h"

namespace halvora {
namespace {

using Numbers = std::set<std::size_t>;

/// A video that is read several times and loses other pictures each time, and none after those.
class LossyVideo final : public VideoAsset {
 public:
  LossyVideo(const SampleVideo& video, std::vector<Numbers> losses)
      : losses_(std::move(losses)), video_(video) {}

  double durationSeconds() const override { return video_.durationSeconds(); }
  std::unique_ptr<FrameReader> reader(const std::optional<MediaTimeRange>& range) const override {
    return video_.reader(range);
  }
  std::vector<std::unique_ptr<FrameReader>> readers(int most) const override {
    const Numbers none;
    const Numbers& lost = readings_ < losses_.size() ? losses_[readings_] : none;
    ++readings_;
    std::vector<std::unique_ptr<FrameReader>> all;
    std::size_t first = 0;
    const std::size_t count = video_.samples.size();
    for (auto& reader : video_.readers(most)) {
      const std::size_t behind = count * (all.size() + 1) / static_cast<std::size_t>(most);
      Numbers own;
      for (const std::size_t number : lost) {
        if (number >= first && number < behind) own.insert(number - first);
      }
      all.push_back(std::make_unique<Reader>(std::move(reader), std::move(own)));
      first = behind;
    }
    return all;
  }
  std::unique_ptr<FrameGenerator> generator() const override { return nullptr; }

  std::size_t readings() const { return readings_; }

 private:
  class Reader final : public FrameReader {
   public:
    Reader(std::unique_ptr<FrameReader> whole, Numbers lost)
        : whole_(std::move(whole)), lost_(std::move(lost)) {}
    std::unique_ptr<VideoFrame> next() override {
      auto frame = whole_->next();
      while (frame && lost_.contains(next_++)) frame = whole_->next();
      return frame;
    }
    bool hasLostPictures() const override { return !lost_.empty(); }

   private:
    std::unique_ptr<FrameReader> whole_;
    Numbers lost_;
    std::size_t next_ = 0;
  };

  std::vector<Numbers> losses_;
  const SampleVideo& video_;
  mutable std::size_t readings_ = 0;
};

constexpr SeatPosition kSeat{3, 2};

Numbers allOf(const SampleVideo& video) {
  Numbers all;
  for (std::size_t at = 0; at < video.samples.size(); ++at) all.insert(at);
  return all;
}

/// What a table has to be where those pictures are not in the video.
Words tableWithout(const SampleVideo& video, const Numbers& lost) {
  std::vector<VideoSample> left;
  for (std::size_t at = 0; at < video.samples.size(); ++at) {
    if (!lost.contains(at)) left.push_back(video.samples[at]);
  }
  return expectedTable(SampleVideo(video.durationSeconds(), std::move(left)), kSeat);
}

class SeatLutBuilderLosses : public testing::TestWithParam<int> {
 protected:
  BuiltTables build(const LossyVideo& video) {
    return buildTables(video, {&kSeat, 1}, {.workers = workers_});
  }

  const SampleVideo video_ = steadyVideo(2, 30);
  ThreadWorkers workers_{GetParam()};
};

TEST_P(SeatLutBuilderLosses, AWholeVideoIsReadOnce) {
  const LossyVideo video(video_, {});
  const BuiltTables built = build(video);
  ASSERT_EQ(built.end, BuildEnd::built);
  EXPECT_EQ(built.tables.front(), expectedTable(video_, kSeat));
  EXPECT_EQ(video.readings(), 1U);
}

TEST_P(SeatLutBuilderLosses, WhatWasLostOnceIsThereTheNextTime) {
  for (const Numbers& lost : {Numbers{0}, Numbers{17}, Numbers{59}, allOf(video_)}) {
    const LossyVideo video(video_, {lost});
    const BuiltTables built = build(video);
    ASSERT_EQ(built.end, BuildEnd::built);
    EXPECT_EQ(built.tables.front(), expectedTable(video_, kSeat));
    EXPECT_EQ(video.readings(), 2U);
  }
}

TEST_P(SeatLutBuilderLosses, WhatIsMissingEveryTimeIsNotInTheVideo) {
  for (const Numbers& lost : {Numbers{0, 1}, Numbers{17, 18, 40}, Numbers{59}}) {
    const LossyVideo video(video_, {lost, lost});
    const BuiltTables built = build(video);
    ASSERT_EQ(built.end, BuildEnd::built);
    EXPECT_EQ(built.tables.front(), tableWithout(video_, lost));
    EXPECT_EQ(video.readings(), 2U);
  }
}

TEST_P(SeatLutBuilderLosses, WhatDiffersFromTimeToTimeIsNoTable) {
  const Numbers all = allOf(video_);
  for (const auto& [first, second] : {std::pair{Numbers{17}, Numbers{18}},
                                      {Numbers{17}, Numbers{17, 18}},
                                      {Numbers{17}, all},
                                      {all, Numbers{17}}}) {
    const LossyVideo video(video_, {first, second});
    EXPECT_EQ(build(video).end, BuildEnd::noMemory);
    EXPECT_EQ(video.readings(), 2U);
  }
}

TEST_P(SeatLutBuilderLosses, AVideoThatNeverGivesAPictureHasNone) {
  const Numbers all = allOf(video_);
  EXPECT_EQ(build(LossyVideo(video_, {all, all})).end, BuildEnd::noFrames);
}

INSTANTIATE_TEST_SUITE_P(Workers, SeatLutBuilderLosses, testing::Values(1, 3),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace halvora
