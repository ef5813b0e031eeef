// SPDX-License-Identifier: Apache-2.0
#include "seats/wizard_controller.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "seats/seat_names.h"
#include "seats/wizard_texts.h"

namespace halvora {

namespace {

using namespace seat_selector;

constexpr std::int64_t kSectionStep = 0;
constexpr std::int64_t kRowStep = 1;
constexpr std::int64_t kSeatStep = 2;
constexpr std::string_view kNoName = "--";

bool isIndexOf(std::int64_t index, std::size_t size) {
  return index >= 0 && static_cast<std::uint64_t>(index) < size;
}

std::int64_t indexNamed(const SeatSelectorItems& items, std::string_view name) {
  for (std::size_t index = 0; index < items.size(); ++index) {
    if (items.displayName(index) == name) return static_cast<std::int64_t>(index);
  }
  return -1;
}

template <class Row>
const Row& ofStep(const Row (&rows)[3], std::int64_t step) {
  return rows[std::clamp(step, kSectionStep, kSeatStep)];
}

}  // namespace

WizardController::WizardController(const Bundle& kitBundle, StandingOverlay& overlay,
                                   FontLookup hasFont, SeatSelectorInputs inputs)
    : kitBundle_(kitBundle),
      overlay_(overlay),
      hasFont_(std::move(hasFont)),
      inputs_(std::move(inputs)) {}

void WizardController::viewDidLoad() {
  currentStep_ = kSectionStep;
  selectedSectionIndex_ = selectedRowIndex_ = selectedSeatIndex_ = -1;
  sortSectionsWithStandingFirst();
  applyInitialSelectionIfAvailable();
  loaded_ = progress();
  styleTexts();
  styleButtons();
  styleStandingViews();
  updateWizardUI();
}

// The drag area has a size only now.
void WizardController::viewDidLayoutSubviews(Size dragArea) {
  dragArea_ = dragArea;
  ensureStandingSelectionInitialized();
  updateStandingPlace();
}

void WizardController::sortSectionsWithStandingFirst() {
  sectionOrder_.resize(inputs_.map ? inputs_.map->sectionCount() : 0);
  std::iota(sectionOrder_.begin(), sectionOrder_.end(), std::size_t{0});
  std::stable_partition(sectionOrder_.begin(), sectionOrder_.end(), [this](std::size_t section) {
    return isStandingName(inputs_.map->section(section).displayName());
  });
}

// The map may have changed since the choice was stored: it counts as far as it is still there. Row
// and seat of a standing area are those that its plan had picked, so they are found like any other.
void WizardController::applyInitialSelectionIfAvailable() {
  const SeatNames& stored = inputs_.initialSelection;
  if (!stored.areComplete()) return;
  selectedSectionIndex_ = indexNamed(sections(), stored.section);
  selectedRowIndex_ = indexNamed(currentRows(), stored.row);
  selectedSeatIndex_ = indexNamed(currentSeats(), stored.seat);
}

std::optional<SeatMap::SectionItem> WizardController::sectionAtIndex(std::int64_t index) const {
  if (!isIndexOf(index, sectionOrder_.size())) return std::nullopt;
  return inputs_.map->section(sectionOrder_[static_cast<std::size_t>(index)]);
}

std::optional<SeatMap::RowItem> WizardController::selectedRow() const {
  const auto section = sectionAtIndex(selectedSectionIndex_);
  if (!section || !isIndexOf(selectedRowIndex_, section->rowCount())) return std::nullopt;
  return section->row(static_cast<std::size_t>(selectedRowIndex_));
}

std::size_t SeatSelectorItems::size() const {
  if (step_ == kSectionStep) return wizard_.sectionOrder_.size();
  if (step_ == kRowStep) {
    const auto section = wizard_.sectionAtIndex(wizard_.selectedSectionIndex_);
    return section ? section->rowCount() : 0;
  }
  const auto row = wizard_.selectedRow();
  return row ? row->seatCount() : 0;
}

std::string_view SeatSelectorItems::displayName(std::size_t index) const {
  if (step_ == kSectionStep) {
    return wizard_.sectionAtIndex(static_cast<std::int64_t>(index))->displayName();
  }
  if (step_ == kRowStep) {
    return wizard_.sectionAtIndex(wizard_.selectedSectionIndex_)->row(index).displayName();
  }
  return wizard_.selectedRow()->seat(index).displayName;
}

std::int64_t WizardController::selectedIndexForStep(std::int64_t step) const {
  if (step == kSectionStep) return selectedSectionIndex_;
  return step == kRowStep ? selectedRowIndex_ : selectedSeatIndex_;
}

bool WizardController::isStandingSectionAtIndex(std::int64_t index) const {
  const auto section = sectionAtIndex(index);
  return section && isStandingName(section->displayName());
}

bool WizardController::isStandingStepActive() const {
  return currentStep_ == kRowStep && isStandingSectionAtIndex(selectedSectionIndex_);
}

std::int64_t WizardController::maxStepForCurrentSelection() const {
  return isStandingSectionAtIndex(selectedSectionIndex_) ? kRowStep : kSeatStep;
}

std::string WizardController::selectedNameForStep(std::int64_t step) const {
  const SeatSelectorItems items(*this, step);
  const std::int64_t index = selectedIndexForStep(step);
  if (!isIndexOf(index, items.size())) return std::string(kNoName);
  const std::string_view name = items.displayName(static_cast<std::size_t>(index));
  return std::string(name.empty() ? kNoName : name);
}

std::string WizardController::wizardSeatSummaryWithSection(
    std::optional<std::string_view> section, std::optional<std::string_view> row,
    std::optional<std::string_view> seat) const {
  return formatted(text(kSummaryFormat),
                   {section.value_or(kNoName), row.value_or(kNoName), seat.value_or(kNoName)});
}

std::string WizardController::titleForPickerRow(std::int64_t row) const {
  if (row == 0) return text(ofStep(kPlaceholders, currentStep_));
  const SeatSelectorItems items = itemsForCurrentStep();
  const std::int64_t index = row > 0 ? row - 1 : -1;
  if (!isIndexOf(index, items.size())) return {};
  if (currentStep_ == kSectionStep && isStandingSectionAtIndex(index)) return text(kStandingLabel);
  const std::string_view name = items.displayName(static_cast<std::size_t>(index));
  if (!name.empty()) return std::string(name);
  return formatted(text(ofStep(kItemFormats, currentStep_)), {std::to_string(row)});
}

void WizardController::pickerDidSelectRow(std::int64_t row) {
  if (isDismissed_) return;
  const std::int64_t index = row > 0 ? row - 1 : -1;
  if (currentStep_ == kSectionStep) {
    if (index != selectedSectionIndex_) selectedRowIndex_ = selectedSeatIndex_ = -1;
    selectedSectionIndex_ = index;
  } else if (currentStep_ == kRowStep) {
    selectedRowIndex_ = index;
    selectedSeatIndex_ = -1;
  } else {
    selectedSeatIndex_ = index;
  }
  updateWizardUIAndReloadPicker(false);
}

void WizardController::backTapped() {
  if (isDismissed_) return;
  if (currentStep_ > kSectionStep) --currentStep_;
  updateWizardUI();
}

void WizardController::nextTapped() {
  if (isDismissed_) return;
  // Where somebody stands is known only once they stand there.
  if (currentStep_ == kSectionStep && isStandingSectionAtIndex(selectedSectionIndex_) &&
      !inputs_.hasLiveVenueSignal) {
    presentedAlert_ = Alert{text(kStandingAlertTitle), text(kStandingAlertMessage), text(kOk)};
    return;
  }
  if (currentStep_ < maxStepForCurrentSelection()) {
    ++currentStep_;
    updateWizardUI();
  } else {
    confirm();
  }
}

void WizardController::confirm() {
  const auto section = sectionAtIndex(selectedSectionIndex_);
  const auto row = selectedRow();
  if (!section || !row || !isIndexOf(selectedSeatIndex_, row->seatCount())) return;
  // Taken out first, so that a callback that comes back here is not called a second time.
  auto onSeatSelected = std::exchange(inputs_.onSeatSelected, nullptr);
  const SeatMap::SeatItem seat = row->seat(static_cast<std::size_t>(selectedSeatIndex_));
  // The items are the map's, which may go with the wizard.
  const auto map = inputs_.map;
  const Witness self(life_);
  try {
    if (onSeatSelected) onSeatSelected(*section, *row, seat);
  } catch (...) {
    // What could not be kept can be confirmed again.
    if (!self.isGone()) inputs_.onSeatSelected = std::move(onSeatSelected);
    throw;
  }
  if (!self.isGone()) dismiss();
}

void WizardController::dismiss() {
  presentedAlert_.reset();
  isDismissed_ = true;
}

}  // namespace halvora
