// SPDX-License-Identifier: Apache-2.0
// What the status panel shows, from top to bottom: the texts, the buttons, the seat's summary with
// its dot. Plain values that compare; only the panel writes them, a face draws them. What is hidden
// takes no room, what has alpha 0 does. Values, any thread.
#pragma once

#include <optional>

#include "halvora/platform/screen.h"
#include "halvora/platform/time.h"
#include "seats/view_models.h"

namespace halvora {

/// Of any number of lines, unless it says otherwise.
struct StatusText : Label {
  StatusText() { lines = 0; }
  friend bool operator==(const StatusText&, const StatusText&) = default;
};

/// How fast an animation goes: slow at its beginning, or slow at its end.
enum class AnimationCurve : std::uint8_t { easeIn, easeOut };

/// How the dot is drawn: scaled about its centre.
struct DotPose {
  double scale = 1;
  double alpha = 1;
  friend bool operator==(const DotPose&, const DotPose&) = default;
};

struct DotAnimation {
  Duration duration;
  AnimationCurve curve;
  DotPose to;
};

/// A pulse, one animation after the other; it begins at the plain pose and ends there.
inline constexpr DotAnimation kDotPulse[] = {
    {milliseconds(110), AnimationCurve::easeOut, {1.35, 0.8}},
    {milliseconds(140), AnimationCurve::easeIn, {1, 1}},
};

/// The pose so long after a pulse began.
DotPose dotPoseInPulse(Duration sinceBegin);

/// A circle beside the summary: whether the seat's tables are ready.
struct StatusDot {
  bool hidden = true;
  Colour colour;
  /// In the summary row; all 0 until a face has measured the text.
  Rect frame;
  /// In media time; none if no pulse is to be shown. A later one replaces the one that runs.
  std::optional<Duration> pulseBegan;
  friend bool operator==(const StatusDot&, const StatusDot&) = default;
};
inline constexpr double kDotCornerRadius = 4;
inline constexpr Colour kDotAmber{1.0F, 0.624F, 0.102F, 1};
inline constexpr Colour kDotGreen{0.129F, 0.773F, 0.365F, 1};

struct LoadingIndicator {
  bool isAnimating = false;
  /// Like the dot's.
  Rect frame;
  friend bool operator==(const LoadingIndicator&, const LoadingIndicator&) = default;
};
inline constexpr double kLoadingIndicatorSize = 20;

/// Of the dot and the loading indicator from the text that they stand beside.
inline constexpr double kSummaryGap = 6;

struct SeatSelectionSummaryRow {
  bool hidden = false;
  StatusText seatSelectionSummaryLabel;
  StatusDot seatLUTStatusDot;
  LoadingIndicator seatSelectionLoadingIndicator;
  friend bool operator==(const SeatSelectionSummaryRow&, const SeatSelectionSummaryRow&) = default;
};

/// The stack, in its order.
struct StatusPanelViews {
  /// None once it was taken out of the panel, as the button is with it.
  std::optional<StatusText> onboardingLabel;
  std::optional<Button> joinButton;
  StatusText statusTextLabel;
  Button settingsButton;
  Button seatSelectionButton;
  SeatSelectionSummaryRow seatSelectionSummaryRow;
  friend bool operator==(const StatusPanelViews&, const StatusPanelViews&) = default;
};

inline constexpr double kSpacingAfterOnboardingLabel = 20;
inline constexpr double kSpacingAfterStatusText = 20;
inline constexpr double kSpacingAfterSeatSelectionButton = 6;

}  // namespace halvora
