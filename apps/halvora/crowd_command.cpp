// SPDX-License-Identifier: Apache-2.0
#include "apps/halvora/crowd_command.h"

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <locale>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "adapters/json/exact_json_reader.h"
#include "apps/halvora/air_options.h"
#include "apps/halvora/command_line.h"
#include "apps/halvora/show_input.h"
#include "venue/base/input_file.h"
#include "venue/base/packed_bytes.h"
#include "venue/base/progress_bar.h"
#include "venue/crowd/crowd_merge.h"
#include "venue/crowd/crowd_run.h"
#include "venue/show/scenario_file.h"

namespace halvora {

namespace {

constexpr double kLatestPicture = 24 * 3600;
constexpr Duration kPictureAfterLastAction = milliseconds(2000);
constexpr const char* kAloneWith = "--delayed-proof does not go with ";

// The parts of "3@320,240,100".
std::vector<std::string> split(const std::string& text, std::string_view separators) {
  std::vector<std::string> parts{""};
  for (const char character : text) {
    if (separators.find(character) != std::string_view::npos) {
      parts.emplace_back();
    } else {
      parts.back() += character;
    }
  }
  return parts;
}

class CrowdCommand final : public ToolCommand {
 public:
  void describe(CommandOptions& options) override {
    options.required("--assets", assets_, "folder that holds HVAssets");
    options.required("--venue", venue_, "the venue's number");
    options.optional("--scenario", scenario_, "JSON Lines file of the show, as for trace");
    options.optional("--show", showFile_,
                     "the show as YAML, in place of a scenario: the report then says of each cue "
                     "when half, 95 % and 99 % of the phones followed, by section");
    options.optional("--out", out_,
                     "a movie (NAME.mp4), a contact sheet (NAME.png) or a folder of pictures; "
                     "without it nothing is simulated, for --coverage alone");
    options.optional("--coverage", coverage_,
                     "a picture (PNG) of how well each seat could hear the show, with --air, "
                     "--dead, --reach and --loss");
    options.optional("--phones", phones_, "so many phones, spread over the seats (default: all)");
    options.optional("--loss", loss_, "share of packets that a phone misses, 0 to 1 (default: 0)");
    options.optional("--jitter", jitter_, "a packet may come so many ms late (default: 0)");
    options.optional("--interval", interval_,
                     "a transmitter repeats its last packet every so many ms (default: never)");
    options.optional(
        "--reach", reaches_,
        "a transmitter's place and reach in the map's pixels, as NUMBER@X,Y,RADIUS; may "
        "be repeated (default: everywhere)");
    options.optional("--zone", zones_,
                     "a transmitter that is heard in that section only, as NUMBER=SECTION; may be "
                     "repeated, for one transmitter too (default: everywhere)");
    options.optional("--dead", dead_,
                     "a transmitter that is off the air from a time on, as NUMBER@SECONDS; may be "
                     "repeated");
    options.optional("--air", controller_,
                     "what controllers send: each transmitter its newest packet, every so many ms "
                     "(default: all that the show sends)");
    options.optional(
        "--late", late_,
        "share of phones that open late, and by how many seconds at most, as SHARE,SECONDS");
    options.optional("--leave", leave_, "share of phones that leave before the end (default: 0)");
    options.optional(
        "--allow", allowed_,
        "a transmitter to obey, as application:number; may be repeated (default: all)");
    air_.describe(options, "--policy");
    options.optional("--rogue", rogues_,
                     "an attacker from that time on, as KIND@SECONDS; may be repeated");
    options.flag(
        "--delayed-proof", isProvenLater_,
        "an experiment: the show is signed with keys that are disclosed two seconds later, "
        "and what is not proven by them flashes less and lights no torch");
    options.optional("--seed", seed_, "whole number that all chances follow from (default: 1)");
    options.optional("--threads", threads_, "so many threads (default: one a processor)");
    options.optional("--fps", fps_, "frames a second, 1 to 120 (default: 30)");
    options.optional("--size", size_, "of a picture, as WIDTHxHEIGHT, even (default: 1280x720)");
    options.optional("--tables", tables_,
                     "folder that keeps the seat tables of pixel maps for the next run with the "
                     "same video and seats; anything in it may be deleted (default: not kept)");
    options.optional("--from", from_,
                     "seconds from which on the show is looked at: what comes before is played "
                     "but neither drawn nor counted (default: 0)");
    options.optional("--until", until_,
                     "seconds at which the show ends (default: 2 after the last action)");
    options.optional("--shard", shard_,
                     "simulate the I-th of N stretches of the phones, as I/N, and write what they "
                     "did to OUT.shard-I-of-N, for `halvora crowd merge`");
    options.flag("--no-progress", isQuiet_,
                 "show no progress: a bar on a terminal, else a line on standard error every ten "
                 "seconds");
    options.footer(
        "Prints a report as one JSON document. Everything in it but the speed is the same "
        "for the same\nseed, whatever the number of threads or shards. `halvora crowd merge` puts "
        "shards together; all\nof them need the same options. With a key the show is signed. "
        "Attackers:\n" +
        rogueHelp());
  }

