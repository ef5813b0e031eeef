// SPDX-License-Identifier: Apache-2.0
#include "faces/qt/seat_looks.h"

#include <QFontMetricsF>
#include <algorithm>

#include "faces/qt/status_fonts.h"

namespace halvora {

namespace {

// Alerts look the same in every host.
constexpr double kAlertTitleSize = 17;
constexpr double kAlertMessageSize = 14;
constexpr double kAlertButtonHeight = 44;

// Where the layout is mirrored, QML takes "left" for the side where lines begin.
int alignmentOf(TextAlignment alignment, const Reading& reading) {
  switch (alignment) {
    case TextAlignment::natural:
      return Qt::AlignLeft;
    case TextAlignment::left:
      return reading.isRightToLeft ? Qt::AlignRight : Qt::AlignLeft;
    case TextAlignment::right:
      return reading.isRightToLeft ? Qt::AlignLeft : Qt::AlignRight;
    case TextAlignment::center:
      return Qt::AlignHCenter;
    case TextAlignment::justified:
      return Qt::AlignJustify;
  }
  return Qt::AlignLeft;
}

Label alertLabel(const std::string& text, double size, FontWeight weight) {
  Label label;
  label.text = text;
  label.font = {"", size, weight};
  label.alignment = TextAlignment::center;
  label.lines = 0;
  return label;
}

}  // namespace

QColor colourWithAlpha(const Colour& colour) {
  const auto level = [](float value) { return std::clamp(value, 0.0F, 1.0F); };
  return QColor::fromRgbF(level(colour.red), level(colour.green), level(colour.blue),
                          level(colour.alpha));
}

QColor colourWithAlpha(const MaybeColour& colour) {
  return colour ? colourWithAlpha(*colour) : QColor(Qt::transparent);
}

Colour colourFrom(const QColor& colour) {
  return {colour.redF(), colour.greenF(), colour.blueF(), colour.alphaF()};
}

QString textFrom(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

LabelLook lookOf(const Label& label, const Reading& reading) {
  LabelLook look;
  look.shown = !label.hidden;
  look.text = textFrom(label.text);
  look.colour = colourWithAlpha(label.colour);
  look.font = fontOf(label.font, reading.textScale);
  look.alignment = alignmentOf(label.alignment, reading);
  look.lines = label.lines;
  // A fixed line height is meant for the usual sizes of text: letters are never cut for it.
  if (label.lineHeight > 0) {
    look.lineHeight =
        std::max(label.lineHeight * reading.textScale, QFontMetricsF(look.font).height());
  }
  look.alpha = label.alpha;
  look.background = colourWithAlpha(label.background);
  look.cornerRadius = label.cornerRadius;
  look.borderWidth = label.border.width;
  look.borderColour = colourWithAlpha(label.border.colour);
  return look;
}

ButtonLook lookOf(const Button& button, const Reading& reading) {
  ButtonLook look;
  look.shown = !button.hidden;
  look.enabled = button.enabled;
  look.title = textFrom(button.title);
  look.titleColour = colourWithAlpha(button.titleColour);
  look.font = fontOf(button.font, reading.textScale);
  look.alpha = button.alpha;
  look.background = colourWithAlpha(button.background);
  look.cornerRadius = button.cornerRadius;
  look.height = button.height;
  return look;
}

AlertLook lookOf(const std::optional<Alert>& alert, const Reading& reading) {
  AlertLook look;
  if (!alert) return look;
  look.shown = true;
  look.title = lookOf(alertLabel(alert->title, kAlertTitleSize, FontWeight::semibold), reading);
  look.message =
      lookOf(alertLabel(alert->message, kAlertMessageSize, FontWeight::regular), reading);
  Button button;
  button.title = alert->button;
  button.titleColour = kSystemBlue;
  button.font = {"", kAlertTitleSize, FontWeight::semibold};
  button.height = kAlertButtonHeight;
  look.button = lookOf(button, reading);
  return look;
}

}  // namespace halvora
