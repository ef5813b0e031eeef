// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/services/idle_inhibitor.h"

#include <memory>
#include <string>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include "tests/adapters/linux/bus/stranger.h"
#include "tests/adapters/linux/services/services_test.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class IdleInhibitors : public ServicesTest {
 protected:
  IdleInhibitors() {
    settings.firstPause = milliseconds(1);
    saver.answers["org.freedesktop.ScreenSaver.Inhibit"] = [](sd_bus_message* call) {
      return sd_bus_reply_method_return(call, "u", 4711);
    };
    saver.answers["org.freedesktop.ScreenSaver.UnInhibit"] = agree;
    portal.answers["org.freedesktop.portal.Inhibit.Inhibit"] = [](sd_bus_message* call) {
      return sd_bus_reply_method_return(call, "o", "/org/freedesktop/portal/desktop/request/1");
    };
    portal.answers["org.freedesktop.portal.Request.Close"] = agree;
    login.answers["org.freedesktop.login1.Manager.Inhibit"] = [this](sd_bus_message* call) {
      int ends[2];
      if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) return -1;
      closeGranted();
      granted = ends[0];
      const int result = sd_bus_reply_method_return(call, "h", ends[1]);
      close(ends[1]);
      return result;
    };
  }
  ~IdleInhibitors() override { closeGranted(); }

  void closeGranted() {
    if (granted >= 0) close(granted);
    granted = -1;
  }
  /// The other end of the descriptor that was granted reads as ended when all of it are closed.
  bool isGrantClosed() const {
    char byte = 0;
    return read(granted, &byte, 1) == 0;
  }
  void makeInhibitor() {
    inhibitor = std::make_unique<IdleInhibitor>(loop, buses, IdleReason{"The host", "Light show"},
                                                settings);
  }
  void inhibit() {
    makeInhibitor();
    inhibitor->setInhibited(true);
  }
  bool waitForHolder(std::optional<IdleHolder> holder) {
    return waitFor([&] { return inhibitor->holder() == holder; });
  }

  FakeService saver{loop, loop, bus.address(), "org.freedesktop.ScreenSaver"};
  FakeService portal{loop, loop, bus.address(), "org.freedesktop.portal.Desktop"};
  FakeService login{loop, loop, bus.address(), "org.freedesktop.login1"};
  IdleSettings settings;
  int granted = -1;
  std::unique_ptr<IdleInhibitor> inhibitor;
};

TEST_F(IdleInhibitors, TheScreenSaverIsAskedFirstAndReleasedByItsCookie) {
  saver.appear();
  portal.appear();
  login.appear();
  inhibit();
  ASSERT_TRUE(waitForHolder(IdleHolder::screenSaver));
  inhibitor->setInhibited(false);
  EXPECT_EQ(inhibitor->holder(), std::nullopt);
  ASSERT_TRUE(waitForCalls(saver, 2));
  EXPECT_THAT(saver.calls, ElementsAre("Inhibit(The host, Light show)", "UnInhibit(4711)"));
  EXPECT_THAT(portal.calls, IsEmpty());
  EXPECT_THAT(login.calls, IsEmpty());
}

TEST_F(IdleInhibitors, ThePortalIsAskedWhereThereIsNoScreenSaver) {
  portal.appear();
  login.appear();
  inhibit();
  ASSERT_TRUE(waitForHolder(IdleHolder::portal));
  inhibitor->setInhibited(false);
  ASSERT_TRUE(waitForCalls(portal, 2));
  EXPECT_THAT(portal.calls, ElementsAre("Inhibit(, 8, [[reason, [Light show]]])", "Close()"));
  EXPECT_THAT(login.calls, IsEmpty());
}

