// SPDX-License-Identifier: Apache-2.0
// The needs of a real host, put together: where its files lie, what is absent, what lasts.
#include "adapters/qt/qt_platform.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QLocale>
#include <QTemporaryDir>
#include <memory>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/qt/qt_resource_bundle.h"
#include "adapters/virtual/virtual_bluetooth.h"
#include "adapters/virtual/virtual_devices.h"
#include "adapters/virtual/virtual_media.h"
#include "engine/inside.h"
#include "faces/qt/halvora_host.h"
#include "halvora/platform/bluetooth.h"
#include "halvora/platform/haptics.h"
#include "halvora/platform/image.h"
#include "halvora/platform/screen.h"
#include "halvora/platform/torch.h"
#include "halvora/platform/user_defaults.h"
#include "tests/adapters/qt/qt_phone.h"
#include "tests/faces/qt/event_wait.h"
#include "tests/faces/qt/qml_bench.h"
#include "text/defaults_values.h"

namespace halvora {
namespace {

constexpr const char* kSeatButton = "hv_seat_button_select";

struct QtPlatformTest : testing::Test {
  ~QtPlatformTest() override { QLocale::setDefault(QLocale::system()); }

  std::string path(const char* name) const {
    return folder.filePath(QString::fromLatin1(name)).toStdString();
  }
  void write(const char* name, const char* text) const {
    const QString file = folder.filePath(QString::fromLatin1(name));
    QDir().mkpath(QFileInfo(file).path());
    QFile opened(file);
    ASSERT_TRUE(opened.open(QIODevice::WriteOnly));
    opened.write(text);
  }
  QtPlatformOptions options() const {
    return {.assets = path("assets"), .documents = path("documents")};
  }

