// SPDX-License-Identifier: Apache-2.0
// The seat selector: section, row and seat chosen from a picker one after the other, or a place on
// a plan where the section is a standing area. State, actions and what is to be seen; no drawing.
// The status panel makes one whenever it opens, and a face draws it, reading it anew after each
// action.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "halvora/labels.h"
#include "halvora/platform/image.h"
#include "halvora/platform/screen.h"
#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

/// A place, from the upper left corner.
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
  /// The row in the middle; 0 is the one that stands for no choice.
  std::int64_t selectedRow = 0;
  /// How titles are drawn, and the line with which a face may narrow a long list. Without texts.
  Label title;
  Label filter;
};

/// The dot that says where the user stands.
struct StandingDotView {
  bool hidden = true;
  /// In the drag area.
  Point center;
  double width = 24;
  double cornerRadius = 12;
  Colour background;
  Border border;
};

/// All that is to be seen of the wizard.
struct SeatSelectorViews {
  Colour background = kBlack;
  Button closeButton;
  Label titleLabel;
  Label stepLabel;
  Label selectionSummaryLabel;
  PickerView pickerView;
  /// Holds the stage label over the drag area, which is clear.
  bool standingSelectorContainerHidden = true;
  Label standingStageLabel;
  /// The plan, which fits its aspect to the drag area, is clipped to it, and lets touches through.
  /// Null for none. The same picture stays the same object.
  std::shared_ptr<const Image> standingOverlayImage;
  StandingDotView standingDotView;
  /// The chosen place, 0 to 1 from the left and from the stage; none while no plan is shown.
  std::optional<Point> standingPlace;
  /// For who cannot see it: what the plan is, and where on it the chosen place is; and the latter
  /// alone.
  std::string spokenPlan;
  std::string spokenPlace;
  /// Which step this is, counted from 1, and how many there are for what is selected.
  int step = 1;
  int steps = 3;
  /// Why what the user asked for last was not done, and what to do; empty for nothing. It goes with
  /// the next action.
  std::string message;
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

/// The layout in a wizard view of that size. Nothing is smaller than nothing. Any thread.
SeatSelectorLayout layoutOf(const SeatSelectorViews& views, Size view);

/// A direction on the screen: one of the two is 1 or -1, the other 0.
struct PlanDirection {
  int right = 0;
  int down = 0;
};

/// Main thread only; nothing waits, but for the venue's plan, which is read and decoded when it is
/// first shown. A confirmation may destroy the wizard; nothing else does. None throws, but for want
/// of memory, after which the same action may be tried again.
class HalvoraSeatSelectorViewController {
 public:
  virtual ~HalvoraSeatSelectorViewController() = default;
  HalvoraSeatSelectorViewController(const HalvoraSeatSelectorViewController&) = delete;
  HalvoraSeatSelectorViewController& operator=(const HalvoraSeatSelectorViewController&) = delete;

  /// After every layout pass, with the size that the drag area was given.
  virtual void viewDidLayoutSubviews(Size dragArea) = 0;

  // Actions. A face sends none for a button that is disabled or hidden; after the wizard is
  // dismissed they do nothing.
  virtual void cancelTapped() = 0;
  virtual void backTapped() = 0;
  virtual void nextTapped() = 0;
  virtual void alertButtonTapped() = 0;
  /// For a user who wants to go on while nothing is chosen: the message says what is missing.
  virtual void sayWhatIsMissing() = 0;
  /// Leaves as `cancelTapped` does, but with a choice that is not confirmed the first call only
  /// asks, by the message, and the one that follows it leaves.
  virtual void leaveTapped() = 0;
  /// Section, row and seat from one line, as a ticket has them: "209 8 10", or "Sec 209 Row 8 Seat
  /// 10" with other words between. What the line names is chosen, and the first step that it does
  /// not name is shown, or the last one. Where the map has not got it, nothing changes, and the
  /// message says which it is. Of a longer line only the first 512 bytes count. True if all that
  /// was named is chosen.
  virtual bool findSeat(std::string_view line) = 0;
  virtual void pickerDidSelectRow(std::int64_t row) = 0;
  /// Where the finger is in the drag area; the drag at every change.
  virtual void handleStandingTap(Point location) = 0;
  virtual void handleStandingDrag(Point location) = 0;
  /// For the keyboard: to the nearest place in that direction, or to one that is a good way off.
  virtual void moveStandingDot(PlanDirection direction, bool isFar) = 0;

  // What is to be seen, until the next action.
  virtual const SeatSelectorViews& views() const = 0;
  virtual std::size_t numberOfPickerRows() const = 0;
  /// Empty for a row that there is not.
  virtual std::string titleForPickerRow(std::int64_t row) const = 0;
  /// A second line below the title: a standing area's own name. Empty for none.
  virtual std::string detailForPickerRow(std::int64_t row) const = 0;
  virtual const std::optional<Alert>& presentedAlert() const = 0;
  /// The wizard leaves the screen, animated, when this becomes true.
  virtual bool isDismissed() const = 0;

  /// The kit's own text for a key, or `fallback` when its table has none.
  virtual std::string localizedStringForKey(std::string_view key,
                                            std::string_view fallback) const = 0;

 protected:
  HalvoraSeatSelectorViewController() = default;
};

}  // namespace v0
}  // namespace halvora
