// SPDX-License-Identifier: Apache-2.0
// `halvora show check` and `halvora show compile`. Main thread.
#pragma once

#include <memory>

#include "apps/halvora/command.h"

namespace halvora {

std::unique_ptr<ToolCommand> makeShowCheckCommand();
std::unique_ptr<ToolCommand> makeShowCompileCommand();

}  // namespace halvora
