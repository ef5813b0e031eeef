// SPDX-License-Identifier: Apache-2.0
#include <QGuiApplication>

#include <gtest/gtest.h>

int main(int argumentCount, char** arguments) {
  // No display and no graphics card is needed, and pictures are the same on every machine.
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("QT_QUICK_BACKEND", "software");
  // What is to be drawn is drawn in the next turn, so a test knows that nothing is.
  qputenv("QT_QPA_UPDATE_IDLE_TIME", "0");
  testing::InitGoogleTest(&argumentCount, arguments);
  const QGuiApplication application(argumentCount, arguments);
  return RUN_ALL_TESTS();
}
