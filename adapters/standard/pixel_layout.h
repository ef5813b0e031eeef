// SPDX-License-Identifier: Apache-2.0
// Where the pixels of a decoded picture lie in memory, and how they become words 0xAARRGGBB. Knows
// no library: a layout is built once a picture, and costs nothing a pixel. The memory belongs to
// whoever built the layout; any thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "halvora/platform/video_asset.h"

namespace halvora {

/// One component of every pixel. A pixel shares the sample of the block that it lies in.
struct ComponentPlace {
  /// Of the picture's first sample.
  const std::uint8_t* first = nullptr;
  /// Bytes from a row, and from a sample, to the next.
  std::ptrdiff_t row = 0;
  std::ptrdiff_t step = 1;
  /// log2 of the pixels that share a sample, across and down.
  int columnShift = 0;
  int rowShift = 0;
  /// Of samples beyond one byte: where the two bytes are, and the bits below the number.
  int lowByte = 0;
  int highByte = 0;
  int shift = 0;
  int depth = 8;
};

enum class ColourKind {
  /// Luma and two colour differences; gray with a weight of zero for these.
  yuv,
  rgb,
  /// Numbers of words.
  palette,
};

/// What makes light of numbers: a row of this for each of red, green and blue is the sum of the
/// weighted components and `bias`, in units of 2^-32.
struct ColourWeights {
  std::array<std::int64_t, 3> weights = {};
  std::int64_t bias = 0;
};

/// How much of green is neither red nor blue follows from the other two.
struct ColourMatrix {
  double red = 0;
  double blue = 0;
};

inline constexpr ColourMatrix kBt709 = {0.2126, 0.0722};
inline constexpr ColourMatrix kBt601 = {0.299, 0.114};
inline constexpr ColourMatrix kSmpte240 = {0.212, 0.087};
inline constexpr ColourMatrix kFcc = {0.30, 0.11};
inline constexpr ColourMatrix kBt2020 = {0.2627, 0.0593};

struct PixelLayout {
  ColourKind kind = ColourKind::yuv;
  /// Whether a sample takes more than one byte.
  bool isWide = false;
  bool hasAlpha = false;
  /// Y, U, V or R, G, B, then alpha.
  std::array<ComponentPlace, 4> components;
  std::array<ColourWeights, 3> colours;
  /// 256 words.
  const std::uint8_t* palette = nullptr;
};

/// For numbers of `depth` bits; limited range leaves room below black and above white.
std::array<ColourWeights, 3> yuvWeights(const ColourMatrix& matrix, bool isFullRange, int depth);
std::array<ColourWeights, 3> grayWeights(bool isFullRange, int depth);
std::array<ColourWeights, 3> rgbWeights(int redDepth, int greenDepth, int blueDepth);

/// The words of those positions, which lie inside of the picture; both spans have one length.
void samplePixels(const PixelLayout& layout, std::span<const PixelPosition> positions,
                  std::span<std::uint32_t> words);

}  // namespace halvora
