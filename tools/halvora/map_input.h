// SPDX-License-Identifier: Apache-2.0
// What the commands of `halvora map` read: a venue's document, and texts for the names that it
// lacks. Main thread.
#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "platform/json.h"
#include "seats/seat_map.h"
#include "tools/halvora/command.h"

namespace halvora {

/// Texts by key.
using StringTable = std::map<std::string, std::string, std::less<>>;

/// A flat JSON object of texts; members that are no texts count for nothing. None for a document
/// that is no such object.
std::optional<StringTable> readStringTable(std::string_view document, const JsonReader& json);

/// The map as the kit reads it. Texts that `strings` lacks are the kit's own.
SeatMap seatMapOf(std::string_view document, const StringTable& strings, const JsonReader& json);

/// FILE and `--strings FILE`.
class MapInput {
 public:
  void describe(CommandOptions& options);
  /// Reads both files; a refusal where one cannot be used.
  std::optional<CommandResult> read(const JsonReader& json, const std::atomic<bool>& isInterrupted);

  const std::string& file() const { return file_; }
  const std::string& document() const { return document_; }
  const StringTable& strings() const { return strings_; }

 private:
  std::string file_;
  std::optional<std::string> stringsFile_;
  std::string document_;
  StringTable strings_;
};

}  // namespace halvora
