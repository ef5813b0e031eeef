// SPDX-License-Identifier: Apache-2.0
#include "halvora/platform/run_loop.h"

#include <utility>

#include <gtest/gtest.h>

#include "adapters/virtual/virtual_run_loop.h"

namespace halvora {
namespace {

class TimerTest : public testing::Test {
 protected:
  Timer make(long long ms) {
    return {loop_, loop_.after(milliseconds(ms), [this] { ++fired_; })};
  }

  VirtualRunLoop loop_;
  int fired_ = 0;
};

TEST_F(TimerTest, IsValidUntilItFires) {
  const Timer timer = make(10);
  EXPECT_TRUE(timer.isValid());
  loop_.runFor(milliseconds(10));
  EXPECT_EQ(fired_, 1);
  EXPECT_FALSE(timer.isValid());
}

TEST_F(TimerTest, IsCancelledWithItsOwner) {
  { const Timer timer = make(10); }
  loop_.runFor(milliseconds(100));
  EXPECT_EQ(fired_, 0);
}

TEST_F(TimerTest, MovingHandsItOver) {
  Timer first = make(10);
  {
    const Timer second = std::move(first);
    EXPECT_TRUE(second.isValid());
    EXPECT_FALSE(first.isValid());  // NOLINT(bugprone-use-after-move): that it is void is the point
  }
  loop_.runFor(milliseconds(100));
  EXPECT_EQ(fired_, 0);
}

TEST_F(TimerTest, AssigningCancelsTheOneBefore) {
  Timer timer = make(10);
  timer = make(20);
  loop_.runFor(milliseconds(15));
  EXPECT_EQ(fired_, 0);
  loop_.runFor(milliseconds(5));
  EXPECT_EQ(fired_, 1);
}

TEST_F(TimerTest, AssignmentToItselfKeepsIt) {
  Timer timer = make(10);
  Timer& same = timer;
  timer = std::move(same);
  EXPECT_TRUE(timer.isValid());
}

TEST_F(TimerTest, InvalidatingTwiceIsHarmless) {
  Timer timer = make(10);
  timer.invalidate();
  timer.invalidate();
  EXPECT_FALSE(timer.isValid());
  Timer().invalidate();
  EXPECT_FALSE(Timer().isValid());
}

}  // namespace
}  // namespace halvora
