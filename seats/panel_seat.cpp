// SPDX-License-Identifier: Apache-2.0
// The panel's seat: its map, the wizard, what is stored of it, and the dot that tells of its
// tables.
#include <algorithm>
#include <utility>

#include "halvora/platform/bundle.h"
#include "halvora/platform/run_loop.h"
#include "halvora/platform/wall_clock.h"
#include "seats/panel_controller.h"
#include "seats/panel_looks.h"
#include "seats/seat_names.h"
#include "text/defaults_values.h"

namespace halvora {

namespace {

struct PresentedWizard {
  PresentedWizard(std::shared_ptr<StandingOverlay> standingOverlay, const Bundle& kit,
                  const FontLookup& hasFont, SeatSelectorInputs inputs)
      : overlay(std::move(standingOverlay)), wizard(kit, *overlay, hasFont, std::move(inputs)) {}

  std::shared_ptr<StandingOverlay> overlay;
  WizardController wizard;
};

}  // namespace

// Seat map

void PanelController::preloadSeatMapForVenueId(std::int64_t venueId) {
  act([&] { seatMap_.preloadSeatMapForVenueId(venueId); });
}

void PanelController::seatMapLoaded() {
  act([this] {
    const Witness self(life_);
    updateStatus();
    if (self.isGone()) return;
    const bool isAskedFor = std::exchange(missingMapVenueId_, 0) == seatMap_.seatMapVenueId();
    if (isAskedFor && seatMap_.seatMapSections()->isEmpty() && !isPresenting()) {
      presentSeatMapMissingAlert();
    }
  });
}

void PanelController::openSeatSelector() {
  act([this] {
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
  });
}

void PanelController::presentSeatMapMissingAlert() {
  presentedAlert_ = Alert{hvLocalizedStringForKey("hv_seat_map_missing_title", "Seat Map Missing"),
                          hvLocalizedStringForKey("hv_seat_map_missing_message",
                                                  "No valid map.json parsed for current venue."),
                          hvLocalizedStringForKey("hv_common_ok", "OK")};
}

void PanelController::presentSeatSelector(std::int64_t venueId) {
  SeatSelectorInputs inputs;
  inputs.venueId = venueId;
  inputs.hasLiveVenueSignal = integerForKey(platform_.defaults, "venueID") > 0;
  inputs.map = seatMap_.seatMapSections();
  inputs.initialSelection = storedSeatNames(venueId);
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
  const auto presented = std::make_shared<PresentedWizard>(standingOverlay_, platform_.bundles->kit,
                                                           face_.hasFont, std::move(inputs));
  // First: half of one would be on screen for good.
  presented->wizard.viewDidLoad();
  const auto unfinished = std::exchange(unfinished_, std::nullopt);
  if (unfinished && unfinished->map == presented->wizard.inputs().map) {
    presented->wizard.resume(unfinished->progress);
  }
  wizard_ = {presented, &presented->wizard};
}

// A seat of another day

std::int64_t PanelController::today() const {
  const DayComponents day = platform_.calendar->componentsOf(platform_.wallClock->now());
  return (std::int64_t{day.year} * 100 + day.month) * 100 + day.day;
}

// A seat of which no day is known was chosen before anybody asked: that counts as another day.
void PanelController::showSameSeat(std::int64_t venueId) {
  const SeatNames names = storedSeatNames(venueId);
  views_.sameSeatLabel.hidden = !fields_.asksOnAnotherDay || !names.areComplete() ||
                                storage_.seatDayForVenueId(venueId) == today();
  if (views_.sameSeatLabel.hidden) return;
  views_.sameSeatLabel.text =
      isStandingName(names.section)
          ? formatted(hvLocalizedStringForKey("hv_seat_same_standing_format", "Still %@?"),
                      {names.section})
          : formatted(hvLocalizedStringForKey("hv_seat_same_format", "Still %@, %@, %@?"),
                      {names.section, names.row, names.seat});
}

void PanelController::keepSeat() {
  act([this] {
    storage_.setSeatDay(today(), resolvedVenueId());
    refresh();
  });
}

// A seat of a ticket

void PanelController::setSeat(std::string_view section, std::string_view row,
                              std::string_view seat) {
  act([&] {
    ticketSeat_ = TicketSeat{std::string(section), std::string(row), std::string(seat)};
    refresh();
  });
}

bool PanelController::openLink(std::string_view link) {
  const std::optional<TicketSeat> seat = ticketSeatOf(link);
  if (seat) setSeat(seat->section, seat->row, seat->seat);
  return seat.has_value();
}

// Where somebody stands is known only once they stand there, so that is left to the wizard, as is
// everything that the map has not got.
void PanelController::placeTicketSeat(std::int64_t venueId) {
  if (!ticketSeat_ || !hasSeatControls(venueId)) return;
  const TicketSeat asked = *std::exchange(ticketSeat_, std::nullopt);
  const auto map = seatMap_.seatMapSections();
  const SeatFinder finder(*map, ticketWords(platform_.bundles->kit));
  const FoundSeat found = finder.seat(asked);
  if (found.isComplete() && !isStandingName(map->section(*found.section).displayName())) {
    const SeatMap::SectionItem section = map->section(*found.section);
    const SeatMap::RowItem row = section.row(*found.row);
    const SeatMap::SeatItem seat = row.seat(*found.seat);
    seatSelected({std::string(section.displayName()), std::string(row.displayName()),
                  std::string(seat.displayName)},
                 {seat.xPos, seat.yPos});
    return;
  }
  presentSeatSelector(venueId);
  wizard_->show(found);
}

void PanelController::seatSelected(const SeatNames& names, SeatPoint seat) {
  act([&] {
    unfinished_.reset();
    const std::int64_t resolved = resolvedVenueId();
    const std::int64_t venueId = resolved > 0 ? resolved : seatMap_.seatMapVenueId();
    storage_.setSeatDefaults(names, seat);
    storage_.persistSeatSelectionForVenueId(venueId, names, seat);
    if (fields_.asksOnAnotherDay) storage_.setSeatDay(today(), venueId);
    showSeat(venueId);
    platform_.defaults->synchronize();
    tables_.start(venueId, seat);
  });
}

SeatNames PanelController::storedSeatNames(std::int64_t venueId) const {
  const DefaultsDictionary* record = storage_.seatSelectionForVenueId(venueId);
  return record != nullptr ? seatNamesOf(*record) : SeatNames();
}

// What is seen of it

void PanelController::updateSeatSelectionUIForVenueId(std::int64_t venueId) {
  act([&] { showSeat(venueId); });
}

void PanelController::showSeat(std::int64_t venueId) {
  const Bundle& kit = platform_.bundles->kit;
  if (seatMap_.isLoading(venueId)) {
    showSeatLoading(kit, views_);
  } else {
    const SeatNames names = storedSeatNames(venueId);
    tables_.readStored(venueId);
    showSeatNames(names, kit, views_);
    showDot(names.areComplete());
  }
  layOutSummary();
}

void PanelController::showDot(bool hasSelection) {
  StatusDot& dot = views_.seatSelectionSummaryRow.seatLUTStatusDot;
  dot.hidden = !hasSelection;
  if (!hasSelection) {
    dot.pulseBegan.reset();
  } else if (!tables_.isInProgress() && tables_.isReady()) {
    dot.colour = kDotGreen;
    dot.spoken = hvLocalizedStringForKey("hv_seat_dot_ready", "Your seat is ready for the show");
  } else {
    dot.colour = kDotAmber;
    dot.spoken = hvLocalizedStringForKey("hv_seat_dot_preparing", "Your seat is being prepared");
  }
}

void PanelController::refreshDot(bool isPulseDue) {
  showDot(storedSeatNames(resolvedVenueId()).areComplete());
  layOutSummary();
  StatusDot& dot = views_.seatSelectionSummaryRow.seatLUTStatusDot;
  if (isPulseDue && !dot.hidden) dot.pulseBegan = platform_.runLoop->now();
}

void PanelController::layOutSummary() {
  SeatSelectionSummaryRow& row = views_.seatSelectionSummaryRow;
  if (!face_.summaryTextFrame) return;
  const Rect text = face_.summaryTextFrame(row.seatSelectionSummaryLabel);
  const auto beside = [&text](double size) {
    return Rect{text.x + text.width + kSummaryGap, text.y + (text.height - size) / 2, size, size};
  };
  row.seatLUTStatusDot.frame = beside(2 * kDotCornerRadius);
  row.seatSelectionLoadingIndicator.frame = beside(kLoadingIndicatorSize);
}

// Its tables

void PanelController::applyMapVersionPolicyForVenueId(std::int64_t venueId) {
  act([&] {
    const auto versions = seatMap_.mapVersionInfoForVenueId(venueId);
    if (versions && !engineLife_.isGone()) versionPolicy_.apply(venueId, *versions);
  });
}

void PanelController::startSeatLUTPrecomputeForVenueId(std::int64_t venueId, SeatPoint seat) {
  act([&] { tables_.start(venueId, seat); });
}

void PanelController::tablesTold(const TableRunNews& news) {
  act([&] {
    switch (news.kind) {
      case TableRunNews::Kind::progress:
        showSeatLUTPrecomputeProgressWithDone(news.done, news.total, "");
        updateStatus();
        break;
      case TableRunNews::Kind::end:
        completeSeatLUTPrecomputeWithDone(news.done, news.total);
        updateStatus();
        break;
      case TableRunNews::Kind::givenUp:
        hideSeatLUTPrecomputeProgress();
        break;
    }
  });
}

void PanelController::showSeatLUTPrecomputeProgressWithDone(int done, int total,
                                                            std::string_view /*mapId*/) {
  if (total < 1) return;
  act([&] { refreshDot(tables_.progressed(done)); });
}

void PanelController::completeSeatLUTPrecomputeWithDone(int done, int total) {
  act([&] { refreshDot(tables_.ended(done, total)); });
}

void PanelController::hideSeatLUTPrecomputeProgress() {
  act([this] {
    tables_.forget();
    refreshDot(false);
  });
}

}  // namespace halvora
