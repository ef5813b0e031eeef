// SPDX-License-Identifier: Apache-2.0
#include "adapters/image/png_writer.h"

#include <gtest/gtest.h>

#include "adapters/image/picture_decoder.h"

namespace halvora {
namespace {

/// No two neighbours alike, no two channels in step.
Image noise(std::uint32_t width, std::uint32_t height) {
  Image image{width, height, {}};
  std::uint32_t state = 1;
  for (std::size_t at = 0; at < std::size_t{width} * height * 4; ++at) {
    state = state * 1664525 + 1013904223;
    image.rgba.push_back(static_cast<std::uint8_t>(state >> 24));
  }
  return image;
}

void expectReadsBack(const Image& image) {
  const auto back = PictureDecoder().decode(pngOf(image));
  ASSERT_TRUE(back);
  EXPECT_EQ(back->width, image.width);
  EXPECT_EQ(back->height, image.height);
  EXPECT_EQ(back->rgba, image.rgba);
}

TEST(PngWriter, EveryPixelReadsBackAsItWas) {
  expectReadsBack({3, 1, {1, 2, 3, 255, 250, 0, 128, 255, 9, 8, 7, 255}});
  expectReadsBack({1, 2, {200, 100, 50, 128, 10, 20, 30, 0}});
}

TEST(PngWriter, WhatCannotBeCompressedHasRoom) {
  for (const std::uint32_t size : {1U, 2U, 63U, 400U}) {
    SCOPED_TRACE(size);
    expectReadsBack(noise(size, size));
  }
  expectReadsBack(noise(1, 5000));
  expectReadsBack(noise(5000, 1));
}

TEST(PngWriter, APlainPictureIsSmall) {
  const Image image{300, 300, std::vector<std::uint8_t>(std::size_t{300} * 300 * 4, 77)};
  EXPECT_LT(pngOf(image).size(), 5000U);
}

TEST(PngWriter, APictureWithoutPixelsIsNone) {
  EXPECT_EQ(pngOf({}), "");
  EXPECT_EQ(pngOf({0, 5, {}}), "");
  EXPECT_EQ(pngOf({2, 2, {1, 2, 3, 4}}), "");
}

}  // namespace
}  // namespace halvora
