// SPDX-License-Identifier: Apache-2.0
// One measurement a run; scripts/bench_window.py runs them all and judges the figures.
#include <QCommandLineParser>
#include <QGuiApplication>
#include <QJsonDocument>
#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>

#include <QtQml/QQmlExtensionPlugin>

#include "bench/window/measurement.h"

Q_IMPORT_QML_PLUGIN(HalvoraPlugin)

namespace halvora {

namespace {

struct Measurement {
  std::string_view name;
  QJsonObject (*measure)(const BenchOptions&);
};

constexpr std::array<Measurement, 9> kMeasurements = {{{"start", measureStart},
                                                       {"memory", measureMemory},
                                                       {"latency", measureLatency},
                                                       {"motion", measureMotion},
                                                       {"strobe", measureStrobe},
                                                       {"plain", measurePlainStrobe},
                                                       {"empty", measureEmpty},
                                                       {"steady", measureSteady},
                                                       {"wizard", measureWizard}}};

int run(int argumentCount, char** arguments) {
  // Qt waits 5 ms for further changes before it draws; a light that follows a beat cannot.
  if (!qEnvironmentVariableIsSet("QT_QPA_UPDATE_IDLE_TIME"))
    qputenv("QT_QPA_UPDATE_IDLE_TIME", "0");
  const QGuiApplication application(argumentCount, arguments);
  QCommandLineParser parser;
  parser.addHelpOption();
  parser.addPositionalArgument(
      QStringLiteral("measurement"),
      QStringLiteral("start, memory, latency, motion, strobe, plain, empty, "
                     "steady or wizard"));
  parser.addOptions(
      {{QStringLiteral("assets"), QStringLiteral("the demo's assets"), QStringLiteral("folder"),
        QStringLiteral("assets/demo")},
       {QStringLiteral("seconds"), QStringLiteral("how long to measure"), QStringLiteral("n"),
        QStringLiteral("10")},
       {QStringLiteral("spawned"), QStringLiteral("nanoseconds of the steady clock at the start"),
        QStringLiteral("n"), QStringLiteral("0")}});
  parser.process(application);
  const std::string name = parser.positionalArguments().value(0).toStdString();
  const auto* found = std::find_if(kMeasurements.begin(), kMeasurements.end(),
                                   [&](const Measurement& one) { return one.name == name; });
  if (found == kMeasurements.end()) parser.showHelp(2);
  const QJsonObject figures =
      found->measure({.assets = parser.value(QStringLiteral("assets")).toStdString(),
                      .time = std::chrono::seconds(parser.value(QStringLiteral("seconds")).toInt()),
                      .spawned = parser.value(QStringLiteral("spawned")).toLongLong()});
  std::puts(QJsonDocument(figures).toJson(QJsonDocument::Compact).constData());
  return 0;
}

}  // namespace

}  // namespace halvora

int main(int argumentCount, char** arguments) { return halvora::run(argumentCount, arguments); }
