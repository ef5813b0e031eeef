// SPDX-License-Identifier: Apache-2.0
// What a video takes in pictures, by what its file claims.
#include <algorithm>
#include <array>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/ffmpeg/picture_memory.h"

namespace halvora {
namespace {

struct Claims {
  AVCodecID codec = AV_CODEC_ID_H264;
  int width = 640;
  int height = 480;
  AVPixelFormat format = AV_PIX_FMT_YUV420P;
  int delay = 0;
  std::vector<std::uint8_t> setUp = {1, 0x42, 0, 0x1E};
};

PictureNeed needOf(const Claims& claims) {
  const LibavPointer<AVCodecParameters> video(avcodec_parameters_alloc());
  video->codec_type = AVMEDIA_TYPE_VIDEO;
  video->codec_id = claims.codec;
  video->width = claims.width;
  video->height = claims.height;
  video->format = claims.format;
  video->video_delay = claims.delay;
  const std::size_t size = claims.setUp.size();
  video->extradata = static_cast<std::uint8_t*>(av_mallocz(size + AV_INPUT_BUFFER_PADDING_SIZE));
  std::copy(claims.setUp.begin(), claims.setUp.end(), video->extradata);
  video->extradata_size = static_cast<int>(size);
  return PictureNeed::of(*video);
}

TEST(FfmpegNeed, OfOnePictureIsItsBytesUpToWholeBlocks) {
  const PictureNeed need = needOf({.width = 65, .height = 63});
  EXPECT_EQ(need.pixels, 65U * 63);
  EXPECT_EQ(need.leastBytes, 65U * 63 * 12 / 8);
  EXPECT_EQ(need.mostBytes, 128U * 64 * 12 / 8);
  EXPECT_EQ(needOf({.width = 64, .height = 64, .format = AV_PIX_FMT_YUV444P10LE}).mostBytes,
            64U * 64 * 6);
  EXPECT_EQ(needOf({.width = 64, .height = 64, .format = AV_PIX_FMT_RGB24}).leastBytes,
            64U * 64 * 3);
}

TEST(FfmpegNeed, OfAnUnknownKindIsFromGrayToFourDeepNumbers) {
  const PictureNeed need = needOf({.width = 65, .height = 63, .format = AV_PIX_FMT_NONE});
  EXPECT_EQ(need.leastBytes, 65U * 63);
  EXPECT_EQ(need.mostBytes, 128U * 64 * 8);
}

TEST(FfmpegNeed, SizesThatCannotBeAreTakenForTheNearestThatCan) {
  EXPECT_EQ(needOf({.width = -5, .height = 100}).pixels, 0U);
  EXPECT_EQ(needOf({.width = 100, .height = INT32_MIN}).pixels, 0U);
  EXPECT_EQ(needOf({.width = 1, .height = 1}).pixels, 1U);
  EXPECT_EQ(needOf({.width = 65536, .height = 1}).pixels, 65536U);
  EXPECT_EQ(needOf({.width = INT32_MAX, .height = 2}).pixels, 65536U * 2);
  EXPECT_EQ(needOf({.width = 2, .height = INT32_MAX}).pixels, 65536U * 2);
}

TEST(FfmpegNeed, IsHopelessWhereNotEvenAHarmlessCaseFits) {
  // Three pictures, of one byte a pixel at least.
  EXPECT_FALSE(needOf({.width = 8000, .height = 8000, .format = AV_PIX_FMT_GRAY8}).isHopeless());
  EXPECT_TRUE(needOf({.width = 8001, .height = 8000, .format = AV_PIX_FMT_GRAY8}).isHopeless());
  EXPECT_FALSE(needOf({.width = 6500, .height = 6500}).isHopeless());
  EXPECT_TRUE(needOf({.width = 7000, .height = 7000}).isHopeless());
  EXPECT_TRUE(needOf({.width = 6500, .height = 6500, .delay = 1}).isHopeless());
}

TEST(FfmpegNeed, PicturesAreKeptUntilTheyAreInOrder) {
  const auto least = [](int delay) { return needOf({.delay = delay}).leastPictures; };
  EXPECT_EQ(least(-1), 3U);
  EXPECT_EQ(least(0), 3U);
  EXPECT_EQ(least(2), 5U);
  EXPECT_EQ(least(16), 19U);
  EXPECT_EQ(least(17), 19U);
}

TEST(FfmpegNeed, EachThreadHoldsOnePictureMore) {
  const PictureNeed need = needOf({.codec = AV_CODEC_ID_MPEG4});
  EXPECT_EQ(need.mostPictures, 5U);
  EXPECT_EQ(need.mostOf(1), 5 * need.mostBytes);
  EXPECT_EQ(need.mostOf(4), 8 * need.mostBytes);
}

TEST(FfmpegNeed, ACodecKeepsSoManyPictures) {
  const auto kept = [](AVCodecID codec) { return needOf({.codec = codec}).mostPictures; };
  EXPECT_EQ(kept(AV_CODEC_ID_MJPEG), 3U);
  EXPECT_EQ(needOf({.codec = AV_CODEC_ID_MJPEG, .delay = 5}).leastPictures, 2U);
  EXPECT_EQ(kept(AV_CODEC_ID_PRORES), 3U);
  EXPECT_EQ(kept(AV_CODEC_ID_VP8), 3U + 3);
  EXPECT_EQ(kept(AV_CODEC_ID_VP9), 8U + 3);
  EXPECT_EQ(kept(AV_CODEC_ID_AV1), 8U + 3);
  for (const AVCodecID codec :
       {AV_CODEC_ID_MPEG4, AV_CODEC_ID_H263, AV_CODEC_ID_MPEG2VIDEO, AV_CODEC_ID_MPEG1VIDEO}) {
    EXPECT_EQ(kept(codec), 2U + 3);
  }
  EXPECT_EQ(kept(AV_CODEC_ID_HEVC), 16U + 3);
  EXPECT_EQ(kept(AV_CODEC_ID_NONE), 16U + 3);
}

// The blocks of 16 by 16 pixels that a decoder of H.264 has room for, by the level.
TEST(FfmpegNeed, TheLevelOfH264SaysHowManyPicturesAreKept) {
  struct Level {
    int level;
    int blocks;
  };
  constexpr Level kLevels[] = {{10, 2376},   {13, 2376},   {14, 4752},   {20, 4752},   {21, 4752},
                               {22, 8100},   {30, 8100},   {31, 18000},  {32, 20480},  {33, 34816},
                               {42, 34816},  {43, 110400}, {50, 110400}, {51, 184320}, {52, 184320},
                               {53, 696320}, {62, 696320}, {255, 696320}};
  for (const Level& one : kLevels) {
    const auto level = static_cast<std::uint8_t>(one.level);
    for (int blocks = one.blocks / 17 + 1; blocks <= one.blocks + 1; blocks += blocks / 3 + 1) {
      for (int near = blocks; near < blocks + 8; ++near) {
        const Claims claims{.width = 16, .height = 16 * near, .setUp = {1, 0x42, 0, level}};
        if (claims.height > 65536) continue;
        const int kept = std::clamp(one.blocks / near, 1, 16);
        ASSERT_EQ(needOf(claims).mostPictures, static_cast<std::uint64_t>(kept) + 3)
            << one.level << ", " << near;
      }
    }
  }
  // Where one block more would be a picture more.
  const auto kept = [](std::uint8_t level, int width, int height) {
    return needOf({.width = width, .height = height, .setUp = {1, 0x42, 0, level}}).mostPictures -
           3;
  };
  EXPECT_EQ(kept(21, 16 * 7, 16 * 97), 6U);
  EXPECT_EQ(kept(32, 64, 27308), 2U);
  EXPECT_EQ(kept(62, 908, 65440), 2U);
  EXPECT_EQ(needOf({.setUp = {1, 0x42, 0}}).mostPictures, 16U + 3) << "no level is said";
  EXPECT_EQ(kept(13, 0, 0), 16U);
}

}  // namespace
}  // namespace halvora
