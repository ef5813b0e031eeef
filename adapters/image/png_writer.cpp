// SPDX-License-Identifier: Apache-2.0
#include "adapters/image/png_writer.h"

#include <png.h>

namespace halvora {

std::string pngOf(const Image& image) {
  constexpr std::size_t kBytesPerPixel = 4;
  const std::size_t needed = std::size_t{image.width} * image.height * kBytesPerPixel;
  if (needed == 0 || image.rgba.size() < needed) return {};
  png_image png{};
  png.version = PNG_IMAGE_VERSION;
  png.width = image.width;
  png.height = image.height;
  png.format = PNG_FORMAT_RGBA;
  // What cannot be compressed grows by less than that.
  std::string bytes(needed + needed / 64 + image.height + 4096, '\0');
  png_alloc_size_t size = bytes.size();
  if (png_image_write_to_memory(&png, bytes.data(), &size, 0, image.rgba.data(), 0, nullptr) == 0) {
    return {};
  }
  bytes.resize(size);
  return bytes;
}

}  // namespace halvora
