// SPDX-License-Identifier: Apache-2.0
// This machine as the ground of a show: its clock, its standard input and terminal, its radios.
// Main thread.
#pragma once

#include <functional>
#include <memory>

#include "halvora/platform/descriptors.h"
#include "venue/live/live_ground.h"

namespace halvora {

using MakeAdvertiser =
    std::function<std::unique_ptr<Advertiser>(RunLoop& loop, Descriptors& descriptors)>;

/// Absent is what makes advertisements where there is no Bluetooth. Throws std::system_error where
/// the process has no descriptor left. From then on the process outlives its terminal.
std::unique_ptr<LiveGround> openSystemGround(MakeAdvertiser makeAdvertiser);

}  // namespace halvora
