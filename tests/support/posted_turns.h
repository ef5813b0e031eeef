// SPDX-License-Identifier: Apache-2.0
// A run loop for tests with real threads: what any thread posts runs on the thread of the test,
// which waits for it. Its time stands still, so no timer is ever due. Owned by the test; must
// outlive whatever posts to it. No wait is longer than a bound that only a failure reaches; it ends
// the test.
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <utility>

#include "halvora/platform/run_loop.h"

namespace halvora {

/// Waits until that is so, as is looked at under the lock. Throws if it never is.
template <class Condition>
void waitOrFail(std::unique_lock<std::mutex>& lock, std::condition_variable& changed,
                Condition isSo) {
  if (!changed.wait_for(lock, std::chrono::seconds(60), isSo)) {
    throw std::runtime_error("waited a minute in vain");
  }
}

class PostedTurns final : public RunLoop {
 public:
  Duration now() const override { return Duration::zero(); }
  TimerId after(Duration /*delay*/, Task&& /*task*/) override { return ++lastTimer_; }
  TimerId every(Duration /*interval*/, Task&& /*task*/) override { return ++lastTimer_; }
  TimerId soon(Task&& task) override {
    post(std::move(task));
    return ++lastTimer_;
  }
  void cancel(TimerId /*timer*/) override {
    if (onCancel) onCancel();
  }
  bool isPending(TimerId timer) const override { return timer != 0 && timer <= lastTimer_; }

  void post(Task&& task) override {
    const std::lock_guard lock(mutex_);
    tasks_.push_back(std::move(task));
    posted_.notify_one();
  }

  /// Waits for something to be posted and runs it.
  void runOne() {
    Task task;
    {
      std::unique_lock lock(mutex_);
      waitOrFail(lock, posted_, [this] { return !tasks_.empty(); });
      task = std::move(tasks_.front());
      tasks_.pop_front();
    }
    task();
  }
  /// Runs what is posted, and waits for more, until `isDone`.
  void runUntil(const std::function<bool()>& isDone) {
    while (!isDone()) runOne();
  }
  /// Runs what has been posted so far.
  void runPosted() {
    std::size_t count = 0;
    {
      const std::lock_guard lock(mutex_);
      count = tasks_.size();
    }
    while (count-- > 0) runOne();
  }

  /// Called on the test's thread when a timer is cancelled; may stay absent.
  std::function<void()> onCancel;

 private:
  TimerId lastTimer_ = 0;
  std::mutex mutex_;
  std::condition_variable posted_;
  std::deque<Task> tasks_;
};

/// Holds other threads at a place until the test lets them through.
class Gate {
 public:
  /// What a held thread calls: says that it is there and waits until the gate is open.
  void pass() {
    std::unique_lock lock(mutex_);
    ++arrived_;
    changed_.notify_all();
    // A thread that nobody lets through any more goes on by itself: the test has failed elsewhere.
    changed_.wait_for(lock, std::chrono::seconds(60), [this] { return isOpen_; });
  }
  /// Waits until a thread is there, or has been.
  void waitForArrival() {
    std::unique_lock lock(mutex_);
    waitOrFail(lock, changed_, [this] { return arrived_ > 0; });
  }
  void open() {
    const std::lock_guard lock(mutex_);
    isOpen_ = true;
    changed_.notify_all();
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  int arrived_ = 0;
  bool isOpen_ = false;
};

}  // namespace halvora
