// SPDX-License-Identifier: Apache-2.0
// The QML type `HalvoraView` in a real window, off screen, on a virtual phone.
#include <QMetaObject>
#include <QTemporaryDir>
#include <QVariant>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "adapters/qt/qt_platform.h"
#include "engine/inside.h"
#include "faces/qt/halvora_view_item.h"
#include "faces/qt/qt_clip_picture.h"
#include "tests/faces/qt/event_wait.h"
#include "tests/faces/qt/qml_bench.h"

namespace halvora {
namespace {

constexpr QColor kBehind(10, 60, 20);

constexpr const char* kOneView = R"(
    import QtQuick
    import Halvora
    Window {
        width: 200; height: 100; color: "#0a3c14"; visible: true
        property int started: 0
        property int stopped: 0
        property string standing: light.isPermissionGranted + " " + light.isInsideVenue
        HalvoraView {
            id: light
            objectName: "light"
            anchors.fill: parent
            onLightShowStarted: ++started
            onLightShowStopped: ++stopped
        }
    })";

// The left half and a part of the right half; the right one comes last.
constexpr const char* kTwoViews = R"(
    import QtQuick
    import Halvora
    Window {
        id: window
        width: 200; height: 100; color: "#0a3c14"; visible: true
        property int leftStarted: 0
        property int rightStarted: 0
        Loader {
            objectName: "left"
            width: 100; height: 100
            sourceComponent: HalvoraView { onLightShowStarted: ++window.leftStarted }
        }
        Loader {
            objectName: "right"
            x: 100; width: 100; height: 50
            active: false
            sourceComponent: HalvoraView {
                allowedTransmitterIds: ["258:7"]
                onLightShowStarted: ++window.rightStarted
            }
        }
    })";

