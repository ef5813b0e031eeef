// SPDX-License-Identifier: Apache-2.0
#include "apps/halvora/packet_commands.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "apps/halvora/command_line.h"
#include "apps/halvora/packet_options.h"
#include "engine/broadcast.h"
#include "engine/signed_broadcast.h"
#include "venue/show/packet.h"
#include "venue/show/scenario.h"
#include "venue/show/show_key.h"

namespace halvora {

namespace {

CommandResult notHexadecimal(const std::string& text) {
  return unusable("\"" + text + "\" is not whole bytes as hexadecimal digits");
}

/// A key and a minute, which only make sense together.
class SignatureOptions {
 public:
  void describe(CommandOptions& options) {
    options.optional(
        "--show-key", keyFile_,
        "file with the show's key, 32 hexadecimal digits that only its owner may read");
    options.optional("--epoch", epoch_, "the minute that the tag is for, counted from 1970");
  }
  bool isGiven() const { return keyFile_.has_value() || epoch_.has_value(); }
  /// What to end with; nothing where code and epoch may be used.
  std::optional<CommandResult> read(const Call& call) {
    if (!keyFile_ || !epoch_) return unusable("--show-key and --epoch go together");
    auto epoch = readEpoch(*epoch_);
    if (auto* refusal = std::get_if<CommandResult>(&epoch)) return std::move(*refusal);
    auto code = readShowCode(*keyFile_, call.outside.codes);
    if (auto* refusal = std::get_if<CommandResult>(&code)) return std::move(*refusal);
    epochValue_ = std::get<std::uint32_t>(epoch);
    code_ = std::get<std::unique_ptr<MessageCode>>(std::move(code));
    return std::nullopt;
  }
  std::uint32_t epoch() const { return epochValue_; }
  MessageCode& code() { return *code_; }

 private:
  std::optional<std::string> keyFile_;
  std::optional<std::string> epoch_;
  std::uint32_t epochValue_ = 0;
  std::unique_ptr<MessageCode> code_;
};

class DecodeCommand final : public ToolCommand {
 public:
  void describe(CommandOptions& options) override {
    options.required("HEX", packets_, "manufacturer data as hexadecimal digits, one packet each");
    signature_.describe(options);
  }
  CommandResult run(const Call& call) override {
    // The command line library takes brackets for a list of its own and drops them; here they are
    // just no digits.
    const auto bracket =
        std::find_if(call.arguments.begin(), call.arguments.end(),
                     [](std::string_view argument) { return argument.starts_with('['); });
    if (bracket != call.arguments.end()) return notHexadecimal(*bracket);
    TagCheck isGood;
    if (signature_.isGiven()) {
      if (auto refusal = signature_.read(call)) return std::move(*refusal);
      isGood = [this](SignedBroadcastView packet) {
        return isTagGood(packet, signature_.epoch(), signature_.code());
      };
    }
    std::string lines;
    for (const std::string& packet : packets_) {
      const auto data = bytesOfHex(packet);
      if (!data) return notHexadecimal(packet);
      lines += describePacket(*data, isGood);
    }
    return writeAll(lines, call.output);
  }

 private:
  std::vector<std::string> packets_;
  SignatureOptions signature_;
};

class EncodeCommand final : public ToolCommand {
 public:
  void describe(CommandOptions& options) override {
    fields_.describe(options);
    signature_.describe(options);
  }
  CommandResult run(const Call& call) override {
    auto packet = fields_.read();
    if (auto* refusal = std::get_if<CommandResult>(&packet)) return std::move(*refusal);
    const auto& fields = std::get<Broadcast>(packet);
    if (!signature_.isGiven()) {
      return writeAll(NSDataToHex(encodeBroadcast(fields)) + "\n", call.output);
    }
    if (auto refusal = signature_.read(call)) return std::move(*refusal);
    const auto data = signBroadcast(fields, signature_.epoch(), signature_.code());
    return writeAll(NSDataToHex(data) + "\n", call.output);
  }

 private:
  PacketOptions fields_;
  SignatureOptions signature_;
};

}  // namespace

std::unique_ptr<ToolCommand> makePacketDecodeCommand() { return std::make_unique<DecodeCommand>(); }

std::unique_ptr<ToolCommand> makePacketEncodeCommand() { return std::make_unique<EncodeCommand>(); }

}  // namespace halvora
