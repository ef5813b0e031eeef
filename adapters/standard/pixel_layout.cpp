// SPDX-License-Identifier: Apache-2.0
#include "adapters/standard/pixel_layout.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace halvora {
namespace {

// Enough that 16-bit numbers come out exact to rounding, with room for the sum.
constexpr int kFraction = 32;
constexpr double kOne = 4294967296.0;
constexpr std::uint32_t kOpaque = 0xFF000000U;

double greatest(int depth) { return static_cast<double>((1U << depth) - 1); }

// `zeroes` are the numbers that stand for none of a component.
ColourWeights fixedPoint(const std::array<double, 3>& weights,
                         const std::array<double, 3>& zeroes) {
  ColourWeights fixed;
  double bias = 0.5;
  for (std::size_t at = 0; at < weights.size(); ++at) {
    fixed.weights[at] = std::llround(weights[at] * kOne);
    bias -= weights[at] * zeroes[at];
  }
  fixed.bias = std::llround(bias * kOne);
  return fixed;
}

std::uint32_t level(std::int64_t sum) {
  return static_cast<std::uint32_t>(std::clamp<std::int64_t>(sum >> kFraction, 0, 255));
}

std::uint32_t weighted(const ColourWeights& colour, std::int64_t a, std::int64_t b,
                       std::int64_t c) {
  return level(colour.weights[0] * a + colour.weights[1] * b + colour.weights[2] * c + colour.bias);
}

const std::uint8_t* sampleAt(const ComponentPlace& place, PixelPosition position) {
  return place.first + static_cast<std::ptrdiff_t>(position.y >> place.rowShift) * place.row +
         static_cast<std::ptrdiff_t>(position.x >> place.columnShift) * place.step;
}

struct ByteSample {
  explicit ByteSample(const ComponentPlace& component) : place(component) {}
  std::int64_t at(PixelPosition position) const { return *sampleAt(place, position); }

  ComponentPlace place;
};

struct WideSample {
  explicit WideSample(const ComponentPlace& component)
      : place(component), mask((1U << component.depth) - 1) {}
  std::int64_t at(PixelPosition position) const {
    const std::uint8_t* sample = sampleAt(place, position);
    const std::uint32_t both = sample[place.lowByte] | std::uint32_t{sample[place.highByte]} << 8;
    return both >> place.shift & mask;
  }

