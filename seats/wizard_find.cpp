// SPDX-License-Identifier: Apache-2.0
// The seat selector's shorter ways: a seat from one line, a choice that is taken up again, and what
// it says when it cannot do what it is asked.
#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

#include "seats/seat_names.h"
#include "seats/wizard_controller.h"
#include "seats/wizard_texts.h"

namespace halvora {

using namespace seat_selector;

namespace {

constexpr std::int64_t kLastStep = 2;

std::int64_t orNone(const std::optional<std::size_t>& index) {
  return index ? static_cast<std::int64_t>(*index) : -1;
}

}  // namespace

void WizardController::say(std::string message, bool asksToLeave) {
  views_.message = std::move(message);
  isAskedToLeave_ = asksToLeave;
}

void WizardController::sayWhatIsMissing() {
  static_assert(std::size(kChooseFirst) == kLastStep + 1);
  if (!isDismissed_) say(text(kChooseFirst[std::clamp<std::int64_t>(currentStep_, 0, kLastStep)]));
}

bool WizardController::hasUnconfirmedChoice() const {
  SeatSelectorProgress chosen = progress();
  chosen.step = loaded_.step;
  return chosen.section >= 0 && chosen != loaded_;
}

void WizardController::leaveTapped() {
  if (isDismissed_) return;
  if (isAskedToLeave_ || !hasUnconfirmedChoice()) return dismiss();
  say(text(kLeave), true);
}

void WizardController::resume(const SeatSelectorProgress& progress) {
  currentStep_ = progress.step;
  selectedSectionIndex_ = progress.section;
  selectedRowIndex_ = progress.row;
  selectedSeatIndex_ = progress.seat;
  updateWizardUI();
}

bool WizardController::findSeat(std::string_view line) {
  if (isDismissed_ || !inputs_.map) return false;
  return show(SeatFinder(*inputs_.map, ticketWords(kitBundle_)).line(line));
}

std::string WizardController::detailForPickerRow(std::int64_t row) const {
  if (currentStep_ != 0 || row < 1 || !isStandingSectionAtIndex(row - 1)) return {};
  return std::string(sections().displayName(static_cast<std::size_t>(row - 1)));
}

bool WizardController::show(const FoundSeat& found) {
  if (found.missing) {
    say(missingText(found));
    return false;
  }
  const auto place = std::find(sectionOrder_.begin(), sectionOrder_.end(), found.section);
  const bool isStanding = isStandingSectionAtIndex(place - sectionOrder_.begin());
  selectedSectionIndex_ = std::distance(sectionOrder_.begin(), place);
  selectedRowIndex_ = isStanding && !found.isComplete() ? -1 : orNone(found.row);
  selectedSeatIndex_ = found.isComplete() ? orNone(found.seat) : -1;
  currentStep_ = 0;
  if (isStanding) {
    // By the button's own way, which knows when a place can be chosen.
    updateWizardUI();
    nextTapped();
  } else {
    currentStep_ = found.row ? kLastStep : 1;
    updateWizardUI();
  }
  return true;
}

// Names as the user reads them, but without the word that the sentence has already.
std::string WizardController::missingText(const FoundSeat& found) const {
  static_assert(std::size(kNotFound) == static_cast<std::size_t>(SeatPart::seat) + 1);
  const Text& format = kNotFound[static_cast<std::size_t>(*found.missing)];
  const auto bare = [this](SeatPart part, std::string_view name) {
    return withoutTicketWord(ticketWords(kitBundle_), part, name);
  };
  const std::string asked = bare(*found.missing, found.missingName);
  if (*found.missing == SeatPart::section) return formatted(text(format), {asked});
  const SeatMap::SectionItem section = inputs_.map->section(*found.section);
  if (*found.missing == SeatPart::row) {
    return formatted(text(format),
                     {asked, bare(SeatPart::section, section.displayName()),
                      bare(SeatPart::row, section.row(0).displayName()),
                      bare(SeatPart::row, section.row(section.rowCount() - 1).displayName())});
  }
  const SeatMap::RowItem row = section.row(*found.row);
  return formatted(text(format), {asked, bare(SeatPart::row, row.displayName()),
                                  bare(SeatPart::seat, row.seat(0).displayName),
                                  bare(SeatPart::seat, row.seat(row.seatCount() - 1).displayName)});
}

}  // namespace halvora
