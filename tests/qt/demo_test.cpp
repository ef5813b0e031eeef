// SPDX-License-Identifier: Apache-2.0
// The demo as its users start it. What it draws is compared with an engine that plays the same
// scenario here, in virtual time.
#ifdef HALVORA_DEMO

#include <QFile>
#include <QImage>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <memory>
#include <set>
#include <string>
#include <variant>

#include <gtest/gtest.h>

#include "engine/broadcast.h"
#include "engine/halvora_view_controller.h"
#include "light/display_list.h"
#include "platform/json/rapid_json_reader.h"
#include "platform/qt/display_painter.h"
#include "platform/standard/folder_bundle.h"
#include "platform/standard/seeded_random.h"
#include "platform/standard/standard_files.h"
#include "platform/virtual/virtual_phone.h"
#include "tools/halvora/scenario_player.h"

namespace halvora {
namespace {

const std::string kAssets = HALVORA_SOURCE_DIR "/assets/demo";
constexpr Duration kAfterLastAction = milliseconds(2000);

struct DemoRun {
  int status = -1;
  QString output;
  QString error;
};

DemoRun runDemo(const QStringList& arguments,
                const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment()) {
  QProcess process;
  process.setProcessEnvironment(environment);
  process.start(QStringLiteral(HALVORA_DEMO), arguments);
  constexpr int kFourMinutes = 240'000;
  if (!process.waitForFinished(kFourMinutes)) return {};
  const bool isEnded = process.exitStatus() == QProcess::NormalExit;
  return {isEnded ? process.exitCode() : -1, QString::fromUtf8(process.readAllStandardOutput()),
          QString::fromUtf8(process.readAllStandardError())};
}

// An engine in virtual time, with the chances that the demo draws.
class Reference {
 public:
  explicit Reference(const std::string& text)
      : scenario_(std::get<Scenario>(parseScenario(text, json_))),
        phone_(json_, setup()),
        engine_(phone_.platform()) {
    schedule(scenario_, phone_.loop, stage_);
  }

  Duration end() const { return scenario_.lastAction() + kAfterLastAction; }
  DisplayList at(Duration time) {
    EXPECT_TRUE(phone_.loop.runUntil(time));
    return displayListOf(engine_.views(), phone_.screen.size);
  }

 private:
  VirtualPhoneSetup setup() {
    VirtualPhoneSetup setup = setupOf(scenario_.device, std::make_unique<SeededRandom>(1));
    setup.mainBundle = &bundle_;
    return setup;
  }

