// SPDX-License-Identifier: Apache-2.0
// A command of the tool. Main thread.
#pragma once

#include "venue/base/input_text.h"
#include "venue/base/outside.h"

namespace halvora {

class CommandOptions;

class ToolCommand {
 public:
  virtual ~ToolCommand() = default;
  /// Adds its options; their values come before it runs.
  virtual void describe(CommandOptions& options) = 0;
  /// Once, after the options have been read.
  virtual CommandResult run(const Call& call) = 0;
};

}  // namespace halvora
