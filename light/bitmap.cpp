// SPDX-License-Identifier: Apache-2.0
#include "light/bitmap.h"

#include <algorithm>
#include <cstdio>
#include <new>
#include <utility>

namespace halvora {

namespace {

constexpr std::size_t kBytesPerPixel = 4;

// Rounded to the nearest level.
std::uint8_t premultiplied(std::uint8_t level, std::uint8_t alpha) {
  return static_cast<std::uint8_t>((level * alpha + 127) / 255);
}

// A pixel of an image as one of a bitmap.
std::array<std::uint8_t, 4> drawn(const std::uint8_t* rgba) {
  const std::uint8_t alpha = rgba[3];
  return {alpha, premultiplied(rgba[0], alpha), premultiplied(rgba[1], alpha),
          premultiplied(rgba[2], alpha)};
}

}  // namespace

std::unique_ptr<std::uint8_t[]> BitmapSystem::allocate(std::size_t bytes) {
  return std::unique_ptr<std::uint8_t[]>(new (std::nothrow) std::uint8_t[bytes]());
}

bool BitmapSystem::makeContext(std::uint32_t width, std::uint32_t height) {
  return width > 0 && height > 0;
}

const std::uint8_t* BitmapContext::pixelAt(std::int64_t column, std::int64_t row) const {
  if (column < 0 || row < 0 || column >= width || row >= height) return nullptr;
  return data.get() + static_cast<std::size_t>(row) * bytesPerRow +
         static_cast<std::size_t>(column) * kBytesPerPixel;
}

std::optional<BitmapContext> createARGBBitmapContextFromImage(const Image& image,
                                                              BitmapSystem& system) {
  if (!system.makeDeviceRGBColourSpace()) {
    std::fputs("Error allocating color space\n", stderr);
    return std::nullopt;
  }
  const std::size_t bytesPerRow = image.width * kBytesPerPixel;
  auto data = system.allocate(bytesPerRow * image.height);
  if (!data) {
    std::fputs("Memory not allocated!", stderr);
    return std::nullopt;
  }
  if (!system.makeContext(image.width, image.height)) {
    std::fputs("Context not created!", stderr);
    return std::nullopt;
  }
  return BitmapContext{image.width, image.height, bytesPerRow, std::move(data)};
}

std::optional<BitmapContext> createARGBBitmapContextFromImage(const Image& image) {
  BitmapSystem system;
  return createARGBBitmapContextFromImage(image, system);
}

std::optional<std::array<std::uint8_t, 4>> drawnPixel(const Image& image, std::int64_t column,
                                                      std::int64_t row) {
  if (column < 0 || row < 0 || column >= image.width || row >= image.height) return std::nullopt;
  const std::size_t at =
      static_cast<std::size_t>(row) * image.width + static_cast<std::size_t>(column);
  return drawn(image.rgba.data() + at * kBytesPerPixel);
}

void drawRow(const Image& image, std::int64_t row, BitmapContext& context) {
  if (row < 0 || row >= image.height) return;
  const std::size_t begin = static_cast<std::size_t>(row) * context.bytesPerRow;
  const std::uint8_t* from = image.rgba.data() + begin;
  std::uint8_t* to = context.data.get() + begin;
  for (std::uint32_t at = 0; at < image.width; ++at, from += kBytesPerPixel, to += kBytesPerPixel) {
    std::ranges::copy(drawn(from), to);
  }
}

}  // namespace halvora
