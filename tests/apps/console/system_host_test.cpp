// SPDX-License-Identifier: Apache-2.0
// A machine as a phone, from the packet in the air to what its services are told; and the demo that
// opens it.
#include "apps/console/system_host.h"

#include <QImage>
#include <QProcess>
#include <QProcessEnvironment>
#include <csignal>
#include <filesystem>
#include <memory>
#include <string>

#include <gmock/gmock.h>

#include "adapters/standard/standard_files.h"
#include "engine/inside.h"
#include "tests/adapters/linux/services/fake_login.h"
#include "tests/apps/console/letter_keys.h"
#include "tests/apps/console/system_bench.h"
#include "tests/faces/qt/access_tree.h"
#include "tests/faces/qt/qml_bench.h"
#include "tests/support/source_tree.h"

namespace halvora {
namespace {

using testing::Contains;

const std::string kAssets = sourceTree() + "/assets/demo";

Broadcast steadyLook() {
  Broadcast look;
  look.applicationId = 4242;
  look.venueId = 7;
  look.master = 255;
  look.red = 30;
  look.green = 160;
  look.blue = 90;
  look.mode = 1;
  look.transmitter = 1;
  return look;
}

class SystemPhones : public SystemBench {
 protected:
  void SetUp() override {
    SystemBench::SetUp();
    qputenv("XDG_DATA_HOME", folder.path().c_str());
  }
  void TearDown() override { qunsetenv("XDG_DATA_HOME"); }

  void openPhone() {
    phone = std::make_unique<SystemHost>(
        kAssets, QtLinuxOptions{bus.address(), bus.address(), login.lights(), "A test"});
    phone->engine().start();
  }
  bool waitForRadio(const char* text) {
    return waitFor([&] { return phone->radio().contains(QString::fromUtf8(text)); });
  }

