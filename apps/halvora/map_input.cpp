// SPDX-License-Identifier: Apache-2.0
#include "apps/halvora/map_input.h"

#include <utility>

#include "adapters/standard/string_table.h"
#include "apps/halvora/command_line.h"
#include "seats/seat_map_document.h"
#include "venue/base/input_file.h"

namespace halvora {

void MapInput::describe(CommandOptions& options, const char* name) {
  options.required(name, file_, "the venue's seat map document");
  options.optional("--strings", stringsFile_,
                   "texts for names that the document lacks, a flat JSON object");
}

std::optional<CommandResult> MapInput::read(const JsonReader& json,
                                            const std::atomic<bool>& isInterrupted) {
  auto document = readInput(file_, kLargestSeatMap, isInterrupted);
  if (auto* refusal = std::get_if<CommandResult>(&document)) return std::move(*refusal);
  document_ = std::get<std::string>(std::move(document));
  if (!stringsFile_) return std::nullopt;
  auto text = readInput(*stringsFile_, kLargestStringTable, isInterrupted);
  if (auto* refusal = std::get_if<CommandResult>(&text)) return std::move(*refusal);
  auto table = readStringTable(std::get<std::string>(text), json);
  if (!table) return unusable(*stringsFile_ + ": not a flat JSON object of texts");
  strings_ = std::move(*table);
  return std::nullopt;
}

}  // namespace halvora
