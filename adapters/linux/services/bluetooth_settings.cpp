// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/services/bluetooth_settings.h"

#include <utility>

#include "adapters/linux/bus/bluez_messages.h"

namespace halvora {

namespace {

constexpr Duration kLongestSwitching = milliseconds(5000);

struct SettingsRow {
  std::string_view desktop;
  const char* program;
  std::vector<std::string> arguments;
};

const std::vector<SettingsRow>& settingsRows() {
  static const std::vector<SettingsRow> kRows = {
      {"GNOME", "gnome-control-center", {"bluetooth"}},
      {"KDE", "plasma-settings", {"-m", "kcm_bluetooth"}},
      {"KDE", "systemsettings", {"kcm_bluetooth"}},
      {"KDE", "systemsettings5", {"kcm_bluetooth"}},
      {"Lomiri", "lomiri-url-dispatcher", {"settings:///system/bluetooth"}},
      {"X-Cinnamon", "blueberry", {}},
      {"", "blueman-manager", {}},
  };
  return kRows;
}

}  // namespace

std::vector<SettingsCommand> settingsCommands(std::string_view desktops) {
  std::vector<SettingsCommand> own;
  std::vector<SettingsCommand> others;
  const std::string list = ":" + std::string(desktops) + ":";
  for (const SettingsRow& row : settingsRows()) {
    const bool isOwn = list.find(":" + std::string(row.desktop) + ":") != std::string::npos;
    (isOwn ? own : others).push_back({row.program, row.arguments});
  }
  own.insert(own.end(), others.begin(), others.end());
  return own;
}

BluetoothSettings::BluetoothSettings(Bus& system, const BluezService& radio,
                                     std::function<void()> openPage, std::string adapter)
    : radio_(radio), openPage_(std::move(openPage)), adapter_(std::move(adapter)), bus_(system) {}

void BluetoothSettings::open() {
  if (call_.isPending()) return;
  const BluezAdapter* off = nullptr;
  for (const BluezAdapter& one : radio_.adapters()) {
    if (!adapter_.empty() && adapter_ != one.name()) continue;
    if (one.isPowered) return openPage_();
    if (off == nullptr) off = &one;
  }
  if (off == nullptr) return openPage_();
  const BusObject adapter{kBluez, off->path.c_str(), kPropertiesInterface};
  const BusMessage message =
      bus_.newCall(adapter, "Set", "ssv", kAdapterInterface, "Powered", "b", 1);
  const auto answered = [this](sd_bus_message* reply) {
    if (isError(reply)) openPage_();
  };
  if (!call_.send(bus_, message, kLongestSwitching, answered)) openPage_();
}

}  // namespace halvora
