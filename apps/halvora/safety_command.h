// SPDX-License-Identifier: Apache-2.0
// `halvora safety`: what a show does to eyes.
#pragma once

#include <memory>

#include "apps/halvora/command.h"

namespace halvora {

std::unique_ptr<ToolCommand> makeSafetyCommand();

}  // namespace halvora
