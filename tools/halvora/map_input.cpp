// SPDX-License-Identifier: Apache-2.0
#include "tools/halvora/map_input.h"

#include <utility>

#include <CLI/CLI.hpp>

#include "platform/standard/standard_files.h"
#include "platform/virtual/virtual_storage.h"
#include "seats/seat_map_document.h"

namespace halvora {

namespace {

constexpr std::size_t kLargestStringTable = std::size_t{1} << 20;

}  // namespace

std::optional<StringTable> readStringTable(std::string_view document, const JsonReader& json) {
  const std::optional<JsonValue> value = json.parse(document);
  if (!value || value->object() == nullptr) return std::nullopt;
  StringTable strings;
  for (const JsonMember& member : *value->object()) {
    if (member.value.text() != nullptr) strings.emplace(member.name, *member.value.text());
  }
  return strings;
}

SeatMap seatMapOf(std::string_view document, const StringTable& strings, const JsonReader& json) {
  VirtualBundle kit("");
  kit.strings = strings;
  return parseSeatMapSectionsFromJSON(document, seatMapTexts(kit), json);
}

void MapInput::describe(CLI::App& app) {
  app.add_option("FILE", file_, "the venue's seat map document")->required();
  stringsOption_ = app.add_option("--strings", stringsFile_,
                                  "texts for names that the document lacks, a flat JSON object");
}

std::optional<CommandResult> MapInput::read(const JsonReader& json) {
  auto document = readFile(file_, kLargestSeatMap);
  if (!document) return unusable(file_ + ": cannot be read, or has more than 64 MiB");
  document_ = std::move(*document);
  if (stringsOption_->count() == 0) return std::nullopt;
  const auto text = readFile(stringsFile_, kLargestStringTable);
  if (!text) return unusable(stringsFile_ + ": cannot be read, or has more than 1 MiB");
  auto table = readStringTable(*text, json);
  if (!table) return unusable(stringsFile_ + ": not a flat JSON object of texts");
  strings_ = std::move(*table);
  return std::nullopt;
}

}  // namespace halvora
