// SPDX-License-Identifier: Apache-2.0
// Attackers on the air of a crowd: each hears the true show and sends what would take it from the
// phones. They have a radio and no key. Values; any thread once they are made.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/broadcast.h"
#include "halvora/platform/time.h"
#include "venue/show/scenario.h"
#include "venue/show/true_show.h"

namespace halvora {

struct RogueRow;

/// One attack, from a time on.
struct Rogue {
  /// How long an attack lasts that is more than a packet.
  static constexpr Duration kLength = milliseconds(10'000);

  const RogueRow* row = nullptr;
  Duration at{};
};

/// "KIND@SECONDS"; none for another text.
std::optional<Rogue> rogueOf(const std::string& text);
struct RogueKind {
  std::string_view name;
  std::string_view does;
};
/// In the order of their table.
std::vector<RogueKind> rogueKinds();
std::string_view kindOf(const Rogue& rogue);

/// The scenario with what the attackers send.
Scenario withRogues(const Scenario& scenario, const TrueShow& show, std::span<const Rogue> rogues);

}  // namespace halvora
