// SPDX-License-Identifier: Apache-2.0
#include "adapters/qt/qt_media_support.h"

#include <QCoreApplication>
#include <QDir>
#include <QLibrary>
#include <QString>
#include <QStringList>
#include <algorithm>

namespace halvora {

namespace {

#if defined(Q_OS_LINUX) && !defined(Q_OS_ANDROID)

// Qt's media library has a back end for each system library that it can play with.
bool hasBackEnd(const QString& name) {
  const QStringList folders = QCoreApplication::libraryPaths();
  return std::any_of(folders.begin(), folders.end(), [&name](const QString& folder) {
    const QDir plugIns(folder + QStringLiteral("/multimedia"));
    const QString pattern = QStringLiteral("*%1*mediaplugin*").arg(name);
    return !plugIns.entryList({pattern}, QDir::Files).isEmpty();
  });
}

// What the GStreamer back end makes without looking whether it got it. The library is asked at run
// time, as only a machine that has it can have the back end.
bool hasElements() {
  constexpr const char* kElements[] = {
      "playbin",      "queue",      "tee",          "identity",      "fakesink",     "volume",
      "videoconvert", "videoscale", "audioconvert", "audioresample", "autoaudiosink"};
  QLibrary library(QStringLiteral("gstreamer-1.0"), 0);
  const auto initialise =
      reinterpret_cast<int (*)(int*, char***, void**)>(library.resolve("gst_init_check"));
  const auto findFactory =
      reinterpret_cast<void* (*)(const char*)>(library.resolve("gst_element_factory_find"));
  const auto release = reinterpret_cast<void (*)(void*)>(library.resolve("gst_object_unref"));
  if (initialise == nullptr || findFactory == nullptr || release == nullptr) return false;
  if (initialise(nullptr, nullptr, nullptr) == 0) return false;
  return std::all_of(std::begin(kElements), std::end(kElements), [&](const char* element) {
    void* factory = findFactory(element);
    if (factory != nullptr) release(factory);
    return factory != nullptr;
  });
}

bool findOut() {
  const QString gstreamer = QStringLiteral("gstreamer");
  const QString wanted = qEnvironmentVariable("QT_MEDIA_BACKEND");
  if (!hasBackEnd(wanted)) return false;
  const bool isGstreamer = wanted.isEmpty() ? hasBackEnd(gstreamer) : wanted == gstreamer;
  return !isGstreamer || hasElements();
}

#else

// On other systems the library stands on parts of the system itself.
bool findOut() { return true; }

#endif

}  // namespace

bool canPlayMedia() {
  static const bool kCan = findOut();
  return kCan;
}

}  // namespace halvora
