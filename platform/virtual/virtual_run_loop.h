// SPDX-License-Identifier: Apache-2.0
// A run loop in virtual time: it hops from one due time to the next and runs the turns of each in
// the order in which they were scheduled. Background work runs between turns and takes no time.
// Single-threaded; whoever drives it owns it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "platform/run_loop.h"

namespace halvora {

class VirtualRunLoop final : public RunLoop {
 public:
  /// So many turns at one instant are taken for a loop without end.
  static constexpr std::uint64_t kMostTurnsAtOneInstant = 1'000'000;

  Duration now() const override { return now_; }
  TimerId after(Duration delay, Task task) override;
  TimerId every(Duration interval, Task task) override;
  TimerId soon(Task task) override;
  void cancel(TimerId timer) override;
  bool isPending(TimerId timer) const override;
  void post(Task task) override { soon(std::move(task)); }

  /// An act from outside the phone. At its time it runs before everything that the phone has
  /// scheduled; acts at one time run in ascending `order`. A time that has passed counts as now.
  void actFromOutside(Duration time, std::uint64_t order, Task act);

  /// Runs when the present turn ends, before the next one; takes no virtual time.
  void runInBackground(Task job) { background_.push_back(std::move(job)); }

  /// Runs all turns that are due up to and including `end`, then stands at `end`. False if it gave
  /// up at an instant that never ends.
  bool runUntil(Duration end);
  bool runFor(Duration span) { return runUntil(now_ + span); }

  /// Called after each turn, when its background work is done.
  void onTurnEnded(std::function<void()> callback) { turnEnded_ = std::move(callback); }

  /// Turns run so far.
  std::uint64_t turns() const { return turns_; }

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

  TimerId schedule(Duration time, Duration interval, std::uint64_t order, Task task);
  std::uint64_t nextOrder();
  Slot* find(TimerId timer);
  bool isStale(const Due& due) const;
  void push(const Due& due);
  void pop();
  void release(Slot& slot, std::uint32_t index);
  void runTurn(const Due& due);
  void forgetStale();

  Duration now_{};
  std::uint64_t lastOrder_ = 0;
  std::uint64_t turns_ = 0;
  std::uint64_t turnsAtThisInstant_ = 0;
  std::vector<Slot> slots_;
  std::vector<std::uint32_t> freeSlots_;
  /// A heap with the next one at the front; cancelled ones stay in it until they come up or
  /// outnumber the rest.
  std::vector<Due> queue_;
  std::size_t stale_ = 0;
  std::vector<Task> background_;
  std::function<void()> turnEnded_;
};

}  // namespace halvora
