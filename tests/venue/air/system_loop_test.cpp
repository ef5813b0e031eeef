// SPDX-License-Identifier: Apache-2.0
// The loop of a command on a real system.
#include "venue/air/system_loop.h"

#include <stdexcept>

#include <gtest/gtest.h>

namespace halvora {
namespace {

TEST(SystemLoop, RunsUntilItIsDone) {
  PollRunLoop loop;
  int turns = 0;
  const TimerId timer = loop.every(milliseconds(1), [&] { ++turns; });
  runCommandUntil(loop, [&] { return turns == 3; });
  EXPECT_EQ(turns, 3);
  loop.cancel(timer);
}

// A command ends with what went wrong, instead of going on without it.
TEST(SystemLoop, EndsWithWhatATaskThrows) {
  PollRunLoop loop;
  loop.after(milliseconds(1), [] { throw std::runtime_error("no room"); });
  EXPECT_THROW(runCommandUntil(loop, [] { return false; }), std::runtime_error);
}

}  // namespace
}  // namespace halvora
