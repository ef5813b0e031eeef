// SPDX-License-Identifier: Apache-2.0
// The QML type `HalvoraAudienceView` in a real window, off screen, on a virtual phone: by touch, by
// keys and by assistive technology, and how it looks.
#include <QAccessible>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/standard/folder_bundle.h"
#include "adapters/standard/standard_files.h"
#include "engine/inside.h"
#include "faces/qt/impl/status_announcer.h"
#include "tests/faces/qt/access_tree.h"
#include "tests/faces/qt/committed_picture.h"
#include "tests/faces/qt/qml_bench.h"
#include "tests/faces/qt/screen_judge.h"
#include "tests/support/source_tree.h"

namespace halvora {
namespace {

constexpr const char* kHost = R"(
    import QtQuick
    import QtQuick.Templates as T
    import Halvora
    Window {
        width: 360; height: 640; color: "#0a3c14"; visible: true
        property int presses: 0
        property int escapes: 0
        Item {
            anchors.fill: parent
            focus: true
            Keys.onEscapePressed: ++escapes
            HalvoraView {
                objectName: "light"
                anchors.fill: parent
                Component.onCompleted: start()
            }
            T.Button {
                objectName: "hostButton"
                anchors.fill: parent
                text: "The host's"
                Accessible.role: Accessible.Button
                Accessible.name: text
                onPressed: ++presses
            }
            HalvoraAudienceView { objectName: "audience"; anchors.fill: parent; textScale: 1 }
        }
    })";

struct AudienceViewTest : testing::Test, QmlBench {
  void place(const char* text = kHost) {
    placed = std::make_unique<QmlWindow>(qml, text);
    phone.loop.runFor(milliseconds(1000));
    settle();
  }
  // The same phone, with the kit's texts in that language.
  void speak(const std::string& language, SystemWishes* wishes = nullptr) {
    kit = std::make_unique<FolderBundle>(files, sourceTree() + "/assets/kit", "com.halvora.sdk",
                                         std::vector<std::string>{language}, reader);
    bundles = std::make_unique<Bundles>(Bundles{phone.mainBundle, *kit, {}});
    Platform platform = phone.platform();
    platform.bundles = *bundles;
    spoken = std::make_unique<HalvoraViewController>(platform);
    spoken->viewDidLoad();
    HalvoraHost::install(qml, platform, *spoken, wishes);
  }
  void settle() {
    for (int turn = 0; turn < 4; ++turn) QCoreApplication::processEvents();
  }
  bool is(const char* property) { return audience()->property(property).toBool(); }
  QQuickItem* audience() { return placed->find("audience"); }
  int number(const char* property) { return placed->window().property(property).toInt(); }
  double red() { return insideOf(controller).shownScreen().red; }
  void join() {
    QMetaObject::invokeMethod(audience(), "join");
    settle();
  }
  void startShow() {
    join();
    show(200, 0, 0);
    settle();
  }
  void key(int which, bool isRepeated = false) {
    QKeyEvent press(QEvent::KeyPress, which, Qt::NoModifier, {}, isRepeated);
    QGuiApplication::sendEvent(&placed->window(), &press);
    QKeyEvent release(QEvent::KeyRelease, which, Qt::NoModifier, {}, isRepeated);
    QGuiApplication::sendEvent(&placed->window(), &release);
    settle();
  }
  void tap(QPointF place = {180, 300}) {
    time += 100;
    for (const auto type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
      const bool isPress = type == QEvent::MouseButtonPress;
      QMouseEvent event(type, place, placed->window().mapToGlobal(place), Qt::LeftButton,
                        isPress ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier);
      event.setTimestamp(time += 20);
      QGuiApplication::sendEvent(&placed->window(), &event);
    }
    settle();
  }
  void press(const char* name) {
    const AccessNodes tree = accessTree(placed->window());
    const AccessNode* node = withName(tree, QString::fromUtf8(name));
    ASSERT_NE(node, nullptr) << name;
    ASSERT_TRUE(node->act(QAccessibleActionInterface::pressAction())) << name;
    settle();
  }
  bool finds(const char* name) {
    return withName(accessTree(placed->window()), QString::fromUtf8(name)) != nullptr;
  }
  QImage picture() {
    placed->window().grabWindow();
    settle();
    return placed->window().grabWindow().convertToFormat(QImage::Format_RGB32);
  }

