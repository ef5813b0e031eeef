// SPDX-License-Identifier: Apache-2.0
// What the seat selector shows: its styles once, when it loads, and at each refresh the texts,
// flags and titles that follow from its state.
#include <algorithm>

#include "seats/label_styles.h"
#include "seats/seat_names.h"
#include "seats/wizard_controller.h"
#include "seats/wizard_texts.h"

namespace halvora {

namespace {

using namespace seat_selector;

constexpr Colour kStageRed{0.82F, 0.12F, 0.12F, 1};
constexpr Colour kPlanDotGreen{0.196F, 0.843F, 0.294F, 1};
constexpr Colour kPaleWhite = withAlpha(kWhite, 0.75F);
constexpr double kCornerRadius = 8;
constexpr double kPickerFontSize = 31;
constexpr double kFilterFontSize = 17;
constexpr float kFilterAlpha = 0.6F;
constexpr double kDotBorder = 2;
constexpr float kStageBorderAlpha = 0.28F;
constexpr double kDisabledAlpha = 0.5;

Label label(const Font& font, Colour colour) {
  Label label;
  label.font = font;
  label.colour = colour;
  label.alignment = TextAlignment::center;
  return label;
}

}  // namespace

std::string WizardController::localizedStringForKey(std::string_view key,
                                                    std::string_view fallback) const {
  return localizedText(kitBundle_, key, fallback);
}

std::string WizardController::text(const Text& text) const {
  return localizedStringForKey(text.key, text.fallback);
}

Font WizardController::statusFontWithSize(double size, FontWeight weight) const {
  return fontNamed(inputs_.statusTextFontName, size, weight, hasFont_);
}

void WizardController::styleTexts() {
  views_.titleLabel = label(statusFontWithSize(18, FontWeight::bold), kWhite);
  views_.stepLabel = label(statusFontWithSize(14, FontWeight::regular), kPaleWhite);
  views_.stepLabel.lines = 0;
  views_.selectionSummaryLabel = label(statusFontWithSize(14, FontWeight::regular), kPaleWhite);
  PickerView& picker = views_.pickerView;
  picker.title = label(statusFontWithSize(kPickerFontSize, FontWeight::regular), kWhite);
  picker.filter = label(statusFontWithSize(kFilterFontSize, FontWeight::regular),
                        withAlpha(kWhite, kFilterAlpha));
}

void WizardController::styleButtons() {
  views_.closeButton.title = text(kClose);
  views_.closeButton.titleColour = inputs_.buttonBackgroundColor.value_or(kSystemBlue);
  views_.closeButton.font = statusFontWithSize(16, FontWeight::semibold);

  Button button;
  button.titleColour = inputs_.buttonTitleColor.value_or(kWhite);
  button.font = fontNamed(inputs_.buttonTitleFontName, inputs_.buttonTitleFontSize,
                          FontWeight::regular, hasFont_);
  button.background = inputs_.buttonBackgroundColor;
  button.cornerRadius = kCornerRadius;
  button.height = kButtonHeight;
  views_.backButton = views_.nextButton = button;
  views_.backButton.title = text(kBack);
}

void WizardController::styleStandingViews() {
  const Colour textColour = inputs_.buttonTitleColor.value_or(kWhite);
  Label& stage = views_.standingStageLabel;
  stage = label(statusFontWithSize(16, FontWeight::semibold), textColour);
  stage.text = text(kStage);
  stage.background = inputs_.buttonBackgroundColor.value_or(kStageRed);
  stage.cornerRadius = kCornerRadius;
  stage.border = {1, withAlpha(kWhite, kStageBorderAlpha)};

  StandingDotView& dot = views_.standingDotView;
  dot.background = inputs_.buttonBackgroundColor.value_or(kPlanDotGreen);
  dot.border = {kDotBorder, textColour};
}

void WizardController::updateWizardUIAndReloadPicker(bool reload) {
  say({});
  updateStandingOverlayPresentation();
  ensureStandingSelectionInitialized();
  updateStandingPlace();
  updateLabels();
  updateButtons();
  updatePicker(reload);
}

void WizardController::updateLabels() {
  // Rows and seats of a standing area mean nothing to who stands there.
  views_.selectionSummaryLabel.text =
      isStandingSectionAtIndex(selectedSectionIndex_)
          ? selectedNameForStep(0)
          : wizardSeatSummaryWithSection(selectedNameForStep(0), selectedNameForStep(1),
                                         selectedNameForStep(2));
  const bool isStanding = isStandingStepActive();
  views_.stepLabel.text = text(isStanding ? kDragHint : kDescription);
  views_.titleLabel.text = text(isStanding ? kTitleStanding : kTitle);
  views_.step = static_cast<int>(currentStep_) + 1;
  views_.steps = static_cast<int>(maxStepForCurrentSelection()) + 1;
}

void WizardController::updateButtons() {
  Button& back = views_.backButton;
  back.hidden = currentStep_ < 1;
  back.enabled = currentStep_ > 0;
  back.alpha = 1;

  Button& next = views_.nextButton;
  if (currentStep_ < maxStepForCurrentSelection()) {
    next.title = text(kNext);
  } else {
    next.title = text(isStandingStepActive() ? kConfirmLocation : kConfirmSeat);
  }
  next.enabled = !itemsForCurrentStep().empty() && selectedIndexForStep(currentStep_) >= 0;
  next.alpha = next.enabled ? 1 : kDisabledAlpha;
}

void WizardController::updatePicker(bool reload) {
  const bool isStanding = isStandingStepActive();
  views_.pickerView.hidden = isStanding;
  views_.standingSelectorContainerHidden = !isStanding;
  if (isStanding) return;
  const auto lastRow = static_cast<std::int64_t>(numberOfPickerRows()) - 1;
  const std::int64_t row = std::min(selectedIndexForStep(currentStep_) + 1, lastRow);
  views_.pickerView.selectedRow = std::max<std::int64_t>(row, 0);
  if (reload) ++views_.pickerView.reloads;
}

}  // namespace halvora
