// SPDX-License-Identifier: Apache-2.0
#include "venue/live/key_mode.h"

#include <atomic>
#include <initializer_list>

#include <termios.h>
#include <unistd.h>

namespace halvora {

namespace {

// A handler of signals finds only what lies in a place of its own.
termios ownWay{};
std::atomic<bool> isChanged{false};
static_assert(std::atomic<bool>::is_always_lock_free);

}  // namespace

// Keys beside those of a show do nothing: one that stops the terminal's output, or the process,
// would stop the hall. Ctrl-C is how a player is ended.
KeyMode::KeyMode() {
  if (isChanged || tcgetattr(STDIN_FILENO, &ownWay) != 0) return;
  termios keys = ownWay;
  keys.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
  keys.c_iflag &= ~static_cast<tcflag_t>(IXON);
  for (const int stops : {VSUSP, VQUIT}) keys.c_cc[stops] = _POSIX_VDISABLE;
  isChanged = true;
  isSet_ = tcsetattr(STDIN_FILENO, TCSANOW, &keys) == 0;
  isChanged = isSet_;
}

KeyMode::~KeyMode() {
  if (isSet_) giveBackTerminal();
}

void giveBackTerminal() noexcept {
  if (!isChanged.exchange(false)) return;
  // Who has come to the foreground meanwhile has set the terminal up for itself.
  const pid_t front = tcgetpgrp(STDIN_FILENO);
  if (front >= 0 && front != getpgrp()) return;
  tcsetattr(STDIN_FILENO, TCSANOW, &ownWay);
}

}  // namespace halvora
