// SPDX-License-Identifier: Apache-2.0
// Distances and times that all parts of the panel and the wizard share, as a QML singleton. What
// the panel's and the wizard's own values say is not repeated here. Stateless; main thread.
#pragma once

#include <QObject>

#include <qqmlregistration.h>

#include "halvora/panel.h"

namespace halvora {

class StatusMetrics : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON
  Q_PROPERTY(qreal afterOnboardingLabel MEMBER afterOnboardingLabel_ CONSTANT)
  Q_PROPERTY(qreal afterStatusText MEMBER afterStatusText_ CONSTANT)
  Q_PROPERTY(qreal afterSeatButton MEMBER afterSeatButton_ CONSTANT)
  Q_PROPERTY(qreal betweenButtons MEMBER betweenButtons_ CONSTANT)
  /// The least that a finger hits.
  Q_PROPERTY(qreal target MEMBER target_ CONSTANT)
  /// The dot's pulse: how far it goes, and the milliseconds there and back.
  Q_PROPERTY(qreal pulseScale MEMBER pulseScale_ CONSTANT)
  Q_PROPERTY(qreal pulseAlpha MEMBER pulseAlpha_ CONSTANT)
  Q_PROPERTY(int pulseGrows MEMBER pulseGrows_ CONSTANT)
  Q_PROPERTY(int pulseShrinks MEMBER pulseShrinks_ CONSTANT)
  /// Milliseconds that a sheet takes to come or go.
  Q_PROPERTY(int slide MEMBER slide_ CONSTANT)

 public:
  using QObject::QObject;

 private:
  const qreal afterOnboardingLabel_ = kSpacingAfterOnboardingLabel;
  const qreal afterStatusText_ = kSpacingAfterStatusText;
  const qreal afterSeatButton_ = kSpacingAfterSeatSelectionButton;
  const qreal betweenButtons_ = 12;
  const qreal target_ = 44;
  const qreal pulseScale_ = kDotPulse.scale;
  const qreal pulseAlpha_ = kDotPulse.alpha;
  const int pulseGrows_ = static_cast<int>(kDotPulse.there / milliseconds(1));
  const int pulseShrinks_ = static_cast<int>(kDotPulse.back / milliseconds(1));
  const int slide_ = 260;
};

}  // namespace halvora
