// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/ffmpeg/ffmpeg_videos.h"
#include "tests/adapters/ffmpeg/clip_maker.h"

namespace halvora {
namespace {

std::unique_ptr<VideoAsset> opened(const std::string& path) {
  std::string reason;
  auto asset = FfmpegVideoAssets().open(path, &reason);
  EXPECT_TRUE(asset) << path << ": " << reason;
  return asset;
}

// Numbers keep their value from end to end, and every picture can be told from the others.
constexpr const char* kAlmostExact =
    "-c:v libx264 -qp 4 -preset superfast -sc_threshold 0 -b_strategy 0 ";

struct ReaderCase {
  const char* name;
  const char* arguments;
  /// Readers that three are split into; one if it cannot be split.
  std::size_t readers = 3;
  /// Whether a frame's number can be read from it.
  bool isNumbered = true;
  int fps = 30;
};

constexpr ReaderCase kCases[] = {
    {"BFrames", "-g 10 -bf 3"},
    {"Pyramid", "-g 10 -bf 7 -x264-params b-pyramid=normal:ref=4"},
    {"NoBFrames", "-g 10 -bf 0"},
    {"OpenGroups", "-g 10 -bf 3 -x264-params open-gop=1", 1},
    {"GradualRefresh", "-g 10 -bf 0 -x264-params intra-refresh=1", 1},
    {"OneGroup", "-g 500 -bf 2", 1},
    {"Interlaced", "-g 10 -bf 2 -flags +ildct+ilme"},
    {"SixtyFrames", "-g 10 -bf 2", 3, true, 60},
    {"LateStart", "-g 10 -bf 2 -output_ts_offset 0.5 -use_editlist 0"},
    {"EmptyEdit", "-g 10 -bf 2 -output_ts_offset 0.5"},
    {"VariableRate",
     "-g 10 -bf 2 -vf \"setpts='PTS+0.01/TB*eq(mod(N,3),1)'\" -vsync vfr -enc_time_base 1/1000"},
    {"Fragments", "-g 10 -bf 2 -movflags frag_keyframe+empty_moov"},
    {"FragmentsBehindHeader", "-g 10 -bf 2 -movflags frag_keyframe"},
    {"FragmentIndex", "-g 10 -bf 2 -movflags dash+frag_keyframe+empty_moov+global_sidx"},
    {"Hevc",
     "-c:v libx265 -preset ultrafast -x265-params "
     "log-level=none:keyint=10:min-keyint=10:bframes=3:open-gop=0:scenecut=0",
     3, false},
    {"HevcOpenGroups",
     "-c:v libx265 -preset ultrafast -x265-params "
     "log-level=none:keyint=10:min-keyint=10:bframes=3:open-gop=1:scenecut=0",
     1, false},
    {"Mpeg4", "-c:v mpeg4 -q 2 -g 10 -bf 2", 1, false},
    {"Mjpeg", "-c:v mjpeg -q 2 -pix_fmt yuvj420p", 3, false},
    {"Vp9", "-c:v libvpx-vp9 -deadline realtime -cpu-used 8 -g 10 -lossless 1"},
    {"Av1", "-c:v libsvtav1 -preset 12 -g 10", 1, false},
};

/// When the command presents the frames.
std::vector<double> presentedTimes(const ClipMaker& clips, const std::string& path) {
  const std::string list = clips.pathOf("times");
  const std::string command =
      "ffprobe -v error -select_streams v:0 -show_entries frame=pts_time -of csv=p=0 " + path +
      " > " + list;
  EXPECT_EQ(std::system(command.c_str()), 0);
  std::ifstream lines(list);
  std::vector<double> times;
  for (std::string line; std::getline(lines, line);) {
    if (!line.empty()) times.push_back(std::stod(line));
  }
  return times;
}

class FfmpegReaders : public testing::TestWithParam<ReaderCase> {
 protected:
  void SetUp() override {
    const ReaderCase& from = GetParam();
    const std::string arguments = from.arguments;
    const std::string codec = arguments.starts_with("-c:v") ? "" : kAlmostExact;
    path_ = clips_.encode("clip.mp4", movingTexture(60, from.fps), codec + arguments);
    asset_ = opened(path_);
    ASSERT_TRUE(asset_);
    const auto reader = asset_->reader();
    ASSERT_TRUE(reader);
    all_ = framesOf(*reader);
    ASSERT_EQ(all_.size(), 60U);
    EXPECT_FALSE(reader->hasLostPictures());
  }

