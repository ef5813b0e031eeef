// SPDX-License-Identifier: Apache-2.0
// The radio of a machine that has none, or no adapter for it: it says so. Owned by QtPlatform; main
// thread.
#pragma once

#include <memory>

#include "halvora/platform/bluetooth.h"
#include "halvora/platform/run_loop.h"

namespace halvora {

/// Allowed, but there is no radio: "Bluetooth is off", and never a question to the user.
class AbsentBluetooth final : public BluetoothCentral {
 public:
  explicit AbsentBluetooth(RunLoop& loop) : loop_(loop) {}
  BluetoothAuthorization authorization() const override {
    return BluetoothAuthorization::allowedAlways;
  }
  std::unique_ptr<CentralManager> makeManager(CentralManagerDelegate& delegate) override;

 private:
  RunLoop& loop_;
};

}  // namespace halvora
