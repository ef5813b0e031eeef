// SPDX-License-Identifier: Apache-2.0
// The commands of the `halvora` tool. Exit status 0: done; 2: the command line or an input file is
// unusable, nothing was written; 1: any other failure.
#pragma once

#include "apps/halvora/command.h"

namespace halvora {

CommandResult runCommand(int argumentCount, const char* const* arguments, const Outside& outside,
                         const Output& output);

}  // namespace halvora