struct HalvoraViewTest : testing::Test, QmlBench {
  void place(const char* text) { placed = std::make_unique<QmlWindow>(qml, text); }
  HalvoraViewItem& light() { return *placed->find<HalvoraViewItem>("light"); }
  int number(const char* property) { return placed->window().property(property).toInt(); }
  void placeTwo() {
    place(kTwoViews);
    placed->find("right")->setProperty("active", true);
  }
  void unload(const char* loader) {
    placed->find(loader)->setProperty("active", false);
    // What a loader lets go is deleted in a later turn.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }

  std::unique_ptr<QmlWindow> placed;
};

TEST_F(HalvoraViewTest, APacketChangesTheColourOfTheWindow) {
  place(kOneView);
  EXPECT_EQ(placed->colourAt(100, 50), kBehind);
  QMetaObject::invokeMethod(&light(), "start");
  phone.loop.runFor(milliseconds(1000));
  show(200, 100, 50);
  EXPECT_EQ(placed->colourAt(100, 50), QColor(200, 100, 50));
  EXPECT_EQ(placed->colourAt(0, 99), QColor(200, 100, 50));
  show(1, 2, 250);
  EXPECT_EQ(placed->colourAt(100, 50), QColor(1, 2, 250));
}

TEST_F(HalvoraViewTest, WithoutStartNothingIsHeard) {
  place(kOneView);
  phone.loop.runFor(milliseconds(3000));
  show(200, 100, 50);
  EXPECT_EQ(placed->colourAt(100, 50), kBehind);
}

TEST_F(HalvoraViewTest, InitBluetoothPermissionBeginsToListen) {
  phone.bluetooth.setAuthorization(BluetoothAuthorization::notDetermined);
  place(kOneView);
  QMetaObject::invokeMethod(&light(), "initBluetoothPermission");
  phone.loop.runFor(milliseconds(1000));
  show(200, 100, 50);
  EXPECT_EQ(placed->colourAt(100, 50), QColor(200, 100, 50));
}

TEST_F(HalvoraViewTest, TellsOfAShowThatStartsAndStops) {
  place(kOneView);
  listen();
  EXPECT_EQ(number("started"), 0);
  show(200, 100, 50);
  EXPECT_EQ(number("started"), 1);
  EXPECT_EQ(number("stopped"), 0);
  show(200, 100, 50, 0);
  EXPECT_EQ(number("started"), 1);
  EXPECT_EQ(number("stopped"), 1);
}

// A host binds its window to it.
TEST_F(HalvoraViewTest, SaysForHowLongTheStatusBarIsToBeHidden) {
  place(R"(
    import QtQuick
    import Halvora
    Window {
        width: 200; height: 100; visible: true
        visibility: light.statusBarHidden ? Window.FullScreen : Window.Windowed
        property string told
        HalvoraView {
            id: light
            objectName: "light"
            anchors.fill: parent
            onStatusBarHiddenChanged: told += statusBarHidden ? "hidden " : "back "
            onLightShowStarted: told += "started "
            onLightShowStopped: told += "stopped "
        }
    })");
  const auto told = [this] { return placed->window().property("told").toString().toStdString(); };
  listen();
  EXPECT_FALSE(light().statusBarHidden());
  EXPECT_EQ(placed->window().visibility(), QWindow::Windowed);
  show(200, 100, 50);
  show(100, 100, 50);
  EXPECT_TRUE(light().statusBarHidden());
  EXPECT_EQ(placed->window().visibility(), QWindow::FullScreen);
  EXPECT_EQ(told(), "hidden started ");
  show(200, 100, 50, 0);
  EXPECT_FALSE(light().statusBarHidden());
  EXPECT_EQ(placed->window().visibility(), QWindow::Windowed);
  EXPECT_EQ(told(), "hidden started back stopped ");
}

TEST_F(HalvoraViewTest, OnlyTheViewThatShowsTheLightHasAWordOnTheStatusBar) {
  placeTwo();
  listen();
  show(200, 100, 50);
  const auto isHidden = [this](const char* loader) {
    return qobject_cast<HalvoraViewItem*>(placed->find(loader)->property("item").value<QObject*>())
        ->statusBarHidden();
  };
  EXPECT_TRUE(isHidden("right"));
  EXPECT_FALSE(isHidden("left"));
  unload("right");
  EXPECT_TRUE(isHidden("left"));
}

TEST_F(HalvoraViewTest, MayBeDestroyedByWhoeverHearsOfTheStatusBar) {
  place(kOneView);
  listen();
  QObject::connect(&light(), &HalvoraViewItem::statusBarHiddenChanged, &light(),
                   [this] { delete &light(); });
  show(200, 100, 50);
  EXPECT_EQ(placed->find("light"), nullptr);
  EXPECT_EQ(number("started"), 0);
}

TEST_F(HalvoraViewTest, ObeysTheTransmittersThatItIsGiven) {
  place(kOneView);
  listen();
  EXPECT_TRUE(light().allowedTransmitterIds().isEmpty());
  light().setAllowedTransmitterIds({QStringLiteral("258:8")});
  show(200, 100, 50);
  EXPECT_EQ(placed->colourAt(100, 50), kBehind);
  light().setAllowedTransmitterIds({QStringLiteral("258:8"), QStringLiteral("258:7")});
  show(200, 100, 50);
  EXPECT_EQ(placed->colourAt(100, 50), QColor(200, 100, 50));
}

TEST_F(HalvoraViewTest, UsageReportsAreSwitchedWhileItRuns) {
  place(kOneView);
  int changes = 0;
  QObject::connect(&light(), &HalvoraViewItem::usageReportsChanged, &light(), [&] { ++changes; });
  EXPECT_TRUE(light().property("usageReports").toBool());
  EXPECT_TRUE(controller.usageReports());
  light().setProperty("usageReports", false);
  EXPECT_FALSE(light().property("usageReports").toBool());
  EXPECT_FALSE(controller.usageReports());
  light().setProperty("usageReports", true);
  EXPECT_TRUE(controller.usageReports());
  light().setProperty("usageReports", true);
  EXPECT_EQ(changes, 2);
}

TEST_F(HalvoraViewTest, UsageReportsThatItDoesNotNameAreTheEngines) {
  controller.setUsageReports(false);
  place(kOneView);
  EXPECT_FALSE(controller.usageReports());
  EXPECT_FALSE(light().property("usageReports").toBool());
}

TEST_F(HalvoraViewTest, BindingsFollowPermissionAndVenue) {
  phone.bluetooth.setAuthorization(BluetoothAuthorization::denied);
  place(kOneView);
  const auto standing = [this] { return placed->window().property("standing").toString(); };
  EXPECT_EQ(standing(), QStringLiteral("false false"));
  phone.bluetooth.setAuthorization(BluetoothAuthorization::allowedAlways);
  phone.application.becomeActive();
  phone.loop.runFor(milliseconds(500));
  EXPECT_EQ(standing(), QStringLiteral("true false"));
  listen();
  show(200, 100, 50);
  EXPECT_EQ(standing(), QStringLiteral("true true"));
  // Left after some seconds without a packet.
  phone.loop.runFor(milliseconds(10'000));
  EXPECT_EQ(standing(), QStringLiteral("true false"));
}

// The packets go on; only what they change is drawn.
TEST_F(HalvoraViewTest, ASteadyColourPaintsNothingAndWakesNothingButTheNamedTimers) {
  place(R"(
      import QtQuick
      import Halvora
      Window {
          width: 200; height: 100; color: "#0a3c14"; visible: true
          property string standing: light.isPermissionGranted + " " + light.isInsideVenue
          HalvoraView { id: light; objectName: "light"; anchors.fill: parent }
      })");
  listen();
  show(200, 100, 50);
  // Clips may be played from four seconds after the start on.
  phone.loop.runFor(milliseconds(3000));
  EXPECT_EQ(placed->colourAt(100, 50), QColor(200, 100, 50));
  letQtWorkUntil([this] { return !light().isMoving(); });
  QCoreApplication::processEvents();
  int frames = 0;
  QObject::connect(&placed->window(), &QQuickWindow::afterAnimating, &light(), [&] { ++frames; });
  constexpr int kTenths = 600;
  const std::uint64_t turns = phone.loop.turns();
  for (int tenth = 0; tenth < kTenths; ++tenth) {
    EXPECT_TRUE(advertise());
    phone.loop.runFor(milliseconds(100));
    QCoreApplication::processEvents();
  }
  EXPECT_EQ(frames, 0);
  // A scan cycle and a range reset a second, and two looks at the room's light.
  EXPECT_EQ(phone.loop.turns() - turns, kTenths / 10 * 4U);
  show(1, 2, 250);
  letQtWorkUntil([&] { return frames > 0; });
}

TEST_F(HalvoraViewTest, TellsTheEngineWhereItIsLaidOut) {
  place(kOneView);
  EXPECT_EQ(controller.frame(), (Rect{0, 0, 200, 100}));
  EXPECT_EQ(controller.halvoraView, &light());
  placed->window().resize(120, 70);
  QCoreApplication::processEvents();
  EXPECT_EQ(controller.frame(), (Rect{0, 0, 120, 70}));
  light().setParentItem(nullptr);
  EXPECT_EQ(controller.frame(), Rect{});
  light().setParentItem(placed->window().contentItem());
  EXPECT_EQ(controller.frame(), (Rect{0, 0, 120, 70}));
  placed.reset();
  EXPECT_EQ(controller.frame(), Rect{});
  EXPECT_EQ(controller.halvoraView, nullptr);
}

TEST_F(HalvoraViewTest, MayBeDestroyedDuringAShow) {
  place(kOneView);
  listen();
  show(200, 100, 50, 3);
  placed.reset();
  show(1, 2, 3);
  phone.loop.runFor(milliseconds(20'000));
  EXPECT_EQ(insideOf(controller).state().screen.currentMode, 0U);

  place(kOneView);
  show(4, 5, 6);
  EXPECT_EQ(placed->colourAt(100, 50), QColor(4, 5, 6));
  EXPECT_EQ(number("started"), 1);
}

TEST_F(HalvoraViewTest, MayBeDestroyedBetweenAShowsStartAndItsWord) {
  place(kOneView);
  insideOf(controller).processEffect([] {
    Broadcast look;
    look.applicationId = 258;
    look.mode = 1;
    return look;
  }());
  placed.reset();
  phone.loop.runFor(milliseconds(1000));
  EXPECT_EQ(insideOf(controller).state().screen.currentMode, 1U);
}

TEST_F(HalvoraViewTest, MayBeDestroyedByWhoeverHearsOfTheStart) {
  place(kOneView);
  listen();
  QObject::connect(&light(), &HalvoraViewItem::lightShowStarted, qApp, [this] { placed.reset(); });
  show(200, 100, 50);
  EXPECT_EQ(placed, nullptr);
  EXPECT_FALSE(controller.lightShowStartedCallback());
}

TEST_F(HalvoraViewTest, OfTwoViewsTheLastShowsTheLight) {
  placeTwo();
  listen();
  show(200, 100, 50);
  EXPECT_EQ(placed->colourAt(150, 25), QColor(200, 100, 50));
  EXPECT_EQ(placed->colourAt(50, 25), kBehind);
  EXPECT_EQ(controller.frame(), (Rect{0, 0, 100, 50}));
  EXPECT_EQ(controller.allowedTransmitterIds(), std::vector<std::string>{"258:7"});
  EXPECT_EQ(number("leftStarted"), 0);
  EXPECT_EQ(number("rightStarted"), 1);
}

TEST_F(HalvoraViewTest, OfTwoViewsInOneDocumentTheSecondShowsTheLight) {
  place(R"(
      import QtQuick
      import Halvora
      Window {
          width: 200; height: 100; color: "#0a3c14"; visible: true
          HalvoraView { width: 100; height: 100 }
          HalvoraView { x: 100; width: 100; height: 100 }
      })");
  listen();
  show(200, 100, 50);
  EXPECT_EQ(placed->colourAt(50, 50), kBehind);
  EXPECT_EQ(placed->colourAt(150, 50), QColor(200, 100, 50));
}

TEST_F(HalvoraViewTest, WhenTheLastGoesTheOneBeforeHasTheLightAgain) {
  placeTwo();
  listen();
  show(200, 100, 50);
  unload("right");
  EXPECT_EQ(placed->colourAt(50, 25), QColor(200, 100, 50));
  EXPECT_EQ(placed->colourAt(150, 25), kBehind);
  EXPECT_EQ(controller.frame(), (Rect{0, 0, 100, 100}));
  EXPECT_TRUE(controller.allowedTransmitterIds().empty());
  show(1, 2, 250, 2);
  EXPECT_EQ(number("leftStarted"), 1);
}

TEST_F(HalvoraViewTest, WhenTheFirstGoesTheLastStaysLit) {
  placeTwo();
  listen();
  unload("left");
  show(200, 100, 50);
  EXPECT_EQ(placed->colourAt(150, 25), QColor(200, 100, 50));
  EXPECT_EQ(number("rightStarted"), 1);
}

TEST_F(HalvoraViewTest, TwoWindowsMayShowOneEngineInTurn) {
  place(kOneView);
  QmlWindow other(qml, kOneView);
  listen();
  show(200, 100, 50);
  EXPECT_EQ(other.colourAt(100, 50), QColor(200, 100, 50));
  EXPECT_EQ(placed->colourAt(100, 50), kBehind);
}

TEST_F(HalvoraViewTest, WithoutAQmlEngineItIsDark) {
  HalvoraViewItem item;
  item.start();
  item.initBluetoothPermission();
  item.setAllowedTransmitterIds({QStringLiteral("258:7")});
  EXPECT_FALSE(item.isPermissionGranted());
  EXPECT_FALSE(item.isInsideVenue());
  EXPECT_TRUE(controller.allowedTransmitterIds().empty());
}

TEST_F(HalvoraViewTest, MayOutliveItsQmlEngine) {
  auto engine = std::make_unique<QQmlEngine>();
  engine->addImportPath(QStringLiteral("qrc:/qt/qml"));
  HalvoraHost::install(*engine, phone.platform(), controller);
  QQmlComponent component(engine.get());
  component.setData("import Halvora\nHalvoraView {}", QUrl());
  const std::unique_ptr<QObject> item(component.create());
  ASSERT_TRUE(item) << component.errorString().toStdString();
  EXPECT_TRUE(controller.lightShowStartedCallback());
  engine.reset();
  EXPECT_FALSE(controller.lightShowStartedCallback());
  auto& view = *qobject_cast<HalvoraViewItem*>(item.get());
  view.start();
  EXPECT_FALSE(view.isPermissionGranted());
}

TEST_F(HalvoraViewTest, EachQmlEngineHasThePhoneThatWasInstalled) {
  VirtualPhone otherPhone(reader);
  HalvoraViewController otherController(otherPhone.platform());
  QQmlEngine other;
  HalvoraHost::install(other, otherPhone.platform(), otherController);
  EXPECT_EQ(&HalvoraHost::of(qml).controller(), &controller);
  EXPECT_EQ(&HalvoraHost::of(other).controller(), &otherController);
  EXPECT_EQ(&*HalvoraHost::of(other).platform().runLoop, &otherPhone.loop);
  HalvoraHost::install(other, phone.platform(), controller);
  EXPECT_EQ(&HalvoraHost::of(other).controller(), &controller);
}

// A player whose picture a test paints.
class PaintedPlayer final : public QtClipPicture, public VideoPlayer {
 public:
  void load(const VideoItem&) override {}
  void play() override {}
  void pause() override {}
  bool isReadyToPlay() const override { return false; }
  bool isItemReadyToPlay() const override { return false; }
  void setPreferredForwardBuffer(Duration) override {}
  void seek(Duration, Task) override {}
  QImage picture() override { return painted; }

  void show(const QImage& picture) {
    painted = picture;
    emit changed();
  }

  QImage painted;
};

QImage pictureOf(QSize size, QColor colour) {
  QImage picture(size, QImage::Format_RGB32);
  picture.fill(colour);
  return picture;
}

struct HalvoraViewClipTest : HalvoraViewTest {
  HalvoraViewClipTest() {
    Platform platform = phone.platform();
    platform.videoPlayers = players;
    HalvoraHost::install(qml, platform, controller);
    place(kOneView);
    insideOf(controller).views().setAlpha(ViewId::container, 1);
    insideOf(controller).views().setLightColour(colourOfBytes(0, 0, 200));
  }
  ~HalvoraViewClipTest() override { placed.reset(); }

  PaintedPlayer a;
  PaintedPlayer b;
  VideoPlayers players{a, b};
};

TEST_F(HalvoraViewClipTest, EachPlayersPictureIsShownInItsView) {
  a.show(pictureOf({200, 100}, QColor(250, 0, 0)));
  b.show(pictureOf({200, 100}, QColor(0, 250, 0)));
  EXPECT_EQ(placed->colourAt(100, 50), QColor(0, 0, 200));
  insideOf(controller).views().setAlpha(ViewId::playerViewA, 1);
  EXPECT_EQ(placed->colourAt(100, 50), QColor(250, 0, 0));
  insideOf(controller).views().setAlpha(ViewId::playerViewA, 0);
  insideOf(controller).views().setAlpha(ViewId::playerViewB, 1);
  EXPECT_EQ(placed->colourAt(100, 50), QColor(0, 250, 0));
}

TEST_F(HalvoraViewClipTest, EachNewPictureIsShown) {
  insideOf(controller).views().setAlpha(ViewId::playerViewA, 1);
  EXPECT_EQ(placed->colourAt(100, 50), QColor(0, 0, 200));
  a.show(pictureOf({20, 10}, QColor(250, 0, 0)));
  EXPECT_EQ(placed->colourAt(100, 50), QColor(250, 0, 0));
  a.show(pictureOf({20, 10}, QColor(0, 0, 0)));
  EXPECT_EQ(placed->colourAt(100, 50), QColor(0, 0, 0));
  a.show(QImage());
  EXPECT_EQ(placed->colourAt(100, 50), QColor(0, 0, 200));
}

TEST_F(HalvoraViewClipTest, APictureIsShownWholeInTheMiddle) {
  insideOf(controller).views().setAlpha(ViewId::playerViewA, 1);
  a.show(pictureOf({10, 10}, QColor(250, 0, 0)));
  const QImage seen = placed->window().grabWindow().convertToFormat(QImage::Format_RGB32);
  EXPECT_EQ(seen.pixelColor(51, 1), QColor(250, 0, 0));
  EXPECT_EQ(seen.pixelColor(148, 98), QColor(250, 0, 0));
  EXPECT_EQ(seen.pixelColor(48, 50), QColor(0, 0, 200));
  EXPECT_EQ(seen.pixelColor(151, 50), QColor(0, 0, 200));
}

TEST_F(HalvoraViewClipTest, TheDimmerDarkensAClipAndItsAlphaLetsTheLightThrough) {
  insideOf(controller).views().setAlpha(ViewId::playerViewA, 0.5);
  insideOf(controller).views().setAlpha(ViewId::dimmerView, 0.5);
  a.show(pictureOf({200, 100}, QColor(200, 0, 0)));
  const QColor seen = placed->colourAt(100, 50);
  EXPECT_NEAR(seen.red(), 50, 2);
  EXPECT_NEAR(seen.blue(), 50, 2);
}

TEST_F(HalvoraViewClipTest, APlayerMayGoBeforeTheView) {
  auto gone = std::make_unique<PaintedPlayer>();
  light().setClips(gone.get(), nullptr);
  gone->show(pictureOf({200, 100}, QColor(250, 0, 0)));
  insideOf(controller).views().setAlpha(ViewId::playerViewA, 1);
  EXPECT_EQ(placed->colourAt(100, 50), QColor(250, 0, 0));
  gone.reset();
  light().polish();
  EXPECT_EQ(placed->colourAt(100, 50), QColor(0, 0, 200));
}

}  // namespace
}  // namespace halvora
