// SPDX-License-Identifier: Apache-2.0
#include "apps/halvora/live_options.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>

#include "venue/base/input_text.h"
#include "venue/live/command_input.h"

namespace halvora {

namespace {

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

}  // namespace

void LiveOptions::describe(CommandOptions& options) {
  options.required("FILE", words_, "the show, as YAML; what stands behind it is a further air");
  input.describeAssets(options);
  options.required("--air", airs,
                   "where packets go: a Bluetooth adapter, as hci0, or stdout, a line of JSON "
                   "each; several are one transmitter each, with numbers counting up. With "
                   "=NUMBER behind each, as hci1=2, they are zones of the hall: each sends the "
                   "cues of that transmitter alone");
  options.optional("--control", control, "- takes commands from standard input, a line each");
  options.optional("--osc", osc,
                   "UDP port that takes commands by OSC: /halvora/go, /halvora/goto with a text, "
                   "and so on");
  options.optional("--osc-bind", oscBind,
                   "address to listen at with --osc; anybody who reaches it plays the show "
                   "(default: 127.0.0.1)");
  options.optional("--ola", ola,
                   "universe of a lighting desk, by OLA's daemon on this machine: go, back, hold, "
                   "blackout, panic, release, cue number and take on its first eight channels");
  options.optional("--journal", journal,
                   "file that keeps the last sequence number (default: one of the application's "
                   "own for adapters, none for stdout)");
  options.flag("--no-journal", isWithoutJournal_,
               "go on the air with numbers that a restart does not know");
  options.flag("--standby", isStandby,
               "stand by for the player that has the journal: everything is held ready, and where "
               "that player dies this one goes on at once, where it was");
  options.optional("--sequence", sequence_,
                   "the first sequence number, where the journal has none above it (default: 1)");
  options.optional("--show-key", keyFile,
                   "file with the show's key: packets are signed, for the minute that they are "
                   "sent in");
  options.footer(
      "Commands: go, back, goto NAME, hold, resume, blackout, release, panic, quit. On a "
      "terminal the keys\n" +
      std::string(kKeysHelp) +
      ".\nNothing is on the air before the first go. blackout and panic stay until release, and "
      "nothing else\nis obeyed meanwhile. Loss of what gives commands leaves the show as it is.");
}

std::optional<CommandResult> LiveOptions::read(const Call& call) {
  airs.insert(airs.end(), words_.begin() + 1, words_.end());
  if (auto refusal = checkOptions()) return refusal;
  if (auto refusal = input.read(words_.front(), call)) return refusal;
  if (auto refusal = checkNumbers()) return refusal;
  return nameJournal();
}

bool LiveOptions::hasAdapters() const {
  return std::ranges::any_of(airs, [](const std::string& air) { return air != kLines; });
}

std::optional<CommandResult> LiveOptions::checkOptions() {
  if (control && *control != "-") {
    return unusable("--control must be -, for standard input, not \"" + *control + "\"");
  }
  if (osc) {
    const auto port = decimal(*osc, 0xFFFF);
    if (!port || *port == 0) {
      return unusable("--osc must be a port, 1 to 65535, not \"" + *osc + "\"");
    }
    oscPort = static_cast<std::uint16_t>(*port);
  } else if (oscBind != kLoopback) {
    return unusable("--osc-bind goes with --osc");
  }
  if (ola) {
    const auto number = decimal(*ola, UINT32_MAX);
    if (!number) return unusable("--ola must be a universe's number, not \"" + *ola + "\"");
    universe = static_cast<unsigned>(*number);
  }
  const auto number = decimal(sequence_, 0xFFFF);
  if (!number || *number == 0) {
    return unusable("--sequence must be a whole number from 1 to 65535, not \"" + sequence_ + "\"");
  }
  first = static_cast<std::uint16_t>(*number);
  if (journal && isWithoutJournal_) {
    return unusable("--journal and --no-journal exclude each other");
  }
  if (isStandby && !journal && (isWithoutJournal_ || !hasAdapters())) {
    return unusable("--standby goes with the journal of the player to stand by for; see --journal");
  }
  if (auto refusal = readZones()) return refusal;
  for (std::size_t at = 0; at < airs.size(); ++at) {
    if (airs[at].empty()) return unusable("--air must name an adapter, or be stdout");
    const auto before = airs.begin() + static_cast<std::ptrdiff_t>(at);
    if (airs[at] != kLines && std::find(airs.begin(), before, airs[at]) != before) {
      return unusable("--air " + airs[at] + " is there twice; an adapter is one transmitter");
    }
  }
  return std::nullopt;
}

// Takes the numbers off the names of the airs.
std::optional<CommandResult> LiveOptions::readZones() {
  for (std::string& air : airs) {
    const std::size_t at = air.find('=');
    if (at == std::string::npos) continue;
    const auto zone = decimal(air.substr(at + 1), kVenueWideTransmitter - 1);
    if (!zone) {
      return unusable("--air " + air +
                      ": a zone is a transmitter's number, 0 to 254, as in hci1=2");
    }
    zones.push_back(static_cast<std::uint8_t>(*zone));
    air.erase(at);
  }
  if (zones.empty() || zones.size() == airs.size()) return std::nullopt;
  return unusable("--air: either all airs are of a zone, as hci1=2, or none");
}

// Nobody would send a cue of a zone that has no air.
std::optional<CommandResult> LiveOptions::checkZones() const {
  for (const Cue& cue : input.show().cues) {
    const int number = cue.look.packet.transmitter;
    if (number == kVenueWideTransmitter || std::ranges::count(zones, number) > 0) continue;
    return unusable(input.file() + ": cue \"" + cue.name + "\" is of transmitter " +
                    std::to_string(number) + ", and no --air is of that zone");
  }
  return std::nullopt;
}

// Every transmitter of the show needs a number of its own.
std::optional<CommandResult> LiveOptions::checkNumbers() const {
  if (!zones.empty()) return checkZones();
  if (airs.size() == 1) return std::nullopt;
  const CueList& show = input.show();
  const auto lacksNumbers = [this](int number) {
    return number + static_cast<int>(airs.size()) > kVenueWideTransmitter;
  };
  int greatest = show.sender.transmitter;
  for (const Cue& cue : show.cues) {
    // Who speaks for the whole venue does so on every air.
    const int number = cue.look.packet.transmitter;
    if (number != kVenueWideTransmitter) greatest = std::max(greatest, number);
  }
  if (lacksNumbers(greatest)) {
    return unusable(input.file() + ": transmitter " + std::to_string(greatest) +
                    " leaves no numbers for " + std::to_string(airs.size()) +
                    " airs; they count up to 254");
  }
  return std::nullopt;
}

std::optional<CommandResult> LiveOptions::nameJournal() {
  if (journal || isWithoutJournal_ || !hasAdapters()) return std::nullopt;
  const std::string path = usualJournal(input.show().sender.applicationId);
  if (path.empty()) return unusable("no home folder to keep a journal in; see --journal");
  std::error_code error;
  std::filesystem::create_directories(std::filesystem::path(path).parent_path(), error);
  journal = path;
  return std::nullopt;
}

}  // namespace halvora
