// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "platform/virtual/virtual_devices.h"

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
