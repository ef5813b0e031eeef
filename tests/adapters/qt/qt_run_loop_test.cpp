// SPDX-License-Identifier: Apache-2.0
// Real time passes in these tests, but none of them depends on how much.
#include "adapters/qt/qt_run_loop.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/faces/qt/event_wait.h"

namespace halvora {
namespace {

struct QtRunLoopTest : testing::Test {
  // Runs Qt's event loop until `last` has run.
  void runTo(TimerId last) {
    letQtWorkUntil([&] { return !loop.isPending(last); });
  }
  Task note(char name) {
    return [this, name] { ran += name; };
  }

  QtRunLoop loop;
  std::string ran;
};

TEST_F(QtRunLoopTest, SoonRunsInOrderButNotAtOnce) {
  loop.soon(note('a'));
  loop.soon(note('b'));
  const TimerId last = loop.soon(note('c'));
  EXPECT_EQ(ran, "");
  runTo(last);
  EXPECT_EQ(ran, "abc");
}

TEST_F(QtRunLoopTest, EqualDelaysRunInTheOrderOfScheduling) {
  TimerId last = 0;
  for (char name = 'a'; name <= 'f'; ++name) last = loop.after(milliseconds(5), note(name));
  runTo(last);
  EXPECT_EQ(ran, "abcdef");
}

TEST_F(QtRunLoopTest, WhatATurnThrowsNeverReachesQt) {
  loop.soon([] { throw std::bad_alloc(); });
  loop.post([] { throw std::bad_alloc(); });
  int runs = 0;
  const TimerId repeating = loop.every(milliseconds(1), [&runs] {
    if (++runs == 1) throw std::bad_alloc();
  });
  while (runs < 3) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  loop.cancel(repeating);
  EXPECT_EQ(loop.failures(), 3U);
}

TEST_F(QtRunLoopTest, ATimerIsNeverEarly) {
  const Duration due = loop.now() + milliseconds(20);
  Duration seen{};
  runTo(loop.after(milliseconds(20), [&] { seen = loop.now(); }));
  EXPECT_GE(seen, due);
}

TEST_F(QtRunLoopTest, TimeAdvancesForATimerWithoutDelay) {
  const Duration begin = loop.now();
  Duration seen{};
  runTo(loop.after(Duration::zero(), [&] { seen = loop.now(); }));
  EXPECT_GE(seen, begin + RunLoop::kShortestDelay);
}

TEST_F(QtRunLoopTest, AnEarlierTimerIsNotHeldUpByALaterOne) {
  const TimerId late = loop.after(std::chrono::hours(10'000), note('z'));
  runTo(loop.after(milliseconds(1), note('a')));
  EXPECT_EQ(ran, "a");
  EXPECT_TRUE(loop.isPending(late));
}

TEST_F(QtRunLoopTest, ACancelledTimerDoesNotRun) {
  const TimerId timer = loop.after(milliseconds(1), note('a'));
  loop.cancel(timer);
  runTo(loop.after(milliseconds(5), note('b')));
  EXPECT_EQ(ran, "b");
}

TEST_F(QtRunLoopTest, ARepeatingTimerIsNeverAheadOfItsMultiples) {
  const Duration begin = loop.now();
  std::vector<Duration> seen;
  TimerId timer = 0;
  timer = loop.every(milliseconds(2), [&] {
    seen.push_back(loop.now());
    if (seen.size() == 5) loop.cancel(timer);
  });
  runTo(timer);
  ASSERT_EQ(seen.size(), 5U);
  for (std::size_t at = 0; at < seen.size(); ++at) {
    EXPECT_GE(seen[at], begin + milliseconds(2) * static_cast<int>(at + 1));
  }
}

TEST_F(QtRunLoopTest, WhatATurnSchedulesSoonRunsBehindWhatIsDue) {
  TimerId last = 0;
  loop.soon([&] {
    ran += 'a';
    last = loop.soon(note('c'));
  });
  runTo(loop.soon(note('b')));
  runTo(last);
  EXPECT_EQ(ran, "abc");
}

TEST_F(QtRunLoopTest, PostsOfOtherThreadsKeepTheirOrder) {
  constexpr int kPosts = 1000;
  std::vector<int> seen;
  std::thread::id seenOn;
  std::thread poster([&] {
    for (int post = 0; post < kPosts; ++post) {
      loop.post([&seen, &seenOn, post] {
        seen.push_back(post);
        seenOn = std::this_thread::get_id();
      });
    }
  });
  letQtWorkUntil([&] { return seen.size() >= kPosts; });
  poster.join();
  for (int post = 0; post < kPosts; ++post) EXPECT_EQ(seen[static_cast<std::size_t>(post)], post);
  EXPECT_EQ(seenOn, std::this_thread::get_id());
}

}  // namespace
}  // namespace halvora
