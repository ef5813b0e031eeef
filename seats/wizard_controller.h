// SPDX-License-Identifier: Apache-2.0
// The seat selector behind its public face, and what its tests look at: the map, the step and what
// is selected so far. Nothing is stored. Main thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "halvora/platform/bundle.h"
#include "halvora/witness.h"
#include "halvora/wizard.h"
#include "seats/seat_finder.h"
#include "seats/seat_map.h"
#include "seats/seat_storage.h"
#include "seats/standing_overlay.h"
#include "seats/standing_plan.h"

namespace halvora {

namespace seat_selector {
struct Text;
}

/// What the presenter hands over.
struct SeatSelectorInputs {
  using SeatCallback = std::function<void(const SeatMap::SectionItem&, const SeatMap::RowItem&,
                                          const SeatMap::SeatItem&)>;

  /// The venue's map; null for none.
  std::shared_ptr<const SeatMap> map;
  /// Called once, on confirmation, before the wizard is dismissed. May destroy the wizard.
  SeatCallback onSeatSelected;
  /// As it was stored; of no effect unless it is complete.
  SeatNames initialSelection;
  /// For the standing area's plan alone.
  std::int64_t venueId = 0;
  /// Whether the phone has heard one of the venue's transmitters.
  bool hasLiveVenueSignal = false;
  MaybeColour buttonBackgroundColor;
  MaybeColour buttonTitleColor;
  /// Empty names mean the system's font.
  std::string buttonTitleFontName;
  double buttonTitleFontSize = 16;
  std::string statusTextFontName;
};

/// How far the user has come, as indices; -1 means none.
struct SeatSelectorProgress {
  std::int64_t step = 0;
  std::int64_t section = -1;
  std::int64_t row = -1;
  std::int64_t seat = -1;
  friend bool operator==(const SeatSelectorProgress&, const SeatSelectorProgress&) = default;
};

class WizardController;

/// The sections, the rows of the selected section or the seats of the selected row, by their
/// display names. What it lists follows the selection.
class SeatSelectorItems {
 public:
  SeatSelectorItems(const WizardController& wizard, std::int64_t step)
      : wizard_(wizard), step_(step) {}
  std::size_t size() const;
  bool empty() const { return size() == 0; }
  /// As long as the map lives.
  std::string_view displayName(std::size_t index) const;

 private:
  const WizardController& wizard_;
  std::int64_t step_;
};

class WizardController final : public HalvoraSeatSelectorViewController {
 public:
  /// Bundle and overlay must outlive the wizard. Without `hasFont` all texts are in the system's
  /// font.
  WizardController(const Bundle& kitBundle, StandingOverlay& overlay, FontLookup hasFont,
                   SeatSelectorInputs inputs);

  /// Once, before anything else.
  void viewDidLoad();
  void viewDidLayoutSubviews(Size dragArea) override;

  void cancelTapped() override { dismiss(); }
  void leaveTapped() override;
  void sayWhatIsMissing() override;
  bool findSeat(std::string_view line) override;
  void backTapped() override;
  void nextTapped() override;
  void alertButtonTapped() override { presentedAlert_.reset(); }
  void pickerDidSelectRow(std::int64_t row) override;
  void handleStandingTap(Point location) override { handleStandingTouch(location); }
  void handleStandingDrag(Point location) override { handleStandingTouch(location); }
  void moveStandingDot(PlanDirection direction, bool isFar) override;

  /// What is to be seen, recomputed from the state; every action does it.
  void updateWizardUI() { updateWizardUIAndReloadPicker(true); }

  const SeatSelectorViews& views() const override { return views_; }
  std::size_t numberOfPickerRows() const override { return itemsForCurrentStep().size() + 1; }
  std::string titleForPickerRow(std::int64_t row) const override;
  std::string detailForPickerRow(std::int64_t row) const override;
  const std::optional<Alert>& presentedAlert() const override { return presentedAlert_; }
  bool isDismissed() const override { return isDismissed_; }

