// SPDX-License-Identifier: Apache-2.0
// Pictures as plain bytes to read pixels from: 8 bits a channel, premultiplied, alpha first.
// Stateless; any thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "halvora/platform/image.h"

namespace halvora {

/// The steps of making a bitmap that can fail on a phone; each is asked once, in this order. The
/// default ones use the heap.
class BitmapSystem {
 public:
  virtual ~BitmapSystem() = default;
  virtual bool makeDeviceRGBColourSpace() { return true; }
  /// Null when there is no memory.
  virtual std::unique_ptr<std::uint8_t[]> allocate(std::size_t bytes);
  virtual bool makeContext(std::uint32_t width, std::uint32_t height);
};

/// A bitmap and the memory it owns: width × 4 bytes a row; a pixel is alpha, red, green, blue.
struct BitmapContext {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::size_t bytesPerRow = 0;
  std::unique_ptr<std::uint8_t[]> data;

  /// The four bytes of a pixel inside the bitmap; null outside of it.
  const std::uint8_t* pixelAt(std::int64_t column, std::int64_t row) const;
};

/// An empty bitmap of the image's size, or none, with one of three texts on standard error that say
/// what failed.
std::optional<BitmapContext> createARGBBitmapContextFromImage(const Image& image,
                                                              BitmapSystem& system);
std::optional<BitmapContext> createARGBBitmapContextFromImage(const Image& image);

/// Alpha, red, green and blue of one pixel as they are drawn; none outside of the image.
std::optional<std::array<std::uint8_t, 4>> drawnPixel(const Image& image, std::int64_t column,
                                                      std::int64_t row);

/// Draws that row of the image into the bitmap, which has the image's size. Whoever wants one pixel
/// needs no more than its row; a row outside of the image draws nothing.
void drawRow(const Image& image, std::int64_t row, BitmapContext& context);

}  // namespace halvora