  const QTemporaryDir folder;
};

TEST_F(QtPlatformTest, IsOnePlatformForAsLongAsItLives) {
  QtPhone phone(options());
  const Platform& platform = phone.platform();
  EXPECT_EQ(&phone.platform(), &platform);
  EXPECT_EQ(&*platform.runLoop, &phone.runLoop());
}

TEST_F(QtPlatformTest, TheMainBundleIsTheHostsFolder) {
  write("assets/HVAssets/palettes.json", "{}");
  write("assets/strings/en.json", R"({"inside_venue": "You are in"})");
  QtPlatformOptions wanted = options();
  wanted.identifier = "com.example.concert";
  QtPhone phone(wanted);
  const Bundles& bundles = phone.platform().bundles;
  EXPECT_EQ(bundles.main.location("a"), path("assets") + "/a");
  EXPECT_EQ(bundles.main.readResource("HVAssets/palettes.json", 100), "{}");
  EXPECT_EQ(bundles.main.localizedString("inside_venue"), "You are in");
  EXPECT_EQ(bundles.main.identifier(), "com.example.concert");
  EXPECT_EQ(bundles.documents, path("documents"));
}

TEST_F(QtPlatformTest, TheIdentifierIsTheApplicationsDomainAndName) {
  const QString domain = QCoreApplication::organizationDomain();
  const QString name = QCoreApplication::applicationName();
  const auto identifier = [this] {
    return QtPhone(options()).platform().bundles->main.identifier();
  };
  QCoreApplication::setOrganizationDomain(QStringLiteral("shows.example.com"));
  QCoreApplication::setApplicationName(QStringLiteral("concert"));
  EXPECT_EQ(identifier(), "com.example.shows.concert");
  QCoreApplication::setOrganizationDomain(QString());
  EXPECT_EQ(identifier(), "concert");
  QCoreApplication::setOrganizationDomain(domain);
  QCoreApplication::setApplicationName(name);
}

TEST_F(QtPlatformTest, TheKitsTextsAreCompiledIn) {
  QLocale::setDefault(QLocale(QLocale::English));
  QtPhone phone(options());
  const Bundle& kit = phone.platform().bundles->kit;
  EXPECT_EQ(kit.localizedString(kSeatButton), "Select Seat");
  EXPECT_EQ(kit.localizedString("no_such_key"), "no_such_key");
  EXPECT_EQ(kit.location("strings/en.json"), ":/halvora/kit/strings/en.json");
}

TEST_F(QtPlatformTest, AKitOfTheHostsOwnTakesItsPlace) {
  write("kit/strings/en.json", R"({"hv_seat_button_select": "Pick"})");
  write("kit/strings/nl.json", R"({"hv_seat_button_select": "Kies"})");
  QtPlatformOptions wanted = options();
  wanted.kit = path("kit");
  QLocale::setDefault(QLocale(QLocale::English));
  EXPECT_EQ(QtPhone(wanted).platform().bundles->kit.localizedString(kSeatButton), "Pick");
  QLocale::setDefault(QLocale(QLocale::Dutch, QLocale::Belgium));
  EXPECT_EQ(QtPhone(wanted).platform().bundles->kit.localizedString(kSeatButton), "Kies");
}

TEST_F(QtPlatformTest, WhatAHostsTablesLackIsCompiledInKeyByKey) {
  write("kit/strings/en.json", R"({"hv_seat_button_select": "Pick"})");
  write("assets/strings/en.json", R"({"inside_venue": "You are in"})");
  QtPlatformOptions wanted = options();
  wanted.kit = path("kit");
  QLocale::setDefault(QLocale(QLocale::English));
  {
    QtPhone phone(wanted);
    const Bundles& bundles = phone.platform().bundles;
    EXPECT_EQ(bundles.kit.localizedString(kSeatButton), "Pick");
    EXPECT_EQ(bundles.kit.localizedString("allow_lightshow"), "Join the Light Show");
    EXPECT_EQ(bundles.main.localizedString("inside_venue"), "You are in");
    EXPECT_EQ(bundles.main.localizedString("outside_venue").substr(0, 11), "You are not");
    EXPECT_EQ(bundles.main.localizedString("no_such_key"), "no_such_key");
  }
  // In the user's language where the kit has it, and the host's words before the kit's.
  QLocale::setDefault(QLocale(QLocale::German));
  QtPhone phone(wanted);
  const Bundles& bundles = phone.platform().bundles;
  EXPECT_EQ(bundles.kit.localizedString(kSeatButton), "Pick");
  EXPECT_EQ(bundles.main.localizedString("outside_venue").substr(0, 8), "Du bist ");
}

TEST_F(QtPlatformTest, AHostWithoutTextsShowsNoKeys) {
  QLocale::setDefault(QLocale(QLocale::English));
  QtPhone phone(options());
  HalvoraViewController controller(phone.platform(), phone.engineOptions());
  controller.viewDidLoad();
  controller.start();
  EXPECT_EQ(textForKey(phone.platform().defaults, "bluetoothStatus").value_or("").substr(0, 11),
            "You are not");
}

TEST_F(QtPlatformTest, AResourceBundleReadsWholeResourcesUpToALimit) {
  const ExactJsonReader json;
  const QtResourceBundle kit(QStringLiteral(":/halvora/kit"), "kit", {"en"}, json);
  const auto table = kit.readResource("strings/en.json", 1 << 20);
  ASSERT_TRUE(table);
  EXPECT_NE(table->find(kSeatButton), std::string::npos);
  EXPECT_EQ(kit.readResource("strings/en.json", table->size() - 1), std::nullopt);
  EXPECT_EQ(kit.readResource("strings/none.json", 1 << 20), std::nullopt);
  EXPECT_EQ(kit.readResource("strings", 1 << 20), std::nullopt);
}

TEST_F(QtPlatformTest, DefaultsLast) {
  {
    QtPhone phone(options());
    phone.platform().defaults->set("venueID", std::int64_t{7});
  }
  QtPhone phone(options());
  EXPECT_EQ(integerForKey(phone.platform().defaults, "venueID"), 7);
}

TEST_F(QtPlatformTest, WhatAMachineLacksIsAQuietNothing) {
  QtPhone phone(options());
  const Platform& platform = phone.platform();
  EXPECT_FALSE(platform.torch->hasTorch());
  EXPECT_FALSE(platform.torch->hasFlash());
  platform.torch->setOn(true);
  platform.haptics->impact(ImpactStyle::heavy);
  platform.haptics->playSystemSound(kVibrationSound);
  platform.haptics->disposeSystemSound(kVibrationSound);
  EXPECT_EQ(platform.screen->brightness(), 1);
  EXPECT_FALSE(platform.application->canOpenSettings());
  EXPECT_EQ(platform.images->decode("no picture"), std::nullopt);
}

struct Delegate final : CentralManagerDelegate {
  void centralManagerDidUpdateState(CentralState state) override { heard = state; }
  void didDiscoverPeripheral(const Advertisement&) override {}
  std::optional<CentralState> heard;
};

TEST_F(QtPlatformTest, WithoutARadioBluetoothIsAllowedAndUnsupported) {
  QtPhone phone(options());
  BluetoothCentral& bluetooth = phone.platform().bluetooth;
  EXPECT_EQ(bluetooth.authorization(), BluetoothAuthorization::allowedAlways);
  Delegate delegate;
  const auto manager = bluetooth.makeManager(delegate);
  EXPECT_EQ(manager->state(), CentralState::unsupported);
  manager->scanForPeripherals({});
  manager->restartScan({});
  manager->stopScan();
  EXPECT_EQ(delegate.heard, std::nullopt);
  letQtWorkUntil([&] { return delegate.heard.has_value(); });
  EXPECT_EQ(delegate.heard, CentralState::unsupported);
}

TEST_F(QtPlatformTest, AManagerThatIsGoneReportsNothing) {
  QtPhone phone(options());
  Delegate delegate;
  phone.platform().bluetooth->makeManager(delegate);
  bool isOver = false;
  phone.runLoop().soon([&isOver] { isOver = true; });
  letQtWorkUntil([&] { return isOver; });
  EXPECT_EQ(delegate.heard, std::nullopt);
}

TEST_F(QtPlatformTest, ServicesTakeThePlaceOfWhatIsAbsent) {
  QtPhone phone(options());
  VirtualBluetooth bluetooth(phone.runLoop());
  VirtualHaptics haptics;
  VirtualTorch torch;
  double level = 0.3;
  phone.use({.bluetooth = &bluetooth,
             .haptics = &haptics,
             .torch = &torch,
             .brightness = [&] { return level; },
             .setBrightness = [&](double wanted) { level = wanted; }});
  const Platform& platform = phone.platform();
  EXPECT_EQ(&*platform.bluetooth, &bluetooth);
  EXPECT_EQ(&*platform.haptics, &haptics);
  EXPECT_EQ(&*platform.torch, &torch);
  EXPECT_EQ(platform.screen->brightness(), 0.3);
}

// The folder is not there, is a file, or holds things that are not what their names say.
TEST_F(QtPlatformTest, AShowRunsOnAnUnreadableTreeOfAssets) {
  write("file", "not a folder");
  write("odd/HVAssets/palettes.json", "{\"palettes\": [");
  write("odd/HVAssets/Gobos/1.png", "not a picture");
  write("odd/strings/en.json", "[]");
  for (const char* assets : {"missing", "file", "odd"}) {
    QtPlatformOptions wanted = options();
    wanted.assets = path(assets);
    QtPhone phone(wanted);
    VirtualBluetooth bluetooth(phone.runLoop());
    phone.use({.bluetooth = &bluetooth});
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
            HalvoraView { anchors.fill: parent }
        })");
    Broadcast look;
    look.applicationId = 258;
    look.master = 255;
    look.mode = 1;
    look.red = 200;
    look.gobo = 1;
    insideOf(controller).processEffect(look);
    controller.playVideo("3");
    // As the show's own fade would take its time.
    insideOf(controller).views().removeAnimations(ViewId::container);
    EXPECT_EQ(placed.colourAt(2, 2), QColor(200, 0, 0)) << assets;
  }
}

}  // namespace
}  // namespace halvora
