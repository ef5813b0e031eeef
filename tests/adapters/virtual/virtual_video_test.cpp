// SPDX-License-Identifier: Apache-2.0
#include "adapters/virtual/virtual_video.h"

#include <cmath>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// One video under "/video".
class VirtualVideoTest : public testing::Test {
 protected:
  std::unique_ptr<VideoAsset> open(VirtualVideo video) {
    videos_.put("/video", std::move(video));
    return videos_.open("/video");
  }
  /// The frames that a reader still gives, by their red level.
  static std::vector<int> framesOf(FrameReader& reader) {
    std::vector<int> frames;
    while (const auto frame = reader.next()) {
      std::uint32_t word = 0;
      const PixelPosition place{};
      frame->sample({&place, 1}, {&word, 1});
      frames.push_back(static_cast<int>(word >> 16 & 255));
    }
    return frames;
  }

  VirtualVideoAssets videos_;
};

TEST_F(VirtualVideoTest, OpensWhatThereIs) {
  std::string reason;
  EXPECT_EQ(videos_.open("/video", &reason), nullptr);
  EXPECT_NE(reason, "");
  VirtualVideo sound = VirtualVideo::ofWords({1, 2, 3});
  EXPECT_NE(open(sound), nullptr);
  sound.hasTrack = false;
  EXPECT_EQ(open(sound), nullptr);
  EXPECT_EQ(videos_.counts.opens, 3);
}

TEST_F(VirtualVideoTest, FramesAreThirtyASecond) {
  const auto asset = open(VirtualVideo::ofPlaces(60, 4, 3));
  EXPECT_EQ(asset->durationSeconds(), 2);
  const auto reader = asset->reader();
  reader->next();
  const auto frame = reader->next();
  ASSERT_NE(frame, nullptr);
  EXPECT_EQ(frame->seconds(), 1 / 30.0);
  EXPECT_EQ(frame->width(), 4U);
  EXPECT_EQ(frame->height(), 3U);
}

TEST_F(VirtualVideoTest, PixelsTellFrameAndPlace) {
  const auto asset = open(VirtualVideo::ofPlaces(2, 4, 3));
  const auto reader = asset->reader();
  reader->next();
  const auto frame = reader->next();
  const std::vector<PixelPosition> places{{3, 2}, {0, 0}};
  std::vector<std::uint32_t> words(2);
  frame->sample(places, words);
  EXPECT_THAT(words, ElementsAre(0xFF010302, 0xFF010000));
}

TEST_F(VirtualVideoTest, FrameStandsAlone) {
  auto asset = open(VirtualVideo::ofPlaces(2, 4, 3));
  auto reader = asset->reader();
  const auto frame = reader->next();
  reader.reset();
  asset.reset();
  videos_.put("/video", VirtualVideo::ofWords({1}));
  EXPECT_EQ(frame->width(), 4U);
}

TEST_F(VirtualVideoTest, ReaderOfARangeGivesTheFramesWithin) {
  VirtualVideo video = VirtualVideo::ofPlaces(10, 1, 1);
  video.frames[4].seconds = std::nan("");
  const auto asset = open(std::move(video));
  const auto reader = asset->reader(MediaTimeRange{{60, 600}, {120, 600}});
  EXPECT_THAT(framesOf(*reader), ElementsAre(3, 5)) << "frame 6 is at the end, which is outside";
  EXPECT_EQ(videos_.counts.framesRead, 2);
}

TEST_F(VirtualVideoTest, StretchesShareAllFramesInOrder) {
  const auto asset = open(VirtualVideo::ofPlaces(7, 1, 1));
  for (int most = 1; most <= 9; ++most) {
    std::vector<int> frames;
    const auto readers = asset->readers(most);
    EXPECT_EQ(readers.size(), static_cast<std::size_t>(std::min(most, 7)));
    for (const auto& reader : readers) {
      const auto stretch = framesOf(*reader);
      EXPECT_FALSE(stretch.empty());
      frames.insert(frames.end(), stretch.begin(), stretch.end());
    }
    EXPECT_THAT(frames, ElementsAre(0, 1, 2, 3, 4, 5, 6));
  }
}

TEST_F(VirtualVideoTest, DamageEndsReadingAndNoReaderBeginsWhereNoneCan) {
  VirtualVideo video = VirtualVideo::ofPlaces(7, 1, 1);
  video.readableFrames = 4;
  auto asset = open(video);
  EXPECT_THAT(framesOf(*asset->reader()), ElementsAre(0, 1, 2, 3));
  const auto readers = asset->readers(2);
  EXPECT_THAT(framesOf(*readers[1]), ElementsAre(3)) << "the second stretch begins at frame 3";
  video.canBeginReading = false;
  asset = open(video);
  EXPECT_EQ(asset->reader(), nullptr);
  EXPECT_THAT(asset->readers(3), IsEmpty());
}

TEST_F(VirtualVideoTest, HookIsCalledBeforeEachFrameThatIsRead) {
  std::vector<std::string> acts;
  VirtualVideo video = VirtualVideo::ofPlaces(2, 1, 1);
  video.onFrame = [&](std::size_t frame) {
    acts.push_back(std::to_string(frame) + " of " + std::to_string(videos_.counts.framesRead));
  };
  const auto asset = open(std::move(video));
  const auto reader = asset->reader();
  reader->next();
  reader->next();
  reader->next();
  EXPECT_THAT(acts, ElementsAre("0 of 0", "1 of 1"));
}

TEST_F(VirtualVideoTest, PictureIsWhatIsOnShowAtThatTime) {
  const auto asset = open(VirtualVideo::ofPlaces(3, 2, 1));
  const auto generator = asset->generator();
  const auto first = generator->imageAt({0, 600});
  ASSERT_TRUE(first.has_value());
  EXPECT_EQ(first->width, 2U);
  EXPECT_EQ(first->height, 1U);
  EXPECT_THAT(first->rgba, ElementsAre(0, 0, 0, 255, 0, 1, 0, 255));
  EXPECT_EQ(generator->imageAt({39, 600})->rgba[0], 1) << "until the next one";
  EXPECT_EQ(generator->imageAt({40, 600})->rgba[0], 2);
  EXPECT_FALSE(generator->imageAt({60, 600}).has_value()) << "the end";
  EXPECT_EQ(videos_.counts.imagesMade, 3);
  EXPECT_EQ(videos_.counts.framesRead, 0);
}

TEST_F(VirtualVideoTest, NoPictureIsOnShowBeforeTheFirst) {
  VirtualVideo video = VirtualVideo::ofPlaces(3, 2, 1);
  video.frames.erase(video.frames.begin());
  const auto asset = open(std::move(video));
  EXPECT_FALSE(asset->generator()->imageAt({0, 600}).has_value());
  EXPECT_TRUE(asset->generator()->imageAt({20, 600}).has_value());
}

TEST(InlineWorkersTest, DoOneTaskAfterTheOther) {
  InlineWorkers workers;
  EXPECT_EQ(workers.count(), 1);
  EXPECT_FALSE(workers.areParallel());
  std::string order;
  std::vector<Task> tasks;
  for (const char name : {'a', 'b', 'c'}) tasks.emplace_back([&order, name] { order += name; });
  workers.run(tasks);
  EXPECT_EQ(order, "abc");
}

}  // namespace
}  // namespace halvora
