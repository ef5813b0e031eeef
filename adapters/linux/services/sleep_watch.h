// SPDX-License-Identifier: Apache-2.0
// Hears from the login daemon that the machine is about to sleep, and that it is awake again. It
// asks the daemon to wait a moment before it sleeps, so that what is given back arrives. Nobody but
// the daemon is believed. Where there is none, nothing is ever told. The host owns it; main thread.
#pragma once

#include <functional>
#include <string>

#include "adapters/linux/bus/bus.h"
#include "adapters/linux/services/owned_descriptor.h"

namespace halvora {

struct SleepSettings {
  /// How long the machine is held awake after it was told; the daemon waits five seconds at most.
  Duration delay = milliseconds(300);
  /// Between two tries to reach a bus or a daemon that is not there.
  Duration pause = milliseconds(60'000);
};

class SleepWatch {
 public:
  using Told = std::function<void(bool isAsleep)>;

  /// `application` is who asks, for the user.
  SleepWatch(RunLoop& loop, Bus& system, std::string application, Told told,
             const SleepSettings& settings = {});
  SleepWatch(const SleepWatch&) = delete;
  SleepWatch& operator=(const SleepWatch&) = delete;

  bool isAsleep() const { return isAsleep_; }
  /// Whether the daemon will wait.
  bool isWaitedFor() const { return delay_.isOpen(); }

 private:
  void opened();
  void lost();
  void ownerIs(std::string_view owner);
  void sleepChanged(sd_bus_message* message);
  void setAsleep(bool isAsleep);
  void reach();
  void askForDelay();

  RunLoop& loop_;
  Bus& bus_;
  const std::string application_;
  const Told told_;
  const SleepSettings settings_;
  /// The daemon's own name on the bus; empty for none.
  std::string login_;
  bool isAsleep_ = false;
  OwnedDescriptor delay_;
  BusSlot owners_;
  BusSlot answer_;
  BusSlot signals_;
  BusCall call_;
  Timer next_;
  Timer release_;
  const BusObserver observer_;
};

}  // namespace halvora
