// SPDX-License-Identifier: Apache-2.0
// Compares what a test has drawn with a picture in tests/faces/qt/pictures. With
// HALVORA_RENEW_PICTURES=1 in the environment it writes that picture anew instead; look at every
// one.
#pragma once

#include <QDir>
#include <QImage>
#include <QString>
#include <algorithm>
#include <cstdlib>

#include <gtest/gtest.h>

#include "tests/support/source_tree.h"

namespace halvora {

/// A pixel is another one if a channel differs by more than this, of 255.
inline constexpr int kSameShade = 48;
/// So many of a thousand pixels may be.
inline constexpr int kMayDiffer = 4;

inline int differenceOf(QRgb a, QRgb b) {
  return std::max({std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                   std::abs(qBlue(a) - qBlue(b))});
}

inline int differingPixels(const QImage& a, const QImage& b) {
  int count = 0;
  for (int y = 0; y < a.height(); ++y) {
    for (int x = 0; x < a.width(); ++x) {
      if (differenceOf(a.pixel(x, y), b.pixel(x, y)) > kSameShade) ++count;
    }
  }
  return count;
}

inline QString pictureFolder() {
  return QString::fromStdString(sourceTree() + "/tests/faces/qt/pictures/");
  ;
}

inline void expectPicture(const QImage& seen, const char* name) {
  const QString file = pictureFolder() + QString::fromLatin1(name) + QStringLiteral(".png");
  if (qEnvironmentVariableIsSet("HALVORA_RENEW_PICTURES")) {
    ASSERT_TRUE(QDir().mkpath(pictureFolder()));
    ASSERT_TRUE(seen.save(file, "PNG", 0));
    return;
  }
  const QImage expected(file);
  ASSERT_EQ(seen.size(), expected.size()) << name;
  const int differing = differingPixels(seen, expected);
  if (differing * 1000 <= kMayDiffer * seen.width() * seen.height()) return;
  // Beside the program, for whoever wants to know what it looks like now.
  const QString kept = QDir::current().filePath(QString::fromLatin1(name) + "-seen.png");
  seen.save(kept);
  ADD_FAILURE() << name << ": " << differing << " pixels differ; see " << kept.toStdString();
}

}  // namespace halvora
