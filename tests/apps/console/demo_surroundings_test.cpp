// SPDX-License-Identifier: Apache-2.0
// The demo where something is missing that it stands on: no display, one that does not answer or
// cannot draw, no font, no readable asset. It says so or does without, and never crashes.
#ifdef HALVORA_DEMO

#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "tests/apps/console/demo_bench.h"

namespace halvora {
namespace {

struct DemoSurroundings : testing::Test {
  DemoSurroundings() {
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "QT_QUICK_BACKEND"}) {
      environment.remove(QString::fromLatin1(name));
    }
    const std::string text = "{\"at\": 0, \"start\": true}\n" + packetLine(1.5, 30, 160, 90);
    scenario = writeScenario(folder.path(), text);
  }

  void set(const char* name, const QString& value) {
    environment.insert(QString::fromLatin1(name), value);
  }
  DemoRun run(const QStringList& more) {
    return runDemo(QStringList{QStringLiteral("--assets"), QString::fromStdString(demoAssets()),
                               QStringLiteral("--scenario"), scenario} +
                       more,
                   environment, folder.path());
  }
  void expectContactSheet(const DemoRun& ended) {
    EXPECT_EQ(ended.status, 0) << ended.error.toStdString();
    EXPECT_TRUE(ended.output.startsWith(QStringLiteral("Contact sheet")))
        << ended.output.toStdString();
    const QImage sheet(folder.filePath(QStringLiteral("halvora-contact-sheet.png")));
    // The last tile: the show has faded in.
    EXPECT_EQ(sheet.pixelColor(7 * 72 + 36, 40 + 56), QColor(30, 160, 90));
  }

  const QTemporaryDir folder;
  QString scenario;
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
};

TEST_F(DemoSurroundings, WithoutADisplayItDrawsAContactSheet) {
  const DemoRun ended = run({});
  expectContactSheet(ended);
}

TEST_F(DemoSurroundings, WhereNoDisplayAnswersItDrawsAContactSheetToo) {
  set("DISPLAY", QStringLiteral(":54321"));
  set("WAYLAND_DISPLAY", QStringLiteral("no-such-display"));
  const DemoRun ended = run({});
  expectContactSheet(ended);
  EXPECT_TRUE(ended.error.contains(QStringLiteral(":54321"))) << ended.error.toStdString();
}

TEST_F(DemoSurroundings, AWindowSystemThatIsAskedForAndNotThereIsDoneWithout) {
  set("QT_QPA_PLATFORM", QStringLiteral("no-such-platform"));
  const DemoRun ended = run({});
  expectContactSheet(ended);
  EXPECT_TRUE(ended.error.contains(QStringLiteral("no-such-platform")))
      << ended.error.toStdString();
}

TEST_F(DemoSurroundings, AScreenshotNeedsNoDisplay) {
  set("DISPLAY", QStringLiteral(":54321"));
  const QString path = folder.filePath(QStringLiteral("window.png"));
  const DemoRun ended = run({QStringLiteral("--screenshot"), path});
  EXPECT_EQ(ended.status, 0) << ended.error.toStdString();
  const QImage window(path);
  EXPECT_EQ(window.pixelColor(window.width() / 2, window.height() / 2), QColor(30, 160, 90));
}

// An X server that cannot do OpenGL.
TEST_F(DemoSurroundings, ADisplayWithoutGraphicsIsDrawnOnInSoftware) {
  const XServer server({QStringLiteral("-extension"), QStringLiteral("GLX")});
  if (!server.isInstalled()) GTEST_SKIP() << "no Xvfb";
  set("DISPLAY", server.display());
  const QString path = folder.filePath(QStringLiteral("window.png"));
  const DemoRun ended = run({QStringLiteral("--screenshot"), path});
  EXPECT_EQ(ended.status, 0) << ended.error.toStdString();
  const QImage window(path);
  EXPECT_EQ(window.pixelColor(window.width() / 2, window.height() / 2), QColor(30, 160, 90));
}

TEST_F(DemoSurroundings, TheConsoleFitsTheScreenThatItOpensOn) {
  const XServer server(
      {QStringLiteral("-screen"), QStringLiteral("0"), QStringLiteral("800x600x24")});
  if (!server.isInstalled()) GTEST_SKIP() << "no Xvfb";
  const QString path = folder.filePath(QStringLiteral("console.png"));
  QProcessEnvironment small = server.environment();
  small.insert(QStringLiteral("QT_QUICK_BACKEND"), QStringLiteral("software"));
  const DemoRun ended = runDemo({QStringLiteral("--assets"), QString::fromStdString(demoAssets()),
                                 QStringLiteral("--screenshot"), path},
                                small, folder.path());
  EXPECT_EQ(ended.status, 0) << ended.error.toStdString();
  EXPECT_EQ(QImage(path).size(), QSize(800, 600));
}

TEST_F(DemoSurroundings, WithoutAnyFontThereIsNoTextAndAllElse) {
  const QString fonts = folder.filePath(QStringLiteral("fonts"));
  QDir().mkpath(fonts);
  QFile config(folder.filePath(QStringLiteral("fonts.conf")));
  ASSERT_TRUE(config.open(QIODevice::WriteOnly));
  config.write("<fontconfig><dir>" + fonts.toUtf8() + "</dir><cachedir>" + fonts.toUtf8() +
               "</cachedir></fontconfig>");
  config.close();
  set("FONTCONFIG_FILE", config.fileName());
  set("QT_QPA_FONTDIR", fonts);
  const DemoRun sheet = run({});
  expectContactSheet(sheet);
  const QString path = folder.filePath(QStringLiteral("console.png"));
  const DemoRun console = runDemo({QStringLiteral("--assets"), QString::fromStdString(demoAssets()),
                                   QStringLiteral("--screenshot"), path},
                                  environment, folder.path());
  EXPECT_EQ(console.status, 0) << console.error.toStdString();
  EXPECT_GE(QImage(path).width(), 900);
}

// What is no folder, and a folder in which nothing can be read.
TEST_F(DemoSurroundings, UnreadableAssets) {
  const QString broken = folder.filePath(QStringLiteral("broken"));
  QDir().mkpath(broken);
  for (const char* name : {"HVAssets", "strings", "example-show.jsonl"}) {
    ASSERT_TRUE(QFile::link(QString::fromLatin1(name),
                            broken + QLatin1Char('/') + QString::fromLatin1(name)));
  }
  const QString sheet = folder.filePath(QStringLiteral("sheet.png"));
  const auto runOn = [&](const QString& assets, const QStringList& more) {
    return runDemo(
        QStringList{QStringLiteral("--assets"), assets, QStringLiteral("--contact-sheet"), sheet} +
            more,
        environment, folder.path());
  };
  const DemoRun none = runOn(scenario, {});
  EXPECT_EQ(none.status, 2);
  EXPECT_TRUE(none.error.contains(scenario)) << none.error.toStdString();
  const DemoRun noShow = runOn(broken, {});
  EXPECT_EQ(noShow.status, 2);
  EXPECT_TRUE(noShow.error.contains(QStringLiteral("example-show.jsonl")))
      << noShow.error.toStdString();
  EXPECT_FALSE(QFile::exists(sheet));
  const DemoRun plain = runOn(broken, {QStringLiteral("--scenario"), scenario});
  EXPECT_EQ(plain.status, 0) << plain.error.toStdString();
  EXPECT_EQ(QImage(sheet).pixelColor(7 * 72 + 36, 40 + 56), QColor(30, 160, 90));
}

}  // namespace
}  // namespace halvora

#endif
