// SPDX-License-Identifier: Apache-2.0
#include "apps/halvora/packet_options.h"

#include <algorithm>

#include "apps/halvora/command_line.h"

namespace halvora {

void PacketOptions::describe(CommandOptions& options, const Broadcast& packet) {
  packet_ = packet;
  for (std::size_t at = 0; at < kBroadcastFields.size(); ++at) {
    const BroadcastField& field = kBroadcastFields[at];
    options.optional("--" + std::string(field.name), values_[at],
                     "0 to " + std::to_string(field.value.largest()),
                     std::to_string(field.value.of(packet)));
  }
}

bool PacketOptions::isGiven() const {
  return std::ranges::any_of(values_, [](const auto& value) { return value.has_value(); });
}

std::variant<Broadcast, CommandResult> PacketOptions::read() const {
  Broadcast packet = packet_;
  for (std::size_t at = 0; at < kBroadcastFields.size(); ++at) {
    const BroadcastField& field = kBroadcastFields[at];
    if (!values_[at]) continue;
    const auto value = decimal(*values_[at], field.value.largest());
    if (!value) {
      return unusable("--" + std::string(field.name) + " must be decimal digits, 0 to " +
                      std::to_string(field.value.largest()) + ", not \"" + *values_[at] + "\"");
    }
    field.value.set(packet, static_cast<int>(*value));
  }
  return packet;
}

}  // namespace halvora
