// SPDX-License-Identifier: Apache-2.0
#include "apps/halvora/commands.h"

#include <algorithm>
#include <array>
#include <exception>
#include <new>
#include <span>
#include <string>
#include <utility>

#include "apps/halvora/command_line.h"
#include "apps/halvora/crowd_command.h"
#include "apps/halvora/listen_command.h"
#include "apps/halvora/live_command.h"
#include "apps/halvora/lut_commands.h"
#include "apps/halvora/map_commands.h"
#include "apps/halvora/packet_commands.h"
#include "apps/halvora/safety_command.h"
#include "apps/halvora/show_commands.h"
#include "apps/halvora/trace_command.h"
#include "apps/halvora/transmit_command.h"

namespace halvora {

namespace {

constexpr const char* kPurpose =
    "Looks at light show packets and seat maps, makes seat tables and says, to the millisecond, "
    "what a phone does in a show.";

constexpr CommandGroup kPacket{"packet", "decode or encode show packets"};
constexpr CommandGroup kMap{
    "map", "look at a venue's seat map: what is in it, what is wrong, how it looks"};
constexpr CommandGroup kShow{"show", "check a show that a person wrote, or compile it to packets"};
constexpr CommandGroup kCrowd{"crowd", "put the shards of a crowd together"};
constexpr CommandGroup kLut{"lut", "build seat tables from a pixel map's video, or show them"};

constexpr std::array kCommands = {
    CommandRow{&kPacket, "decode", "print packets as JSON, a line each", makePacketDecodeCommand},
    CommandRow{&kPacket, "encode", "print the packet with the given fields",
               makePacketEncodeCommand},
    CommandRow{&kMap, "check", "count what a venue has and list what is wrong with it",
               makeMapCheckCommand},
    CommandRow{&kMap, "draw", "draw the plan of all seats as a picture", makeMapDrawCommand},
    CommandRow{&kMap, "dump", "print a seat map's sections, rows and seats", makeMapDumpCommand},
    CommandRow{&kMap, "fit", "say what a clip lacks to light a venue, or make a copy that fits",
               makeMapFitCommand},
    CommandRow{&kMap, "import", "make a seat map out of a ticket office's seats",
               makeMapImportCommand},
    CommandRow{&kMap, "template", "make what an artist needs to light a venue",
               makeMapTemplateCommand},
    CommandRow{&kLut, "build", "take the colours of seats out of a video and keep them as tables",
               makeLutBuildCommand},
    CommandRow{&kLut, "show", "print a table that was kept", makeLutShowCommand},
    CommandRow{&kShow, "check", "count what a show sends and list what is wrong with it",
               makeShowCheckCommand},
    CommandRow{&kShow, "compile", "write a show's packets as a scenario", makeShowCompileCommand},
    CommandRow{nullptr, "crowd", "run a whole venue's phones through a scenario and show them",
               makeCrowdCommand},
    CommandRow{&kCrowd, "merge", "put the shards of a crowd together", makeCrowdMergeCommand},
    CommandRow{nullptr, "listen", "print the show packets that are in the air", makeListenCommand},
    CommandRow{nullptr, "live", "play a show: cues by GO and by time, and safe to stop",
               makeLiveCommand},
    CommandRow{nullptr, "safety", "say whether a show flashes more than eyes may be asked to bear",
               makeSafetyCommand},
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

}  // namespace

CommandResult runCommand(int argumentCount, const char* const* arguments, const Outside& outside,
                         const Output& output) {
  CommandResult result;
  try {
    const std::span words(arguments, static_cast<std::size_t>(argumentCount));
    result = runCommandLine(kPurpose, kCommands, {words, outside, output});
  } catch (const std::bad_alloc&) {
    // Short enough to need no memory.
    result = failed("out of memory");
  } catch (const std::exception& error) {
    // What the system has no room for besides memory, as threads or descriptors.
    result = failed(error.what());
  }
  result.error = oneLine(std::move(result.error));
  for (std::string& line : result.more) line = oneLine(std::move(line));
  return result;
}

}  // namespace halvora
