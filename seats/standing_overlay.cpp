// SPDX-License-Identifier: Apache-2.0
#include "seats/standing_overlay.h"

#include <optional>
#include <string>
#include <utility>

#include "text/asset_paths.h"

namespace halvora {

std::shared_ptr<const Image> StandingOverlay::standingOverlayImageForVenueId(std::int64_t venueId) {
  if (venueId < 1) return nullptr;
  if (venueId != venueId_) {
    image_ = load(venueId);
    venueId_ = venueId;
  }
  return image_;
}

std::shared_ptr<const Image> StandingOverlay::load(std::int64_t venueId) const {
  const std::string folder = venueFolder(venueId) + "/";
  for (const char* name : kStandingOverlayNames) {
    const std::optional<std::string> bytes = bundle_.readResource(folder + name, kLargestPicture);
    std::optional<Image> image = bytes ? images_.decode(*bytes) : std::nullopt;
    if (image) return std::make_shared<const Image>(std::move(*image));
  }
  return nullptr;
}

}  // namespace halvora
