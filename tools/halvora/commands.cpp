// SPDX-License-Identifier: Apache-2.0
#include "tools/halvora/commands.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include "engine/broadcast.h"
#include "platform/json/rapid_json_reader.h"
#include "platform/standard/seeded_random.h"
#include "platform/standard/standard_files.h"
#include "platform/virtual/virtual_devices.h"
#include "tools/halvora/packet.h"
#include "tools/halvora/scenario.h"
#include "tools/halvora/trace.h"

namespace halvora {

namespace {

constexpr int kUnusable = 2;
constexpr std::size_t kLargestScenario = std::size_t{256} << 20;
constexpr double kLatestEnd = 1e9;

CommandResult unusable(std::string what) { return {kUnusable, std::move(what)}; }

CommandResult writeAll(std::string_view text, const Output& output) {
  if (output(text)) return {};
  return {1, "standard output cannot be written"};
}

std::optional<std::uint64_t> decimal(std::string_view text, std::uint64_t largest) {
  std::uint64_t value = 0;
  if (text.empty()) return std::nullopt;
  for (const char character : text) {
    if (character < '0' || character > '9') return std::nullopt;
    const auto digit = static_cast<std::uint64_t>(character - '0');
    if (value > (largest - digit) / 10) return std::nullopt;
    value = value * 10 + digit;
  }
  return value;
}

// A plain decimal number, and nothing around it.
std::optional<double> plainNumber(const std::string& text) {
  const bool isPlain = text.find_first_not_of("0123456789.eE+-") == std::string::npos;
  char* end = nullptr;
  const double value = std::strtod(text.c_str(), &end);
  const bool isWhole = !text.empty() && text.front() != '+' && *end == '\0';
  return isPlain && isWhole ? std::optional(value) : std::nullopt;
}

CommandResult notHexadecimal(const std::string& text) {
  return unusable("\"" + text + "\" is not whole bytes as hexadecimal digits");
}

struct DecodeCommand {
  std::vector<std::string> packets;

  void describe(CLI::App& app) {
    app.add_option("HEX", packets, "manufacturer data as hexadecimal digits, one packet each")
        ->required();
  }
  CommandResult run(const Output& output) const {
    std::string lines;
    for (const std::string& packet : packets) {
      const auto data = bytesOfHex(packet);
      if (!data) return notHexadecimal(packet);
      lines += describePacket(*data);
    }
    return writeAll(lines, output);
  }
};

struct EncodeCommand {
  std::array<std::string, kBroadcastFields.size()> values;

  void describe(CLI::App& app) {
    for (std::size_t at = 0; at < values.size(); ++at) {
      const BroadcastField& field = kBroadcastFields[at];
      app.add_option("--" + std::string(field.name), values[at],
                     "0 to " + std::to_string(field.largest()))
          ->default_str("0");
    }
  }
  CommandResult run(const CLI::App& app, const Output& output) const {
    Broadcast broadcast;
    for (std::size_t at = 0; at < values.size(); ++at) {
      const BroadcastField& field = kBroadcastFields[at];
      const std::string option = "--" + std::string(field.name);
      if (app.count(option) == 0) continue;
      const auto value = decimal(values[at], field.largest());
      if (!value) {
        return unusable(option + " must be decimal digits, 0 to " +
                        std::to_string(field.largest()) + ", not \"" + values[at] + "\"");
      }
      broadcast.*field.value = static_cast<std::uint16_t>(*value);
    }
    return writeAll(NSDataToHex(encodeBroadcast(broadcast)) + "\n", output);
  }
};

struct TraceCommand {
  std::string file;
  std::string chance = "1";
  std::string until;
  TraceOptions options;

  void describe(CLI::App& app) {
    app.add_option("SCENARIO", file, "JSON Lines file of what happens around the phone")
        ->required();
    app.add_option("--assets", options.assets, "folder that holds HVAssets (default: none)");
    app.add_option("--documents", options.documents,
                   "the phone's private documents folder (default: an empty one)");
    app.add_option("--random", chance,
                   "how draws fall: min, max, or the seed of a generator (default: 1)");
    app.add_option("--until", until,
                   "seconds at which the trace ends (default: 10 after the last action)");
    app.add_option("--allow", options.allowedTransmitterIds,
                   "a transmitter to obey, as application:number; may be repeated (default: all)")
        ->allow_extra_args(false);
    app.footer(
        "Each line of the scenario is an object with \"at\" (seconds) and one of: device, start, "
        "bluetooth,\npacket (with every and until to repeat it), app, defaults, precompute, "
        "invalidate, playVideo.\nSeat tables are not built yet: precompute and invalidate do "
        "nothing.");
  }

