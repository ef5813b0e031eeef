// SPDX-License-Identifier: Apache-2.0
// The machine's own radio, by the system's Bluetooth daemon. Main thread.
#pragma once

#include <memory>
#include <string>

#include "venue/air/radio.h"

namespace halvora {

/// Never null; whether there is an adapter shows in its state. Only that adapter ("hci1") is used,
/// or whichever works if none is named. On the system's bus, or the one at `busAddress`.
std::unique_ptr<Radio> openSystemRadio(const std::string& adapter = {},
                                       const std::string& busAddress = {});

}  // namespace halvora
