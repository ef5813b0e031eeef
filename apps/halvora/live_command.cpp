// SPDX-License-Identifier: Apache-2.0
#include "apps/halvora/live_command.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <variant>
#include <vector>

#include "apps/halvora/command_line.h"
#include "apps/halvora/show_input.h"
#include "engine/signed_broadcast.h"
#include "venue/base/json_line.h"
#include "venue/live/command_input.h"
#include "venue/live/desk_fixture.h"
#include "venue/live/live_session.h"
#include "venue/live/radio_air.h"
#include "venue/show/cue_values.h"
#include "venue/show/show_key.h"

namespace halvora {

namespace {

constexpr const char* kLines = "stdout";
constexpr const char* kLoopback = "127.0.0.1";

/// Where the numbers of an application's shows are kept that go on a real air.
std::string usualJournal(std::uint16_t applicationId) {
  const char* const state = std::getenv("XDG_STATE_HOME");
  const char* const home = std::getenv("HOME");
  std::string folder = state != nullptr && state[0] == '/' ? state : "";
  if (folder.empty() && home != nullptr) folder = std::string(home) + "/.local/state";
  if (folder.empty()) return {};
  return folder + "/halvora/" + std::to_string(applicationId) + ".journal";
}

class LiveCommand final : public ToolCommand {
 public:
  void describe(CommandOptions& options) override {
    options.required("FILE", words_, "the show, as YAML; what stands behind it is a further air");
    input_.describeAssets(options);
    options.required("--air", airs_,
                     "where packets go: a Bluetooth adapter, as hci0, or stdout, a line of JSON "
                     "each; several are one transmitter each, with numbers counting up. With "
                     "=NUMBER behind each, as hci1=2, they are zones of the hall: each sends the "
                     "cues of that transmitter alone");
    options.optional("--control", control_, "- takes commands from standard input, a line each");
    options.optional("--osc", osc_,
                     "UDP port that takes commands by OSC: /halvora/go, /halvora/goto with a text, "
                     "and so on");
    options.optional("--osc-bind", oscBind_,
                     "address to listen at with --osc; anybody who reaches it plays the show "
                     "(default: 127.0.0.1)");
    options.optional(
        "--ola", ola_,
        "universe of a lighting desk, by OLA's daemon on this machine: go, back, hold, "
        "blackout, panic, release, cue number and take on its first eight channels");
    options.optional("--journal", journal_,
                     "file that keeps the last sequence number (default: one of the application's "
                     "own for adapters, none for stdout)");
    options.flag("--no-journal", isWithoutJournal_,
                 "go on the air with numbers that a restart does not know");
    options.optional("--sequence", sequence_,
                     "the first sequence number, where the journal has none above it (default: 1)");
    options.optional("--show-key", keyFile_,
                     "file with the show's key: packets are signed, for the minute that they are "
                     "sent in");
    options.footer(
        "Commands: go, back, goto NAME, hold, resume, blackout, release, panic, quit. On a "
        "terminal the keys\n" +
        std::string(kKeysHelp) +
        ".\nNothing is on the air before the first go. blackout and panic stay until release, and "
        "nothing else\nis obeyed meanwhile. Loss of what gives commands leaves the show as it is.");
  }

  CommandResult run(const Call& call) override {
    airs_.insert(airs_.end(), words_.begin() + 1, words_.end());
    if (auto refusal = checkOptions()) return std::move(*refusal);
    if (auto refusal = input_.read(words_.front(), call)) return std::move(*refusal);
    if (auto refusal = checkNumbers()) return std::move(*refusal);
    if (!call.outside.openLive) return failed("nothing can be played here");
    if (keyFile_) {
      auto code = readShowCode(*keyFile_, call.outside.codes);
      if (auto* refusal = std::get_if<CommandResult>(&code)) return std::move(*refusal);
      code_ = std::get<std::unique_ptr<MessageCode>>(std::move(code));
    }
    const std::unique_ptr<LiveGround> ground = call.outside.openLive();
    auto numbers = openNumbers(*ground);
    if (auto* refusal = std::get_if<CommandResult>(&numbers)) return std::move(*refusal);
    return play(*ground, *std::get<std::unique_ptr<SequenceNumbers>>(numbers), call);
  }

