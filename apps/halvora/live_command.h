// SPDX-License-Identifier: Apache-2.0
// `halvora live`. Main thread.
#pragma once

#include <memory>

#include "apps/halvora/command.h"

namespace halvora {

std::unique_ptr<ToolCommand> makeLiveCommand();

}  // namespace halvora
