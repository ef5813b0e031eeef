// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/qt_run_loop.h"

#include <algorithm>
#include <new>
#include <utility>

namespace halvora {

namespace {

// A timer of Qt's cannot be set for longer than an int of milliseconds; waking once a day in vain
// costs nothing.
constexpr std::chrono::milliseconds kLongestWait = std::chrono::hours(24);

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
  const std::lock_guard lock(postedMutex_);
  posted_.push_back(std::move(task));
  if (posted_.size() > 1) return;
  try {
    QMetaObject::invokeMethod(
        &timer_, [this] { takePosted(); }, Qt::QueuedConnection);
  } catch (...) {
    // Those that come later would wait for this one to be taken.
    posted_.clear();
    throw;
  }
}

TimerId QtRunLoop::schedule(Duration time, Duration interval, Task&& task) {
  const TimerId id = queue_.schedule(time, interval, std::move(task));
  if (!waitedFor_ || time < *waitedFor_) waitForEarliest();
  return id;
}

// The library that calls lets no exception through: it would end the process.
template <class Turn>
void QtRunLoop::run(const Turn& turn) {
  try {
    turn();
  } catch (const std::bad_alloc&) {
    ++failedTurns_;
  }
}

void QtRunLoop::takePosted() {
  std::vector<Task> posted;
  {
    const std::lock_guard lock(postedMutex_);
    posted.swap(posted_);
  }
  for (Task& task : posted) {
    try {
      soon(std::move(task));
    } catch (const std::bad_alloc&) {
      // Rather at once than never.
      run([&task] { task(); });
    }
  }
}

// Runs what was due when it was called; what that makes due in turn waits for the next call, so
// that frames and input get theirs in between.
void QtRunLoop::runDue() {
  waitedFor_.reset();
  const Duration end = now();
  for (auto time = queue_.earliest(); time && *time <= end; time = queue_.earliest()) {
    run([this] { queue_.runEarliest(now()); });
  }
  waitForEarliest();
}

void QtRunLoop::waitForEarliest() {
  waitedFor_ = queue_.earliest();
  if (!waitedFor_) return;
  const auto wait = std::chrono::ceil<std::chrono::milliseconds>(*waitedFor_ - now());
  timer_.start(std::clamp(wait, std::chrono::milliseconds::zero(), kLongestWait));
}

}  // namespace halvora
