// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/shared_stills.h"

#include "text/asset_paths.h"

namespace halvora {

std::optional<StillSource::Still> SharedStills::find(const std::string& name) const {
  return recent_.get(
      name, [&] { return read(name); },
      [](const std::optional<Still>& still) {
        return still && *still ? (*still)->rgba.size() : 0;
      });
}

std::optional<StillSource::Still> SharedStills::read(const std::string& name) const {
  const auto bytes = bundle_.readResource(name, kLargestPicture);
  if (!bytes) return std::nullopt;
  std::optional<Image> image = decoder_.decode(*bytes);
  return image ? std::make_shared<const Image>(std::move(*image)) : Still();
}

}  // namespace halvora
