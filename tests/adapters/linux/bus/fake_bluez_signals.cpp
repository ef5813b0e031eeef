// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <span>

#include <gtest/gtest.h>

#include "tests/adapters/linux/bus/fake_bluez.h"

namespace halvora {

namespace {

constexpr const char* kObjectManager = "org.freedesktop.DBus.ObjectManager";
constexpr const char* kPropertiesInterface = "org.freedesktop.DBus.Properties";
constexpr int kRssi = -60;

}  // namespace

void FakeBluez::signal(const std::string& path, const char* interface, const char* member,
                       const std::function<void(sd_bus_message*)>& fill) {
  if (connection_.bus() == nullptr) return;
  sd_bus_message* message = nullptr;
  ASSERT_GE(sd_bus_message_new_signal(connection_.bus(), &message, path.c_str(), interface, member),
            0);
  const BusMessage owned(message);
  fill(message);
  ASSERT_GE(sd_bus_send(connection_.bus(), message, nullptr), 0);
  connection_.sent();
}

void FakeBluez::addAdapter(const std::string& name, bool isPowered, bool hasMonitors) {
  const std::string path = "/org/bluez/" + name;
  Adapter& adapter = adapters_[path];
  adapter = {isPowered, hasMonitors, canAdvertise, {}};
  signal("/", kObjectManager, "InterfacesAdded", [&](sd_bus_message* message) {
    sd_bus_message_append(message, "o", path.c_str());
    appendAdapter(message, adapter);
  });
}

void FakeBluez::removeAdapter(const std::string& name) {
  const std::string path = "/org/bluez/" + name;
  std::erase_if(monitors_, [&](const Monitor& monitor) { return monitor.adapter == path; });
  endDiscovery(path, adapters_.at(path));
  adapters_.erase(path);
  removeObject(path, "org.bluez.Adapter1");
}

void FakeBluez::setPowered(const std::string& name, bool isPowered) {
  const std::string path = "/org/bluez/" + name;
  Adapter& adapter = adapters_.at(path);
  adapter.isPowered = isPowered;
  tellFlag(path, "Powered", isPowered);
  if (isPowered || adapter.discoverers.empty()) return;
  adapter.discoverers.clear();
  tellFlag(path, "Discovering", false);
}

// The last to stop looking takes all that was found along.
void FakeBluez::endDiscovery(const std::string& path, Adapter& adapter) {
  if (!adapter.discoverers.empty()) return;
  std::vector<std::string> found;
  for (const auto& [device, value] : devices_) {
    if (value.adapter == path) found.push_back(device);
  }
  for (const std::string& device : found) {
    devices_.erase(device);
    removeObject(device, "org.bluez.Device1");
  }
  tellFlag(path, "Discovering", false);
}

void FakeBluez::advertise(const std::string& address, const Bytes& rest, std::uint16_t company) {
  const std::string adapterPath = earPath();
  const Adapter& adapter = adapters_.at(adapterPath);
  if (!adapter.isPowered) return;
  const bool isDiscovered = !adapter.discoverers.empty();
  if (isDiscovered && holdsRepeatsBack && !heldBack_.insert(address).second) return;
  Bytes content = {static_cast<std::uint8_t>(company & 0xFF),
                   static_cast<std::uint8_t>(company >> 8)};
  content.insert(content.end(), rest.begin(), rest.end());
  std::vector<const Monitor*> matching;
  for (const Monitor& monitor : monitors_) {
    const bool isMatch =
        !monitor.pattern.empty() && monitor.pattern.size() <= content.size() &&
        std::ranges::equal(monitor.pattern,
                           std::span<const std::uint8_t>(content).first(monitor.pattern.size()));
    if (isMatch) matching.push_back(&monitor);
  }
  if (!isDiscovered && matching.empty()) return;

  const std::string path = pathOf(address);
  const auto tellFound = [&] {
    for (const Monitor* monitor : matching) callMonitor(*monitor, "DeviceFound", path);
  };
  const auto known = devices_.find(path);
  const bool isNew = known == devices_.end();
  const bool isChanged = isNew || known->second.data != rest || known->second.company != company;
  Device& device = devices_[path];
  device = {adapterPath, company, rest};
  if (tellsFoundFirst && !isNew) tellFound();
  if (isNew) {
    tellAdded(path, device);
  } else if (isChanged || (isDiscovered && wantsRepeats)) {
    tellChanged(path, device, true);
  } else if (isDiscovered) {
    tellChanged(path, device, false);
  }
  if (!tellsFoundFirst || isNew) tellFound();
}

void FakeBluez::expire(const std::string& address) {
  devices_.erase(pathOf(address));
  removeObject(pathOf(address), "org.bluez.Device1");
}

void FakeBluez::removeObject(const std::string& path, const char* interface) {
  signal("/", kObjectManager, "InterfacesRemoved", [&](sd_bus_message* message) {
    sd_bus_message_append(message, "oas", path.c_str(), 2, "org.freedesktop.DBus.Properties",
                          interface);
  });
}

void FakeBluez::tellAdded(const std::string& path, const Device& device) {
  signal("/", kObjectManager, "InterfacesAdded", [&](sd_bus_message* message) {
    sd_bus_message_append(message, "o", path.c_str());
    appendDevice(message, device);
  });
}

void FakeBluez::tellChanged(const std::string& path, const Device& device, bool withData) {
  signal(path, kPropertiesInterface, "PropertiesChanged", [&](sd_bus_message* message) {
    sd_bus_message_append(message, "s", "org.bluez.Device1");
    sd_bus_message_open_container(message, 'a', "{sv}");
    sd_bus_message_append(message, "{sv}", "RSSI", "n", kRssi);
    if (withData) {
      sd_bus_message_open_container(message, 'e', "sv");
      sd_bus_message_append(message, "s", "ManufacturerData");
      appendData(message, device);
      sd_bus_message_close_container(message);
    }
    sd_bus_message_close_container(message);
    sd_bus_message_append(message, "as", 0);
  });
}

void FakeBluez::tellFlag(const std::string& path, const char* name, bool value) {
  signal(path, kPropertiesInterface, "PropertiesChanged", [&](sd_bus_message* message) {
    sd_bus_message_append(message, "sa{sv}as", "org.bluez.Adapter1", 1, name, "b",
                          static_cast<int>(value), 0);
  });
}

void FakeBluez::appendAdapter(sd_bus_message* message, const Adapter& adapter) {
  sd_bus_message_open_container(message, 'a', "{sa{sv}}");
  sd_bus_message_append(message, "{sa{sv}}", "org.freedesktop.DBus.Introspectable", 0);
  sd_bus_message_append(message, "{sa{sv}}", "org.bluez.Adapter1", 3, "Address", "s",
                        "00:11:22:33:44:55", "Powered", "b", static_cast<int>(adapter.isPowered),
                        "Discovering", "b", 0);
  if (adapter.canAdvertise) {
    sd_bus_message_append(message, "{sa{sv}}", "org.bluez.LEAdvertisingManager1", 2,
                          "ActiveInstances", "y", 0, "SupportedInstances", "y", 5);
  }
  if (adapter.hasMonitors) {
    sd_bus_message_append(message, "{sa{sv}}", "org.bluez.AdvertisementMonitorManager1", 2,
                          "SupportedMonitorTypes", "as", 1, "or_patterns", "SupportedFeatures",
                          "as", 0);
  }
  sd_bus_message_close_container(message);
}

void FakeBluez::appendDevice(sd_bus_message* message, const Device& device) {
  sd_bus_message_open_container(message, 'a', "{sa{sv}}");
  sd_bus_message_append(message, "{sa{sv}}", "org.freedesktop.DBus.Introspectable", 0);
  sd_bus_message_open_container(message, 'e', "sa{sv}");
  sd_bus_message_append(message, "s", "org.bluez.Device1");
  sd_bus_message_open_container(message, 'a', "{sv}");
  sd_bus_message_append(message, "{sv}", "AddressType", "s", "random");
  sd_bus_message_append(message, "{sv}", "Paired", "b", 0);
  sd_bus_message_append(message, "{sv}", "RSSI", "n", kRssi);
  sd_bus_message_append(message, "{sv}", "UUIDs", "as", 1, "0000180f-0000-1000-8000-00805f9b34fb");
  sd_bus_message_open_container(message, 'e', "sv");
  sd_bus_message_append(message, "s", "ManufacturerData");
  appendData(message, device);
  for (int level = 0; level < 4; ++level) sd_bus_message_close_container(message);
}

void FakeBluez::appendData(sd_bus_message* message, const Device& device) {
  sd_bus_message_open_container(message, 'v', "a{qv}");
  sd_bus_message_open_container(message, 'a', "{qv}");
  sd_bus_message_open_container(message, 'e', "qv");
  sd_bus_message_append(message, "q", device.company);
  sd_bus_message_open_container(message, 'v', "ay");
  sd_bus_message_append_array(message, 'y', device.data.data(), device.data.size());
  for (int level = 0; level < 4; ++level) sd_bus_message_close_container(message);
}

}  // namespace halvora
