// SPDX-License-Identifier: Apache-2.0
// A scenario as one row of moments: by time, and at one time in the order of the lines. Nobody else
// knows of repeats, or of when the engine's view is loaded. The scenario must outlive it. A value;
// any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "venue/show/scenario.h"

namespace halvora {

struct ScenarioMoment {
  Duration time{};
  /// Among the moments of one time; all repeats of a line have the same.
  std::uint64_t order = 0;
  /// Of the scenario's lines; as many as there are for the loading of the view.
  std::size_t line = 0;
  const ScenarioAction* action = nullptr;
};

class ScenarioSchedule {
 public:
  explicit ScenarioSchedule(const Scenario& scenario);

  /// None where there are no more, or none up to `end`; nothing is to be asked for after that.
  std::optional<ScenarioMoment> next(Duration end = Duration::max());

 private:
  struct Repeat {
    Duration time{};
    std::size_t line = 0;
    std::uint64_t k = 0;
  };
  static bool isLater(const Repeat& one, const Repeat& other);
  std::optional<Repeat> takeNext();

  const std::vector<ScenarioLine>* lines_;
  std::size_t linesBeforeLoading_;
  bool isLoaded_ = false;
  std::size_t nextLine_ = 0;
  /// The next occurrence of each line that has begun and still repeats: a heap with the earliest in
  /// front, so that a long repeat takes no more room than a short one.
  std::vector<Repeat> repeats_;
};

}  // namespace halvora
