// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "halvora/wizard.h"

namespace halvora {

SeatSelectorLayout v0::layoutOf(const SeatSelectorViews& views, Size view) {
  SeatSelectorLayout layout;
  layout.contentWidth = std::max(view.width - 2 * seat_selector::kSideMargin, 0.0);
  layout.pickerHeight = std::max(view.height, 0.0) * seat_selector::kPickerShare;

  const double buttons = std::max(layout.contentWidth - seat_selector::kSpacing, 0.0);
  layout.backWidth = buttons / (1 + seat_selector::kNextToBack);
  layout.nextWidth = layout.backWidth * seat_selector::kNextToBack;

  const double stageHeight = views.standingStageHeightConstraint;
  const double top = stageHeight + views.standingDragAreaTopConstraint;
  layout.stage = {0, 0, layout.contentWidth, stageHeight};
  layout.dragArea = {0, top, layout.contentWidth, std::max(layout.pickerHeight - top, 0.0)};
  return layout;
}

}  // namespace halvora
