// SPDX-License-Identifier: Apache-2.0
// Who dictates, or has a cat on the keyboard, must not change a phone's window by a letter.
#pragma once

#include <QCoreApplication>
#include <QKeyEvent>
#include <QQuickWindow>

#include <gtest/gtest.h>

namespace halvora {

inline void typeKey(QQuickWindow& window, int which) {
  const QString text = which < Qt::Key_Escape ? QString(QChar(which)).toLower() : QString();
  for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
    QKeyEvent event(type, which, Qt::NoModifier, text);
    QCoreApplication::sendEvent(&window, &event);
    QCoreApplication::processEvents();
  }
}

/// Leaves the window as it was: F11 alone makes it full screen and back.
inline void expectNoLetterDoesAnything(QQuickWindow& window) {
  const auto before = window.visibility();
  for (int letter = Qt::Key_A; letter <= Qt::Key_Z; ++letter) {
    typeKey(window, letter);
    ASSERT_EQ(window.visibility(), before) << static_cast<char>(letter);
    ASSERT_TRUE(window.isVisible()) << static_cast<char>(letter);
  }
  typeKey(window, Qt::Key_F11);
  EXPECT_EQ(window.visibility(), QWindow::FullScreen);
  typeKey(window, Qt::Key_F11);
  EXPECT_EQ(window.visibility(), before);
}

}  // namespace halvora