TEST_F(IdleInhibitors, TheLoginDaemonIsAskedLastAndReleasedByItsDescriptor) {
  saver.answers.clear();
  saver.appear();
  login.appear();
  inhibit();
  ASSERT_TRUE(waitForHolder(IdleHolder::login));
  EXPECT_THAT(login.calls, ElementsAre("Inhibit(idle, The host, Light show, block)"));
  EXPECT_FALSE(isGrantClosed());
  inhibitor->setInhibited(false);
  settle();
  EXPECT_TRUE(isGrantClosed());
}

TEST_F(IdleInhibitors, WhoeverComesLaterIsAskedThen) {
  inhibit();
  // Nobody is there yet; all have been asked once.
  settle();
  EXPECT_EQ(inhibitor->holder(), std::nullopt);
  portal.appear();
  EXPECT_TRUE(waitForHolder(IdleHolder::portal));
}

TEST_F(IdleInhibitors, NothingIsAskedBeforeItIsWanted) {
  makeInhibitor();
  inhibitor->setInhibited(false);
  saver.appear();
  inhibitor->setInhibited(true);
  ASSERT_TRUE(waitForHolder(IdleHolder::screenSaver));
  EXPECT_EQ(saver.calls.size(), 1U);
}

TEST_F(IdleInhibitors, AServiceThatIsRestartedIsAskedAgain) {
  saver.appear();
  inhibit();
  ASSERT_TRUE(waitForHolder(IdleHolder::screenSaver));
  saver.die();
  ASSERT_TRUE(waitForHolder(std::nullopt));
  saver.appear();
  ASSERT_TRUE(waitForHolder(IdleHolder::screenSaver));
  EXPECT_EQ(saver.calls.size(), 2U);
}

TEST_F(IdleInhibitors, AnotherTakesOverWhenTheHolderGoes) {
  saver.appear();
  login.appear();
  inhibit();
  ASSERT_TRUE(waitForHolder(IdleHolder::screenSaver));
  saver.die();
  EXPECT_TRUE(waitForHolder(IdleHolder::login));
}

TEST_F(IdleInhibitors, AServiceThatHangsIsPassedOverAndItsLateGrantGivenBack) {
  settings.patience = milliseconds(1);
  saver.isHanging = true;
  saver.appear();
  login.appear();
  inhibit();
  ASSERT_TRUE(waitForHolder(IdleHolder::login));
  ASSERT_TRUE(waitForCalls(saver, 1));
  saver.isHanging = false;
  saver.answerKept();
  ASSERT_TRUE(waitForCalls(saver, 2));
  EXPECT_EQ(saver.calls.back(), "UnInhibit(4711)");
  EXPECT_EQ(inhibitor->holder(), IdleHolder::login);
}

TEST_F(IdleInhibitors, AServiceThatHangsAloneHoldsWhenItAnswers) {
  settings.patience = milliseconds(1);
  portal.isHanging = true;
  portal.appear();
  inhibit();
  ASSERT_TRUE(waitForCalls(portal, 1));
  settle();
  portal.isHanging = false;
  portal.answerKept();
  EXPECT_TRUE(waitForHolder(IdleHolder::portal));
}

TEST_F(IdleInhibitors, AGrantThatComesAfterTheEndIsGivenBack) {
  portal.isHanging = true;
  portal.appear();
  inhibit();
  ASSERT_TRUE(waitForCalls(portal, 1));
  inhibitor->setInhibited(false);
  portal.isHanging = false;
  portal.answerKept();
  ASSERT_TRUE(waitForCalls(portal, 2));
  EXPECT_EQ(portal.calls.back(), "Close()");
  EXPECT_EQ(inhibitor->holder(), std::nullopt);
}

TEST_F(IdleInhibitors, SwitchingOverAndOverAsksAHangingServiceOnce) {
  saver.isHanging = true;
  saver.appear();
  inhibit();
  ASSERT_TRUE(waitForCalls(saver, 1));
  for (int change = 0; change < 100; ++change) inhibitor->setInhibited(change % 2 != 0);
  saver.isHanging = false;
  saver.answerKept();
  ASSERT_TRUE(waitForHolder(IdleHolder::screenSaver));
  EXPECT_EQ(saver.calls.size(), 1U);
}

