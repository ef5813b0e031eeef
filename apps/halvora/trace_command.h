// SPDX-License-Identifier: Apache-2.0
// `halvora trace`: what one phone does during a show.
#pragma once

#include <memory>

#include "apps/halvora/command.h"

namespace halvora {

std::unique_ptr<ToolCommand> makeTraceCommand();

}  // namespace halvora
