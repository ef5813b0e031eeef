// SPDX-License-Identifier: Apache-2.0
#include "bindings/c/host_loop.h"

#include <string>

namespace halvora {

namespace {

class HostQueue final : public SerialQueue {
 public:
  HostQueue(HostLoop& loop, std::string_view label) : loop_(loop), label_(label) {}

  const std::string& label() const override { return label_; }
  bool dispatch(Task task) override {
    loop_.runInBackground(std::move(task));
    return true;
  }

 private:
  HostLoop& loop_;
  const std::string label_;
};

}  // namespace

TimerId HostLoop::after(Duration delay, Task&& task) {
  return queue_.schedule(now_ + dueAfter(delay), {}, std::move(task));
}

TimerId HostLoop::every(Duration interval, Task&& task) {
  const Duration period = dueAfter(interval);
  return queue_.schedule(now_ + period, period, std::move(task));
}

void HostLoop::runUntil(Duration end) {
  while (const std::optional<Duration> time = queue_.earliest()) {
    if (*time > end) break;
    if (*time > now_) now_ = *time;
    queue_.runEarliest(now_);
    endTurn();
  }
  if (end > now_) now_ = end;
}

void HostLoop::runBefore(Duration time) {
  runUntil(time - Duration{1});
  if (time > now_) now_ = time;
}

void HostLoop::endTurn() {
  // A job may give further jobs.
  for (std::size_t at = 0; at < background_.size(); ++at) {
    Task job = std::move(background_[at]);
    queue_.run(job);
  }
  background_.clear();
}

std::unique_ptr<SerialQueue> HostQueues::make(std::string_view label) {
  return std::make_unique<HostQueue>(loop_, label);
}

}  // namespace halvora
