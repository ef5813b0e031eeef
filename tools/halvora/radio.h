// SPDX-License-Identifier: Apache-2.0
// A radio, and the loop on which it is heard: for the one command that listens to what is really in
// the air. Main thread.
#pragma once

#include <functional>

#include "platform/bluetooth.h"
#include "platform/run_loop.h"

namespace halvora {

class Radio {
 public:
  virtual ~Radio() = default;
  virtual RunLoop& loop() = 0;
  virtual BluetoothCentral& bluetooth() = 0;
  /// Runs turns until `isDone`, which is asked often enough for a user who waits.
  virtual void runUntil(const std::function<bool()>& isDone) = 0;
};

}  // namespace halvora