  CommandResult run(const Call& call) override {
    CrowdRequest request;
    if (auto refusal = readNumbers(request)) return *refusal;
    if (auto refusal = readAir(request)) return *refusal;
    if (auto refusal = readPolicy(request, call.outside)) return *refusal;
    if (auto refusal = readScenario(request, call)) return *refusal;
    if (auto refusal = readPaths(request)) return *refusal;
    if (auto refusal = readShard(request)) return *refusal;
    if (auto refusal = readProof(request)) return *refusal;
    Outside outside = call.outside;
    if (isQuiet_) {
      outside.terminal.write = {};
    } else if (!outside.terminal.write) {
      outside.terminal = lineTerminal(outside);
    }
    return runCrowd(request, {call.arguments, outside, call.output});
  }

 private:
  using Refusal = std::optional<CommandResult>;

  static Refusal refuse(const char* option, const std::string& what, const std::string& text) {
    return unusable(std::string(option) + " must be " + what + ", not \"" + text + "\"");
  }
  // A number from `least` to `most` in `text`; the default where it is empty.
  template <class Number>
  static Refusal read(const char* option, const std::string& text, double least, double most,
                      Number& number) {
    if (text.empty()) return std::nullopt;
    const auto value = plainNumber(text);
    const bool isGood = value && *value >= least && *value <= most &&
                        (!std::is_integral_v<Number> || *value == std::floor(*value));
    if (isGood) {
      number = static_cast<Number>(*value);
      return std::nullopt;
    }
    std::ostringstream range;
    range.imbue(std::locale::classic());
    range << (std::is_integral_v<Number> ? "a whole number" : "a number") << " from " << least
          << " to " << most;
    return refuse(option, range.str(), text);
  }

  Refusal readNumbers(CrowdRequest& request) {
    if (auto refusal = read("--venue", venue_, 1, 1e9, request.venueId)) return refusal;
    if (auto refusal = read("--phones", phones_, 1, 1e7, request.phones)) return refusal;
    if (auto refusal = read("--threads", threads_, 1, 256, request.threads)) return refusal;
    CrowdSettings& settings = request.settings;
    if (auto refusal = read("--fps", fps_, 1, 120, settings.framesPerSecond)) return refusal;
    if (auto refusal = read("--leave", leave_, 0, 1, settings.leaveShare)) return refusal;
    if (!seed_.empty()) {
      const auto seed = decimal(seed_, UINT64_MAX);
      if (!seed) return refuse("--seed", "a whole number", seed_);
      settings.seed = request.air.seed = *seed;
    }
    if (!late_.empty()) {
      const auto parts = split(late_, ",");
      double latest = 0;
      if (parts.size() != 2) return refuse("--late", "SHARE,SECONDS", late_);
      if (auto refusal = read("--late", parts[0], 0, 1, settings.lateShare)) return refusal;
      if (auto refusal = read("--late", parts[1], 0, kLatestPicture, latest)) return refusal;
      settings.latest = fromSeconds(latest);
    }
    if (size_.empty()) return std::nullopt;
    const auto parts = split(size_, "x");
    if (parts.size() != 2) return refuse("--size", "WIDTHxHEIGHT", size_);
    if (auto refusal = read("--size", parts[0], 16, 8192, request.width)) return refusal;
    if (auto refusal = read("--size", parts[1], 16, 8192, request.height)) return refusal;
    if (request.width % 2 != 0 || request.height % 2 != 0) {
      return refuse("--size", "two even numbers", size_);
    }
    return std::nullopt;
  }

