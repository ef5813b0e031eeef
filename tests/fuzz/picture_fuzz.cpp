// SPDX-License-Identifier: Apache-2.0
// Any bytes as a picture: whatever is decoded is as large as it says, and the bitmap of it can be
// read to its last pixel.
#include <algorithm>
#include <optional>

#include "adapters/image/picture_decoder.h"
#include "light/bitmap.h"
#include "tests/fuzz/fuzz_targets.h"

namespace halvora {

int fuzzPicture(FuzzBytes bytes) {
  const std::optional<Image> image = PictureDecoder().decode(textOf(bytes));
  if (!image) return 0;
  const std::uint64_t pixels = std::uint64_t{image->width} * image->height;
  require(pixels > 0 && pixels <= ImageDecoder::kMostPixels, "a picture has a bounded size");
  require(image->rgba.size() == pixels * 4, "a picture is as large as it says");

  std::optional<BitmapContext> bitmap = createARGBBitmapContextFromImage(*image);
  require(bitmap.has_value(), "a picture has a bitmap");
  drawRow(*image, image->height - 1, *bitmap);
  const std::uint8_t* last = bitmap->pixelAt(image->width - 1, image->height - 1);
  require(last != nullptr && last[0] == image->rgba.back(), "a bitmap has its last pixel");
  const auto pixel = drawnPixel(*image, image->width - 1, image->height - 1);
  require(pixel && std::equal(pixel->begin(), pixel->end(), last), "one pixel is drawn alike");
  require(!drawnPixel(*image, image->width, 0) && !drawnPixel(*image, 0, -1),
          "there is nothing beyond the edges");
  return 0;
}

}  // namespace halvora
