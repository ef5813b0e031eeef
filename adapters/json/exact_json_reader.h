// SPDX-License-Identifier: Apache-2.0
// The JSON need: every Unicode encoding, bounded nesting, numbers of any length, in any locale.
// Stateless; any thread.
#pragma once

#include "adapters/json/json_scanner.h"
#include "halvora/platform/json.h"

namespace halvora {

class ExactJsonReader final : public JsonReader {
 public:
  /// Arrays and objects may lie this deep in each other; a deeper document is rejected.
  static constexpr std::size_t kDeepestNesting = JsonScanner::kDeepestNesting;

  std::optional<JsonValue> parse(std::string_view document, std::string* reason) const override;
  bool read(std::string_view document, JsonEvents& events, std::string* reason) const override;
};

}  // namespace halvora
