// SPDX-License-Identifier: Apache-2.0
#include "adapters/standard/thread_queues.h"

#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>

#include "halvora/platform/workers.h"

namespace halvora {

namespace {

class ThreadQueue final : public SerialQueue {
 public:
  explicit ThreadQueue(std::string_view label) : label_(label) {}

  ~ThreadQueue() override {
    {
      const std::lock_guard lock(mutex_);
      isEnding_ = true;
    }
    changed_.notify_one();
    if (worker_.joinable()) worker_.join();
  }

  const std::string& label() const override { return label_; }

  bool dispatch(Task task) override {
    try {
      const std::lock_guard lock(mutex_);
      // First, so that there is nothing to take back: without a thread nothing is waiting.
      if (!worker_.joinable()) worker_ = std::thread([this] { work(); });
      tasks_.push_back(std::move(task));
    } catch (const std::exception&) {
      return false;
    }
    changed_.notify_one();
    return true;
  }

 private:
  void work() {
    for (;;) {
      Task task;
      {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return isEnding_ || !tasks_.empty(); });
        if (isEnding_) return;
        task = std::move(tasks_.front());
        tasks_.pop_front();
      }
      // Its own failures are the task's to catch; here they must not end the process.
      static_cast<void>(ranToItsEnd(task));
    }
  }

  std::string label_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Task> tasks_;
  bool isEnding_ = false;
  std::thread worker_;
};

}  // namespace

std::unique_ptr<SerialQueue> ThreadQueues::make(std::string_view label) {
  return std::make_unique<ThreadQueue>(label);
}

}  // namespace halvora
