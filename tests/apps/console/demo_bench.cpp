// SPDX-License-Identifier: Apache-2.0
#ifdef HALVORA_DEMO

#include "tests/apps/console/demo_bench.h"

#include <QDir>
#include <QFile>
#include <variant>

#include <gtest/gtest.h>

#include "adapters/standard/seeded_random.h"
#include "engine/broadcast.h"
#include "engine/inside.h"
#include "tests/support/source_tree.h"

namespace halvora {

namespace {

constexpr Duration kAfterLastAction = milliseconds(2000);
constexpr int kHalfAMinute = 30'000;
constexpr int kFourMinutes = 240'000;

}  // namespace

std::string demoAssets() { return sourceTree() + "/assets/demo"; }

DemoRun runDemo(const QStringList& arguments, const QProcessEnvironment& environment,
                const QString& folder) {
  QProcess process;
  QProcessEnvironment own = environment;
  // What a graphics driver keeps has no name once the driver is gone, so the address sanitizer
  // could not be told whose it is. Our own leaks are looked for where software draws.
  if (!own.contains(QStringLiteral("QT_QUICK_BACKEND"))) {
    own.insert(QStringLiteral("ASAN_OPTIONS"), QStringLiteral("allow_addr2line=1:detect_leaks=0"));
  }
  process.setProcessEnvironment(own);
  if (!folder.isEmpty()) process.setWorkingDirectory(folder);
  process.start(QStringLiteral(HALVORA_DEMO), arguments);
  if (!process.waitForFinished(kFourMinutes)) return {};
  const bool isEnded = process.exitStatus() == QProcess::NormalExit;
  return {isEnded ? process.exitCode() : -1, QString::fromUtf8(process.readAllStandardOutput()),
          QString::fromUtf8(process.readAllStandardError())};
}

QString writeScenario(const QString& folder, const std::string& text) {
  const QString path = QDir(folder).filePath(QStringLiteral("scenario.jsonl"));
  QFile file(path);
  EXPECT_TRUE(file.open(QIODevice::WriteOnly));
  file.write(text.data(), static_cast<qint64>(text.size()));
  return path;
}

std::string packetLine(double at, std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
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

XServer::XServer(const QStringList& more) {
  process_.start(
      QStringLiteral("Xvfb"),
      QStringList{QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
                  QStringLiteral("0"), QStringLiteral("1400x1100x24"), QStringLiteral("-nolisten"),
                  QStringLiteral("tcp")} +
          more);
  isInstalled_ = process_.waitForStarted();
  if (!isInstalled_) return;
  EXPECT_TRUE(process_.waitForReadyRead(kHalfAMinute))
      << process_.readAllStandardError().toStdString();
  display_ = QLatin1Char(':') + QString::fromLatin1(process_.readLine().trimmed());
}

XServer::~XServer() {
  process_.terminate();
  process_.waitForFinished(kHalfAMinute);
}

QProcessEnvironment XServer::environment() const {
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.insert(QStringLiteral("DISPLAY"), display_);
  environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
  return environment;
}

Reference::Reference(const std::string& text)
    : bundle_(files_, demoAssets(), "com.example.host"),
      scenario_(std::get<Scenario>(parseScenario(text, json_))),
      phone_(json_, setup()),
      engine_(phone_.platform()) {}

VirtualPhoneSetup Reference::setup() {
  VirtualPhoneSetup setup = setupOf(scenario_.device, std::make_unique<SeededRandom>(1));
  setup.mainBundle = &bundle_;
  setup.files = &files_;
  return setup;
}

Duration Reference::end() const { return scenario_.lastAction() + kAfterLastAction; }

DisplayList Reference::at(Duration time) {
  EXPECT_TRUE(phone_.loop.runUntil(time));
  return displayListOf(insideOf(engine_).views(), phone_.screen.size);
}

}  // namespace halvora

#endif
