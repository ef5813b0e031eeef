// SPDX-License-Identifier: Apache-2.0
// Background work: serial queues by label. A block is a function over values it was given; it hands
// its result back with `RunLoop::post`. Owned by whoever made it; dispatching is allowed from any
// thread.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "halvora/platform/need.h"
#include "halvora/platform/task.h"
#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

/// Does its tasks one after the other, in the order in which they came.
class SerialQueue : public Need {
 public:
  /// For people who look at threads; need not be its own alone.
  virtual const std::string& label() const = 0;
  /// Runs `task` off the main thread, after every task dispatched to this queue before it. False,
  /// and the task is gone without having run, where there is no thread or memory for it. What a
  /// task throws is lost: whoever must know of a failure catches it within the task.
  virtual bool dispatch(Task task) = 0;
};

class SerialQueues : public Need {
 public:
  /// Never null. Whoever destroys the queue waits for the task under way.
  virtual std::unique_ptr<SerialQueue> make(std::string_view label) = 0;
};

}  // namespace v0
}  // namespace halvora
