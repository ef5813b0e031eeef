// SPDX-License-Identifier: Apache-2.0
// A host that treats the kit badly, and folders that hold anything but what their names say: the
// light goes on, or is quietly dark.
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/virtual/virtual_bluetooth.h"
#include "engine/inside.h"
#include "faces/qt/halvora_view_item.h"
#include "halvora/platform/user_defaults.h"
#include "tests/adapters/qt/qt_phone.h"
#include "tests/faces/qt/event_wait.h"
#include "tests/faces/qt/qml_bench.h"
#include "tests/support/source_tree.h"

namespace halvora {
namespace {

constexpr const char* kLoadedView = R"(
    import QtQuick
    import Halvora
    Window {
        width: 200; height: 100; color: "#0a3c14"; visible: true
        Loader {
            objectName: "loader"
            anchors.fill: parent
            sourceComponent: HalvoraView {}
        }
    })";

struct HostileHost : testing::Test, QmlBench {
  void setLoaded(QmlWindow& placed, bool loaded) {
    placed.find("loader")->setProperty("active", loaded);
    // What a loader lets go is deleted in a later turn.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
  std::unique_ptr<QQmlEngine> otherQml() {
    auto made = std::make_unique<QQmlEngine>();
    made->addImportPath(QStringLiteral("qrc:/qt/qml"));
    HalvoraHost::install(*made, phone.platform(), controller);
    return made;
  }
};

TEST_F(HostileHost, DestroysTheViewInTheMiddleOfEveryEffect) {
  QmlWindow placed(qml, kLoadedView);
  listen();
  constexpr std::uint8_t kModes = 20;
  for (std::uint8_t mode = 1; mode <= kModes; ++mode) {
    onAir.speed = 200;
    show(200, 100, 50, mode);
    placed.colourAt(100, 50);
    setLoaded(placed, false);
    EXPECT_EQ(placed.colourAt(100, 50), QColor(10, 60, 20)) << "mode " << mode;
    phone.loop.runFor(milliseconds(700));
    EXPECT_EQ(insideOf(controller).state().screen.currentMode, mode);
    setLoaded(placed, true);
    placed.colourAt(100, 50);
    phone.loop.runFor(milliseconds(300));
  }
  show(1, 2, 250);
  EXPECT_EQ(placed.colourAt(100, 50), QColor(1, 2, 250));
}

TEST_F(HostileHost, DestroysTheViewWhileItsFramesAreDrawn) {
  listen();
  for (const bool loaderFirst : {true, false}) {
    auto placed = std::make_unique<QmlWindow>(qml, kLoadedView);
    auto* light = placed->window().findChild<HalvoraViewItem*>();
    show(0, 0, 0, 0);
    onAir.sequence = ++sequence;
    onAir.mode = 1;
    phone.bluetooth.advertise(encodeBroadcast(onAir));
    ASSERT_TRUE(insideOf(controller).views().isAnimating());
    letQtWorkUntil([light] { return light->isMoving(); });
    if (loaderFirst) setLoaded(*placed, false);
    placed.reset();
    QCoreApplication::processEvents();
  }
  EXPECT_EQ(controller.halvoraView, nullptr);
}

TEST_F(HostileHost, DestroysItsQmlEngineBeforeAndAfterTheView) {
  listen();
  for (const bool engineFirst : {true, false}) {
    auto engine = otherQml();
    QQmlComponent component(engine.get());
    component.setData("import Halvora\nHalvoraView { width: 100; height: 100 }", QUrl());
    std::unique_ptr<QObject> item(component.create());
    ASSERT_TRUE(item) << component.errorString().toStdString();
    show(200, 100, 50, 17);
    if (engineFirst) engine.reset();
    phone.loop.runFor(milliseconds(500));
    item.reset();
    engine.reset();
    show(1, 2, 3, 18);
    EXPECT_FALSE(controller.lightShowStartedCallback());
  }
}

// An engine that a host gives up is taken out of its interface first, by putting another one there.
TEST_F(HostileHost, PutsAnotherEngineInTheMiddleOfAShow) {
  VirtualPhone otherPhone(reader);
  auto other = std::make_unique<HalvoraViewController>(otherPhone.platform());
  other->viewDidLoad();
  HalvoraHost::install(qml, otherPhone.platform(), *other);
  QmlWindow placed(qml, kLoadedView);
  insideOf(*other).views().setAlpha(ViewId::container, 1);
  insideOf(*other).views().setLightColour(colourOfBytes(0, 0, 200));
  EXPECT_EQ(placed.colourAt(100, 50), QColor(0, 0, 200));
  HalvoraHost::install(qml, phone.platform(), controller);
  other.reset();
  EXPECT_EQ(placed.colourAt(100, 50), QColor(10, 60, 20));
  setLoaded(placed, false);
  setLoaded(placed, true);
  listen();
  show(200, 100, 50);
  EXPECT_EQ(placed.colourAt(100, 50), QColor(200, 100, 50));
}

TEST_F(HostileHost, PlacesTwoPanelsAndTwoViewsAtOnce) {
  phone.mainBundle.strings["inside_venue"] = "You are in";
  QmlWindow placed(qml, R"(
      import QtQuick
      import Halvora
      Window {
          width: 400; height: 400; color: "#0a3c14"; visible: true
          HalvoraView { width: 200; height: 100 }
          HalvoraView { x: 200; width: 200; height: 100 }
          HalvoraStatusView { objectName: "one"; y: 100; width: 200; height: implicitHeight }
          HalvoraStatusView {
              objectName: "two"; x: 200; y: 100; width: 200; height: implicitHeight
          }
      })");
  listen();
  show(200, 100, 50);
  EXPECT_EQ(placed.colourAt(100, 50), QColor(10, 60, 20));
  EXPECT_EQ(placed.colourAt(300, 50), QColor(200, 100, 50));
  const auto status = [&](const char* panel) {
    return placed.find(panel)->findChild<QQuickItem*>(QStringLiteral("statusTextLabel"));
  };
  EXPECT_EQ(status("one")->property("text"), QStringLiteral("You are in"));
  EXPECT_EQ(status("two")->property("text"), QStringLiteral("You are in"));
}

// Trees of assets

void put(const QString& file, const QByteArray& bytes) {
  QDir().mkpath(QFileInfo(file).path());
  QFile opened(file);
  ASSERT_TRUE(opened.open(QIODevice::WriteOnly)) << file.toStdString();
  opened.write(bytes);
}

// What is not to be there goes, whatever it is.
void remove(const QString& path) {
  if (QFileInfo(path).isDir() && !QFileInfo(path).isSymLink()) {
    QDir(path).removeRecursively();
  } else {
    QFile::remove(path);
  }
}

void copyTree(const QString& from, const QString& to) {
  QDir().mkpath(to);
  for (const QFileInfo& entry :
       QDir(from).entryInfoList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot)) {
    const QString target = to + QLatin1Char('/') + entry.fileName();
    if (entry.isDir()) {
      copyTree(entry.filePath(), target);
    } else {
      ASSERT_TRUE(QFile::copy(entry.filePath(), target));
    }
  }
}

// Even an administrator can read neither a link to nothing, nor one to itself, nor a folder.
using Damage = std::pair<const char*, std::function<void(const QString& path)>>;

const std::vector<Damage>& damages() {
  static const std::vector<Damage> kDamages = {{"gone", [](const QString& path) { remove(path); }},
                                               {"a link to nothing",
                                                [](const QString& path) {
                                                  remove(path);
                                                  QFile::link(QStringLiteral("nothing"), path);
                                                }},
                                               {"a link to itself",
                                                [](const QString& path) {
                                                  remove(path);
                                                  QFile::link(QFileInfo(path).fileName(), path);
                                                }},
                                               {"a folder",
                                                [](const QString& path) {
                                                  remove(path);
                                                  QDir().mkpath(path);
                                                }},
                                               {"empty",
                                                [](const QString& path) {
                                                  remove(path);
                                                  put(path, {});
                                                }},
                                               {"noise",
                                                [](const QString& path) {
                                                  remove(path);
                                                  put(path, QByteArray(5000, '\x93'));
                                                }},
                                               {"cut short", [](const QString& path) {
                                                  if (!QFileInfo(path).isFile())
                                                    return remove(path);
                                                  QFile file(path);
                                                  EXPECT_TRUE(file.resize(file.size() / 2));
                                                }}};
  return kDamages;
}

struct DamagedAssets : testing::TestWithParam<const char*> {};

// A pixel map, then a colour with a picture, on a real platform, with the panel beside it.
QColor shownOn(const QString& assets, const QString& documents) {
  QtPhone phone(
      {.assets = assets.toStdString(), .documents = documents.toStdString(), .identifier = "host"});
  VirtualBluetooth radio(phone.runLoop());
  phone.use({.bluetooth = &radio});
  UserDefaults& defaults = phone.platform().defaults;
  defaults.set("venueID", std::int64_t{7});
  defaults.set("selectedSection", std::string("Stalls"));
  defaults.set("xPos", std::string("44"));
  defaults.set("yPos", std::string("20"));
  HalvoraViewController controller(phone.platform(), phone.engineOptions());
  controller.viewDidLoad();
  QQmlEngine qml;
  qml.addImportPath(QStringLiteral("qrc:/qt/qml"));
  HalvoraHost::install(qml, phone.platform(), controller);
  QmlWindow placed(qml, R"(
      import QtQuick
      import Halvora
      Window {
          width: 100; height: 100; color: "black"; visible: true
          HalvoraStatusView { width: 100; height: 40; defaultVenueId: 7 }
          HalvoraView { anchors.fill: parent }
      })");
  Broadcast look;
  look.applicationId = 4242;
  look.venueId = 7;
  look.master = 255;
  look.mode = 1;
  look.pixelMapId = 1;
  look.minutes = 1;
  look.ledMode = 9;
  insideOf(controller).processEffect(look);
  look.pixelMapId = 0;
  look.ledMode = 0;
  look.red = 200;
  look.gobo = 1;
  insideOf(controller).processEffect(look);
  controller.playVideo("3");
  // As the show's own fade would take its time.
  insideOf(controller).views().removeAnimations(ViewId::container);
  // The picture lies in the middle.
  return placed.colourAt(2, 97);
}

TEST_P(DamagedAssets, LeaveThePlainLightAsItIs) {
  const QTemporaryDir folder;
  const QString good = QString::fromStdString(sourceTree() + "/assets/demo");
  for (const auto& [name, damage] : damages()) {
    const QString assets = folder.filePath(QString::fromLatin1(name));
    copyTree(good, assets);
    damage(assets + QLatin1Char('/') + QString::fromLatin1(GetParam()));
    EXPECT_EQ(shownOn(assets, assets + QStringLiteral("/documents")), QColor(200, 0, 0)) << name;
  }
}

INSTANTIATE_TEST_SUITE_P(, DamagedAssets,
                         testing::Values("HVAssets", "HVAssets/palettes.json", "HVAssets/Gobos",
                                         "HVAssets/Gobos/1.png", "HVAssets/Maps/Venue-7",
                                         "HVAssets/Maps/Venue-7/map.json",
                                         "HVAssets/Maps/Venue-7/1/video.mp4",
                                         "HVAssets/Maps/Venue-7/1/f1.jpg", "strings/en.json",
                                         "documents/defaults.json"));

}  // namespace
}  // namespace halvora
