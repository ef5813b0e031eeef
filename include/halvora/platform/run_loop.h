// SPDX-License-Identifier: Apache-2.0
// The main thread's run loop: the only clock and the only timers of the kit. Work happens in turns,
// one timer or one block each; what is due at the same time runs in the order in which it was
// scheduled. All but `post` is for the main thread.
#pragma once

#include <cstdint>
#include <utility>

#include "halvora/platform/need.h"
#include "halvora/platform/task.h"
#include "halvora/platform/time.h"
#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

/// Names one scheduled timer; never used twice by a loop. 0 names none.
using TimerId = std::uint64_t;

class RunLoop : public Need {
 public:
  /// A timer of no or negative delay is due this much later, so that time always advances.
  static constexpr Duration kShortestDelay{100};

  /// How long a timer of that delay really waits.
  static constexpr Duration dueAfter(Duration delay) {
    return delay > Duration::zero() ? delay : kShortestDelay;
  }

  /// Media time: since the loop began; does not stand still while the loop is idle.
  virtual Duration now() const = 0;

  /// Runs `task` once, `delay` from now.
  virtual TimerId after(Duration delay, Task&& task) = 0;

  /// Runs `task` every `interval`, first one interval from now; due times are exact multiples and
  /// do not drift.
  virtual TimerId every(Duration interval, Task&& task) = 0;

  /// Runs `task` in a turn of its own at the present time, behind what is due already.
  virtual TimerId soon(Task&& task) = 0;

  /// Forgets a timer; one that has fired, or 0, is left alone. A repeating timer may cancel itself.
  virtual void cancel(TimerId timer) = 0;

  /// Whether the timer is still to fire.
  virtual bool isPending(TimerId timer) const = 0;

  /// Hands a block to the main thread, from any thread, in the order of the calls.
  virtual void post(Task&& task) = 0;
};

/// A timer that is cancelled with its owner.
class Timer {
 public:
  Timer() = default;
  /// Takes over what the loop has answered; the loop must outlive it.
  Timer(RunLoop& loop, TimerId id) : loop_(&loop), id_(id) {}
  /// The other one is none any more.
  Timer(Timer&& other) noexcept : loop_(other.loop_), id_(std::exchange(other.id_, 0)) {}
  /// Cancels its own first.
  Timer& operator=(Timer&& other) noexcept {
    if (this != &other) {
      invalidate();
      loop_ = other.loop_;
      id_ = std::exchange(other.id_, 0);
    }
    return *this;
  }
  Timer(const Timer&) = delete;
  Timer& operator=(const Timer&) = delete;
  ~Timer() { invalidate(); }

  /// Cancels now; nothing where there is nothing to cancel.
  void invalidate() {
    if (id_ != 0) loop_->cancel(std::exchange(id_, 0));
  }
  /// Whether it is still to fire.
  bool isValid() const { return id_ != 0 && loop_->isPending(id_); }

 private:
  RunLoop* loop_ = nullptr;
  TimerId id_ = 0;
};

}  // namespace v0
}  // namespace halvora
