// SPDX-License-Identifier: Apache-2.0
// What a venue's folder holds beside its map, seen as the kit sees it: the videos and stills of its
// pixel maps, and the plan of its standing areas. Of a video the first picture is decoded, a still
// whole. Main thread.
#pragma once

#include <string>

#include "venue/base/outside.h"
#include "venue/plan/map_report.h"

namespace halvora {

/// Ends early, with part of it, where the user interrupts. `folder` is absolute.
VenueAssets venueAssetsIn(const std::string& folder, const Outside& outside);

}  // namespace halvora
