// SPDX-License-Identifier: Apache-2.0
// Any bytes as a picture: whatever is decoded is as large as it says, and the bitmap of it can be
// read to its last pixel.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string_view>

#include "light/bitmap.h"
#include "platform/image/picture_decoder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const std::optional<halvora::Image> image = halvora::PictureDecoder().decode(bytes);
  if (!image) return 0;
  const std::uint64_t pixels = std::uint64_t{image->width} * image->height;
  if (pixels == 0 || pixels > halvora::ImageDecoder::kMostPixels) std::abort();
  if (image->rgba.size() != pixels * 4) std::abort();

  std::optional<halvora::BitmapContext> bitmap = halvora::createARGBBitmapContextFromImage(*image);
  if (!bitmap) std::abort();
  halvora::drawRow(*image, image->height - 1, *bitmap);
  const std::uint8_t* last = bitmap->pixelAt(image->width - 1, image->height - 1);
  if (last == nullptr || last[0] != image->rgba.back()) std::abort();
  return 0;
}
