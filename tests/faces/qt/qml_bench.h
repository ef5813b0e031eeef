// SPDX-License-Identifier: Apache-2.0
// A QML engine wired to a virtual phone, and windows made of QML texts in it. Owned by a test.
#pragma once

#include <QColor>
#include <QCoreApplication>
#include <QImage>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QString>
#include <QUrl>
#include <cstdint>
#include <memory>

#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/virtual/virtual_phone.h"
#include "engine/broadcast.h"
#include "faces/qt/halvora_host.h"
#include "halvora/engine.h"

namespace halvora {

/// What the window shows that a QML text describes.
class QmlWindow {
 public:
  QmlWindow(QQmlEngine& engine, const char* text) {
    QQmlComponent component(&engine);
    component.setData(text, QUrl());
    root_.reset(component.create());
    EXPECT_TRUE(root_) << component.errorString().toStdString();
    // The window learns its size from the window system.
    QCoreApplication::processEvents();
  }

  QQuickWindow& window() { return *qobject_cast<QQuickWindow*>(root_.get()); }
  template <class T = QQuickItem>
  T* find(const char* name) {
    return root_->findChild<T*>(QString::fromLatin1(name));
  }
  QColor colourAt(int x, int y) {
    return window().grabWindow().convertToFormat(QImage::Format_RGB32).pixelColor(x, y);
  }

 private:
  std::unique_ptr<QObject> root_;
};

struct QmlBench {
  QmlBench() {
    controller.viewDidLoad();
    qml.addImportPath(QStringLiteral("qrc:/qt/qml"));
    HalvoraHost::install(qml, phone.platform(), controller);
  }

  /// Listens, and stands just after the first scan began.
  void listen() {
    controller.start();
    phone.loop.runFor(milliseconds(1000));
  }
  /// A plain colour on the air, and the time that a show takes to fade in.
  void show(std::uint8_t red, std::uint8_t green, std::uint8_t blue, std::uint8_t mode = 1) {
    onAir.applicationId = 258;
    onAir.transmitter = 7;
    onAir.master = 255;
    onAir.mode = mode;
    onAir.red = red;
    onAir.green = green;
    onAir.blue = blue;
    advertise();
    phone.loop.runFor(milliseconds(1000));
  }
  /// The look once more, under the next sequence number; true if it was heard.
  bool advertise() {
    onAir.sequence = ++sequence;
    return phone.bluetooth.advertise(encodeBroadcast(onAir));
  }

  const ExactJsonReader reader;
  VirtualPhone phone{reader};
  HalvoraViewController controller{phone.platform()};
  QQmlEngine qml;
  std::uint16_t sequence = 0;
  Broadcast onAir;
};

}  // namespace halvora