  std::unique_ptr<Random> random() const {
    using Rule = ScriptedRandom::Rule;
    if (chance == "min" || chance == "max") {
      auto scripted =
          std::make_unique<ScriptedRandom>(chance == "min" ? Rule::least : Rule::greatest);
      scripted->log.isKept = false;
      return scripted;
    }
    const auto seed = decimal(chance, UINT64_MAX);
    return seed ? std::make_unique<SeededRandom>(*seed) : nullptr;
  }

  CommandResult run(const CLI::App& app, const ImageDecoder& images, const Output& output) {
    std::error_code error;
    if (!options.assets.empty() && !std::filesystem::is_directory(options.assets, error)) {
      return unusable(options.assets + ": no such folder (--assets)");
    }
    if (!options.documents.empty() && std::filesystem::exists(options.documents, error) &&
        !std::filesystem::is_directory(options.documents, error)) {
      return unusable(options.documents + ": not a folder (--documents)");
    }
    auto drawn = random();
    if (!drawn)
      return unusable("--random must be min, max or a whole number, not \"" + chance + "\"");
    if (app.count("--until") > 0) {
      const std::optional<double> seconds = plainNumber(until);
      if (!seconds || *seconds < 0 || *seconds > kLatestEnd) {
        return unusable("--until must be seconds, 0 or more, not \"" + until + "\"");
      }
      options.until = fromSeconds(*seconds);
    }

    const auto text = readFile(file, kLargestScenario);
    if (!text) return unusable(file + ": cannot be read");
    const RapidJsonReader json;
    auto parsed = parseScenario(*text, json);
    if (const auto* bad = std::get_if<ScenarioError>(&parsed)) {
      return unusable(file + ":" + std::to_string(bad->line) + ": " + bad->what);
    }
    bool isWritable = true;
    const bool ended =
        runTrace(std::get<Scenario>(parsed), options, std::move(drawn), {json, images},
                 [&](std::string_view lines) { isWritable = isWritable && output(lines); });
    if (!isWritable) return {1, "standard output cannot be written"};
    if (!ended) return {1, file + ": the phone never comes to rest"};
    return {};
  }
};

// A complaint is one line, whatever a file name or an argument in it holds.
std::string oneLine(std::string text) {
  std::replace_if(
      text.begin(), text.end(),
      [](char character) { return static_cast<unsigned char>(character) < ' '; }, '?');
  return text;
}

CommandResult run(int argumentCount, const char* const* arguments, const ImageDecoder& images,
                  const Output& output) {
  CLI::App app(
      "Looks at light show packets and says, to the millisecond, what a phone does with them.",
      "halvora");
  app.require_subcommand(1);
  DecodeCommand decode;
  EncodeCommand encode;
  TraceCommand trace;
  CLI::App* packet = app.add_subcommand("packet", "decode or encode show packets");
  packet->require_subcommand(1);
  CLI::App* decodeApp = packet->add_subcommand("decode", "print packets as JSON, a line each");
  CLI::App* encodeApp = packet->add_subcommand("encode", "print the packet with the given fields");
  CLI::App* traceApp =
      app.add_subcommand("trace", "run one phone through a scenario and print what it does");
  decode.describe(*decodeApp);
  encode.describe(*encodeApp);
  trace.describe(*traceApp);

  try {
    app.parse(argumentCount, arguments);
  } catch (const CLI::CallForHelp&) {
    return writeAll(app.help(), output);
  } catch (const CLI::ParseError& error) {
    // The library may explain itself at length; its first line says what is wrong.
    const std::string what = error.what();
    return unusable(what.substr(0, what.find('\n')) + " (see --help)");
  }
  if (decodeApp->parsed()) {
    // The library takes brackets for a list of its own and drops them; here they are just no
    // digits.
    const auto* const end = arguments + argumentCount;
    const auto* const bracket = std::find_if(
        arguments, end, [](std::string_view argument) { return argument.starts_with('['); });
    return bracket != end ? notHexadecimal(*bracket) : decode.run(output);
  }
  if (encodeApp->parsed()) return encode.run(*encodeApp, output);
  return trace.run(*traceApp, images, output);
}

}  // namespace

CommandResult runCommand(int argumentCount, const char* const* arguments,
                         const ImageDecoder& images, const Output& output) {
  CommandResult result = run(argumentCount, arguments, images, output);
  result.error = oneLine(std::move(result.error));
  return result;
}

}  // namespace halvora
