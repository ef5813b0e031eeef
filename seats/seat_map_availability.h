// SPDX-License-Identifier: Apache-2.0
// The seat map of the venue in force, loaded off the main thread: its sections, and the versions
// that its document states, read in the same go so that no refresh ever touches a file. Owned by
// the status panel; main thread. Loads hold it weakly.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "halvora/platform/platform.h"
#include "halvora/platform/serial_queues.h"
#include "seats/seat_map.h"
#include "seats/seat_storage.h"
#include "seats/seat_texts.h"

namespace halvora {

struct LoadedSeatMap {
  /// Never null; without sections where there is no map.
  std::shared_ptr<const SeatMap> sections = std::make_shared<const SeatMap>();
  /// None where the document is missing, malformed or no object.
  std::optional<MapVersionInfo> versions;
};

class SeatMapAvailability {
 public:
  /// `loaded` is called whenever a load ends that is still wanted; it may destroy this.
  SeatMapAvailability(const Platform& platform, std::function<void()> loaded);
  ~SeatMapAvailability();
  SeatMapAvailability(const SeatMapAvailability&) = delete;
  SeatMapAvailability& operator=(const SeatMapAvailability&) = delete;

  /// Makes the queue and looks up the texts; nothing is loaded before.
  void viewDidLoad();

  /// Loads the venue's map unless it is loaded or being loaded. An id below 1 clears everything. A
  /// venue that was found without sections is looked at again, but not from within `loaded`.
  void preloadSeatMapForVenueId(std::int64_t venueId);

  const std::shared_ptr<const SeatMap>& seatMapSections() const { return loaded_.sections; }
  /// 0 for none.
  std::int64_t seatMapVenueId() const { return seatMapVenueId_; }
  /// 0 while nothing is being loaded.
  std::int64_t seatMapLoadingVenueId() const { return seatMapLoadingVenueId_; }
  bool isLoading(std::int64_t venueId) const {
    return venueId > 0 && seatMapLoadingVenueId_ == venueId;
  }
  bool isLoaded(std::int64_t venueId) const { return venueId > 0 && seatMapVenueId_ == venueId; }
  /// None also as long as the venue's document has not been read.
  std::optional<MapVersionInfo> mapVersionInfoForVenueId(std::int64_t venueId) const {
    return isLoaded(venueId) ? loaded_.versions : std::nullopt;
  }

 private:
  class Loader;
  struct Job;

  void loadEnded(const Job& job);

  Platform platform_;
  std::function<void()> loadedCallback_;
  LoadedSeatMap loaded_;
  std::int64_t seatMapVenueId_ = 0;
  std::int64_t seatMapLoadingVenueId_ = 0;
  std::int64_t justLoadedVenueId_ = 0;
  /// What background jobs may reach, and only through weak references.
  std::shared_ptr<Loader> loader_;
  /// The load that was begun last.
  std::shared_ptr<const Job> job_;
  std::unique_ptr<SerialQueue> seatMapParseQueue_;
};

}  // namespace halvora
