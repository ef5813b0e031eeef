// SPDX-License-Identifier: Apache-2.0
#include "apps/halvora/transmit_command.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "adapters/json/exact_json_reader.h"
#include "apps/halvora/command_line.h"
#include "apps/halvora/packet_options.h"
#include "engine/signed_broadcast.h"
#include "venue/air/transmitter.h"
#include "venue/show/packet.h"
#include "venue/show/scenario.h"
#include "venue/show/scenario_file.h"
#include "venue/show/scenario_run.h"
#include "venue/show/show_key.h"

namespace halvora {

namespace {

constexpr double kLongestShow = 1e9;
/// Bluetooth's own limits of an advertisement's interval, in milliseconds.
constexpr std::uint64_t kLongestInterval = 10240;
constexpr long long kShortestInterval = 20;
/// How long the last packet of a scenario stays on the air.
constexpr Duration kLastShown = milliseconds(1000);

/// What is to be shown, and how long all of it takes; none for as long as the user likes.
struct Programme {
  Scenario scenario;
  std::optional<Duration> length;
};

/// How often it is looked whether another minute has begun.
constexpr Duration kBetweenLooks = milliseconds(250);

// Shows its programme and prints each packet as it goes on the air; with a key signed, and signed
// anew with every minute.
class Broadcasting {
 public:
  /// Null for no key.
  Broadcasting(Transmitter& transmitter, const Output& output, MessageCode* code)
      : transmitter_(transmitter), output_(output), code_(code), begin_(transmitter.loop().now()) {
    if (code_ == nullptr) return;
    RunLoop& loop = transmitter_.loop();
    looks_ = {loop, loop.every(kBetweenLooks, [this] {
                if (!wanted_.empty()) put(signedNow(wanted_));
              })};
  }

  void begin(const Programme& programme) {
    run_.emplace(ScenarioSchedule(programme.scenario), transmitter_.loop(),
                 [this](const ScenarioAction& action) {
                   const auto* packet = std::get_if<PacketAction>(&action);
                   if (packet != nullptr) show(packet->data);
                 });
  }
  void stop() {
    run_.reset();
    looks_.invalidate();
  }
  bool isWritable() const { return isWritable_; }
  Duration elapsed() const { return transmitter_.loop().now() - begin_; }

 private:
  // What is shown is repeated by the radio, so a packet's repeats are nothing new.
  void show(const std::vector<std::uint8_t>& data) {
    wanted_ = data;
    put(code_ != nullptr ? signedNow(data) : data);
  }

  std::vector<std::uint8_t> signedNow(const std::vector<std::uint8_t>& data) {
    if (formatOf(data) != BroadcastFormat::valid || data.size() != kShortestBroadcast) return data;
    const auto whole = signBroadcast(decodeBroadcast(data), epochOf(transmitter_.date()), *code_);
    return {whole.begin(), whole.end()};
  }

  void put(const std::vector<std::uint8_t>& data) {
    if (data == shown_) return;
    shown_ = data;
    transmitter_.show(data);
    const auto time = std::chrono::duration_cast<std::chrono::milliseconds>(elapsed()).count();
    isWritable_ = isWritable_ &&
                  output_("{\"t\":" + std::to_string(time) + "," + describePacket(data).substr(1));
  }

  Transmitter& transmitter_;
  const Output& output_;
  MessageCode* code_;
  const Duration begin_;
  std::optional<ScenarioRun> run_;
  /// What was asked for last, and what is on the air.
  std::vector<std::uint8_t> wanted_;
  std::vector<std::uint8_t> shown_;
  Timer looks_;
  bool isWritable_ = true;
};

class TransmitCommand final : public ToolCommand {
 public:
  void describe(CommandOptions& options) override {
    options.optional("--scenario", scenario_,
                     "JSON Lines file whose packets go on the air, each at its time");
    options.optional("--adapter", settings_.adapter,
                     "the adapter, as hci1 (default: the first one with power)");
    options.optional("--for", for_,
                     "seconds (default: until Ctrl-C, or a second after the scenario's last "
                     "action)");
    options.optional("--interval", interval_,
                     "milliseconds from one advertisement to the next, 20 to 10240, as far as the "
                     "system allows (default: 100)");
    options.optional("--show-key", keyFile_,
                     "file with the show's key, 32 hexadecimal digits that only its owner may "
                     "read: plain packets are signed, anew with every minute");
    fields_.describe(options, {.sequence = 1});
    options.footer(
        "Advertises one show packet, or a scenario's packets one after the other, until it ends "
        "or the user\nends it, and prints each as it goes on the air. One transmitter at a time: "
        "each packet replaces the\none before. A phone obeys only a sequence number above the last "
        "one. For tests with a spare adapter.");
  }

