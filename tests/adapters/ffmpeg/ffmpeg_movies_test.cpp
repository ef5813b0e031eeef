// SPDX-License-Identifier: Apache-2.0
// Movies as the kit writes them, read back as it reads videos.
#include "adapters/ffmpeg/ffmpeg_movies.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/ffmpeg/ffmpeg_videos.h"
#include "adapters/ffmpeg/libav.h"
#include "tests/apps/halvora/tool_runner.h"

namespace halvora {
namespace {

constexpr int kWidth = 64;
constexpr int kHeight = 32;

std::vector<std::uint8_t> plain(int red, int green, int blue) {
  std::vector<std::uint8_t> rgb;
  for (int at = 0; at < kWidth * kHeight; ++at) {
    for (const int level : {red, green, blue}) rgb.push_back(static_cast<std::uint8_t>(level));
  }
  return rgb;
}

struct FfmpegMoviesRoom : testing::Test {
  TestFolder folder;
  const std::string path = (folder.path() / "movie.mp4").string();
  std::unique_ptr<MovieWriter> movie = FfmpegMovies().make(path, {kWidth, kHeight, 30});

  void SetUp() override {
    const bool canEncode = avcodec_find_encoder(AV_CODEC_ID_H264) != nullptr ||
                           avcodec_find_encoder(AV_CODEC_ID_MPEG4) != nullptr;
    if (!canEncode) GTEST_SKIP() << "this FFmpeg has no encoder";
    ASSERT_TRUE(movie);
  }
};

TEST_F(FfmpegMoviesRoom, ShowsEachPictureForOneFrame) {
  const int colours[][3] = {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {255, 255, 255}, {20, 130, 70}};
  for (const auto& colour : colours)
    ASSERT_TRUE(movie->add(plain(colour[0], colour[1], colour[2])));
  ASSERT_TRUE(movie->finish());

  const auto asset = FfmpegVideoAssets().open(path);
  ASSERT_TRUE(asset);
  EXPECT_NEAR(asset->durationSeconds(), 5 / 30.0, 0.001);
  const auto reader = asset->reader({});
  ASSERT_TRUE(reader);
  for (std::size_t at = 0; at < std::size(colours); ++at) {
    const auto frame = reader->next();
    ASSERT_TRUE(frame) << at;
    EXPECT_NEAR(frame->seconds(), static_cast<double>(at) / 30, 0.001);
    const PixelPosition middle{kWidth / 2, kHeight / 2};
    std::uint32_t word = 0;
    frame->sample({&middle, 1}, {&word, 1});
    // The encoder is not exact, and limited range has 219 levels.
    for (int channel = 0; channel < 3; ++channel) {
      const auto level = static_cast<int>(word >> (16 - 8 * channel) & 255);
      EXPECT_NEAR(level, colours[at][channel], 6) << at << " " << channel;
    }
  }
  EXPECT_FALSE(reader->next());
}

TEST_F(FfmpegMoviesRoom, CanBeEnteredEverySecond) {
  // As much of it is new in each picture as in any other.
  std::uint32_t state = 1;
  for (int frame = 0; frame < 90; ++frame) {
    std::vector<std::uint8_t> rgb = plain(40, 40, 40);
    for (std::size_t at = 0; at < rgb.size() / 4; ++at) {
      state = state * 1664525 + 1013904223;
      rgb[at] = static_cast<std::uint8_t>(state >> 24);
    }
    ASSERT_TRUE(movie->add(rgb));
  }
  ASSERT_TRUE(movie->finish());
  const auto asset = FfmpegVideoAssets().open(path);
  ASSERT_TRUE(asset);
  if (avcodec_find_encoder(AV_CODEC_ID_H264) == nullptr) return;
  EXPECT_EQ(asset->readers(3).size(), 3U) << "three groups of thirty pictures";
}

TEST_F(FfmpegMoviesRoom, BlackIsBlackAndWhiteIsWhite) {
  for (const int level : {0, 0, 255, 255}) ASSERT_TRUE(movie->add(plain(level, level, level)));
  ASSERT_TRUE(movie->finish());
  const auto asset = FfmpegVideoAssets().open(path);
  ASSERT_TRUE(asset);
  const auto reader = asset->reader({});
  ASSERT_TRUE(reader);
  for (const std::uint32_t wanted : {0x000000U, 0x000000U, 0xFFFFFFU, 0xFFFFFFU}) {
    const auto frame = reader->next();
    ASSERT_TRUE(frame);
    const PixelPosition middle{kWidth / 2, kHeight / 2};
    std::uint32_t word = 0;
    frame->sample({&middle, 1}, {&word, 1});
    EXPECT_EQ(word & 0xFFFFFF, wanted);
  }
}

// Chroma has a quarter of the pixels: what it says of four is their mean.
TEST_F(FfmpegMoviesRoom, MixesTheColoursOfNeighbours) {
  std::vector<std::uint8_t> rgb = plain(255, 0, 0);
  for (std::size_t at = 0; at < rgb.size() / 3; ++at) {
    if (at % 2 == 1) rgb[3 * at] = 0, rgb[3 * at + 2] = 255;
  }
  for (int frame = 0; frame < 3; ++frame) ASSERT_TRUE(movie->add(rgb));
  ASSERT_TRUE(movie->finish());
  const auto asset = FfmpegVideoAssets().open(path);
  ASSERT_TRUE(asset);
  const auto reader = asset->reader({});
  ASSERT_TRUE(reader);
  const auto frame = reader->next();
  ASSERT_TRUE(frame);
  int red = 0;
  int blue = 0;
  for (int x = kWidth / 2; x < kWidth / 2 + 4; ++x) {
    const PixelPosition place{static_cast<std::uint32_t>(x), kHeight / 2};
    std::uint32_t word = 0;
    frame->sample({&place, 1}, {&word, 1});
    red += static_cast<int>(word >> 16 & 255);
    blue += static_cast<int>(word & 255);
  }
  EXPECT_NEAR(red, blue, 120) << "of 1,020: neither has the whole of it";
}

// Two pictures side by side, of which each has colours and edges of its own.
TEST_F(FfmpegMoviesRoom, PutsEveryColourInItsPlace) {
  const auto levelAt = [](int x, int y, int channel) {
    const bool isLeft = x < kWidth / 2;
    const bool isUpper = y < kHeight / 2;
    return channel == 0 ? (isLeft ? 200 : 30) : channel == 1 ? (isUpper ? 180 : 60) : 90;
  };
  std::vector<std::uint8_t> rgb;
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      for (int channel = 0; channel < 3; ++channel) {
        rgb.push_back(static_cast<std::uint8_t>(levelAt(x, y, channel)));
      }
    }
  }
  ASSERT_TRUE(movie->add(rgb));
  ASSERT_TRUE(movie->finish());
  const auto frame = FfmpegVideoAssets().open(path)->reader({})->next();
  ASSERT_TRUE(frame);
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      const PixelPosition at{static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y)};
      std::uint32_t word = 0;
      frame->sample({&at, 1}, {&word, 1});
      for (int channel = 0; channel < 3; ++channel) {
        ASSERT_NEAR(static_cast<int>(word >> (16 - 8 * channel) & 255), levelAt(x, y, channel), 8)
            << x << ", " << y << ", " << channel;
      }
    }
  }
}

