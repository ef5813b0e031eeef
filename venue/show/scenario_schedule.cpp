// SPDX-License-Identifier: Apache-2.0
#include "venue/show/scenario_schedule.h"

#include <algorithm>
#include <tuple>

namespace halvora {

namespace {

const ScenarioAction kLoad = LoadAction{};

}  // namespace

ScenarioSchedule::ScenarioSchedule(const Scenario& scenario)
    : lines_(&scenario.lines), linesBeforeLoading_(scenario.linesBeforeLoading()) {}

bool ScenarioSchedule::isLater(const Repeat& one, const Repeat& other) {
  return std::tie(one.time, one.line) > std::tie(other.time, other.line);
}

std::optional<ScenarioMoment> ScenarioSchedule::next(Duration end) {
  if (!isLoaded_ && nextLine_ == linesBeforeLoading_) {
    isLoaded_ = true;
    return ScenarioMoment{{}, linesBeforeLoading_ * 2, lines_->size(), &kLoad};
  }
  const std::optional<Repeat> now = takeNext();
  if (!now || now->time > end) return std::nullopt;
  const ScenarioLine& line = (*lines_)[now->line];
  if (const auto again = line.timeOf(now->k + 1)) {
    repeats_.push_back({*again, now->line, now->k + 1});
    std::push_heap(repeats_.begin(), repeats_.end(), isLater);
  }
  return ScenarioMoment{now->time, now->line * 2 + 1, now->line, &line.action};
}

std::optional<ScenarioSchedule::Repeat> ScenarioSchedule::takeNext() {
  std::optional<Repeat> line;
  if (nextLine_ < lines_->size()) line = {*(*lines_)[nextLine_].timeOf(0), nextLine_, 0};
  if (repeats_.empty() || (line && isLater(repeats_.front(), *line))) {
    if (line) ++nextLine_;
    return line;
  }
  std::pop_heap(repeats_.begin(), repeats_.end(), isLater);
  const Repeat repeat = repeats_.back();
  repeats_.pop_back();
  return repeat;
}

}  // namespace halvora