  std::vector<SeenFrame> between(const MediaTimeRange& range) const {
    std::vector<SeenFrame> frames;
    for (const SeenFrame& frame : all_) {
      if (frame.seconds >= range.begin.seconds() && frame.seconds < range.end.seconds()) {
        frames.push_back(frame);
      }
    }
    return frames;
  }

  ClipMaker clips_;
  std::string path_;
  std::unique_ptr<VideoAsset> asset_;
  std::vector<SeenFrame> all_;
};

TEST_P(FfmpegReaders, EveryFrameComesOnceAtItsTime) {
  const std::vector<double> times = presentedTimes(clips_, path_);
  ASSERT_EQ(times.size(), all_.size());
  for (std::size_t index = 0; index < all_.size(); ++index) {
    EXPECT_NEAR(all_[index].seconds, times[index], 1e-6);
    if (GetParam().isNumbered) {
      EXPECT_EQ(frameNumberOf(all_[index].words[0]), static_cast<int>(index));
    }
  }
}

TEST_P(FfmpegReaders, StretchesAreTheWholeInOrder) {
  for (const int most : {1, 2, 3, 4}) {
    const auto readers = asset_->readers(most);
    ASSERT_FALSE(readers.empty());
    EXPECT_LE(readers.size(), static_cast<std::size_t>(most));
    EXPECT_EQ(framesOf(readers), all_) << most;
    for (const auto& reader : readers) EXPECT_FALSE(reader->hasLostPictures()) << most;
  }
  EXPECT_EQ(asset_->readers(3).size(), GetParam().readers);
}

TEST_P(FfmpegReaders, RangesAreExactWhereverTheyBegin) {
  const std::vector<MediaTimeRange> ranges = {
      {{0, 1}, {1, 1}},         {{0, 600}, {20, 600}},    {{20, 600}, {40, 600}},
      {{199, 600}, {201, 600}}, {{200, 600}, {260, 600}}, {{333, 1000}, {334, 1000}},
      {{1, 3}, {2, 3}},         {{37, 30}, {61, 30}},     {{59, 30}, {60, 30}},
      {{59, 60}, {9, 1}},       {{-5, 1}, {1, 10}},       {{9, 1}, {10, 1}},
      {{1, 1}, {1, 1}},         {{2, 1}, {1, 1}},         {{509, 1000}, {777, 1000}}};
  for (const MediaTimeRange& range : ranges) {
    const auto reader = asset_->reader(range);
    ASSERT_TRUE(reader) << range.begin.seconds();
    EXPECT_EQ(framesOf(*reader), between(range))
        << range.begin.seconds() << " to " << range.end.seconds();
  }
}

TEST_P(FfmpegReaders, TheGeneratorShowsThePictureOfEveryTime) {
  const auto generator = asset_->generator();
  ASSERT_TRUE(generator);
  const auto first = static_cast<std::int64_t>(std::floor(all_.front().seconds * 1000));
  const auto last = static_cast<std::int64_t>(std::floor(all_.back().seconds * 1000));
  if (first > 0) {
    EXPECT_FALSE(generator->imageAt({first - 1, 1000}));
  }
  // Up in small steps, then here and there.
  std::vector<std::int64_t> times;
  for (std::int64_t time = first + 1; time < last; time += 29) times.push_back(time);
  for (const int share : {7, 2, 9, 5, 5, 1}) times.push_back(first + (last - first) * share / 10);
  for (const std::int64_t time : times) {
    const SeenFrame* expected = nullptr;
    for (const SeenFrame& frame : all_) {
      if (frame.seconds * 1000 <= static_cast<double>(time)) expected = &frame;
    }
    const auto image = generator->imageAt({time, 1000});
    ASSERT_EQ(image.has_value(), expected != nullptr) << time;
    if (expected == nullptr) continue;
    ASSERT_EQ(image->width, expected->width);
    ASSERT_EQ(image->height, expected->height);
    for (std::size_t pixel = 0; pixel < expected->words.size(); pixel += 97) {
      const std::uint8_t* bytes = &image->rgba[pixel * 4];
      const std::uint32_t word =
          0xFF000000U | std::uint32_t{bytes[0]} << 16 | std::uint32_t{bytes[1]} << 8 | bytes[2];
      ASSERT_EQ(word, expected->words[pixel]) << time << ", pixel " << pixel;
      ASSERT_EQ(bytes[3], 0xFF);
    }
  }
  EXPECT_FALSE(generator->imageAt({last + 1000, 1000}));
}

INSTANTIATE_TEST_SUITE_P(All, FfmpegReaders, testing::ValuesIn(kCases),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(FfmpegReader, TimesAreExact) {
  const ClipMaker clips;
  const auto asset = opened(
      clips.encode("clip.mp4", movingTexture(40, 24), std::string(kAlmostExact) + "-g 10 -bf 2"));
  ASSERT_TRUE(asset);
  const auto frames = framesOf(*asset->reader());
  ASSERT_EQ(frames.size(), 40U);
  for (std::size_t index = 0; index < frames.size(); ++index) {
    EXPECT_EQ(frames[index].seconds, static_cast<double>(index) / 24);
  }
}

TEST(FfmpegReader, WhatAnEditListCutsOffIsNotGivenOut) {
  const ClipMaker clips;
  clips.encode("whole.mp4", movingTexture(60), std::string(kAlmostExact) + "-g 20 -bf 2");
  // A copy that begins in the middle of a group keeps the pictures that are needed for it.
  clips.run("-ss 1.01 -i %whole.mp4 -c copy %cut.mp4");
  const auto asset = opened(clips.pathOf("cut.mp4"));
  ASSERT_TRUE(asset);
  const auto reader = asset->reader();
  const auto frames = framesOf(*reader);
  EXPECT_FALSE(reader->hasLostPictures()) << "nobody is to see them";
  ASSERT_FALSE(frames.empty());
  EXPECT_GE(frames.front().seconds, 0);
  EXPECT_LT(frames.front().seconds, 1.0 / 30);
  const int first = frameNumberOf(frames.front().words[0]);
  EXPECT_NEAR(first, 31, 1);
  for (std::size_t index = 0; index < frames.size(); ++index) {
    EXPECT_EQ(frameNumberOf(frames[index].words[0]), first + static_cast<int>(index));
  }
  EXPECT_EQ(frameNumberOf(frames.back().words[0]), 59);
  EXPECT_EQ(framesOf(asset->readers(2)), frames);
  const auto part = asset->reader(MediaTimeRange{{3, 10}, {6, 10}});
  ASSERT_TRUE(part);
  for (const SeenFrame& frame : framesOf(*part)) {
    EXPECT_GE(frame.seconds, 0.3);
    EXPECT_LT(frame.seconds, 0.6);
    EXPECT_NE(std::find(frames.begin(), frames.end(), frame), frames.end());
  }
}

TEST(FfmpegReader, Av1KeepsToItsEditListAsWell) {
  const ClipMaker clips;
  clips.encode("whole.mp4", movingTexture(40), "-c:v libsvtav1 -preset 12 -g 20");
  clips.run("-ss 1.01 -i %whole.mp4 -c copy %cut.mp4");
  const auto asset = opened(clips.pathOf("cut.mp4"));
  ASSERT_TRUE(asset);
  const auto reader = asset->reader();
  const auto frames = framesOf(*reader);
  EXPECT_FALSE(reader->hasLostPictures());
  ASSERT_FALSE(frames.empty());
  EXPECT_LE(frames.size(), 10U);
  EXPECT_GE(frames.front().seconds, 0);
}

// One edit of the first half second is made two of the same.
TEST(FfmpegReader, AnEditListThatShowsAPartTwiceGivesOneReader) {
  const ClipMaker clips;
  const std::string path =
      clips.encode("whole.mp4", movingTexture(60), std::string(kAlmostExact) + "-g 10 -bf 0");
  const std::string twice = clips.changed(path, "twice.mp4", [](std::string& bytes) {
    const std::size_t list = bytes.rfind("elst");
    ASSERT_NE(list, std::string::npos);
    // A second entry takes the room of what lies behind: the list grows into a box of its own.
    const std::string entry("\0\0\1\xF4\0\0\0\0\0\1\0\0", 12);
    std::string edits = std::string(
                            "\0\0\0\x28"
                            "elst\0\0\0\0\0\0\0\2",
                            16) +
                        entry + entry;
    const std::size_t edts = bytes.rfind("edts") - 4;
    const std::size_t oldSize = static_cast<unsigned char>(bytes[edts + 3]);
    bytes.replace(edts, oldSize,
                  std::string("\0\0\0\x30"
                              "edts",
                              8) +
                      edits);
    const auto grow = [&](const char* type) {
      const std::size_t at = bytes.rfind(type) - 4;
      auto size = static_cast<unsigned int>(static_cast<unsigned char>(bytes[at + 2]) << 8 |
                                            static_cast<unsigned char>(bytes[at + 3]));
      size += static_cast<unsigned int>(0x30 - oldSize);
      bytes[at + 2] = static_cast<char>(size >> 8);
      bytes[at + 3] = static_cast<char>(size);
    };
    grow("trak");
    grow("moov");
  });
  const auto asset = opened(twice);
  ASSERT_TRUE(asset);
  const auto reader = asset->reader();
  const auto frames = framesOf(*reader);
  EXPECT_FALSE(reader->hasLostPictures());
  ASSERT_EQ(frames.size(), 30U);
  for (std::size_t index = 0; index < 30; ++index) {
    EXPECT_EQ(frameNumberOf(frames[index].words[0]), static_cast<int>(index % 15));
    EXPECT_EQ(frames[index].seconds, static_cast<double>(index) / 30);
  }
  EXPECT_EQ(asset->readers(3).size(), 1U);
  EXPECT_EQ(framesOf(asset->readers(3)), frames);
  const auto late = asset->reader(MediaTimeRange{{2, 3}, {5, 6}});
  ASSERT_TRUE(late);
  EXPECT_EQ(framesOf(*late), std::vector<SeenFrame>(frames.begin() + 20, frames.begin() + 25));
}

TEST(FfmpegReader, TimescalesThatMeanNothingGiveNothing) {
  const ClipMaker clips;
  const auto asset = opened(clips.encode("clip.mp4", movingTexture(5), kAlmostExact));
  ASSERT_TRUE(asset);
  EXPECT_FALSE(asset->reader(MediaTimeRange{{0, 0}, {1, 1}}));
  EXPECT_FALSE(asset->reader(MediaTimeRange{{0, 1}, {1, -1}}));
  const auto generator = asset->generator();
  EXPECT_FALSE(generator->imageAt({0, 0}));
  EXPECT_FALSE(generator->imageAt({0, -30}));
  EXPECT_TRUE(generator->imageAt({0, 30}));
}

TEST(FfmpegReader, FewerThanOneReaderIsOne) {
  const ClipMaker clips;
  const auto asset = opened(clips.encode("clip.mp4", movingTexture(5), kAlmostExact));
  ASSERT_TRUE(asset);
  for (const int most : {-3, 0, 1}) EXPECT_EQ(framesOf(asset->readers(most)).size(), 5U);
}

TEST(FfmpegReader, FramesOutliveTheirReaderAndTheAsset) {
  const ClipMaker clips;
  auto asset = opened(clips.encode("clip.mp4", movingTexture(5), kAlmostExact));
  ASSERT_TRUE(asset);
  auto reader = asset->reader();
  std::vector<std::unique_ptr<VideoFrame>> frames;
  while (auto frame = reader->next()) frames.push_back(std::move(frame));
  reader.reset();
  asset.reset();
  ASSERT_EQ(frames.size(), 5U);
  for (std::size_t index = 0; index < frames.size(); ++index) {
    EXPECT_EQ(frameNumberOf(seen(*frames[index]).words[0]), static_cast<int>(index));
  }
}

}  // namespace
}  // namespace halvora
