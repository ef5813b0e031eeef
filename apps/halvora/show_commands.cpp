// SPDX-License-Identifier: Apache-2.0
#include "apps/halvora/show_commands.h"

#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <variant>
#include <vector>

#include "apps/halvora/command_line.h"
#include "apps/halvora/show_input.h"
#include "venue/base/json_line.h"
#include "venue/base/written_files.h"
#include "venue/show/cue_schedule.h"

namespace halvora {

namespace {

CommandResult tooLong(const std::string& file) {
  return unusable(file + ": more than " + std::to_string(kMostShowPackets) +
                  " packets; a lower rate of its maps, or a shorter show, has fewer");
}

class ShowCheckCommand final : public ToolCommand {
 public:
  void describe(CommandOptions& options) override {
    input_.describe(options);
    options.footer(
        "Prints cues, seconds, packets and warnings as one JSON object. Exit status 2, and a line "
        "for each\nfault, for a show that cannot be played. How a show is written: "
        "docs/show-file.md.");
  }

  CommandResult run(const Call& call) override {
    if (auto refusal = input_.read(call)) return std::move(*refusal);
    const CueList& show = input_.show();
    const auto packets = packetsOf(show, 1);
    if (!packets) return tooLong(input_.file());
    const ShowCount count = countOf(show, *packets);
    JsonLine line;
    line.begin().add("cues", static_cast<std::int64_t>(show.cues.size()));
    line.addLevel("seconds", toSeconds(count.length));
    line.add("packets", static_cast<std::int64_t>(count.packets));
    line.addRaw("warnings", listText(input_.warnings()));
    line.add("transmissions", static_cast<std::int64_t>(count.transmissions));
    return writeAll(line.end(), call.output);
  }

 private:
  ShowInput input_;
};

class ShowCompileCommand final : public ToolCommand {
 public:
  void describe(CommandOptions& options) override {
    input_.describe(options);
    options.required("--out", out_, "the scenario that is written");
    options.optional("--sequence", sequence_,
                     "the first packet's sequence number, 1 to 65535; each look has the next one "
                     "(default: 1)");
    options.footer(
        "Writes a scenario of a phone that starts at 0 and hears the show, for trace, crowd and "
        "transmit.\nNobody presses GO in it: a cue that waits for it comes when the one before has "
        "been held, for its\nhold or else up to 5 seconds.");
  }

  CommandResult run(const Call& call) override {
    const auto sequence = decimal(sequence_, 0xFFFF);
    if (!sequence || *sequence == 0) {
      return unusable("--sequence must be a whole number from 1 to 65535, not \"" + sequence_ +
                      "\"");
    }
    if (auto refusal = input_.read(call)) return std::move(*refusal);
    std::error_code error;
    if (std::filesystem::equivalent(out_, input_.file(), error)) {
      return unusable(out_ + ": is the show itself (--out)");
    }
    const auto packets = packetsOf(input_.show(), static_cast<std::uint16_t>(*sequence));
    if (!packets) return tooLong(input_.file());
    WrittenFiles files(call.outside.isInterrupted);
    if (!files.replace(absolutePath(out_), scenarioOf(input_.show(), *packets))) {
      return call.outside.isInterrupted ? interrupted() : unusable(out_ + ": cannot be written");
    }
    if (!call.outside.messages) return done();
    for (const std::string& warning : input_.warnings()) {
      call.outside.messages("halvora: " + input_.file() + ": " + warning + "\n");
    }
    return done();
  }

 private:
  ShowInput input_;
  std::string out_;
  std::string sequence_ = "1";
};

}  // namespace

std::unique_ptr<ToolCommand> makeShowCheckCommand() { return std::make_unique<ShowCheckCommand>(); }

std::unique_ptr<ToolCommand> makeShowCompileCommand() {
  return std::make_unique<ShowCompileCommand>();
}

}  // namespace halvora
