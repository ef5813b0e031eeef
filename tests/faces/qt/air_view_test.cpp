// SPDX-License-Identifier: Apache-2.0
// What a host in QML says of whom its phones are to believe, and what it is told: a signed show as
// it was recorded, with strangers in between.
#include <QFile>
#include <QQmlContext>
#include <QTemporaryDir>
#include <QUrl>
#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <variant>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/system/system_phone.h"
#include "engine/signed_broadcast.h"
#include "faces/qt/halvora_view_item.h"
#include "tests/faces/qt/qml_bench.h"
#include "tests/support/source_tree.h"
#include "venue/show/scenario_file.h"
#include "venue/show/scenario_schedule.h"

namespace halvora {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr const char* kKey = "000102030405060708090A0B0C0D0E0F";
constexpr QColor kDark(0, 0, 0);
constexpr QColor kStrangers(255, 255, 255);

constexpr const char* kView = R"(
    import QtQuick
    import Halvora
    Window {
        width: 40; height: 40; color: "black"; visible: true
        property string told
        HalvoraView {
            objectName: "light"
            anchors.fill: parent
            airPolicy: HalvoraView.AirPolicy.Guarded
            authentication: HalvoraView.Authentication.Require
            showKeyFile: keyFile
            onAirTrustChanged: told += ["unproven ", "trusted ", "contested "][airTrust]
            Component.onCompleted: start()
        }
    })";

/// A virtual phone with this machine's cipher, at the time of the recording.
class AirViewTest : public testing::Test {
 protected:
  AirViewTest() {
    controller_.viewDidLoad();
    qml_.addImportPath(QStringLiteral("qrc:/qt/qml"));
    HalvoraHost::install(qml_, platform_, controller_);
  }

  void SetUp() override {
    if (platform_.codes->withKey(*ShowKey::ofText(kKey)) == nullptr) {
      GTEST_SKIP() << "this build has no cipher";
    }
  }

  void writeKey(const char* text, QFileDevice::Permissions permissions = QFileDevice::ReadOwner) {
    QFile file(keyPath());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(text);
    ASSERT_TRUE(file.setPermissions(permissions | QFileDevice::WriteOwner));
  }
  void place(const char* text = kView) {
    qml_.rootContext()->setContextProperty(QStringLiteral("keyFile"),
                                           QUrl::fromLocalFile(keyPath()));
    placed_ = std::make_unique<QmlWindow>(qml_, text);
  }
  HalvoraViewItem& light() { return *placed_->find<HalvoraViewItem>("light"); }
  std::string told() { return placed_->window().property("told").toString().toStdString(); }
  QColor colour() { return placed_->colourAt(20, 20); }
  HalvoraViewController& engine() { return controller_; }

  /// The recording up to then, with whatever a stranger says after each of its packets.
  void play(
      double until, const std::function<void()>& stranger = [] {}) {
    while (moment_ && moment_->time < fromSeconds(until)) {
      phone_.loop.runUntil(moment_->time);
      if (const auto* packet = std::get_if<PacketAction>(moment_->action)) {
        phone_.bluetooth.advertise(packet->data);
        stranger();
      }
      moment_ = schedule_.next();
    }
    phone_.loop.runUntil(fromSeconds(until));
  }
  void hearStranger(std::uint16_t sequence) {
    Broadcast white;
    white.applicationId = 258;
    white.venueId = white.transmitter = 7;
    white.master = white.red = white.green = white.blue = 255;
    white.mode = 1;
    white.sequence = sequence;
    phone_.bluetooth.advertise(encodeBroadcast(white));
  }

 private:
  QString keyPath() const { return folder_.filePath(QStringLiteral("show.key")); }
  static Scenario recorded() {
    const ExactJsonReader reader;
    const std::atomic<bool> isInterrupted = false;
    const auto read = readScenario(sourceTree() + "/tests/faces/qt/shows/signed_show.jsonl", reader,
                                   isInterrupted);
    return std::get<Scenario>(read);
  }

  const QTemporaryDir folder_;
  const SystemPhone system_{{.documents = folder_.path().toStdString()},
                            {"unix:path=/nowhere", "unix:path=/nowhere"}};
  const ExactJsonReader reader_;
  VirtualPhone phone_{reader_};
  const Platform platform_ = [this] {
    Platform platform = phone_.platform();
    platform.codes = system_.platform().codes;
    return platform;
  }();
  HalvoraViewController controller_{platform_};
  QQmlEngine qml_;
  std::unique_ptr<QmlWindow> placed_;
  const Scenario show_ = recorded();
  ScenarioSchedule schedule_{show_};
  std::optional<ScenarioMoment> moment_ = schedule_.next();
};

