// SPDX-License-Identifier: Apache-2.0
// A radio, and the loop on which it is heard: for the one command that listens to what is really in
// the air. Main thread.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "adapters/standard/system_clock.h"
#include "halvora/platform/bluetooth.h"
#include "halvora/platform/run_loop.h"

namespace halvora {

/// What a radio knows of the machine's adapters, as the system calls them ("hci0"); empty where it
/// knows of none.
struct RadioAdapters {
  std::vector<std::string> all;
  /// The one that is scanned on now.
  std::string scanning;
  /// What the system said of the last thing that failed.
  std::string error;
};

class Radio {
 public:
  virtual ~Radio() = default;
  virtual RunLoop& loop() = 0;
  /// What tags are compared with.
  virtual Date date() const { return SystemWallClock().now(); }
  virtual BluetoothCentral& bluetooth() = 0;
  virtual RadioAdapters adapters() const { return {}; }
  /// Runs turns until `isDone`, which is asked often enough for a user who waits.
  virtual void runUntil(const std::function<bool()>& isDone) = 0;
};

}  // namespace halvora
