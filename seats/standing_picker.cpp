// SPDX-License-Identifier: Apache-2.0
// The seat selector's standing step: a place on the plan of a standing area becomes the row and
// seat of the nearest seat that the map lists there.
#include <optional>

#include "seats/halvora_seat_selector_view_controller.h"

namespace halvora {

namespace {

constexpr double kStageHeight = 64;
constexpr double kStageGap = 10;
constexpr double kMiddle = 0.5;

}  // namespace

// A plan shows its own stage.
void HalvoraSeatSelectorViewController::updateStandingOverlayPresentation() {
  views_.standingOverlayImageView.image = overlay_.standingOverlayImageForVenueId(inputs_.venueId);
  const bool hasPlan = views_.standingOverlayImageView.image != nullptr;
  views_.standingStageLabel.hidden = hasPlan;
  views_.standingStageHeightConstraint = hasPlan ? 0 : kStageHeight;
  views_.standingDragAreaTopConstraint = hasPlan ? 0 : kStageGap;
}

std::vector<StandingSeatPoint>
HalvoraSeatSelectorViewController::buildStandingSeatPointsForSectionIndex(
    std::int64_t index) const {
  const auto section = sectionAtIndex(index);
  return section ? standingSeatPointsOf(*section) : std::vector<StandingSeatPoint>{};
}

void HalvoraSeatSelectorViewController::ensureStandingSelectionInitialized() {
  if (!isStandingStepActive()) return;
  if (standingSeatPointsSection_ != selectedSectionIndex_) {
    standingSeatPoints_ = buildStandingSeatPointsForSectionIndex(selectedSectionIndex_);
    standingSeatPointsSection_ = selectedSectionIndex_;
  }
  const StandingSeatPoint* selected =
      standingSeatAt(standingSeatPoints_, selectedRowIndex_, selectedSeatIndex_);
  if (selected == nullptr) {
    selectNearestStandingSeatForNormalizedX(kMiddle, kMiddle);
  } else {
    showStandingDotAt(*selected);
  }
}

// The dot goes to the seat and not to the finger.
void HalvoraSeatSelectorViewController::selectNearestStandingSeatForNormalizedX(double x,
                                                                                double y) {
  const StandingSeatPoint* nearest = nearestStandingSeat(standingSeatPoints_, x, y);
  selectedRowIndex_ = nearest != nullptr ? nearest->rowIndex : -1;
  selectedSeatIndex_ = nearest != nullptr ? nearest->seatIndex : -1;
  if (nearest != nullptr) {
    showStandingDotAt(*nearest);
  } else {
    views_.standingDotView.hidden = true;
  }
}

void HalvoraSeatSelectorViewController::showStandingDotAt(const StandingSeatPoint& point) {
  views_.standingDotView.hidden = false;
  updateStandingDotPositionForNormalizedX(point.xNorm, point.yNorm);
}

void HalvoraSeatSelectorViewController::updateStandingDotPositionForNormalizedX(double x,
                                                                                double y) {
  StandingDotView& dot = views_.standingDotView;
  dot.center = standingDotCenter(dragArea_, dot.width, x, y).value_or(dot.center);
}

void HalvoraSeatSelectorViewController::handleStandingTouch(Point location) {
  if (isDismissed_ || !isStandingStepActive()) return;
  if (!(dragArea_.width > 0) || !(dragArea_.height > 0)) return;
  selectNearestStandingSeatForNormalizedX(location.x / dragArea_.width,
                                          location.y / dragArea_.height);
  updateWizardUIAndReloadPicker(false);
}

}  // namespace halvora
