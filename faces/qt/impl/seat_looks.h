// SPDX-License-Identifier: Apache-2.0
// Labels, buttons and alerts of the seat screens as QML reads them: the core's values, of which
// each property is converted when it is asked for, to Qt's types, sizes scaled for the user and
// alignments turned for the direction of the text. Values; main thread.
#pragma once

#include <QColor>
#include <QFont>
#include <QObject>
#include <QRectF>
#include <QString>
#include <optional>
#include <string_view>

#include <qqmlregistration.h>

#include "faces/qt/impl/seat_colours.h"
#include "halvora/labels.h"
#include "halvora/platform/screen.h"

namespace halvora {

/// What the user's system says about all texts.
struct Reading {
  double textScale = 1;
  bool isRightToLeft = false;
  SeatPalette palette = SeatPalette::usual;
  friend bool operator==(const Reading&, const Reading&) = default;
};

class LabelLook {
  Q_GADGET
  QML_VALUE_TYPE(labelLook)
  Q_PROPERTY(bool shown READ shown)
  Q_PROPERTY(QString text READ text)
  Q_PROPERTY(QColor colour READ colour)
  Q_PROPERTY(QFont font READ font)
  /// As of QML's Text, which turns left and right round where its layout is mirrored.
  Q_PROPERTY(int alignment READ alignment)
  Q_PROPERTY(int lines READ lines)
  /// In pixels; 0 for the font's own.
  Q_PROPERTY(qreal lineHeight READ lineHeight)
  Q_PROPERTY(qreal alpha READ alpha)
  Q_PROPERTY(QColor background READ background)
  Q_PROPERTY(qreal cornerRadius READ cornerRadius)
  Q_PROPERTY(qreal borderWidth READ borderWidth)
  Q_PROPERTY(QColor borderColour READ borderColour)
  Q_PROPERTY(halvora::SeatColours colours READ colours)

 public:
  /// Of none.
  LabelLook() { label_.hidden = true; }
  LabelLook(const Label& label, const Reading& reading) : label_(label), reading_(reading) {}

  /// The font, but no larger than lets the longest word of a text lie within that width: a word is
  /// made smaller rather than broken.
  Q_INVOKABLE QFont fontWithin(const QString& text, qreal width) const;

  bool shown() const { return !label_.hidden; }
  QString text() const;
  QColor colour() const;
  QFont font() const;
  int alignment() const;
  int lines() const { return label_.lines; }
  qreal lineHeight() const;
  qreal alpha() const { return label_.alpha; }
  QColor background() const;
  qreal cornerRadius() const { return label_.cornerRadius; }
  qreal borderWidth() const;
  QColor borderColour() const;
  SeatColours colours() const { return SeatColours(reading_.palette); }
  friend bool operator==(const LabelLook&, const LabelLook&) = default;

 private:
  Label label_;
  Reading reading_;
};

class ButtonLook {
  Q_GADGET
  QML_VALUE_TYPE(buttonLook)
  Q_PROPERTY(bool shown READ shown)
  Q_PROPERTY(bool enabled READ enabled)
  Q_PROPERTY(QString title READ title)
  Q_PROPERTY(QColor titleColour READ titleColour)
  Q_PROPERTY(QFont font READ font)
  Q_PROPERTY(qreal alpha READ alpha)
  Q_PROPERTY(QColor background READ background)
  Q_PROPERTY(qreal cornerRadius READ cornerRadius)
  Q_PROPERTY(qreal height READ height)
  Q_PROPERTY(halvora::SeatColours colours READ colours)

 public:
  /// Of none.
  ButtonLook() {
    button_.hidden = true;
    button_.enabled = false;
  }
  ButtonLook(const Button& button, const Reading& reading) : button_(button), reading_(reading) {}

  /// As a label's.
  Q_INVOKABLE QFont fontWithin(qreal width) const;

  bool shown() const { return !button_.hidden; }
  bool enabled() const { return button_.enabled; }
  QString title() const;
  QColor titleColour() const;
  QFont font() const;
  qreal alpha() const;
  QColor background() const;
  qreal cornerRadius() const { return button_.cornerRadius; }
  SeatColours colours() const { return SeatColours(reading_.palette); }
  qreal height() const { return button_.height; }
  friend bool operator==(const ButtonLook&, const ButtonLook&) = default;

 private:
  /// In high contrast: ink under a title in the colour of the ground.
  bool isFilled() const { return button_.background.has_value() && button_.enabled; }

  Button button_;
  Reading reading_;
};

class AlertLook {
  Q_GADGET
  QML_VALUE_TYPE(alertLook)
  Q_PROPERTY(bool shown READ shown)
  Q_PROPERTY(halvora::LabelLook title READ title)
  Q_PROPERTY(halvora::LabelLook message READ message)
  Q_PROPERTY(halvora::ButtonLook button READ button)
  Q_PROPERTY(halvora::SeatColours colours READ colours)

 public:
  AlertLook() = default;
  AlertLook(const std::optional<Alert>& alert, const Reading& reading)
      : alert_(alert), reading_(reading) {}

  bool shown() const { return alert_.has_value(); }
  LabelLook title() const;
  LabelLook message() const;
  ButtonLook button() const;
  SeatColours colours() const { return SeatColours(reading_.palette); }
  friend bool operator==(const AlertLook&, const AlertLook&) = default;

 private:
  /// None of it while it is not shown.
  std::optional<Alert> alert_;
  Reading reading_;
};

QColor colourWithAlpha(const Colour& colour);
/// Transparent for none.
QColor colourWithAlpha(const MaybeColour& colour);
Colour colourFrom(const QColor& colour);
QString textFrom(std::string_view text);
inline QRectF rectFrom(const Rect& rect) { return {rect.x, rect.y, rect.width, rect.height}; }

}  // namespace halvora
