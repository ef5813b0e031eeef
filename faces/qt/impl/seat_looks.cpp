// SPDX-License-Identifier: Apache-2.0
#include "faces/qt/impl/seat_looks.h"

#include <QFontMetricsF>
#include <algorithm>

#include "faces/qt/impl/status_fonts.h"

namespace halvora {

namespace {

// Alerts look the same in every host.
constexpr double kAlertTitleSize = 17;
constexpr double kAlertMessageSize = 14;
constexpr double kAlertButtonHeight = 44;

constexpr int kSmallestFont = 10;
/// A line may come out wider than its letters measure, by less than this.
constexpr qreal kSpare = 1;

// Japanese may be broken anywhere, so its words need not fit.
bool isOneWord(const QString& word) {
  return std::none_of(word.begin(), word.end(), [](QChar letter) {
    return letter.unicode() >= 0x3000 && letter.unicode() <= 0xFFEF;
  });
}

qreal widestWord(const QFont& font, const QString& text) {
  const QFontMetricsF metrics(font);
  qreal widest = 0;
  for (const QString& word : text.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
    if (isOneWord(word)) widest = std::max(widest, metrics.horizontalAdvance(word));
  }
  return widest;
}

// Letters do not shrink quite as their size does, so that what should fit is measured again.
QFont keepingWords(QFont font, const QString& text, qreal width) {
  if (!(width > 0)) return font;
  qreal widest = widestWord(font, text) + kSpare;
  while (widest > width && font.pixelSize() > kSmallestFont) {
    const auto fitting = static_cast<int>(font.pixelSize() * width / widest);
    font.setPixelSize(std::clamp(fitting, kSmallestFont, font.pixelSize() - 1));
    widest = widestWord(font, text) + kSpare;
  }
  return font;
}

LabelLook alertLabel(const std::string& text, double size, FontWeight weight,
                     const Reading& reading) {
  Label label;
  label.text = text;
  label.font = {"", size, weight};
  label.alignment = TextAlignment::center;
  label.lines = 0;
  return {label, reading};
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

QString LabelLook::text() const { return textFrom(label_.text); }
QColor LabelLook::colour() const {
  return colours().high() ? colours().ink() : colourWithAlpha(label_.colour);
}
QFont LabelLook::font() const { return fontOf(label_.font, reading_.textScale); }
QFont LabelLook::fontWithin(const QString& text, qreal width) const {
  return keepingWords(font(), text, width);
}
QColor LabelLook::background() const {
  return colours().high() ? colours().ground() : colourWithAlpha(label_.background);
}
qreal LabelLook::borderWidth() const {
  return colours().high() ? colours().lineWidth() : label_.border.width;
}
QColor LabelLook::borderColour() const {
  return colours().high() ? colours().hairline() : colourWithAlpha(label_.border.colour);
}

// Where the layout is mirrored, QML takes "left" for the side where lines begin.
int LabelLook::alignment() const {
  switch (label_.alignment) {
    case TextAlignment::natural:
      return Qt::AlignLeft;
    case TextAlignment::left:
      return reading_.isRightToLeft ? Qt::AlignRight : Qt::AlignLeft;
    case TextAlignment::right:
      return reading_.isRightToLeft ? Qt::AlignLeft : Qt::AlignRight;
    case TextAlignment::center:
      return Qt::AlignHCenter;
    case TextAlignment::justified:
      return Qt::AlignJustify;
  }
  return Qt::AlignLeft;
}

// A fixed line height is meant for the usual sizes of text: letters are never cut for it.
qreal LabelLook::lineHeight() const {
  if (label_.lineHeight <= 0) return 0;
  return std::max(label_.lineHeight * reading_.textScale, QFontMetricsF(font()).height());
}

QString ButtonLook::title() const { return textFrom(button_.title); }
QColor ButtonLook::titleColour() const {
  if (!colours().high()) return colourWithAlpha(button_.titleColour);
  return isFilled() ? colours().ground() : colours().ink();
}
QFont ButtonLook::font() const { return fontOf(button_.font, reading_.textScale); }
QFont ButtonLook::fontWithin(qreal width) const { return keepingWords(font(), title(), width); }
QColor ButtonLook::background() const {
  if (!colours().high() || !button_.background) return colourWithAlpha(button_.background);
  return isFilled() ? colours().ink() : colours().ground();
}
// What cannot be pressed is an outline there, and not paler.
qreal ButtonLook::alpha() const { return colours().high() ? 1 : button_.alpha; }

LabelLook AlertLook::title() const {
  if (!alert_) return {};
  return alertLabel(alert_->title, kAlertTitleSize, FontWeight::semibold, reading_);
}

LabelLook AlertLook::message() const {
  if (!alert_) return {};
  return alertLabel(alert_->message, kAlertMessageSize, FontWeight::regular, reading_);
}

ButtonLook AlertLook::button() const {
  if (!alert_) return {};
  Button button;
  button.title = alert_->button;
  button.titleColour = kSystemBlue;
  button.font = {"", kAlertTitleSize, FontWeight::semibold};
  button.height = kAlertButtonHeight;
  return {button, reading_};
}

}  // namespace halvora
