// SPDX-License-Identifier: Apache-2.0
// The loop of a command that waits for the system's radio and for its user. Main thread.
#pragma once

#include <functional>

#include "adapters/linux/poll_run_loop.h"

namespace halvora {

/// Runs turns until `isDone`, which is asked again a few times a second whatever happens: a signal
/// between a look at it and the wait would go unnoticed otherwise. Throws what a turn threw: a
/// command that lost one has nothing true to say any more.
void runCommandUntil(PollRunLoop& loop, const std::function<bool()>& isDone);

}  // namespace halvora
