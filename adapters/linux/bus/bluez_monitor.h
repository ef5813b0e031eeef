// SPDX-License-Identifier: Apache-2.0
// The object that this process shows to the Bluetooth daemon: one monitor, for advertisements with
// our company's manufacturer data. It is there for as long as it lives, and the daemon calls it.
// Owned by `BluezDaemon`; main thread.
#pragma once

#include <string_view>

#include "adapters/linux/bus/bus_connection.h"

namespace halvora {

class BluezMonitorCalls {
 public:
  virtual ~BluezMonitorCalls() = default;
  /// Whether a message comes from the daemon; what anybody else calls is refused.
  virtual bool isFromDaemon(sd_bus_message* message) const = 0;
  virtual void monitorActivated() = 0;
  virtual void monitorReleased() = 0;
  virtual void deviceFound(std::string_view path) = 0;
  /// One of these has thrown.
  virtual void callFailed() noexcept = 0;
};

class BluezMonitor {
 public:
  /// The path that a monitor is registered by.
  static constexpr const char* kRoot = "/org/halvora/monitors";

  explicit BluezMonitor(BluezMonitorCalls& calls) : calls_(calls) {}

  /// False if the bus would not have it.
  bool show(sd_bus* bus);
  void hide();

 private:
  BluezMonitorCalls& calls_;
  BusSlot manager_;
  BusSlot object_;
};

}  // namespace halvora
