// SPDX-License-Identifier: Apache-2.0
// The journal of another player, for one that stands by: the system frees it in the moment in which
// that player ends, however it does. Main thread.
#pragma once

#include <memory>
#include <string>
#include <variant>

#include "venue/base/outside.h"
#include "venue/live/sequence_numbers.h"

namespace halvora {

class WaitingJournal {
 public:
  virtual ~WaitingJournal() = default;

  /// Refuses a file that is no journal, and one that nobody has: whoever stands by for nobody would
  /// begin a show by itself.
  static std::variant<std::unique_ptr<WaitingJournal>, CommandResult> open(const std::string& path);

  /// Whether the other one has it no longer: then this process has it, from this call on.
  virtual bool isFree() = 0;
  /// Once it is free: numbers that go on above all that may have been on the air, with an alarm
  /// where none can be reserved, because somebody must play. Or what to end with, where the file
  /// says no number any more.
  virtual std::variant<std::unique_ptr<SequenceNumbers>, CommandResult> take(
      std::unique_ptr<SerialQueue> queue) = 0;
};

}  // namespace halvora
