// SPDX-License-Identifier: Apache-2.0
#include "adapters/standard/pixel_layout.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/ffmpeg/decoded_frame.h"
#include "tests/adapters/ffmpeg/colour_reference.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace halvora {
namespace {

struct NamedMatrix {
  ColourMatrix matrix;
  AVColorSpace space;
  double kr;
  double kb;
};

constexpr NamedMatrix kMatrices[] = {
    {kBt709, AVCOL_SPC_BT709, 0.2126, 0.0722}, {kBt601, AVCOL_SPC_SMPTE170M, 0.299, 0.114},
    {kBt601, AVCOL_SPC_BT470BG, 0.299, 0.114}, {kSmpte240, AVCOL_SPC_SMPTE240M, 0.212, 0.087},
    {kFcc, AVCOL_SPC_FCC, 0.30, 0.11},         {kBt2020, AVCOL_SPC_BT2020_NCL, 0.2627, 0.0593}};

// Every `step`-th number of so many bits, and the last ones.
std::vector<int> numbers(int depth, int step) {
  std::vector<int> all;
  const int most = (1 << depth) - 1;
  for (int number = 0; number < most; number += step) all.push_back(number);
  all.push_back(most);
  return all;
}

// One row of pixels of 16-bit samples, or of bytes, converted by the layout.
template <class Number>
std::vector<std::uint32_t> converted(const ColourMatrix& matrix, bool isFull, int depth, int y,
                                     int u, const std::vector<int>& reds) {
  const std::vector<Number> luma(reds.size(), static_cast<Number>(y));
  const std::vector<Number> blue(reds.size(), static_cast<Number>(u));
  std::vector<Number> red;
  for (const int number : reds) red.push_back(static_cast<Number>(number));
  PixelLayout layout;
  layout.isWide = sizeof(Number) > 1;
  layout.colours = yuvWeights(matrix, isFull, depth);
  const std::array<const std::vector<Number>*, 3> rows = {&luma, &blue, &red};
  for (std::size_t at = 0; at < 3; ++at) {
    ComponentPlace& place = layout.components[at];
    place.first = reinterpret_cast<const std::uint8_t*>(rows[at]->data());
    place.step = sizeof(Number);
    place.highByte = sizeof(Number) > 1 ? 1 : 0;
    place.depth = depth;
  }
  std::vector<PixelPosition> positions;
  for (std::uint32_t x = 0; x < reds.size(); ++x) positions.push_back({x, 0});
  std::vector<std::uint32_t> words(reds.size());
  samplePixels(layout, positions, words);
  return words;
}

template <class Number>
int mostApart(const NamedMatrix& named, bool isFull, int depth, int step) {
  const ReferenceColours colours{named.kr, named.kb, isFull, depth};
  const std::vector<int> grid = numbers(depth, step);
  int most = 0;
  for (const int y : grid) {
    for (const int u : grid) {
      const auto words = converted<Number>(named.matrix, isFull, depth, y, u, grid);
      for (std::size_t at = 0; at < grid.size(); ++at) {
        most = std::max(most, levelsApart(words[at], referenceYuv(colours, y, u, grid[at])));
      }
    }
  }
  return most;
}

TEST(FfmpegColour, EightBitsAreOneLevelOffAtMost) {
  for (const NamedMatrix& named : kMatrices) {
    SCOPED_TRACE(av_color_space_name(named.space));
    EXPECT_LE(mostApart<std::uint8_t>(named, false, 8, 5), 1);
    EXPECT_LE(mostApart<std::uint8_t>(named, true, 8, 5), 1);
  }
}

TEST(FfmpegColour, EveryNumberOfEightBitsOnTheMostUsualMatrix) {
  int most = 0;
  const std::vector<int> all = numbers(8, 1);
  const ReferenceColours colours{0.2126, 0.0722, false, 8};
  for (const int y : all) {
    for (int u = 0; u < 256; u += 3) {
      const auto words = converted<std::uint8_t>(kBt709, false, 8, y, u, all);
      for (std::size_t v = 0; v < all.size(); ++v) {
        most = std::max(most, levelsApart(words[v], referenceYuv(colours, y, u, all[v])));
      }
    }
  }
  EXPECT_LE(most, 1);
}

TEST(FfmpegColour, DeeperNumbersAreOneLevelOffAtMost) {
  for (const int depth : {9, 10, 12, 14, 16}) {
    SCOPED_TRACE(depth);
    const int step = (1 << depth) / 37;
    EXPECT_LE(mostApart<std::uint16_t>(kMatrices[0], false, depth, step), 1);
    EXPECT_LE(mostApart<std::uint16_t>(kMatrices[1], true, depth, step), 1);
    EXPECT_LE(mostApart<std::uint16_t>(kMatrices[5], false, depth, step), 1);
  }
}

TEST(FfmpegColour, BlackAndWhiteAreExact) {
  for (const NamedMatrix& named : kMatrices) {
    EXPECT_EQ(converted<std::uint8_t>(named.matrix, false, 8, 16, 128, {128})[0], 0xFF000000U);
    EXPECT_EQ(converted<std::uint8_t>(named.matrix, false, 8, 235, 128, {128})[0], 0xFFFFFFFFU);
    EXPECT_EQ(converted<std::uint8_t>(named.matrix, true, 8, 0, 128, {128})[0], 0xFF000000U);
    EXPECT_EQ(converted<std::uint8_t>(named.matrix, true, 8, 255, 128, {128})[0], 0xFFFFFFFFU);
  }
}

// Numbers of a picture's component, different from pixel to pixel.
int numberAt(int component, int x, int y, int depth) {
  const unsigned int mixed = static_cast<unsigned int>(x) * 2654435761U +
                             static_cast<unsigned int>(y) * 40503U +
                             static_cast<unsigned int>(component) * 97U;
  return static_cast<int>((mixed >> 7) & ((1U << depth) - 1));
}

// A picture whose numbers the library itself has put in their places.
LibavPointer<AVFrame> pictureOf(AVPixelFormat format, int width, int height) {
  LibavPointer<AVFrame> frame(av_frame_alloc());
  frame->format = format;
  frame->width = width;
  frame->height = height;
  if (av_frame_get_buffer(frame.get(), 0) < 0) return nullptr;
  const AVPixFmtDescriptor* description = av_pix_fmt_desc_get(format);
  for (std::size_t plane = 0; plane < 4 && frame->buf[plane] != nullptr; ++plane) {
    std::fill_n(frame->buf[plane]->data, frame->buf[plane]->size, std::uint8_t{0});
  }
  for (int component = 0; component < description->nb_components; ++component) {
    const bool isShared = component == 1 || component == 2;
    const int across = isShared ? AV_CEIL_RSHIFT(width, description->log2_chroma_w) : width;
    const int down = isShared ? AV_CEIL_RSHIFT(height, description->log2_chroma_h) : height;
    for (int y = 0; y < down; ++y) {
      std::vector<std::uint16_t> row;
      for (int x = 0; x < across; ++x) {
        const int depth = description->comp[component].depth;
        row.push_back(static_cast<std::uint16_t>(numberAt(component, x, y, depth)));
      }
      const std::array<int, 4> lines = {frame->linesize[0], frame->linesize[1], frame->linesize[2],
                                        frame->linesize[3]};
      av_write_image_line(row.data(), frame->data, lines.data(), description, 0, y, component,
                          across);
    }
  }
  return frame;
}

std::uint32_t expectedWord(const AVPixFmtDescriptor& format, int x, int y) {
  const bool hasAlpha = (format.flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
  const int colours = format.nb_components - (hasAlpha ? 1 : 0);
  const auto number = [&](int component, bool isShared) {
    const int column = isShared ? x >> format.log2_chroma_w : x;
    const int row = isShared ? y >> format.log2_chroma_h : y;
    return numberAt(component, column, row, format.comp[component].depth);
  };
  const auto share = [&](int component) {
    return number(component, false) / (std::pow(2.0, format.comp[component].depth) - 1);
  };
  std::uint32_t word = 0;
  if ((format.flags & AV_PIX_FMT_FLAG_RGB) != 0) {
    word =
        referenceWord(referenceLevel(share(0)), referenceLevel(share(1)), referenceLevel(share(2)));
  } else {
    const int depth = format.comp[0].depth;
    const int none = 1 << (depth - 1);
    word = referenceYuv({0.2126, 0.0722, false, depth}, number(0, false),
                        colours < 3 ? none : number(1, true), colours < 3 ? none : number(2, true));
  }
  const int alpha = hasAlpha ? referenceLevel(share(colours)) : 255;
  return (word & 0xFFFFFFU) | static_cast<std::uint32_t>(alpha) << 24;
}

class FfmpegFormats : public testing::TestWithParam<const char*> {};

TEST_P(FfmpegFormats, EveryPixelIsFound) {
  constexpr int kWidth = 37;
  constexpr int kHeight = 23;
  const AVPixelFormat format = av_get_pix_fmt(GetParam());
  LibavPointer<AVFrame> frame = pictureOf(format, kWidth, kHeight);
  ASSERT_TRUE(frame);
  frame->colorspace = AVCOL_SPC_BT709;
  const auto picture = DecodedFrame::of(std::move(frame), {1, 30});
  ASSERT_TRUE(picture);
  std::vector<PixelPosition> positions;
  for (std::uint32_t y = 0; y < kHeight; ++y) {
    for (std::uint32_t x = 0; x < kWidth; ++x) positions.push_back({x, y});
  }
  std::vector<std::uint32_t> words(positions.size());
  picture->sample(positions, words);
  for (std::size_t at = 0; at < words.size(); ++at) {
    const std::uint32_t expected =
        expectedWord(*av_pix_fmt_desc_get(format), static_cast<int>(positions[at].x),
                     static_cast<int>(positions[at].y));
    ASSERT_LE(levelsApart(words[at], expected), 1) << positions[at].x << ", " << positions[at].y;
  }
}

INSTANTIATE_TEST_SUITE_P(All, FfmpegFormats,
                         testing::Values("yuv420p", "yuv422p", "yuv444p", "yuv411p", "yuv410p",
                                         "yuv440p", "nv12", "nv21", "yuyv422", "uyvy422", "yvyu422",
                                         "p010le", "p016le", "yuv420p9le", "yuv420p10le",
                                         "yuv422p10le", "yuv444p12le", "yuv444p16le", "yuv422p10be",
                                         "y210le", "yuva420p", "yuva444p10le", "gray", "gray10le",
                                         "gray12le", "ya8", "rgb24", "bgr24", "rgba", "argb",
                                         "abgr", "bgra", "0rgb", "bgr0", "rgb48le", "rgb48be",
                                         "rgba64le", "rgb565le", "rgb555le", "bgr444le", "gbrp",
                                         "gbrp10le", "gbrap", "x2rgb10le"),
                         [](const auto& test) { return std::string(test.param); });

TEST(FfmpegColour, APaletteIsLookedUp) {
  LibavPointer<AVFrame> frame(av_frame_alloc());
  frame->format = AV_PIX_FMT_PAL8;
  frame->width = 4;
  frame->height = 1;
  ASSERT_GE(av_frame_get_buffer(frame.get(), 0), 0);
  auto* palette = reinterpret_cast<std::uint32_t*>(frame->data[1]);
  for (std::uint32_t entry = 0; entry < 256; ++entry) palette[entry] = 0xFF000000U + entry * 3;
  for (std::uint8_t x = 0; x < 4; ++x) frame->data[0][x] = static_cast<std::uint8_t>(85 * x);
  const auto picture = DecodedFrame::of(std::move(frame), {1, 30});
  ASSERT_TRUE(picture);
  const std::array<PixelPosition, 4> positions = {{{0, 0}, {1, 0}, {2, 0}, {3, 0}}};
  std::array<std::uint32_t, 4> words = {};
  picture->sample(positions, words);
  EXPECT_EQ(words, (std::array<std::uint32_t, 4>{0xFF000000, 0xFF0000FF, 0xFF0001FE, 0xFF0002FD}));
}

TEST(FfmpegColour, WhatHasNoReadableColoursIsRefused) {
  for (const char* name : {"monow", "bayer_rggb8", "xyz12le", "gbrpf32le", "uyyvyy411"}) {
    LibavPointer<AVFrame> frame(av_frame_alloc());
    frame->format = av_get_pix_fmt(name);
    frame->width = 16;
    frame->height = 16;
    ASSERT_GE(av_frame_get_buffer(frame.get(), 0), 0) << name;
    EXPECT_FALSE(DecodedFrame::of(std::move(frame), {1, 30})) << name;
  }
}

struct Tags {
  AVPixelFormat format = AV_PIX_FMT_YUV420P;
  int height = 16;
  AVColorSpace space = AVCOL_SPC_UNSPECIFIED;
  AVColorRange range = AVCOL_RANGE_UNSPECIFIED;
};

// A picture of one colour that comes out differently by every rule.
std::uint32_t wordOf(const Tags& tags) {
  LibavPointer<AVFrame> frame(av_frame_alloc());
  frame->format = tags.format;
  frame->width = 16;
  frame->height = tags.height;
  frame->colorspace = tags.space;
  frame->color_range = tags.range;
  if (av_frame_get_buffer(frame.get(), 0) < 0) return 0;
  constexpr std::array<std::uint8_t, 3> kNumbers = {100, 90, 160};
  for (std::size_t plane = 0; plane < 3; ++plane) frame->data[plane][0] = kNumbers[plane];
  const auto picture = DecodedFrame::of(std::move(frame), {1, 30});
  const std::array<PixelPosition, 1> position = {{{0, 0}}};
  std::array<std::uint32_t, 1> word = {};
  picture->sample(position, word);
  return word[0];
}

std::uint32_t expectedFor(double kr, double kb, bool isFull) {
  return referenceYuv({kr, kb, isFull, 8}, 100, 90, 160);
}

TEST(FfmpegColour, TheTagChoosesTheMatrix) {
  for (const NamedMatrix& named : kMatrices) {
    const std::uint32_t word = wordOf({.space = named.space});
    EXPECT_LE(levelsApart(word, expectedFor(named.kr, named.kb, false)), 1)
        << av_color_space_name(named.space);
  }
}

TEST(FfmpegColour, WithoutATagTheHeightDoes) {
  EXPECT_EQ(wordOf({.height = 576}), wordOf({.height = 576, .space = AVCOL_SPC_SMPTE170M}));
  EXPECT_EQ(wordOf({.height = 577}), wordOf({.height = 577, .space = AVCOL_SPC_BT709}));
  EXPECT_NE(wordOf({.height = 576}), wordOf({.height = 577}));
  EXPECT_EQ(wordOf({.height = 577, .space = AVCOL_SPC_YCGCO}), wordOf({.height = 577}));
}

TEST(FfmpegColour, TheRangeComesFromTheTagOrTheFormat) {
  const std::uint32_t full = expectedFor(0.299, 0.114, true);
  const std::uint32_t limited = expectedFor(0.299, 0.114, false);
  ASSERT_GT(levelsApart(full, limited), 2);
  EXPECT_LE(levelsApart(wordOf({.range = AVCOL_RANGE_JPEG}), full), 1);
  EXPECT_LE(levelsApart(wordOf({.range = AVCOL_RANGE_MPEG}), limited), 1);
  EXPECT_LE(levelsApart(wordOf({}), limited), 1);
  EXPECT_LE(levelsApart(wordOf({.format = AV_PIX_FMT_YUVJ420P}), full), 1);
}

}  // namespace
}  // namespace halvora
