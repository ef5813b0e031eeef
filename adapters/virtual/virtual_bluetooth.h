// SPDX-License-Identifier: Apache-2.0
// A Bluetooth radio without air: whoever owns it puts advertisements on it and switches its power
// and permission. Works on any run loop, so a window plays from it too. Main thread.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "adapters/standard/radio_managers.h"
#include "adapters/virtual/log.h"
#include "halvora/platform/bluetooth.h"
#include "halvora/platform/run_loop.h"

namespace halvora {

enum class RadioAct : std::uint8_t { managerMade, scanStarted, scanStopped, scanRestarted };

class VirtualBluetooth final : public BluetoothCentral {
 public:
  explicit VirtualBluetooth(RunLoop& loop) : loop_(loop) {}

  BluetoothAuthorization authorization() const override { return authorization_; }
  std::unique_ptr<CentralManager> makeManager(CentralManagerDelegate& delegate) override;

  void setAuthorization(BluetoothAuthorization authorization) { authorization_ = authorization; }
  CentralState state() const { return state_; }
  /// A change is reported to every manager at once; without power no scan goes on.
  void setState(CentralState state);

  /// Puts one advertisement on the air. True if a manager heard it: it has power and scans.
  bool advertise(const Advertisement& advertisement);
  bool advertise(std::span<const std::uint8_t> manufacturerData) {
    return advertise(Advertisement{manufacturerData});
  }

  bool isScanning() const;

  Log<RadioAct> log;

 private:
  class Manager;

  RunLoop& loop_;
  BluetoothAuthorization authorization_ = BluetoothAuthorization::allowedAlways;
  CentralState state_ = CentralState::poweredOn;
  RadioManagers<Manager> managers_;
};

}  // namespace halvora
