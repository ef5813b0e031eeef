// SPDX-License-Identifier: Apache-2.0
// `halvora crowd`: a whole venue in virtual time. Main thread.
#pragma once

#include <memory>

#include "apps/halvora/command.h"

namespace halvora {

std::unique_ptr<ToolCommand> makeCrowdCommand();
std::unique_ptr<ToolCommand> makeCrowdMergeCommand();

}  // namespace halvora
