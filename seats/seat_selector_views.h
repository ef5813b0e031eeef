// SPDX-License-Identifier: Apache-2.0
// What the seat selector shows at present, view by view, and where its views lie. Only the wizard
// writes these values; a face draws them, and reads them anew after each action. Main thread.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "halvora/platform/image.h"
#include "halvora/platform/screen.h"
#include "seats/view_models.h"

namespace halvora {

struct Point {
  double x = 0;
  double y = 0;
  friend bool operator==(const Point&, const Point&) = default;
};

/// A spinning picker of one column. Its row titles are asked for one by one.
struct PickerView {
  bool hidden = false;
  /// Whenever this moves, a face reads the rows anew and goes to `selectedRow` without animation.
  std::uint64_t reloads = 0;
  std::int64_t selectedRow = 0;
  Font titleFont;
  Colour titleColour = kWhite;
};

struct StandingDotView {
  bool hidden = true;
  /// In the drag area.
  Point center;
  double width = 24;
  double cornerRadius = 12;
  Colour background;
  Border border;
};

/// Fits its aspect to the drag area, is clipped to it, and lets touches through.
struct OverlayImageView {
  /// Null for none. The same picture stays the same object.
  std::shared_ptr<const Image> image;
};

struct SeatSelectorViews {
  Colour background = kSystemGroupedBackground;
  Button closeButton;
  Label titleLabel;
  Label stepLabel;
  Label selectionSummaryLabel;
  PickerView pickerView;
  /// Holds the stage label over the drag area, which is clear.
  bool standingSelectorContainerHidden = true;
  Label standingStageLabel;
  OverlayImageView standingOverlayImageView;
  StandingDotView standingDotView;
  Button backButton;
  Button nextButton;
  double standingStageHeightConstraint = 0;
  /// Between the stage label and the drag area.
  double standingDragAreaTopConstraint = 0;
};

namespace seat_selector {
inline constexpr double kSideMargin = 16;
inline constexpr double kTopMargin = 12;
/// Between one view and the next, above and beside each other.
inline constexpr double kSpacing = 12;
inline constexpr double kButtonHeight = 44;
/// Of the wizard view's height: the picker, and the standing container in its place.
inline constexpr double kPickerShare = 0.7;
/// The next button's width in widths of the back button.
inline constexpr double kNextToBack = 1.55;
}  // namespace seat_selector

/// Where the views lie. The labels take the height that their text needs, so all else is given by
/// its size; stage and drag area are in the standing container.
struct SeatSelectorLayout {
  double contentWidth = 0;
  /// Of the picker, and of the standing container.
  double pickerHeight = 0;
  double backWidth = 0;
  double nextWidth = 0;
  Rect stage;
  Rect dragArea;
};

/// The layout in a wizard view of that size. Nothing is smaller than nothing.
SeatSelectorLayout layoutOf(const SeatSelectorViews& views, Size view);

}  // namespace halvora
