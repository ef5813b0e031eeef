// SPDX-License-Identifier: Apache-2.0
#include "light/bitmap.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace halvora {
namespace {

enum class Fault { none, colourSpace, memory, context };

/// Counts the steps, and fails at one of them.
class FaultySystem final : public BitmapSystem {
 public:
  explicit FaultySystem(Fault fault) : fault_(fault) {}
  bool makeDeviceRGBColourSpace() override {
    steps += "s";
    return fault_ != Fault::colourSpace;
  }
  std::unique_ptr<std::uint8_t[]> allocate(std::size_t bytes) override {
    steps += "a";
    allocated = bytes;
    return fault_ == Fault::memory ? nullptr : BitmapSystem::allocate(bytes);
  }
  bool makeContext(std::uint32_t width, std::uint32_t height) override {
    steps += "c";
    return fault_ != Fault::context && BitmapSystem::makeContext(width, height);
  }

  std::string steps;
  std::size_t allocated = 0;

 private:
  Fault fault_;
};

struct Made {
  std::optional<BitmapContext> context;
  std::string errorText;
};

Made make(const Image& image, BitmapSystem& system) {
  testing::internal::CaptureStderr();
  Made made{createARGBBitmapContextFromImage(image, system), {}};
  made.errorText = testing::internal::GetCapturedStderr();
  return made;
}

Image imageOf(std::uint32_t width, std::uint32_t height, std::vector<std::uint8_t> rgba) {
  return {width, height, std::move(rgba)};
}

std::vector<std::uint8_t> bytesOf(const BitmapContext& context) {
  return {context.data.get(), context.data.get() + context.bytesPerRow * context.height};
}

std::vector<std::uint8_t> drawn(const Image& image) {
  std::optional<BitmapContext> context = createARGBBitmapContextFromImage(image);
  if (!context) return {};
  for (std::uint32_t row = 0; row < image.height; ++row) drawRow(image, row, *context);
  return bytesOf(*context);
}

TEST(Bitmap, OfOnePixelHasFourBytes) {
  FaultySystem system(Fault::none);
  const Made made = make(imageOf(1, 1, {10, 20, 30, 255}), system);
  ASSERT_TRUE(made.context);
  EXPECT_EQ(system.allocated, 4U);
  EXPECT_EQ(made.context->bytesPerRow, 4U);
  EXPECT_EQ(made.context->width, 1U);
  EXPECT_EQ(made.context->height, 1U);
  EXPECT_EQ(made.errorText, "");
  EXPECT_EQ(system.steps, "sac") << "each asked once, in this order";
}

TEST(Bitmap, HasFourBytesAPixelAndNoPadding) {
  FaultySystem system(Fault::none);
  const Made made = make(imageOf(3, 5, std::vector<std::uint8_t>(60)), system);
  ASSERT_TRUE(made.context);
  EXPECT_EQ(system.allocated, 60U);
  EXPECT_EQ(made.context->bytesPerRow, 12U);
}

TEST(Bitmap, IsEmptyUntilSomethingIsDrawn) {
  const auto context =
      createARGBBitmapContextFromImage(imageOf(2, 1, {255, 255, 255, 255, 255, 255, 255, 255}));
  ASSERT_TRUE(context);
  EXPECT_EQ(bytesOf(*context), std::vector<std::uint8_t>(8, 0));
}

TEST(Bitmap, PixelsAreAlphaRedGreenBlueRowByRow) {
  EXPECT_EQ(drawn(imageOf(2, 2, {1, 2, 3, 255, 4, 5, 6, 255, 7, 8, 9, 255, 10, 11, 12, 255})),
            (std::vector<std::uint8_t>{255, 1, 2, 3, 255, 4, 5, 6, 255, 7, 8, 9, 255, 10, 11, 12}));
}

TEST(Bitmap, ColoursArePremultiplied) {
  // 200 × 128 ÷ 255 = 100.39; 1 × 128 ÷ 255 = 0.502; 1 × 127 ÷ 255 = 0.498.
  EXPECT_EQ(drawn(imageOf(3, 1, {255, 200, 1, 128, 1, 255, 0, 127, 255, 128, 1, 0})),
            (std::vector<std::uint8_t>{128, 128, 100, 1, 127, 0, 127, 0, 0, 0, 0, 0}));
}

TEST(Bitmap, EveryPremultipliedLevelIsTheNearest) {
  for (unsigned alpha = 0; alpha <= 255; ++alpha) {
    for (unsigned level = 0; level <= 255; ++level) {
      const auto byte = static_cast<std::uint8_t>(level);
      const auto bytes = drawn(imageOf(1, 1, {byte, 0, 0, static_cast<std::uint8_t>(alpha)}));
      ASSERT_EQ(bytes.size(), 4U);
      // Twice the error is at most one level: |2 × 255 × shown − 2 × level × alpha| ≤ 255.
      const int error = 2 * 255 * bytes[1] - 2 * static_cast<int>(level * alpha);
      ASSERT_TRUE(error <= 255 && error >= -255) << level << " of " << alpha;
    }
  }
}

TEST(Bitmap, ARowIsDrawnAlone) {
  const Image image = imageOf(1, 3, {1, 2, 3, 255, 4, 5, 6, 255, 7, 8, 9, 255});
  std::optional<BitmapContext> context = createARGBBitmapContextFromImage(image);
  ASSERT_TRUE(context);
  for (const std::int64_t row : {std::int64_t{-1}, std::int64_t{3}, INT64_MAX, INT64_MIN}) {
    drawRow(image, row, *context);
  }
  drawRow(image, 1, *context);
  EXPECT_EQ(bytesOf(*context), (std::vector<std::uint8_t>{0, 0, 0, 0, 255, 4, 5, 6, 0, 0, 0, 0}));
}

TEST(DrawnPixel, IsWhatItsRowDraws) {
  const Image image = imageOf(3, 2, {255, 255, 255, 255, 255, 200, 1, 128, 1,  255, 0,  127,
                                     255, 255, 255, 254, 7,   8,   9, 255, 10, 11,  12, 0});
  std::optional<BitmapContext> context = createARGBBitmapContextFromImage(image);
  ASSERT_TRUE(context);
  for (std::int64_t row = 0; row < 2; ++row) {
    drawRow(image, row, *context);
    for (std::int64_t column = 0; column < 3; ++column) {
      const std::uint8_t* expected = context->pixelAt(column, row);
      const auto pixel = drawnPixel(image, column, row);
      ASSERT_TRUE(pixel);
      EXPECT_TRUE(std::equal(pixel->begin(), pixel->end(), expected)) << column << " " << row;
    }
  }
}

TEST(DrawnPixel, OutsideIsNone) {
  const Image image = imageOf(2, 3, std::vector<std::uint8_t>(24, 255));
  for (const auto& [column, row] : std::vector<std::pair<std::int64_t, std::int64_t>>{
           {-1, 0}, {0, -1}, {2, 0}, {0, 3}, {INT64_MAX, 0}, {0, INT64_MIN}, {1LL << 32, 0}}) {
    EXPECT_EQ(drawnPixel(image, column, row), std::nullopt) << column << " " << row;
  }
  EXPECT_EQ(drawnPixel({}, 0, 0), std::nullopt);
}

TEST(Bitmap, PixelsOutsideAreNone) {
  const Image image = imageOf(2, 3, std::vector<std::uint8_t>(24, 255));
  const auto context = createARGBBitmapContextFromImage(image);
  ASSERT_TRUE(context);
  EXPECT_EQ(context->pixelAt(0, 0), context->data.get());
  EXPECT_EQ(context->pixelAt(1, 0), context->data.get() + 4);
  EXPECT_EQ(context->pixelAt(1, 2), context->data.get() + 20);
  for (const auto& [column, row] : std::vector<std::pair<std::int64_t, std::int64_t>>{
           {-1, 0}, {0, -1}, {2, 0}, {0, 3}, {INT64_MAX, 0}, {0, INT64_MIN}, {1LL << 32, 0}}) {
    EXPECT_EQ(context->pixelAt(column, row), nullptr) << column << " " << row;
  }
}

TEST(BitmapFailure, WithoutAColourSpaceSaysSoOnALine) {
  FaultySystem system(Fault::colourSpace);
  const Made made = make(imageOf(1, 1, {0, 0, 0, 255}), system);
  EXPECT_FALSE(made.context);
  EXPECT_EQ(made.errorText, "Error allocating color space\n");
  EXPECT_EQ(system.steps, "s");
}

TEST(BitmapFailure, WithoutMemorySaysSoWithoutALineEnd) {
  FaultySystem system(Fault::memory);
  const Made made = make(imageOf(1, 1, {0, 0, 0, 255}), system);
  EXPECT_FALSE(made.context);
  EXPECT_EQ(made.errorText, "Memory not allocated!");
  EXPECT_EQ(system.steps, "sa");
}

TEST(BitmapFailure, WithoutAContextSaysSoWithoutALineEnd) {
  FaultySystem system(Fault::context);
  const Made made = make(imageOf(1, 1, {0, 0, 0, 255}), system);
  EXPECT_FALSE(made.context);
  EXPECT_EQ(made.errorText, "Context not created!");
  EXPECT_EQ(system.steps, "sac");
}

TEST(BitmapFailure, EmptyImageHasNoContext) {
  for (const Image& image : {imageOf(0, 0, {}), imageOf(0, 5, {}), imageOf(5, 0, {})}) {
    BitmapSystem system;
    const Made made = make(image, system);
    EXPECT_FALSE(made.context);
    EXPECT_EQ(made.errorText, "Context not created!");
  }
}

}  // namespace
}  // namespace halvora
