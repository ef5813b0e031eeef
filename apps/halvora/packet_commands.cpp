// SPDX-License-Identifier: Apache-2.0
#include "apps/halvora/packet_commands.h"

#include <algorithm>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "apps/halvora/command_line.h"
#include "apps/halvora/packet_options.h"
#include "engine/broadcast.h"
#include "venue/show/packet.h"
#include "venue/show/scenario.h"

namespace halvora {

namespace {

CommandResult notHexadecimal(const std::string& text) {
  return unusable("\"" + text + "\" is not whole bytes as hexadecimal digits");
}

class DecodeCommand final : public ToolCommand {
 public:
  void describe(CommandOptions& options) override {
    options.required("HEX", packets_, "manufacturer data as hexadecimal digits, one packet each");
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
  void describe(CommandOptions& options) override { fields_.describe(options); }
  CommandResult run(const Call& call) override {
    auto packet = fields_.read();
    if (auto* refusal = std::get_if<CommandResult>(&packet)) return std::move(*refusal);
    return writeAll(NSDataToHex(encodeBroadcast(std::get<Broadcast>(packet))) + "\n", call.output);
  }

 private:
  PacketOptions fields_;
};

}  // namespace

std::unique_ptr<ToolCommand> makePacketDecodeCommand() { return std::make_unique<DecodeCommand>(); }

std::unique_ptr<ToolCommand> makePacketEncodeCommand() { return std::make_unique<EncodeCommand>(); }

}  // namespace halvora
