// SPDX-License-Identifier: Apache-2.0
// The commands of the `halvora` tool. Exit status 0: done; 2: the command line or an input file is
// unusable, nothing was written; 1: any other failure.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "platform/image.h"

namespace halvora {

/// Takes text for standard output; false when it cannot be written.
using Output = std::function<bool(std::string_view)>;

struct CommandResult {
  int status = 0;
  /// One line, for standard error; empty for none.
  std::string error;
};

/// `images` reads the stills of torch pixel maps.
CommandResult runCommand(int argumentCount, const char* const* arguments,
                         const ImageDecoder& images, const Output& output);

}  // namespace halvora
