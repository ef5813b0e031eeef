// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/bus/bluez_monitor.h"

#include <array>

#include "adapters/linux/bus/bluez_messages.h"

namespace halvora {

namespace {

constexpr const char* kObject = "/org/halvora/monitors/show";
constexpr const char* kInterface = "org.bluez.AdvertisementMonitor1";
/// The kind of data in an advertisement that begins with a company's id.
constexpr std::uint8_t kManufacturerDataType = 0xFF;

int appendType(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
               sd_bus_error*) {
  return sd_bus_message_append(reply, "s", "or_patterns");
}

// One pattern: from byte 0 of the data of that type.
int appendPatterns(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
                   sd_bus_error*) {
  return sd_bus_message_append(reply, "a(yyay)", 1, 0, kManufacturerDataType, 2, kShowPrefix[0],
                               kShowPrefix[1]);
}

// Nothing may be thrown through the bus library, which is C.
template <auto act>
int handle(sd_bus_message* message, void* data, sd_bus_error* error) noexcept {
  auto& calls = *static_cast<BluezMonitorCalls*>(data);
  if (!calls.isFromDaemon(message)) {
    return sd_bus_error_set(error, SD_BUS_ERROR_ACCESS_DENIED, "not the Bluetooth daemon");
  }
  const int result = sd_bus_reply_method_return(message, nullptr);
  try {
    act(calls, message);
  } catch (...) {
    calls.callFailed();
  }
  return result < 0 ? result : 1;
}

void found(BluezMonitorCalls& calls, sd_bus_message* message) {
  const char* path = nullptr;
  if (sd_bus_message_read_basic(message, 'o', &path) > 0) calls.deviceFound(path);
}

constexpr auto kReleased = [](BluezMonitorCalls& calls, sd_bus_message*) {
  calls.monitorReleased();
};
constexpr auto kActivated = [](BluezMonitorCalls& calls, sd_bus_message*) {
  calls.monitorActivated();
};
constexpr auto kLost = [](BluezMonitorCalls&, sd_bus_message*) {};

// The daemon is told apart by its name on the bus, not by its privileges: those would cost a
// question to the bus with each call.
constexpr std::uint64_t kAnybody = SD_BUS_VTABLE_UNPRIVILEGED;

const sd_bus_vtable kTable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Release", "", "", handle<kReleased>, kAnybody),
    SD_BUS_METHOD("Activate", "", "", handle<kActivated>, kAnybody),
    SD_BUS_METHOD("DeviceFound", "o", "", handle<found>, kAnybody),
    SD_BUS_METHOD("DeviceLost", "o", "", handle<kLost>, kAnybody),
    SD_BUS_PROPERTY("Type", "s", appendType, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Patterns", "a(yyay)", appendPatterns, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_VTABLE_END,
};

}  // namespace

bool BluezMonitor::show(sd_bus* bus) {
  sd_bus_slot* manager = nullptr;
  sd_bus_slot* object = nullptr;
  if (sd_bus_add_object_manager(bus, &manager, kRoot) < 0) return false;
  manager_.reset(manager);
  if (sd_bus_add_object_vtable(bus, &object, kObject, kInterface, kTable, &calls_) < 0) {
    return false;
  }
  object_.reset(object);
  return true;
}

void BluezMonitor::hide() {
  object_.reset();
  manager_.reset();
}

}  // namespace halvora
