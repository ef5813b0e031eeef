// SPDX-License-Identifier: Apache-2.0
// The note of what a show has changed, alone and with the lights, and what becomes of both when a
// process is killed.
#include "adapters/linux/services/light_journal.h"

#include <csignal>
#include <cstdlib>
#include <optional>
#include <string>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "adapters/linux/services/linux_backlight.h"
#include "adapters/linux/services/linux_torch.h"
#include "adapters/standard/standard_files.h"
#include "tests/adapters/linux/services/fake_login.h"
#include "tests/adapters/linux/services/services_test.h"

namespace halvora {
namespace {

const SysfsLight kPanel{"backlight", "panel", "/nowhere", 100};
const SysfsLight kLamp{"leds", "white:torch", "/nowhere", 31};

struct LightJournals : testing::Test {
  std::string content() { return readFile(path, 1 << 16).value_or("?"); }

  TemporaryFolder folder;
  std::string path = folder.path() + "/lights";
};

TEST_F(LightJournals, WhatOneProcessNotesTheNextOneReads) {
  {
    LightJournal journal(path);
    EXPECT_EQ(journal.owed(kPanel), std::nullopt);
    journal.note(kPanel, 30);
    journal.note(kLamp, 0);
    EXPECT_EQ(content(), "backlight panel 30\nleds white:torch 0\n");
  }
  LightJournal next(path);
  EXPECT_EQ(next.owed(kPanel), 30U);
  EXPECT_EQ(next.owed(kLamp), 0U);
  next.forget(kPanel);
  EXPECT_EQ(content(), "leds white:torch 0\n");
  next.forget(kLamp);
  EXPECT_EQ(content(), "");
}

TEST_F(LightJournals, OneIsHeldByOneProcessAtATime) {
  LightJournal first(path);
  first.note(kPanel, 30);
  LightJournal second(path);
  EXPECT_EQ(second.owed(kPanel), std::nullopt) << "the first one is alive and will give it back";
  second.note(kPanel, 7);
  EXPECT_EQ(content(), "backlight panel 30\n");
}

TEST_F(LightJournals, WhatDoesNotReadAsItsLinesIsLeftOut) {
  folder.write("lights",
               "backlight panel\nbacklight panel -1\nbacklight panel 3x\npanel 3\n\n 4\n"
               "leds white:torch 99999999999\nbacklight panel 4000000000\nbacklight panel 5");
  const LightJournal journal(path);
  EXPECT_EQ(journal.owed(kPanel), 100U) << "no more than the light has";
  EXPECT_EQ(journal.owed(kLamp), std::nullopt);
}

TEST_F(LightJournals, AFileThatIsTooLongIsNoneOfOurs) {
  folder.write("lights", "backlight panel 30\n" + std::string(5000, 'x'));
  EXPECT_EQ(LightJournal(path).owed(kPanel), std::nullopt);
}

TEST_F(LightJournals, WithoutAFileThereIsNone) {
  LightJournal nowhere("/nowhere/lights");
  nowhere.note(kPanel, 30);
  nowhere.forget(kPanel);
  LightJournal folderItself(folder.path());
  folderItself.note(kPanel, 30);
  folder.write("target", "backlight panel 30\n");
  ASSERT_EQ(symlink((folder.path() + "/target").c_str(), path.c_str()), 0);
  EXPECT_EQ(LightJournal(path).owed(kPanel), std::nullopt) << "a link leads elsewhere";
}

// With the lights.

constexpr const char* kScreen = "backlight/panel";
constexpr const char* kTorch = "leds/white:torch";

struct LightsOfADeadProcess : ServicesTest {
  void SetUp() override {
    ServicesTest::SetUp();
    login.addLight(kScreen, 100, 30);
    login.addLight(kTorch, 31, 0);
    login.appear();
  }
  bool waitForLevels(std::uint32_t screen, std::uint32_t torch) {
    return waitFor(
        [&] { return login.levelOf(kScreen) == screen && login.levelOf(kTorch) == torch; });
  }
  // A process of its own that lights both, says when it has noted it, and then waits to be killed.
  pid_t lightUpElsewhere() {
    const pid_t child = fork();
    if (child != 0) return child;
    PollRunLoop own;
    Buses its{own, own, {bus.address(), bus.address()}};
    LightJournal journal(path);
    LinuxBacklight backlight(own, its.system, *findBacklight(login.lights()), {},
                             LinuxBacklight::kFresh, &journal);
    LinuxTorch torch(own, its.system, findTorchLight(login.lights()), {}, &journal);
    backlight.setLevel(0.99);
    torch.setOn(true);
    own.runUntil([] { return false; }, std::chrono::seconds(120));
    _exit(1);
  }

  FakeLogin login{loop, loop, bus.address()};
  TemporaryFolder folder;
  std::string path = folder.path() + "/lights";
};

TEST_F(LightsOfADeadProcess, AreGivenBackByTheNextStart) {
  const pid_t child = lightUpElsewhere();
  ASSERT_GT(child, 0);
  const bool isLit = waitForLevels(99, 31);
  kill(child, SIGKILL);
  int status = 0;
  waitpid(child, &status, 0);
  ASSERT_TRUE(isLit);
  ASSERT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(login.levelOf(kScreen), 99U) << "nobody has given it back";

  LightJournal journal(path);
  LinuxBacklight backlight(loop, buses.system, *findBacklight(login.lights()), {},
                           LinuxBacklight::kFresh, &journal);
  EXPECT_DOUBLE_EQ(backlight.level(), 0.3);
  LinuxTorch torch(loop, buses.system, findTorchLight(login.lights()), {}, &journal);
  EXPECT_TRUE(waitForLevels(30, 0));
  EXPECT_TRUE(waitFor([&] { return readFile(path, 100) == ""; })) << "it is owed no more";
}

TEST_F(LightsOfADeadProcess, OneThatLivesGivesItsOwnBackAndOwesNothing) {
  LightJournal journal(path);
  {
    LinuxBacklight backlight(loop, buses.system, *findBacklight(login.lights()), {},
                             LinuxBacklight::kFresh, &journal);
    LinuxTorch torch(loop, buses.system, findTorchLight(login.lights()), {}, &journal);
    backlight.setLevel(0.99);
    torch.setOn(true);
    ASSERT_TRUE(waitForLevels(99, 31));
    EXPECT_EQ(journal.owed(*findBacklight(login.lights())), 30U);
    torch.giveBack();
    backlight.giveBack();
    ASSERT_TRUE(waitForLevels(30, 0));
    EXPECT_EQ(readFile(path, 100), "");
    login.set(kScreen, 60);
  }
  settle();
  EXPECT_EQ(login.levelOf(kScreen), 60U) << "what they have set since is theirs";
}

// Nobody writes there, so the debt stays for a later start.
TEST_F(LightsOfADeadProcess, WhatCannotBeGivenBackStaysOwed) {
  folder.write("lights", "backlight panel 20\n");
  login.die();
  LightJournal journal(path);
  LinuxBacklight backlight(loop, buses.system, *findBacklight(login.lights()),
                           {.afterFailure = milliseconds(1)}, LinuxBacklight::kFresh, &journal);
  ASSERT_TRUE(waitFor([&] { return backlight.counts().failures >= 5; }));
  loop.runUntil([] { return false; }, LinuxBacklight::kFresh + milliseconds(500));
  EXPECT_EQ(readFile(path, 100), "backlight panel 20\n");
}

}  // namespace
}  // namespace halvora
