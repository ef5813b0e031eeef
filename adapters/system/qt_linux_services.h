// SPDX-License-Identifier: Apache-2.0
// A Linux phone's or desktop's services for `QtPlatform`: Bluetooth, haptics, torch, backlight,
// idle inhibitor and settings page, from the system's and the session's bus and from the kernel's
// lights. What is not there is a quiet nothing. The host owns it, makes it of the platform's run
// loop, and keeps it until its engine is gone; main thread.
#pragma once

#include <memory>
#include <string>

#include "adapters/linux/bluetooth/bluez_central.h"
#include "adapters/qt/qt_platform_services.h"
#include "faces/qt/system_wishes.h"
#include "halvora/platform/run_loop.h"

namespace halvora {

struct QtLinuxOptions {
  /// The buses; empty for those of the environment.
  std::string systemBus = {};
  std::string sessionBus = {};
  /// Where the kernel shows its lights; empty for where it does.
  std::string lights = {};
  /// What the user is told of why the screen stays on; empty for "Light show".
  std::string reason = {};
  /// The one Bluetooth adapter to listen on, as the system calls it ("hci1"), waited for if it is
  /// not there; empty for whichever works. `bluetoothDiagnostics` says which that is.
  std::string adapter = {};
  /// Where the kernel shows its power supplies; empty for where it does.
  std::string powerSupplies = {};
  /// A signal that asks the process to end (TERM, INT, HUP) ends the application's event loop, so
  /// that the phone is given back; the second one ends the process. The host's own handlers stay.
  bool endsBySignals = false;
  /// The file in which a process notes which lights it has changed and not given back, so that the
  /// next start does it for one that was killed; empty for none. A phone whose host limits flashing
  /// has these two by itself, the file in the user's runtime folder.
  std::string journal = {};
};

class QtLinuxServices {
 public:
  explicit QtLinuxServices(RunLoop& loop, const QtLinuxOptions& options = {});
  ~QtLinuxServices();
  QtLinuxServices(const QtLinuxServices&) = delete;
  QtLinuxServices& operator=(const QtLinuxServices&) = delete;

  /// For `QtPlatform::use`.
  QtPlatformServices services();
  BluetoothDiagnostics bluetoothDiagnostics() const;
  /// What a show has changed of the lights is as it was, at once; for an application that ends.
  void giveBack();
  /// What the desktop's portal says that its user wants, for `HalvoraHost::install`.
  SystemWishes& wishes();

 private:
  struct Parts;

  std::unique_ptr<Parts> parts_;
};

}  // namespace halvora
