// SPDX-License-Identifier: Apache-2.0
#include "tests/support/pixmap_decoder.h"

#include <sstream>

namespace halvora {

std::optional<Image> PixmapDecoder::decode(std::string_view bytes) const {
  std::istringstream stream{std::string(bytes)};
  std::string kind;
  Image image;
  int largest = 0;
  stream >> kind >> image.width >> image.height >> largest;
  if (!stream || kind != "P6" || largest != 255 || stream.get() != '\n') return std::nullopt;
  const std::size_t pixels = std::size_t{image.width} * image.height;
  for (std::size_t at = 0; at < pixels; ++at) {
    for (int channel = 0; channel < 3; ++channel) {
      const int level = stream.get();
      if (level < 0) return std::nullopt;
      image.rgba.push_back(static_cast<std::uint8_t>(level));
    }
    image.rgba.push_back(255);
  }
  return image;
}

std::string pixmapOf(int width, int height, std::uint8_t red, std::uint8_t green,
                     std::uint8_t blue) {
  std::string text = "P6 " + std::to_string(width) + " " + std::to_string(height) + " 255\n";
  for (int at = 0; at < width * height; ++at) {
    text += {static_cast<char>(red), static_cast<char>(green), static_cast<char>(blue)};
  }
  return text;
}

}  // namespace halvora
