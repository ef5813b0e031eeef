// SPDX-License-Identifier: Apache-2.0
// A packet on the command line: one option for each field, from the table of fields. Owned by the
// command that has them; main thread.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <variant>

#include "apps/halvora/command.h"
#include "engine/broadcast.h"

namespace halvora {

class PacketOptions {
 public:
  /// `packet` has the values of the fields that are not given.
  void describe(CommandOptions& options, const Broadcast& packet = {});
  /// Whether any field was given.
  bool isGiven() const;
  /// The packet, or why one of its fields is unusable.
  std::variant<Broadcast, CommandResult> read() const;

 private:
  Broadcast packet_;
  std::array<std::optional<std::string>, kBroadcastFields.size()> values_;
};

}  // namespace halvora
