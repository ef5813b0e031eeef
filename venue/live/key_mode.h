// SPDX-License-Identifier: Apache-2.0
// The terminal as a player wants it: single keys, none of which stops the show by accident. The
// terminal's own way comes back with the object, and also where somebody who cannot wait ends the
// process. A process has one terminal, and so one of these at a time. Main thread.
#pragma once

namespace halvora {

class KeyMode {
 public:
  KeyMode();
  ~KeyMode();
  KeyMode(const KeyMode&) = delete;
  KeyMode& operator=(const KeyMode&) = delete;

  /// False where standard input is no terminal.
  bool isSet() const { return isSet_; }

 private:
  bool isSet_ = false;
};

/// What was changed is as it was. Safe within a signal's handler.
void giveBackTerminal() noexcept;

}  // namespace halvora
