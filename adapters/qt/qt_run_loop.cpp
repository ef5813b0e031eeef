// SPDX-License-Identifier: Apache-2.0
#include "adapters/qt/qt_run_loop.h"

#include <algorithm>
#include <utility>

namespace halvora {

namespace {

// A timer of Qt's cannot be set for longer than an int of milliseconds; waking once a day in vain
// costs nothing.
constexpr std::chrono::milliseconds kLongestWait = std::chrono::hours(24);
constexpr Duration kUntilNextTry = milliseconds(100);

}  // namespace

QtRunLoop::QtRunLoop() {
  timer_.setSingleShot(true);
  timer_.setTimerType(Qt::PreciseTimer);
  QObject::connect(&timer_, &QTimer::timeout, [this] { runDue(); });
}

Duration QtRunLoop::now() const {
  return std::chrono::duration_cast<Duration>(std::chrono::steady_clock::now() - begin_);
}

TimerId QtRunLoop::after(Duration delay, Task&& task) {
  return schedule(now() + dueAfter(delay), {}, std::move(task));
}

TimerId QtRunLoop::every(Duration interval, Task&& task) {
  const Duration period = dueAfter(interval);
  return schedule(now() + period, period, std::move(task));
}

TimerId QtRunLoop::soon(Task&& task) { return schedule(now(), {}, std::move(task)); }

void QtRunLoop::post(Task&& task) {
  {
    const std::lock_guard lock(postedMutex_);
    posted_.push_back(std::move(task));
    if (std::exchange(isWoken_, true)) return;
  }
  try {
    QMetaObject::invokeMethod(
        &timer_, [this] { takePosted(); }, Qt::QueuedConnection);
  } catch (...) {
    // It is there and waits: whoever posts next wakes the loop for both.
    const std::lock_guard lock(postedMutex_);
    isWoken_ = false;
  }
}

TimerId QtRunLoop::schedule(Duration time, Duration interval, Task&& task) {
  const TimerId id = queue_.schedule(time, interval, std::move(task));
  if (!waitedFor_ || time < *waitedFor_) waitForEarliest();
  return id;
}

void QtRunLoop::takePosted() {
  std::vector<Task> posted;
  {
    const std::lock_guard lock(postedMutex_);
    isWoken_ = false;
    hasLeftPosted_ = !hasRoomFor(posted_.size());
    if (!hasLeftPosted_) posted.swap(posted_);
  }
  if (hasLeftPosted_) return waitForEarliest();
  for (Task& task : posted) soon(std::move(task));
}

bool QtRunLoop::hasRoomFor(std::size_t posted) noexcept {
  Task make = [this, posted] { queue_.makeRoom(posted); };
  const std::uint64_t failures = queue_.failures();
  queue_.run(make);
  return queue_.failures() == failures;
}

// Runs what was due when it was called; what that makes due in turn waits for the next call, so
// that frames and input get theirs in between.
void QtRunLoop::runDue() {
  waitedFor_.reset();
  if (hasLeftPosted_) takePosted();
  const Duration end = now();
  for (auto time = queue_.earliest(); time && *time <= end; time = queue_.earliest()) {
    queue_.runEarliest(now());
  }
  waitForEarliest();
}

void QtRunLoop::waitForEarliest() {
  waitedFor_ = queue_.earliest();
  if (hasLeftPosted_) {
    waitedFor_ = std::min(waitedFor_.value_or(Duration::max()), now() + kUntilNextTry);
  }
  if (!waitedFor_) return;
  const auto wait = std::chrono::ceil<std::chrono::milliseconds>(*waitedFor_ - now());
  timer_.start(std::clamp(wait, std::chrono::milliseconds::zero(), kLongestWait));
}

}  // namespace halvora