  CommandResult run(const Call& call) override {
    if (const auto refusal = readSettings()) return *refusal;
    auto programme =
        scenario_ ? readScenario(*scenario_, call.outside.isInterrupted) : readFields();
    if (const auto* refusal = std::get_if<CommandResult>(&programme)) return *refusal;
    std::unique_ptr<MessageCode> code;
    if (keyFile_) {
      auto readCode = readShowCode(*keyFile_, call.outside.codes);
      if (auto* refusal = std::get_if<CommandResult>(&readCode)) return std::move(*refusal);
      code = std::get<std::unique_ptr<MessageCode>>(std::move(readCode));
    }
    if (!call.outside.openTransmitter) return failed("this halvora was built without Bluetooth");
    auto& read = std::get<Programme>(programme);
    if (longest_) read.length = longest_;
    return transmit(*call.outside.openTransmitter(), read, code.get(), call);
  }

 private:
  std::optional<CommandResult> readSettings() {
    const auto interval = decimal(interval_, kLongestInterval);
    if (!interval || *interval < kShortestInterval) {
      return unusable("--interval must be milliseconds, 20 to 10240, not \"" + interval_ + "\"");
    }
    settings_.interval = milliseconds(static_cast<long long>(*interval));
    if (!for_) return std::nullopt;
    const auto seconds = plainNumber(*for_);
    if (!seconds || *seconds < 0 || *seconds > kLongestShow) {
      return unusable("--for must be seconds, 0 or more, not \"" + *for_ + "\"");
    }
    longest_ = fromSeconds(*seconds);
    return std::nullopt;
  }

  std::variant<Programme, CommandResult> readFields() const {
    auto packet = fields_.read();
    if (auto* refusal = std::get_if<CommandResult>(&packet)) return std::move(*refusal);
    const BroadcastBytes data = encodeBroadcast(std::get<Broadcast>(packet));
    Programme programme;
    programme.scenario.lines.push_back({.action = PacketAction{{data.begin(), data.end()}}});
    return programme;
  }

  std::variant<Programme, CommandResult> readScenario(
      const std::string& file, const std::atomic<bool>& isInterrupted) const {
    if (fields_.isGiven()) return unusable("--scenario has the packets; no fields beside it");
    auto read = halvora::readScenario(file, ExactJsonReader(), isInterrupted);
    if (auto* refusal = std::get_if<CommandResult>(&read)) return std::move(*refusal);
    auto& scenario = std::get<Scenario>(read);
    Programme programme{{}, scenario.lastAction() + kLastShown};
    for (ScenarioLine& line : scenario.lines) {
      const auto* packet = std::get_if<PacketAction>(&line.action);
      if (packet == nullptr) continue;
      const std::size_t size = packet->data.size();
      if (size < kLeastAdvertised || size > kMostAdvertised) {
        return unusable(file + ":" + std::to_string(line.number) + ": " + std::to_string(size) +
                        " bytes; an advertisement holds 2 to 29");
      }
      programme.scenario.lines.push_back(std::move(line));
    }
    if (programme.scenario.lines.empty()) return unusable(file + ": no packets");
    return programme;
  }

  CommandResult transmit(Transmitter& transmitter, const Programme& programme, MessageCode* code,
                         const Call& call) {
    const std::atomic<bool>& isInterrupted = call.outside.isInterrupted;
    const auto isOver = [&] { return isInterrupted || !transmitter.failure().empty(); };
    transmitter.open(settings_);
    transmitter.runUntil([&] { return isOver() || !transmitter.isBusy(); });
    Broadcasting broadcasting(transmitter, call.output, code);
    if (!isOver()) broadcasting.begin(programme);
    transmitter.runUntil([&] {
      return isOver() || !broadcasting.isWritable() ||
             (programme.length && broadcasting.elapsed() >= *programme.length);
    });
    if (!transmitter.failure().empty()) return failed(transmitter.failure());
    broadcasting.stop();
    transmitter.end();
    transmitter.runUntil([&] { return !transmitter.failure().empty() || !transmitter.isBusy(); });
    if (!broadcasting.isWritable()) return failed("standard output cannot be written");
    return transmitter.failure().empty() ? done() : failed(transmitter.failure());
  }

  std::optional<std::string> scenario_;
  std::optional<std::string> for_;
  std::optional<std::string> keyFile_;
  std::string interval_ = "100";
  PacketOptions fields_;
  TransmitterSettings settings_;
  std::optional<Duration> longest_;
};

}  // namespace

std::unique_ptr<ToolCommand> makeTransmitCommand() { return std::make_unique<TransmitCommand>(); }

}  // namespace halvora
