// SPDX-License-Identifier: Apache-2.0
// `halvora transmit`: show packets in the air, from this machine's own adapter.
#pragma once

#include <memory>

#include "apps/halvora/command.h"

namespace halvora {

std::unique_ptr<ToolCommand> makeTransmitCommand();

}  // namespace halvora
