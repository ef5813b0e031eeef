// SPDX-License-Identifier: Apache-2.0
// `halvora map`: seat map documents as the kit reads them.
#pragma once

#include <memory>

#include "tools/halvora/command.h"

namespace halvora {

std::unique_ptr<ToolCommand> makeMapDumpCommand();

}  // namespace halvora
