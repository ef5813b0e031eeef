// SPDX-License-Identifier: Apache-2.0
// The console in a window off screen, in virtual time, and an operator's hands. Owned by a test.
#pragma once

#include <QColor>
#include <QCoreApplication>
#include <QImage>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QString>
#include <QUrl>
#include <QVariant>
#include <memory>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "adapters/virtual/virtual_devices.h"
#include "adapters/virtual/virtual_run_loop.h"
#include "apps/console/libraries.h"
#include "apps/console/show_console.h"
#include "tests/faces/qt/event_wait.h"
#include "tests/support/source_tree.h"

namespace halvora {

/// The phone listens after a second, and its first show fades in for another one.
inline constexpr Duration kFirstLook = milliseconds(2500);

/// What a repeater makes has no other parent than the item that it lies in.
inline QQuickItem* find(QQuickItem& within, const QString& name) {
  if (within.objectName() == name) return &within;
  for (QQuickItem* child : within.childItems()) {
    if (QQuickItem* found = find(*child, name)) return found;
  }
  return nullptr;
}

struct ConsoleTest : testing::Test {
  /// The folder that holds HVAssets.
  explicit ConsoleTest(const std::string& assets = sourceTree() + "/assets/demo")
      : desk(assets, loop, queues, libraries) {
    qml.addImportPath(QStringLiteral("qrc:/qt/qml"));
    desk.install(qml);
    QQmlComponent component(&qml, QUrl(QStringLiteral("qrc:/qt/qml/HalvoraDemo/Console.qml")));
    root.reset(component.createWithInitialProperties(
        {{QStringLiteral("desk"), QVariant::fromValue(&desk)}}));
    EXPECT_TRUE(root) << component.errorString().toStdString();
    if (!root) return;
    letQtWorkUntil([this] { return window().isActive() && window().isExposed(); });
    // Most shows are on the air, whatever they do.
    desk.setOnAir(true);
    desk.flashes()->setArmed(true);
    settle();
  }
  ~ConsoleTest() override {
    root.reset();
    settle();
  }

  QQuickWindow& window() { return *qobject_cast<QQuickWindow*>(root.get()); }
  QQuickItem& item(const char* name) {
    QQuickItem* found = find(*window().contentItem(), QString::fromLatin1(name));
    if (found == nullptr) throw std::runtime_error(std::string("no item ") + name);
    return *found;
  }
  QPointF middleOf(const char* name) {
    QQuickItem& found = item(name);
    return found.mapToScene(QPointF(found.width() / 2, found.height() / 2));
  }

  static void settle() {
    for (int round = 0; round < 5; ++round) {
      QCoreApplication::sendPostedEvents();
      QCoreApplication::processEvents();
    }
  }
  void pass(Duration time) {
    loop.runFor(time);
    settle();
  }
  void click(const char* name) { clickAt(middleOf(name)); }
  void clickAt(const QPointF& place) {
    for (const auto type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
      const bool isPress = type == QEvent::MouseButtonPress;
      QMouseEvent event(type, place, window().mapToGlobal(place), Qt::LeftButton,
                        isPress ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier);
      QCoreApplication::sendEvent(&window(), &event);
      settle();
    }
  }
  void key(Qt::Key key, const QString& text = {}) {
    for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
      QKeyEvent event(type, key, Qt::NoModifier, text);
      QCoreApplication::sendEvent(&window(), &event);
      settle();
    }
  }
  QColor phoneColour() { return window().grabWindow().pixelColor(middleOf("light").toPoint()); }
  /// Lets the phone and its light settle in a plain colour.
  void showSwatch(const char* swatch) {
    click("mode1");
    click(swatch);
    pass(milliseconds(500));
  }

  VirtualRunLoop loop;
  VirtualQueues queues{loop};
  DemoLibraries libraries;
  ShowConsole desk;
  QQmlEngine qml;
  std::unique_ptr<QObject> root;
};

inline void expectNear(const QColor& seen, const QColor& expected) {
  EXPECT_LE(std::abs(seen.red() - expected.red()), 2) << seen.name().toStdString();
  EXPECT_LE(std::abs(seen.green() - expected.green()), 2) << seen.name().toStdString();
  EXPECT_LE(std::abs(seen.blue() - expected.blue()), 2) << seen.name().toStdString();
}

}  // namespace halvora
