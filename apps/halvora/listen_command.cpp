// SPDX-License-Identifier: Apache-2.0
#include "apps/halvora/listen_command.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "adapters/json/exact_json_reader.h"
#include "apps/halvora/command_line.h"
#include "engine/broadcast.h"
#include "halvora/platform/absent.h"
#include "venue/air/air_watch.h"
#include "venue/air/radio.h"
#include "venue/air/sequence_count.h"
#include "venue/base/json_line.h"
#include "venue/show/packet.h"
#include "venue/show/scenario_file.h"
#include "venue/show/show_key.h"
#include "venue/show/show_senders.h"
#include "venue/show/true_show.h"

namespace halvora {

namespace {

constexpr double kLongestListening = 1e9;
/// A phone begins to scan a second after its start; a recording's first packet comes after that.
constexpr long long kRecordedFromMs = 2000;
constexpr std::uint64_t kMostAirs = 32;
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

class RadioClock final : public WallClock {
 public:
  explicit RadioClock(const Radio& radio) : radio_(radio) {}
  Date now() const override { return radio_.date(); }

 private:
  const Radio& radio_;
};

// Hears what its radio hears: prints it, counts it and records it; and watches, where that is
// wanted.
class Listening final : private CentralManagerDelegate {
 public:
  Listening(Radio& radio, const Output& output, std::ofstream* recording,
            const AirWatchOptions* watch, const MessageCodes* codes)
      : radio_(radio),
        output_(output),
        recording_(recording),
        clock_(radio),
        watch_(watch == nullptr
                   ? nullptr
                   : std::make_unique<AirWatch>(
                         *watch, codes != nullptr ? *codes : absent::codes(), clock_,
                         [this](const AirFinding& finding) { printFinding(finding); })),
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
    looks_ = {loop, loop.every(kBetweenLooks, [this] {
                tellAdapter();
                if (watch_) watch_->look(radio_.loop().now());
              })};
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
    if (counts_.others() == 0) return;
    line.begin().add("t", std::int64_t{wholeMilliseconds(end)}).add("summary", "others");
    print(line.add("packets", static_cast<std::int64_t>(counts_.others())).end());
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
    if (watch_ && format == BroadcastFormat::valid) watch_->hear(data, radio_.loop().now());
    if (recording_ == nullptr) return;
    const double at = static_cast<double>(kRecordedFromMs + time) / 1000;
    JsonLine line;
    *recording_ << line.begin().addLevel("at", at).add("packet", NSDataToHex(data)).end();
  }

  void printFinding(const AirFinding& finding) {
    JsonLine line;
    line.begin().add("t", std::int64_t{wholeMilliseconds(elapsed())});
    if (finding.what == "trust") {
      line.add("trust", finding.detail);
    } else {
      line.add("finding", finding.what);
      if (!finding.transmitter.empty()) line.add("transmitter", finding.transmitter);
      line.add("detail", finding.detail);
    }
    print(line.end());
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
  RadioClock clock_;
  /// Null where nobody asks.
  std::unique_ptr<AirWatch> watch_;
  std::unique_ptr<CentralManager> manager_;
};

class ListenCommand final : public ToolCommand {
 public:
  void describe(CommandOptions& options) override {
    options.optional("--adapter", adapter_,
                     "the adapter, as hci1 (default: whichever works, the first one first)");
    options.optional("--for", for_, "seconds to listen (default: until Ctrl-C)");
    options.optional("--record", record_, "file to write as a scenario that trace replays");
    options.flag("--watch", isWatched_, "say what a crew should know of the air, as it happens");
    options.optional("--expect", expected_,
                     "watch, and compare with the scenario that should be on the air: its looks, "
                     "its transmitters and its venue");
    options.optional("--airs", airs_,
                     "with --expect: how many adapters send it, each under a number of its own, as "
                     "live numbers them (default: 1)");
    options.optional("--show-key", keyFile_,
                     "watch with the show's key: a file of 32 hexadecimal digits that only its "
                     "owner may read");
    options.optional("--allow", watch_.transmitters,
                     "watch; a transmitter of the show, as application:number; may be repeated");
    options.optional("--venue", venue_, "watch; the show's venue");
    options.footer(
        "Prints the adapter in use and each show packet as it is heard, and at the end a summary "
        "of each\ntransmitter: what was received, and by the gaps in its sequence what was lost. A "
        "watch adds lines with "
        "\"trust\"\n(unproven, trusted, contested: what a phone in guarded air would think) and "
        "\"finding\" (unknown sender,\nwrong venue, jump, two senders, other look, silent).");
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
    if (auto refusal = readWatch(call)) return std::move(*refusal);
    if (!call.outside.openRadio) return failed("this halvora was built without Bluetooth");
    const std::unique_ptr<Radio> radio = call.outside.openRadio(adapter_);
    return listen(*radio, longest, call);
  }

 private:
  std::optional<CommandResult> readWatch(const Call& call) {
    isWatched_ = isWatched_ || expected_ || keyFile_ || venue_ || !watch_.transmitters.empty();
    watch_.air.policy = AirPolicy::guarded;
    if (venue_) {
      const auto venue = decimal(*venue_, UINT8_MAX);
      if (!venue) return unusable("--venue must be 0 to 255, not \"" + *venue_ + "\"");
      watch_.venueId = static_cast<std::uint8_t>(*venue);
    }
    if (keyFile_) {
      auto key = readShowKey(*keyFile_);
      if (auto* refusal = std::get_if<CommandResult>(&key)) return std::move(*refusal);
      if (call.outside.codes == nullptr) return failed("this build has no cipher for show keys");
      watch_.air.showKey = std::get<ShowKey>(key);
      watch_.air.authentication = Authentication::prefer;
    }
    std::optional<std::uint64_t> airs = 1;
    if (airs_) airs = decimal(*airs_, kMostAirs);
    if (!airs || *airs == 0) return unusable("--airs must be 1 to 32, not \"" + *airs_ + "\"");
    if (airs_ && !expected_) return unusable("--airs goes with --expect");
    if (!expected_) return std::nullopt;
    auto scenario = readScenario(*expected_, ExactJsonReader(), call.outside.isInterrupted);
    if (auto* refusal = std::get_if<CommandResult>(&scenario)) return std::move(*refusal);
    const auto& show = std::get<Scenario>(scenario);
    show_.emplace(show, show.lastAction());
    watch_.expected = &*show_;
    senders_.emplace(show, show.lastAction(), AirWatch::kLate, static_cast<std::size_t>(*airs));
    watch_.senders = &*senders_;
    // What the scenario does not have is as wrong as what it has and is not there.
    if (watch_.transmitters.empty()) watch_.transmitters = senders_->keys();
    if (!watch_.venueId) watch_.venueId = senders_->venueId();
    return std::nullopt;
  }

  CommandResult listen(Radio& radio, std::optional<Duration> longest, const Call& call) {
    std::ofstream recording;
    Listening listening(radio, call.output, record_.empty() ? nullptr : &recording,
                        isWatched_ ? &watch_ : nullptr, call.outside.codes);
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
  bool isWatched_ = false;
  std::optional<std::string> expected_;
  std::optional<std::string> airs_;
  std::optional<std::string> keyFile_;
  std::optional<std::string> venue_;
  AirWatchOptions watch_;
  std::optional<TrueShow> show_;
  std::optional<ShowSenders> senders_;
};

}  // namespace

std::unique_ptr<ToolCommand> makeListenCommand() { return std::make_unique<ListenCommand>(); }

}  // namespace halvora