  RapidJsonReader json_;
  FolderBundle bundle_{kAssets, "com.example.host"};
  Scenario scenario_;
  VirtualPhone phone_;
  HalvoraViewController engine_;
  ScenarioStage stage_{phone_.bluetooth, phone_.application, phone_.defaults, engine_};
};

bool isNear(const QColor& a, const QColor& b) {
  return std::abs(a.red() - b.red()) <= 1 && std::abs(a.green() - b.green()) <= 1 &&
         std::abs(a.blue() - b.blue()) <= 1;
}

TEST(Demo, ContactSheet) {
  const QTemporaryDir folder;
  const QString path = folder.filePath(QStringLiteral("sheet.png"));
  const DemoRun run = runDemo({QStringLiteral("--assets"), QString::fromStdString(kAssets),
                               QStringLiteral("--contact-sheet"), path});
  ASSERT_EQ(run.status, 0) << run.error.toStdString();
  EXPECT_TRUE(run.output.contains(path)) << run.output.toStdString();
  EXPECT_EQ(run.output.count(QLatin1Char('\n')), 1);

  // 24 columns of 72 × 128, below a heading of 40; the screen's middle is that of the upper 112.
  const QImage sheet(path);
  const auto text = readFile(kAssets + "/example-show.jsonl", 1 << 24);
  ASSERT_TRUE(text.has_value());
  Reference reference(*text);
  const int tiles = static_cast<int>(reference.end() / milliseconds(500)) + 1;
  ASSERT_EQ(sheet.size(), QSize(24 * 72, 40 + (tiles + 23) / 24 * 128));
  std::set<QRgb> colours;
  int compared = 0;
  for (int tile = 0; tile < tiles; ++tile) {
    const DisplayList list = reference.at(tile * milliseconds(500));
    const QColor seen = sheet.pixelColor(tile % 24 * 72 + 36, 40 + tile / 24 * 128 + 56);
    colours.insert(seen.rgb());
    if (list.size() != 1 || list[0].opacity < 1) continue;
    ++compared;
    EXPECT_TRUE(isNear(seen, colourOf(list[0].colour)))
        << "tile " << tile << " shows " << seen.name().toStdString();
  }
  EXPECT_GT(compared, tiles / 2);
  EXPECT_GT(colours.size(), 50U);
}

std::string packetLine(double at, std::uint16_t red, std::uint16_t green, std::uint16_t blue) {
  Broadcast look;
  look.applicationId = 4242;
  look.venueId = 7;
  look.master = 255;
  look.red = red;
  look.green = green;
  look.blue = blue;
  look.mode = 1;
  look.sequence = static_cast<std::uint16_t>(at * 10);
  look.transmitter = 1;
  return "{\"at\": " + std::to_string(at) + ", \"packet\": \"" +
         NSDataToHex(encodeBroadcast(look)) + "\"}\n";
}

// The show ends in a steady colour, so it does not matter when within that the picture is taken.
TEST(Demo, Window) {
  const QTemporaryDir folder;
  const QString scenario = folder.filePath(QStringLiteral("steady.jsonl"));
  const QString path = folder.filePath(QStringLiteral("window.png"));
  const std::string text =
      "{\"at\": 0, \"start\": true}\n" + packetLine(1.5, 200, 40, 40) + packetLine(2, 30, 160, 90);
  QFile file(scenario);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write(text.data(), static_cast<qint64>(text.size()));
  file.close();

  const DemoRun run =
      runDemo({QStringLiteral("--assets"), QString::fromStdString(kAssets),
               QStringLiteral("--scenario"), scenario, QStringLiteral("--screenshot"), path});
  ASSERT_EQ(run.status, 0) << run.error.toStdString();

  Reference reference(text);
  const DisplayList list = reference.at(reference.end());
  ASSERT_EQ(list.size(), 1U);
  EXPECT_EQ(list[0].colour, colourOfBytes(30, 160, 90));
  const QImage window(path);
  ASSERT_FALSE(window.isNull());
  const QColor seen = window.pixelColor(window.width() / 2, window.height() / 2);
  EXPECT_TRUE(isNear(seen, colourOf(list[0].colour))) << seen.name().toStdString();
  // The table that the phone lies on is not lit.
  EXPECT_FALSE(isNear(window.pixelColor(2, window.height() / 2), seen));
}

// The example show up to a steady look, in a window of a real window system.
TEST(Demo, RealWindow) {
  QProcess server;
  server.start(QStringLiteral("Xvfb"),
               {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
                QStringLiteral("0"), QStringLiteral("1400x1100x24"), QStringLiteral("-nolisten"),
                QStringLiteral("tcp")});
  if (!server.waitForStarted()) GTEST_SKIP() << "no Xvfb";
  constexpr int kHalfAMinute = 30'000;
  ASSERT_TRUE(server.waitForReadyRead(kHalfAMinute)) << server.readAllStandardError().toStdString();
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.insert(QStringLiteral("DISPLAY"),
                     QLatin1Char(':') + QString::fromLatin1(server.readLine().trimmed()));
  environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));

