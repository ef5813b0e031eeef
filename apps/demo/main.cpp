// SPDX-License-Identifier: Apache-2.0
#include <QGuiApplication>
#include <QImage>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QStandardPaths>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>
#include <variant>

#include <QtQml/QQmlExtensionPlugin>

#include "apps/demo/contact_sheet.h"
#include "apps/demo/libraries.h"
#include "apps/demo/options.h"
#include "apps/demo/show_console.h"
#include "apps/demo/show_files.h"
#include "apps/demo/show_player.h"
#include "platform/qt/light_surface.h"
#include "platform/qt/qt_run_loop.h"
#include "platform/standard/thread_queues.h"

Q_IMPORT_QML_PLUGIN(HalvoraPlugin)
Q_IMPORT_QML_PLUGIN(HalvoraDemoPlugin)

namespace halvora {

namespace {

constexpr const char* kDefaultSheet = "./halvora-contact-sheet.png";
constexpr Duration kLongestSheet = std::chrono::hours(24);
/// The phone begins to listen after a second, and a show fades in for another one.
constexpr Duration kFirstLook = milliseconds(3000);

int fail(const DemoRefusal& refusal) {
  std::fprintf(stderr, "halvora-demo: %s\n", refusal.text.c_str());
  return refusal.status;
}

bool hasDisplay() {
#ifdef Q_OS_LINUX
  return !qEnvironmentVariableIsEmpty("DISPLAY") ||
         !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") ||
         !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM");
#else
  return true;
#endif
}

int writeContactSheet(const ShowFiles& files, DemoLibraries& libraries, const std::string& path) {
  if (files.end() > kLongestSheet) {
    return fail({files.name + ": longer than a day, too long for a contact sheet"});
  }
  const ContactSheet sheet = drawContactSheet(files, libraries);
  if (sheet.picture.isNull()) return fail({files.name + ": the phone never comes to rest", 1});
  if (!sheet.picture.save(QString::fromStdString(path), "PNG")) {
    return fail({path + ": cannot be written", 1});
  }
  std::printf("Contact sheet of %s, %d tiles: %s\n", files.name.c_str(), sheet.tiles, path.c_str());
  return 0;
}

void saveWindow(QQuickWindow& window, const std::string& path) {
  const bool isSaved = window.grabWindow().save(QString::fromStdString(path), "PNG");
  QCoreApplication::exit(isSaved ? 0 : fail({path + ": cannot be written", 1}));
}

QQuickWindow* openWindow(QQmlApplicationEngine& qml, const char* file, const char* property,
                         QObject& content) {
  qml.addImportPath(QStringLiteral("qrc:/qt/qml"));
  qml.setInitialProperties({{QString::fromLatin1(property), QVariant::fromValue(&content)}});
  qml.load(QUrl(QStringLiteral("qrc:/qt/qml/HalvoraDemo/") + QString::fromLatin1(file)));
  return qml.rootObjects().isEmpty() ? nullptr
                                     : qobject_cast<QQuickWindow*>(qml.rootObjects().constFirst());
}

int runWindow(RunLoop& loop, const DemoOptions& options) {
  Timer quit;
  if (options.quitAfter) {
    quit = Timer(loop, loop.after(*options.quitAfter, [] { QCoreApplication::exit(0); }));
  }
  return QCoreApplication::exec();
}

int showScenario(const ShowFiles& files, DemoLibraries& libraries, const DemoOptions& options) {
  QtRunLoop loop;
  ShowPlayer player(files, loop, libraries);
  QQmlApplicationEngine qml;
  QQuickWindow* window = openWindow(qml, "Main.qml", "player", player);
  auto* surface = window == nullptr
                      ? nullptr
                      : window->findChild<LightSurface*>(QStringLiteral("lightSurface"));
  if (surface == nullptr) return fail({"the window cannot be made", 1});
  if (!options.screenshot.empty()) {
    QObject::connect(&player, &ShowPlayer::ended, window,
                     [window, &options] { saveWindow(*window, options.screenshot); });
  }
  player.play(*surface);
  return runWindow(loop, options);
}

int showConsole(const ShowFiles& files, DemoLibraries& libraries, const DemoOptions& options) {
  QtRunLoop loop;
  ThreadQueues queues;
  ShowConsole console(files.assets, loop, queues, libraries);
  QQmlApplicationEngine qml;
  console.install(qml);
  QQuickWindow* window = openWindow(qml, "Console.qml", "desk", console);
  if (window == nullptr) return fail({"the window cannot be made", 1});
  Timer picture;
  if (!options.screenshot.empty()) {
    picture = Timer(loop, loop.after(kFirstLook, [window, &options] {
      saveWindow(*window, options.screenshot);
    }));
  }
  return runWindow(loop, options);
}

std::filesystem::path programFolder(const char* program) {
  std::error_code error;
  const auto path = std::filesystem::canonical("/proc/self/exe", error);
  return (error ? std::filesystem::absolute(program, error) : path).parent_path();
}

int run(int argumentCount, char** arguments) {
  auto parsed = parseOptions(argumentCount, arguments);
  if (const auto* refusal = std::get_if<DemoRefusal>(&parsed)) {
    if (refusal->status != 0) return fail(*refusal);
    std::fputs(refusal->text.c_str(), stdout);
    return 0;
  }
  auto& options = std::get<DemoOptions>(parsed);
  DemoLibraries libraries;
  const auto files = openShow(options, programFolder(arguments[0]), libraries.json);
  if (const auto* refusal = std::get_if<DemoRefusal>(&files)) return fail(*refusal);
  const auto& show = std::get<ShowFiles>(files);

  if (!hasDisplay() && options.contactSheet.empty() && options.screenshot.empty()) {
    options.contactSheet = kDefaultSheet;
  }
  if (!hasDisplay() || !options.contactSheet.empty()) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
  }
  // Qt waits 5 ms for further changes before it draws; a light that follows a beat cannot.
  if (!qEnvironmentVariableIsSet("QT_QPA_UPDATE_IDLE_TIME"))
    qputenv("QT_QPA_UPDATE_IDLE_TIME", "0");

  const QGuiApplication application(argumentCount, arguments);
  libraries.documents =
      QStandardPaths::writableLocation(QStandardPaths::CacheLocation).toStdString();
  if (!options.contactSheet.empty())
    return writeContactSheet(show, libraries, options.contactSheet);
  return options.scenario.empty() ? showConsole(show, libraries, options)
                                  : showScenario(show, libraries, options);
}

}  // namespace

}  // namespace halvora

int main(int argumentCount, char** arguments) { return halvora::run(argumentCount, arguments); }
