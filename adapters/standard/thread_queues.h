// SPDX-License-Identifier: Apache-2.0
// Serial queues on threads of their own, started with the first task. Destroying a queue waits for
// the task under way and drops those that have not begun.
#pragma once

#include "halvora/platform/serial_queues.h"

namespace halvora {

class ThreadQueues final : public SerialQueues {
 public:
  std::unique_ptr<SerialQueue> make(std::string_view label) override;
};

}  // namespace halvora
