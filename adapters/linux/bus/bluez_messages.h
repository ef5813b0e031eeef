// SPDX-License-Identifier: Apache-2.0
// Reads what the Bluetooth daemon sends. Nothing is taken on trust: a value whose type is not the
// one agreed on makes the message malformed, and sizes are bounded. Values, any thread.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

#include <systemd/sd-bus.h>

#include "adapters/linux/bluetooth/show_devices.h"
#include "halvora/platform/bluetooth.h"

namespace halvora {

/// The daemon's name, and what of its objects is spoken with.
inline constexpr const char* kBluez = "org.bluez";
inline constexpr const char* kObjectManagerInterface = "org.freedesktop.DBus.ObjectManager";
inline constexpr const char* kPropertiesInterface = "org.freedesktop.DBus.Properties";
inline constexpr const char* kAdapterInterface = "org.bluez.Adapter1";
inline constexpr const char* kDeviceInterface = "org.bluez.Device1";
inline constexpr const char* kMonitorManagerInterface = "org.bluez.AdvertisementMonitorManager1";

/// The packets' prefix as the daemon counts companies.
inline constexpr std::uint16_t kShowCompany = kShowPrefix[0] | kShowPrefix[1] << 8;

/// Manufacturer data as on the air: the company's id, then the rest.
class CompanyData {
 public:
  /// False if that is more than an advertisement holds.
  bool assign(std::span<const std::uint8_t> rest);
  std::span<const std::uint8_t> bytes() const {
    return std::span<const std::uint8_t>(bytes_).first(size_);
  }

 private:
  std::array<std::uint8_t, kLongestCompanyData> bytes_;
  std::size_t size_ = 0;
};

enum class DeviceNews : std::uint8_t { foreign, ours, malformed };

/// At a device's properties, a{sv}: fills `data` if our company's is among them, and reads no
/// further.
DeviceNews readDevice(sd_bus_message* message, CompanyData& data);
/// At a variant that is a device's ManufacturerData.
DeviceNews readManufacturerData(sd_bus_message* message, CompanyData& data);

/// What a message says of an adapter.
struct AdapterNews {
  bool isAdapter = false;
  bool hasMonitors = false;
  std::optional<bool> isPowered;
};

/// At an adapter's properties, a{sv}. False if they are malformed.
bool readAdapter(sd_bus_message* message, AdapterNews& news);

/// At an object's interfaces, a{sa{sv}}: what they say of an adapter; the interfaces of devices are
/// skipped. False if they are malformed.
bool readAdapterObject(sd_bus_message* message, AdapterNews& news);
/// The same place: what they say of a device. Foreign where there is none.
DeviceNews readDeviceObject(sd_bus_message* message, CompanyData& data);

}  // namespace halvora