 private:
  bool hasAdapters() const {
    return std::ranges::any_of(airs_, [](const std::string& air) { return air != kLines; });
  }

  std::optional<CommandResult> checkOptions() {
    if (control_ && *control_ != "-") {
      return unusable("--control must be -, for standard input, not \"" + *control_ + "\"");
    }
    if (osc_) {
      const auto port = decimal(*osc_, 0xFFFF);
      if (!port || *port == 0) {
        return unusable("--osc must be a port, 1 to 65535, not \"" + *osc_ + "\"");
      }
      oscPort_ = static_cast<std::uint16_t>(*port);
    } else if (oscBind_ != kLoopback) {
      return unusable("--osc-bind goes with --osc");
    }
    if (ola_) {
      const auto universe = decimal(*ola_, UINT32_MAX);
      if (!universe) {
        return unusable("--ola must be a universe's number, not \"" + *ola_ + "\"");
      }
      universe_ = static_cast<unsigned>(*universe);
    }
    const auto first = decimal(sequence_, 0xFFFF);
    if (!first || *first == 0) {
      return unusable("--sequence must be a whole number from 1 to 65535, not \"" + sequence_ +
                      "\"");
    }
    first_ = static_cast<std::uint16_t>(*first);
    if (journal_ && isWithoutJournal_) {
      return unusable("--journal and --no-journal exclude each other");
    }
    if (auto refusal = readZones()) return refusal;
    for (std::size_t at = 0; at < airs_.size(); ++at) {
      if (airs_[at].empty()) return unusable("--air must name an adapter, or be stdout");
      const auto before = airs_.begin() + static_cast<std::ptrdiff_t>(at);
      if (airs_[at] != kLines && std::find(airs_.begin(), before, airs_[at]) != before) {
        return unusable("--air " + airs_[at] + " is there twice; an adapter is one transmitter");
      }
    }
    return std::nullopt;
  }

  // Takes the numbers off the names of the airs.
  std::optional<CommandResult> readZones() {
    for (std::string& air : airs_) {
      const std::size_t at = air.find('=');
      if (at == std::string::npos) continue;
      const auto zone = decimal(air.substr(at + 1), kVenueWideTransmitter - 1);
      if (!zone) {
        return unusable("--air " + air +
                        ": a zone is a transmitter's number, 0 to 254, as in hci1=2");
      }
      zones_.push_back(static_cast<std::uint8_t>(*zone));
      air.erase(at);
    }
    if (zones_.empty() || zones_.size() == airs_.size()) return std::nullopt;
    return unusable("--air: either all airs are of a zone, as hci1=2, or none");
  }

  // Nobody would send a cue of a zone that has no air.
  std::optional<CommandResult> checkZones() const {
    for (const Cue& cue : input_.show().cues) {
      const int number = cue.look.packet.transmitter;
      if (number == kVenueWideTransmitter || std::ranges::count(zones_, number) > 0) continue;
      return unusable(input_.file() + ": cue \"" + cue.name + "\" is of transmitter " +
                      std::to_string(number) + ", and no --air is of that zone");
    }
    return std::nullopt;
  }

  std::optional<std::uint8_t> zoneOf(std::size_t air) const {
    return zones_.empty() ? std::nullopt : std::optional(zones_[air]);
  }

  // Every transmitter of the show needs a number of its own.
  std::optional<CommandResult> checkNumbers() const {
    if (!zones_.empty()) return checkZones();
    if (airs_.size() == 1) return std::nullopt;
    const CueList& show = input_.show();
    const auto lacksNumbers = [this](int number) {
      return number + static_cast<int>(airs_.size()) > kVenueWideTransmitter;
    };
    int greatest = show.sender.transmitter;
    for (const Cue& cue : show.cues) {
      // Who speaks for the whole venue does so on every air.
      const int number = cue.look.packet.transmitter;
      if (number != kVenueWideTransmitter) greatest = std::max(greatest, number);
    }
    if (lacksNumbers(greatest)) {
      return unusable(input_.file() + ": transmitter " + std::to_string(greatest) +
                      " leaves no numbers for " + std::to_string(airs_.size()) +
                      " airs; they count up to 254");
    }
    return std::nullopt;
  }

