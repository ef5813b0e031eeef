// SPDX-License-Identifier: Apache-2.0
// What the errors of the Bluetooth daemon, and of the bus in its place, mean. Values, any thread.
#pragma once

#include <string>

#include <systemd/sd-bus.h>

namespace halvora {

/// This process is not let in.
bool isRefusal(const sd_bus_error& error);
/// There is no daemon.
bool isAbsence(const sd_bus_error& error);
/// The error's name, and what was said beside it; bounded.
std::string textOf(const sd_bus_error& error);

}  // namespace halvora
