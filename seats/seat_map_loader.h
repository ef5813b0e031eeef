// SPDX-License-Identifier: Apache-2.0
// Keeps the seat map of the venue in force: reads and parses it on a queue of its own, one load at
// a time, and drops what was overtaken. The status panel owns one. Main thread.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "platform/platform.h"
#include "platform/serial_queues.h"
#include "seats/seat_map.h"

namespace halvora {

class SeatMapLoader {
 public:
  /// `onLoaded` is called when a load has ended, with or without sections, and may ask for another.
  /// The platform must outlive the loader; a load that ends after it is gone is dropped.
  SeatMapLoader(const Platform& platform, std::function<void()> onLoaded);

  /// Loads a venue's map unless it is there already or on its way. An id below 1 stands for no
  /// venue and forgets the map. A map that turned out empty is loaded again.
  void preloadSeatMapForVenueId(std::int64_t venueId);
  /// The same for the venue in force, however often.
  void refreshSeatMapAvailability(std::int64_t resolvedVenueId);

  /// Never null; empty while there is no map. Whoever takes it may keep it.
  const std::shared_ptr<const SeatMap>& seatMapSections() const { return seatMapSections_; }
  /// The venue whose map was loaded last, even an empty one; 0 for none.
  std::int64_t seatMapVenueId() const { return seatMapVenueId_; }
  /// The venue whose map is on its way; 0 for none.
  std::int64_t seatMapLoadingVenueId() const { return seatMapLoadingVenueId_; }

 private:
  void finish(std::int64_t venueId, std::shared_ptr<const SeatMap> sections);

  Platform platform_;
  std::function<void()> onLoaded_;
  std::shared_ptr<const SeatMap> seatMapSections_ = std::make_shared<const SeatMap>();
  std::int64_t seatMapVenueId_ = 0;
  std::int64_t seatMapLoadingVenueId_ = 0;
  std::shared_ptr<const bool> isAlive_ = std::make_shared<const bool>(true);
  std::unique_ptr<SerialQueue> seatMapParseQueue_;
};

}  // namespace halvora
