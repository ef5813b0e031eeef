// SPDX-License-Identifier: Apache-2.0
// What a phone has and Qt has no word for. A host hands in what its machine offers; what is absent
// is a quiet nothing. The objects outlive the platform they are handed to; all calls come on the
// main thread.
#pragma once

#include <functional>

#include "halvora/platform/battery.h"
#include "halvora/platform/bluetooth.h"
#include "halvora/platform/haptics.h"
#include "halvora/platform/torch.h"

namespace halvora {

struct QtPlatformServices {
  BluetoothCentral* bluetooth = nullptr;
  Haptics* haptics = nullptr;
  Torch* torch = nullptr;
  const Battery* battery = nullptr;
  /// The backlight's level, 0 to 1. Without both of these the screen counts as fully lit.
  std::function<double()> brightness = {};
  std::function<void(double level)> setBrightness = {};
  /// Keeps the screen from dimming and locking by itself; called only when that changes.
  std::function<void(bool disabled)> setIdleTimerDisabled = {};
  std::function<void(bool hidden)> setStatusBarHidden = {};
  /// Calls from then on whenever the machine is about to sleep, and when it is awake again.
  std::function<void(std::function<void(bool isAsleep)> told)> watchSleep = {};
  /// Leaves for the system's page of settings for this application.
  std::function<void()> openSettings = {};
};

}  // namespace halvora
