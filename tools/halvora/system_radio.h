// SPDX-License-Identifier: Apache-2.0
// The machine's own radio, by the system's Bluetooth daemon. Main thread.
#pragma once

#include <memory>

#include "tools/halvora/radio.h"

namespace halvora {

/// Never null; whether there is an adapter shows in its state.
std::unique_ptr<Radio> openSystemRadio();

}  // namespace halvora
