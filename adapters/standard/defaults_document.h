// SPDX-License-Identifier: Apache-2.0
// Defaults as one JSON document in which every value keeps its type and its exact value: plain JSON
// where that says it all, and an object of one member ({"date": 5.0}) where it does not. Texts keep
// bytes that are no UTF-8. Stateless; any thread.
#pragma once

#include <functional>
#include <map>
#include <string>

#include "halvora/platform/json.h"
#include "halvora/platform/user_defaults.h"

namespace halvora {

using DefaultsValues = std::map<std::string, DefaultsValue, std::less<>>;

/// Arrays and dictionaries may lie this deep in each other; a deeper value is left out.
inline constexpr int kDeepestDefaults = 100;

std::string defaultsDocument(const DefaultsValues& values);

struct ReadDefaults {
  DefaultsValues values;
  /// Whether the document is one of ours and nothing in it had to be left out.
  bool isWhole = false;
};

ReadDefaults readDefaultsDocument(const JsonValue& document);

}  // namespace halvora