  // Keys take the place of repeats that the scenario has, and of the tag.
  Refusal readProof(CrowdRequest& request) const {
    request.isProvenLater = isProvenLater_;
    if (!isProvenLater_) return std::nullopt;
    if (request.airOptions.showKey) return unusable(kAloneWith + std::string("--show-key"));
    if (!controller_.empty()) return unusable(kAloneWith + std::string("--air"));
    if (!interval_.empty()) return unusable(kAloneWith + std::string("--interval"));
    if (request.shard) return unusable(kAloneWith + std::string("--shard"));
    return std::nullopt;
  }

  static std::string rogueHelp() {
    std::string text;
    for (const RogueKind& kind : rogueKinds()) {
      text += "  " + std::string(kind.name) + ": " + std::string(kind.does) + "\n";
    }
    return text;
  }

  Refusal readPolicy(CrowdRequest& request, const Outside& outside) {
    auto policy = air_.read(outside);
    if (auto* refusal = std::get_if<CommandResult>(&policy)) return std::move(*refusal);
    request.airOptions = std::get<AirOptions>(std::move(policy));
    for (const std::string& text : rogues_) {
      const auto rogue = rogueOf(text);
      if (!rogue) return refuse("--rogue", "KIND@SECONDS with a kind that --help names", text);
      request.rogues.push_back(*rogue);
    }
    return std::nullopt;
  }