  SeatSelectorProgress progress() const {
    return {currentStep_, selectedSectionIndex_, selectedRowIndex_, selectedSeatIndex_};
  }
  /// Goes on where another wizard with the same map was left. After `viewDidLoad`.
  void resume(const SeatSelectorProgress& progress);
  bool hasUnconfirmedChoice() const;
  /// What was found of a ticket's seat, or why it was not.
  bool show(const FoundSeat& found);

  // State. An index of -1 means none.
  std::int64_t currentStep() const { return currentStep_; }
  std::int64_t selectedSectionIndex() const { return selectedSectionIndex_; }
  std::int64_t selectedRowIndex() const { return selectedRowIndex_; }
  std::int64_t selectedSeatIndex() const { return selectedSeatIndex_; }
  const std::vector<StandingSeatPoint>& standingSeatPoints() const { return standingSeatPoints_; }

  const SeatSelectorInputs& inputs() const { return inputs_; }
  /// The standing ones first.
  SeatSelectorItems sections() const { return {*this, 0}; }
  SeatSelectorItems currentRows() const { return {*this, 1}; }
  SeatSelectorItems currentSeats() const { return {*this, 2}; }
  SeatSelectorItems itemsForCurrentStep() const { return {*this, currentStep_}; }
  bool isStandingSectionAtIndex(std::int64_t index) const;
  bool isStandingStepActive() const;
  std::int64_t maxStepForCurrentSelection() const;
  /// "--" where nothing is selected.
  std::string selectedNameForStep(std::int64_t step) const;
  /// Without a name: "--".
  std::string wizardSeatSummaryWithSection(std::optional<std::string_view> section,
                                           std::optional<std::string_view> row,
                                           std::optional<std::string_view> seat) const;
  std::string localizedStringForKey(std::string_view key, std::string_view fallback) const override;
  Font statusFontWithSize(double size, FontWeight weight) const;
  std::vector<StandingSeatPoint> buildStandingSeatPointsForSectionIndex(std::int64_t index) const;

 private:
  friend class SeatSelectorItems;

  void sortSectionsWithStandingFirst();
  void applyInitialSelectionIfAvailable();
  void styleTexts();
  void styleButtons();
  void styleStandingViews();
  std::string text(const seat_selector::Text& text) const;

  void updateWizardUIAndReloadPicker(bool reload);
  void updateLabels();
  void updateButtons();
  void updatePicker(bool reload);
  void confirm();
  void say(std::string message, bool asksToLeave = false);
  std::string missingText(const FoundSeat& found) const;
  /// What stands over the wizard goes with it.
  void dismiss();
  std::optional<SeatMap::SectionItem> sectionAtIndex(std::int64_t index) const;
  std::optional<SeatMap::RowItem> selectedRow() const;
  std::int64_t selectedIndexForStep(std::int64_t step) const;

  void updateStandingOverlayPresentation();
  void ensureStandingSelectionInitialized();
  const StandingSeatPoint* chosenPlace() const;
  void updateStandingPlace();
  void selectNearestStandingSeatForNormalizedX(double x, double y);
  void updateStandingDotPositionForNormalizedX(double x, double y);
  void showStandingDotAt(const StandingSeatPoint& point);
  void handleStandingTouch(Point location);

  const Bundle& kitBundle_;
  StandingOverlay& overlay_;
  FontLookup hasFont_;
  SeatSelectorInputs inputs_;

  /// The map's own indices of the sections, in the wizard's order.
  std::vector<std::size_t> sectionOrder_;
  std::int64_t currentStep_ = 0;
  std::int64_t selectedSectionIndex_ = -1;
  std::int64_t selectedRowIndex_ = -1;
  std::int64_t selectedSeatIndex_ = -1;
  std::vector<StandingSeatPoint> standingSeatPoints_;
  /// The section that the points are of: a map does not change, so they are made once a section.
  std::int64_t standingSeatPointsSection_ = -1;
  Size dragArea_;
  SeatSelectorViews views_;
  std::optional<Alert> presentedAlert_;
  /// What was selected when the wizard loaded.
  SeatSelectorProgress loaded_;
  /// The message is the question whether to leave.
  bool isAskedToLeave_ = false;
  bool isDismissed_ = false;
  Witnessed life_;
};

}  // namespace halvora
