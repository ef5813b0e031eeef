// SPDX-License-Identifier: Apache-2.0
#include <QGuiApplication>

#include <gtest/gtest.h>

int main(int argumentCount, char** arguments) {
  // No display and no graphics card is needed, and pictures are the same on every machine.
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("QT_QUICK_BACKEND", "software");
  testing::InitGoogleTest(&argumentCount, arguments);
  const QGuiApplication application(argumentCount, arguments);
  return RUN_ALL_TESTS();
}
