// SPDX-License-Identifier: Apache-2.0
#include "apps/halvora/listen_command.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "apps/halvora/command_line.h"
#include "engine/broadcast.h"
#include "venue/air/radio.h"
#include "venue/air/sequence_count.h"
#include "venue/base/json_line.h"
#include "venue/show/packet.h"

namespace halvora {

namespace {

constexpr double kLongestListening = 1e9;
/// A phone begins to scan a second after its start; a recording's first packet comes after that.
constexpr long long kRecordedFromMs = 2000;
constexpr Duration kBetweenLooks = milliseconds(250);

long long wholeMilliseconds(Duration time) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
}

// "hci0", "hci0 and hci1", "hci0, hci1 and hci2".
std::string listOf(const std::vector<std::string>& names) {
  std::string text;
  for (std::size_t at = 0; at < names.size(); ++at) {
    if (at > 0) text += at + 1 < names.size() ? ", " : " and ";
    text += names[at];
  }
  return text;
}

// Why there is nothing to listen to, on the adapter that was named or, for an empty name, on any.
std::string reasonOf(CentralState state, const std::string& name,
                     const std::vector<std::string>& adapters) {
  const bool isMissing = std::ranges::find(adapters, name) == adapters.end();
  if (!name.empty() && !adapters.empty() && isMissing) {
    return "no Bluetooth adapter called " + name + "; this machine has " + listOf(adapters) +
           ": name one of these with --adapter, or none";
  }
  switch (state) {
    case CentralState::poweredOff:
      return name.empty() ? "Bluetooth is switched off"
                          : "the Bluetooth adapter " + name + " is switched off";
    case CentralState::unauthorised:
      return "the system does not allow this user to use Bluetooth";
    default:
      return "no Bluetooth adapter, or no Bluetooth service";
  }
}

// Hears what its radio hears: prints it, counts it and records it.
class Listening final : private CentralManagerDelegate {
 public:
  Listening(Radio& radio, const Output& output, std::ofstream* recording)
      : radio_(radio),
        output_(output),
        recording_(recording),
        manager_(radio.bluetooth().makeManager(*this)) {}

  /// What the radio said of itself; `unknown` until it has.
  CentralState state() const { return state_; }
  bool isWritable() const { return isWritable_; }
  bool isRecorded() const { return recording_ == nullptr || recording_->good(); }
  Duration elapsed() const { return radio_.loop().now() - begin_; }

  void start() {
    hasStarted_ = true;
    RunLoop& loop = radio_.loop();
    begin_ = loop.now();
    looks_ = {loop, loop.every(kBetweenLooks, [this] { tellAdapter(); })};
    scan();
  }
  /// Whether any adapter ever scanned, where the radio knows of adapters.
  bool hasScanned() const { return !adapter_.empty() || radio_.adapters().all.empty(); }

  void printSummary() {
    const Duration end = elapsed();
    const double seconds = toSeconds(end);
    JsonLine line;
    for (const auto& [key, count] : counts_.transmitters()) {
      line.begin().add("t", std::int64_t{wholeMilliseconds(end)}).add("summary", key);
      line.add("packets", static_cast<std::int64_t>(count.packets))
          .add("repeats", static_cast<std::int64_t>(count.repeats))
          .add("lost", static_cast<std::int64_t>(count.lost))
          .add("restarts", static_cast<std::int64_t>(count.restarts))
          .addLevel("perSecond", seconds > 0 ? static_cast<double>(count.packets) / seconds : 0);
      print(line.end());
    }
  }

 private:
  // A show outlasts a radio that is switched off and on.
  void centralManagerDidUpdateState(CentralState state) override {
    state_ = state;
    if (hasStarted_) scan();
  }

  void scan() {
    if (state_ == CentralState::poweredOn) manager_->scanForPeripherals({.allowDuplicates = true});
  }

  // Another one takes over where one fails.
  void tellAdapter() {
    const RadioAdapters adapters = radio_.adapters();
    if (adapters.scanning.empty() || adapters.scanning == adapter_) return;
    adapter_ = adapters.scanning;
    JsonLine line;
    line.begin().add("t", std::int64_t{wholeMilliseconds(elapsed())}).add("adapter", adapter_);
    print(line.end());
  }

