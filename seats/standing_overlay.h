// SPDX-License-Identifier: Apache-2.0
// The plan of a venue's standing area, as the host's bundle has it. The status panel keeps one, so
// that a plan is read and decoded once a venue and not whenever the wizard opens. Main thread.
#pragma once

#include <cstdint>
#include <memory>

#include "halvora/platform/bundle.h"
#include "halvora/platform/image.h"

namespace halvora {

/// Names of a plan in the venue's folder: the first that is a picture counts.
inline constexpr const char* kStandingOverlayNames[] = {
    "standing-overlay.png", "standing_overlay.png", "standing-overlay.PNG", "standing_overlay.PNG"};

class StandingOverlay {
 public:
  /// Both must outlive it.
  StandingOverlay(const Bundle& mainBundle, const ImageDecoder& images)
      : bundle_(mainBundle), images_(images) {}

  /// Null for a venue id below 1, and where the venue has no plan that can be decoded.
  std::shared_ptr<const Image> standingOverlayImageForVenueId(std::int64_t venueId);

 private:
  std::shared_ptr<const Image> load(std::int64_t venueId) const;

  const Bundle& bundle_;
  const ImageDecoder& images_;
  /// 0 for none; a venue without a plan is remembered as well.
  std::int64_t venueId_ = 0;
  std::shared_ptr<const Image> image_;
};

}  // namespace halvora
