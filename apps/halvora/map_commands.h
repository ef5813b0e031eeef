// SPDX-License-Identifier: Apache-2.0
// `halvora map`: seat map documents as the kit reads them, what is wrong with them, and how they
// look.
#pragma once

#include <memory>

#include "apps/halvora/command.h"

namespace halvora {

std::unique_ptr<ToolCommand> makeMapCheckCommand();
std::unique_ptr<ToolCommand> makeMapDrawCommand();
std::unique_ptr<ToolCommand> makeMapDumpCommand();
std::unique_ptr<ToolCommand> makeMapFitCommand();
std::unique_ptr<ToolCommand> makeMapImportCommand();
std::unique_ptr<ToolCommand> makeMapTemplateCommand();

}  // namespace halvora
