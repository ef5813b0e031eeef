// SPDX-License-Identifier: Apache-2.0
// The JSON need on RapidJSON's event parser: every Unicode encoding, bounded nesting, numbers of
// any length. Stateless; any thread.
#pragma once

#include "platform/json.h"

namespace halvora {

class RapidJsonReader final : public JsonReader {
 public:
  /// Arrays and objects may lie this deep in each other; a deeper document is rejected.
  static constexpr std::size_t kDeepestNesting = 512;

  std::optional<JsonValue> parse(std::string_view document, std::string* reason) const override;
};

}  // namespace halvora
