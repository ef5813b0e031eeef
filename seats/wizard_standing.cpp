// SPDX-License-Identifier: Apache-2.0
// The seat selector's standing step: a place on the plan of a standing area becomes the row and
// seat of the nearest seat that the map lists there.
#include <algorithm>
#include <cmath>
#include <optional>
#include <string>

#include "seats/wizard_controller.h"
#include "seats/wizard_texts.h"

namespace halvora {

namespace {

constexpr double kStageHeight = 64;
constexpr double kStageGap = 10;
constexpr double kMiddle = 0.5;
/// Of the plan's longer side: how far a long step goes.
constexpr double kFarStep = 0.1;

}  // namespace

// A plan shows its own stage.
void WizardController::updateStandingOverlayPresentation() {
  views_.standingOverlayImage = overlay_.standingOverlayImageForVenueId(inputs_.venueId);
  const bool hasPlan = views_.standingOverlayImage != nullptr;
  views_.standingStageLabel.hidden = hasPlan;
  views_.standingStageHeightConstraint = hasPlan ? 0 : kStageHeight;
  views_.standingDragAreaTopConstraint = hasPlan ? 0 : kStageGap;
}

std::vector<StandingSeatPoint> WizardController::buildStandingSeatPointsForSectionIndex(
    std::int64_t index) const {
  const auto section = sectionAtIndex(index);
  return section ? standingSeatPointsOf(*section) : std::vector<StandingSeatPoint>{};
}

void WizardController::ensureStandingSelectionInitialized() {
  if (!isStandingStepActive()) return;
  if (standingSeatPointsSection_ != selectedSectionIndex_) {
    standingSeatPoints_ = buildStandingSeatPointsForSectionIndex(selectedSectionIndex_);
    standingSeatPointsSection_ = selectedSectionIndex_;
  }
  if (const StandingSeatPoint* place = chosenPlace()) {
    showStandingDotAt(*place);
  } else {
    selectNearestStandingSeatForNormalizedX(kMiddle, kMiddle);
  }
}

const StandingSeatPoint* WizardController::chosenPlace() const {
  if (!isStandingStepActive()) return nullptr;
  return standingSeatAt(standingSeatPoints_, selectedRowIndex_, selectedSeatIndex_);
}

void WizardController::updateStandingPlace() {
  views_.standingPlace.reset();
  views_.spokenPlan.clear();
  views_.spokenPlace.clear();
  const StandingSeatPoint* place = chosenPlace();
  if (place == nullptr) return;
  views_.standingPlace = Point{place->xNorm, place->yNorm};
  const auto percent = [](double share) { return std::to_string(std::lround(share * 100)); };
  views_.spokenPlace =
      formatted(text(seat_selector::kSpokenPlace), {percent(place->xNorm), percent(place->yNorm)});
  views_.spokenPlan = text(seat_selector::kSpokenPlan) + " " + views_.spokenPlace;
}

// The dot goes to the seat and not to the finger.
void WizardController::selectNearestStandingSeatForNormalizedX(double x, double y) {
  const StandingSeatPoint* nearest = nearestStandingSeat(standingSeatPoints_, x, y);
  selectedRowIndex_ = nearest != nullptr ? nearest->rowIndex : -1;
  selectedSeatIndex_ = nearest != nullptr ? nearest->seatIndex : -1;
  if (nearest != nullptr) {
    showStandingDotAt(*nearest);
  } else {
    views_.standingDotView.hidden = true;
  }
}

void WizardController::showStandingDotAt(const StandingSeatPoint& point) {
  views_.standingDotView.hidden = false;
  updateStandingDotPositionForNormalizedX(point.xNorm, point.yNorm);
}

void WizardController::updateStandingDotPositionForNormalizedX(double x, double y) {
  StandingDotView& dot = views_.standingDotView;
  dot.center = standingDotCenter(dragArea_, dot.width, x, y).value_or(dot.center);
}

void WizardController::moveStandingDot(PlanDirection direction, bool isFar) {
  const StandingSeatPoint* from = isDismissed_ ? nullptr : chosenPlace();
  if (from == nullptr) return;
  const double least = isFar ? kFarStep * std::max(dragArea_.width, dragArea_.height) : 0;
  const StandingSeatPoint* to =
      standingSeatTowards(standingSeatPoints_, *from, direction, least, dragArea_);
  if (to == nullptr) return;
  handleStandingTouch({to->xNorm * dragArea_.width, to->yNorm * dragArea_.height});
}

void WizardController::handleStandingTouch(Point location) {
  if (isDismissed_ || !isStandingStepActive()) return;
  if (!(dragArea_.width > 0) || !(dragArea_.height > 0)) return;
  selectNearestStandingSeatForNormalizedX(location.x / dragArea_.width,
                                          location.y / dragArea_.height);
  updateWizardUIAndReloadPicker(false);
}

}  // namespace halvora
