// SPDX-License-Identifier: Apache-2.0
// The window in which the demo plays a scenario, as assistive technology finds it.
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QUrl>
#include <memory>
#include <variant>

#include <gtest/gtest.h>

#include "adapters/virtual/virtual_devices.h"
#include "adapters/virtual/virtual_run_loop.h"
#include "apps/console/libraries.h"
#include "apps/console/options.h"
#include "apps/console/scenario_loop.h"
#include "apps/console/show_files.h"
#include "tests/apps/console/letter_keys.h"
#include "tests/faces/qt/access_tree.h"
#include "tests/faces/qt/event_wait.h"
#include "tests/support/source_tree.h"

namespace halvora {
namespace {

TEST(ScenarioWindow, SaysWhatIsPlayedAndWhichKeysThereAre) {
  DemoOptions options;
  options.assets = sourceTree() + "/assets/demo";
  options.scenario = sourceTree() + "/assets/demo/example-show.jsonl";
  DemoLibraries libraries;
  const auto files = openShow(options, options.assets, libraries.json);
  ASSERT_TRUE(std::holds_alternative<ShowFiles>(files)) << std::get<DemoRefusal>(files).text;
  VirtualRunLoop loop;
  VirtualQueues queues(loop);
  ScenarioLoop player(std::get<ShowFiles>(files), loop, queues, libraries);
  QQmlEngine qml;
  qml.addImportPath(QStringLiteral("qrc:/qt/qml"));
  QQmlComponent component(&qml, QUrl(QStringLiteral("qrc:/qt/qml/HalvoraDemo/Main.qml")));
  const std::unique_ptr<QObject> root(component.createWithInitialProperties(
      {{QStringLiteral("player"), QVariant::fromValue(&player)}}));
  ASSERT_TRUE(root) << component.errorString().toStdString();
  auto& window = *qobject_cast<QQuickWindow*>(root.get());
  letQtWorkUntil([&] { return window.isExposed(); });
  player.play(*window.findChild<LightSurface*>(QStringLiteral("lightSurface")));
  loop.runFor(milliseconds(5000));
  expectNoLetterDoesAnything(window);
  const AccessNodes nodes = accessTree(window);
  expectSpeaking(nodes);
  for (const char* name : {"titleText", "statusText", "hintText"}) {
    const AccessNode* text = withObjectName(nodes, QString::fromLatin1(name));
    ASSERT_NE(text, nullptr) << name;
    EXPECT_EQ(text->role, QAccessible::StaticText);
  }
  EXPECT_EQ(withObjectName(nodes, QStringLiteral("statusText"))->name, player.status());
}

}  // namespace
}  // namespace halvora
