// SPDX-License-Identifier: Apache-2.0
// Timers whose tasks throw: a turn ends there, and nothing else does.
#include <new>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "adapters/standard/due_queue.h"
#include "adapters/virtual/virtual_run_loop.h"

namespace halvora {
namespace {

TEST(DueQueueFailures, ATaskThatThrowsEndsItsOwnTurnAlone) {
  VirtualRunLoop loop;
  std::string ran;
  loop.after(milliseconds(1), [&ran] { ran += 'a'; });
  loop.after(milliseconds(1), [] { throw std::bad_alloc(); });
  loop.after(milliseconds(2), [] { throw std::runtime_error("later"); });
  loop.after(milliseconds(3), [&ran] { ran += 'b'; });
  EXPECT_EQ(loop.firstFailure(), nullptr);
  EXPECT_TRUE(loop.runUntil(milliseconds(5)));
  EXPECT_EQ(ran, "ab");
  EXPECT_EQ(loop.failures(), 2U);
  EXPECT_THROW(std::rethrow_exception(loop.firstFailure()), std::bad_alloc);
}

TEST(DueQueueFailures, ARepeatingTimerGoesOnAfterATurnThatThrew) {
  VirtualRunLoop loop;
  int runs = 0;
  const TimerId timer = loop.every(milliseconds(10), [&runs] {
    if (++runs == 2) throw std::bad_alloc();
  });
  loop.runUntil(milliseconds(45));
  EXPECT_EQ(runs, 4);
  EXPECT_EQ(loop.failures(), 1U);
  EXPECT_TRUE(loop.isPending(timer));
}

TEST(DueQueueFailures, ABackgroundJobThatThrowsLeavesTheOthers) {
  VirtualRunLoop loop;
  int runs = 0;
  loop.after(milliseconds(1), [&] {
    loop.runInBackground([] { throw std::bad_alloc(); });
    loop.runInBackground([&runs] { ++runs; });
  });
  loop.runUntil(milliseconds(2));
  EXPECT_EQ(runs, 1);
  EXPECT_EQ(loop.failures(), 1U);
}

TEST(DueQueueFailures, RoomThatWasMadeIsThere) {
  DueQueue queue;
  queue.makeRoom(1000);
  int runs = 0;
  for (int at = 0; at < 1000; ++at) queue.schedule(milliseconds(at), {}, [&runs] { ++runs; });
  while (queue.earliest()) queue.runEarliest(milliseconds(1000));
  EXPECT_EQ(runs, 1000);
}

}  // namespace
}  // namespace halvora
