// SPDX-License-Identifier: Apache-2.0
#include <climits>
#include <cstddef>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <malloc.h>

#include "adapters/ffmpeg/ffmpeg_asset.h"
#include "adapters/ffmpeg/libav.h"
#include "tests/adapters/ffmpeg/clip_maker.h"

namespace halvora {
namespace {

constexpr std::uint64_t kMega = 1024 * 1024;

// One colour, so that even a large picture is a small file.
std::unique_ptr<FfmpegAsset> flatClip(const ClipMaker& clips, const std::string& size, int frames,
                                      const std::string& encoder) {
  clips.run("-f lavfi -i color=red:s=" + size + ":r=10 -frames:v " + std::to_string(frames) + " " +
            encoder + " %flat.mp4");
  std::string reason;
  auto asset = FfmpegAsset::open(clips.pathOf("flat.mp4"), &reason);
  EXPECT_TRUE(asset) << reason;
  return asset;
}

TEST(FfmpegMemory, BuffersAreUsedAgainAndGivenBack) {
  const ClipMaker clips;
  const auto asset = flatClip(clips, "640x480", 30, "-c:v mjpeg -pix_fmt yuvj420p");
  ASSERT_TRUE(asset);
  {
    const auto reader = asset->reader();
    while (reader->next()) {
    }
    // Two or three pictures of 460,800 bytes and what surrounds them, whatever the length.
    EXPECT_LT(asset->budget().mostTaken(), 2 * kMega);
    EXPECT_GT(asset->budget().mostTaken(), kMega / 4);
  }
  EXPECT_EQ(asset->budget().taken(), 0U);
}

// What the C library says of its heap; no sanitizer does, which counts for itself.
TEST(FfmpegMemory, NoPictureIsForgotten) {
  const ClipMaker clips;
  const auto asset = flatClip(clips, "640x480", 10, "-c:v mjpeg -pix_fmt yuvj420p");
  ASSERT_TRUE(asset);
  const auto readAll = [&] {
    const auto reader = asset->reader();
    while (reader->next()) {
    }
  };
  const auto held = [] {
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
  };
  readAll();
  const std::size_t before = held();
  for (int round = 0; round < 10; ++round) readAll();
  EXPECT_LT(held(), before + 460'800) << "less than one picture";
}

TEST(FfmpegMemory, LargePicturesStayWithinTheBudget) {
  const ClipMaker clips;
  const auto asset = flatClip(clips, "6000x4000", 4, "-c:v mjpeg -pix_fmt yuvj420p");
  ASSERT_TRUE(asset);
  const auto reader = asset->reader();
  ASSERT_TRUE(reader);
  int frames = 0;
  while (const auto frame = reader->next()) ++frames;
  EXPECT_EQ(frames, 4);
  EXPECT_LE(asset->budget().mostTaken(), PictureBudget::kMostBytes);
  // 36 million bytes a picture: four decoders would take too much.
  const auto readers = asset->readers(4);
  ASSERT_FALSE(readers.empty());
  EXPECT_LT(readers.size(), 4U);
  EXPECT_EQ(asset->generator()->imageAt({0, 1})->rgba.size(), 4U * 6000 * 4000);
  EXPECT_LE(asset->budget().mostTaken(), PictureBudget::kMostBytes);
}

TEST(FfmpegMemory, FramesThatAreHeldCount) {
  const ClipMaker clips;
  const auto asset = flatClip(clips, "2048x2048", 40, "-c:v mjpeg -pix_fmt yuvj444p");
  ASSERT_TRUE(asset);
  const auto reader = asset->reader();
  std::vector<std::unique_ptr<VideoFrame>> held;
  while (auto frame = reader->next()) held.push_back(std::move(frame));
  // 12 MiB each.
  EXPECT_GE(held.size(), 14U);
  EXPECT_LE(held.size(), 16U);
  EXPECT_LE(asset->budget().mostTaken(), PictureBudget::kMostBytes);
  EXPECT_FALSE(reader->next()) << "reading has ended";
  held.clear();
  const auto again = asset->reader();
  EXPECT_TRUE(again->next()) << "another may begin";
}

TEST(FfmpegMemory, DecodersOfOneAssetShareTheBudget) {
  const ClipMaker clips;
  const auto asset = flatClip(clips, "2048x2048", 30, "-c:v mjpeg -pix_fmt yuvj444p");
  ASSERT_TRUE(asset);
  std::vector<std::unique_ptr<FrameReader>> readers;
  std::vector<std::unique_ptr<VideoFrame>> held;
  for (int reader = 0; reader < 3; ++reader) {
    readers.push_back(asset->reader());
    for (int frame = 0; frame < 30; ++frame) held.push_back(readers.back()->next());
  }
  EXPECT_LE(asset->budget().mostTaken(), PictureBudget::kMostBytes);
  EXPECT_EQ(held.back(), nullptr);
}

TEST(FfmpegMemory, DecodersWithMemoryOfTheirOwnAreChargedInAdvance) {
  const ClipMaker clips;
  const auto asset = flatClip(clips, "256x256", 3, "-c:v libsvtav1 -preset 12");
  ASSERT_TRUE(asset);
  {
    const auto reader = asset->reader();
    EXPECT_GE(asset->budget().taken(), 256U * 256 * 3 / 2 * 8);
    EXPECT_TRUE(reader->next());
  }
  EXPECT_EQ(asset->budget().taken(), 0U);
}

TEST(FfmpegMemory, PicturesThatNoDecoderCouldHoldAreRefused) {
  const ClipMaker clips;
  ASSERT_TRUE(flatClip(clips, "64x64", 3, "-c:v mjpeg -pix_fmt yuvj420p"));
  const std::string huge =
      clips.changed(clips.pathOf("flat.mp4"), "huge.mp4", [](std::string& bytes) {
        // Width and height of the sample description: 30,000 by 30,000.
        const std::size_t entry = bytes.find("mp4v");
        ASSERT_NE(entry, std::string::npos);
        bytes.replace(entry + 4 + 24, 4, "\x75\x30\x75\x30");
      });
  std::string reason;
  EXPECT_FALSE(FfmpegAsset::open(huge, &reason));
  EXPECT_EQ(reason, "its pictures are too large");
}

// Such a decoder takes its memory without asking: what one thread needs at most has to fit.
TEST(FfmpegMemory, WhatIsChargedInAdvanceFitsOneThread) {
  const ClipMaker clips;
  ASSERT_TRUE(flatClip(clips, "256x256", 3, "-c:v libsvtav1 -preset 12"));
  const auto reasonAgainst = [&](std::uint32_t width, std::uint32_t height) {
    const std::string path =
        clips.changed(clips.pathOf("flat.mp4"), "said.mp4", [&](std::string& bytes) {
          const std::size_t entry = bytes.find("av01", bytes.find("stsd"));
          ASSERT_NE(entry, std::string::npos);
          bytes[entry + 4 + 24] = static_cast<char>(width >> 8);
          bytes[entry + 4 + 25] = static_cast<char>(width);
          bytes[entry + 4 + 26] = static_cast<char>(height >> 8);
          bytes[entry + 4 + 27] = static_cast<char>(height);
        });
    std::string reason;
    return FfmpegAsset::open(path, &reason) != nullptr ? "opened" : reason;
  };
  // Eleven pictures of 18.5 and of 19.7 million bytes.
  EXPECT_EQ(reasonAgainst(4096, 2960), "opened");
  EXPECT_EQ(reasonAgainst(4096, 3200), "its pictures are too large");
}

TEST(FfmpegMemory, ABudgetGivesNoMoreThanItHas) {
  PictureBudget budget;
  EXPECT_FALSE(budget.take(PictureBudget::kMostBytes + 1));
  EXPECT_FALSE(budget.take(UINT64_MAX));
  EXPECT_TRUE(budget.take(PictureBudget::kMostBytes - 5));
  EXPECT_FALSE(budget.take(6));
  EXPECT_TRUE(budget.take(5));
  budget.giveBack(10);
  EXPECT_FALSE(budget.take(11));
  EXPECT_TRUE(budget.take(10));
  EXPECT_EQ(budget.mostTaken(), PictureBudget::kMostBytes);
}

/// No single allocation of the library's may be larger, for as long as one lives.
class MostAtOnce {
 public:
  explicit MostAtOnce(std::size_t bytes) { av_max_alloc(bytes); }
  ~MostAtOnce() { av_max_alloc(INT_MAX); }
  MostAtOnce(const MostAtOnce&) = delete;
  MostAtOnce& operator=(const MostAtOnce&) = delete;
};

int framesOf(const FfmpegAsset& asset) {
  const auto reader = asset.reader();
  int frames = 0;
  while (reader->next()) ++frames;
  return frames;
}

// The second decoder makes nothing of a picture that it gets no room for, and goes on.
TEST(FfmpegMemory, ShortOfItIsNotTheEndOfTheVideo) {
  const ClipMaker clips;
  for (const char* encoder : {"-c:v mjpeg -pix_fmt yuvj420p", "-c:v libx264 -preset ultrafast"}) {
    SCOPED_TRACE(encoder);
    const auto asset = flatClip(clips, "640x480", 30, encoder);
    ASSERT_TRUE(asset);
    {
      const MostAtOnce tooLittle(200'000);
      EXPECT_THROW(framesOf(*asset), std::bad_alloc);
      EXPECT_THROW(asset->generator()->imageAt({0, 1}), std::bad_alloc);
    }
    EXPECT_EQ(framesOf(*asset), 30) << "and with enough of it all is there";
    EXPECT_EQ(asset->budget().taken(), 0U);
  }
}

TEST(FfmpegMemory, ShortOfItWhenTheFileIsOpenedIsNoFaultOfTheFile) {
  const ClipMaker clips;
  ASSERT_TRUE(flatClip(clips, "64x64", 3, "-c:v mjpeg -pix_fmt yuvj420p"));
  const MostAtOnce tooLittle(1000);
  std::string reason = "none";
  EXPECT_THROW(FfmpegAsset::open(clips.pathOf("flat.mp4"), &reason), std::bad_alloc);
  EXPECT_EQ(reason, "none");
}

}  // namespace
}  // namespace halvora
