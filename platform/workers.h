// SPDX-License-Identifier: Apache-2.0
// Work that is done by several threads at once and waited for, such as the decoding of a video in
// stretches. Any thread but the main one.
#pragma once

#include <span>

#include "platform/task.h"

namespace halvora {

class Workers {
 public:
  virtual ~Workers() = default;
  /// How many tasks may decode at once, at least 1.
  virtual int count() const = 0;
  /// Whether the tasks of one `run` go on side by side, so that one may wait for another. Where
  /// they do not, they run one after the other in their order.
  virtual bool areParallel() const = 0;
  /// Runs every task and returns when all have ended.
  virtual void run(std::span<Task> tasks) = 0;
};

}  // namespace halvora
