// SPDX-License-Identifier: Apache-2.0
#include "adapters/virtual/virtual_run_loop.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace halvora {
namespace {

using Names = std::vector<std::string>;

class LoopTest : public testing::Test {
 protected:
  Task noting(const char* name) {
    return [this, name] { note(name); };
  }
  void note(const std::string& name) {
    names_.push_back(std::to_string(loop_.now().count() / 1000) + " " + name);
  }

  VirtualRunLoop loop_;
  Names names_;
};

TEST_F(LoopTest, BeginsAt0AndStandsAtTheEndItRanTo) {
  EXPECT_EQ(loop_.now(), Duration::zero());
  EXPECT_TRUE(loop_.runUntil(milliseconds(70)));
  EXPECT_EQ(loop_.now(), milliseconds(70));
  EXPECT_TRUE(loop_.runFor(milliseconds(5)));
  EXPECT_EQ(loop_.now(), milliseconds(75));
  EXPECT_TRUE(loop_.runUntil(milliseconds(10)));
  EXPECT_EQ(loop_.now(), milliseconds(75));
}

TEST_F(LoopTest, RunsInOrderOfTimeNotOfScheduling) {
  loop_.after(milliseconds(30), noting("c"));
  loop_.after(milliseconds(10), noting("a"));
  loop_.after(milliseconds(20), noting("b"));
  loop_.runUntil(milliseconds(30));
  EXPECT_EQ(names_, (Names{"10 a", "20 b", "30 c"}));
}

TEST_F(LoopTest, TurnsDueAtTheEndStillRunAndLaterOnesWait) {
  loop_.after(milliseconds(10), noting("due"));
  loop_.after(milliseconds(10) + Duration(1), noting("later"));
  loop_.runUntil(milliseconds(10));
  EXPECT_EQ(names_, Names{"10 due"});
  EXPECT_EQ(loop_.turns(), 1U);
}

TEST_F(LoopTest, AnActFromWithoutComesBeforeWhatIsDueAtItsTime) {
  loop_.after(milliseconds(10), noting("before"));
  loop_.after(milliseconds(20), noting("at"));
  EXPECT_TRUE(loop_.actAt(milliseconds(20), [this] { note("act"); }));
  EXPECT_EQ(names_, (Names{"10 before", "20 act"}));
  EXPECT_EQ(loop_.turns(), 2U);
  loop_.runUntil(milliseconds(20));
  EXPECT_EQ(names_.back(), "20 at");
}

TEST_F(LoopTest, AnActFromWithoutInThePastIsNow) {
  loop_.runUntil(milliseconds(30));
  EXPECT_TRUE(loop_.actAt(milliseconds(20), [this] { note("act"); }));
  EXPECT_EQ(names_, Names{"30 act"});
}

TEST_F(LoopTest, WhatAnActGivesToTheBackgroundRunsWhenItEnds) {
  EXPECT_TRUE(loop_.actAt(milliseconds(5), [this] {
    loop_.runInBackground(noting("job"));
    note("act");
  }));
  EXPECT_EQ(names_, (Names{"5 act", "5 job"}));
}

TEST_F(LoopTest, AnActAfterAnInstantThatNeverEndsSaysSo) {
  std::function<void()> again = [&] { loop_.soon([&] { again(); }); };
  again();
  EXPECT_FALSE(loop_.actAt(milliseconds(5), [this] { note("act"); }));
  EXPECT_EQ(names_, Names{});
}

TEST_F(LoopTest, ARepetitionIsExactAndDoesNotDrift) {
  std::vector<Duration> times;
  loop_.every(Duration(33'333), [&] { times.push_back(loop_.now()); });
  loop_.runUntil(std::chrono::hours(1));
  ASSERT_EQ(times.size(), 3'600'000'000U / 33'333U);
  for (std::size_t at = 0; at < times.size(); ++at) {
    ASSERT_EQ(times[at], (static_cast<int>(at) + 1) * Duration(33'333));
  }
}

TEST_F(LoopTest, AChainOfPausesIsExact) {
  loop_.after(fromSeconds(0.05), [this] {
    loop_.after(fromSeconds(0.05), [this] { loop_.after(fromSeconds(0.05), noting("third")); });
  });
  loop_.runUntil(milliseconds(150));
  EXPECT_EQ(names_, Names{"150 third"});
}

TEST_F(LoopTest, AtOneInstantTheOrderIsThatOfScheduling) {
  loop_.after(milliseconds(10), [this] { loop_.after(milliseconds(10), noting("third")); });
  loop_.after(milliseconds(20), noting("first"));
  loop_.after(milliseconds(20), noting("second"));
  loop_.runUntil(milliseconds(20));
  EXPECT_EQ(names_, (Names{"20 first", "20 second", "20 third"}));
}

TEST_F(LoopTest, ARepeatingTimerCountsAsScheduledWhenItLastFired) {
  loop_.every(milliseconds(10), noting("repeating"));
  loop_.after(milliseconds(20), noting("before"));
  loop_.runUntil(milliseconds(10));
  loop_.after(milliseconds(10), noting("after"));
  loop_.runUntil(milliseconds(20));
  EXPECT_EQ(names_, (Names{"10 repeating", "20 before", "20 repeating", "20 after"}));
}

TEST_F(LoopTest, ARepeatingTimersNextTurnComesBeforeWhatItsTaskSchedulesForThen) {
  loop_.every(milliseconds(10), [this] {
    note("repeating");
    if (loop_.now() == milliseconds(10)) loop_.after(milliseconds(10), noting("of its task"));
  });
  loop_.runUntil(milliseconds(20));
  EXPECT_EQ(names_, (Names{"10 repeating", "20 repeating", "20 of its task"}));
}

TEST_F(LoopTest, ActsFromOutsideRunFirstInTheirOwnOrder) {
  loop_.after(milliseconds(10), noting("own"));
  loop_.actFromOutside(milliseconds(10), 2, noting("line 2"));
  loop_.actFromOutside(milliseconds(10), 1, noting("line 1"));
  loop_.runUntil(milliseconds(10));
  EXPECT_EQ(names_, (Names{"10 line 1", "10 line 2", "10 own"}));
}

TEST_F(LoopTest, AnActFromOutsideNeverComesBehindThePhonesOwnTurns) {
  loop_.after(milliseconds(10), noting("own"));
  loop_.actFromOutside(milliseconds(10), UINT64_MAX, noting("act"));
  loop_.runUntil(milliseconds(10));
  EXPECT_EQ(names_, (Names{"10 act", "10 own"}));
}

TEST_F(LoopTest, AnActInThePastIsNow) {
  loop_.runUntil(milliseconds(50));
  loop_.soon(noting("own"));
  loop_.actFromOutside(milliseconds(10), 1, noting("act"));
  loop_.runFor(Duration::zero());
  EXPECT_EQ(names_, (Names{"50 act", "50 own"}));
}

TEST_F(LoopTest, WhatAnActSchedulesRunsBehindTheLaterActs) {
  loop_.actFromOutside(milliseconds(10), 1, [this] { loop_.soon(noting("soon")); });
  loop_.actFromOutside(milliseconds(10), 2, noting("act"));
  loop_.runUntil(milliseconds(10));
  EXPECT_EQ(names_, (Names{"10 act", "10 soon"}));
}

TEST_F(LoopTest, ATimerOf0SecondsOrLessIsDueATenthOfAMillisecondLater) {
  std::vector<Duration> times;
  for (const Duration delay : {Duration::zero(), milliseconds(-5), Duration(-1)}) {
    loop_.after(delay, [&] { times.push_back(loop_.now()); });
  }
  loop_.runUntil(Duration(99));
  EXPECT_TRUE(times.empty());
  loop_.runUntil(Duration(100));
  EXPECT_EQ(times, std::vector<Duration>(3, Duration(100)));
}

TEST_F(LoopTest, AShortDelayAbove0IsNotLengthened) {
  std::vector<Duration> times;
  loop_.after(Duration(40), [&] { times.push_back(loop_.now()); });
  loop_.runUntil(milliseconds(1));
  EXPECT_EQ(times, std::vector<Duration>{Duration(40)});
}

TEST_F(LoopTest, ARepetitionOf0SecondsAdvances) {
  int fired = 0;
  loop_.every(Duration::zero(), [&] { ++fired; });
  EXPECT_TRUE(loop_.runUntil(milliseconds(1)));
  EXPECT_EQ(fired, 10);
}

TEST_F(LoopTest, SoonIsATurnOfItsOwnBehindWhatIsDue) {
  loop_.after(milliseconds(10), [this] {
    loop_.soon(noting("soon"));
    note("first");
  });
  loop_.after(milliseconds(10), noting("second"));
  loop_.runUntil(milliseconds(10));
  EXPECT_EQ(names_, (Names{"10 first", "10 second", "10 soon"}));
  EXPECT_EQ(loop_.turns(), 3U);
}

TEST_F(LoopTest, PostedBlocksKeepTheirOrder) {
  loop_.post(noting("a"));
  loop_.soon(noting("b"));
  loop_.post(noting("c"));
  loop_.runUntil(Duration::zero());
  EXPECT_EQ(names_, (Names{"0 a", "0 b", "0 c"}));
}

TEST_F(LoopTest, ACancelledTimerDoesNotFire) {
  const TimerId timer = loop_.after(milliseconds(10), noting("never"));
  EXPECT_TRUE(loop_.isPending(timer));
  loop_.cancel(timer);
  EXPECT_FALSE(loop_.isPending(timer));
  loop_.runUntil(milliseconds(100));
  EXPECT_EQ(names_, Names{});
  EXPECT_EQ(loop_.turns(), 0U);
}

TEST_F(LoopTest, CancellingNothingIsHarmless) {
  const TimerId timer = loop_.after(milliseconds(1), noting("once"));
  loop_.runUntil(milliseconds(1));
  const TimerId next = loop_.after(milliseconds(1), noting("twice"));
  EXPECT_NE(timer, next);
  loop_.cancel(timer);
  loop_.cancel(timer);
  loop_.cancel(0);
  loop_.cancel(0xFFFF'FFFF'FFFF'FFFF);
  EXPECT_FALSE(loop_.isPending(0));
  EXPECT_TRUE(loop_.isPending(next));
  loop_.runUntil(milliseconds(2));
  EXPECT_EQ(names_, (Names{"1 once", "2 twice"}));
}

TEST_F(LoopTest, ATurnMayCancelAnotherOfTheSameInstant) {
  TimerId second = 0;
  loop_.after(milliseconds(10), [&] { loop_.cancel(second); });
  second = loop_.after(milliseconds(10), noting("never"));
  loop_.runUntil(milliseconds(100));
  EXPECT_EQ(names_, Names{});
}

TEST_F(LoopTest, ATimerIsNoLongerPendingInItsOwnTurn) {
  TimerId once = 0;
  TimerId repeating = 0;
  std::vector<bool> pending;
  once = loop_.after(milliseconds(10), [&] { pending.push_back(loop_.isPending(once)); });
  repeating = loop_.every(milliseconds(20), [&] { pending.push_back(loop_.isPending(repeating)); });
  loop_.runUntil(milliseconds(20));
  EXPECT_EQ(pending, (std::vector<bool>{false, true}));
}

TEST_F(LoopTest, ARepeatingTimerMayCancelItselfAndBeReplaced) {
  TimerId timer = 0;
  int fired = 0;
  timer = loop_.every(milliseconds(10), [&] {
    ++fired;
    loop_.cancel(timer);
    loop_.after(milliseconds(5), noting("instead"));
  });
  loop_.runUntil(milliseconds(100));
  EXPECT_EQ(fired, 1);
  EXPECT_EQ(names_, Names{"15 instead"});
}

TEST_F(LoopTest, ARepeatingTimerKeepsItsTasksState) {
  std::vector<int> counts;
  loop_.every(milliseconds(10), [&counts, count = 0]() mutable { counts.push_back(++count); });
  loop_.runUntil(milliseconds(30));
  EXPECT_EQ(counts, (std::vector<int>{1, 2, 3}));
}

TEST_F(LoopTest, ATaskMayScheduleManyOthersWhileItRuns) {
  int fired = 0;
  loop_.every(milliseconds(10), [&] {
    for (int count = 0; count < 500; ++count) loop_.after(milliseconds(1), [&] { ++fired; });
  });
  loop_.runUntil(milliseconds(21));
  EXPECT_EQ(fired, 1000);
}

TEST_F(LoopTest, ATaskIsDestroyedAfterItsTurnOrItsCancellation) {
  const auto token = std::make_shared<int>();
  loop_.after(milliseconds(10), [token] {});
  const TimerId cancelled = loop_.after(milliseconds(20), [token] {});
  EXPECT_EQ(token.use_count(), 3);
  loop_.cancel(cancelled);
  EXPECT_EQ(token.use_count(), 2);
  loop_.runUntil(milliseconds(10));
  EXPECT_EQ(token.use_count(), 1);
}

TEST_F(LoopTest, ThousandsOfCancelledTimersAreForgottenAndTheOthersRunInOrder) {
  std::vector<TimerId> cancelled;
  std::vector<int> fired;
  for (int count = 0; count < 20'000; ++count) {
    if (count % 20 == 0)
      loop_.after(milliseconds(count), [&fired, count] { fired.push_back(count); });
    cancelled.push_back(loop_.after(milliseconds(count), [&fired] { fired.push_back(-1); }));
    if (count % 3 == 0) {
      loop_.cancel(cancelled.back());
      cancelled.pop_back();
    }
  }
  for (const TimerId timer : cancelled) loop_.cancel(timer);
  EXPECT_TRUE(loop_.runUntil(milliseconds(20'000)));
  ASSERT_EQ(fired.size(), 1000U);
  for (std::size_t at = 0; at < fired.size(); ++at) ASSERT_EQ(fired[at], static_cast<int>(at) * 20);
  EXPECT_EQ(loop_.turns(), 1000U);
}

TEST_F(LoopTest, SchedulingAndCancellingForeverBetweenTurnsStaysCorrect) {
  TimerId timer = 0;
  int turns = 0;
  loop_.every(milliseconds(1), [&] {
    loop_.cancel(timer);
    timer = loop_.after(milliseconds(500), noting("never"));
    ++turns;
  });
  EXPECT_TRUE(loop_.runUntil(milliseconds(10'000)));
  EXPECT_EQ(turns, 10'000);
  EXPECT_EQ(names_, Names{});
}

TEST_F(LoopTest, GivesUpAtAnInstantThatNeverEnds) {
  struct Endless {
    VirtualRunLoop& loop;
    void operator()() const { loop.soon(*this); }
  };
  loop_.soon(Endless{loop_});
  EXPECT_FALSE(loop_.runUntil(milliseconds(10)));
  EXPECT_EQ(loop_.turns(), VirtualRunLoop::kMostTurnsAtOneInstant);
  EXPECT_EQ(loop_.now(), Duration::zero());
}

TEST_F(LoopTest, TurnsAtDifferentInstantsDoNotAddUp) {
  struct Chain {
    VirtualRunLoop& loop;
    int left;
    void operator()() const {
      if (left > 0) loop.soon(Chain{loop, left - 1});
    }
  };
  constexpr int kMany = 600'000;
  static_assert(2 * kMany > VirtualRunLoop::kMostTurnsAtOneInstant);
  loop_.soon(Chain{loop_, kMany});
  ASSERT_TRUE(loop_.runUntil(milliseconds(10)));
  loop_.soon(Chain{loop_, kMany});
  EXPECT_TRUE(loop_.runUntil(milliseconds(10)));
}

TEST_F(LoopTest, BackgroundWorkRunsWhenItsTurnHasEnded) {
  loop_.after(milliseconds(10), [this] {
    loop_.runInBackground(noting("job"));
    loop_.runInBackground([this] {
      note("second job");
      loop_.post(noting("result"));
      loop_.runInBackground(noting("job of a job"));
    });
    note("turn");
  });
  loop_.after(milliseconds(10), noting("next turn"));
  loop_.runUntil(milliseconds(10));
  EXPECT_EQ(names_, (Names{"10 turn", "10 job", "10 second job", "10 job of a job", "10 next turn",
                           "10 result"}));
  EXPECT_EQ(loop_.turns(), 3U);
}

TEST_F(LoopTest, TheEndOfATurnIsToldAfterItsBackgroundWork) {
  loop_.onTurnEnded([this] { note("turn ended"); });
  loop_.after(milliseconds(10), [this] {
    note("turn");
    loop_.runInBackground(noting("job"));
  });
  loop_.actFromOutside(milliseconds(20), 1, noting("act"));
  loop_.runUntil(milliseconds(30));
  EXPECT_EQ(names_, (Names{"10 turn", "10 job", "10 turn ended", "20 act", "20 turn ended"}));
}

}  // namespace
}  // namespace halvora
