// SPDX-License-Identifier: Apache-2.0
// Clips of many kinds of video against what the command decodes from them.
#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/ffmpeg/ffmpeg_videos.h"
#include "tests/adapters/ffmpeg/clip_maker.h"
#include "tests/adapters/ffmpeg/colour_reference.h"

namespace halvora {
namespace {

/// How the command lays out the pictures of a pixel format.
struct Planes {
  int columnShift = 1;
  int rowShift = 1;
  int depth = 8;
  bool isRgb = false;
};

constexpr Planes k420 = {};
constexpr Planes k422 = {.columnShift = 1, .rowShift = 0};
constexpr Planes k444 = {.columnShift = 0, .rowShift = 0};
constexpr Planes k420Of10 = {.depth = 10};
constexpr Planes kRgb = {.columnShift = 0, .rowShift = 0, .isRgb = true};

struct DecodeCase {
  const char* name;
  const char* encoder;
  int width = 64;
  int height = 64;
  Planes planes = k420;
  /// Height decides where nothing else does.
  double kr = 0.299;
  double kb = 0.114;
  bool isFull = false;
  const char* container = "mp4";
};

/// Pictures as the command decoded them.
class RawPictures {
 public:
  RawPictures(std::string bytes, const DecodeCase& from) : bytes_(std::move(bytes)), case_(from) {
    const Planes& planes = from.planes;
    const int across = (from.width + (1 << planes.columnShift) - 1) >> planes.columnShift;
    const int down = (from.height + (1 << planes.rowShift) - 1) >> planes.rowShift;
    sizes_[0] = from.width * from.height;
    sizes_[1] = sizes_[2] = across * down;
    widths_[0] = from.width;
    widths_[1] = widths_[2] = across;
  }

  int pictureBytes() const { return (sizes_[0] + sizes_[1] + sizes_[2]) * sampleBytes(); }
  std::size_t count() const { return bytes_.size() / static_cast<std::size_t>(pictureBytes()); }

  std::uint32_t wordAt(std::size_t picture, int x, int y) const {
    const auto number = [&](int plane) { return numberAt(picture, plane, x, y); };
    // Planes of RGB come green first.
    if (case_.planes.isRgb) return referenceWord(number(2), number(0), number(1));
    const ReferenceColours colours{case_.kr, case_.kb, case_.isFull, case_.planes.depth};
    return referenceYuv(colours, number(0), number(1), number(2));
  }

 private:
  int sampleBytes() const { return case_.planes.depth > 8 ? 2 : 1; }

  int numberAt(std::size_t picture, int plane, int x, int y) const {
    const int columnShift = plane > 0 ? case_.planes.columnShift : 0;
    const int rowShift = plane > 0 ? case_.planes.rowShift : 0;
    int sample = (y >> rowShift) * widths_[plane] + (x >> columnShift);
    for (int before = 0; before < plane; ++before) sample += sizes_[before];
    const std::size_t at = picture * static_cast<std::size_t>(pictureBytes()) +
                           static_cast<std::size_t>(sample * sampleBytes());
    const int low = static_cast<unsigned char>(bytes_.at(at));
    return sampleBytes() == 1 ? low : low | static_cast<unsigned char>(bytes_.at(at + 1)) << 8;
  }

