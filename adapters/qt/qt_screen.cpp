// SPDX-License-Identifier: Apache-2.0
#include "adapters/qt/qt_screen.h"

#include <QGuiApplication>
#include <QScreen>
#include <QSize>
#include <QWindow>
#include <algorithm>

namespace halvora {

namespace {

Size sizeOf(const QSize& size) {
  return {static_cast<double>(size.width()), static_cast<double>(size.height())};
}

}  // namespace

Size QtScreen::bounds() const {
  if (const QWindow* window = QGuiApplication::focusWindow()) return sizeOf(window->size());
  for (const QWindow* window : QGuiApplication::topLevelWindows()) {
    if (window->isVisible()) return sizeOf(window->size());
  }
  const QScreen* screen = QGuiApplication::primaryScreen();
  return screen != nullptr ? sizeOf(screen->size()) : Size{};
}

double QtScreen::brightness() const {
  return hasBacklight() ? std::clamp(services_.brightness(), 0.0, 1.0) : 1;
}

void QtScreen::setBrightness(double level) {
  if (hasBacklight()) services_.setBrightness(std::clamp(level, 0.0, 1.0));
}

}  // namespace halvora
