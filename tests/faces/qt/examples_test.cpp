// SPDX-License-Identifier: Apache-2.0
// The interface of the example host, as it stands in its file, on a virtual phone.
#include <QQmlComponent>
#include <QQuickWindow>
#include <QString>
#include <QUrl>
#include <memory>

#include <gtest/gtest.h>

#include "tests/faces/qt/qml_bench.h"
#include "tests/support/source_tree.h"

namespace halvora {
namespace {

struct ExamplesTest : testing::Test, QmlBench {};

TEST_F(ExamplesTest, TheQmlHostShowsTheLightByItself) {
  QQmlComponent component(
      &qml,
      QUrl::fromLocalFile(QString::fromStdString(sourceTree() + "/examples/qml-host/Main.qml")));
  const std::unique_ptr<QObject> root(component.create());
  auto* window = qobject_cast<QQuickWindow*>(root.get());
  ASSERT_TRUE(window) << component.errorString().toStdString();
  QCoreApplication::processEvents();
  // It has called start itself, and nobody has joined yet.
  phone.loop.runFor(milliseconds(1000));
  show(200, 100, 50);
  EXPECT_EQ(window->grabWindow().pixelColor(195, 100), QColor(Qt::black));
  auto* audience = root->findChild<QQuickItem*>(QStringLiteral("halvoraAudienceView"));
  ASSERT_TRUE(audience);
  QMetaObject::invokeMethod(audience, "join");
  phone.loop.runFor(milliseconds(300));
  const QImage seen = window->grabWindow().convertToFormat(QImage::Format_RGB32);
  EXPECT_EQ(seen.size(), QSize(390, 844));
  EXPECT_EQ(seen.pixelColor(195, 100), QColor(200, 100, 50));
}

}  // namespace
}  // namespace halvora
