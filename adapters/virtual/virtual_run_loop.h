// SPDX-License-Identifier: Apache-2.0
// A run loop in virtual time: it hops from one due time to the next and runs the turns of each in
// the order in which they were scheduled. Background work runs between turns and takes no time.
// Single-threaded; whoever drives it owns it.
#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <vector>

#include "adapters/standard/due_queue.h"
#include "halvora/platform/run_loop.h"

namespace halvora {

class VirtualRunLoop final : public RunLoop {
 public:
  /// So many turns at one instant are taken for a loop without end.
  static constexpr std::uint64_t kMostTurnsAtOneInstant = 1'000'000;

  Duration now() const override { return now_; }
  TimerId after(Duration delay, Task&& task) override;
  TimerId every(Duration interval, Task&& task) override;
  TimerId soon(Task&& task) override;
  void cancel(TimerId timer) override { queue_.cancel(timer); }
  bool isPending(TimerId timer) const override { return queue_.isPending(timer); }
  /// How many timers and posted tasks are.
  std::size_t pending() const { return queue_.pending(); }
  void post(Task&& task) override { soon(std::move(task)); }

  /// An act from outside the phone. At its time it runs before everything that the phone has
  /// scheduled; acts at one time run in ascending `order`. A time that has passed counts as now.
  TimerId actFromOutside(Duration time, std::uint64_t order, Task&& act);

  /// Runs all that is due before `time`, then `act` at once, as an act from outside that comes
  /// first at that time; a time that has passed counts as now. Not from within a turn. False like
  /// `runUntil`.
  template <class Act>
  bool actAt(Duration time, const Act& act) {
    if (time > now_ && !runUntil(time - Duration{1})) return false;
    if (time > now_) {
      now_ = time;
      turnsAtThisInstant_ = 0;
    }
    act();
    endTurn();
    return true;
  }

  /// Runs when the present turn ends, before the next one; takes no virtual time.
  void runInBackground(Task job) { background_.push_back(std::move(job)); }

  /// Runs all turns that are due up to and including `end`, then stands at `end`. False if it gave
  /// up at an instant that never ends.
  bool runUntil(Duration end);
  bool runFor(Duration span) { return runUntil(now_ + span); }

  /// Called after each turn, when its background work is done.
  void onTurnEnded(std::function<void()> callback) { turnEnded_ = std::move(callback); }

  /// Turns and background jobs that threw, as where memory is short: each ended there, the others
  /// went on. Null, or what the first of them threw.
  std::uint64_t failures() const { return queue_.failures(); }
  const std::exception_ptr& firstFailure() const { return queue_.firstFailure(); }

  /// Turns run so far.
  std::uint64_t turns() const { return turns_; }

 private:
  void endTurn();

  Duration now_{};
  std::uint64_t turns_ = 0;
  std::uint64_t turnsAtThisInstant_ = 0;
  DueQueue queue_;
  std::vector<Task> background_;
  std::function<void()> turnEnded_;
};

}  // namespace halvora
