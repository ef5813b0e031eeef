// SPDX-License-Identifier: Apache-2.0
// A serial queue whose tasks run when the test says so, on the test's thread: whatever may happen
// between two of them can be made to happen. Owned by the test.
#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <utility>

#include "halvora/platform/serial_queues.h"

namespace halvora {

class StepQueue final : public SerialQueue {
 public:
  explicit StepQueue(std::string label = "queue") : label_(std::move(label)) {}
  const std::string& label() const override { return label_; }
  bool dispatch(Task task) override {
    if (!isRefusing) tasks_.push_back(std::move(task));
    return !isRefusing;
  }

  std::size_t waiting() const { return tasks_.size(); }
  /// Runs the oldest task, if there is one.
  void runNext() {
    if (tasks_.empty()) return;
    Task task = std::move(tasks_.front());
    tasks_.pop_front();
    task();
  }
  /// Runs every task, and those that they dispatch.
  void runAll() {
    while (!tasks_.empty()) runNext();
  }

  /// As a queue does that can have no thread.
  bool isRefusing = false;

 private:
  std::string label_;
  std::deque<Task> tasks_;
};

}  // namespace halvora
