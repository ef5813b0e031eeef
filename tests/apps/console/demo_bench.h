// SPDX-License-Identifier: Apache-2.0
// The demo as its users start it, an X server to start it on, and an engine that plays the same
// scenario here, in virtual time. Tests own these.
#pragma once

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <memory>
#include <string>

#include "adapters/json/exact_json_reader.h"
#include "adapters/standard/folder_bundle.h"
#include "adapters/standard/standard_files.h"
#include "adapters/virtual/virtual_phone.h"
#include "engine/inside.h"
#include "light/display_list.h"
#include "venue/show/scenario_player.h"
#include "venue/show/scenario_run.h"

namespace halvora {

/// The demo's folder.
std::string demoAssets();

struct DemoRun {
  /// -1 if it crashed, or did not end.
  int status = -1;
  QString output;
  QString error;
};

DemoRun runDemo(const QStringList& arguments,
                const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment(),
                const QString& folder = {});

/// A scenario that is not one of the demo's own: a file of that text in a folder.
QString writeScenario(const QString& folder, const std::string& text);
/// A line in which a steady colour is heard.
std::string packetLine(double at, std::uint8_t red, std::uint8_t green, std::uint8_t blue);

/// A real X server without a screen, for as long as it lives.
class XServer {
 public:
  explicit XServer(const QStringList& more = {});
  ~XServer();
  XServer(const XServer&) = delete;
  XServer& operator=(const XServer&) = delete;

  bool isInstalled() const { return isInstalled_; }
  const QString& display() const { return display_; }
  /// Of a program whose windows are there.
  QProcessEnvironment environment() const;

 private:
  QProcess process_;
  bool isInstalled_ = false;
  QString display_;
};

/// With the chances that the demo draws.
class Reference {
 public:
  explicit Reference(const std::string& text);

  /// When the demo has shown it all.
  Duration end() const;
  /// Never back in time.
  DisplayList at(Duration time);
  Size screen() const { return phone_.screen.size; }
  Pictures pictures() { return Pictures(phone_.platform()); }

 private:
  VirtualPhoneSetup setup();

  ExactJsonReader json_;
  StandardFiles files_;
  FolderBundle bundle_;
  Scenario scenario_;
  VirtualPhone phone_;
  HalvoraViewController engine_;
  ScenarioStage stage_{{phone_.bluetooth, phone_.application, insideOf(engine_)}, phone_.defaults};
  ScenarioRun run_{ScenarioSchedule(scenario_), phone_.loop,
                   [this](const ScenarioAction& action) { perform(action, stage_); }};
};

}  // namespace halvora
