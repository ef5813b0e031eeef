// SPDX-License-Identifier: Apache-2.0
// The run loop of a phone whose host says when it works: turns run within the host's calls, up to
// the time that it names. Background work runs between turns, on the same thread. Single-threaded.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "adapters/standard/due_queue.h"
#include "halvora/platform/run_loop.h"
#include "halvora/platform/serial_queues.h"

namespace halvora {

class HostLoop final : public RunLoop {
 public:
  Duration now() const override { return now_; }
  TimerId after(Duration delay, Task&& task) override;
  TimerId every(Duration interval, Task&& task) override;
  TimerId soon(Task&& task) override { return queue_.schedule(now_, {}, std::move(task)); }
  void cancel(TimerId timer) override { queue_.cancel(timer); }
  bool isPending(TimerId timer) const override { return queue_.isPending(timer); }
  void post(Task&& task) override { soon(std::move(task)); }

  void runInBackground(Task job) { background_.push_back(std::move(job)); }
  /// Runs what is due up to that time and stands there then; one that has passed runs nothing.
  void runUntil(Duration end);
  /// Runs what is due before that time and stands there then, as what comes from outside comes
  /// before what is due at the same time.
  void runBefore(Duration time);
  /// Ends a turn that the host's own call was.
  void endTurn();
  std::optional<Duration> nextDue() { return queue_.earliest(); }

 private:
  Duration now_{};
  DueQueue queue_;
  std::vector<Task> background_;
};

/// Queues whose tasks run when the turn that gave them ends.
class HostQueues final : public SerialQueues {
 public:
  explicit HostQueues(HostLoop& loop) : loop_(loop) {}
  std::unique_ptr<SerialQueue> make(std::string_view label) override;

 private:
  HostLoop& loop_;
};

}  // namespace halvora
