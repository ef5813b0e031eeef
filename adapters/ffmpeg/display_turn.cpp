// SPDX-License-Identifier: Apache-2.0
#include "adapters/ffmpeg/display_turn.h"

#include <utility>

namespace halvora {

DisplayTurn DisplayTurn::ofMatrix(std::span<const std::int32_t, 9> matrix) {
  constexpr std::int32_t kOne = 1 << 16;
  const auto isUnit = [](std::int32_t value) { return value == kOne || value == -kOne; };
  // Across and down come out as a*x + c*y and b*x + d*y.
  const std::int32_t a = matrix[0];
  const std::int32_t b = matrix[1];
  const std::int32_t c = matrix[3];
  const std::int32_t d = matrix[4];
  if (b == 0 && c == 0 && isUnit(a) && isUnit(d)) return {false, a < 0, d < 0};
  if (a == 0 && d == 0 && isUnit(b) && isUnit(c)) return {true, b < 0, c < 0};
  return {};
}

Image turnedImage(const VideoFrame& frame, DisplayTurn turn) {
  Image image{frame.width(), frame.height(), {}};
  if (turn.isTransposed) std::swap(image.width, image.height);
  image.rgba.resize(std::size_t{4} * image.width * image.height);
  std::vector<PixelPosition> positions(image.width);
  std::vector<std::uint32_t> words(image.width);
  auto byte = image.rgba.begin();
  for (std::uint32_t row = 0; row < image.height; ++row) {
    for (std::uint32_t column = 0; column < image.width; ++column) {
      PixelPosition from =
          turn.isTransposed ? PixelPosition{row, column} : PixelPosition{column, row};
      if (turn.isXReversed) from.x = frame.width() - 1 - from.x;
      if (turn.isYReversed) from.y = frame.height() - 1 - from.y;
      positions[column] = from;
    }
    frame.sample(positions, words);
    for (const std::uint32_t word : words) {
      *byte++ = static_cast<std::uint8_t>(word >> 16);
      *byte++ = static_cast<std::uint8_t>(word >> 8);
      *byte++ = static_cast<std::uint8_t>(word);
      *byte++ = 0xFF;
    }
  }
  return image;
}

}  // namespace halvora
