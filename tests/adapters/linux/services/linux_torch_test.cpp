// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/services/linux_torch.h"

#include <optional>

#include <gmock/gmock.h>

#include "tests/adapters/linux/services/fake_login.h"
#include "tests/adapters/linux/services/services_test.h"

namespace halvora {
namespace {

using testing::ElementsAre;

constexpr const char* kLamp = "leds/white:flash";
constexpr const char* kOn = "SetBrightness(leds, white:flash, 31)";
constexpr const char* kOff = "SetBrightness(leds, white:flash, 0)";

class LinuxTorches : public ServicesTest {
 protected:
  LinuxTorches() {
    login.addLight("leds/input1::numlock", 1, 0);
    login.addLight(kLamp, 31, 0);
  }
  void makeTorch() {
    torch.emplace(loop, buses.system, findTorchLight(login.lights()), settings);
    ASSERT_TRUE(torch->hasTorch());
    ASSERT_TRUE(torch->hasFlash());
  }
  bool waitForLevel(std::uint32_t level) {
    return waitFor([&] { return login.levelOf(kLamp) == level; });
  }

  LightWriterSettings settings;
  FakeLogin login{loop, loop, bus.address()};
  std::optional<LinuxTorch> torch;
};

TEST_F(LinuxTorches, TheLampIsSetToItsMostAndToNothing) {
  login.appear();
  makeTorch();
  torch->setOn(true);
  ASSERT_TRUE(waitForLevel(31));
  torch->setOn(false);
  ASSERT_TRUE(waitForLevel(0));
  EXPECT_THAT(login.calls, ElementsAre(kOn, kOff));
  EXPECT_EQ(torch->counts().failures, 0U);
}

TEST_F(LinuxTorches, ATorchThatIsSwitchedOffAndGoesInTheSameTurnIsOut) {
  login.appear();
  makeTorch();
  torch->setOn(true);
  ASSERT_TRUE(waitForLevel(31));
  torch->setOn(false);
  torch.reset();
  EXPECT_TRUE(waitForLevel(0));
}

TEST_F(LinuxTorches, APhoneWithoutALampHasNoTorch) {
  LinuxTorch none(loop, buses.system, std::nullopt);
  EXPECT_FALSE(none.hasTorch());
  EXPECT_FALSE(none.hasFlash());
  none.setOn(true);
  EXPECT_EQ(none.counts().calls, 0U);
}

TEST_F(LinuxTorches, WhatTheLampShowsAlreadyIsNotSaidAgain) {
  login.appear();
  makeTorch();
  torch->setOn(true);
  ASSERT_TRUE(waitForLevel(31));
  for (int look = 0; look < 5; ++look) {
    torch->setOn(true);
    settle();
  }
  torch->setOn(false);
  ASSERT_TRUE(waitForLevel(0));
  EXPECT_THAT(login.calls, ElementsAre(kOn, kOff));
}

TEST_F(LinuxTorches, ALampThatSomebodyElseSwitchedOnIsSwitchedOff) {
  login.set(kLamp, 12);
  login.appear();
  makeTorch();
  torch->setOn(false);
  EXPECT_TRUE(waitForLevel(0));
}

TEST_F(LinuxTorches, AStrobeOverABusyDaemonQueuesNothingAndEndsAsItShould) {
  login.isHanging = true;
  login.appear();
  makeTorch();
  torch->setOn(true);
  ASSERT_TRUE(waitForCalls(login, 1));
  for (int flash = 0; flash < 1000; ++flash) torch->setOn(flash % 2 == 0);
  torch->setOn(false);
  torch->setOn(true);
  settle();
  EXPECT_EQ(login.calls.size(), 1U);
  torch->setOn(true);
  torch->setOn(false);
  login.isHanging = false;
  login.answerKept();
  ASSERT_TRUE(waitForLevel(31));
  ASSERT_TRUE(waitForLevel(0));
  EXPECT_THAT(login.calls, ElementsAre(kOn, kOff));
}

TEST_F(LinuxTorches, ADaemonThatHangsIsGivenUpAndAskedAgain) {
  login.isHanging = true;
  login.appear();
  makeTorch();
  torch->setOn(true);
  ASSERT_TRUE(waitFor([&] { return torch->counts().failures == 1; }));
  login.isHanging = false;
  EXPECT_TRUE(waitForLevel(31));
  EXPECT_EQ(torch->counts().calls, 2U);
}

TEST_F(LinuxTorches, ADaemonThatDiesIsAskedWhenItIsBack) {
  login.isHanging = true;
  login.appear();
  makeTorch();
  torch->setOn(true);
  ASSERT_TRUE(waitForCalls(login, 1));
  login.die();
  ASSERT_TRUE(waitFor([&] { return torch->counts().failures == 1; }));
  login.isHanging = false;
  login.appear();
  EXPECT_TRUE(waitForLevel(31));
}

TEST_F(LinuxTorches, ABusThatGoesIsFoundAgain) {
  login.appear();
  makeTorch();
  torch->setOn(true);
  ASSERT_TRUE(waitForLevel(31));
  login.die();
  bus.stop();
  torch->setOn(false);
  ASSERT_TRUE(waitFor([&] { return torch->counts().failures >= 1; }));
  ASSERT_TRUE(bus.start());
  login.appear();
  EXPECT_TRUE(waitForLevel(0));
}

TEST_F(LinuxTorches, ARefusalIsQuietAndEndsWithSomeTries) {
  settings.afterFailure = milliseconds(1);
  login.answers[FakeLogin::kSetBrightness] = refusal(SD_BUS_ERROR_ACCESS_DENIED);
  login.appear();
  makeTorch();
  torch->setOn(true);
  ASSERT_TRUE(waitFor([&] { return torch->counts().failures == 5; }));
  EXPECT_FALSE(loop.runUntil([&] { return torch->counts().calls > 5; }, milliseconds(50)));
  EXPECT_TRUE(torch->hasTorch());
}

TEST_F(LinuxTorches, ATorchThatIsOnGoesOutWithItsOwner) {
  login.appear();
  makeTorch();
  torch->setOn(true);
  ASSERT_TRUE(waitForLevel(31));
  torch.reset();
  EXPECT_TRUE(waitForLevel(0));
}

}  // namespace
}  // namespace halvora
