// SPDX-License-Identifier: Apache-2.0
#include "pixelmap/still_source.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <utility>

#include "light/bitmap.h"
#include "text/asset_paths.h"

namespace halvora {

namespace {

// Of a bitmap's pixel, whose colour is multiplied by its alpha.
bool isWhite(const std::uint8_t* pixel) {
  return pixel[1] == 255 && pixel[2] == 255 && pixel[3] == 255;
}

// Before a seat is looked for there must be a still: a missing one leaves the torch as it is, seat
// or no seat. One that no seat looks at is not decoded.
std::optional<bool> isWhiteInShared(const std::string& name, const StillSource& source,
                                    const std::optional<SeatPosition>& seat) {
  const auto still = source.find(name);
  if (!still) return std::nullopt;
  if (!seat) return false;
  if (!*still) return std::nullopt;
  const auto pixel = drawnPixel(**still, seat->x, seat->y);
  return pixel && isWhite(pixel->data());
}

std::optional<bool> isWhiteInOwn(const std::string& name, const Bundle& bundle,
                                 const ImageDecoder& images,
                                 const std::optional<SeatPosition>& seat) {
  const auto bytes = bundle.readResource(name, kLargestPicture);
  if (!bytes) return std::nullopt;
  if (!seat) return false;
  auto row = images.decodeRow(*bytes, seat->y);
  if (!row) return std::nullopt;
  const Image line{row->width, std::min<std::uint32_t>(row->height, 1), std::move(row->rgba)};
  std::optional<BitmapContext> bitmap = createARGBBitmapContextFromImage(line);
  if (!bitmap) return std::nullopt;
  // The seat lies above or below the picture.
  if (line.rgba.empty()) return false;
  drawRow(line, 0, *bitmap);
  const std::uint8_t* pixel = bitmap->pixelAt(seat->x, 0);
  return pixel != nullptr && isWhite(pixel);
}

}  // namespace

std::optional<bool> isWhiteInStill(const StillPlace& place, const std::optional<SeatPosition>& seat,
                                   const StillSource* source, const Bundle& bundle,
                                   const ImageDecoder& images) {
  try {
    const std::string name = "Maps/v" + std::to_string(place.venueId) + "_m" +
                             std::to_string(place.pixelMapId) + "_f" + std::to_string(place.frame) +
                             ".jpg";
    return source != nullptr ? isWhiteInShared(name, *source, seat)
                             : isWhiteInOwn(name, bundle, images, seat);
  } catch (const std::bad_alloc&) {
    // The rest of the look counts.
    return std::nullopt;
  }
}

}  // namespace halvora
