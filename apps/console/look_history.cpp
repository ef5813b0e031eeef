// SPDX-License-Identifier: Apache-2.0
#include "apps/console/look_history.h"

namespace halvora {

namespace {

std::optional<Broadcast> moved(std::vector<Broadcast>& from, std::vector<Broadcast>& to,
                               const Broadcast& now) {
  if (from.empty()) return std::nullopt;
  const Broadcast look = from.back();
  from.pop_back();
  to.push_back(now);
  return look;
}

}  // namespace

void LookHistory::changing(const Broadcast& before, std::string_view control) {
  redone_.clear();
  if (!undone_.empty() && control == control_) return;
  control_ = control;
  if (undone_.size() == kMostSteps) undone_.erase(undone_.begin());
  undone_.push_back(before);
}

std::optional<Broadcast> LookHistory::undo(const Broadcast& now) {
  endStep();
  return moved(undone_, redone_, now);
}

std::optional<Broadcast> LookHistory::redo(const Broadcast& now) {
  endStep();
  return moved(redone_, undone_, now);
}

}  // namespace halvora
