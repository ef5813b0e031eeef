// SPDX-License-Identifier: Apache-2.0
// A packet on the command line: one option for each field, from the table of fields. Owned by the
// command that has them; main thread.
#pragma once

#include <array>
#include <string>
#include <variant>

#include "engine/broadcast.h"
#include "tools/halvora/command.h"

namespace CLI {
class Option;
}  // namespace CLI

namespace halvora {

class PacketOptions {
 public:
  /// `packet` has the values of the fields that are not given.
  void describe(CLI::App& app, const Broadcast& packet = {});
  /// Whether any field was given.
  bool isGiven() const;
  /// The packet, or why one of its fields is unusable.
  std::variant<Broadcast, CommandResult> read() const;

 private:
  Broadcast packet_;
  std::array<std::string, kBroadcastFields.size()> values_;
  std::array<CLI::Option*, kBroadcastFields.size()> options_{};
};

}  // namespace halvora
