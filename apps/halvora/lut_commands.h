// SPDX-License-Identifier: Apache-2.0
// `halvora lut`: seat tables as the kit keeps them.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "apps/halvora/command.h"
#include "pixelmap/seat_lut.h"

namespace halvora {

std::unique_ptr<ToolCommand> makeLutBuildCommand();
std::unique_ptr<ToolCommand> makeLutShowCommand();

/// A seat as an option says it: "X,Y", two whole numbers, 0 or more.
std::optional<SeatPosition> seatOf(std::string_view text);
CommandResult notASeat(const std::string& text);
CommandResult notAFolder(const std::string& text);

}  // namespace halvora
