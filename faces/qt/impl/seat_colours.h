// SPDX-License-Identifier: Apache-2.0
// The colours of panel and wizard that no host decides, and those that take the place of
// everybody's where the user has asked for high contrast: one ink on one ground. Values; main
// thread.
#pragma once

#include <QColor>
#include <QObject>
#include <cstdint>

#include <qqmlregistration.h>

#include "halvora/user_wishes.h"

namespace halvora {

enum class SeatPalette : std::uint8_t { usual, whiteOnBlack, blackOnWhite };

/// Dark, unless the user likes it light.
SeatPalette paletteFor(bool highContrast, ColourScheme scheme);

class SeatColours {
  Q_GADGET
  QML_VALUE_TYPE(seatColours)
  /// Whether contrast goes before what the host has chosen.
  Q_PROPERTY(bool high READ high)
  Q_PROPERTY(QColor ink READ ink)
  /// Behind all else; clear where the host has its own.
  Q_PROPERTY(QColor ground READ ground)
  Q_PROPERTY(QColor hairline READ hairline)
  /// Of hairlines, and of the line around what can be chosen; 0 for none there.
  Q_PROPERTY(qreal lineWidth READ lineWidth)
  Q_PROPERTY(qreal outlineWidth READ outlineWidth)
  Q_PROPERTY(QColor raised READ raised)
  /// Around a line that is typed in.
  Q_PROPERTY(QColor field READ field)
  Q_PROPERTY(QColor alert READ alert)
  Q_PROPERTY(QColor shade READ shade)
  /// Behind words that lie on a picture, and behind what is selected of a text.
  Q_PROPERTY(QColor sign READ sign)
  Q_PROPERTY(QColor selectedInk READ selectedInk)
  /// The two lines around what has the keyboard.
  Q_PROPERTY(QColor ring READ ring)
  Q_PROPERTY(QColor ringInside READ ringInside)

 public:
  SeatColours() = default;
  explicit SeatColours(SeatPalette palette) : palette_(palette) {}

  bool high() const { return palette_ != SeatPalette::usual; }
  QColor ink() const;
  QColor ground() const;
  QColor hairline() const;
  qreal lineWidth() const { return high() ? 2 : 1; }
  qreal outlineWidth() const { return high() ? 2 : 0; }
  QColor raised() const;
  QColor field() const;
  QColor alert() const;
  QColor shade() const;
  QColor sign() const;
  QColor selectedInk() const;
  QColor ring() const { return ink(); }
  QColor ringInside() const { return high() ? ground() : QColor(Qt::black); }
  friend bool operator==(const SeatColours&, const SeatColours&) = default;

 private:
  const struct SeatColourRow& row() const;

  SeatPalette palette_ = SeatPalette::usual;
};

}  // namespace halvora