TEST_F(IdleInhibitors, AnAnswerOfAnotherKindIsNoGrant) {
  saver.answers["org.freedesktop.ScreenSaver.Inhibit"] = [](sd_bus_message* call) {
    return sd_bus_reply_method_return(call, "s", "4711");
  };
  portal.answers["org.freedesktop.portal.Inhibit.Inhibit"] = [](sd_bus_message* call) {
    return sd_bus_reply_method_return(call, "o", ("/" + std::string(256, 'a')).c_str());
  };
  saver.appear();
  portal.appear();
  login.appear();
  inhibit();
  EXPECT_TRUE(waitForHolder(IdleHolder::login));
  EXPECT_EQ(saver.calls.size(), 1U);
  EXPECT_EQ(portal.calls.size(), 1U);
}

TEST_F(IdleInhibitors, AStrangerWhoSaysThatTheHolderIsGoneIsNotBelieved) {
  saver.appear();
  login.appear();
  inhibit();
  ASSERT_TRUE(waitForHolder(IdleHolder::screenSaver));
  Stranger stranger(loop, bus.address());
  stranger.sayGone(saver.caller, "org.freedesktop.ScreenSaver");
  ASSERT_TRUE(stranger.isThrough(saver.caller));
  settle();
  EXPECT_EQ(inhibitor->holder(), IdleHolder::screenSaver);
  EXPECT_EQ(saver.calls.size(), 1U);
  EXPECT_THAT(login.calls, IsEmpty());
}

TEST_F(IdleInhibitors, AnswersOfAnyShapeAreNoGrants) {
  const FakeService::Answer kAnswers[] = {
      agree,
      [](sd_bus_message* call) { return sd_bus_reply_method_return(call, "v", "u", 1); },
      [](sd_bus_message* call) { return sd_bus_reply_method_return(call, "au", 2, 1, 2); },
      [](sd_bus_message* call) {
        const std::string text(100'000, 'x');
        return sd_bus_reply_method_return(call, "ss", text.c_str(), "");
      },
  };
  saver.appear();
  portal.appear();
  login.appear();
  std::size_t asked = 0;
  for (const FakeService::Answer& answer : kAnswers) {
    saver.answers["org.freedesktop.ScreenSaver.Inhibit"] = answer;
    portal.answers["org.freedesktop.portal.Inhibit.Inhibit"] = answer;
    login.answers["org.freedesktop.login1.Manager.Inhibit"] = answer;
    inhibit();
    ASSERT_TRUE(waitForCalls(login, ++asked));
    settle();
    EXPECT_EQ(inhibitor->holder(), std::nullopt);
  }
}

TEST_F(IdleInhibitors, ABusThatIsLostIsFoundAgain) {
  saver.appear();
  inhibit();
  ASSERT_TRUE(waitForHolder(IdleHolder::screenSaver));
  bus.stop();
  ASSERT_TRUE(waitForHolder(std::nullopt));
  ASSERT_TRUE(bus.start());
  saver.appear();
  EXPECT_TRUE(waitForHolder(IdleHolder::screenSaver));
}

TEST_F(IdleInhibitors, WithoutASessionTheLoginDaemonIsAsked) {
  login.appear();
  Buses half{loop, loop, {bus.address(), "unix:path=" + bus.address()}};
  inhibitor =
      std::make_unique<IdleInhibitor>(loop, half, IdleReason{"The host", "Light show"}, settings);
  inhibitor->setInhibited(true);
  EXPECT_TRUE(waitForHolder(IdleHolder::login));
  inhibitor.reset();
}

TEST_F(IdleInhibitors, AnInhibitorThatGoesLeavesNothingBehind) {
  login.appear();
  inhibit();
  ASSERT_TRUE(waitForHolder(IdleHolder::login));
  inhibitor.reset();
  settle();
  EXPECT_TRUE(isGrantClosed());
}

}  // namespace
}  // namespace halvora
