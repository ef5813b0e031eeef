// SPDX-License-Identifier: Apache-2.0
// The assets that a show's names and maps are looked up in. Main thread.
#pragma once

#include <string>

#include "halvora/platform/video_asset.h"
#include "venue/show/cue_schedule.h"

namespace halvora {

/// The nearest folder with HVAssets in it, from the file's own upwards; empty for none.
std::string assetsBeside(const std::string& file);

/// Looks maps up in that folder of assets, each video once. Nothing is known of a venue that has no
/// folder there. The videos must outlive it.
MapFrames mapFramesIn(const std::string& assets, const VideoAssets& videos);

}  // namespace halvora
