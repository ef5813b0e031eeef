// SPDX-License-Identifier: Apache-2.0
#include "tools/halvora/crowd/shared_stills.h"

namespace halvora {

std::optional<StillSource::Still> SharedStills::find(const std::string& name) const {
  return recent_.get(
      name, [&] { return read(name); },
      [](const std::optional<Still>& still) {
        return still && *still ? (*still)->bytesPerRow * (*still)->height : 0;
      });
}

std::optional<StillSource::Still> SharedStills::read(const std::string& name) const {
  const auto bytes = bundle_.readResource(name, kLargestStill);
  if (!bytes) return std::nullopt;
  const std::optional<Image> image = decoder_.decode(*bytes);
  if (!image) return Still();
  std::optional<BitmapContext> bitmap = createARGBBitmapContextFromImage(*image);
  if (!bitmap) return Still();
  for (std::uint32_t row = 0; row < image->height; ++row) drawRow(*image, row, *bitmap);
  return std::make_shared<const BitmapContext>(std::move(*bitmap));
}

}  // namespace halvora