  std::variant<std::unique_ptr<SequenceNumbers>, CommandResult> openNumbers(LiveGround& ground) {
    std::string path = journal_.value_or("");
    if (!journal_ && hasAdapters() && !isWithoutJournal_) {
      path = usualJournal(input_.show().sender.applicationId);
      if (path.empty()) return unusable("no home folder to keep a journal in; see --journal");
      std::error_code error;
      std::filesystem::create_directories(std::filesystem::path(path).parent_path(), error);
    } else if (!journal_) {
      return std::make_unique<PlainNumbers>(first_);
    }
    return openSequenceJournal(path, first_, ground.makeQueue());
  }

  PacketEncoder encoderOn(const LiveGround& ground) const {
    return [this, &ground](const Broadcast& packet) -> std::vector<std::uint8_t> {
      if (code_) {
        const auto bytes = signBroadcast(packet, epochOf(ground.date()), *code_);
        return {bytes.begin(), bytes.end()};
      }
      const BroadcastBytes bytes = encodeBroadcast(packet);
      return {bytes.begin(), bytes.end()};
    };
  }

  LiveReport reportTo(const Call& call) {
    const Output& messages = call.outside.messages;
    const Terminal& terminal = call.outside.terminal;
    const auto say = [&messages](const std::string& line) {
      if (messages) messages("halvora: " + line + "\n");
    };
    if (control_) {
      return {[this, &messages](Duration time, const LiveStatus& status) {
                if (messages) messages(lineOf(time, status));
              },
              say};
    }
    return {[this, &terminal](Duration, const LiveStatus&) { showStatus(terminal); },
            [say, &terminal](const std::string& line) {
              if (terminal.write) terminal.write("\r\033[K");
              say(line);
            }};
  }

  std::string lineOf(Duration time, const LiveStatus& status) {
    line_.begin().add("t", static_cast<std::int64_t>(time / milliseconds(1)));
    if (status.cue) {
      line_.add("cue", input_.show().cues[*status.cue].name);
    } else {
      line_.addNull("cue");
    }
    line_.add("state", nameOf(status.state));
    return std::string(line_.end());
  }

  void showStatus(const Terminal& terminal) const {
    if (session_ == nullptr || !terminal.write) return;
    const ShowPlayer& player = session_->player();
    const LiveStatus status = player.status();
    const auto& cues = input_.show().cues;
    std::string text = "\r\033[K" + std::string(nameOf(status.state));
    if (status.cue) {
      text += "  " + std::to_string(*status.cue + 1) + "/" + std::to_string(cues.size()) + " " +
              cues[*status.cue].name;
    }
    if (const auto next = player.nextCue()) {
      text += "  next: " + cues[*next].name;
      if (const auto rest = player.untilNext()) {
        text += " in " + showTimeText(*rest / milliseconds(1000) * milliseconds(1000)) + " s";
      }
    }
    terminal.write(text);
  }

  // Whoever gives commands; what to end with where nobody could ever say go.
  std::optional<CommandResult> listen(LiveGround& ground,
                                      const std::function<void(const std::string&)>& say) {
    const auto obey = [this](std::string_view line) { session_->obey(line); };
    bool hasSource = osc_.has_value() || ola_.has_value();
    if (ola_ && !openDesk(ground, say)) {
      return failed("--ola: this halvora was built without the input of lighting desks (OLA)");
    }
    if (osc_) {
      if (auto why = ground.readOsc(oscBind_, oscPort_, {obey, [] {}}); !why.empty()) {
        return failed("--osc: " + why);
      }
    }
    if (control_) {
      hasSource = true;
      ground.readLines(
          {obey, [say] { say("standard input has ended; the show goes on as it is"); }});
    } else if (ground.readKeys(
                   {obey, [say] { say("the terminal is gone; the show goes on as it is"); }})) {
      hasSource = true;
    }
    if (hasSource) return std::nullopt;
    return unusable("nobody can give commands: there is no terminal; see --control and --osc");
  }

