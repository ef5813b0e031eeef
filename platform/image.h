// SPDX-License-Identifier: Apache-2.0
// Pictures as a need: encoded bytes in, pixels out. JPEG and PNG at least. Stateless; any thread.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace halvora {

/// 8 bits a channel, not premultiplied; rows from the top, 4 bytes a pixel: red, green, blue,
/// alpha.
struct Image {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::vector<std::uint8_t> rgba;
};

class ImageDecoder {
 public:
  /// A picture that claims more pixels is refused before any of them is decoded.
  static constexpr std::uint64_t kMostPixels = 64'000'000;

  virtual ~ImageDecoder() = default;
  /// None for anything that is not a whole picture of a known kind, or that is too large.
  virtual std::optional<Image> decode(std::string_view bytes) const = 0;
};

}  // namespace halvora