TEST_F(FfmpegMoviesRoom, RefusesAPictureOfAnotherSize) {
  EXPECT_FALSE(movie->add(std::vector<std::uint8_t>(3)));
  EXPECT_FALSE(movie->add(plain(0, 0, 0)));
  EXPECT_FALSE(movie->finish());
}

TEST(FfmpegMovies, RefusesSizesAndPlacesThatCannotBe) {
  const TestFolder folder;
  const auto pathOf = [&](const char* name) { return (folder.path() / name).string(); };
  EXPECT_FALSE(FfmpegMovies().make(pathOf("a.mp4"), {63, 32, 30}));
  EXPECT_FALSE(FfmpegMovies().make(pathOf("a.mp4"), {64, 33, 30}));
  EXPECT_FALSE(FfmpegMovies().make(pathOf("a.mp4"), {64, 0, 30}));
  EXPECT_FALSE(FfmpegMovies().make(pathOf("a.mp4"), {0, 32, 30}));
  EXPECT_FALSE(FfmpegMovies().make(pathOf("a.mp4"), {-2, 32, 30}));
  EXPECT_FALSE(FfmpegMovies().make(pathOf("a.mp4"), {64, 32, 0}));
  EXPECT_FALSE(FfmpegMovies().make(pathOf("missing/a.mp4"), {64, 32, 30}));
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

}  // namespace
}  // namespace halvora
