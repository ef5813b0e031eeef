// SPDX-License-Identifier: Apache-2.0
// How far colours stand out from one another, as figures and as measured in a picture. Values.
#pragma once

#include <QColor>
#include <QImage>
#include <QRect>
#include <algorithm>
#include <cmath>
#include <map>

namespace halvora {

/// What letters need, and what the edges of controls need.
inline constexpr double kTextContrast = 4.5;
inline constexpr double kControlContrast = 3;

inline double linearLevel(double value) {
  return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}
inline double luminance(const QColor& colour) {
  return 0.2126 * linearLevel(colour.redF()) + 0.7152 * linearLevel(colour.greenF()) +
         0.0722 * linearLevel(colour.blueF());
}
/// 1 for the same, 21 for black and white.
inline double contrast(const QColor& a, const QColor& b) {
  const double first = luminance(a);
  const double second = luminance(b);
  return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}
inline QColor over(const QColor& ink, double alpha, const QColor& ground) {
  const auto part = static_cast<float>(alpha);
  const auto mix = [part](float a, float b) { return a * part + b * (1 - part); };
  return QColor::fromRgbF(mix(ink.redF(), ground.redF()), mix(ink.greenF(), ground.greenF()),
                          mix(ink.blueF(), ground.blueF()));
}

/// The colour that most of a picture's part has; the part lies within the picture.
inline QRgb groundIn(const QImage& picture, const QRect& part) {
  std::map<QRgb, int> counts;
  for (int y = part.top(); y <= part.bottom(); ++y) {
    for (int x = part.left(); x <= part.right(); ++x) ++counts[picture.pixel(x, y)];
  }
  const auto most =
      std::max_element(counts.begin(), counts.end(),
                       [](const auto& a, const auto& b) { return a.second < b.second; });
  return most->first;
}
/// How far that pixel of the part stands out from its ground which does so most: of a text, the
/// middle of a stroke. The edges of letters, which are smoothed, count for nothing.
inline double inkContrast(const QImage& picture, const QRect& part) {
  const QColor ground(groundIn(picture, part));
  std::map<QRgb, double> known;
  double most = 1;
  for (int y = part.top(); y <= part.bottom(); ++y) {
    for (int x = part.left(); x <= part.right(); ++x) {
      const QRgb pixel = picture.pixel(x, y);
      const auto [found, isNew] = known.try_emplace(pixel, 1);
      if (isNew) found->second = contrast(QColor(pixel), ground);
      most = std::max(most, found->second);
    }
  }
  return most;
}

}  // namespace halvora
