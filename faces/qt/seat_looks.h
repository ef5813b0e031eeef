// SPDX-License-Identifier: Apache-2.0
// Labels, buttons and alerts of the seat screens as QML reads them: plain values with Qt's types,
// sizes already scaled for the user, alignments already turned for the direction of the text.
// Values; main thread.
#pragma once

#include <QColor>
#include <QFont>
#include <QObject>
#include <QString>
#include <optional>

#include <qqmlregistration.h>

#include "halvora/panel.h"

namespace halvora {

/// What the user's system says about all texts.
struct Reading {
  double textScale = 1;
  bool isRightToLeft = false;
};

struct LabelLook {
  Q_GADGET
  QML_VALUE_TYPE(labelLook)
  Q_PROPERTY(bool shown MEMBER shown)
  Q_PROPERTY(QString text MEMBER text)
  Q_PROPERTY(QColor colour MEMBER colour)
  Q_PROPERTY(QFont font MEMBER font)
  /// As of QML's Text, which turns left and right round where its layout is mirrored.
  Q_PROPERTY(int alignment MEMBER alignment)
  Q_PROPERTY(int lines MEMBER lines)
  /// In pixels; 0 for the font's own.
  Q_PROPERTY(qreal lineHeight MEMBER lineHeight)
  Q_PROPERTY(qreal alpha MEMBER alpha)
  Q_PROPERTY(QColor background MEMBER background)
  Q_PROPERTY(qreal cornerRadius MEMBER cornerRadius)
  Q_PROPERTY(qreal borderWidth MEMBER borderWidth)
  Q_PROPERTY(QColor borderColour MEMBER borderColour)

 public:
  bool shown = false;
  QString text;
  QColor colour;
  QFont font;
  int alignment = 0;
  int lines = 1;
  qreal lineHeight = 0;
  qreal alpha = 1;
  QColor background;
  qreal cornerRadius = 0;
  qreal borderWidth = 0;
  QColor borderColour;
  friend bool operator==(const LabelLook&, const LabelLook&) = default;
};

struct ButtonLook {
  Q_GADGET
  QML_VALUE_TYPE(buttonLook)
  Q_PROPERTY(bool shown MEMBER shown)
  Q_PROPERTY(bool enabled MEMBER enabled)
  Q_PROPERTY(QString title MEMBER title)
  Q_PROPERTY(QColor titleColour MEMBER titleColour)
  Q_PROPERTY(QFont font MEMBER font)
  Q_PROPERTY(qreal alpha MEMBER alpha)
  Q_PROPERTY(QColor background MEMBER background)
  Q_PROPERTY(qreal cornerRadius MEMBER cornerRadius)
  Q_PROPERTY(qreal height MEMBER height)

 public:
  bool shown = false;
  bool enabled = false;
  QString title;
  QColor titleColour;
  QFont font;
  qreal alpha = 1;
  QColor background;
  qreal cornerRadius = 0;
  qreal height = 0;
  friend bool operator==(const ButtonLook&, const ButtonLook&) = default;
};

struct AlertLook {
  Q_GADGET
  QML_VALUE_TYPE(alertLook)
  Q_PROPERTY(bool shown MEMBER shown)
  Q_PROPERTY(halvora::LabelLook title MEMBER title)
  Q_PROPERTY(halvora::LabelLook message MEMBER message)
  Q_PROPERTY(halvora::ButtonLook button MEMBER button)

 public:
  bool shown = false;
  LabelLook title;
  LabelLook message;
  ButtonLook button;
  friend bool operator==(const AlertLook&, const AlertLook&) = default;
};

QColor colourWithAlpha(const Colour& colour);
/// Transparent for none.
QColor colourWithAlpha(const MaybeColour& colour);
Colour colourFrom(const QColor& colour);
QString textFrom(std::string_view text);

LabelLook lookOf(const Label& label, const Reading& reading);
ButtonLook lookOf(const Button& button, const Reading& reading);
AlertLook lookOf(const std::optional<Alert>& alert, const Reading& reading);

}  // namespace halvora
