// SPDX-License-Identifier: Apache-2.0
// The interface of the example host, as it stands in its file, and those of the documents, on a
// virtual phone.
#include <QByteArray>
#include <QQmlComponent>
#include <QQuickWindow>
#include <QString>
#include <QUrl>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "adapters/standard/standard_files.h"
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

/// The first example in QML of a page that has those words.
std::string exampleOf(const std::string& page, const std::string& words) {
  const std::string text = readFile(sourceTree() + "/" + page, 1U << 20).value_or("");
  const std::string fence = "```qml\n";
  for (std::size_t at = text.find(fence); at != std::string::npos; at = text.find(fence, at)) {
    at += fence.size();
    const std::string example = text.substr(at, text.find("\n```\n", at) - at);
    if (example.find(words) != std::string::npos) return example;
  }
  return "";
}

TEST_F(ExamplesTest, WhatTheReadmeHasWorksAsPasted) {
  QmlWindow pasted(qml, exampleOf("README.md", "Window").c_str());
  phone.loop.runFor(milliseconds(1000));
  show(200, 100, 50);
  EXPECT_EQ(pasted.colourAt(195, 100), QColor(200, 100, 50));
}

TEST_F(ExamplesTest, APageOnEmbeddingHasAViewThatSaysWhomItBelieves) {
  const std::string example = exampleOf("docs/embedding.md", "showKeyFile");
  ASSERT_FALSE(example.empty());
  QQmlComponent component(&qml);
  component.setData(
      QByteArray::fromStdString("import QtQuick\nimport Halvora\nItem {\n" + example + "}"),
      QUrl());
  const std::unique_ptr<QObject> root(component.create());
  ASSERT_TRUE(root) << component.errorString().toStdString();
  const QObject* view = root->children().value(0);
  ASSERT_TRUE(view);
  EXPECT_EQ(view->property("authentication").toInt(), 2);
  // The key that it names is not there.
  EXPECT_FALSE(view->property("showKeyError").toString().isEmpty());
}

}  // namespace
}  // namespace halvora
