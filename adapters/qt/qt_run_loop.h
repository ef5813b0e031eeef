// SPDX-License-Identifier: Apache-2.0
// The run loop need on Qt's event loop. All timers wait in one queue of their own, so that what is
// due at one time runs in the order in which it was scheduled, and one Qt timer waits for the
// earliest. Media time is the machine's steady clock. Belongs to the thread that made it, which
// must run Qt's event loop; whoever posts from another thread must have stopped before it goes.
#pragma once

#include <QTimer>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <vector>

#include "adapters/standard/due_queue.h"
#include "halvora/platform/run_loop.h"

namespace halvora {

class QtRunLoop final : public RunLoop {
 public:
  QtRunLoop();
  QtRunLoop(const QtRunLoop&) = delete;
  QtRunLoop& operator=(const QtRunLoop&) = delete;

  Duration now() const override;
  TimerId after(Duration delay, Task&& task) override;
  TimerId every(Duration interval, Task&& task) override;
  TimerId soon(Task&& task) override;
  void cancel(TimerId timer) override { queue_.cancel(timer); }
  bool isPending(TimerId timer) const override { return queue_.isPending(timer); }
  void post(Task&& task) override;

  /// Turns that threw, as where memory is short: each ended there, the others went on. Nothing of
  /// it reaches Qt's event loop, which cannot bear exceptions.
  std::uint64_t failures() const { return queue_.failures(); }

 private:
  TimerId schedule(Duration time, Duration interval, Task&& task);
  void takePosted();
  bool hasRoomFor(std::size_t posted) noexcept;
  void runDue();
  void waitForEarliest();

  const std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
  DueQueue queue_;
  QTimer timer_;
  /// What the timer waits for; none while it does not run.
  std::optional<Duration> waitedFor_;
  std::mutex postedMutex_;
  std::vector<Task> posted_;
  /// Qt's loop has been asked to take what is posted. Under the mutex.
  bool isWoken_ = false;
  /// There was no memory to take what was posted; tried again soon.
  bool hasLeftPosted_ = false;
};

}  // namespace halvora