  FakeLogin login{loop, descriptors, bus.address()};
  FakeService saver{loop, descriptors, bus.address(), "org.freedesktop.ScreenSaver"};
  FakeService feedback{loop, descriptors, bus.address(), "org.sigxcpu.Feedback"};
  FakeService portal{loop, descriptors, bus.address(), "org.freedesktop.portal.Desktop"};
  std::unique_ptr<SystemHost> phone;
};

TEST_F(SystemPhones, APacketReachesEveryService) {
  login.addLight("leds/white:flash", 31, 0);
  login.addLight("backlight/panel", 1000, 400);
  login.appear();
  saver.answers["org.freedesktop.ScreenSaver.Inhibit"] = [](sd_bus_message* call) {
    return sd_bus_reply_method_return(call, "u", 5);
  };
  saver.answers["org.freedesktop.ScreenSaver.UnInhibit"] = agree;
  saver.appear();
  feedback.answers["org.sigxcpu.Feedback.Haptic.Vibrate"] = [](sd_bus_message* call) {
    return sd_bus_reply_method_return(call, "b", 1);
  };
  feedback.appear();
  Broadcast look = steadyLook();
  look.ledMode = 1;
  look.vibrate = 3;
  send(look);
  openPhone();
  EXPECT_TRUE(waitFor([&] { return login.levelOf("leds/white:flash") == 31; }));
  EXPECT_TRUE(waitFor([&] { return login.levelOf("backlight/panel") == 1000; }));
  ASSERT_TRUE(waitFor([&] { return !saver.calls.empty() && !feedback.calls.empty(); }));
  EXPECT_THAT(saver.calls, Contains(testing::EndsWith(", A test)")));
  EXPECT_THAT(feedback.calls, Contains(testing::EndsWith(", [[1, 400]])")));
  EXPECT_TRUE(waitForRadio("Scanning · hearing a show · last packet 0."));

  sent.mode = 0;
  sent.ledMode = 0;
  EXPECT_TRUE(waitFor([&] { return login.levelOf("leds/white:flash") == 0; }));
  EXPECT_TRUE(waitFor([&] { return login.levelOf("backlight/panel") <= 400; }));
  EXPECT_TRUE(waitFor([&] { return saver.calls.back() == "UnInhibit(5)"; }));
}

TEST_F(SystemPhones, TheDesktopsWishesReachThePanel) {
  portal.answers["org.freedesktop.portal.Settings.ReadAll"] = [](sd_bus_message* call) {
    return sd_bus_reply_method_return(call, "a{sa{sv}}", 1, "org.freedesktop.appearance", 1,
                                      "contrast", "u", 1U);
  };
  portal.appear();
  openPhone();
  QQmlEngine qml;
  qml.addImportPath(QStringLiteral("qrc:/qt/qml"));
  phone->install(qml);
  QmlWindow window(qml, R"(
    import QtQuick
    import QtQuick.Window
    import Halvora
    Window { width: 360; height: 640; HalvoraStatusView { objectName: "status"; width: 360 } })");
  const QQuickItem& status = *window.find("status");
  EXPECT_TRUE(waitFor([&] { return status.property("highContrast").toBool(); }));
  EXPECT_FALSE(status.property("reducedMotion").toBool());
  portal.announce("/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings",
                  "SettingChanged", [](sd_bus_message* message) {
                    sd_bus_message_append(message, "ssv", "org.gnome.desktop.interface",
                                          "enable-animations", "b", 0);
                  });
  EXPECT_TRUE(waitFor([&] { return status.property("reducedMotion").toBool(); }));
}

// The window that the demo opens on it, as assistive technology finds it.
TEST_F(SystemPhones, ItsWindowSpeaksAndTakesEveryPress) {
  openPhone();
  QQmlEngine qml;
  qml.addImportPath(QStringLiteral("qrc:/qt/qml"));
  phone->install(qml);
  QQmlComponent component(&qml, QUrl(QStringLiteral("qrc:/qt/qml/HalvoraDemo/SystemWindow.qml")));
  const std::unique_ptr<QObject> root(component.createWithInitialProperties(
      {{QStringLiteral("system"), QVariant::fromValue(phone.get())}}));
  ASSERT_TRUE(root) << component.errorString().toStdString();
  auto& window = *qobject_cast<QQuickWindow*>(root.get());
  const auto isThere = [&window](const char* name) {
    return withObjectName(accessTree(window), QString::fromLatin1(name)) != nullptr;
  };
  ASSERT_TRUE(waitFor([&] { return isThere("radioText"); }));
  expectNoLetterDoesAnything(window);
  const AccessNodes nodes = accessTree(window);
  expectSpeaking(nodes);
  EXPECT_EQ(withObjectName(nodes, QStringLiteral("radioText"))->name, phone->radio());
  // The map is read in the background.
  ASSERT_TRUE(waitFor([&] {
    const AccessNodes now = accessTree(window);
    const AccessNode* button = withObjectName(now, QStringLiteral("seatSelectionButton"));
    return button != nullptr && button->interface->state().disabled == 0 &&
           button->act(QAccessibleActionInterface::pressAction());
  }));
  EXPECT_TRUE(waitFor([&] { return isThere("seatSheetContent"); }));
  expectSpeaking(accessTree(window));
}

TEST_F(SystemPhones, APhoneThatIsClosedInAShowLeavesNoLightOn) {
  login.addLight("leds/white:flash", 31, 0);
  login.addLight("backlight/panel", 1000, 400);
  login.appear();
  Broadcast look = steadyLook();
  look.ledMode = 1;
  send(look);
  openPhone();
  ASSERT_TRUE(waitFor([&] {
    return login.levelOf("leds/white:flash") == 31 && login.levelOf("backlight/panel") == 1000;
  }));
  phone.reset();
  EXPECT_TRUE(waitFor([&] { return login.levelOf("leds/white:flash") == 0; }));
  EXPECT_TRUE(waitFor([&] { return login.levelOf("backlight/panel") == 400; }));
}

struct SystemPhonesInAShow : SystemPhones {
  void SetUp() override {
    SystemPhones::SetUp();
    login.addLight("leds/white:flash", 31, 0);
    login.addLight("backlight/panel", 1000, 400);
    login.appear();
    Broadcast look = steadyLook();
    look.ledMode = 1;
    send(look);
    openPhone();
    ASSERT_TRUE(waitFor([&] { return isLit(1000, 31); }));
  }
  bool isLit(std::uint32_t screen, std::uint32_t torch) {
    return login.levelOf("backlight/panel") == screen && login.levelOf("leds/white:flash") == torch;
  }
};

TEST_F(SystemPhonesInAShow, AMachineThatSleepsHasItsLightsBack) {
  const auto say = [this](bool isAsleep) {
    login.signal("/org/freedesktop/login1", "org.freedesktop.login1.Manager", "PrepareForSleep",
                 isAsleep);
  };
  say(true);
  EXPECT_TRUE(waitFor([&] { return isLit(400, 0); }));
  const std::size_t calls = login.calls.size();
  // The show goes on in the air.
  const std::uint16_t before = sent.sequence;
  sent.master = 128;
  ASSERT_TRUE(waitFor([&] { return sent.sequence > before + 20; }));
  EXPECT_TRUE(isLit(400, 0));
  EXPECT_EQ(login.calls.size(), calls);
}

// A process whose phone is never destroyed, such as that of most hosts.
TEST_F(SystemPhonesInAShow, ASignalThatEndsTheProcessGivesThePhoneBackFirst) {
  const Timer killer(loop, loop.after(milliseconds(10), [] { std::raise(SIGTERM); }));
  EXPECT_EQ(QCoreApplication::exec(), 128 + SIGTERM);
  EXPECT_TRUE(waitFor([&] { return isLit(400, 0); }));
}

TEST_F(SystemPhones, WithoutServicesTheShowGoesOn) {
  Broadcast look = steadyLook();
  look.ledMode = 5;
  look.ledSpeed = 255;
  look.vibrate = 2;
  send(look);
  openPhone();
  ASSERT_TRUE(waitForRadio("hearing a show"));
  EXPECT_TRUE(waitFor([&] { return insideOf(phone->engine()).state().screen.currentMode == 1; }));
}

TEST_F(SystemPhones, WithoutABluetoothDaemonTheRadioSaysWhy) {
  openPhone();
  EXPECT_TRUE(waitForRadio("Not scanning · no show heard\norg.freedesktop.DBus.Error."));
  bus.stop();
  EXPECT_TRUE(waitForRadio("Not scanning"));
}

TEST_F(SystemPhones, ThePanelsSettingsButtonSwitchesTheAdapterOn) {
  bluez.appear();
  bluez.addAdapter("hci0", false);
  openPhone();
  QQmlEngine qml;
  qml.addImportPath(QStringLiteral("qrc:/qt/qml"));
  phone->install(qml);
  QmlWindow window(qml, R"(
    import QtQuick
    import Halvora
    Window {
        width: 300; height: 400; visible: true
        HalvoraStatusView { objectName: "panel"; width: 300; offersSettingsWhenOff: true }
    })");
  auto* button = window.find("settingsButton");
  ASSERT_NE(button, nullptr);
  ASSERT_TRUE(waitFor([&] { return button->isVisible() && button->height() > 0; }));
  QMetaObject::invokeMethod(button, "clicked");
  ASSERT_TRUE(waitForRadio("Scanning"));
  EXPECT_THAT(bluez.calls, Contains("Set"));
  EXPECT_TRUE(waitFor([&] { return button->height() == 0; }));
}

TEST_F(SystemPhones, TheRadioSaysWhichAdapterIsInUse) {
  bluez.broken = {"hci0"};
  bluez.ear = "hci1";
  send(steadyLook());
  bluez.addAdapter("hci1", true);
  openPhone();
  EXPECT_TRUE(waitForRadio("Scanning · hearing a show · last packet 0."));
  EXPECT_TRUE(waitForRadio(" · hci1"));
}

TEST_F(SystemPhones, AnAdapterThatIsNamedIsWaitedForAndTheRadioSaysSo) {
  bluez.appear();
  bluez.addAdapter("hci0", true);
  phone = std::make_unique<SystemHost>(
      kAssets, QtLinuxOptions{bus.address(), bus.address(), login.lights(), "A test", "hci1"});
  phone->engine().start();
  EXPECT_TRUE(waitForRadio(
      "Not scanning · no show heard\nwaiting for the adapter hci1, which is not there; this "
      "machine has hci0"));
  bluez.addAdapter("hci1", true);
  EXPECT_TRUE(waitForRadio(" · hci1"));
  EXPECT_FALSE(phone->radio().contains(QStringLiteral("waiting")));
}

TEST_F(SystemPhones, AMachineWithoutLightsHasNeitherTorchNorBacklight) {
  QtLinuxServices services(loop, {bus.address(), bus.address(), login.lights()});
  EXPECT_FALSE(services.services().torch->hasTorch());
  EXPECT_FALSE(services.services().brightness);
  EXPECT_FALSE(services.services().setBrightness);
  login.addLight("backlight/panel", 1000, 400);
  QtLinuxServices lit(loop, {bus.address(), bus.address(), login.lights()});
  ASSERT_TRUE(lit.services().brightness);
  EXPECT_DOUBLE_EQ(lit.services().brightness(), 0.4);
}

TEST_F(SystemPhones, OpeningTheSettingsStartsTheDesktopsPage) {
  const std::string page = folder.write("bin/gnome-control-center",
                                        "#!/bin/sh\nprintf %s \"$1\" > \"${0%/*}/opened\"\n");
  std::filesystem::permissions(page, std::filesystem::perms::owner_all);
  const QByteArray path = qgetenv("PATH");
  const QByteArray desktops = qgetenv("XDG_CURRENT_DESKTOP");
  qputenv("PATH", QByteArray::fromStdString(folder.path() + "/bin:") + path);
  qputenv("XDG_CURRENT_DESKTOP", "Phosh:GNOME");
  QtLinuxServices services(loop, {bus.address(), bus.address(), login.lights()});
  services.services().openSettings();
  qputenv("PATH", path);
  qputenv("XDG_CURRENT_DESKTOP", desktops);
  const std::string opened = folder.path() + "/bin/opened";
  EXPECT_TRUE(waitFor([&] { return readFile(opened, 100) == "bluetooth"; }));
}

#ifdef HALVORA_DEMO

class SystemDemo : public SystemPhones {
 protected:
  void start(const QStringList& more) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    const QString address = QString::fromStdString(bus.address());
    environment.insert(QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS"), address);
    environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), address);
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    demo.setProcessEnvironment(environment);
    demo.start(
        QStringLiteral(HALVORA_DEMO),
        QStringList{QStringLiteral("--radio"), QStringLiteral("system"), QStringLiteral("--assets"),
                    QString::fromStdString(kAssets), QStringLiteral("--screenshot"), picture} +
            more);
  }
  bool waitForEnd() {
    return waitFor([&] { return demo.state() == QProcess::NotRunning; });
  }