  std::string bytes_;
  DecodeCase case_;
  int sizes_[3] = {};
  int widths_[3] = {};
};

class FfmpegDecode : public testing::TestWithParam<DecodeCase> {};

TEST_P(FfmpegDecode, EveryPixelIsAsTheCommandDecodesIt) {
  constexpr int kFrames = 6;
  const DecodeCase& from = GetParam();
  const ClipMaker clips;
  const std::string name = std::string("clip.") + from.container;
  // The pattern itself has even sizes only.
  const std::string crop =
      "crop=" + std::to_string(from.width) + ":" + std::to_string(from.height) + ":0:0:exact=1";
  clips.run("-f lavfi -i testsrc2=s=64x720:r=30:d=0.2 -vf format=gbrp," + crop + " " +
            from.encoder + " %" + name);
  const RawPictures expected(clips.decode(clips.pathOf(name)), from);
  ASSERT_EQ(expected.count(), static_cast<std::size_t>(kFrames));

  std::string reason;
  const auto asset = FfmpegVideoAssets().open(clips.pathOf(name), &reason);
  ASSERT_TRUE(asset) << reason;
  EXPECT_EQ(asset->durationSeconds(), 0.2);
  const auto reader = asset->reader();
  ASSERT_TRUE(reader);
  const auto frames = framesOf(*reader);
  ASSERT_EQ(frames.size(), expected.count());
  EXPECT_FALSE(reader->hasLostPictures());
  for (std::size_t index = 0; index < frames.size(); ++index) {
    const SeenFrame& frame = frames[index];
    EXPECT_EQ(frame.seconds, static_cast<double>(index) / 30);
    ASSERT_EQ(frame.width, static_cast<std::uint32_t>(from.width));
    ASSERT_EQ(frame.height, static_cast<std::uint32_t>(from.height));
    int most = 0;
    for (std::size_t at = 0; at < frame.words.size(); ++at) {
      const int x = static_cast<int>(at) % from.width;
      const int y = static_cast<int>(at) / from.width;
      most = std::max(most, levelsApart(frame.words[at], expected.wordAt(index, x, y)));
    }
    EXPECT_LE(most, from.planes.isRgb ? 0 : 1) << "frame " << index;
  }
}

constexpr DecodeCase kCases[] = {
    {.name = "H264", .encoder = "-c:v libx264 -preset veryfast -pix_fmt yuv420p"},
    {.name = "H264Of422", .encoder = "-c:v libx264 -pix_fmt yuv422p", .planes = k422},
    {.name = "H264Of444", .encoder = "-c:v libx264 -pix_fmt yuv444p", .planes = k444},
    {.name = "H264OfOddSize",
     .encoder = "-c:v libx264 -pix_fmt yuv444p",
     .width = 63,
     .height = 47,
     .planes = k444},
    {.name = "H264Of10Bits", .encoder = "-c:v libx264 -pix_fmt yuv420p10le", .planes = k420Of10},
    {.name = "H264FullRange", .encoder = "-c:v libx264 -pix_fmt yuvj420p", .isFull = true},
    {.name = "H264TaggedBt709",
     .encoder = "-c:v libx264 -pix_fmt yuv420p -colorspace bt709",
     .kr = 0.2126,
     .kb = 0.0722},
    {.name = "H264TaggedBt601",
     .encoder = "-c:v libx264 -pix_fmt yuv420p -colorspace smpte170m",
     .width = 32,
     .height = 720},
    {.name = "H264TaggedBt2020",
     .encoder = "-c:v libx264 -pix_fmt yuv420p -colorspace bt2020nc",
     .kr = 0.2627,
     .kb = 0.0593},
    {.name = "H264UntaggedOf480Rows",
     .encoder = "-c:v libx264 -pix_fmt yuv420p",
     .width = 32,
     .height = 480},
    {.name = "H264UntaggedOf720Rows",
     .encoder = "-c:v libx264 -pix_fmt yuv420p",
     .width = 32,
     .height = 720,
     .kr = 0.2126,
     .kb = 0.0722},
    {.name = "H264Interlaced", .encoder = "-c:v libx264 -pix_fmt yuv420p -flags +ildct+ilme"},
    {.name = "H264OfRgb", .encoder = "-c:v libx264rgb -qp 0", .planes = kRgb},
    {.name = "Hevc",
     .encoder = "-c:v libx265 -x265-params log-level=none -preset ultrafast -pix_fmt yuv420p"},
    {.name = "HevcOf10Bits",
     .encoder = "-c:v libx265 -x265-params log-level=none -preset ultrafast -pix_fmt yuv420p10le",
     .planes = k420Of10},
    {.name = "Mpeg4", .encoder = "-c:v mpeg4 -bf 2"},
    {.name = "Mjpeg", .encoder = "-c:v mjpeg -pix_fmt yuvj420p", .isFull = true},
    {.name = "Vp9OfOddSize",
     .encoder = "-c:v libvpx-vp9 -deadline realtime -cpu-used 8 -pix_fmt yuv420p",
     .width = 63,
     .height = 47},
    {.name = "Av1", .encoder = "-c:v libsvtav1 -preset 12 -pix_fmt yuv420p"},
    {.name = "ProRes",
     .encoder = "-c:v prores -pix_fmt yuv422p10le",
     .planes = {.columnShift = 1, .rowShift = 0, .depth = 10},
     .container = "mov"},
};

INSTANTIATE_TEST_SUITE_P(All, FfmpegDecode, testing::ValuesIn(kCases),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace halvora
