// SPDX-License-Identifier: Apache-2.0
// Everything that QML shows of the seat selector, in one value, and where it goes in a sheet of
// some size. Values; main thread.
#pragma once

#include <QColor>
#include <QObject>
#include <QPointF>
#include <QString>

#include <qqmlregistration.h>

#include "faces/qt/picker_rows.h"
#include "faces/qt/seat_looks.h"
#include "halvora/wizard.h"

namespace halvora {

struct SeatWizardLook {
  Q_GADGET
  QML_VALUE_TYPE(seatWizardLook)
  Q_PROPERTY(QColor background MEMBER background)
  Q_PROPERTY(halvora::ButtonLook closeButton MEMBER closeButton)
  Q_PROPERTY(halvora::LabelLook titleLabel MEMBER titleLabel)
  Q_PROPERTY(halvora::LabelLook stepLabel MEMBER stepLabel)
  Q_PROPERTY(halvora::LabelLook selectionSummaryLabel MEMBER selectionSummaryLabel)
  Q_PROPERTY(halvora::ButtonLook backButton MEMBER backButton)
  Q_PROPERTY(halvora::ButtonLook nextButton MEMBER nextButton)
  Q_PROPERTY(halvora::AlertLook alert MEMBER alert)
  /// The picker: the style of its titles, the row in its middle, the line that filters it.
  Q_PROPERTY(bool pickerShown MEMBER pickerShown)
  Q_PROPERTY(halvora::LabelLook pickerTitle MEMBER pickerTitle)
  Q_PROPERTY(int pickerIndex MEMBER pickerIndex)
  Q_PROPERTY(QString spokenRow MEMBER spokenRow)
  Q_PROPERTY(bool filterShown MEMBER filterShown)
  Q_PROPERTY(halvora::LabelLook filterLabel MEMBER filterLabel)
  /// As it is in force, which is empty again after each step.
  Q_PROPERTY(QString filterText MEMBER filterText)
  Q_PROPERTY(QString filterHint MEMBER filterHint)
  Q_PROPERTY(QString filterClear MEMBER filterClear)
  Q_PROPERTY(QString filterMatches MEMBER filterMatches)
  /// The plan: its stage, its picture, the dot in it.
  Q_PROPERTY(halvora::LabelLook stageLabel MEMBER stageLabel)
  Q_PROPERTY(qreal stageHeight MEMBER stageHeight)
  Q_PROPERTY(qreal dragAreaTop MEMBER dragAreaTop)
  Q_PROPERTY(bool dotShown MEMBER dotShown)
  Q_PROPERTY(QPointF dotCentre MEMBER dotCentre)
  Q_PROPERTY(qreal dotWidth MEMBER dotWidth)
  Q_PROPERTY(qreal dotCornerRadius MEMBER dotCornerRadius)
  Q_PROPERTY(QColor dotColour MEMBER dotColour)
  Q_PROPERTY(qreal dotBorderWidth MEMBER dotBorderWidth)
  Q_PROPERTY(QColor dotBorderColour MEMBER dotBorderColour)
  Q_PROPERTY(QString spokenPlan MEMBER spokenPlan)

 public:
  QColor background;
  ButtonLook closeButton;
  LabelLook titleLabel;
  LabelLook stepLabel;
  LabelLook selectionSummaryLabel;
  ButtonLook backButton;
  ButtonLook nextButton;
  AlertLook alert;
  bool pickerShown = false;
  LabelLook pickerTitle;
  int pickerIndex = 0;
  QString spokenRow;
  bool filterShown = false;
  LabelLook filterLabel;
  QString filterText;
  QString filterHint;
  QString filterClear;
  QString filterMatches;
  LabelLook stageLabel;
  qreal stageHeight = 0;
  qreal dragAreaTop = 0;
  bool dotShown = false;
  QPointF dotCentre;
  qreal dotWidth = 0;
  qreal dotCornerRadius = 0;
  QColor dotColour;
  qreal dotBorderWidth = 0;
  QColor dotBorderColour;
  QString spokenPlan;
};

struct SeatWizardLayout {
  Q_GADGET
  QML_VALUE_TYPE(seatWizardLayout)
  Q_PROPERTY(qreal sideMargin MEMBER sideMargin)
  Q_PROPERTY(qreal topMargin MEMBER topMargin)
  Q_PROPERTY(qreal spacing MEMBER spacing)
  Q_PROPERTY(qreal pickerHeight MEMBER pickerHeight)
  Q_PROPERTY(qreal backWidth MEMBER backWidth)
  Q_PROPERTY(qreal nextWidth MEMBER nextWidth)

 public:
  qreal sideMargin = seat_selector::kSideMargin;
  qreal topMargin = seat_selector::kTopMargin;
  qreal spacing = seat_selector::kSpacing;
  qreal pickerHeight = 0;
  qreal backWidth = 0;
  qreal nextWidth = 0;
};

/// `rows` are those of the wizard's picker.
SeatWizardLook lookOf(const HalvoraSeatSelectorViewController& wizard, const PickerRows& rows,
                      const Reading& reading);

}  // namespace halvora
