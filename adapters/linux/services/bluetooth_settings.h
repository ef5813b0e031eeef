// SPDX-License-Identifier: Apache-2.0
// What "open settings" means on Linux, where no application has a page of its own: an adapter
// without power is switched on, because the user has just asked for it; if there is nothing to
// switch, or it cannot be, the desktop's page of Bluetooth settings is opened. The host owns it;
// main thread.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/linux/bluetooth/bluez_service.h"
#include "adapters/linux/bus/bus.h"

namespace halvora {

/// A program and what it is given; found along the user's path.
struct SettingsCommand {
  std::string program;
  std::vector<std::string> arguments;
  friend bool operator==(const SettingsCommand&, const SettingsCommand&) = default;
};

/// What opens the page, best first: the desktop's own, then every other one. `desktops` is as in
/// the environment, such as "Phosh:GNOME".
std::vector<SettingsCommand> settingsCommands(std::string_view desktops);

class BluetoothSettings {
 public:
  /// `radio` says what adapters there are. `openPage` is called on the main thread, in a turn of
  /// its own or from within `open`. Only that adapter ("hci1") counts, or all if none is named.
  BluetoothSettings(Bus& system, const BluezService& radio, std::function<void()> openPage,
                    std::string adapter = {});
  BluetoothSettings(const BluetoothSettings&) = delete;
  BluetoothSettings& operator=(const BluetoothSettings&) = delete;

  /// Nothing happens while the last one is still under way.
  void open();

 private:
  const BluezService& radio_;
  const std::function<void()> openPage_;
  const std::string adapter_;
  Bus& bus_;
  BusCall call_;
};

}  // namespace halvora
