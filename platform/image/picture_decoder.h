// SPDX-License-Identifier: Apache-2.0
// The image need on libjpeg-turbo and libpng: JPEG and PNG from memory, told apart by their first
// bytes. Stateless; any thread.
#pragma once

#include "platform/image.h"

namespace halvora {

class PictureDecoder final : public ImageDecoder {
 public:
  std::optional<Image> decode(std::string_view bytes) const override;
};

}  // namespace halvora
