// SPDX-License-Identifier: Apache-2.0
#include "faces/qt/status_panel_look.h"

#include <QFontMetricsF>
#include <algorithm>
#include <cmath>

namespace halvora {

namespace {

QRectF rectFrom(const Rect& rect) { return {rect.x, rect.y, rect.width, rect.height}; }

}  // namespace

StatusPanelLook lookOf(const HalvoraStatusViewController& panel, double summaryWidth,
                       const Reading& reading) {
  const StatusPanelViews& views = panel.views();
  StatusPanelLook look;
  if (views.onboardingLabel) look.onboardingLabel = lookOf(*views.onboardingLabel, reading);
  if (views.joinButton) look.joinButton = lookOf(*views.joinButton, reading);
  look.statusTextLabel = lookOf(views.statusTextLabel, reading);
  look.settingsButton = lookOf(views.settingsButton, reading);
  look.seatSelectionButton = lookOf(views.seatSelectionButton, reading);

  const SeatSelectionSummaryRow& row = views.seatSelectionSummaryRow;
  look.summaryShown = !row.hidden;
  look.summaryLabel = lookOf(row.seatSelectionSummaryLabel, reading);
  look.summaryTextFrame =
      rectFrom(summaryTextFrame(row.seatSelectionSummaryLabel, summaryWidth, reading));
  const StatusDot& dot = row.seatLUTStatusDot;
  look.dotShown = !dot.hidden;
  look.dotColour = colourWithAlpha(dot.colour);
  look.dotFrame = rectFrom(dot.frame);
  look.spokenDot = textFrom(dot.spoken);
  look.spinnerShown = row.seatSelectionLoadingIndicator.isAnimating;
  look.spinnerFrame = rectFrom(row.seatSelectionLoadingIndicator.frame);

  look.alert = lookOf(panel.presentedAlert(), reading);
  return look;
}

Rect summaryTextFrame(const StatusText& label, double width, const Reading& reading) {
  const LabelLook look = lookOf(label, reading);
  const QFontMetricsF metrics(look.font);
  const double height = std::max(std::ceil(metrics.height()), kLoadingIndicatorSize);
  const double room = std::max(width - kSummaryGap - kLoadingIndicatorSize, 0.0);
  const double taken = std::min(std::ceil(metrics.horizontalAdvance(look.text)), room);
  const double rest = std::max(width - taken, 0.0);
  const bool isAtEnd = look.alignment == Qt::AlignRight;
  const double x = look.alignment == Qt::AlignHCenter ? std::floor(rest / 2)
                   : isAtEnd                          ? room - taken
                                                      : 0;
  return {x, 0, taken, height};
}

}  // namespace halvora