  void didDiscoverPeripheral(const Advertisement& advertisement) override {
    if (adapter_.empty()) tellAdapter();
    if (!advertisement.manufacturerData) return;
    const auto data = *advertisement.manufacturerData;
    const BroadcastFormat format = formatOf(data);
    if (format == BroadcastFormat::otherMaker) return;
    if (format == BroadcastFormat::valid) counts_.add(decodeBroadcast(data));
    const long long time = wholeMilliseconds(elapsed());
    print("{\"t\":" + std::to_string(time) + "," + describePacket(data).substr(1));
    if (recording_ == nullptr) return;
    const double at = static_cast<double>(kRecordedFromMs + time) / 1000;
    JsonLine line;
    *recording_ << line.begin().addLevel("at", at).add("packet", NSDataToHex(data)).end();
  }

  void print(std::string_view line) { isWritable_ = isWritable_ && output_(line); }

  Radio& radio_;
  const Output& output_;
  std::ofstream* recording_;
  CentralState state_ = CentralState::unknown;
  bool hasStarted_ = false;
  bool isWritable_ = true;
  Duration begin_{};
  /// The last one that scanned, and the looks at it.
  std::string adapter_;
  Timer looks_;
  SequenceCount counts_;
  std::unique_ptr<CentralManager> manager_;
};

class ListenCommand final : public ToolCommand {
 public:
  void describe(CommandOptions& options) override {
    options.optional("--adapter", adapter_,
                     "the adapter, as hci1 (default: whichever works, the first one first)");
    options.optional("--for", for_, "seconds to listen (default: until Ctrl-C)");
    options.optional("--record", record_, "file to write as a scenario that trace replays");
    options.footer(
        "Prints the adapter in use and each show packet as it is heard, and at the end a summary "
        "of each\ntransmitter: what was received, and by the gaps in its sequence what was lost.");
  }

  CommandResult run(const Call& call) override {
    std::optional<Duration> longest;
    if (for_) {
      const auto seconds = plainNumber(*for_);
      if (!seconds || *seconds < 0 || *seconds > kLongestListening) {
        return unusable("--for must be seconds, 0 or more, not \"" + *for_ + "\"");
      }
      longest = fromSeconds(*seconds);
    }
    if (!call.outside.openRadio) return failed("this halvora was built without Bluetooth");
    const std::unique_ptr<Radio> radio = call.outside.openRadio(adapter_);
    return listen(*radio, longest, call);
  }

 private:
  CommandResult listen(Radio& radio, std::optional<Duration> longest, const Call& call) {
    std::ofstream recording;
    Listening listening(radio, call.output, record_.empty() ? nullptr : &recording);
    const std::atomic<bool>& isInterrupted = call.outside.isInterrupted;
    radio.runUntil([&] { return isInterrupted || listening.state() != CentralState::unknown; });
    if (isInterrupted) return done();
    if (listening.state() != CentralState::poweredOn) {
      return failed(reasonOf(listening.state(), adapter_, radio.adapters().all));
    }
    // What an earlier recording holds is safe until there is something to listen to.
    if (!record_.empty()) {
      recording.open(record_, std::ios::binary | std::ios::trunc);
      recording << "{\"at\":0,\"start\":true}\n";
    }
    listening.start();
    radio.runUntil([&] {
      return isInterrupted || !listening.isWritable() || !listening.isRecorded() ||
             (longest && listening.elapsed() >= *longest);
    });
    listening.printSummary();
    recording.flush();
    if (!listening.isRecorded()) return failed(record_ + ": cannot be written");
    if (!listening.isWritable()) return failed("standard output cannot be written");
    const RadioAdapters adapters = radio.adapters();
    if (!listening.hasScanned() && !adapters.error.empty()) {
      return failed("no Bluetooth adapter of " + listOf(adapters.all) +
                    " scans: " + adapters.error);
    }
    return done();
  }

  std::string adapter_;
  std::optional<std::string> for_;
  std::string record_;
};

}  // namespace

std::unique_ptr<ToolCommand> makeListenCommand() { return std::make_unique<ListenCommand>(); }

}  // namespace halvora
