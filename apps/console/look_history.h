// SPDX-License-Identifier: Apache-2.0
// What the operator had set before: the way back, and forward again. Turning one knob for a while
// is one step. A value; main thread.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/broadcast.h"

namespace halvora {

class LookHistory {
 public:
  /// Older steps than so many are forgotten.
  static constexpr std::size_t kMostSteps = 200;

  /// `before` is about to change, by the control of that name. What was undone cannot be redone
  /// afterwards.
  void changing(const Broadcast& before, std::string_view control);
  /// The next change is a step of its own, whichever control makes it.
  void endStep() { control_.clear(); }

  /// What to go back to from `now`; none at the beginning. And forward; none at the end.
  std::optional<Broadcast> undo(const Broadcast& now);
  std::optional<Broadcast> redo(const Broadcast& now);
  bool canUndo() const { return !undone_.empty(); }
  bool canRedo() const { return !redone_.empty(); }

 private:
  std::vector<Broadcast> undone_;
  std::vector<Broadcast> redone_;
  /// Of the step that is being made; empty for none.
  std::string control_;
};

}  // namespace halvora
