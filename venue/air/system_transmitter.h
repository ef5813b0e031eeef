// SPDX-License-Identifier: Apache-2.0
// A transmitter on the machine's own adapter, by the system's Bluetooth daemon. Main thread.
#pragma once

#include <memory>
#include <string>

#include "halvora/platform/descriptors.h"
#include "venue/air/transmitter.h"

namespace halvora {

/// Never null; whether there is an adapter shows when it is opened. On the system's bus, or the one
/// at `busAddress`.
std::unique_ptr<Transmitter> openSystemTransmitter(const std::string& busAddress = {});

/// One of several on a loop that serves all of them and outlives it.
std::unique_ptr<Advertiser> makeSystemAdvertiser(RunLoop& loop, Descriptors& descriptors,
                                                 const std::string& busAddress = {});

}  // namespace halvora