TEST_F(AirViewTest, OnlyTheSignedShowIsObeyed) {
  writeKey(kKey);
  place();
  EXPECT_EQ(light().showKeyError().toStdString(), "");
  std::uint16_t far = 20'000;
  const auto stranger = [&] { hearStranger(++far); };
  play(3.5, stranger);
  EXPECT_EQ(colour(), QColor(200, 40, 20));
  EXPECT_EQ(told(), "trusted ");
  EXPECT_EQ(light().airTrust(), HalvoraViewItem::AirTrust::Trusted);
  play(5.5, stranger);
  EXPECT_EQ(colour(), QColor(20, 200, 40));
  play(8.5, stranger);
  EXPECT_EQ(colour(), QColor(40, 20, 200));
}

TEST_F(AirViewTest, TheSameShowIsNobodysUnderAnotherKey) {
  writeKey("FF0102030405060708090A0B0C0D0E0F");
  place();
  play(8.5);
  EXPECT_EQ(colour(), kDark);
  EXPECT_EQ(told(), "");
}

TEST_F(AirViewTest, WithoutAKeyItIsGuarded) {
  place(R"(
    import QtQuick
    import Halvora
    Window {
        width: 40; height: 40; color: "black"; visible: true
        property string told
        HalvoraView {
            objectName: "light"
            anchors.fill: parent
            airPolicy: HalvoraView.AirPolicy.Guarded
            onAirTrustChanged: told += ["unproven ", "trusted ", "contested "][airTrust]
            Component.onCompleted: start()
        }
    })");
  play(6.2);
  EXPECT_EQ(told(), "trusted ");
  EXPECT_EQ(colour(), QColor(20, 200, 40));
  std::uint16_t next = 6;
  play(8.5, [&] { hearStranger(next = static_cast<std::uint16_t>(next + 40)); });
  EXPECT_EQ(told(), "trusted contested ");
  EXPECT_EQ(colour(), QColor(20, 200, 40)) << "what nobody disputed is held";
}

TEST_F(AirViewTest, AKeyThatOthersMayReadIsNone) {
  writeKey(kKey, QFileDevice::ReadOwner | QFileDevice::ReadOther);
  place();
  const std::string error = light().showKeyError().toStdString();
  EXPECT_THAT(error, HasSubstr("show.key: others may read this show key"));
  EXPECT_THAT(error, Not(HasSubstr("0102")));
  play(5);
  EXPECT_EQ(colour(), kDark) << "who requires proof has none";
}

TEST_F(AirViewTest, AFileThatIsNoKeySaysNothingOfWhatIsInIt) {
  writeKey("000102030405060708090A0B0C0D0E0");
  place();
  const std::string error = light().showKeyError().toStdString();
  EXPECT_THAT(error, HasSubstr("a show key is 32 hexadecimal digits"));
  EXPECT_THAT(error, Not(HasSubstr("0102")));
  light().setShowKeyFile(QUrl(QStringLiteral("qrc:/show.key")));
  EXPECT_THAT(light().showKeyError().toStdString(), HasSubstr("from a local file"));
  light().setShowKeyFile(QUrl::fromLocalFile(QStringLiteral("/nowhere/show.key")));
  EXPECT_THAT(light().showKeyError().toStdString(), HasSubstr("/nowhere/show.key: "));
  light().setShowKeyFile({});
  EXPECT_EQ(light().showKeyError().toStdString(), "");
}

TEST_F(AirViewTest, ALaterChoiceHoldsFromThenOn) {
  writeKey(kKey);
  place();
  play(2);
  EXPECT_EQ(light().airTrust(), HalvoraViewItem::AirTrust::Trusted);
  light().setShowKeyFile({});
  light().setAuthentication(HalvoraViewItem::Authentication::Off);
  light().setAirPolicy(HalvoraViewItem::AirPolicy::Exact);
  EXPECT_EQ(light().airTrust(), HalvoraViewItem::AirTrust::Unproven);
  hearStranger(20'000);
  play(3.5);
  EXPECT_EQ(colour(), kStrangers) << "whatever is newer";
}

TEST_F(AirViewTest, WhereNothingIsSetTheEngineGoesOnAsItDid) {
  engine().setAir({.policy = AirPolicy::guarded});
  engine().start();
  play(6);
  place(R"(
    import QtQuick
    import Halvora
    Window { HalvoraView { objectName: "light" } })");
  EXPECT_EQ(light().airTrust(), HalvoraViewItem::AirTrust::Trusted);
  EXPECT_EQ(light().authentication(), HalvoraViewItem::Authentication::Off);
  light().setShowKeyFile(QUrl(QStringLiteral("nowhere")));
  EXPECT_EQ(light().authentication(), HalvoraViewItem::Authentication::Prefer);
}

}  // namespace
}  // namespace halvora
