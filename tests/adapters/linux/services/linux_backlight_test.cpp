// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/services/linux_backlight.h"

#include <algorithm>
#include <optional>

#include <gmock/gmock.h>

#include "adapters/virtual/virtual_run_loop.h"
#include "tests/adapters/linux/services/fake_login.h"
#include "tests/adapters/linux/services/services_test.h"

namespace halvora {
namespace {

using testing::ElementsAre;

constexpr const char* kScreen = "backlight/panel";

class LinuxBacklights : public ServicesTest {
 protected:
  void makeBacklight(std::uint32_t most, std::uint32_t level,
                     Duration fresh = LinuxBacklight::kFresh) {
    login.addLight(kScreen, most, level);
    backlight.emplace(loop, buses.system, *findBacklight(login.lights()), LightWriterSettings{},
                      fresh);
  }
  bool waitForLevel(std::uint32_t level) {
    return waitFor([&] { return login.levelOf(kScreen) == level; });
  }

  FakeLogin login{loop, loop, bus.address()};
  std::optional<LinuxBacklight> backlight;
};

TEST_F(LinuxBacklights, LevelsAreParts) {
  login.appear();
  makeBacklight(200, 50);
  EXPECT_DOUBLE_EQ(backlight->level(), 0.25);
  backlight->setLevel(0.5);
  EXPECT_DOUBLE_EQ(backlight->level(), 0.5);
  ASSERT_TRUE(waitForLevel(100));
  EXPECT_THAT(login.calls, ElementsAre("SetBrightness(backlight, panel, 100)"));
}

TEST_F(LinuxBacklights, LevelsAreBoundedAndNeverDarkness) {
  login.appear();
  makeBacklight(200, 50);
  backlight->setLevel(-3);
  EXPECT_DOUBLE_EQ(backlight->level(), 0);
  ASSERT_TRUE(waitForLevel(1));
  backlight->setLevel(7);
  EXPECT_DOUBLE_EQ(backlight->level(), 1);
  ASSERT_TRUE(waitForLevel(200));
}

// What the engine does at each look.
TEST_F(LinuxBacklights, OfSeveralLevelsInATurnTheLastIsSet) {
  login.appear();
  makeBacklight(100, 50);
  backlight->setLevel(1);
  backlight->setLevel(0.99);
  ASSERT_TRUE(waitForLevel(99));
  EXPECT_THAT(login.calls, ElementsAre("SetBrightness(backlight, panel, 99)"));
}

TEST_F(LinuxBacklights, AShowThatIsCutOffLeavesTheScreenAsItWas) {
  login.appear();
  makeBacklight(100, 30);
  backlight->setLevel(0.99);
  ASSERT_TRUE(waitForLevel(99));
  backlight.reset();
  EXPECT_TRUE(waitForLevel(30));
}

TEST_F(LinuxBacklights, WhatTheScreenWasBeforeIsKnownForAsLongAsNobodyElseSetsIt) {
  login.appear();
  makeBacklight(100, 30, Duration::zero());
  backlight->setLevel(0.99);
  ASSERT_TRUE(waitForLevel(99));
  backlight->setLevel(0.8);
  ASSERT_TRUE(waitForLevel(80));
  backlight.reset();
  ASSERT_TRUE(waitForLevel(30));

  makeBacklight(100, 30, Duration::zero());
  backlight->setLevel(0.99);
  ASSERT_TRUE(waitForLevel(99));
  login.set(kScreen, 60);
  backlight->setLevel(0.8);
  ASSERT_TRUE(waitForLevel(80));
  backlight.reset();
  EXPECT_TRUE(waitForLevel(60));
}

TEST_F(LinuxBacklights, ALevelUnderWayIsTakenBackToo) {
  login.isHanging = true;
  login.appear();
  makeBacklight(100, 30);
  backlight->setLevel(0.99);
  ASSERT_TRUE(waitForCalls(login, 1));
  backlight.reset();
  ASSERT_TRUE(waitForCalls(login, 2));
  EXPECT_EQ(login.calls.back(), "SetBrightness(backlight, panel, 30)");
}

TEST_F(LinuxBacklights, ALevelThatIsGivenBackAtTheLastMomentArrives) {
  login.appear();
  makeBacklight(100, 30);
  backlight->setLevel(0.99);
  ASSERT_TRUE(waitForLevel(99));
  backlight->setLevel(0.3);
  backlight.reset();
  EXPECT_TRUE(waitForLevel(30));
}

TEST_F(LinuxBacklights, ALevelThatTheUserHasSetSinceStays) {
  login.appear();
  makeBacklight(100, 30);
  backlight->setLevel(0.99);
  ASSERT_TRUE(waitForLevel(99));
  settle();
  login.set(kScreen, 60);
  backlight.reset();
  // The daemon has heard everything that came before this.
  LinuxBacklight other(loop, buses.system, *findBacklight(login.lights()));
  other.setLevel(0.7);
  ASSERT_TRUE(waitForLevel(70));
  EXPECT_EQ(login.calls.size(), 2U);
}

// Nobody writes: there is no bus at that address.
class UnheardBacklights : public testing::Test {
 protected:
  void add(const char* most, const char* level) {
    folder.write("backlight/panel/max_brightness", most);
    folder.write("backlight/panel/brightness", level);
  }
  LinuxBacklight make() { return {loop, nobody, *findBacklight(folder.path())}; }

  TemporaryFolder folder;
  NoDescriptors none;
  VirtualRunLoop loop;
  Bus nobody{loop, none, "unix:path="};
};

TEST_F(UnheardBacklights, ARampEndsOnALightOfFewStepsThatNobodySets) {
  add("3", "3");
  LinuxBacklight backlight = make();
  int steps = 0;
  while (backlight.level() > 0.4 && steps < 1000) {
    backlight.setLevel(backlight.level() - 0.01);
    loop.runFor(milliseconds(10));
    ++steps;
  }
  EXPECT_EQ(steps, 60);
  EXPECT_GT(backlight.counts().failures, 0U);
}

TEST_F(UnheardBacklights, WhatWasSetCountsForTwoSecondsAndThenTheLight) {
  add("200", "50");
  LinuxBacklight backlight = make();
  backlight.setLevel(0.9);
  loop.runFor(milliseconds(1999));
  EXPECT_DOUBLE_EQ(backlight.level(), 0.9);
  loop.runFor(milliseconds(1));
  EXPECT_DOUBLE_EQ(backlight.level(), 0.25);
  add("200", "garbage");
  EXPECT_DOUBLE_EQ(backlight.level(), 0.9);
}

TEST_F(UnheardBacklights, TriesEndAndNothingIsLeftToWakeFor) {
  add("200", "50");
  LinuxBacklight backlight = make();
  backlight.setLevel(0.9);
  ASSERT_TRUE(loop.runFor(milliseconds(60'000)));
  EXPECT_EQ(backlight.counts().failures, 5U);
  const auto turns = loop.turns();
  ASSERT_TRUE(loop.runFor(milliseconds(600'000)));
  EXPECT_EQ(loop.turns(), turns);
}

}  // namespace
}  // namespace halvora
