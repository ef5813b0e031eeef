// SPDX-License-Identifier: Apache-2.0
#include "tools/halvora/packet_options.h"

#include <algorithm>

#include <CLI/CLI.hpp>

namespace halvora {

void PacketOptions::describe(CLI::App& app, const Broadcast& packet) {
  packet_ = packet;
  for (std::size_t at = 0; at < kBroadcastFields.size(); ++at) {
    const BroadcastField& field = kBroadcastFields[at];
    options_[at] = app.add_option("--" + std::string(field.name), values_[at],
                                  "0 to " + std::to_string(field.largest()))
                       ->default_str(std::to_string(packet.*field.value));
  }
}

bool PacketOptions::isGiven() const {
  return std::ranges::any_of(options_,
                             [](const CLI::Option* option) { return option->count() > 0; });
}

std::variant<Broadcast, CommandResult> PacketOptions::read() const {
  Broadcast packet = packet_;
  for (std::size_t at = 0; at < kBroadcastFields.size(); ++at) {
    const BroadcastField& field = kBroadcastFields[at];
    if (options_[at]->count() == 0) continue;
    const auto value = decimal(values_[at], field.largest());
    if (!value) {
      return unusable("--" + std::string(field.name) + " must be decimal digits, 0 to " +
                      std::to_string(field.largest()) + ", not \"" + values_[at] + "\"");
    }
    packet.*field.value = static_cast<std::uint16_t>(*value);
  }
  return packet;
}

}  // namespace halvora