  ComponentPlace place;
  std::uint32_t mask;
};

template <class Sample>
void samplesOf(const PixelLayout& layout, std::span<const PixelPosition> positions,
               std::span<std::uint32_t> words) {
  // Copies, as the words that are written might be anything to the compiler.
  const Sample first(layout.components[0]);
  const Sample second(layout.components[1]);
  const Sample third(layout.components[2]);
  const std::array<ColourWeights, 3> colours = layout.colours;
  for (std::size_t at = 0; at < positions.size(); ++at) {
    const PixelPosition position = positions[at];
    const std::int64_t a = first.at(position);
    const std::int64_t b = second.at(position);
    const std::int64_t c = third.at(position);
    words[at] = kOpaque | weighted(colours[0], a, b, c) << 16 | weighted(colours[1], a, b, c) << 8 |
                weighted(colours[2], a, b, c);
  }
}

// Luma and colour differences as bytes in planes of their own.
bool isUsual(const PixelLayout& layout) {
  const auto& [luma, blue, red, alpha] = layout.components;
  return layout.kind == ColourKind::yuv && !layout.isWide && luma.step == 1 && blue.step == 1 &&
         red.step == 1 && luma.columnShift == 0 && luma.rowShift == 0 && blue.row == red.row &&
         blue.columnShift == red.columnShift && blue.rowShift == red.rowShift;
}

// For most videos, and many pixels: as few multiplications as there can be. Only green needs both
// differences.
void wordsOfUsual(const PixelLayout& layout, std::span<const PixelPosition> positions,
                  std::span<std::uint32_t> words) {
  const ComponentPlace luma = layout.components[0];
  const ComponentPlace blueDifference = layout.components[1];
  const std::uint8_t* redDifference = layout.components[2].first;
  const auto [red, green, blue] = layout.colours;
  for (std::size_t at = 0; at < positions.size(); ++at) {
    const auto [x, y] = positions[at];
    const std::ptrdiff_t place =
        (y >> blueDifference.rowShift) * blueDifference.row + (x >> blueDifference.columnShift);
    const std::int64_t light = red.weights[0] * luma.first[y * luma.row + x];
    const std::int64_t u = blueDifference.first[place];
    const std::int64_t v = redDifference[place];
    words[at] = kOpaque | level(light + red.weights[2] * v + red.bias) << 16 |
                level(light + green.weights[1] * u + green.weights[2] * v + green.bias) << 8 |
                level(light + blue.weights[1] * u + blue.bias);
  }
}

void wordsOfPalette(const PixelLayout& layout, std::span<const PixelPosition> positions,
                    std::span<std::uint32_t> words) {
  const ByteSample number(layout.components[0]);
  for (std::size_t at = 0; at < positions.size(); ++at) {
    std::memcpy(&words[at], layout.palette + number.at(positions[at]) * 4, 4);
  }
}

void setAlpha(const ComponentPlace& place, std::span<const PixelPosition> positions,
              std::span<std::uint32_t> words) {
  const WideSample alpha(place);
  const ColourWeights scale = fixedPoint({255 / greatest(place.depth), 0, 0}, {});
  for (std::size_t at = 0; at < positions.size(); ++at) {
    const std::uint32_t opacity = weighted(scale, alpha.at(positions[at]), 0, 0);
    words[at] = (words[at] & ~kOpaque) | opacity << 24;
  }
}

// What one step of luma, and one of a colour difference, are worth in levels.
struct Scale {
  Scale(bool isFullRange, int depth) {
    const double unit = std::ldexp(1, depth - 8);
    luma = isFullRange ? 255 / greatest(depth) : 255 / (219 * unit);
    difference = isFullRange ? 255 / greatest(depth) : 255 / (224 * unit);
    black = isFullRange ? 0 : 16 * unit;
    noDifference = 128 * unit;
  }

  double luma;
  double difference;
  double black;
  double noDifference;
};

}  // namespace

std::array<ColourWeights, 3> yuvWeights(const ColourMatrix& matrix, bool isFullRange, int depth) {
  const Scale scale(isFullRange, depth);
  const double green = 1 - matrix.red - matrix.blue;
  const double red = 2 * (1 - matrix.red) * scale.difference;
  const double blue = 2 * (1 - matrix.blue) * scale.difference;
  const std::array<double, 3> zeroes = {scale.black, scale.noDifference, scale.noDifference};
  return {fixedPoint({scale.luma, 0, red}, zeroes),
          fixedPoint({scale.luma, -blue * matrix.blue / green, -red * matrix.red / green}, zeroes),
          fixedPoint({scale.luma, blue, 0}, zeroes)};
}

std::array<ColourWeights, 3> grayWeights(bool isFullRange, int depth) {
  const Scale scale(isFullRange, depth);
  const ColourWeights gray = fixedPoint({scale.luma, 0, 0}, {scale.black, 0, 0});
  return {gray, gray, gray};
}

std::array<ColourWeights, 3> rgbWeights(int redDepth, int greenDepth, int blueDepth) {
  return {fixedPoint({255 / greatest(redDepth), 0, 0}, {}),
          fixedPoint({0, 255 / greatest(greenDepth), 0}, {}),
          fixedPoint({0, 0, 255 / greatest(blueDepth)}, {})};
}

void samplePixels(const PixelLayout& layout, std::span<const PixelPosition> positions,
                  std::span<std::uint32_t> words) {
  if (layout.kind == ColourKind::palette) {
    wordsOfPalette(layout, positions, words);
  } else if (layout.isWide) {
    samplesOf<WideSample>(layout, positions, words);
  } else if (isUsual(layout)) {
    wordsOfUsual(layout, positions, words);
  } else {
    samplesOf<ByteSample>(layout, positions, words);
  }
  if (layout.hasAlpha) setAlpha(layout.components[3], positions, words);
}

}  // namespace halvora
