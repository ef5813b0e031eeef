// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/bus/bluez_messages.h"

#include <algorithm>
#include <string_view>

#include "adapters/linux/bus/bus_dictionary.h"

namespace halvora {

namespace {

constexpr std::string_view kMonitorType = "or_patterns";

bool skip(sd_bus_message* message, const char* type) {
  return sd_bus_message_skip(message, type) >= 0;
}

bool readBytes(sd_bus_message* message, std::span<const std::uint8_t>& bytes) {
  const void* begin = nullptr;
  std::size_t size = 0;
  if (!entered(sd_bus_message_enter_container(message, 'v', "ay")) ||
      sd_bus_message_read_array(message, 'y', &begin, &size) < 0) {
    return false;
  }
  bytes = {static_cast<const std::uint8_t*>(begin), size};
  return left(sd_bus_message_exit_container(message));
}

bool readFlag(sd_bus_message* message, std::optional<bool>& flag) {
  int value = 0;
  if (sd_bus_message_read(message, "v", "b", &value) < 0) return false;
  flag = value != 0;
  return true;
}

bool readMonitorTypes(sd_bus_message* message, bool& hasMonitors) {
  if (!entered(sd_bus_message_enter_container(message, 'v', "as")) ||
      !entered(sd_bus_message_enter_container(message, 'a', "s"))) {
    return false;
  }
  const char* type = nullptr;
  int more = 0;
  while ((more = sd_bus_message_read_basic(message, 's', &type)) > 0) {
    hasMonitors = hasMonitors || type == kMonitorType;
  }
  return more == 0 && left(sd_bus_message_exit_container(message)) &&
         left(sd_bus_message_exit_container(message));
}

bool readMonitorManager(sd_bus_message* message, AdapterNews& news) {
  return forEachEntry(message, kProperties, [&](const char* name) {
    if (name != std::string_view("SupportedMonitorTypes")) return skip(message, "v");
    return readMonitorTypes(message, news.hasMonitors);
  });
}

}  // namespace

bool CompanyData::assign(std::span<const std::uint8_t> rest) {
  if (rest.size() > bytes_.size() - kShowPrefix.size()) return false;
  std::ranges::copy(rest, std::ranges::copy(kShowPrefix, bytes_.begin()).out);
  size_ = kShowPrefix.size() + rest.size();
  return true;
}

DeviceNews readManufacturerData(sd_bus_message* message, CompanyData& data) {
  if (!entered(sd_bus_message_enter_container(message, 'v', "a{qv}")) ||
      !entered(sd_bus_message_enter_container(message, 'a', "{qv}"))) {
    return DeviceNews::malformed;
  }
  int more = 0;
  while ((more = sd_bus_message_enter_container(message, 'e', "qv")) > 0) {
    std::uint16_t company = 0;
    if (sd_bus_message_read_basic(message, 'q', &company) <= 0) return DeviceNews::malformed;
    if (company == kShowCompany) {
      std::span<const std::uint8_t> rest;
      const bool isRead = readBytes(message, rest) && data.assign(rest);
      return isRead ? DeviceNews::ours : DeviceNews::malformed;
    }
    if (!skip(message, "v") || !left(sd_bus_message_exit_container(message))) {
      return DeviceNews::malformed;
    }
  }
  return more == 0 ? DeviceNews::foreign : DeviceNews::malformed;
}

DeviceNews readDevice(sd_bus_message* message, CompanyData& data) {
  std::optional<DeviceNews> news;
  const bool isWhole = forEachEntry(message, kProperties, [&](const char* name) {
    if (name != std::string_view("ManufacturerData")) return skip(message, "v");
    news = readManufacturerData(message, data);
    return false;
  });
  return news.value_or(isWhole ? DeviceNews::foreign : DeviceNews::malformed);
}

bool readAdapter(sd_bus_message* message, AdapterNews& news) {
  return forEachEntry(message, kProperties, [&](const char* name) {
    if (name != std::string_view("Powered")) return skip(message, "v");
    return readFlag(message, news.isPowered);
  });
}

bool readAdapterObject(sd_bus_message* message, AdapterNews& news) {
  return forEachEntry(message, kInterfaces, [&](const char* name) {
    if (name == std::string_view(kMonitorManagerInterface))
      return readMonitorManager(message, news);
    if (name != std::string_view(kAdapterInterface)) return skip(message, "a{sv}");
    news.isAdapter = true;
    return readAdapter(message, news);
  });
}

DeviceNews readDeviceObject(sd_bus_message* message, CompanyData& data) {
  std::optional<DeviceNews> news;
  const bool isWhole = forEachEntry(message, kInterfaces, [&](const char* name) {
    if (name != std::string_view(kDeviceInterface)) return skip(message, "a{sv}");
    news = readDevice(message, data);
    return false;
  });
  return news.value_or(isWhole ? DeviceNews::foreign : DeviceNews::malformed);
}

}  // namespace halvora
