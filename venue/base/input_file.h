// SPDX-License-Identifier: Apache-2.0
// The files that commands read whole: a pipe or a terminal serves as well as a file on a disk. Main
// thread.
#pragma once

#include <atomic>
#include <cstddef>
#include <string>
#include <variant>

#include "venue/base/outside.h"

namespace halvora {

/// All bytes of a file, or what to end with: it cannot be read, is a folder, has more bytes than
/// that, or the user has had enough of waiting for them.
std::variant<std::string, CommandResult> readInput(const std::string& path, std::size_t limit,
                                                   const std::atomic<bool>& isInterrupted);

}  // namespace halvora
