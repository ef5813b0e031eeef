// SPDX-License-Identifier: Apache-2.0
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/virtual/virtual_devices.h"

namespace halvora {
namespace {

struct Presenter : ApplicationObserver {
  void handleOrientationChange() override {}
  void appDidBecomeActive() override {}
  void appWillResignActive() override {}
  void presentedScreensDismissed() override { ++dismissals; }
  int dismissals = 0;
};

TEST(VirtualApplicationScreens, TellsItsObserversToTakeBackWhatTheyPresent) {
  VirtualApplication application;
  Presenter presenter;
  application.addObserver(presenter);
  application.dismissPresentedScreens();
  EXPECT_EQ(presenter.dismissals, 1);
  application.removeObserver(presenter);
  application.dismissPresentedScreens();
  EXPECT_EQ(presenter.dismissals, 1);
}

/// Writes down what it is told, and then does something.
struct Listener final : ApplicationObserver {
  Listener(std::string listenerName, std::string& toldTo)
      : name(std::move(listenerName)), told(toldTo) {}
  void handleOrientationChange() override { hear(); }
  void appDidBecomeActive() override { hear(); }
  void appWillResignActive() override { hear(); }
  void presentedScreensDismissed() override { hear(); }
  void hear() {
    told += name;
    if (act) act();
  }
  std::string name;
  std::string& told;
  std::function<void()> act;
};

struct ApplicationListeners : testing::Test {
  ApplicationListeners() {
    for (Listener* listener : {&a, &b, &c}) application.addObserver(*listener);
  }
  /// Who is told by each of the four.
  std::string toldBy(void (VirtualApplication::*tell)()) {
    told.clear();
    (application.*tell)();
    return told;
  }

  VirtualApplication application;
  std::string told;
  Listener a{"a", told};
  Listener b{"b", told};
  Listener c{"c", told};
};

TEST_F(ApplicationListeners, OneThatLeavesWhileItIsToldLeavesTheOthersTheirs) {
  for (const auto tell :
       {&VirtualApplication::becomeActive, &VirtualApplication::resignActive,
        &VirtualApplication::changeOrientation, &VirtualApplication::dismissPresentedScreens}) {
    a.act = [this] { application.removeObserver(a); };
    EXPECT_EQ(toldBy(tell), "abc");
    EXPECT_EQ(toldBy(tell), "bc");
    application.removeObserver(b);
    application.removeObserver(c);
    for (Listener* listener : {&a, &b, &c}) application.addObserver(*listener);
  }
}

TEST_F(ApplicationListeners, OneThatIsTakenOutBeforeItsTurnIsNotTold) {
  a.act = [this] { application.removeObserver(b); };
  EXPECT_EQ(toldBy(&VirtualApplication::becomeActive), "ac");
  c.act = [this] { application.removeObserver(a); };
  EXPECT_EQ(toldBy(&VirtualApplication::becomeActive), "ac");
  EXPECT_EQ(toldBy(&VirtualApplication::becomeActive), "c");
}

TEST_F(ApplicationListeners, OneThatComesMeanwhileIsToldFromTheNextOn) {
  std::vector<std::unique_ptr<Listener>> late;
  a.act = [&] {
    late.push_back(std::make_unique<Listener>("d", told));
    application.addObserver(*late.back());
  };
  EXPECT_EQ(toldBy(&VirtualApplication::becomeActive), "abc");
  a.act = nullptr;
  EXPECT_EQ(toldBy(&VirtualApplication::becomeActive), "abcd");
}

TEST(VirtualApplicationScreens, CountsHowOftenItsSettingsWereOpened) {
  VirtualApplication application;
  EXPECT_TRUE(application.canOpenSettings());
  application.openSettings();
  application.openSettings();
  EXPECT_EQ(application.settingsOpened, 2);
  application.hasSettings = false;
  EXPECT_FALSE(application.canOpenSettings());
}

}  // namespace
}  // namespace halvora
