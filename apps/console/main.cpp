// SPDX-License-Identifier: Apache-2.0
#include <QGuiApplication>
#include <QImage>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QScreen>
#include <QStandardPaths>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>
#include <variant>

#include <QtQml/QQmlExtensionPlugin>

#include "adapters/qt/qt_run_loop.h"
#include "adapters/standard/thread_queues.h"
#include "adapters/virtual/virtual_devices.h"
#include "adapters/virtual/virtual_run_loop.h"
#include "apps/console/contact_sheet.h"
#include "apps/console/libraries.h"
#include "apps/console/options.h"
#include "apps/console/scenario_loop.h"
#include "apps/console/show_console.h"
#include "apps/console/show_files.h"
#include "apps/console/show_frames.h"
#include "faces/qt/halvora_view_item.h"
#include "faces/qt/light_surface.h"

#ifdef HALVORA_HAS_BLUETOOTH
#include "apps/console/system_host.h"
#endif

Q_IMPORT_QML_PLUGIN(HalvoraPlugin)
Q_IMPORT_QML_PLUGIN(HalvoraDemoPlugin)

namespace halvora {

namespace {

constexpr const char* kDefaultSheet = "./halvora-contact-sheet.png";
constexpr const char* kNoWindow = "the window cannot be made";
constexpr Duration kLongestSheet = std::chrono::hours(24);
/// The phone begins to listen after a second, and a show fades in for another one.
constexpr Duration kFirstLook = milliseconds(3000);

int fail(const DemoRefusal& refusal) {
  std::fprintf(stderr, "halvora-demo: %s\n", refusal.text.c_str());
  return refusal.status;
}

constexpr const char* kPlatform = "QT_QPA_PLATFORM";
constexpr const char* kNoDisplay = "offscreen";

// The window systems to try. Qt ends a process that none of them answers, so the last one always
// does.
QByteArray platformsToTry() {
  QByteArray platforms = qgetenv(kPlatform);
#ifdef Q_OS_LINUX
  if (platforms.isEmpty()) {
    if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) platforms += "wayland;";
    if (!qEnvironmentVariableIsEmpty("DISPLAY")) platforms += "xcb;";
    platforms += kNoDisplay;
  } else if (!platforms.contains(kNoDisplay)) {
    platforms = platforms + ';' + kNoDisplay;
  }
#endif
  return platforms;
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

// Off screen a window has the size that a picture of it is wanted in.
void fitToScreen(QQuickWindow& window) {
  const QSize room = window.screen()->availableSize();
  window.setMinimumSize(window.minimumSize().boundedTo(room));
  window.resize(window.size().boundedTo(room));
}

QQuickWindow* openWindow(QQmlApplicationEngine& qml, const char* file, const char* property,
                         QObject& content) {
  qml.addImportPath(QStringLiteral("qrc:/qt/qml"));
  qml.setInitialProperties({{QString::fromLatin1(property), QVariant::fromValue(&content)}});
  qml.load(QUrl(QStringLiteral("qrc:/qt/qml/HalvoraDemo/") + QString::fromLatin1(file)));
  auto* window = qml.rootObjects().isEmpty()
                     ? nullptr
                     : qobject_cast<QQuickWindow*>(qml.rootObjects().constFirst());
  if (window != nullptr && QGuiApplication::platformName() != QLatin1String(kNoDisplay)) {
    fitToScreen(*window);
  }
  return window;
}

int runWindow(RunLoop& loop, const DemoOptions& options) {
  Timer quit;
  if (options.quitAfter) {
    quit = Timer(loop, loop.after(*options.quitAfter, [] { QCoreApplication::exit(0); }));
  }
  return QCoreApplication::exec();
}

LightSurface* surfaceOf(QQuickWindow* window) {
  return window == nullptr ? nullptr
                           : window->findChild<LightSurface*>(QStringLiteral("lightSurface"));
}

int showScenario(const ShowFiles& files, DemoLibraries& libraries, const DemoOptions& options) {
  QtRunLoop loop;
  ThreadQueues queues;
  ScenarioLoop player(files, loop, queues, libraries);
  QQmlApplicationEngine qml;
  QQuickWindow* window = openWindow(qml, "Main.qml", "player", player);
  LightSurface* surface = surfaceOf(window);
  if (surface == nullptr) return fail({kNoWindow, 1});
  if (!options.screenshot.empty()) {
    QObject::connect(&player, &ScenarioLoop::ended, window,
                     [window, &options] { saveWindow(*window, options.screenshot); });
  }
  player.play(*surface);
  return runWindow(loop, options);
}

// In the show's own time, which waits for each frame.
int saveFrames(const ShowFiles& files, DemoLibraries& libraries, const DemoOptions& options) {
  VirtualRunLoop loop;
  VirtualQueues queues(loop);
  ScenarioLoop player(files, loop, queues, libraries);
  QQmlApplicationEngine qml;
  QQuickWindow* window = openWindow(qml, "Main.qml", "player", player);
  LightSurface* surface = surfaceOf(window);
  if (surface == nullptr) return fail({kNoWindow, 1});
  QObject::connect(&player, &ScenarioLoop::ended, window, [] { QCoreApplication::exit(0); });
  player.play(*surface);
  ShowFrames frames(loop, options.step, *window, options.frames, [](const std::string& why) {
    QCoreApplication::exit(fail({why, 1}));
  });
  const int status = runWindow(loop, options);
  if (status != 0) return status;
  std::printf("%d frames of %s on %s: %s\n", frames.count(), files.name.c_str(),
              qPrintable(QGuiApplication::platformName()), options.frames.c_str());
  return 0;
}

int showConsole(const ShowFiles& files, DemoLibraries& libraries, const DemoOptions& options) {
  QtRunLoop loop;
  ThreadQueues queues;
  ShowConsole console(files.assets, loop, queues, libraries);
  QQmlApplicationEngine qml;
  console.install(qml);
  QQuickWindow* window = openWindow(qml, "Console.qml", "desk", console);
  if (window == nullptr) return fail({kNoWindow, 1});
  if (options.map > 0) console.set(QStringLiteral("pixelMapId"), options.map);
  CueDesk& cues = *console.cues();
  if (!options.show.empty()) {
    cues.setFile(QString::fromStdString(options.show));
    cues.open();
  }
  // A picture is of a show; nobody but the window's own phones hears it.
  if (!options.screenshot.empty()) console.setOnAir(true);
  VenueShow& venue = *console.venue();
  if (options.venue) {
    venue.setPhones(*options.venue);
    venue.setOpen(true);
  }
  Timer picture;
  const auto takePicture = [&] {
    if (cues.isOpen()) cues.obey(QStringLiteral("go"));
    picture = Timer(loop, loop.after(kFirstLook, [window, &options] {
      saveWindow(*window, options.screenshot);
    }));
  };
  if (!options.screenshot.empty() && !options.venue) takePicture();
  if (!options.screenshot.empty() && options.venue) {
    QObject::connect(&venue, &VenueShow::stateChanged, window, [&] {
      if (picture.isValid() || (!venue.isReady() && venue.failure().isEmpty())) return;
      // One of its phones beside the hall.
      if (cues.isOpen()) venue.choose(venue.phones() / 2);
      takePicture();
    });
  }
  return runWindow(loop, options);
}

#ifdef HALVORA_HAS_BLUETOOTH
constexpr Duration kFadedIn = milliseconds(1500);

// The picture is of the first show, once it has faded in, or of what there is at the end.
int showSystem(const ShowFiles& files, const DemoOptions& options) {
  // Nobody sees the phone, and nobody asked for a picture of it.
  if (!options.contactSheet.empty()) {
    return fail({"--radio system: no display to open the phone on (see --screenshot)", 1});
  }
  SystemHost phone(files.assets, {.adapter = options.adapter});
  QQmlApplicationEngine qml;
  phone.install(qml);
  QQuickWindow* window = openWindow(qml, "SystemWindow.qml", "system", phone);
  auto* light =
      window == nullptr ? nullptr : window->findChild<HalvoraViewItem*>(QStringLiteral("light"));
  if (light == nullptr) return fail({kNoWindow, 1});
  if (options.screenshot.empty()) return runWindow(phone.loop(), options);
  // Nobody is there to be asked.
  auto* audience = window->findChild<QObject*>(QStringLiteral("halvoraAudienceView"));
  if (audience != nullptr) audience->setProperty("asksBeforeJoining", false);
  Timer picture;
  const auto takePictureAfter = [&](Duration pause) {
    picture = Timer(phone.loop(),
                    phone.loop().after(pause, [&] { saveWindow(*window, options.screenshot); }));
  };
  QObject::connect(
      light, &HalvoraViewItem::lightShowStarted, window, [&] { takePictureAfter(kFadedIn); },
      Qt::SingleShotConnection);
  if (options.quitAfter) takePictureAfter(*options.quitAfter);
  return QCoreApplication::exec();
}
#endif

std::filesystem::path programFolder(const char* program) {
  std::error_code error;
  const auto path = std::filesystem::canonical("/proc/self/exe", error);
  return (error ? std::filesystem::absolute(program, error) : path).parent_path();
}

int show(const ShowFiles& files, DemoLibraries& libraries, const DemoOptions& options) {
#ifdef HALVORA_HAS_BLUETOOTH
  if (options.isOnSystemRadio) return showSystem(files, options);
#endif
  if (!options.contactSheet.empty()) {
    return writeContactSheet(files, libraries, options.contactSheet);
  }
  if (!options.frames.empty()) return saveFrames(files, libraries, options);
  return options.scenario.empty() ? showConsole(files, libraries, options)
                                  : showScenario(files, libraries, options);
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
  const bool isAskedFor = qgetenv(kPlatform).contains(kNoDisplay);
  qputenv(kPlatform, options.contactSheet.empty() ? platformsToTry() : QByteArray(kNoDisplay));
  // Qt waits 5 ms for further changes before it draws; a light that follows a beat cannot.
  if (!qEnvironmentVariableIsSet("QT_QPA_UPDATE_IDLE_TIME"))
    qputenv("QT_QPA_UPDATE_IDLE_TIME", "0");

  const QGuiApplication application(argumentCount, arguments);
  libraries.documents =
      QStandardPaths::writableLocation(QStandardPaths::CacheLocation).toStdString();
  if (QGuiApplication::platformName() == QLatin1String(kNoDisplay)) {
    QQuickWindow::setSceneGraphBackend(QStringLiteral("software"));
    const bool wantsPicture = !options.screenshot.empty() || !options.frames.empty();
    if (!isAskedFor && !wantsPicture && options.contactSheet.empty()) {
      options.contactSheet = kDefaultSheet;
    }
  }
  return show(std::get<ShowFiles>(files), libraries, options);
}

}  // namespace

}  // namespace halvora

int main(int argumentCount, char** arguments) { return halvora::run(argumentCount, arguments); }
