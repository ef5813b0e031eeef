// SPDX-License-Identifier: Apache-2.0
// What the commands of `halvora map` read: a venue's document, and texts for the names that it
// lacks. Main thread.
#pragma once

#include <atomic>
#include <optional>
#include <string>

#include "apps/halvora/command.h"
#include "halvora/platform/json.h"
#include "venue/plan/named_map.h"

namespace halvora {

/// FILE, or what the command calls it, and `--strings FILE`.
class MapInput {
 public:
  void describe(CommandOptions& options, const char* name = "FILE");
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
