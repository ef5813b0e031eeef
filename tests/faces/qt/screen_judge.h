// SPDX-License-Identifier: Apache-2.0
// Judges one screen of the views by figures: no word is cut or broken, no control is out of
// reach, too small or on top of another, and letters and buttons stand out from their ground as it
// was drawn. A test makes one for each screen.
#pragma once

#include <QImage>
#include <QQuickItem>
#include <QQuickWindow>
#include <string>
#include <vector>

#include "tests/faces/qt/status_bench.h"

namespace halvora {

class ScreenJudge {
 public:
  /// `what` says in findings which screen it is.
  ScreenJudge(StatusBench& bench, std::string what);
  /// Of a window as it is in the picture; the item of that name lies before all else.
  ScreenJudge(QQuickWindow& window, QImage picture, const char* front, std::string what);

  void judge();
  /// As it was judged.
  const QImage& picture() const { return picture_; }

 private:
  std::string where(const QQuickItem& item) const;
  bool isInFront(const QQuickItem& item) const;
  QRect partOf(const QQuickItem& item) const;
  void judgeText(const QQuickItem& text);
  void judgeInk(const QQuickItem& text);
  void judgeButton(const QQuickItem& button);
  void judgeEdge(const QQuickItem& button);
  void judgeSight();
  void judgeOverlaps();

  const QQuickItem* item(const char* name) const;

  QQuickWindow& window_;
  const std::string what_;
  /// What lies before all else, and takes what the user does.
  const char* front_;
  QImage picture_;
  std::vector<QQuickItem*> items_;
};

}  // namespace halvora
