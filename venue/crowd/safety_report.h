// SPDX-License-Identifier: Apache-2.0
// What a show does to eyes, as a verdict for crews: a JSON object for programs, and a page that
// stands alone for people. Values, any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "halvora/platform/time.h"
#include "halvora/safety.h"
#include "venue/show/flash_meter.h"
#include "venue/show/scenario.h"

namespace halvora {

/// Of all phones of a hall together, and of the worst of its sections.
struct HallFlashes {
  FlashFigures hall;
  std::string section;
  FlashFigures sectionFigures;
  FlashCurve curve;
};

struct SafetyFindings {
  FlashPolicy policy = FlashPolicy::exact;
  std::size_t phones = 1;
  std::uint64_t seed = 1;
  /// Of what was simulated.
  Duration length{};
  /// Of the worst phone.
  FlashFigures phone;
  FlashCurve curve;
  std::optional<HallFlashes> venue;

  bool isPass() const;
};

std::string safetyJson(const SafetyFindings& findings);

/// HTML without anything from elsewhere. The scenario says what was on the air at the worst
/// moments; `title` names it.
std::string safetyPage(const SafetyFindings& findings, const Scenario& scenario,
                       const std::string& title);

}  // namespace halvora
