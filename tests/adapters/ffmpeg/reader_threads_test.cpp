// SPDX-License-Identifier: Apache-2.0
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/ffmpeg/ffmpeg_videos.h"
#include "adapters/ffmpeg/picture_memory.h"
#include "tests/adapters/ffmpeg/clip_maker.h"
#include "tests/support/side_by_side.h"

namespace halvora {
namespace {

constexpr const char* kAlmostExact =
    "-c:v libx264 -qp 4 -preset superfast -sc_threshold 0 -b_strategy 0 ";

TEST(FfmpegReaderThreads, StretchesAreReadSideBySide) {
  const ClipMaker clips;
  const auto asset = FfmpegVideoAssets().open(
      clips.encode("clip.mp4", movingTexture(60), std::string(kAlmostExact) + "-g 10 -bf 2"));
  ASSERT_TRUE(asset);
  const auto expected = framesOf(*asset->reader());
  const auto readers = asset->readers(3);
  ASSERT_EQ(readers.size(), 3U);
  std::vector<std::vector<SeenFrame>> parts(readers.size());
  std::vector<std::thread> threads;
  for (std::size_t part = 0; part < readers.size(); ++part) {
    threads.emplace_back([&, part] { parts[part] = framesOf(*readers[part]); });
  }
  const auto image = asset->generator()->imageAt({31, 30});
  for (std::thread& thread : threads) thread.join();
  std::vector<SeenFrame> all;
  for (const auto& part : parts) all.insert(all.end(), part.begin(), part.end());
  EXPECT_EQ(all, expected);
  ASSERT_TRUE(image);
  EXPECT_EQ(frameNumberOf(image->rgba[0]), 31);
}

TEST(FfmpegReaderThreads, AFrameMayBeDroppedElsewhereWhileReadingGoesOn) {
  const ClipMaker clips;
  const auto asset = FfmpegVideoAssets().open(
      clips.encode("clip.mp4", movingTexture(40), std::string(kAlmostExact) + "-g 10 -bf 2"));
  ASSERT_TRUE(asset);
  const auto reader = asset->reader();
  std::vector<int> numbers(40, -1);
  std::thread other;
  std::size_t count = 0;
  while (std::shared_ptr<VideoFrame> frame = reader->next()) {
    if (other.joinable()) other.join();
    other = std::thread([number = &numbers.at(count++), frame = std::move(frame)]() mutable {
      *number = frameNumberOf(seen(*frame).words[0]);
      frame.reset();
    });
  }
  if (other.joinable()) other.join();
  for (std::size_t index = 0; index < numbers.size(); ++index) {
    EXPECT_EQ(numbers[index], static_cast<int>(index));
  }
}

// A decoder's own threads ask for pictures, and its owner lets go of what is not in use.
TEST(PictureBuffersThreads, GiveRoomToSeveralAtOnce) {
  const AVCodec* codec = avcodec_find_decoder(AV_CODEC_ID_H264);
  if (codec == nullptr) GTEST_SKIP() << "this FFmpeg has no decoder";
  const auto budget = std::make_shared<PictureBudget>();
  PictureBuffers buffers(budget);
  const auto decoder = madeByLibav(avcodec_alloc_context3(codec));
  decoder->width = decoder->height = 64;
  decoder->pix_fmt = AV_PIX_FMT_YUV420P;
  buffers.serve(*decoder);
  const auto hold = [&] {
    const auto frame = madeByLibav(av_frame_alloc());
    frame->format = AV_PIX_FMT_YUV420P;
    frame->width = frame->height = 64;
    EXPECT_EQ(decoder->get_buffer2(decoder.get(), frame.get(), 0), 0);
  };
  sideBySide({hold, [&] { buffers.forget(); }});
  EXPECT_FALSE(buffers.hasRefused() || buffers.wasMemoryShort());
  buffers.forget();
  EXPECT_EQ(budget->taken(), 0U);
}

}  // namespace
}  // namespace halvora
