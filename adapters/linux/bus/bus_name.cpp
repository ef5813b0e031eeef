// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/bus/bus_name.h"

#include <utility>

namespace halvora {

namespace {

constexpr BusObject kBus{"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus"};

}  // namespace

bool isFrom(sd_bus_message* message, std::string_view sender) {
  const char* name = sd_bus_message_get_sender(message);
  return name != nullptr && name == sender;
}

BusSlot watchName(BusConnection& connection, const std::string& name, NameChanged changed) {
  const std::string rule =
      "type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',"
      "member='NameOwnerChanged',arg0='" +
      name + "'";
  return connection.match(rule, [changed = std::move(changed)](sd_bus_message* message) {
    const char* before = nullptr;
    const char* now = nullptr;
    if (!isFrom(message, kBus.service)) return;
    if (sd_bus_message_read(message, "sss", nullptr, &before, &now) > 0) changed(before, now);
  });
}

BusSlot askForOwner(BusConnection& connection, const std::string& name,
                    std::function<void(std::string_view owner)> answered) {
  const BusMessage call = connection.newCall(kBus, "GetNameOwner", "s", name.c_str());
  return connection.call(call, BusConnection::kUsualTime,
                         [answered = std::move(answered)](sd_bus_message* reply) {
                           const char* owner = nullptr;
                           if (sd_bus_message_is_method_error(reply, nullptr) != 0) return;
                           if (sd_bus_message_read(reply, "s", &owner) > 0) answered(owner);
                         });
}

}  // namespace halvora