  // Where the desk or its daemon goes, nothing changes on the air.
  bool openDesk(LiveGround& ground, const std::function<void(const std::string&)>& say) {
    std::vector<std::string> names;
    for (const Cue& cue : input_.show().cues) names.push_back(cue.name);
    const auto fixture = std::make_shared<DeskFixture>(std::move(names));
    desk_ = ground.openOla(
        universe_, {[this, fixture](std::span<const std::uint8_t> levels) {
                      for (const std::string& command : fixture->take(levels)) {
                        session_->obey(command);
                      }
                    },
                    [fixture, say](bool isThere) {
                      fixture->forget();
                      say(isThere ? "the desk's daemon (olad) is there"
                                  : "the desk's daemon (olad) is not there; the show goes on as it "
                                    "is, and it is tried again every second");
                    }});
    return desk_ != nullptr;
  }

  std::unique_ptr<RadioAir> openAdapter(const std::string& adapter, LiveGround& ground,
                                        const std::function<void(const std::string&)>& say) {
    const Duration interval =
        std::clamp(input_.show().repeat, milliseconds(20), milliseconds(10240));
    return std::make_unique<RadioAir>([&ground] { return ground.makeAdvertiser(); },
                                      TransmitterSettings{adapter, interval}, ground.loop(), say);
  }

  CommandResult play(LiveGround& ground, SequenceNumbers& numbers, const Call& call) {
    const std::atomic<bool>& isInterrupted = call.outside.isInterrupted;
    const LiveReport report = reportTo(call);
    LiveSession session(input_.show(), input_.mapFrames(), ground.loop(), numbers,
                        encoderOn(ground), report);
    session_ = &session;
    LineAir lines(ground.loop(), call.output);
    std::vector<std::unique_ptr<RadioAir>> radios;
    for (std::size_t at = 0; at < airs_.size(); ++at) {
      const std::string& air = airs_[at];
      if (air == kLines) {
        session.add(lines, zoneOf(at));
        continue;
      }
      if (!ground.makeAdvertiser()) return failed("this halvora was built without Bluetooth");
      radios.push_back(openAdapter(air, ground, report.say));
      session.add(*radios.back(), zoneOf(at));
    }
    const auto isBusy = [&] {
      return std::ranges::any_of(radios, [](const auto& radio) { return radio->isBusy(); });
    };
    ground.runUntil([&] { return isInterrupted || !isBusy(); });
    // Whoever begins a show knows what it has; what is lost later is waited for.
    for (const auto& radio : radios) {
      if (!radio->failure().empty()) return failed(radio->adapter() + ": " + radio->failure());
    }
    if (auto refusal = listen(ground, report.say)) return std::move(*refusal);
    Timer clock;
    if (!control_) {
      showStatus(call.outside.terminal);
      clock = {ground.loop(), ground.loop().every(milliseconds(1000), [this, &call] {
                 showStatus(call.outside.terminal);
               })};
    }
    ground.runUntil([&] { return isInterrupted || session.hasQuit() || !lines.isWritable(); });
    if (!control_ && call.outside.terminal.write) call.outside.terminal.write("\n");
    for (const auto& radio : radios) {
      radio->end();
      if (radio->leftOut() > 0) {
        report.say(radio->adapter() + " left out " + std::to_string(radio->leftOut()) +
                   " packets for newer ones");
      }
    }
    ground.runUntil([&] { return !isBusy(); });
    desk_.reset();
    session_ = nullptr;
    return lines.isWritable() ? done() : failed("standard output cannot be written");
  }

  ShowInput input_;
  std::vector<std::string> words_;
  std::vector<std::string> airs_;
  /// One an air, or none.
  std::vector<std::uint8_t> zones_;
  std::optional<std::string> control_;
  std::optional<std::string> ola_;
  unsigned universe_ = 0;
  std::unique_ptr<OlaInput> desk_;
  std::optional<std::string> osc_;
  std::string oscBind_ = kLoopback;
  std::uint16_t oscPort_ = 0;
  std::optional<std::string> journal_;
  bool isWithoutJournal_ = false;
  std::optional<std::string> keyFile_;
  std::unique_ptr<MessageCode> code_;
  std::string sequence_ = "1";
  std::uint16_t first_ = 1;
  JsonLine line_;
  LiveSession* session_ = nullptr;
};

}  // namespace

std::unique_ptr<ToolCommand> makeLiveCommand() { return std::make_unique<LiveCommand>(); }

}  // namespace halvora
