// SPDX-License-Identifier: Apache-2.0
#include "seats/panel_looks.h"

#include <string>
#include <utility>

#include "seats/label_styles.h"
#include "seats/seat_names.h"

namespace halvora {

namespace {

constexpr double kSummaryFontSize = 12;
constexpr float kSummaryAlpha = 0.75F;
constexpr double kButtonCornerRadius = 8;
constexpr double kLoadingAlpha = 0.85;

void showSeatTexts(std::string title, std::string summary, StatusPanelViews& views) {
  views.seatSelectionButton.title = std::move(title);
  views.seatSelectionSummaryRow.seatSelectionSummaryLabel.text = std::move(summary);
}

void setLoading(bool isLoading, StatusPanelViews& views) {
  views.seatSelectionButton.enabled = !isLoading;
  views.seatSelectionButton.alpha = isLoading ? kLoadingAlpha : 1;
  views.seatSelectionSummaryRow.seatSelectionLoadingIndicator.isAnimating = isLoading;
}

template <class View>
void forgetHidden(View& view) {
  if (!view.hidden) return;
  view = View();
  view.hidden = true;
}

}  // namespace

StatusPanelViews loadedViews(const Bundle& kit) {
  StatusPanelViews views;
  views.onboardingLabel.emplace().text = localizedText(kit, "onboarding_label", "");
  views.joinButton.emplace().title = localizedText(kit, "allow_lightshow", "");
  views.statusTextLabel.text = localizedText(kit, "loading", "");
  views.explanationLabel.hidden = true;
  views.retryButton.title = localizedText(kit, "hv_state_retry", "Try Again");
  views.retryButton.hidden = true;
  views.sameSeatLabel.hidden = true;
  views.sameSeatButton.title = localizedText(kit, "hv_seat_same_yes", "Yes, the Same Seat");
  views.sameSeatButton.hidden = true;
  views.settingsButton.title = localizedText(kit, "open_settings", "");
  views.seatSelectionButton.title = localizedText(kit, "hv_seat_button_select", "Select Seat");
  views.seatSelectionSummaryRow.seatSelectionSummaryLabel.lines = 1;
  return views;
}

void applyStyle(const StatusPanelFields& fields, const FontLookup& hasFont,
                StatusPanelViews& views) {
  const auto styleStatusText = [&](StatusText& label) {
    label.colour = fields.statusTextColour;
    label.font = fontNamed(fields.statusTextFontName, fields.statusTextFontSize,
                           FontWeight::regular, hasFont);
    label.alignment = fields.statusTextAlignment;
  };
  const auto styleButton = [&](Button& button) {
    button.background = fields.actionButtonColour;
    button.titleColour = fields.actionButtonTitleColour;
    button.font = fontNamed(fields.actionButtonTitleFontName, fields.actionButtonTitleFontSize,
                            FontWeight::regular, hasFont);
    button.cornerRadius = kButtonCornerRadius;
    button.height = fields.actionButtonHeight;
  };
  if (views.onboardingLabel) styleStatusText(*views.onboardingLabel);
  if (views.joinButton) styleButton(*views.joinButton);
  styleStatusText(views.statusTextLabel);
  styleStatusText(views.explanationLabel);
  styleButton(views.retryButton);
  styleStatusText(views.sameSeatLabel);
  styleButton(views.sameSeatButton);
  styleButton(views.settingsButton);
  styleButton(views.seatSelectionButton);

  StatusText& summary = views.seatSelectionSummaryRow.seatSelectionSummaryLabel;
  summary.colour = withAlpha(fields.statusTextColour, kSummaryAlpha);
  summary.font =
      fontNamed(fields.statusTextFontName, kSummaryFontSize, FontWeight::regular, hasFont);
}

void showSeatLoading(const Bundle& kit, StatusPanelViews& views) {
  setLoading(true, views);
  showSeatTexts(localizedText(kit, "hv_seat_button_loading", "Loading Seats..."),
                localizedText(kit, "hv_seat_summary_loading", "Seat map is loading..."), views);
  views.seatSelectionSummaryRow.seatLUTStatusDot.hidden = true;
}

void showSeatNames(const SeatNames& names, const Bundle& kit, StatusPanelViews& views) {
  setLoading(false, views);
  if (!names.areComplete()) {
    showSeatTexts(localizedText(kit, "hv_seat_button_select", "Select Seat"),
                  localizedText(kit, "hv_seat_summary_none", "No seat selected"), views);
  } else if (isStandingName(names.section)) {
    showSeatTexts(localizedText(kit, "hv_seat_button_change_location", "Change Location"),
                  names.section, views);
  } else {
    showSeatTexts(localizedText(kit, "hv_seat_button_change_seat", "Change Seat"),
                  names.section + "  |  " + names.row + "  |  " + names.seat, views);
  }
}

StatusPanelViews asSeen(StatusPanelViews views) {
  if (views.onboardingLabel) forgetHidden(*views.onboardingLabel);
  if (views.joinButton) forgetHidden(*views.joinButton);
  forgetHidden(views.explanationLabel);
  forgetHidden(views.retryButton);
  forgetHidden(views.sameSeatLabel);
  forgetHidden(views.sameSeatButton);
  forgetHidden(views.settingsButton);
  forgetHidden(views.seatSelectionButton);
  forgetHidden(views.seatSelectionSummaryRow.seatLUTStatusDot);
  forgetHidden(views.seatSelectionSummaryRow);
  return views;
}

}  // namespace halvora
