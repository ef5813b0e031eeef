// SPDX-License-Identifier: Apache-2.0
#include "tools/halvora/map_commands.h"

#include <optional>
#include <string>

#include <CLI/CLI.hpp>

#include "platform/json/rapid_json_reader.h"
#include "platform/standard/standard_files.h"
#include "seats/seat_map_document.h"
#include "tools/halvora/map_dump.h"

namespace halvora {

namespace {

constexpr std::size_t kLargestStringTable = std::size_t{1} << 20;

class DumpCommand final : public ToolCommand {
 public:
  void describe(CLI::App& app) override {
    app.add_option("FILE", file_, "the venue's seat map document")->required();
    strings_.option = app.add_option("--strings", strings_.file,
                                     "texts for names that the document lacks, a flat JSON object");
    app.footer("Prints the sections as one JSON array; [] where the kit finds none.");
  }

  CommandResult run(const Call& call) override {
    const RapidJsonReader json;
    const auto document = readFile(file_, kLargestSeatMap);
    if (!document) {
      return unusable(file_ + ": cannot be read, or has more than 64 MiB");
    }
    StringTable strings;
    if (strings_.option->count() > 0) {
      const auto text = readFile(strings_.file, kLargestStringTable);
      if (!text) return unusable(strings_.file + ": cannot be read, or has more than 1 MiB");
      auto table = readStringTable(*text, json);
      if (!table) return unusable(strings_.file + ": not a flat JSON object of texts");
      strings = std::move(*table);
    }
    std::string sections = dumpSeatMap(*document, strings, json);
    if (!sections.ends_with('\n')) sections += '\n';
    return writeAll(sections, call.output);
  }

 private:
  std::string file_;
  struct {
    CLI::Option* option = nullptr;
    std::string file;
  } strings_;
};

}  // namespace

std::unique_ptr<ToolCommand> makeMapDumpCommand() { return std::make_unique<DumpCommand>(); }

}  // namespace halvora
