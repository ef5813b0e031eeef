// SPDX-License-Identifier: Apache-2.0
// This machine as a phone, whole: what Qt has, the system's libraries and files, and on Linux its
// radio, torch, backlight, haptics, idle inhibitor and settings page. A host makes one and keeps it
// for as long as its engine, or uses the process's one. Main thread; needs an application object.
#pragma once

#include <memory>

#include "adapters/qt/qt_platform.h"
#include "adapters/system/qt_linux_services.h"
#include "faces/qt/system_wishes.h"
#include "halvora/engine.h"
#include "halvora/platform/platform.h"
#include "halvora/platform/run_loop.h"

namespace halvora {

class SystemPhone {
 public:
  /// The process's one, on which the process's one engine stands. The first call makes it, of those
  /// options; it is never destroyed.
  static SystemPhone& sharedInstance(const QtPlatformOptions& options = {},
                                     const QtLinuxOptions& services = {});

  explicit SystemPhone(const QtPlatformOptions& options = {}, const QtLinuxOptions& services = {});
  ~SystemPhone();
  SystemPhone(const SystemPhone&) = delete;
  SystemPhone& operator=(const SystemPhone&) = delete;

  RunLoop& runLoop();
  const Platform& platform() const;
  /// What an engine on this phone is made with.
  const EngineOptions& engineOptions() const;
  /// How its radio is doing; of a build without one, that it is not.
  BluetoothDiagnostics bluetoothDiagnostics() const;
  /// What its user wants of everything that is shown, for `HalvoraHost::install`; in a build
  /// without the services of a Linux system nothing is known of that.
  SystemWishes& wishes();

 private:
  struct Parts;

  std::unique_ptr<Parts> parts_;
};

}  // namespace halvora
