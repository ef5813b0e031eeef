// SPDX-License-Identifier: Apache-2.0
// The timers of a run loop, by due time; those that are due at one time come in the order in which
// they were scheduled. It knows no clock: the run loop that owns it says what time it is, and runs
// the earliest when that has come. What a timer's task throws, as where memory is short, ends that
// turn and nothing else: it is counted, and a repeating timer goes on. Main thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <optional>
#include <vector>

#include "halvora/platform/run_loop.h"
#include "halvora/platform/task.h"
#include "halvora/platform/time.h"

namespace halvora {

class DueQueue {
 public:
  /// Runs at `time`, and with an `interval` above zero again and again. Nothing is scheduled where
  /// this throws for want of memory; only scheduling ever asks for any.
  TimerId schedule(Duration time, Duration interval, Task&& task);
  /// Comes before everything of that time that `schedule` was given, in ascending `order`.
  TimerId scheduleFirst(Duration time, std::uint64_t order, Task&& task);
  void cancel(TimerId timer);
  bool isPending(TimerId timer) const { return find(timer) != nullptr; }
  /// How many are.
  std::size_t pending() const { return slots_.size() - freeSlots_.size(); }

  /// When the next one is due; none when nothing is.
  std::optional<Duration> earliest();
  /// Runs the next one, which there must be. A repeating one counts as scheduled now, and is due
  /// again at the first of its multiples after `now`: what a hiccup made it miss stays missed.
  /// True if `schedule` was given it, and not `scheduleFirst`.
  bool runEarliest(Duration now);
  /// Runs another task as if it were a timer's.
  void run(Task& task) noexcept;

  /// How many tasks have thrown, and what the first one threw.
  std::uint64_t failures() const { return failures_; }
  const std::exception_ptr& firstFailure() const { return firstFailure_; }

  /// Makes room for so many more timers, so that scheduling them asks for no memory.
  void makeRoom(std::size_t more);

 private:
  struct Slot {
    Task task;
    Duration interval{};
    std::uint32_t generation = 1;
    bool isPending = false;
  };
  struct Due {
    Duration time;
    std::uint64_t order;
    std::uint32_t slot;
    std::uint32_t generation;
  };

  TimerId add(Duration time, Duration interval, std::uint64_t order, Task&& task);
  std::uint64_t nextOrder();
  const Slot* find(TimerId timer) const;
  bool isStale(const Due& due) const;
  void push(const Due& due);
  void pop();
  void release(std::uint32_t slot);
  void forgetStale();

  std::uint64_t lastOrder_ = 0;
  std::vector<Slot> slots_;
  /// Has room for every slot, so that giving one back asks for no memory.
  std::vector<std::uint32_t> freeSlots_;
  /// A heap with the next one at the front; cancelled ones stay in it until they come up or
  /// outnumber the rest.
  std::vector<Due> queue_;
  std::size_t stale_ = 0;
  std::uint64_t failures_ = 0;
  std::exception_ptr firstFailure_;
};

}  // namespace halvora
