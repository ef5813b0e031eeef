// SPDX-License-Identifier: Apache-2.0
// A picture decoder that a test can write pictures for by hand: binary portable pixmaps ("P6 2 1
// 255\n" and the bytes). Stateless.
#pragma once

#include <string>
#include <string_view>

#include "halvora/platform/image.h"

namespace halvora {

class PixmapDecoder final : public ImageDecoder {
 public:
  std::optional<Image> decode(std::string_view bytes) const override;
};

/// A pixmap of that size with all its pixels in one colour.
std::string pixmapOf(int width, int height, std::uint8_t red, std::uint8_t green,
                     std::uint8_t blue);

}  // namespace halvora
