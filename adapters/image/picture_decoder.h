// SPDX-License-Identifier: Apache-2.0
// The image need on libjpeg-turbo and libpng: JPEG and PNG from memory, told apart by their first
// bytes. Stateless; any thread.
#pragma once

#include "halvora/platform/image.h"

namespace halvora {

class PictureDecoder final : public ImageDecoder {
 public:
  std::optional<Image> decode(std::string_view bytes) const override;
  /// Of a JPEG that comes in several scans and has more than some 20 million pixels: none.
  std::optional<ImageRow> decodeRow(std::string_view bytes, std::int64_t row) const override;
};

}  // namespace halvora