  const StandardFiles files;
  std::unique_ptr<FolderBundle> kit;
  std::unique_ptr<Bundles> bundles;
  std::unique_ptr<HalvoraViewController> spoken;
  std::unique_ptr<QmlWindow> placed;
  quint64 time = 1000;
};

TEST_F(AudienceViewTest, WarnsBeforeAnybodyJoins) {
  place();
  EXPECT_TRUE(is("asks"));
  EXPECT_EQ(placed->find("audienceTitle")->property("text").toString(),
            QStringLiteral("This show contains flashing light"));
  show(200, 0, 0);
  EXPECT_EQ(red(), 0);
  tap({180, 20});
  EXPECT_EQ(number("presses"), 0) << "what lies behind is not to be reached";
  join();
  EXPECT_FALSE(is("asks"));
  phone.loop.runFor(milliseconds(300));
  EXPECT_NEAR(red(), 200 / 255.0, 0.01);
  EXPECT_EQ(placed->colourAt(180, 20), QColor(200, 0, 0));
}

TEST_F(AudienceViewTest, EscBackAndThreeTapsLeaveAShow) {
  place();
  startShow();
  ASSERT_TRUE(is("isInShow"));
  const auto leaves = [this] {
    phone.loop.runFor(milliseconds(300));
    const bool hasLeft = is("asks") && red() == 0;
    join();
    phone.loop.runFor(milliseconds(300));
    settle();
    return hasLeft;
  };
  key(Qt::Key_Escape);
  EXPECT_TRUE(leaves());
  key(Qt::Key_Back);
  EXPECT_TRUE(leaves());
  for (int count = 0; count < 3; ++count) tap();
  EXPECT_TRUE(leaves());
  EXPECT_EQ(number("escapes"), 0);
}

TEST_F(AudienceViewTest, TwoTapsOrSlowOnesDoNotLeave) {
  place();
  startShow();
  tap();
  tap();
  time += 5000;
  tap();
  time += 5000;
  tap();
  EXPECT_FALSE(is("asks"));
}

TEST_F(AudienceViewTest, OutsideAShowKeysAndTapsAreTheHosts) {
  place();
  join();
  ASSERT_FALSE(is("isInShow"));
  key(Qt::Key_Escape);
  EXPECT_EQ(number("escapes"), 1);
  for (int count = 0; count < 3; ++count) tap();
  EXPECT_EQ(number("presses"), 3);
  EXPECT_FALSE(is("asks"));
}

TEST_F(AudienceViewTest, TheKeyThatLeavesDoesNotAnswerWhatItBrings) {
  place();
  startShow();
  key(Qt::Key_Escape);
  ASSERT_TRUE(is("asks"));
  for (int count = 0; count < 5; ++count) key(Qt::Key_Escape, true);
  EXPECT_TRUE(is("asks"));
  key(Qt::Key_Escape);
  EXPECT_TRUE(is("isOut"));
}

TEST_F(AudienceViewTest, ByKeysAloneTheSwitchAndBothAnswersAreReached) {
  place();
  const auto focused = [this] { return placed->window().activeFocusItem()->objectName(); };
  EXPECT_EQ(focused(), QStringLiteral("gentleSwitch"));
  key(Qt::Key_Space);
  EXPECT_TRUE(is("gentleLight"));
  key(Qt::Key_Return);
  EXPECT_FALSE(is("gentleLight"));
  key(Qt::Key_Tab);
  EXPECT_EQ(focused(), QStringLiteral("audienceJoin"));
  key(Qt::Key_Tab);
  EXPECT_EQ(focused(), QStringLiteral("audienceStayOut"));
  key(Qt::Key_Tab);
  EXPECT_EQ(focused(), QStringLiteral("gentleSwitch")) << "nothing behind takes the keyboard";
  key(Qt::Key_Backtab);
  key(Qt::Key_Return);
  EXPECT_TRUE(is("isOut"));
}

TEST_F(AudienceViewTest, TheKeyboardBringsWhatItReachesIntoSight) {
  place();
  audience()->setProperty("textScale", 2);
  settle();
  key(Qt::Key_Backtab);
  QQuickItem* last = placed->find("audienceStayOut");
  ASSERT_TRUE(last->hasActiveFocus());
  const QRectF place = last->mapRectToScene({0, 0, last->width(), last->height()});
  EXPECT_GE(place.top(), 0);
  EXPECT_LE(place.bottom(), 640);
}

TEST_F(AudienceViewTest, AssistiveTechnologyReachesAllOfIt) {
  place();
  expectSpeaking(accessTree(placed->window()));
  EXPECT_FALSE(finds("The host's")) << "what lies behind is not there";
  {
    const AccessNodes tree = accessTree(placed->window());
    const AccessNode* gentle = withName(tree, QStringLiteral("Gentle light"));
    ASSERT_NE(gentle, nullptr);
    EXPECT_EQ(gentle->role, QAccessible::CheckBox);
    EXPECT_FALSE(gentle->interface->state().checked);
    ASSERT_TRUE(gentle->act(QAccessibleActionInterface::toggleAction()));
    settle();
    EXPECT_TRUE(gentle->interface->state().checked);
    EXPECT_TRUE(is("gentleLight"));
  }
  press("Join the Light Show");
  EXPECT_FALSE(is("asks"));
  EXPECT_TRUE(finds("The host's"));
  EXPECT_FALSE(finds("Leave the light show"));
  show(200, 0, 0);
  settle();
  press("Leave the light show");
  EXPECT_TRUE(finds("The light is off"));
  press("Resume");
  press("Leave the light show");
  press("Stay Out");
  EXPECT_TRUE(is("isOut"));
  expectSpeaking(accessTree(placed->window()));
  press("Back to the Light Show");
  EXPECT_TRUE(is("isInShow"));
}

TEST_F(AudienceViewTest, EachQuestionIsSaidOnce) {
  place();
  QStringList heard;
  auto* announcer = audience()->findChild<StatusAnnouncer*>();
  ASSERT_NE(announcer, nullptr);
  QObject::connect(announcer, &StatusAnnouncer::announced, announcer,
                   [&heard](const QString& text) { heard += text; });
  startShow();
  key(Qt::Key_Escape);
  EXPECT_EQ(heard, QStringList{QStringLiteral("The light is off")});
}

TEST_F(AudienceViewTest, TheKeyboardGoesBackToWhereItWas) {
  place();
  join();
  placed->find("hostButton")->forceActiveFocus();
  show(200, 0, 0);
  settle();
  key(Qt::Key_Escape);
  EXPECT_EQ(placed->window().activeFocusItem()->objectName(), QStringLiteral("gentleSwitch"));
  QMetaObject::invokeMethod(audience(), "stayOut");
  settle();
  EXPECT_EQ(placed->window().activeFocusItem()->objectName(), QStringLiteral("hostButton"));
}

TEST_F(AudienceViewTest, IsEmptyOnceAnotherHostIsThere) {
  place();
  ASSERT_TRUE(is("asks"));
  speak("de");
  EXPECT_FALSE(is("asks"));
  EXPECT_FALSE(is("isInShow"));
  key(Qt::Key_Escape);
}

// What the user has asked the system for

TEST_F(AudienceViewTest, TheSystemsWishForContrastIsFollowed) {
  SystemWishes wishes;
  speak("en", &wishes);
  place();
  const auto ground = [this] {
    return placed->find("audienceGround")->property("color").value<QColor>();
  };
  const auto button = [this] {
    return placed->find("audienceJoin")
        ->findChild<QQuickItem*>(QStringLiteral("buttonBackground"))
        ->property("color")
        .value<QColor>();
  };
  const QColor usual = button();
  EXPECT_FALSE(is("highContrast"));
  wishes.set({.highContrast = true});
  EXPECT_TRUE(is("highContrast"));
  EXPECT_EQ(ground(), QColor(Qt::black));
  EXPECT_EQ(button(), QColor(Qt::white));
  wishes.set({.highContrast = true, .scheme = ColourScheme::light});
  EXPECT_EQ(ground(), QColor(Qt::white));
  EXPECT_EQ(button(), QColor(Qt::black));
  wishes.set({.scheme = ColourScheme::light});
  EXPECT_EQ(ground(), QColor(Qt::black));
  EXPECT_EQ(button(), usual);
}

TEST_F(AudienceViewTest, AHostThatDecidesGoesBeforeTheSystem) {
  SystemWishes wishes;
  wishes.set({.highContrast = true});
  speak("en", &wishes);
  place(R"(
    import QtQuick
    import Halvora
    Window {
        width: 360; height: 640; visible: true
        HalvoraAudienceView { objectName: "audience"; anchors.fill: parent; highContrast: false }
    })");
  EXPECT_FALSE(is("highContrast"));
  wishes.set({.highContrast = true, .scheme = ColourScheme::light});
  EXPECT_EQ(placed->find("audienceGround")->property("color").value<QColor>(), QColor(Qt::black));
}

TEST_F(AudienceViewTest, ItsWishesMayGoBeforeIt) {
  auto wishes = std::make_unique<SystemWishes>();
  speak("en", wishes.get());
  place();
  wishes->set({.highContrast = true});
  wishes.reset();
  settle();
  EXPECT_TRUE(is("highContrast"));
}

// Whoever has asked for stillness gets it without asking: nothing in here moves by itself.
TEST_F(AudienceViewTest, NothingMovesByItself) {
  speak("en");
  place();
  const QImage first = picture();
  for (int turn = 0; turn < 20; ++turn) {
    phone.loop.runFor(milliseconds(100));
    settle();
  }
  EXPECT_EQ(picture(), first);
  for (const QObject* part : audience()->findChildren<QObject*>()) {
    EXPECT_FALSE(part->inherits("QQuickAbstractAnimation")) << part->metaObject()->className();
    EXPECT_FALSE(part->inherits("QQuickTransition")) << part->metaObject()->className();
  }
}

struct AudienceScreens : AudienceViewTest {
  void judge(QSize size, double scale, const std::string& what) {
    placed->window().resize(size);
    audience()->setProperty("textScale", scale);
    settle();
    const QImage seen = picture();
    ASSERT_EQ(seen.size(), size) << what;
    ScreenJudge(placed->window(), seen, "audienceQuestion",
                what + " " + std::to_string(size.width()) + " x " + std::to_string(size.height()) +
                    " at " + std::to_string(scale))
        .judge();
  }
};

TEST_F(AudienceScreens, AreWholeInEachSizeScaleAndLanguage) {
  for (const char* language : {"en", "de", "es", "fr", "ja", "ar"}) {
    speak(language);
    place();
    for (const double scale : {1.0, 1.5, 2.0, 3.0}) {
      for (const QSize size : {QSize(360, 640), QSize(640, 360)}) judge(size, scale, language);
    }
    judge({1920, 1080}, 2, language);
  }
}

TEST_F(AudienceScreens, StandOutInHighContrast) {
  for (const ColourScheme scheme : {ColourScheme::dark, ColourScheme::light}) {
    SystemWishes wishes;
    wishes.set({.highContrast = true, .scheme = scheme});
    for (const char* language : {"en", "ar"}) {
      speak(language, &wishes);
      place();
      for (const double scale : {1.0, 2.0}) {
        const std::string what =
            std::string(language) + " of scheme " + std::to_string(static_cast<int>(scheme));
        judge({360, 640}, scale, what);
        audience()->setProperty("gentleLight", true);
        judge({360, 640}, scale, what + " gentle");
        audience()->setProperty("gentleLight", false);
      }
    }
  }
}

// Pictures

TEST_F(AudienceViewTest, LooksAsItShallInHighContrast) {
  SystemWishes wishes;
  wishes.set({.highContrast = true, .scheme = ColourScheme::light});
  speak("en", &wishes);
  place();
  audience()->setProperty("gentleLight", true);
  settle();
  expectPicture(picture(), "audience-contrast");
}

TEST_F(AudienceViewTest, LooksAsItShallBeforeJoining) {
  speak("en");
  place();
  expectPicture(picture(), "audience-asked");
}

TEST_F(AudienceViewTest, LooksAsItShallAfterLeaving) {
  speak("en");
  place();
  spoken->start();
  phone.loop.runFor(milliseconds(1000));
  startShow();
  key(Qt::Key_Escape);
  audience()->setProperty("gentleLight", true);
  phone.loop.runFor(milliseconds(300));
  expectPicture(picture(), "audience-left");
}

TEST_F(AudienceViewTest, LooksAsItShallOutside) {
  speak("en");
  place();
  QMetaObject::invokeMethod(audience(), "stayOut");
  settle();
  expectPicture(picture(), "audience-out");
}

TEST_F(AudienceViewTest, LooksAsItShallFromTheRight) {
  speak("ar");
  place();
  expectPicture(picture(), "audience-arabic");
}

TEST_F(AudienceViewTest, LooksAsItShallWithLargeTexts) {
  speak("de");
  place();
  audience()->setProperty("textScale", 1.6);
  settle();
  expectPicture(picture(), "audience-large");
}

}  // namespace
}  // namespace halvora
