// SPDX-License-Identifier: Apache-2.0
#include "seats/seat_map_loader.h"

#include <utility>

#include "platform/bundle.h"
#include "platform/files.h"
#include "platform/json.h"
#include "platform/run_loop.h"
#include "seats/seat_map_document.h"

namespace halvora {

namespace {

/// All that a load needs; it looks at nothing of the loader's.
struct Load {
  const Bundle& main;
  const Files& files;
  const JsonReader& json;
  RunLoop& loop;
  SeatMapTexts texts;
};

}  // namespace

SeatMapLoader::SeatMapLoader(const Platform& platform, std::function<void()> onLoaded)
    : platform_(platform),
      onLoaded_(std::move(onLoaded)),
      seatMapParseQueue_(platform.queues.make("com.halvora.sdk.seatmap.parse")) {}

void SeatMapLoader::preloadSeatMapForVenueId(std::int64_t venueId) {
  if (venueId <= 0) {
    seatMapVenueId_ = 0;
    seatMapSections_ = std::make_shared<const SeatMap>();
    seatMapLoadingVenueId_ = 0;
    return;
  }
  if (seatMapVenueId_ == venueId && !seatMapSections_->isEmpty()) return;
  if (seatMapLoadingVenueId_ == venueId) return;
  seatMapLoadingVenueId_ = venueId;
  auto load = std::make_unique<Load>(Load{platform_.bundles.main, platform_.files, platform_.json,
                                          platform_.runLoop, seatMapTexts(platform_.bundles.kit)});
  seatMapParseQueue_->dispatch(
      [this, venueId, load = std::move(load), alive = std::weak_ptr<const bool>(isAlive_)] {
        if (alive.expired()) return;
        auto sections = std::make_shared<const SeatMap>(loadSeatMapSectionsForVenueId(
            venueId, load->main, load->files, load->texts, load->json));
        load->loop.post([this, venueId, alive, sections = std::move(sections)]() mutable {
          if (!alive.expired()) finish(venueId, std::move(sections));
        });
      });
}

void SeatMapLoader::refreshSeatMapAvailability(std::int64_t resolvedVenueId) {
  preloadSeatMapForVenueId(resolvedVenueId);
}

void SeatMapLoader::finish(std::int64_t venueId, std::shared_ptr<const SeatMap> sections) {
  if (seatMapLoadingVenueId_ != venueId) return;
  seatMapVenueId_ = venueId;
  seatMapSections_ = std::move(sections);
  seatMapLoadingVenueId_ = 0;
  if (onLoaded_) onLoaded_();
}

}  // namespace halvora
