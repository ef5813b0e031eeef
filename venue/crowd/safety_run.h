// SPDX-License-Identifier: Apache-2.0
// One verdict on a show from files to files: simulates one phone, or all phones of a venue, and
// measures what they emit. One thread, which waits for those that it starts.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "halvora/platform/time.h"
#include "halvora/safety.h"
#include "venue/base/outside.h"
#include "venue/show/scenario.h"

namespace halvora {

struct SafetyRequest {
  /// The scenario as the user named it, and what is in it.
  std::string name;
  Scenario scenario;
  /// Absolute paths; no page where that is empty.
  std::string assets;
  std::string page;
  /// None for one phone, in the seat that the scenario gives it.
  std::optional<std::int64_t> venueId;
  FlashPolicy policy = FlashPolicy::exact;
  std::uint64_t seed = 1;
  /// 0 for one a seat.
  std::uint64_t phones = 0;
  int threads = 0;
  Duration end{};
};

/// Exit status 0 for a pass and 1 for a fail, with the report either way.
CommandResult runSafety(const SafetyRequest& request, const Call& call);

}  // namespace halvora
