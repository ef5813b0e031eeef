// SPDX-License-Identifier: Apache-2.0
// Real time passes in these tests, but none of them depends on how much.
#include "adapters/linux/poll_run_loop.h"

#include <array>
#include <atomic>
#include <csignal>
#include <new>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

namespace halvora {
namespace {

struct PollRunLoopTest : testing::Test {
  PollRunLoopTest() { EXPECT_EQ(pipe(ends), 0); }
  ~PollRunLoopTest() override {
    close(ends[0]);
    close(ends[1]);
  }
  bool runTo(TimerId last) {
    return loop.runUntil([&] { return !loop.isPending(last); });
  }
  Task note(char name) {
    return [this, name] { ran += name; };
  }
  void put(char byte) { EXPECT_EQ(write(ends[1], &byte, 1), 1); }
  void take() {
    char byte = 0;
    EXPECT_EQ(read(ends[0], &byte, 1), 1);
    ran += byte;
  }
  WatchId watchPipe() {
    return loop.watch(ends[0], DescriptorEvents::readable, [this] { take(); });
  }

  PollRunLoop loop;
  int ends[2] = {-1, -1};
  std::string ran;
};

TEST_F(PollRunLoopTest, SoonRunsInOrderButNotAtOnce) {
  loop.soon(note('a'));
  const TimerId last = loop.soon(note('b'));
  EXPECT_EQ(ran, "");
  runTo(last);
  EXPECT_EQ(ran, "ab");
}

TEST_F(PollRunLoopTest, EqualDelaysRunInTheOrderOfScheduling) {
  TimerId last = 0;
  for (char name = 'a'; name <= 'f'; ++name) last = loop.after(milliseconds(2), note(name));
  runTo(last);
  EXPECT_EQ(ran, "abcdef");
}

TEST_F(PollRunLoopTest, ATimerIsNeverEarly) {
  const Duration due = loop.now() + milliseconds(5);
  Duration seen{};
  runTo(loop.after(milliseconds(5), [&] { seen = loop.now(); }));
  EXPECT_GE(seen, due);
}

TEST_F(PollRunLoopTest, TimeAdvancesForATimerWithoutDelay) {
  const Duration begin = loop.now();
  Duration seen{};
  runTo(loop.after(Duration::zero(), [&] { seen = loop.now(); }));
  EXPECT_GE(seen, begin + RunLoop::kShortestDelay);
}

TEST_F(PollRunLoopTest, ARepeatingTimerMayCancelItself) {
  Timer timer;
  timer = {loop, loop.every(milliseconds(1), [&] {
             ran += 'x';
             if (ran.size() == 3) timer.invalidate();
           })};
  loop.runUntil([&] { return !timer.isValid(); });
  EXPECT_EQ(ran, "xxx");
}

TEST_F(PollRunLoopTest, ACancelledTimerDoesNotRun) {
  loop.cancel(loop.after(milliseconds(1), note('x')));
  runTo(loop.after(milliseconds(2), note('y')));
  EXPECT_EQ(ran, "y");
}

TEST_F(PollRunLoopTest, SaysWhenItHasWaitedForTooLong) {
  EXPECT_FALSE(loop.runUntil([] { return false; }, milliseconds(1)));
  EXPECT_TRUE(loop.runUntil([] { return true; }, milliseconds(1)));
}

TEST_F(PollRunLoopTest, WaitsForWhatIsSoonerTheTimerOrItsPatience) {
  loop.after(std::chrono::hours(1), note('x'));
  EXPECT_FALSE(loop.runUntil([] { return false; }, milliseconds(1)));
  const TimerId soon = loop.after(milliseconds(1), note('y'));
  EXPECT_TRUE(loop.runUntil([&] { return !loop.isPending(soon); }, std::chrono::hours(1)));
  EXPECT_EQ(ran, "y");
}

TEST_F(PollRunLoopTest, ManyDescriptorsAreWatchedEachWithItsOwnTask) {
  constexpr int kMany = 40;
  std::vector<std::array<int, 2>> pipes(kMany);
  std::vector<WatchId> watches;
  for (int at = 0; at < kMany; ++at) {
    auto& own = pipes[static_cast<std::size_t>(at)];
    ASSERT_EQ(pipe(own.data()), 0);
    watches.push_back(loop.watch(own[0], DescriptorEvents::readable, [this, at, &own] {
      char byte = 0;
      EXPECT_EQ(read(own[0], &byte, 1), 1);
      EXPECT_EQ(byte, static_cast<char>(at));
      ran += byte;
    }));
  }
  // Every third is forgotten; the others stay with what is theirs.
  for (std::size_t at = 0; at < watches.size(); at += 3) loop.forget(watches[at]);
  std::string expected;
  for (int at = 0; at < kMany; ++at) {
    const auto byte = static_cast<char>(at);
    EXPECT_EQ(write(pipes[static_cast<std::size_t>(at)][1], &byte, 1), 1);
    if (at % 3 != 0) expected += byte;
  }
  EXPECT_TRUE(loop.runUntil([&] { return ran.size() == expected.size(); }));
  runTo(loop.after(milliseconds(1), [] {}));
  EXPECT_EQ(ran, expected);
  for (const auto& own : pipes) {
    close(own[0]);
    close(own[1]);
  }
}

TEST_F(PollRunLoopTest, TakesOneDescriptorAndGivesItBack) {
  const int next = dup(ends[0]);
  close(next);
  for (int count = 0; count < 3; ++count) {
    const PollRunLoop other;
    const int within = dup(ends[0]);
    EXPECT_NE(within, next);
    close(within);
  }
  const int after = dup(ends[0]);
  EXPECT_EQ(after, next);
  close(after);
}

TEST_F(PollRunLoopTest, ItsDescriptorMayBeTheFirstOfAll) {
  const int kept = dup(0);
  close(0);
  {
    PollRunLoop other;
    std::thread poster([&] { other.post([this] { ran += 'p'; }); });
    EXPECT_TRUE(other.runUntil([this] { return ran == "p"; }));
    poster.join();
  }
  if (kept >= 0) {
    dup2(kept, 0);
    close(kept);
  }
}

TEST_F(PollRunLoopTest, WithoutADescriptorForItThereIsNone) {
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
  const rlimit none{0, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
  EXPECT_THROW(PollRunLoop(), std::system_error);
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
}

TEST_F(PollRunLoopTest, ADescriptorIsWatchedForAsLongAsThereIsSomethingToRead) {
  watchPipe();
  put('a');
  put('b');
  put('c');
  EXPECT_TRUE(loop.runUntil([&] { return ran == "abc"; }));
}

TEST_F(PollRunLoopTest, ADescriptorMayBeWatchedForWriting) {
  const DescriptorWatch watch(loop, loop.watch(ends[1], DescriptorEvents::writable, note('w')));
  EXPECT_TRUE(loop.runUntil([&] { return ran.size() >= 2; }));
}

TEST_F(PollRunLoopTest, NothingIsSaidOfEventsThatNobodyWatches) {
  const DescriptorWatch watch(loop, loop.watch(ends[1], DescriptorEvents::readable, note('w')));
  runTo(loop.after(milliseconds(1), note('t')));
  EXPECT_EQ(ran, "t");
}

TEST_F(PollRunLoopTest, TheOtherEndsDepartureIsAnEvent) {
  int gone[2];
  ASSERT_EQ(pipe(gone), 0);
  std::optional<DescriptorWatch> watch(std::in_place, loop,
                                       loop.watch(gone[0], DescriptorEvents::readable, note('g')));
  close(gone[1]);
  EXPECT_TRUE(loop.runUntil([&] { return !ran.empty(); }));
  watch.reset();
  close(gone[0]);
}

TEST_F(PollRunLoopTest, AForgottenWatchIsSilent) {
  loop.forget(watchPipe());
  loop.forget(0);
  put('a');
  runTo(loop.after(milliseconds(1), note('t')));
  EXPECT_EQ(ran, "t");
}

TEST_F(PollRunLoopTest, ATaskMayForgetItsOwnWatchAndMakeAnother) {
  DescriptorWatch watch;
  watch = {loop, loop.watch(ends[0], DescriptorEvents::readable, [&] {
             take();
             watch = {loop, watchPipe()};
           })};
  put('a');
  put('b');
  EXPECT_TRUE(loop.runUntil([&] { return ran == "ab"; }));
}

TEST_F(PollRunLoopTest, ATaskMayForgetAWatchThatIsReadyToo) {
  const WatchId other = watchPipe();
  DescriptorWatch first;
  first = {loop, loop.watch(ends[1], DescriptorEvents::writable, [&] {
             ran += 'f';
             loop.forget(other);
             first.end();
           })};
  // Whichever comes first, the other's byte is read at most once.
  put('a');
  EXPECT_TRUE(loop.runUntil([&] { return ran.find('f') != std::string::npos; }));
  runTo(loop.after(milliseconds(1), note('t')));
  EXPECT_TRUE(ran == "aft" || ran == "ft") << ran;
}

TEST_F(PollRunLoopTest, TimersAndDescriptorsTakeTurns) {
  // A descriptor that is always ready does not hold up timers.
  const DescriptorWatch watch(loop, loop.watch(ends[1], DescriptorEvents::writable, [] {}));
  EXPECT_TRUE(runTo(loop.after(milliseconds(1), note('t'))));
  EXPECT_EQ(ran, "t");
}

TEST_F(PollRunLoopTest, WhatATurnThrowsEndsThatTurnAlone) {
  loop.soon([] { throw std::bad_alloc(); });
  loop.post([] { throw std::bad_alloc(); });
  const TimerId last = loop.after(milliseconds(1), note('a'));
  runTo(last);
  EXPECT_EQ(ran, "a");
  bool hasThrown = false;
  const WatchId watch = loop.watch(ends[0], DescriptorEvents::readable, [&] {
    if (!std::exchange(hasThrown, true)) throw std::bad_alloc();
    take();
  });
  put('b');
  EXPECT_TRUE(loop.runUntil([this] { return ran == "ab"; }, milliseconds(30'000)));
  loop.forget(watch);
  EXPECT_EQ(loop.failures(), 3U);
}

TEST_F(PollRunLoopTest, ASignalMakesItAskWhetherItIsDone) {
  static volatile std::sig_atomic_t isInterrupted = 0;
  isInterrupted = 0;
  const auto before = std::signal(SIGUSR1, [](int) { isInterrupted = 1; });
  const pthread_t waiting = pthread_self();
  const DescriptorWatch watch(loop, loop.watch(ends[0], DescriptorEvents::readable, note('w')));
  // Again and again: the first may come before the wait has begun.
  std::atomic<bool> hasEnded = false;
  std::thread sender([&] {
    while (!hasEnded) pthread_kill(waiting, SIGUSR1);
  });
  // Some waits more, each of them cut short.
  int looks = 0;
  EXPECT_TRUE(
      loop.runUntil([&] { return isInterrupted != 0 && ++looks > 5; }, std::chrono::hours(1)));
  EXPECT_EQ(ran, "") << "a signal is nothing to read";
  hasEnded = true;
  sender.join();
  std::signal(SIGUSR1, before);
}

TEST(PollRunLoopThreads, WhatIsPostedRunsInTheOrderOfTheCalls) {
  PollRunLoop loop;
  std::vector<int> ran;
  std::thread other([&] {
    for (int number = 0; number < 1000; ++number) {
      loop.post([&ran, number] { ran.push_back(number); });
    }
  });
  EXPECT_TRUE(loop.runUntil([&] { return ran.size() == 1000; }));
  other.join();
  for (int number = 0; number < 1000; ++number) {
    EXPECT_EQ(ran[static_cast<std::size_t>(number)], number);
  }
}

}  // namespace
}  // namespace halvora
