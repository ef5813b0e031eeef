// SPDX-License-Identifier: Apache-2.0
// The panel's seat: its map, the wizard, what is stored of it, and the tables that are built for
// it.
#include <algorithm>
#include <new>
#include <utility>

#include "halvora/platform/bundle.h"
#include "halvora/platform/run_loop.h"
#include "seats/halvora_status_view_controller.h"
#include "seats/seat_names.h"
#include "seats/status_panel_update.h"
#include "text/defaults_values.h"

namespace halvora {

namespace {

constexpr double kLoadingAlpha = 0.85;

struct PresentedSeatSelector {
  PresentedSeatSelector(std::shared_ptr<StandingOverlay> standingOverlay, const Bundle& kit,
                        const FontLookup& hasFont, SeatSelectorInputs inputs)
      : overlay(std::move(standingOverlay)), selector(kit, *overlay, hasFont, std::move(inputs)) {}

  std::shared_ptr<StandingOverlay> overlay;
  HalvoraSeatSelectorViewController selector;
};

std::string summaryOf(const SeatNames& names) {
  if (isStandingName(names.section)) return names.section;
  return names.section + "  |  " + names.row + "  |  " + names.seat;
}

}  // namespace

// Seat map

void HalvoraStatusViewController::preloadSeatMapForVenueId(std::int64_t venueId) {
  const Update update(*this);
  seatMap_.preloadSeatMapForVenueId(venueId);
}

void HalvoraStatusViewController::refreshSeatMapAvailability() {
  preloadSeatMapForVenueId(resolvedVenueId());
}

void HalvoraStatusViewController::seatMapLoaded() {
  const Update update(*this);
  updateStatus();
  if (update.isPanelGone()) return;
  const bool isAskedFor = std::exchange(missingMapVenueId_, 0) == seatMap_.seatMapVenueId();
  if (isAskedFor && seatMap_.seatMapSections()->isEmpty() && !isPresenting()) {
    presentSeatMapMissingAlert();
  }
}

void HalvoraStatusViewController::openSeatSelector() {
  const Update update(*this);
  if (isPresenting()) return;
  const std::int64_t venueId = resolvedVenueId();
  const bool isEmpty = seatMap_.isLoaded(venueId) && seatMap_.seatMapSections()->isEmpty();
  seatMap_.preloadSeatMapForVenueId(venueId);
  if (seatMap_.isLoading(venueId)) {
    // A map that was missing is looked for once more, and only then is the user told.
    missingMapVenueId_ = isEmpty ? venueId : 0;
  } else if (seatMap_.seatMapSections()->isEmpty()) {
    presentSeatMapMissingAlert();
  } else {
    presentSeatSelector(venueId);
  }
}

void HalvoraStatusViewController::presentSeatMapMissingAlert() {
  presentedAlert_ = Alert{hvLocalizedStringForKey("hv_seat_map_missing_title", "Seat Map Missing"),
                          hvLocalizedStringForKey("hv_seat_map_missing_message",
                                                  "No valid map.json parsed for current venue."),
                          hvLocalizedStringForKey("hv_common_ok", "OK")};
}

void HalvoraStatusViewController::presentSeatSelector(std::int64_t venueId) {
  SeatSelectorInputs inputs;
  inputs.venueId = venueId;
  inputs.hasLiveVenueSignal = integerForKey(platform_.defaults, "venueID") > 0;
  inputs.map = seatMap_.seatMapSections();
  if (const DefaultsDictionary* record = storage_.seatSelectionForVenueId(venueId)) {
    SeatNames names = seatNamesOf(*record);
    inputs.initialSelection =
        InitialSeatSelection{std::move(names.section), std::move(names.row), std::move(names.seat)};
  }
  inputs.buttonBackgroundColor = fields_.actionButtonColour;
  inputs.buttonTitleColor = fields_.actionButtonTitleColour;
  inputs.buttonTitleFontName = fields_.actionButtonTitleFontName;
  inputs.buttonTitleFontSize = fields_.actionButtonTitleFontSize;
  inputs.statusTextFontName = fields_.statusTextFontName;
  inputs.onSeatSelected = [this, weak = std::weak_ptr<bool>(alive_)](
                              const SeatMap::SectionItem& section, const SeatMap::RowItem& row,
                              const SeatMap::SeatItem& seat) {
    if (weak.expired()) return;
    seatSelected({std::string(section.displayName()), std::string(row.displayName()),
                  std::string(seat.displayName)},
                 {seat.xPos, seat.yPos});
  };
  const auto presented = std::make_shared<PresentedSeatSelector>(
      standingOverlay_, platform_.bundles.kit, face_.hasFont, std::move(inputs));
  seatSelector_ = {presented, &presented->selector};
  seatSelector_->viewDidLoad();
}

void HalvoraStatusViewController::seatSelected(const SeatNames& names, SeatPoint seat) {
  const Update update(*this);
  const std::int64_t resolved = resolvedVenueId();
  const std::int64_t venueId = resolved > 0 ? resolved : seatMap_.seatMapVenueId();
  storage_.setSeatDefaults(names, seat);
  storage_.persistSeatSelectionForVenueId(venueId, names, seat);
  updateSeatSelectionUIForVenueId(venueId);
  platform_.defaults.synchronize();
  startSeatLUTPrecomputeForVenueId(venueId, seat);
}

// Stored seats

// The new versions are stored after what follows from them, so that a process that dies in between
// does it again; and before tables are built, because that refreshes the status, which comes here.
void HalvoraStatusViewController::applyMapVersionPolicyForVenueId(std::int64_t venueId) {
  const Update update(*this);
  const std::optional<MapVersionInfo> versions = seatMap_.mapVersionInfoForVenueId(venueId);
  if (!versions || engineLife_.isGone()) return;
  const StoredMapVersions stored = storage_.mapVersionsForVenueId(venueId);
  const bool isSeatMapNew = stored.seatVersion && *stored.seatVersion != versions->seatVersion;
  const bool areAssetsNew =
      stored.mapAssetsVersion && *stored.mapAssetsVersion != versions->mapAssetsVersion;
  if (isSeatMapNew) storage_.clearSeatSelectionForVenueId(venueId);
  if (isSeatMapNew || areAssetsNew) {
    engine_.invalidatePixelMapSeatLUTCacheForVenueId(venueId);
    storage_.setPersistedSeatLUTReady(false, venueId);
    // Invalidation ends whatever precompute is under way, without a report.
    hideSeatLUTPrecomputeProgress();
  }
  storage_.setMapVersions(*versions, venueId);
  if (isSeatMapNew || !areAssetsNew) return;
  if (const auto seat = storage_.hasValidSeatSelectionForVenueId(venueId)) {
    startSeatLUTPrecomputeForVenueId(venueId, *seat);
  }
}

void HalvoraStatusViewController::startSeatLUTPrecomputeForVenueId(std::int64_t venueId,
                                                                   SeatPoint seat) {
  if (seat.x < 0 || seat.y < 0 || venueId < 1 || seatLUTPrecomputeInProgress_) return;
  if (engineLife_.isGone()) return;
  const Update update(*this);
  finished_.reset();
  generation_ = engine_.pixelMapPrecomputeGeneration();
  try {
    storage_.setPersistedSeatLUTReady(false, venueId);
    showSeatLUTPrecomputeProgressWithDone(0, 1, "");
    updateStatus();
    if (update.isPanelGone() || engineLife_.isGone()) return;
    precomputeSeatLUTs(venueId, seat);
  } catch (const std::bad_alloc&) {
    // A later refresh begins again.
    if (!update.isPanelGone()) hideSeatLUTPrecomputeProgress();
  }
}

void HalvoraStatusViewController::precomputeSeatLUTs(std::int64_t venueId, SeatPoint seat) {
  const std::weak_ptr<bool> weak = alive_;
  const std::uint64_t number = ++precompute_;
  const auto isWanted = [this, weak, number] { return !weak.expired() && precompute_ == number; };
  engine_.precomputePixelMapLUTsForVenueId(
      venueId, seat.x, seat.y,
      [this, isWanted](int done, int total, const std::string& mapId) {
        if (!isWanted()) return;
        const Update reported(*this);
        showSeatLUTPrecomputeProgressWithDone(done, std::max(total, 1), mapId);
        updateStatus();
      },
      [this, isWanted, venueId, seat](int done, int total) {
        if (isWanted()) precomputeEnded(venueId, seat, done, total);
      });
  generation_ = engine_.pixelMapPrecomputeGeneration();
}

// The flag is that of the seat that is chosen now, and the user may have chosen another one while
// these tables were built: its own come next.
void HalvoraStatusViewController::precomputeEnded(std::int64_t venueId, SeatPoint seat, int done,
                                                  int total) {
  const Update update(*this);
  const auto chosen = storage_.hasValidSeatSelectionForVenueId(venueId);
  if (chosen && *chosen != seat) done = -1;
  finished_ = {venueId, seat};
  storage_.setPersistedSeatLUTReady(total > 0 && done >= total, venueId);
  completeSeatLUTPrecomputeWithDone(done, std::max(total, 0));
  updateStatus();
}

// Another panel's precompute, or the host's own, ends the one before it without a word.
void HalvoraStatusViewController::forgetAbandonedPrecompute() {
  if (!seatLUTPrecomputeInProgress_) return;
  if (engine_.pixelMapPrecomputeGeneration() != generation_) hideSeatLUTPrecomputeProgress();
}

// Their building has begun and nobody goes on with it: the process died, another precompute has
// ended it, or another seat was chosen meanwhile. Tables that are there are only looked at.
void HalvoraStatusViewController::finishSeatLUTs(std::int64_t venueId) {
  if (seatLUTPrecomputeInProgress_ || engine_.isPrecomputingPixelMapLUTs()) return;
  if (!seatMap_.isLoaded(venueId) || !storage_.isSeatLUTUnfinishedForVenueId(venueId)) return;
  const auto seat = storage_.hasValidSeatSelectionForVenueId(venueId);
  if (!seat || finished_ == std::pair(venueId, *seat)) return;
  startSeatLUTPrecomputeForVenueId(venueId, *seat);
}

SeatNames HalvoraStatusViewController::storedSeatNames(std::int64_t venueId) const {
  const DefaultsDictionary* record = storage_.seatSelectionForVenueId(venueId);
  return record != nullptr ? seatNamesOf(*record) : SeatNames();
}

void HalvoraStatusViewController::updateSeatSelectionUIForVenueId(std::int64_t venueId) {
  const Update update(*this);
  Button& button = views_.seatSelectionButton;
  SeatSelectionSummaryRow& row = views_.seatSelectionSummaryRow;
  const bool isLoading = seatMap_.isLoading(venueId);
  button.enabled = !isLoading;
  button.alpha = isLoading ? kLoadingAlpha : 1;
  row.seatSelectionLoadingIndicator.isAnimating = isLoading;
  if (isLoading) {
    button.title = hvLocalizedStringForKey("hv_seat_button_loading", "Loading Seats...");
    row.seatSelectionSummaryLabel.text =
        hvLocalizedStringForKey("hv_seat_summary_loading", "Seat map is loading...");
    row.seatLUTStatusDot.hidden = true;
    layoutSeatSelectionLoadingIndicator();
    return;
  }

  const SeatNames names = storedSeatNames(venueId);
  const bool hasSelection = names.areComplete();
  if (!seatLUTPrecomputeInProgress_) {
    seatLUTReady_ = storage_.persistedSeatLUTReadyForVenueId(venueId);
  }
  if (!hasSelection) {
    button.title = hvLocalizedStringForKey("hv_seat_button_select", "Select Seat");
    row.seatSelectionSummaryLabel.text =
        hvLocalizedStringForKey("hv_seat_summary_none", "No seat selected");
  } else {
    button.title =
        isStandingName(names.section)
            ? hvLocalizedStringForKey("hv_seat_button_change_location", "Change Location")
            : hvLocalizedStringForKey("hv_seat_button_change_seat", "Change Seat");
    row.seatSelectionSummaryLabel.text = summaryOf(names);
  }
  updateSeatLUTStatusDotForHasSelection(hasSelection);
  layoutSeatLUTStatusDotRelativeToSummaryLabel();
  layoutSeatSelectionLoadingIndicator();
}

// Status dot

void HalvoraStatusViewController::updateSeatLUTStatusDotForHasSelection(bool hasSelection) {
  StatusDot& dot = views_.seatSelectionSummaryRow.seatLUTStatusDot;
  dot.hidden = !hasSelection;
  if (!hasSelection) {
    dot.pulseBegan.reset();
    return;
  }
  dot.colour = !seatLUTPrecomputeInProgress_ && seatLUTReady_ ? kDotGreen : kDotAmber;
  layoutSeatLUTStatusDotRelativeToSummaryLabel();
}

void HalvoraStatusViewController::pulseSeatLUTStatusDot() {
  StatusDot& dot = views_.seatSelectionSummaryRow.seatLUTStatusDot;
  if (!dot.hidden) dot.pulseBegan = platform_.runLoop.now();
}

void HalvoraStatusViewController::refreshDot() {
  updateSeatLUTStatusDotForHasSelection(storedSeatNames(resolvedVenueId()).areComplete());
}

void HalvoraStatusViewController::layoutSeatLUTStatusDotRelativeToSummaryLabel() {
  views_.seatSelectionSummaryRow.seatLUTStatusDot.frame = besideSummaryText(2 * kDotCornerRadius);
}

void HalvoraStatusViewController::layoutSeatSelectionLoadingIndicator() {
  views_.seatSelectionSummaryRow.seatSelectionLoadingIndicator.frame =
      besideSummaryText(kLoadingIndicatorSize);
}

Rect HalvoraStatusViewController::besideSummaryText(double size) const {
  if (!face_.summaryTextFrame) return {};
  const Rect text =
      face_.summaryTextFrame(views_.seatSelectionSummaryRow.seatSelectionSummaryLabel);
  return {text.x + text.width + kSummaryGap, text.y + (text.height - size) / 2, size, size};
}

// Precompute progress

void HalvoraStatusViewController::showSeatLUTPrecomputeProgressWithDone(
    int done, int total, std::string_view /*mapId*/) {
  if (total < 1) return;
  const Update update(*this);
  const bool hasGrown = done > 0 && seatLUTPrecomputeInProgress_ && done > seatLUTLastDone_;
  seatLUTPrecomputeInProgress_ = true;
  seatLUTLastDone_ = std::max(done, 0);
  refreshDot();
  if (hasGrown) pulseSeatLUTStatusDot();
}

void HalvoraStatusViewController::completeSeatLUTPrecomputeWithDone(int done, int total) {
  const Update update(*this);
  const bool wasReady = seatLUTReady_;
  seatLUTReady_ = done >= total && total >= 1;
  seatLUTPrecomputeInProgress_ = false;
  seatLUTLastDone_ = -1;
  refreshDot();
  if (seatLUTReady_ && !wasReady) pulseSeatLUTStatusDot();
}

void HalvoraStatusViewController::hideSeatLUTPrecomputeProgress() {
  const Update update(*this);
  ++precompute_;
  seatLUTPrecomputeInProgress_ = false;
  seatLUTReady_ = false;
  seatLUTLastDone_ = -1;
  refreshDot();
}

}  // namespace halvora
