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
  double x = 0;  ///< To the right.
  double y = 0;  ///< Downwards.
  friend bool operator==(const Point&, const Point&) = default;
};

/// A spinning picker of one column. Its row titles are asked for one by one.
struct PickerView {
  bool hidden = false;  ///< Where a place on a plan is chosen instead.
  /// Whenever this moves, a face reads the rows anew and goes to `selectedRow` without animation.
  std::uint64_t reloads = 0;
  /// The row in the middle; 0 is the one that stands for no choice.
  std::int64_t selectedRow = 0;
  /// How titles are drawn; without a text.
  Label title;
  /// How the line is drawn with which a face may narrow a long list; without a text.
  Label filter;
};

/// The dot that says where the user stands.
struct StandingDotView {
  bool hidden = true;  ///< Until a place is chosen and the drag area has a size.
  /// In the drag area, in points.
  Point center;
  double width = 24;         ///< And height, in points.
  double cornerRadius = 12;  ///< Half of that: it is round.
  Colour background;         ///< Of the dot.
  Border border;             ///< Around it, so that it is seen on any plan.
};

/// All that is to be seen of the wizard.
struct SeatSelectorViews {
  Colour background = kBlack;   ///< Of the whole sheet.
  Button closeButton;           ///< Calls `cancelTapped`.
  Label titleLabel;             ///< What is chosen here.
  Label stepLabel;              ///< What is to be done in this step.
  Label selectionSummaryLabel;  ///< What is chosen so far.
  PickerView pickerView;        ///< The choices of this step.
  /// Holds the stage label over the drag area, which is clear.
  bool standingSelectorContainerHidden = true;
  Label standingStageLabel;  ///< Says on which side the stage is.
  /// The plan, which fits its aspect to the drag area, is clipped to it, and lets touches through.
  /// Null for none. The same picture stays the same object.
  std::shared_ptr<const Image> standingOverlayImage;
  StandingDotView standingDotView;  ///< Over the plan.
  /// The chosen place, 0 to 1 from the left and from the stage; none while no plan is shown.
  std::optional<Point> standingPlace;
  /// For who cannot see it: what the plan is, and where on it the chosen place is.
  std::string spokenPlan;
  std::string spokenPlace;  ///< The place alone, for who hears the plan's words already.
  /// Which step this is, counted from 1.
  int step = 1;
  int steps = 3;  ///< How many there are for what is selected.
  /// Why what the user asked for last was not done, and what to do; empty for nothing. It goes with
  /// the next action.
  std::string message;
  Button backButton;  ///< Calls `backTapped`.
  Button nextButton;  ///< Calls `nextTapped`; confirms in the last step.
  /// Of the stage label, in points; 0 where the plan shows the stage itself.
  double standingStageHeightConstraint = 0;
  /// Between the stage label and the drag area, in points.
  double standingDragAreaTopConstraint = 0;
};

/// What the wizard's layout is made from; lengths in points.
namespace seat_selector {
inline constexpr double kSideMargin = 16;  ///< Left and right of all that is in the sheet.
inline constexpr double kTopMargin = 12;   ///< Above the close button.
/// Between one view and the next, above and beside each other.
inline constexpr double kSpacing = 12;
inline constexpr double kButtonHeight = 44;  ///< Of back and next, at least.
/// Of the wizard view's height: the picker, and the standing container in its place.
inline constexpr double kPickerShare = 0.7;
/// The next button's width in widths of the back button.
inline constexpr double kNextToBack = 1.55;
}  // namespace seat_selector

/// Where the views lie. The labels take the height that their text needs, so all else is given by
/// its size, in points; stage and drag area are in the standing container.
struct SeatSelectorLayout {
  double contentWidth = 0;  ///< Of the sheet without its margins.
  /// Of the picker, and of the standing container.
  double pickerHeight = 0;
  double backWidth = 0;  ///< Of the back button.
  double nextWidth = 0;  ///< Of the next button, beside it.
  Rect stage;            ///< The label that says where the stage is.
  Rect dragArea;         ///< Where the plan and the finger are.
};

/// The layout in a wizard view of that size. Nothing is smaller than nothing. Any thread.
SeatSelectorLayout layoutOf(const SeatSelectorViews& views, Size view);

/// A direction on the screen: one of the two is 1 or -1, the other 0.
struct PlanDirection {
  int right = 0;  ///< -1: to the left.
  int down = 0;   ///< -1: up, towards the stage.
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
  /// Leaves without a word; what was stored before stays.
  virtual void cancelTapped() = 0;
  /// To the step before, with what was chosen there.
  virtual void backTapped() = 0;
  /// To the next step, or, in the last one, stores what is chosen and leaves. An alert instead for
  /// a standing area while no transmitter is heard: where somebody stands is known only there.
  virtual void nextTapped() = 0;
  /// Takes the alert away.
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
  /// The picker stands still at that row; 0 takes the choice back.
  virtual void pickerDidSelectRow(std::int64_t row) = 0;
  /// Where the finger is in the drag area, in points.
  virtual void handleStandingTap(Point location) = 0;
  /// The same at every change while it is held down.
  virtual void handleStandingDrag(Point location) = 0;
  /// For the keyboard: to the nearest place in that direction, or to one that is a good way off.
  virtual void moveStandingDot(PlanDirection direction, bool isFar) = 0;

  /// What is to be seen, until the next action.
  virtual const SeatSelectorViews& views() const = 0;
  /// Of the present step, the one that stands for no choice included.
  virtual std::size_t numberOfPickerRows() const = 0;
  /// Empty for a row that there is not.
  virtual std::string titleForPickerRow(std::int64_t row) const = 0;
  /// A second line below the title: a standing area's own name. Empty for none.
  virtual std::string detailForPickerRow(std::int64_t row) const = 0;
  /// What lies over the wizard; none, as a rule.
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
