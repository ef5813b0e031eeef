// SPDX-License-Identifier: Apache-2.0
#include "halvora/platform/task.h"

#include <array>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace halvora {
namespace {

/// Counts what exists of it, and says where it lives when it is called.
struct Probe {
  explicit Probe(int& alive) : alive_(&alive) { ++*alive_; }
  Probe(Probe&& other) noexcept : alive_(other.alive_) { ++*alive_; }
  Probe(const Probe&) = delete;
  Probe& operator=(const Probe&) = delete;
  Probe& operator=(Probe&&) = delete;
  ~Probe() { --*alive_; }
  const void* operator()() { return this; }

  int* alive_;
};

using Where = Callable<const void*()>;

static_assert(!std::is_copy_constructible_v<Task> && !std::is_copy_assignable_v<Task>);
static_assert(std::is_nothrow_move_constructible_v<Task> &&
              std::is_nothrow_move_assignable_v<Task>);
static_assert(!std::is_constructible_v<Task, int>);
static_assert(!std::is_constructible_v<Callable<int(int)>, std::string (*)(int)>);

TEST(Callable, IsEmptyWithoutAFunction) {
  const Task task{};
  EXPECT_FALSE(task);
}

TEST(Callable, CallsItsFunctionAsOftenAsItIsCalled) {
  int calls = 0;
  Task task = [&calls] { ++calls; };
  ASSERT_TRUE(task);
  task();
  task();
  EXPECT_EQ(calls, 2);
}

TEST(Callable, PassesArgumentsAndResults) {
  Callable<int(int, int)> subtract = [](int left, int right) { return left - right; };
  EXPECT_EQ(subtract(7, 2), 5);
}

TEST(Callable, PassesReferencesAndMoveOnlyArguments) {
  int value = 1;
  Callable<void(int&)> raise = [](int& number) { ++number; };
  raise(value);
  EXPECT_EQ(value, 2);
  Callable<int(std::unique_ptr<int>)> open = [](std::unique_ptr<int> box) { return *box; };
  EXPECT_EQ(open(std::make_unique<int>(9)), 9);
}

TEST(Callable, KeepsStateBetweenCalls) {
  Callable<int()> count = [calls = 0]() mutable { return ++calls; };
  count();
  Callable<int()> moved = std::move(count);
  EXPECT_EQ(moved(), 2);
}

TEST(Callable, HoldsMoveOnlyCaptures) {
  Callable<int()> open = [box = std::make_unique<int>(3)] { return *box; };
  Callable<int()> moved = std::move(open);
  EXPECT_EQ(moved(), 3);
}

TEST(Callable, KeepsItsFunctionWithinItselfSoThatNothingIsAllocated) {
  int alive = 0;
  Where task = Probe(alive);
  const auto isWithin = [](Where& owner) {
    const auto* where = static_cast<const std::byte*>(owner());
    const auto* begin = reinterpret_cast<const std::byte*>(&owner);
    return where >= begin && where + sizeof(Probe) <= begin + sizeof owner;
  };
  EXPECT_TRUE(isWithin(task));
  Where moved = std::move(task);
  EXPECT_TRUE(isWithin(moved));
}

TEST(Callable, HasRoomForItsFullCapacity) {
  std::array<char, Task::kCapacity> letters{};
  letters.back() = 'z';
  Callable<char()> last = [letters] { return letters.back(); };
  Callable<char()> moved = std::move(last);
  EXPECT_EQ(moved(), 'z');
}

TEST(Callable, DestroysItsFunctionExactlyOnce) {
  int alive = 0;
  {
    const Where task = Probe(alive);
    EXPECT_EQ(alive, 1);
  }
  EXPECT_EQ(alive, 0);
}

TEST(Callable, MovingLeavesOneFunctionAndAnEmptySource) {
  int alive = 0;
  {
    Where first = Probe(alive);
    Where second = std::move(first);
    EXPECT_EQ(alive, 1);
    EXPECT_FALSE(first);  // NOLINT(bugprone-use-after-move): that it is empty is the point
    EXPECT_TRUE(second);
  }
  EXPECT_EQ(alive, 0);
}

TEST(Callable, AssigningDestroysWhatItReplaces) {
  int firstAlive = 0;
  int secondAlive = 0;
  Where task = Probe(firstAlive);
  task = Probe(secondAlive);
  EXPECT_EQ(firstAlive, 0);
  EXPECT_EQ(secondAlive, 1);
  task = {};
  EXPECT_EQ(secondAlive, 0);
  EXPECT_FALSE(task);
}

TEST(Callable, SurvivesAssignmentToItself) {
  int alive = 0;
  Where task = Probe(alive);
  Where& same = task;
  task = std::move(same);
  EXPECT_EQ(alive, 1);
  EXPECT_TRUE(task);
}

TEST(Callable, MovesWithAGrowingVector) {
  int alive = 0;
  {
    std::vector<Where> tasks;
    for (int count = 0; count < 100; ++count) tasks.emplace_back(Probe(alive));
    EXPECT_EQ(alive, 100);
    tasks.erase(tasks.begin(), tasks.begin() + 50);
    EXPECT_EQ(alive, 50);
  }
  EXPECT_EQ(alive, 0);
}

}  // namespace
}  // namespace halvora