  const auto whole = readFile(kAssets + "/example-show.jsonl", 1 << 24);
  ASSERT_TRUE(whole.has_value());
  const std::string text = whole->substr(0, whole->find("{\"at\": 4.4,"));
  const QTemporaryDir folder;
  const QString path = folder.filePath(QStringLiteral("window.png"));
  const QString scenario = folder.filePath(QStringLiteral("begin.jsonl"));
  QFile file(scenario);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write(text.data(), static_cast<qint64>(text.size()));
  file.close();
  const DemoRun run =
      runDemo({QStringLiteral("--assets"), QString::fromStdString(kAssets),
               QStringLiteral("--scenario"), scenario, QStringLiteral("--screenshot"), path},
              environment);
  server.terminate();
  server.waitForFinished(kHalfAMinute);
  ASSERT_EQ(run.status, 0) << run.error.toStdString();

  Reference reference(text);
  const DisplayList list = reference.at(reference.end());
  ASSERT_EQ(list.size(), 1U);
  const QImage window(path);
  ASSERT_FALSE(window.isNull());
  const QColor seen = window.pixelColor(window.width() / 2, window.height() / 2);
  EXPECT_TRUE(isNear(seen, colourOf(list[0].colour))) << seen.name().toStdString();
}

// Without a scenario; what the console does is tested in virtual time.
TEST(Demo, Console) {
  const QTemporaryDir folder;
  const QString path = folder.filePath(QStringLiteral("console.png"));
  const DemoRun run = runDemo({QStringLiteral("--assets"), QString::fromStdString(kAssets),
                               QStringLiteral("--screenshot"), path});
  ASSERT_EQ(run.status, 0) << run.error.toStdString();
  const QImage window(path);
  ASSERT_GE(window.width(), 900);
  ASSERT_GE(window.height(), 640);
  std::set<QRgb> colours;
  for (int y = 0; y < window.height(); y += 5) {
    for (int x = 0; x < window.width(); x += 5) colours.insert(window.pixel(x, y));
  }
  // Those of the palettes alone are more.
  EXPECT_GT(colours.size(), 100U);
}

TEST(Demo, BadInput) {
  const QTemporaryDir folder;
  const QString scenario = folder.filePath(QStringLiteral("bad.jsonl"));
  QFile file(scenario);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write("{\"at\": 0, \"start\": true}\n{\"at\": 1, \"dance\": true}\n");
  file.close();
  const QString assets = QString::fromStdString(kAssets);
  const QString sheet = folder.filePath(QStringLiteral("sheet.png"));

  const std::pair<QStringList, QString> kCases[] = {
      {{QStringLiteral("--dance")}, QStringLiteral("--dance")},
      {{QStringLiteral("--quit-after"), QStringLiteral("-1")}, QStringLiteral("--quit-after")},
      {{QStringLiteral("--radio"), QStringLiteral("system")}, QStringLiteral("--radio system")},
      {{QStringLiteral("--radio"), QStringLiteral("tube")}, QStringLiteral("--radio")},
      {{QStringLiteral("--assets"), folder.filePath(QStringLiteral("none"))},
       QStringLiteral("none")},
      {{QStringLiteral("--assets"), assets, QStringLiteral("--scenario"),
        folder.filePath(QStringLiteral("none.jsonl"))},
       QStringLiteral("none.jsonl")},
      {{QStringLiteral("--assets"), assets, QStringLiteral("--scenario"), scenario},
       QStringLiteral("bad.jsonl:2: ")},
  };
  for (const auto& [arguments, expected] : kCases) {
    const DemoRun run = runDemo(arguments + QStringList{QStringLiteral("--contact-sheet"), sheet});
    EXPECT_EQ(run.status, 2) << run.error.toStdString();
    EXPECT_EQ(run.output, QString());
    EXPECT_EQ(run.error.count(QLatin1Char('\n')), 1) << run.error.toStdString();
    EXPECT_TRUE(run.error.contains(expected)) << run.error.toStdString();
  }
  EXPECT_FALSE(QFile::exists(sheet));
}

}  // namespace
}  // namespace halvora

#endif
