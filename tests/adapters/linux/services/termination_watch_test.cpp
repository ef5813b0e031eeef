// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/services/termination_watch.h"

#include <csignal>
#include <optional>
#include <vector>

#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include "adapters/linux/poll_run_loop.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct TerminationWatches : testing::Test {
  // Whoever starts the tests in the background may have them ignored.
  TerminationWatches() {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) std::signal(signal, SIG_DFL);
  }
  void watch() {
    ended.emplace(loop, [this](int signal) { told.push_back(signal); });
  }
  void turn() {
    EXPECT_TRUE(loop.runUntil([&] { return !told.empty(); }, std::chrono::seconds(30)));
  }
  static bool isUsual(int signal) {
    struct sigaction present {};
    sigaction(signal, nullptr, &present);
    return present.sa_handler == SIG_DFL;
  }

  PollRunLoop loop;
  std::vector<int> told;
  std::optional<TerminationWatch> ended;
};

TEST_F(TerminationWatches, TellsOfASignalInATurnOfItsOwn) {
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    told.clear();
    watch();
    std::raise(signal);
    EXPECT_THAT(told, IsEmpty());
    turn();
    EXPECT_THAT(told, ElementsAre(signal));
    EXPECT_TRUE(isUsual(signal)) << "the next one ends the process";
    ended.reset();
  }
}

TEST_F(TerminationWatches, LeavesNoDescriptorOpen) {
  const auto lowestFree = [] {
    const int descriptor = dup(STDERR_FILENO);
    close(descriptor);
    return descriptor;
  };
  const int before = lowestFree();
  watch();
  EXPECT_GT(lowestFree(), before);
  ended.reset();
  EXPECT_EQ(lowestFree(), before);
}

TEST_F(TerminationWatches, LeavesEverythingAsItWas) {
  watch();
  EXPECT_FALSE(isUsual(SIGTERM));
  ended.reset();
  EXPECT_TRUE(isUsual(SIGTERM));
  EXPECT_TRUE(isUsual(SIGINT));
}

TEST_F(TerminationWatches, AHandlerOfTheHostsStays) {
  static volatile std::sig_atomic_t heard = 0;
  std::signal(SIGTERM, [](int) { heard = 1; });
  watch();
  std::raise(SIGTERM);
  EXPECT_EQ(heard, 1);
  ended.reset();
  EXPECT_FALSE(isUsual(SIGTERM));
  std::signal(SIGTERM, SIG_DFL);
  EXPECT_THAT(told, IsEmpty());
}

TEST_F(TerminationWatches, ASecondWatchHearsNothingAndTakesNothingAway) {
  watch();
  std::vector<int> toldSecond;
  {
    const TerminationWatch second(loop, [&](int signal) { toldSecond.push_back(signal); });
  }
  std::raise(SIGINT);
  turn();
  EXPECT_THAT(told, ElementsAre(SIGINT));
  EXPECT_THAT(toldSecond, IsEmpty());
}

TEST_F(TerminationWatches, ItMayBeDestroyedByWhoeverHears) {
  ended.emplace(loop, [this](int signal) {
    ended.reset();
    told.push_back(signal);
  });
  std::raise(SIGTERM);
  turn();
  EXPECT_FALSE(ended.has_value());
}

// Whoever does not answer is ended by the second one, as without a watch.
TEST_F(TerminationWatches, TheSecondSignalEndsTheProcess) {
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    PollRunLoop own;
    const TerminationWatch watch(own, [](int) {});
    std::raise(SIGTERM);
    own.runUntil([] { return false; }, milliseconds(1));
    std::raise(SIGTERM);
    _exit(0);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(WTERMSIG(status), SIGTERM);
}

}  // namespace
}  // namespace halvora
