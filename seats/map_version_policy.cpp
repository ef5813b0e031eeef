// SPDX-License-Identifier: Apache-2.0
#include "seats/map_version_policy.h"

namespace halvora {

// The new versions are stored after what follows from them, so that a process that dies in between
// does it again; and before tables are built, because that refreshes the status, which comes here.
void MapVersionPolicy::apply(std::int64_t venueId, const MapVersionInfo& versions) {
  const StoredMapVersions stored = storage_.mapVersionsForVenueId(venueId);
  const bool isSeatMapNew = stored.seatVersion && *stored.seatVersion != versions.seatVersion;
  const bool areAssetsNew =
      stored.mapAssetsVersion && *stored.mapAssetsVersion != versions.mapAssetsVersion;
  if (isSeatMapNew) storage_.clearSeatSelectionForVenueId(venueId);
  if (isSeatMapNew || areAssetsNew) {
    engine_.invalidatePixelMapSeatLUTCacheForVenueId(venueId);
    storage_.setPersistedSeatLUTReady(false, venueId);
    // Invalidation ends whatever run is under way, without a report.
    tables_.giveUp();
  }
  storage_.setMapVersions(versions, venueId);
  if (isSeatMapNew || !areAssetsNew) return;
  if (const auto seat = storage_.hasValidSeatSelectionForVenueId(venueId)) {
    tables_.start(venueId, *seat);
  }
}

}  // namespace halvora
