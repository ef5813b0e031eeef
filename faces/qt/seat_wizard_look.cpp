// SPDX-License-Identifier: Apache-2.0
#include "faces/qt/seat_wizard_look.h"

#include <cstdint>
#include <string>

namespace halvora {

namespace {

struct Text {
  const char* key;
  const char* fallback;
};

constexpr Text kFilterHint{"hv_seat_picker_filter", "Type to narrow the list"};
constexpr Text kFilterClear{"hv_seat_picker_filter_clear", "Clear"};
constexpr Text kFilterMatches{"hv_seat_picker_filter_matches_format", "%ld found"};
constexpr Text kSpokenRow{"hv_seat_picker_spoken_row_format", "%@, %ld of %ld"};

/// A picker with fewer rows is seen as a whole, or nearly so.
constexpr std::size_t kLongList = 12;

std::string textOf(const HalvoraSeatSelectorViewController& wizard, const Text& text) {
  return wizard.localizedStringForKey(text.key, text.fallback);
}

void lookAtPicker(const HalvoraSeatSelectorViewController& wizard, const PickerRows& rows,
                  const Reading& reading, SeatWizardLook& look) {
  const PickerView& picker = wizard.views().pickerView;
  look.pickerShown = !picker.hidden;
  look.pickerTitle = lookOf(picker.title, reading);

  const std::int64_t row = picker.selectedRow;
  look.pickerIndex = rows.indexOf(row);
  // The placeholder is not one of what can be chosen.
  const int count = rows.rowCount() - 1;
  const std::string name = rows.titleOf(row).toStdString();
  look.spokenRow =
      textFrom(look.pickerIndex < 1
                   ? name
                   : formatted(textOf(wizard, kSpokenRow),
                               {name, std::to_string(look.pickerIndex), std::to_string(count)}));

  look.filterShown = wizard.numberOfPickerRows() > kLongList || !rows.filter().isEmpty();
  look.filterLabel = lookOf(picker.filter, reading);
  look.filterText = rows.filter();
  look.filterHint = textFrom(textOf(wizard, kFilterHint));
  look.filterClear = textFrom(textOf(wizard, kFilterClear));
  if (!rows.filter().isEmpty()) {
    look.filterMatches =
        textFrom(formatted(textOf(wizard, kFilterMatches), {std::to_string(count)}));
  }
}

void lookAtPlan(const HalvoraSeatSelectorViewController& wizard, const Reading& reading,
                SeatWizardLook& look) {
  const SeatSelectorViews& views = wizard.views();
  look.stageLabel = lookOf(views.standingStageLabel, reading);
  look.stageHeight = views.standingStageHeightConstraint;
  look.dragAreaTop = look.stageHeight + views.standingDragAreaTopConstraint;
  const StandingDotView& dot = views.standingDotView;
  look.dotShown = !dot.hidden;
  look.dotCentre = {dot.center.x, dot.center.y};
  look.dotWidth = dot.width;
  look.dotCornerRadius = dot.cornerRadius;
  look.dotColour = colourWithAlpha(dot.background);
  look.dotBorderWidth = dot.border.width;
  look.dotBorderColour = colourWithAlpha(dot.border.colour);
  look.spokenPlan = textFrom(views.spokenPlan);
}

}  // namespace

SeatWizardLook lookOf(const HalvoraSeatSelectorViewController& wizard, const PickerRows& rows,
                      const Reading& reading) {
  const SeatSelectorViews& views = wizard.views();
  SeatWizardLook look;
  look.background = colourWithAlpha(views.background);
  look.closeButton = lookOf(views.closeButton, reading);
  look.titleLabel = lookOf(views.titleLabel, reading);
  look.stepLabel = lookOf(views.stepLabel, reading);
  look.selectionSummaryLabel = lookOf(views.selectionSummaryLabel, reading);
  look.backButton = lookOf(views.backButton, reading);
  look.nextButton = lookOf(views.nextButton, reading);
  look.alert = lookOf(wizard.presentedAlert(), reading);
  lookAtPicker(wizard, rows, reading, look);
  lookAtPlan(wizard, reading, look);
  return look;
}

}  // namespace halvora
