// SPDX-License-Identifier: Apache-2.0
// Who has a name on the bus, and who sent a message. Any program may send a signal to another one
// alone, past the bus's matches, and the bus library's own do not look at who sent it; what the bus
// says of the sender, nobody can make up. Main thread.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "adapters/linux/bus/bus_connection.h"

namespace halvora {

/// The sender by its own name on the bus, or by the bus's, "org.freedesktop.DBus".
bool isFrom(sd_bus_message* message, std::string_view sender);

/// The own names of who had the name and of who has it now; empty for nobody. They live for the
/// call.
using NameChanged = std::function<void(std::string_view before, std::string_view now)>;

/// Tells, for as long as the slot lives, whenever another one has the name, and nobody can make
/// that up.
BusSlot watchName(BusConnection& connection, const std::string& name, NameChanged changed);
/// Tells once who has the name; not at all if the bus does not say it.
BusSlot askForOwner(BusConnection& connection, const std::string& name,
                    std::function<void(std::string_view owner)> answered);

}  // namespace halvora