  Refusal readAir(CrowdRequest& request) {
    AirSettings& air = request.air;
    double jitter = 0;
    double interval = 0;
    if (auto refusal = read("--loss", loss_, 0, 1, air.loss)) return refusal;
    if (auto refusal = read("--jitter", jitter_, 0, 10'000, jitter)) return refusal;
    if (auto refusal = read("--interval", interval_, 1, 60'000, interval)) return refusal;
    air.jitter = fromSeconds(jitter / 1000);
    air.interval = fromSeconds(interval / 1000);
    double controller = 0;
    if (auto refusal = read("--air", controller_, 1, 60'000, controller)) return refusal;
    if (controller > 0 && interval > 0) return unusable("--air and --interval exclude each other");
    air.controller = fromSeconds(controller / 1000);
    for (const std::string& text : dead_) {
      const auto parts = split(text, "@");
      double from = 0;
      if (parts.size() != 2 || parts[1].empty()) return refuse("--dead", "NUMBER@SECONDS", text);
      DeadTransmitter dead;
      if (auto refusal = read("--dead", parts[0], 0, 255, dead.transmitter)) return refusal;
      if (auto refusal = read("--dead", parts[1], 0, kLatestPicture, from)) return refusal;
      dead.from = fromSeconds(from);
      air.dead.push_back(dead);
    }
    for (const std::string& text : zones_) {
      const std::size_t at = text.find('=');
      TransmitterZone zone;
      if (at == std::string::npos || at == 0 || at + 1 == text.size()) {
        return refuse("--zone", "NUMBER=SECTION", text);
      }
      if (auto refusal = read("--zone", text.substr(0, at), 0, 255, zone.transmitter)) {
        return refusal;
      }
      zone.section = text.substr(at + 1);
      air.zones.push_back(std::move(zone));
    }
    for (const std::string& text : reaches_) {
      const auto parts = split(text, "@,");
      if (parts.size() != 4) return refuse("--reach", "NUMBER@X,Y,RADIUS", text);
      TransmitterReach reach;
      if (auto refusal = read("--reach", parts[0], 0, 255, reach.transmitter)) return refusal;
      if (auto refusal = read("--reach", parts[1], -1e6, 1e6, reach.at.x)) return refusal;
      if (auto refusal = read("--reach", parts[2], -1e6, 1e6, reach.at.y)) return refusal;
      if (auto refusal = read("--reach", parts[3], 0, 1e6, reach.radius)) return refusal;
      air.reaches.push_back(reach);
    }
    return std::nullopt;
  }

  Refusal readScenario(CrowdRequest& request, const Call& call) {
    if (scenario_.empty() == showFile_.empty()) {
      return unusable("one of --scenario and --show says what is sent");
    }
    if (!showFile_.empty()) {
      if (auto refusal = readShow(request, call)) return refusal;
      return readEnd(request, showFile_);
    }
    auto scenario = halvora::readScenario(scenario_, ExactJsonReader(), call.outside.isInterrupted);
    if (auto* refusal = std::get_if<CommandResult>(&scenario)) return std::move(*refusal);
    request.scenario = std::get<Scenario>(std::move(scenario));
    if (!shard_.empty()) {
      auto text = readInput(scenario_, kLargestScenario, call.outside.isInterrupted);
      if (auto* refusal = std::get_if<CommandResult>(&text)) return std::move(*refusal);
      const std::uint64_t print = fingerprintOf(std::get<std::string>(text));
      request.facts.push_back("scenario " + std::to_string(print));
    }
    return readEnd(request, scenario_);
  }

  // The same packets as those of the compiled show.
  Refusal readShow(CrowdRequest& request, const Call& call) {
    ShowInput input(assets_);
    if (auto refusal = input.read(showFile_, call)) return refusal;
    const auto packets = packetsOf(input.show(), 1);
    if (!packets) return unusable(showFile_ + ": more packets than a show can have");
    const std::string text = scenarioOf(input.show(), *packets);
    request.facts.push_back("show " + std::to_string(fingerprintOf(text)));
    request.scenario = std::get<Scenario>(parseScenario(text, ExactJsonReader()));
    for (const ShowPacket& sent : *packets) {
      if (sent.cue == request.cues.size()) {
        const std::uint16_t number = sent.packet.sequence;
        request.cues.push_back({input.show().cues[sent.cue].name, sent.begin, number, number});
      }
      request.cues.back().lastSequence = sent.packet.sequence;
    }
    return std::nullopt;
  }

  Refusal readEnd(CrowdRequest& request, const std::string& file) const {
    double until = toSeconds(request.scenario.lastAction() + kPictureAfterLastAction);
    if (until_.empty() && until > kLatestPicture) {
      return unusable(file + ": longer than a day; say how long with --until");
    }
    if (auto refusal = read("--until", until_, 0, kLatestPicture, until)) return refusal;
    request.settings.end = fromSeconds(until);
    double from = 0;
    if (auto refusal = read("--from", from_, 0, until, from)) return refusal;
    request.settings.from = fromSeconds(from);
    std::erase_if(request.cues,
                  [&](const WatchedCue& cue) { return cue.begin < request.settings.from; });
    return std::nullopt;
  }

  // What decides about the result, so that shards of different shows are never put together.
  Refusal readShard(CrowdRequest& request) {
    if (shard_.empty()) return std::nullopt;
    const auto parts = split(shard_, "/");
    const auto number = decimal(parts.front(), CrowdShard::kMost);
    const auto of = decimal(parts.back(), CrowdShard::kMost);
    if (parts.size() != 2 || !number || !of || *number == 0 || *number > *of) {
      return refuse("--shard", "I/N, with I from 1 to N and N up to 512", shard_);
    }
    if (out_.empty()) return unusable("--shard needs the --out that all shards have");
    request.shard = CrowdShard{*number, *of};
    const std::pair<const char*, const std::string*> facts[] = {
        {"--venue", &venue_},       {"--phones", &phones_},  {"--loss", &loss_},
        {"--jitter", &jitter_},     {"--late", &late_},      {"--leave", &leave_},
        {"--interval", &interval_}, {"--air", &controller_}, {"--seed", &seed_},
        {"--fps", &fps_},           {"--size", &size_},      {"--from", &from_},
        {"--until", &until_}};
    for (const auto& [name, value] : facts) request.facts.push_back(name + (" " + *value));
    request.facts.push_back("--policy and --authentication " + air_.text());
    const std::pair<const char*, const std::vector<std::string>*> lists[] = {{"--reach", &reaches_},
                                                                             {"--zone", &zones_},
                                                                             {"--dead", &dead_},
                                                                             {"--allow", &allowed_},
                                                                             {"--rogue", &rogues_}};
    for (const auto& [name, values] : lists) {
      std::string fact = name;
      for (const std::string& value : *values) fact += " " + value;
      request.facts.push_back(std::move(fact));
    }
    return std::nullopt;
  }

  Refusal readPaths(CrowdRequest& request) {
    std::error_code error;
    if (!std::filesystem::is_directory(assets_, error)) {
      return unusable(assets_ + ": no such folder (--assets)");
    }
    request.assets = absolutePath(assets_);
    if (out_.empty() && coverage_.empty()) {
      return unusable("one of --out and --coverage says what is made");
    }
    if (!tables_.empty() && !std::filesystem::is_directory(tables_, error)) {
      return unusable(tables_ + ": no such folder (--tables)");
    }
    if (!tables_.empty()) request.tables = absolutePath(tables_);
    if (!out_.empty()) request.out = absolutePath(out_);
    if (!coverage_.empty()) request.coverage = absolutePath(coverage_);
    if (!out_.empty() && request.out == request.coverage) {
      return unusable("--coverage and --out name one file");
    }
    request.allowedTransmitterIds = allowed_;
    return std::nullopt;
  }

  std::string assets_;
  std::string venue_;
  std::string scenario_;
  std::string showFile_;
  std::vector<std::string> dead_;
  std::string controller_;
  std::string out_;
  std::string coverage_;
  std::string phones_;
  std::string loss_;
  std::string jitter_;
  std::string interval_;
  std::vector<std::string> reaches_;
  std::vector<std::string> zones_;
  std::string late_;
  std::string leave_;
  std::vector<std::string> allowed_;
  AirPolicyOptions air_;
  std::vector<std::string> rogues_;
  std::string seed_;
  std::string threads_;
  std::string fps_;
  std::string size_;
  std::string tables_;
  std::string from_;
  std::string until_;
  std::string shard_;
  bool isQuiet_ = false;
  bool isProvenLater_ = false;
};

class CrowdMergeCommand final : public ToolCommand {
 public:
  void describe(CommandOptions& options) override {
    options.required("PART", request_.parts, "what the shards wrote, all of them, in any order");
    options.required("--out", request_.out,
                     "a movie (NAME.mp4), a contact sheet (NAME.png) or a folder of pictures, as "
                     "the shards had it");
    options.optional("--coverage", request_.coverage,
                     "a picture (PNG) of how well each seat could hear the show, where the shards "
                     "had it");
    options.flag("--no-progress", isQuiet_, "show no progress");
    options.footer(
        "Prints the report that one run of all phones would have printed, and makes the same "
        "pictures, byte\nfor byte. The report's speed alone is another one: that of the shards one "
        "after the other.");
  }

  CommandResult run(const Call& call) override {
    request_.out = absolutePath(request_.out);
    if (!request_.coverage.empty()) request_.coverage = absolutePath(request_.coverage);
    Outside outside = call.outside;
    if (isQuiet_) {
      outside.terminal.write = {};
    } else if (!outside.terminal.write) {
      outside.terminal = lineTerminal(outside);
    }
    return mergeCrowd(request_, {call.arguments, outside, call.output});
  }

 private:
  CrowdMergeRequest request_;
  bool isQuiet_ = false;
};

}  // namespace

std::unique_ptr<ToolCommand> makeCrowdMergeCommand() {
  return std::make_unique<CrowdMergeCommand>();
}

std::unique_ptr<ToolCommand> makeCrowdCommand() { return std::make_unique<CrowdCommand>(); }

}  // namespace halvora
