// SPDX-License-Identifier: Apache-2.0
#include "apps/halvora/map_commands.h"

#include <string>

#include "adapters/json/exact_json_reader.h"
#include "apps/halvora/command_line.h"
#include "apps/halvora/map_input.h"
#include "venue/plan/map_dump.h"

namespace halvora {

namespace {

class DumpCommand final : public ToolCommand {
 public:
  void describe(CommandOptions& options) override {
    input_.describe(options);
    options.footer("Prints the sections as one JSON array; [] where the kit finds none.");
  }

  CommandResult run(const Call& call) override {
    const ExactJsonReader json;
    if (const auto refusal = input_.read(json, call.outside.isInterrupted)) return *refusal;
    return writeAll(dumpSeatMap(input_.document(), input_.strings(), json), call.output);
  }

 private:
  MapInput input_;
};

}  // namespace

std::unique_ptr<ToolCommand> makeMapDumpCommand() { return std::make_unique<DumpCommand>(); }

}  // namespace halvora
