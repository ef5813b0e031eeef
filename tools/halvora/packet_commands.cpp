// SPDX-License-Identifier: Apache-2.0
#include "tools/halvora/packet_commands.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "engine/broadcast.h"
#include "tools/halvora/packet.h"
#include "tools/halvora/scenario.h"

namespace halvora {

namespace {

CommandResult notHexadecimal(const std::string& text) {
  return unusable("\"" + text + "\" is not whole bytes as hexadecimal digits");
}

class DecodeCommand final : public ToolCommand {
 public:
  void describe(CLI::App& app) override {
    app.add_option("HEX", packets_, "manufacturer data as hexadecimal digits, one packet each")
        ->required();
  }
  CommandResult run(const Call& call) override {
    // The command line library takes brackets for a list of its own and drops them; here they are
    // just no digits.
    const auto bracket =
        std::find_if(call.arguments.begin(), call.arguments.end(),
                     [](std::string_view argument) { return argument.starts_with('['); });
    if (bracket != call.arguments.end()) return notHexadecimal(*bracket);
    std::string lines;
    for (const std::string& packet : packets_) {
      const auto data = bytesOfHex(packet);
      if (!data) return notHexadecimal(packet);
      lines += describePacket(*data);
    }
    return writeAll(lines, call.output);
  }

 private:
  std::vector<std::string> packets_;
};

class EncodeCommand final : public ToolCommand {
 public:
  void describe(CLI::App& app) override {
    for (std::size_t at = 0; at < kBroadcastFields.size(); ++at) {
      const BroadcastField& field = kBroadcastFields[at];
      options_[at] = app.add_option("--" + std::string(field.name), values_[at],
                                    "0 to " + std::to_string(field.largest()))
                         ->default_str("0");
    }
  }
  CommandResult run(const Call& call) override {
    Broadcast broadcast;
    for (std::size_t at = 0; at < kBroadcastFields.size(); ++at) {
      const BroadcastField& field = kBroadcastFields[at];
      if (options_[at]->count() == 0) continue;
      const auto value = decimal(values_[at], field.largest());
      if (!value) {
        return unusable("--" + std::string(field.name) + " must be decimal digits, 0 to " +
                        std::to_string(field.largest()) + ", not \"" + values_[at] + "\"");
      }
      broadcast.*field.value = static_cast<std::uint16_t>(*value);
    }
    return writeAll(NSDataToHex(encodeBroadcast(broadcast)) + "\n", call.output);
  }

 private:
  std::array<std::string, kBroadcastFields.size()> values_;
  std::array<CLI::Option*, kBroadcastFields.size()> options_{};
};

}  // namespace

std::unique_ptr<ToolCommand> makePacketDecodeCommand() { return std::make_unique<DecodeCommand>(); }

std::unique_ptr<ToolCommand> makePacketEncodeCommand() { return std::make_unique<EncodeCommand>(); }

}  // namespace halvora
