// SPDX-License-Identifier: Apache-2.0
// Everything that QML shows of the status panel, in one value. Values; main thread.
#pragma once

#include <QColor>
#include <QObject>
#include <QRectF>
#include <QString>

#include <qqmlregistration.h>

#include "faces/qt/seat_looks.h"
#include "halvora/panel.h"

namespace halvora {

struct StatusPanelLook {
  Q_GADGET
  QML_VALUE_TYPE(statusPanelLook)
  Q_PROPERTY(halvora::LabelLook onboardingLabel MEMBER onboardingLabel)
  Q_PROPERTY(halvora::ButtonLook joinButton MEMBER joinButton)
  Q_PROPERTY(halvora::LabelLook statusTextLabel MEMBER statusTextLabel)
  Q_PROPERTY(halvora::ButtonLook settingsButton MEMBER settingsButton)
  Q_PROPERTY(halvora::ButtonLook seatSelectionButton MEMBER seatSelectionButton)
  Q_PROPERTY(bool summaryShown MEMBER summaryShown)
  Q_PROPERTY(halvora::LabelLook summaryLabel MEMBER summaryLabel)
  /// Frames in the summary row, from the side where lines begin.
  Q_PROPERTY(QRectF summaryTextFrame MEMBER summaryTextFrame)
  Q_PROPERTY(bool dotShown MEMBER dotShown)
  Q_PROPERTY(QColor dotColour MEMBER dotColour)
  Q_PROPERTY(QRectF dotFrame MEMBER dotFrame)
  Q_PROPERTY(QString spokenDot MEMBER spokenDot)
  Q_PROPERTY(bool spinnerShown MEMBER spinnerShown)
  Q_PROPERTY(QRectF spinnerFrame MEMBER spinnerFrame)
  Q_PROPERTY(halvora::AlertLook alert MEMBER alert)
  /// What the item would like to have, which only its owner knows.
  Q_PROPERTY(qreal preferredWidth MEMBER preferredWidth)
  Q_PROPERTY(qreal preferredHeight MEMBER preferredHeight)

 public:
  LabelLook onboardingLabel;
  ButtonLook joinButton;
  LabelLook statusTextLabel;
  ButtonLook settingsButton;
  ButtonLook seatSelectionButton;
  bool summaryShown = false;
  LabelLook summaryLabel;
  QRectF summaryTextFrame;
  bool dotShown = false;
  QColor dotColour;
  QRectF dotFrame;
  QString spokenDot;
  bool spinnerShown = false;
  QRectF spinnerFrame;
  AlertLook alert;
  qreal preferredWidth = 0;
  qreal preferredHeight = 0;
};

/// `summaryWidth` is that of the summary row.
StatusPanelLook lookOf(const HalvoraStatusViewController& panel, double summaryWidth,
                       const Reading& reading);

/// Where a label's text lies in a summary row of that width: on one line, and leaving room for what
/// stands beside it.
Rect summaryTextFrame(const StatusText& label, double width, const Reading& reading);

}  // namespace halvora
