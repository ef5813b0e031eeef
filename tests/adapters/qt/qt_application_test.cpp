// SPDX-License-Identifier: Apache-2.0
#include "adapters/qt/qt_application.h"

#include <QGuiApplication>
#include <QWindow>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "adapters/qt/qt_screen.h"

namespace halvora {
namespace {

struct Observer final : ApplicationObserver {
  Observer(Application& watched, std::string& told) : application(watched), heard(told) {
    application.addObserver(*this);
  }
  ~Observer() override { application.removeObserver(*this); }
  Observer(const Observer&) = delete;
  Observer& operator=(const Observer&) = delete;

  void handleOrientationChange() override { heard += 'o'; }
  void appDidBecomeActive() override { heard += 'a'; }
  void appWillResignActive() override { heard += 'r'; }
  void presentedScreensDismissed() override { heard += 'd'; }

  Application& application;
  std::string& heard;
};

struct QtApplicationTest : testing::Test {
  QtApplicationTest() {
    // Whatever windows of other tests have left behind.
    switchTo(Qt::ApplicationInactive);
  }
  static void switchTo(Qt::ApplicationState state) { emit qGuiApp->applicationStateChanged(state); }

  QtPlatformServices services;
  QtApplication application{services};
  std::string heard;
};

TEST_F(QtApplicationTest, TellsWhenItBecomesActiveAndWhenItResigns) {
  const Observer observer(application, heard);
  switchTo(Qt::ApplicationActive);
  EXPECT_EQ(heard, "a");
  switchTo(Qt::ApplicationInactive);
  EXPECT_EQ(heard, "ar");
  switchTo(Qt::ApplicationActive);
  switchTo(Qt::ApplicationSuspended);
  EXPECT_EQ(heard, "arar");
}

TEST_F(QtApplicationTest, StatesThatAreAllInactiveAreOne) {
  const Observer observer(application, heard);
  switchTo(Qt::ApplicationHidden);
  switchTo(Qt::ApplicationSuspended);
  switchTo(Qt::ApplicationInactive);
  EXPECT_EQ(heard, "");
}

TEST_F(QtApplicationTest, AMachineThatSleepsIsAnApplicationThatResigns) {
  const Observer observer(application, heard);
  switchTo(Qt::ApplicationActive);
  application.setSuspended(true);
  application.setSuspended(true);
  EXPECT_EQ(heard, "ar");
  switchTo(Qt::ApplicationInactive);
  switchTo(Qt::ApplicationActive);
  EXPECT_EQ(heard, "ar") << "nobody is there while it sleeps";
  application.setSuspended(false);
  EXPECT_EQ(heard, "ara");
}

TEST_F(QtApplicationTest, OneWithoutAttentionResignsBeforeItSleepsAndStaysSo) {
  const Observer observer(application, heard);
  application.setSuspended(true);
  application.setSuspended(false);
  EXPECT_EQ(heard, "r");
}

TEST_F(QtApplicationTest, AnObserverThatIsGoneIsNotTold) {
  auto observer = std::make_unique<Observer>(application, heard);
  observer.reset();
  switchTo(Qt::ApplicationActive);
  EXPECT_EQ(heard, "");
}

TEST_F(QtApplicationTest, AnObserverMayTakeAnotherOffWhileItIsTold) {
  struct Remover final : ApplicationObserver {
    void handleOrientationChange() override {}
    void appDidBecomeActive() override { other.reset(); }
    void appWillResignActive() override {}
    std::unique_ptr<Observer> other;
  } remover;
  application.addObserver(remover);
  remover.other = std::make_unique<Observer>(application, heard);
  switchTo(Qt::ApplicationActive);
  EXPECT_EQ(heard, "");
  application.removeObserver(remover);
}

TEST_F(QtApplicationTest, DismissingPresentedScreensTellsWhoPresents) {
  const Observer observer(application, heard);
  application.dismissPresentedScreens();
  EXPECT_EQ(heard, "d");
}

TEST_F(QtApplicationTest, WithoutServicesEveryCallIsAQuietNothing) {
  application.setIdleTimerDisabled(true);
  application.setStatusBarHidden(true);
  application.useAudioPlaybackCategory();
  EXPECT_FALSE(application.canOpenSettings());
  application.openSettings();
}

TEST_F(QtApplicationTest, ServicesAreCalledWhenSomethingChanges) {
  std::string calls;
  services.setIdleTimerDisabled = [&](bool on) { calls += on ? "idle+ " : "idle- "; };
  services.setStatusBarHidden = [&](bool on) { calls += on ? "bar+ " : "bar- "; };
  services.openSettings = [&] { calls += "settings "; };
  application.setIdleTimerDisabled(false);
  application.setIdleTimerDisabled(true);
  application.setIdleTimerDisabled(true);
  application.setStatusBarHidden(true);
  application.setIdleTimerDisabled(false);
  application.setStatusBarHidden(false);
  EXPECT_TRUE(application.canOpenSettings());
  application.openSettings();
  EXPECT_EQ(calls, "idle+ bar+ idle- bar- settings ");
}

TEST(QtScreen, WithoutABacklightItIsFullyLit) {
  const QtPlatformServices services;
  QtScreen screen(services);
  EXPECT_EQ(screen.brightness(), 1);
  screen.setBrightness(0.25);
  EXPECT_EQ(screen.brightness(), 1);
  EXPECT_EQ(screen.currentEDRHeadroom(), 1);
}

TEST(QtScreen, TheBacklightIsKeptWithinItsRange) {
  double level = 0.5;
  QtPlatformServices services;
  services.brightness = [&] { return level; };
  services.setBrightness = [&](double wanted) { level = wanted; };
  QtScreen screen(services);
  EXPECT_EQ(screen.brightness(), 0.5);
  screen.setBrightness(1.01);
  EXPECT_EQ(level, 1);
  screen.setBrightness(-1);
  EXPECT_EQ(level, 0);
  level = 7;
  EXPECT_EQ(screen.brightness(), 1);
}

TEST(QtScreen, IsAsLargeAsTheWindow) {
  const QtPlatformServices services;
  const QtScreen screen(services);
  // The machine's own, while nothing is open.
  EXPECT_GT(screen.bounds().width, 0);
  QWindow window;
  window.resize(123, 456);
  window.show();
  QCoreApplication::processEvents();
  EXPECT_EQ(screen.bounds(), (Size{123, 456}));
}

}  // namespace
}  // namespace halvora
