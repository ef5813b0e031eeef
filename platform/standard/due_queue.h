// SPDX-License-Identifier: Apache-2.0
// The timers of a run loop, by due time; those that are due at one time come in the order in which
// they were scheduled. It knows no clock: the run loop that owns it says what time it is, and runs
// the earliest when that has come. Main thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/run_loop.h"
#include "platform/task.h"
#include "platform/time.h"

namespace halvora {

class DueQueue {
 public:
  /// Runs at `time`, and with an `interval` above zero again and again.
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
  std::vector<std::uint32_t> freeSlots_;
  /// A heap with the next one at the front; cancelled ones stay in it until they come up or
  /// outnumber the rest.
  std::vector<Due> queue_;
  std::size_t stale_ = 0;
};

}  // namespace halvora
