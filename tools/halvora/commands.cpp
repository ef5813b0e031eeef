// SPDX-License-Identifier: Apache-2.0
#include "tools/halvora/commands.h"

#include <algorithm>
#include <array>
#include <map>
#include <new>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include "tools/halvora/crowd/crowd_command.h"
#include "tools/halvora/listen_command.h"
#include "tools/halvora/lut_commands.h"
#include "tools/halvora/map_commands.h"
#include "tools/halvora/packet_commands.h"
#include "tools/halvora/trace_command.h"
#include "tools/halvora/transmit_command.h"

namespace halvora {

namespace {

struct Group {
  const char* name;
  const char* purpose;
};
constexpr Group kPacket{"packet", "decode or encode show packets"};
constexpr Group kMap{"map",
                     "look at a venue's seat map: what is in it, what is wrong, how it looks"};
constexpr Group kLut{"lut", "build seat tables from a pixel map's video, or show them"};

struct CommandRow {
  /// Null for a command that stands alone.
  const Group* group;
  const char* name;
  const char* purpose;
  std::unique_ptr<ToolCommand> (*make)();
};

constexpr std::array kCommands = {
    CommandRow{&kPacket, "decode", "print packets as JSON, a line each", makePacketDecodeCommand},
    CommandRow{&kPacket, "encode", "print the packet with the given fields",
               makePacketEncodeCommand},
    CommandRow{&kMap, "check", "count what a venue has and list what is wrong with it",
               makeMapCheckCommand},
    CommandRow{&kMap, "draw", "draw the plan of all seats as a picture", makeMapDrawCommand},
    CommandRow{&kMap, "dump", "print a seat map's sections, rows and seats", makeMapDumpCommand},
    CommandRow{&kLut, "build", "take the colours of seats out of a video and keep them as tables",
               makeLutBuildCommand},
    CommandRow{&kLut, "show", "print a table that was kept", makeLutShowCommand},
    CommandRow{nullptr, "crowd", "run a whole venue's phones through a scenario and show them",
               makeCrowdCommand},
    CommandRow{nullptr, "listen", "print the show packets that are in the air", makeListenCommand},
    CommandRow{nullptr, "trace", "run one phone through a scenario and print what it does",
               makeTraceCommand},
    CommandRow{nullptr, "transmit", "advertise show packets from this machine's own adapter",
               makeTransmitCommand},
};

// A complaint is one line, whatever a file name or an argument in it holds.
std::string oneLine(std::string text) {
  std::replace_if(
      text.begin(), text.end(),
      [](char character) { return static_cast<unsigned char>(character) < ' '; }, '?');
  return text;
}

struct Offer {
  CLI::App* app;
  std::unique_ptr<ToolCommand> command;
};

std::vector<Offer> offerAll(CLI::App& app) {
  std::vector<Offer> offers;
  std::map<const Group*, CLI::App*> parents{{nullptr, &app}};
  for (const CommandRow& row : kCommands) {
    CLI::App*& parent = parents[row.group];
    if (parent == nullptr) {
      parent = app.add_subcommand(row.group->name, row.group->purpose)->require_subcommand(1);
    }
    offers.push_back({parent->add_subcommand(row.name, row.purpose), row.make()});
    offers.back().command->describe(*offers.back().app);
  }
  return offers;
}

CommandResult run(const Call& call) {
  CLI::App app(
      "Looks at light show packets and seat maps, makes seat tables and says, to the millisecond, "
      "what a phone "
      "does in a show.",
      "halvora");
  app.require_subcommand(1);
  const std::vector<Offer> offers = offerAll(app);
  try {
    app.parse(static_cast<int>(call.arguments.size()), call.arguments.data());
  } catch (const CLI::CallForHelp&) {
    return writeAll(app.help(), call.output);
  } catch (const CLI::ParseError& error) {
    // The library may explain itself at length; its first line says what is wrong.
    const std::string what = error.what();
    return unusable(what.substr(0, what.find('\n')) + " (see --help)");
  }
  const auto chosen = std::find_if(offers.begin(), offers.end(),
                                   [](const Offer& offer) { return offer.app->parsed(); });
  return chosen->command->run(call);
}

}  // namespace

CommandResult runCommand(int argumentCount, const char* const* arguments, const Outside& outside,
                         const Output& output) {
  CommandResult result;
  try {
    result = run({{arguments, static_cast<std::size_t>(argumentCount)}, outside, output});
  } catch (const std::bad_alloc&) {
    result = failed("out of memory");
  }
  result.error = oneLine(std::move(result.error));
  return result;
}

}  // namespace halvora
