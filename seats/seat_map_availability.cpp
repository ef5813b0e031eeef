// SPDX-License-Identifier: Apache-2.0
#include "seats/seat_map_availability.h"

#include <atomic>
#include <new>
#include <string>
#include <utility>

#include "halvora/platform/bundle.h"
#include "halvora/platform/files.h"
#include "halvora/platform/json.h"
#include "halvora/platform/run_loop.h"
#include "seats/map_versions.h"
#include "seats/seat_map_document.h"
#include "text/asset_paths.h"

namespace halvora {

/// Reads maps. Used by the parse queue alone.
class SeatMapAvailability::Loader {
 public:
  explicit Loader(const Platform& platform)
      : bundle_(platform.bundles->main),
        texts_(seatMapTexts(platform.bundles->kit)),
        json_(platform.json) {}

  const LoadedSeatMap& loadSeatMapSectionsForVenueId(std::int64_t venueId) {
    std::string path = seatMapFile(venueId);
    const std::optional<FileAttributes> file = bundle_.attributes(path);
    // A venue without a map is looked at again and again; only a file that changed is read again.
    const bool isSame = path == path_ && file && file == file_;
    if (isSame) return loaded_;
    // Without a path until there is a result: what throws is to be read anew.
    path_.clear();
    loaded_ = file ? read(path) : LoadedSeatMap();
    path_ = std::move(path);
    file_ = file;
    return loaded_;
  }

 private:
  LoadedSeatMap read(const std::string& path) const {
    const std::optional<std::string> document = bundle_.readResource(path, kLargestSeatMap);
    if (!document) return {};
    return {std::make_shared<const SeatMap>(parseSeatMapSectionsFromJSON(*document, texts_, json_)),
            mapVersionInfoFromJSON(*document, json_)};
  }

  const Bundle& bundle_;
  const SeatMapTexts texts_;
  const JsonReader& json_;
  /// The last load.
  std::string path_;
  std::optional<FileAttributes> file_;
  LoadedSeatMap loaded_;
};

struct SeatMapAvailability::Job {
  Job(const std::shared_ptr<Loader>& loader, SeatMapAvailability* its, std::int64_t venue)
      : weak(loader), self(its), venueId(venue) {}

  std::weak_ptr<Loader> weak;
  SeatMapAvailability* self;
  std::int64_t venueId;
  LoadedSeatMap result = {};
  /// Memory was short for it, or for telling that it is there: nobody will be told any more.
  std::atomic<bool> isLost{false};
};

SeatMapAvailability::SeatMapAvailability(const Platform& platform, std::function<void()> loaded)
    : platform_(platform), loadedCallback_(std::move(loaded)) {}

SeatMapAvailability::~SeatMapAvailability() = default;

void SeatMapAvailability::viewDidLoad() {
  loader_ = std::make_shared<Loader>(platform_);
  seatMapParseQueue_ = platform_.queues->make("com.halvora.sdk.seatmap.parse");
}

void SeatMapAvailability::preloadSeatMapForVenueId(std::int64_t venueId) {
  if (venueId <= 0) {
    seatMapVenueId_ = 0;
    seatMapLoadingVenueId_ = 0;
    loaded_ = {};
    return;
  }
  const bool hasSections = isLoaded(venueId) && !loaded_.sections->isEmpty();
  // Asking at once for what has just come without sections would never end.
  const bool isComing = seatMapLoadingVenueId_ == venueId && !(job_ && job_->isLost);
  if (hasSections || isComing || justLoadedVenueId_ == venueId) return;
  if (!seatMapParseQueue_) return;
  const auto job = std::make_shared<Job>(loader_, this, venueId);
  const auto load = [job, &runLoop = *platform_.runLoop] {
    const auto loader = job->weak.lock();
    if (!loader) return;
    try {
      job->result = loader->loadSeatMapSectionsForVenueId(job->venueId);
      runLoop.post([job] {
        if (!job->weak.expired()) job->self->loadEnded(*job);
      });
    } catch (const std::bad_alloc&) {
      job->isLost = true;
    }
  };
  // Where it cannot begin, the next refresh asks again.
  const bool isBegun = seatMapParseQueue_->dispatch(load);
  seatMapLoadingVenueId_ = isBegun ? venueId : 0;
  job_ = job;
}

void SeatMapAvailability::loadEnded(const Job& job) {
  if (seatMapLoadingVenueId_ != job.venueId) return;
  seatMapVenueId_ = job.venueId;
  loaded_ = job.result;
  seatMapLoadingVenueId_ = 0;
  justLoadedVenueId_ = job.venueId;
  // By a copy: it may destroy this.
  const auto loaded = loadedCallback_;
  loaded();
  if (!job.weak.expired()) justLoadedVenueId_ = 0;
}

}  // namespace halvora
