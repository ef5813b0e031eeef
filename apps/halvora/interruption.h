// SPDX-License-Identifier: Apache-2.0
// What ends a command from outside the process. The user's wish to end it (Ctrl-C, a terminal that
// closes, a plain kill) becomes a flag, so that nothing half done stays behind; who cannot wait
// asks again, and then only what is temporary is removed and the terminal given back. Output that
// nobody reads, and files that may not grow, become errors of writing. Main thread, before there
// are others.
#pragma once

#include <atomic>

namespace halvora {

/// The process's one flag; the first call begins to listen.
const std::atomic<bool>& interruptedBySignals();

}  // namespace halvora
