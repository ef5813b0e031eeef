// SPDX-License-Identifier: Apache-2.0
// Pictures as a need: encoded bytes in, pixels out. JPEG and PNG at least. Stateless; any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "halvora/platform/need.h"
#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

/// 8 bits a channel, not premultiplied; rows from the top, 4 bytes a pixel: red, green, blue,
/// alpha.
struct Image {
  std::uint32_t width = 0;         ///< Pixels.
  std::uint32_t height = 0;        ///< Pixels.
  std::vector<std::uint8_t> rgba;  ///< 4 · width · height bytes.
};

/// One row of a picture, and the size of all of it.
struct ImageRow {
  std::uint32_t width = 0;   ///< Of the whole picture, in pixels.
  std::uint32_t height = 0;  ///< Likewise.
  /// As in an image; empty where the picture has no such row.
  std::vector<std::uint8_t> rgba;
};

/// Decodes whole pictures, or a row of one.
class ImageDecoder : public Need {
 public:
  /// A picture that claims more pixels is refused before any of them is decoded.
  static constexpr std::uint64_t kMostPixels = 64'000'000;

  /// None for anything that is not a whole picture of a known kind, or that is too large. Throws
  /// std::bad_alloc where memory is short.
  virtual std::optional<Image> decode(std::string_view bytes) const = 0;
  /// That row of what `decode` would give, and none where it would give none; for less memory where
  /// the kind of picture allows for it. Throws std::bad_alloc where memory is short.
  virtual std::optional<ImageRow> decodeRow(std::string_view bytes, std::int64_t row) const {
    std::optional<Image> image = decode(bytes);
    if (!image) return std::nullopt;
    ImageRow found{image->width, image->height, {}};
    if (row < 0 || row >= image->height) return found;
    const auto size = static_cast<std::ptrdiff_t>(std::size_t{4} * image->width);
    const auto begin = image->rgba.begin() + static_cast<std::ptrdiff_t>(row) * size;
    found.rgba.assign(begin, begin + size);
    return found;
  }
};

}  // namespace v0
}  // namespace halvora
