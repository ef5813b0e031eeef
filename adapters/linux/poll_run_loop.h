// SPDX-License-Identifier: Apache-2.0
// A run loop for programs without a window: timers and descriptors on poll(2), and blocks posted
// from other threads. Media time is the machine's steady clock. Belongs to the thread that made it;
// whoever posts from another thread must have stopped before it goes.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

#include <poll.h>

#include "adapters/standard/due_queue.h"
#include "halvora/platform/descriptors.h"
#include "halvora/platform/run_loop.h"

namespace halvora {

class PollRunLoop final : public RunLoop, public Descriptors {
 public:
  /// Throws `std::system_error` where the process has no descriptor left.
  PollRunLoop();
  ~PollRunLoop() override;
  PollRunLoop(const PollRunLoop&) = delete;
  PollRunLoop& operator=(const PollRunLoop&) = delete;

  Duration now() const override;
  TimerId after(Duration delay, Task&& task) override;
  TimerId every(Duration interval, Task&& task) override;
  TimerId soon(Task&& task) override;
  void cancel(TimerId timer) override { queue_.cancel(timer); }
  bool isPending(TimerId timer) const override { return queue_.isPending(timer); }
  void post(Task&& task) override;

  WatchId watch(int descriptor, DescriptorEvents events, Task&& task) override;
  void forget(WatchId watch) override;

  /// Runs turns until `isDone`, which is asked between them and after each signal that the process
  /// gets. False if `longest` has passed before.
  bool runUntil(const std::function<bool()>& isDone, std::optional<Duration> longest = {});

  /// Turns that threw, as where memory is short: each ended there, the others went on. Null, or
  /// what the first of them threw.
  std::uint64_t failures() const { return queue_.failures(); }
  const std::exception_ptr& firstFailure() const { return queue_.firstFailure(); }

 private:
  struct Watched {
    WatchId id;
    Task task;
  };

  void waitUntil(std::optional<Duration> end);
  void runReady();
  void runWatched(WatchId id);
  void runDue();
  void takePosted();
  bool hasRoomFor(std::size_t posted) noexcept;
  /// For one more watch, everywhere.
  void makeRoom();

  const std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
  DueQueue queue_;
  /// Readable while there is something posted.
  int postedSignal_ = -1;
  std::mutex postedMutex_;
  std::vector<Task> posted_;
  /// There was no memory to take what was posted.
  bool hasLeftPosted_ = false;
  WatchId lastWatch_ = 0;
  /// Side by side; the signal for what is posted comes first, and has no task.
  std::vector<Watched> watched_;
  std::vector<pollfd> polled_;
  std::vector<WatchId> ready_;
};

}  // namespace halvora
