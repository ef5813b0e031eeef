// SPDX-License-Identifier: Apache-2.0
#include "venue/plan/plan_canvas.h"

#include <cmath>
#include <string>

#include <gtest/gtest.h>

#include "tests/venue/plan/picture_probe.h"

namespace halvora {
namespace {

constexpr Rgb kWhitePixel = {255, 255, 255};
constexpr Rgb kBlackPixel = {0, 0, 0};

/// The light in a picture on black, in white pixels.
double lightOf(const Image& image) {
  double light = 0;
  for (std::uint32_t y = 0; y < image.height; ++y) {
    for (std::uint32_t x = 0; x < image.width; ++x) light += pixelOf(image, x, y)[0] / 255.0;
  }
  return light;
}

Image written(std::string_view text) {
  PlanCanvas canvas(400, 40, kBlack);
  canvas.text({10, 10}, 18, text, kWhite, kBlack);
  return canvas.finish();
}

TEST(PlanCanvas, BeginsWithItsBackground) {
  const Image image = PlanCanvas(3, 2, colourOfBytes(1, 2, 3)).finish();
  EXPECT_EQ(image.rgba.size(), 24U);
  EXPECT_EQ(pixelsOf(image, {1, 2, 3}), 6U);
  EXPECT_EQ(image.rgba[3], 255);
}

TEST(PlanCanvas, ADiscCoversItsArea) {
  PlanCanvas canvas(60, 60, kBlack);
  canvas.disc({30, 30}, 20, kWhite);
  const Image image = canvas.finish();
  EXPECT_EQ(pixelOf(image, 30, 30), kWhitePixel);
  EXPECT_EQ(pixelOf(image, 30, 12), kWhitePixel);
  EXPECT_EQ(pixelOf(image, 30, 8), kBlackPixel);
  EXPECT_EQ(pixelOf(image, 14, 14), kBlackPixel) << "a disc has no corners";
  EXPECT_NEAR(lightOf(image), 3.14159 * 20 * 20, 8);
}

TEST(PlanCanvas, ALineHasRoundEnds) {
  PlanCanvas canvas(60, 40, kBlack);
  canvas.line({15, 20}, {45, 20}, 6, kWhite);
  const Image image = canvas.finish();
  EXPECT_EQ(pixelOf(image, 10, 20), kWhitePixel);
  EXPECT_EQ(pixelOf(image, 49, 20), kWhitePixel);
  EXPECT_EQ(pixelOf(image, 10, 14), kBlackPixel);
  EXPECT_NEAR(lightOf(image), 30 * 12 + 3.14159 * 36, 6);
}

TEST(PlanCanvas, WhatLiesOutsideOfThePictureIsLeftOut) {
  PlanCanvas canvas(20, 20, kBlack);
  canvas.disc({0, 0}, 5, kWhite);
  canvas.disc({20, 20}, 5, kWhite);
  canvas.disc({-50, 10}, 5, kWhite);
  canvas.line({-1e12, 10}, {1e12, 10}, 1, kWhite);
  const Image image = canvas.finish();
  EXPECT_EQ(pixelOf(image, 0, 0), kWhitePixel);
  EXPECT_EQ(pixelOf(image, 19, 19), kWhitePixel);
  EXPECT_EQ(pixelOf(image, 0, 10), kWhitePixel);
  EXPECT_EQ(pixelOf(image, 0, 15), kBlackPixel);
}

TEST(PlanCanvas, TextIsAsWideAsItSays) {
  const Image image = written("HOH");
  const double width = PlanCanvas::textWidth("HOH", 18);
  EXPECT_DOUBLE_EQ(width, 2 * 6.5 * 3 + 4 * 3);
  std::uint32_t right = 0;
  for (std::uint32_t x = 0; x < image.width; ++x) {
    if (pixelOf(image, x, 19)[0] > 128) right = x;
  }
  EXPECT_NEAR(right, 10 + width, 2);
  EXPECT_EQ(PlanCanvas::textWidth("", 18), 0);
}

TEST(PlanCanvas, EveryLetterDigitAndSignHasALookOfItsOwn) {
  const std::string characters = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-+.,:/()#&'";
  std::vector<std::vector<std::uint8_t>> looks;
  for (const char character : characters) {
    looks.push_back(written({&character, 1}).rgba);
    EXPECT_NE(looks.back(), written("\xE2\x82\xAC").rgba) << character << " is the empty box";
    EXPECT_NE(looks.back(), written(" ").rgba) << character << " is blank";
  }
  for (std::size_t left = 0; left < looks.size(); ++left) {
    for (std::size_t right = 0; right < left; ++right) {
      EXPECT_NE(looks[left], looks[right]) << characters[left] << characters[right];
    }
  }
}

TEST(PlanCanvas, SmallLettersAndMarksAreCapitals) {
  EXPECT_EQ(written("Gare d'Orsay").rgba, written("GARE D'ORSAY").rgba);
  EXPECT_EQ(written("\u00DCber \u00E9t\u00C9").rgba, written("UBER ETE").rgba);
}

TEST(PlanCanvas, WhatTheFontLacksIsOneBoxACharacter) {
  EXPECT_EQ(PlanCanvas::textWidth("\u4E2D\u6587", 6), PlanCanvas::textWidth("AB", 6));
  EXPECT_EQ(written("\u4E2D").rgba, written("\u20AC").rgba);
  EXPECT_EQ(written("\xFF").rgba, written("\u20AC").rgba);
  EXPECT_EQ(written("\xC3").rgba, written("\u20AC").rgba) << "cut in the middle";
}

TEST(PlanCanvas, ARimSetsTextOff) {
  PlanCanvas canvas(100, 40, kWhite);
  canvas.text({20, 10}, 18, "I", kWhite, kBlack);
  const Image image = canvas.finish();
  EXPECT_EQ(pixelOf(image, 26, 19), kWhitePixel);
  EXPECT_EQ(pixelOf(image, 28, 19), kBlackPixel);
  EXPECT_EQ(pixelOf(image, 36, 19), kWhitePixel);
}

}  // namespace
}  // namespace halvora
