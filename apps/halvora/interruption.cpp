// SPDX-License-Identifier: Apache-2.0
#include "apps/halvora/interruption.h"

#include <csignal>
#include <initializer_list>

#include "venue/base/leftover.h"
#include "venue/live/key_mode.h"

namespace halvora {

namespace {

std::atomic<bool> isInterrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free);

// Who asks again cannot wait.
void interrupt(int signal) {
  if (!isInterrupted.exchange(true)) return;
  removeLeftovers();
  giveBackTerminal();
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

}  // namespace

const std::atomic<bool>& interruptedBySignals() {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    // Whoever started this process may have wanted it to survive some of them.
    if (std::signal(signal, SIG_IGN) != SIG_IGN) std::signal(signal, interrupt);
  }
  for (const int signal : {SIGPIPE, SIGXFSZ}) std::signal(signal, SIG_IGN);
  return isInterrupted;
}

}  // namespace halvora
