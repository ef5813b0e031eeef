// SPDX-License-Identifier: Apache-2.0
#include "adapters/qt/qt_platform.h"

#include <QCoreApplication>
#include <QLocale>
#include <QRandomGenerator>
#include <QStandardPaths>
#include <QStringList>
#include <utility>
#include <vector>

#include "adapters/qt/qt_absent_services.h"
#include "adapters/qt/qt_application.h"
#include "adapters/qt/qt_http.h"
#include "adapters/qt/qt_resource_bundle.h"
#include "adapters/qt/qt_run_loop.h"
#include "adapters/qt/qt_screen.h"
#include "adapters/standard/file_defaults.h"
#include "adapters/standard/folder_bundle.h"
#include "adapters/standard/seeded_random.h"
#include "adapters/standard/string_table.h"
#include "adapters/standard/system_clock.h"
#include "adapters/standard/thread_queues.h"
#include "adapters/standard/thread_workers.h"
#include "halvora/platform/bundle.h"
#include "halvora/platform/video_player.h"
#ifdef HALVORA_HAS_MULTIMEDIA
#include "adapters/qt/qt_video_player.h"
#endif

namespace halvora {

namespace {

constexpr const char* kKitIdentifier = "com.halvora.sdk";

// The user's, or what the host has made of them with QLocale::setDefault; best first.
std::vector<std::string> languages() {
  std::vector<std::string> found;
  for (const QString& language : QLocale().uiLanguages()) found.push_back(language.toStdString());
  return found;
}

std::string assetsOf(const QtPlatformOptions& options) {
  if (!options.assets.empty()) return options.assets;
  return QCoreApplication::applicationDirPath().toStdString() + "/assets";
}

std::string documentsOf(const QtPlatformOptions& options) {
  if (!options.documents.empty()) return options.documents;
  return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation).toStdString();
}

// "example.com" and "host" are "com.example.host".
std::string identifierOf(const QtPlatformOptions& options) {
  if (!options.identifier.empty()) return options.identifier;
  QStringList parts = QCoreApplication::organizationDomain().split(QLatin1Char('.'));
  std::reverse(parts.begin(), parts.end());
  parts.append(QCoreApplication::applicationName());
  parts.removeAll(QString());
  return parts.join(QLatin1Char('.')).toStdString();
}

std::unique_ptr<Bundle> compiledIn(const JsonReader& json) {
  return std::make_unique<QtResourceBundle>(QStringLiteral(":/halvora/kit"), kKitIdentifier,
                                            languages(), json);
}

StringTable kitTexts(const JsonReader& json) {
  return stringTableOf(*compiledIn(json), languages(), json);
}

std::unique_ptr<Bundle> kitBundle(const Files& files, const std::string& folder,
                                  const JsonReader& json) {
  if (folder.empty()) return compiledIn(json);
  return std::make_unique<FolderBundle>(files, folder, kKitIdentifier, languages(), json,
                                        kitTexts(json));
}

}  // namespace

struct QtPlatform::Needs {
  Needs(const QtPlatformOptions& options, const QtPlatformLibraries& libraries)
      : engineOptions{.usageEndpoints = options.usageEndpoints,
                      .usageReports = options.usageReports,
                      .limits = options.limits},
        documents(documentsOf(options)),
        json(libraries.json),
        defaults(documents + "/defaults.json", {libraries.files, json, runLoop, queues}),
        main(libraries.files, assetsOf(options), identifierOf(options), languages(), json,
             kitTexts(json)),
        kit(kitBundle(libraries.files, options.kit, json)),
        http(options.allowsPlainHttp) {
    platform.images = libraries.images;
    platform.files = libraries.files;
    platform.videoAssets = libraries.videoAssets;
    platform.codes = libraries.codes;
  }

  const EngineOptions engineOptions;
  const std::string documents;
  QtPlatformServices services;
  QtRunLoop runLoop;
  ThreadQueues queues;
  SystemWallClock wallClock;
  SystemCalendar calendar;
  SeededRandom random{QRandomGenerator::global()->generate64()};
  const JsonReader& json;
  ThreadWorkers workers;
  FileDefaults defaults;
  FolderBundle main;
  std::unique_ptr<Bundle> kit;
  Bundles bundles{main, *kit, documents};
  QtHttp http;
  QtApplication application{services};
  QtScreen screen{services};
  AbsentBluetooth absentBluetooth{runLoop};
#ifdef HALVORA_HAS_MULTIMEDIA
  QtVideoPlayer playerA{runLoop};
  QtVideoPlayer playerB{runLoop};
  const VideoPlayers videoPlayers{playerA, playerB};
#else
  const VideoPlayers& videoPlayers = absent::videoPlayers();
#endif
  Platform platform{.runLoop = runLoop,
                    .queues = queues,
                    .wallClock = wallClock,
                    .calendar = calendar,
                    .random = random,
                    .bluetooth = absentBluetooth,
                    .screen = screen,
                    .application = application,
                    .defaults = defaults,
                    .bundles = bundles,
                    .http = http,
                    .json = json,
                    .videoPlayers = videoPlayers,
                    .workers = workers};
};

QtPlatform::QtPlatform(const QtPlatformOptions& options, const QtPlatformLibraries& libraries)
    : needs_(std::make_unique<Needs>(options, libraries)) {}

QtPlatform::~QtPlatform() = default;

RunLoop& QtPlatform::runLoop() { return needs_->runLoop; }

const EngineOptions& QtPlatform::engineOptions() const { return needs_->engineOptions; }

void QtPlatform::use(const QtPlatformServices& services) {
  Platform& platform = needs_->platform;
  needs_->services = services;
  if (services.bluetooth != nullptr) platform.bluetooth = *services.bluetooth;
  if (services.haptics != nullptr) platform.haptics = *services.haptics;
  if (services.torch != nullptr) platform.torch = *services.torch;
  if (services.battery != nullptr) platform.battery = *services.battery;
  if (services.watchSleep) {
    services.watchSleep([this](bool isAsleep) { setSuspended(isAsleep); });
  }
}

void QtPlatform::setSuspended(bool isSuspended) { needs_->application.setSuspended(isSuspended); }

const Platform& QtPlatform::platform() const { return needs_->platform; }

}  // namespace halvora
