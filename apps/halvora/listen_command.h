// SPDX-License-Identifier: Apache-2.0
// `halvora listen`: the show packets that are in the air.
#pragma once

#include <memory>

#include "apps/halvora/command.h"

namespace halvora {

std::unique_ptr<ToolCommand> makeListenCommand();

}  // namespace halvora