  QProcess demo;
  const QString picture = QString::fromStdString(folder.path() + "/phone.png");
};

TEST_F(SystemDemo, ThePictureShowsWhatIsInTheAir) {
  send(steadyLook());
  start({});
  ASSERT_TRUE(waitForEnd());
  ASSERT_EQ(demo.exitCode(), 0) << demo.readAllStandardError().toStdString();
  const QImage window(picture);
  ASSERT_FALSE(window.isNull());
  const QColor seen = window.pixelColor(window.width() / 2, window.height() / 2);
  EXPECT_LE(std::abs(seen.red() - 30), 1) << seen.name().toStdString();
  EXPECT_LE(std::abs(seen.green() - 160), 1) << seen.name().toStdString();
  EXPECT_LE(std::abs(seen.blue() - 90), 1) << seen.name().toStdString();
}

TEST_F(SystemDemo, SaysInOneLineThatTheAdapterThatIsNamedIsNotThereAndGoesOn) {
  send(steadyLook());
  start({QStringLiteral("--adapter"), QStringLiteral("hci7")});
  std::string said;
  EXPECT_TRUE(waitFor([&] {
    said += demo.readAllStandardError().toStdString();
    return said.find(
               "halvora-demo: waiting for the adapter hci7, which is not there; this machine "
               "has hci0\n") != std::string::npos;
  })) << said;
  // The picture is of its first show.
  bluez.ear = "hci7";
  bluez.addAdapter("hci7", true);
  ASSERT_TRUE(waitForEnd());
  EXPECT_EQ(demo.exitCode(), 0);
}

TEST_F(SystemDemo, WithoutABusThereIsAPictureOfThePanel) {
  bus.stop();
  start({QStringLiteral("--quit-after"), QStringLiteral("2")});
  ASSERT_TRUE(waitForEnd());
  ASSERT_EQ(demo.exitStatus(), QProcess::NormalExit);
  ASSERT_EQ(demo.exitCode(), 0) << demo.readAllStandardError().toStdString();
  const QImage window(picture);
  ASSERT_FALSE(window.isNull());
  // The host's page without a light, and on it what the panel has to say.
  EXPECT_EQ(window.pixelColor(window.width() / 2, window.height() / 2), QColor(0x12, 0x14, 0x1a));
  int letters = 0;
  for (int y = window.height() * 2 / 3; y < window.height(); ++y) {
    for (int x = 0; x < window.width(); ++x) {
      if (qGray(window.pixel(x, y)) > 200) ++letters;
    }
  }
  EXPECT_GT(letters, 300);
}

#endif

}  // namespace
}  // namespace halvora
