// SPDX-License-Identifier: Apache-2.0
#include "faces/qt/impl/status_fonts.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QScreen>
#include <QString>
#include <QStringList>
#include <algorithm>

namespace halvora {

namespace {

constexpr double kLeastPixels = 1;
constexpr double kMostPixels = 1000;
/// What a desktop's screen has where its user has not asked for larger or smaller texts.
constexpr double kUsualDotsPerInch = 96;
constexpr double kLeastTextScale = 0.5;
constexpr double kMostTextScale = 4;

QFont::Weight weightOf(FontWeight weight) {
  if (weight == FontWeight::bold) return QFont::Bold;
  return weight == FontWeight::semibold ? QFont::DemiBold : QFont::Normal;
}

}  // namespace

std::optional<QFont> installedFont(std::string_view name) {
  const QString wanted =
      QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size())).trimmed();
  if (wanted.isEmpty()) return std::nullopt;
  if (QFontDatabase::hasFamily(wanted)) return QFont(wanted);
  for (qsizetype at = wanted.size() - 1; at > 0; --at) {
    if (wanted[at] != QLatin1Char(' ') && wanted[at] != QLatin1Char('-')) continue;
    const QString family = wanted.left(at);
    const QString style = wanted.mid(at + 1);
    if (QFontDatabase::hasFamily(family) && QFontDatabase::styles(family).contains(style)) {
      return QFontDatabase::font(family, style, QFont().pointSize());
    }
  }
  return std::nullopt;
}

double systemTextScale() {
  const QScreen* screen = QGuiApplication::primaryScreen();
  return screen != nullptr ? screen->logicalDotsPerInch() / kUsualDotsPerInch : 1;
}

double boundedTextScale(double textScale) {
  return std::clamp(textScale, kLeastTextScale, kMostTextScale);
}

QFont fontOf(const Font& font, double textScale) {
  QFont result;
  if (const auto named = installedFont(font.name)) {
    result = *named;
  } else {
    result.setWeight(weightOf(font.weight));
  }
  result.setPixelSize(qRound(std::clamp(font.size * textScale, kLeastPixels, kMostPixels)));
  return result;
}

}  // namespace halvora
