// SPDX-License-Identifier: Apache-2.0
// `halvora packet`: show packets as JSON, and back.
#pragma once

#include <memory>

#include "apps/halvora/command.h"

namespace halvora {

std::unique_ptr<ToolCommand> makePacketDecodeCommand();
std::unique_ptr<ToolCommand> makePacketEncodeCommand();

}  // namespace halvora
